#include "plugin.h"

#include <dlfcn.h>

#include <string_view>

namespace ipvald {
namespace {

template <typename Function>
void FindEntryPoint(void* handle, const char* name, Function& function) {
  // The cast is what POSIX prescribes for functions found by dlsym.
  function = reinterpret_cast<Function>(dlsym(handle, name));
  if (function == nullptr) {
    throw UnusablePlugin("not a validation plug-in: no entry point \"" + std::string(name) + "\"");
  }
}

// A name without a slash would be looked for in the folders of the system's libraries.
std::string AsPath(const std::string& file) {
  return file.find('/') == std::string::npos ? "./" + file : file;
}

// The loader's own words without the file name in front, which the caller adds in the form of all
// other messages.
std::string LoaderError(const std::string& path) {
  const char* error = dlerror();
  std::string_view text = error != nullptr ? error : "cannot be loaded";
  const std::string prefix = path + ": ";
  if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
  return std::string(text);
}

}  // namespace

Plugin::Plugin(const std::string& file)
    : handle_(dlopen(AsPath(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw UnusablePlugin(LoaderError(AsPath(file)));
  FindEntryPoint(handle_, "lib_init", lib_init);
  FindEntryPoint(handle_, "validate", validate);
  FindEntryPoint(handle_, "get_validation_point", get_validation_point);
  FindEntryPoint(handle_, "lib_finish", lib_finish);
}

void Plugin::Unload() { dlclose(handle_); }

}  // namespace ipvald
