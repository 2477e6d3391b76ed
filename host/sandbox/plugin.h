// The validation plug-in as a shared object with its four entry points.
#ifndef HOST_SANDBOX_PLUGIN_H_
#define HOST_SANDBOX_PLUGIN_H_

#include <stdexcept>
#include <string>

#include "confd_dp.h"

namespace ipvald {

/// The file is no plug-in: it cannot be loaded, or lacks an entry point. what() says why, without
/// the file's name.
class UnusablePlugin : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A loaded plug-in. Loading runs its static constructors, so it happens in the child process only.
class Plugin {
 public:
  /// @param file  a path as for open(2): without a slash it is a file of the current folder
  /// @throws UnusablePlugin
  explicit Plugin(const std::string& file);

  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  /// Unloads it; nothing of it may be used any more. A plug-in stays loaded without this call, so
  /// that an exception from it can still be looked at where it is caught.
  void Unload();

  int (*lib_init)(void** context) = nullptr;
  int (*validate)(confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                  confd_value_t* newval) = nullptr;
  int (*get_validation_point)(char* name, int size) = nullptr;
  int (*lib_finish)(void** context) = nullptr;

 private:
  void* handle_;
};

}  // namespace ipvald

#endif  // HOST_SANDBOX_PLUGIN_H_
