// All that ipvald can tell about a transaction: what every form of report is made from.
#ifndef HOST_TRANSACTION_TRANSACTION_REPORT_H_
#define HOST_TRANSACTION_TRANSACTION_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ipvald {

enum class Verdict { kAccepted, kRejected, kPluginFailure };

/// "accepted", "rejected" or "plugin-failure".
const char* NameOf(Verdict verdict);

/// What the plug-in answered to a call.
enum class Answer {
  kNone,  // it failed in the call
  kAccepted,
  kWarning,  // accepted, with a text for the operator
  kRejected,
  kOther,  // a result that has no meaning
};

/// A fault that the plug-in reported to the device's software, as it gave it.
struct FaultReport {
  int level = 0;
  std::string function;
  std::string file;
  int line = 0;
  std::string message;
};

/// One call of a validation point.
struct CallReport {
  std::string point;                   // validation-point name, the opaque string of the data model
  std::string id;                      // id of the statement in the data model
  std::string path;                    // keypath of the call
  std::string reason;                  // why it was made
  Answer answer = Answer::kNone;       // with kNone the fields below say nothing
  int result = 0;                      // number behind the answer, as `validate` returned it
  std::optional<std::string> message;  // text that the plug-in set, unchanged
  uint64_t microseconds = 0;
  uint64_t datastore_calls = 0;
  std::vector<std::string> log;
  std::vector<FaultReport> faults;
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

}  // namespace ipvald

#endif  // HOST_TRANSACTION_TRANSACTION_REPORT_H_
