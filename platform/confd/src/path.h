// Path texts: from a format and its arguments to a place in a configuration.
#ifndef PLATFORM_CONFD_PATH_H_
#define PLATFORM_CONFD_PATH_H_

#include <libyang/libyang.h>

#include <cstdarg>
#include <optional>
#include <string>
#include <string_view>

#include "snapshot.h"

namespace confd {

/// Formats a path: %s %d %u %x %*x %h %*h %ip4 %ip6 %%. Anything else is an error.
/// @param configuration  guards against a key that is taken for a format: a format that spells out
/// one of its keys with a
///                       "%" in it is refused, as it would read arguments that nobody gave; null:
///                       no guard
/// @returns nothing on an error, with CONFD_ERR_BADPATH set.
std::optional<std::string> FormatPath(const LoadedSnapshot* configuration, const char* format,
                                      va_list args);

/// A path that fits the data model, looked up in a configuration.
struct Place {
  const lysc_node* schema = nullptr;  // null: the root
  const lyd_node* node =
      nullptr;  // null where `schema` is a list without keys, or the node is absent
  const lyd_node* parent = nullptr;  // of a list without keys; null at the top or when absent
  bool without_keys = false;         // the path ends at a list without keys
  bool exists = false;               // the node, or all that is above a list without keys
};

/// Looks `text` up: absolute or from the root, a key text taken as it stands between the braces
/// (blanks at its ends do not count), several keys separated by blanks, a key in double quotes with
/// \" and \\ inside.
/// @returns nothing on an error, with CONFD_ERR_BADPATH set.
std::optional<Place> FindPlace(const LoadedSnapshot& configuration, std::string_view text);

}  // namespace confd

#endif  // PLATFORM_CONFD_PATH_H_
