// The order in which entries of a list stand.
#ifndef PLATFORM_STORE_VALUE_ORDER_H_
#define PLATFORM_STORE_VALUE_ORDER_H_

#include <libyang/libyang.h>

namespace store {

/// -1, 0 or 1: the order of two values of one leaf. Numbers by size, enumerations by number,
/// addresses and octets byte-wise from the front with the shorter one first, everything else as
/// bytes of the text.
int CompareLeafValues(const lyd_node* a, const lyd_node* b);

/// Whether that order is, for every value of this leaf, the one of their texts as bytes.
bool OrdersAsText(const lysc_node* leaf);

}  // namespace store

#endif  // PLATFORM_STORE_VALUE_ORDER_H_
