// One transaction: what changed, which validation points that concerns, what the plug-in says.
#ifndef HOST_TRANSACTION_H_
#define HOST_TRANSACTION_H_

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "confd/store.h"
#include "framework/host.h"

namespace ipvald {

enum class Verdict { kAccepted, kRejected, kPluginFailure };

/// "accepted", "rejected" or "plugin-failure".
const char* NameOf(Verdict verdict);

/// One call of a validation point, or the one during which the plug-in failed.
struct CallReport {
  std::string point;   // validation-point name, the opaque string of the data model
  std::string id;      // id of the statement in the data model
  std::string path;    // keypath of the call
  std::string reason;  // why it was made
  bool ended = false;  // false: the plug-in failed in it, and the fields below say nothing
  int result = 0;
  std::optional<std::string> message;  // text that the plug-in set, unchanged
  uint64_t microseconds = 0;
  uint64_t datastore_calls = 0;
  std::vector<std::string> log;
  std::vector<framework::Fault> faults;
};

/// Everything that can be said about a transaction. Text only: it refers to no snapshot.
struct TransactionReport {
  Verdict verdict = Verdict::kAccepted;
  std::vector<CallReport> calls;   // those that were made, in order
  std::optional<size_t> decisive;  // index of the call that decided a verdict other than accepted
  std::string diagnostic;          // plugin-failure: what happened, one line
  std::string stage;               // plugin-failure outside a call: where, for example "lib_init"
  std::string output;              // what the plug-in wrote to its standard output and error
  uint32_t open_cursors = 0;       // walks that the plug-in began and did not end
};

struct TransactionOptions {
  std::string plugin;                // file name of the plug-in
  std::chrono::seconds timeout{60};  // for all calls together
  bool log = false;                  // give the plug-in a log handle and keep what it writes
};

/// Validates the change from `running` to `candidate` as the device would. Nothing is kept: the
/// plug-in is loaded, set up and finished for this transaction alone.
/// @throws InputError, Interrupted, std::system_error  as RunPlugin
TransactionReport RunTransaction(const std::shared_ptr<const confd::Snapshot>& running,
                                 const std::shared_ptr<const confd::Snapshot>& candidate,
                                 const TransactionOptions& options);

}  // namespace ipvald

#endif  // HOST_TRANSACTION_H_
