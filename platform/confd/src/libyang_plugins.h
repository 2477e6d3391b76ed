// What libyang has to know of the tailf-common module: the extension that attaches validation
// points, and the types whose values a generic string could not hold.
#ifndef PLATFORM_CONFD_LIBYANG_PLUGINS_H_
#define PLATFORM_CONFD_LIBYANG_PLUGINS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace confd {

/// Content of one tailf:validate statement; hangs as `compiled` on the extension instance of the
/// compiled node.
struct ValidateStatement {
  std::string opaque;
  bool call_once = false;
  int priority = 0;
  std::vector<std::string> dependencies;  // paths as written
};

/// Identifiers of the type plug-ins, as in lyplg_type::id.
inline constexpr const char* kIpv4AndPlenType = "confd - ipv4-address-and-prefix-length";
inline constexpr const char* kIpv6AndPlenType = "confd - ipv6-address-and-prefix-length";
inline constexpr const char* kHexListType = "confd - hex-list";

/// Canonical text of a hex list, which has lower-case digits; nothing when `text` is none.
std::optional<std::string> CanonicalHexList(std::string_view text);

/// Gives the plug-ins to libyang. To be called after a context was created and before modules are
/// loaded into it: libyang forgets added plug-ins together with its last context.
/// @throws Error  libyang refuses them.
void RegisterLibyangPlugins();

}  // namespace confd

#endif  // PLATFORM_CONFD_LIBYANG_PLUGINS_H_
