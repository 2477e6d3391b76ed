// What happens in the child process: load the plug-in, make the calls of one transaction, tell the
// parent about each.
#ifndef HOST_SANDBOX_PLUGIN_SESSION_H_
#define HOST_SANDBOX_PLUGIN_SESSION_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "confd/validation_call.h"
#include "plugin_records.h"
#include "store/snapshot.h"

namespace ipvald {

/// One transaction as the plug-in is to see it.
struct PluginTask {
  std::string plugin;  // file name
  std::shared_ptr<const store::Snapshot> running;
  std::shared_ptr<const store::Snapshot> candidate;
  std::vector<confd::ValidationCall> calls;
  bool log = false;  // give the plug-in a log handle
};

/// Runs the task: get_validation_point, lib_init, validate for each call up to the first that is
/// not accepted, lib_finish. Exceptions that the plug-in throws become a FailedRecord; anything
/// worse ends the process.
void RunPluginSession(const PluginTask& task, const std::function<void(const Record&)>& send);

}  // namespace ipvald

#endif  // HOST_SANDBOX_PLUGIN_SESSION_H_
