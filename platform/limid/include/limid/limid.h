// Logical-interface identifiers. Stand-in for the header of the device's identifier library; for C
// and C++.
#ifndef LIMID_LIMID_H
#define LIMID_LIMID_H

#include <assert.h>
#include <stdint.h>

/// Identifier of a logical interface: four bytes, all zero when there is no logical interface. A
/// plain C structure, so a variable must be initialised to be zero: `limid_t id{};` in C++,
/// `limid_t id = {0};` in C.
typedef struct {
  uint32_t value;
} limid_t;

static_assert(sizeof(limid_t) == 4, "an identifier is copied and compared as four bytes");

#ifdef __cplusplus
constexpr bool operator==(limid_t a, limid_t b) { return a.value == b.value; }

extern "C" {
#endif

/// Identifier of the L3 interface on a VLAN. Different VLANs give different identifiers, whatever
/// the number; no VLAN from 1 to 4094 gives the zero identifier.
/// @param vlan  VLAN number. Numbers outside 1 to 4094 are not refused: each has its identifier,
///              and one of them, -268435456, has the zero identifier.
limid_t limid_l3_vlan_from_components(int vlan);

/// Index of a logical interface. For the L3 interface on a VLAN it is 1000000 plus the VLAN number:
/// never zero for a VLAN from 1 to 4094, and different for different VLANs. Zero for the zero
/// identifier.
uint32_t limid_to_ifindex(limid_t id);

#ifdef __cplusplus
}
#endif

#endif  // LIMID_LIMID_H
