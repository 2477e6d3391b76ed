// Canonical texts of keys.
#ifndef STORE_CANONICAL_TEXT_H_
#define STORE_CANONICAL_TEXT_H_

#include <libyang/libyang.h>

#include <optional>
#include <string>
#include <string_view>

namespace store {

/// Canonical text of a key that was written as `text`, or nothing when the type of `leaf` does not
/// allow it.
std::optional<std::string> CanonicalText(const lysc_node* leaf, std::string_view text);

}  // namespace store

#endif  // STORE_CANONICAL_TEXT_H_
