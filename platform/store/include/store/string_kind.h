// What the texts of a string type stand for.
#ifndef STORE_STRING_KIND_H_
#define STORE_STRING_KIND_H_

#include <libyang/libyang.h>

namespace store {

/// Values of different kinds that one leaf can have, being a union, are in the order of these.
enum class StringKind {
  kOther,  // date-and-time and others of which only the text is known
  kText,
  kIpv4,
  kIpv6,
  kHexList,
  kIpv4Prefix,
  kIpv6Prefix,
  kIpv4AndLength,  // host bits are kept
  kIpv6AndLength,
};

/// Kind of a type whose base is string.
StringKind KindOf(const lysc_type* type);

/// AF_INET or AF_INET6, for the kinds that hold an address.
int FamilyOf(StringKind kind);

/// Whether the plug-in that handles `type` has an identifier that begins so.
bool HasTypeId(const lysc_type* type, const char* id);

/// Identifiers of the type plug-ins, as in lyplg_type::id: those of libyang's string and of the
/// types of tailf-common.
inline constexpr const char* kTextType = "libyang 2 - string";
inline constexpr const char* kIpv4AndPlenType = "store - ipv4-address-and-prefix-length";
inline constexpr const char* kIpv6AndPlenType = "store - ipv6-address-and-prefix-length";
inline constexpr const char* kHexListType = "store - hex-list";

}  // namespace store

#endif  // STORE_STRING_KIND_H_
