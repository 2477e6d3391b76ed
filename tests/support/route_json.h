// Static routes in the two forms of the data model: an entry of the route table, and one for the
// output interface.
#ifndef TESTS_SUPPORT_ROUTE_JSON_H_
#define TESTS_SUPPORT_ROUTE_JSON_H_

#include <arpa/inet.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/json_text.h"
#include "support/point_fixture.h"

namespace tests {

/// One static route. Its family is that of the network.
struct ConfiguredRoute {
  uint32_t fte_index = 0;
  std::string network;                     ///< "10.0.0.0/8" or "2001:db8::/32"
  std::string next_hop = {};               ///< empty: a black hole
  std::optional<std::string> output = {};  ///< interface-name, "l3-7"

  bool is_ipv6() const { return network.find(':') != std::string::npos; }
};

/// Octets of an address as the route table spells them: "0a:00:00:01" for 10.0.0.1.
inline std::string HexList(const std::string& address) {
  std::array<unsigned char, 16> octets{};
  const bool is_ipv6 = address.find(':') != std::string::npos;
  if (inet_pton(is_ipv6 ? AF_INET6 : AF_INET, address.c_str(), octets.data()) != 1) {
    throw std::invalid_argument(address);
  }
  std::string text;
  for (size_t i = 0; i < (is_ipv6 ? 16u : 4u); ++i) {
    char octet[sizeof(":ff")];
    snprintf(octet, sizeof(octet), i == 0 ? "%02x" : ":%02x", octets[i]);
    text += octet;
  }
  return text;
}

/// The four keys that the two lists share, in their order.
inline std::array<std::string, 4> RouteKeys(const ConfiguredRoute& route) {
  const size_t slash = route.network.find('/');
  const std::string unspecified = route.is_ipv6() ? "::" : "0.0.0.0";
  return {std::to_string(route.fte_index), HexList(route.network.substr(0, slash)),
          route.network.substr(slash + 1),
          HexList(route.next_hop.empty() ? unspecified : route.next_hop)};
}

/// Path of the output interface's name as the plug-in writes it.
inline std::string OutputPath(const ConfiguredRoute& route) {
  const auto [fte_index, network, prefix_len, next_hop] = RouteKeys(route);
  return "/rtmStaticRtEntry-global{ " + fte_index + " " + network + " " + prefix_len + " " +
         next_hop + " }/interface-name";
}

/// Adds the routes to a device.
inline void AddRoutes(Device& device, const std::vector<ConfiguredRoute>& routes) {
  for (const ConfiguredRoute& route : routes) {
    const auto [fte_index, network, prefix_len, next_hop] = RouteKeys(route);
    const std::string family = route.is_ipv6() ? "ipv6" : "ipv4";
    if (!device.routes.empty()) device.routes += ",";
    device.routes +=
        R"({"rtmStaticRtFteIndex":)" + fte_index + R"(,"rtmStaticRtNetworkAddrType":")" + family +
        R"(","rtmStaticRtNetworkAddr":")" + network + R"(","rtmStaticRtNetworkPrefixLen":)" +
        prefix_len + R"(,"rtmStaticRtNextHopAddrType":")" + family +
        R"(","rtmStaticRtNextHopAddr":")" + next_hop + R"("})";
    if (!route.output) continue;
    if (!device.route_outputs.empty()) device.route_outputs += ",";
    device.route_outputs += R"({"fte-index":)" + fte_index + R"(,"network":")" + network +
                            R"(","prefix-length":)" + prefix_len + R"(,"next-hop":")" + next_hop +
                            R"(","interface-name":)" + JsonText(*route.output) + "}";
  }
}

/// A device with these routes, and with names for its forwarding-table indexes.
inline Device DeviceWithRoutes(const std::vector<ConfiguredRoute>& routes,
                               const std::string& vrfs = "") {
  Device device{.vrfs = vrfs};
  AddRoutes(device, routes);
  return device;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_ROUTE_JSON_H_
