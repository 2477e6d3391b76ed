// The configuration of a whole device as records, which a test fills and takes things away from:
//
//   Configure(Device{.l3 = {{.name = "7", .vrf = "red", .primary = "192.0.2.1/24"}},
//                    .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-7"}},
//                    .ospf = {{1, "0.0.0.9", "l3-7", "192.0.2.1"}},
//                    .ospf_processes = {{1, 10, "red"}}});
#ifndef TESTS_SUPPORT_DEVICE_H_
#define TESTS_SUPPORT_DEVICE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tests {

/// An interface of any kind.
struct ConfiguredIntf {
  std::string name;
  std::optional<std::string> vrf = {};
  int vlan = 0;                        ///< 0: none
  std::string primary = {};            ///< IPv4 address of an l3 or mgmt, empty: none
  std::vector<std::string> ipv4 = {};  ///< the list: secondary ones of an l3
  std::vector<std::string> ipv6 = {};
  std::map<std::string, int> timers = {};  ///< of router advertisements, by leaf
};

/// One static route. Its family is that of the network.
struct ConfiguredRoute {
  uint32_t fte_index = 0;
  std::string network;                     ///< "10.0.0.0/8" or "2001:db8::/32"
  std::string next_hop = {};               ///< empty: a black hole
  std::optional<std::string> output = {};  ///< interface-name, "l3-7"

  bool is_ipv6() const { return network.find(':') != std::string::npos; }
};

/// Path of the output interface's name as the plug-in writes it.
std::string OutputPath(const ConfiguredRoute& route);

/// An address that an OSPF process uses: an entry of ospf-interface-l3.
struct OspfEntry {
  uint32_t id;
  std::string area;
  std::string name;
  std::string address;
  int length = 24;  ///< negative: none
};

/// An entry of ospf-index-to-proc-id.
struct OspfProcess {
  uint32_t id;
  std::optional<uint32_t> process = {};
  std::optional<std::string> vrf = {};
};

/// An entry of ospfv3-interface-l3.
struct Ospfv3Entry {
  uint32_t process;
  std::string area;
  std::string name;
  int64_t index = -1;  ///< negative: none
};

struct Device {
  std::vector<ConfiguredIntf> l3 = {};
  std::vector<ConfiguredIntf> loopback = {};
  std::vector<ConfiguredIntf> mgmt = {};
  std::map<uint32_t, std::optional<std::string>> vrfs = {};  ///< names, by forwarding-table index
  std::vector<ConfiguredRoute> routes = {};
  std::vector<OspfEntry> ospf = {};
  std::vector<OspfProcess> ospf_processes = {};
  std::vector<Ospfv3Entry> ospfv3 = {};

  /// By kind: "l3", "loopback" or "mgmt".
  std::vector<ConfiguredIntf>& Interfaces(const std::string& kind);
  /// @throws std::logic_error  there is none
  ConfiguredIntf& Find(const std::string& kind, const std::string& name);

  std::string Json() const;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_DEVICE_H_
