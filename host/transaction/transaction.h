// One transaction: what changed, which validation points that concerns, what the plug-in says.
#ifndef HOST_TRANSACTION_TRANSACTION_H_
#define HOST_TRANSACTION_TRANSACTION_H_

#include <chrono>
#include <memory>
#include <string>

#include "store/snapshot.h"
#include "transaction_report.h"

namespace ipvald {

struct TransactionOptions {
  std::string plugin;                // file name of the plug-in
  std::chrono::seconds timeout{60};  // for all calls together
  bool log = false;                  // give the plug-in a log handle and keep what it writes
};

/// Validates the change from `running` to `candidate` as the device would. Nothing is kept: the
/// plug-in is loaded, set up and finished for this transaction alone.
/// @throws InputError, Interrupted, std::system_error  as RunPlugin
TransactionReport RunTransaction(const std::shared_ptr<const store::Snapshot>& running,
                                 const std::shared_ptr<const store::Snapshot>& candidate,
                                 const TransactionOptions& options);

}  // namespace ipvald

#endif  // HOST_TRANSACTION_TRANSACTION_H_
