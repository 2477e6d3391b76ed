#include "limid/limid.h"

namespace {

// The kind of logical interface is in the upper bits, the VLAN number in the lower ones. Unsigned
// arithmetic wraps, so that numbers outside the VLAN range keep different identifiers and indexes.
constexpr uint32_t kL3Vlan = 0x10000000;
constexpr uint32_t kFirstL3VlanIfindex = 1000000;

}  // namespace

limid_t limid_l3_vlan_from_components(int vlan) {
  return limid_t{kL3Vlan + static_cast<uint32_t>(vlan)};
}

uint32_t limid_to_ifindex(limid_t id) {
  if (id == limid_t{}) return 0;
  return id.value - kL3Vlan + kFirstL3VlanIfindex;
}
