// Texts of the hex lists of tailf-common: octets with ":" between them, such as 0a:00:ff.
#ifndef STORE_HEX_LIST_H_
#define STORE_HEX_LIST_H_

#include <optional>
#include <string>
#include <string_view>

namespace store {

/// Canonical text of a hex list, which has lower-case digits; nothing when `text` is none.
std::optional<std::string> CanonicalHexList(std::string_view text);

/// The octets of a canonical text.
std::string HexListBytes(std::string_view text);

}  // namespace store

#endif  // STORE_HEX_LIST_H_
