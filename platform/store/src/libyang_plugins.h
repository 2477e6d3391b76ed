// What libyang has to know of the tailf-common module: the extension that attaches validation
// points, and the types whose values a generic string could not hold.
#ifndef PLATFORM_STORE_LIBYANG_PLUGINS_H_
#define PLATFORM_STORE_LIBYANG_PLUGINS_H_

#include <string>
#include <vector>

namespace store {

/// Content of one tailf:validate statement; hangs as `compiled` on the extension instance of the
/// compiled node.
struct ValidateStatement {
  std::string opaque;
  bool call_once = false;
  int priority = 0;
  std::vector<std::string> dependencies;  // paths as written
};

/// Gives the plug-ins to libyang. To be called after a context was created and before modules are
/// loaded into it: libyang forgets added plug-ins together with its last context.
/// @throws Error  libyang refuses them.
void RegisterLibyangPlugins();

}  // namespace store

#endif  // PLATFORM_STORE_LIBYANG_PLUGINS_H_
