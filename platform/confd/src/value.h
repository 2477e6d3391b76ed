// Values of libyang as ConfD values and as texts.
#ifndef PLATFORM_CONFD_VALUE_H_
#define PLATFORM_CONFD_VALUE_H_

#include <libyang/libyang.h>

#include <optional>
#include <string>
#include <string_view>

#include "confd_lib.h"

namespace confd {

/// The value of a leaf or leaf-list entry; owns its memory. C_NOEXISTS for a type that the stand-in
/// does not carry (bits, instance-identifier).
confd_value_t LeafValue(const lyd_node* leaf);

/// Releases what a value owns, as confd_free_value does, unseen by the watcher of calls.
void FreeOwned(confd_value_t* value);

/// Puts a value of another type in the place of `value`: an int32 for a text, a text for any other.
void ReplaceByOtherType(confd_value_t* value);

/// A C_XMLTAG value.
confd_value_t TagValue(xml_tag tag);

/// -1, 0 or 1: the order of two values of one leaf. Numbers by size, enumerations by number,
/// addresses and octets byte-wise from the front with the shorter one first, everything else as
/// bytes of the text.
int CompareLeafValues(const lyd_node* a, const lyd_node* b);

/// Whether that order is, for every value of this leaf, the one of their texts as bytes.
bool OrdersAsText(const lysc_node* leaf);

/// Canonical text of a key that was written as `text`, or nothing when the type of `leaf` does not
/// allow it.
std::optional<std::string> CanonicalText(const lysc_node* leaf, std::string_view text);

/// Text of an address in network byte order: an in_addr (AF_INET) or in6_addr (AF_INET6).
std::string AddressText(int family, const void* address);

/// What confd_pp_value prints.
std::string PrintValue(const confd_value_t& value);

/// As PrintValue, in double quotes when the bare text could not be read back as a key.
std::string PrintKey(const confd_value_t& value);

}  // namespace confd

#endif  // PLATFORM_CONFD_VALUE_H_
