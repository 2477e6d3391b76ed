// Runs the plug-in in a child process and watches over it: whatever the plug-in does ends the child
// at most.
#ifndef HOST_SANDBOX_PLUGIN_PROCESS_H_
#define HOST_SANDBOX_PLUGIN_PROCESS_H_

#include <chrono>

#include "plugin_protocol.h"
#include "plugin_session.h"

namespace ipvald {

/// Runs `task` in a child process for at most `timeout`. The child has its own process group, which
/// is killed as a whole when it is over. REQUIRES: this process has one thread, and SIGCHLD is not
/// ignored.
/// @throws InputError         the file is no plug-in
/// @throws Interrupted        a signal asked this process to stop
/// @throws std::system_error  no child could be started, or a limit left too few file descriptors
///                            or too little memory for it; what() names the limit
PluginRun RunPlugin(const PluginTask& task, std::chrono::seconds timeout);

}  // namespace ipvald

#endif  // HOST_SANDBOX_PLUGIN_PROCESS_H_
