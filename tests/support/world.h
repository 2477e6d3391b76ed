// A whole configuration as records, from which a test takes things away.
#ifndef TESTS_SUPPORT_WORLD_H_
#define TESTS_SUPPORT_WORLD_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/point_fixture.h"
#include "support/route_json.h"

namespace tests {

/// Every list is in the order in which ConfD walks it.
struct World {
  struct Intf {
    std::string name;
    std::optional<std::string> vrf = {};
    int vlan = 0;                        ///< 0: none
    std::string primary = {};            ///< IPv4 address of an l3 or mgmt, empty: none
    std::vector<std::string> ipv4 = {};  ///< the list: secondary ones of an l3
    std::vector<std::string> ipv6 = {};
    std::map<std::string, int> timers = {};  ///< by leaf
  };
  struct OspfUse {
    uint32_t id;  ///< of this entry alone: what is read by the index is read for one entry
    std::string area;
    std::string name;
    std::string address;
    int length;  ///< negative: none
    uint32_t process;
    std::string vrf;
  };
  struct Ospfv3Use {
    uint32_t process;
    std::string area;
    std::string name;
    int64_t index;  ///< negative: none
  };

  std::map<std::string, std::vector<Intf>> interfaces;  ///< by kind: l3, loopback, mgmt
  std::map<uint32_t, std::string> vrf_names;
  std::vector<ConfiguredRoute> routes;  ///< with an index of its own each
  std::vector<OspfUse> ospf;
  std::vector<Ospfv3Use> ospfv3;

  /// @throws std::logic_error  there is none
  Intf* Find(const std::string& kind, const std::string& name);
  Device ToDevice() const;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_WORLD_H_
