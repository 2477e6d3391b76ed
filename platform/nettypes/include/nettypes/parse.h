// Strict readers of the text forms, for tests and the host. Each takes the whole text or nothing:
// no blanks, no sign, no zone, nothing before or after. What to_string() writes, the reader of the
// same type reads back as an equal value.
#ifndef NETTYPES_PARSE_H
#define NETTYPES_PARSE_H

#include <optional>
#include <string_view>

#include "nettypes/ipv4.h"
#include "nettypes/ipv6.h"

namespace nettypes {

/// Reads four decimal octets without leading zeros, for example "192.0.2.1".
/// @returns  nothing when the text is anything else
std::optional<IPv4Addr> ParseIPv4Addr(std::string_view text);

/// Reads the text forms of RFC 4291 section 2.2: eight groups of one to four hexadecimal digits of
/// either case, one "::" in place of at least one zero group, and a dotted quad (as ParseIPv4Addr
/// reads it) in place of the last two groups.
/// @returns  nothing when the text is anything else
std::optional<IPv6Addr> ParseIPv6Addr(std::string_view text);

/// Reads an address as ParseIPv4Addr does, "/", and a decimal prefix length, 0 to 32, without
/// leading zeros.
/// @returns  nothing when the text is anything else
std::optional<IPv4AddrMask> ParseIPv4AddrMask(std::string_view text);

/// Reads an address as ParseIPv6Addr does, "/", and a decimal prefix length, 0 to 128, without
/// leading zeros.
/// @returns  nothing when the text is anything else
std::optional<IPv6AddrMask> ParseIPv6AddrMask(std::string_view text);

}  // namespace nettypes

#endif  // NETTYPES_PARSE_H
