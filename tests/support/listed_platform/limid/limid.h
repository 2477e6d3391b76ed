// The identifier with the operations of docs/platform.md, "What the plug-in needs", and no others.
#ifndef LIMID_LIMID_H
#define LIMID_LIMID_H

#include <stdint.h>

typedef struct {
  uint32_t value;
} limid_t;

extern "C" {
limid_t limid_l3_vlan_from_components(int vlan);
uint32_t limid_to_ifindex(limid_t id);
}

#endif  // LIMID_LIMID_H
