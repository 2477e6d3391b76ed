// The daemon's side of the framework stand-in: what a host or a test sets up before it calls a
// plug-in, and what it reads back afterwards. The plug-in never includes this header.
// Single-threaded.
#ifndef FRAMEWORK_HOST_H_
#define FRAMEWORK_HOST_H_

#include <map>
#include <string>
#include <vector>

#include "ztconfd.h"

namespace framework {

/// Registry of plug-in contexts; its address is what a host puts into confd_trans_ctx::v_opaque.
class ContextRegistry {
 public:
  void Register(const std::string& name, void* context) { contexts_[name] = context; }
  void* Find(const std::string& name) const;

 private:
  std::map<std::string, void*> contexts_;
};

/// The daemon as plug-ins see it; its address is what a host puts into confd_trans_ctx::vcb_opaque.
/// A socket below zero stands for a connection that could not be made.
struct Daemon {
  int maapi_socket = -1;
  int cdb_socket = -1;
};

/// One call of ztmw_gen_fault.
struct Fault {
  int level;
  std::string function;
  std::string file;
  int line;
  std::string message;

  friend bool operator==(const Fault&, const Fault&) = default;
};

/// Switches the configuration-validation log on or off: decides what get_config_vald_log_handle
/// returns from now on. Plug-ins may ask only once in the life of a process.
void SetLogEnabled(bool enabled);

/// Returns and clears the log records, as formatted, oldest first.
std::vector<std::string> TakeLogLines();

/// Returns and clears the reported faults, oldest first.
std::vector<Fault> TakeFaults();

}  // namespace framework

#endif  // FRAMEWORK_HOST_H_
