#include "static_route_config.h"

#include <exception>

#include "type_test.h"

namespace ip_application::config_valid {
namespace {

constexpr char kRouteTablePath[] = "/KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry";

// Keys of a route table entry.
enum RouteKeyIndex {
  kFteIndex = 0,          // C_UINT32, stands for the VRF
  kNetworkAddrType = 1,   // C_ENUM_VALUE
  kNetworkAddr = 2,       // C_BINARY
  kNetworkPrefixLen = 3,  // C_INT32, bits
  kNextHopAddrType = 4,   // not read
  kNextHopAddr = 5,       // C_BINARY
};

// RFC 4001, InetAddressType.
constexpr int32_t kIpv4Type = 1;
constexpr int32_t kIpv6Type = 2;

// Puts a route into the maps of its family. insert() leaves a key that is already there alone.
template <typename Prefix, typename Addr>
void AddRoute(const std::shared_ptr<StaticRoute>& route, const Prefix& network,
              const Addr& next_hop, RouteMap<Prefix>& routes, RouteMap<Prefix>& blackhole_routes,
              RouteMap<Addr>& next_hops, std::set<std::string>& output_interfaces) {
  RouteKey<Prefix> key{route->vrf_name, network};
  if (next_hop.is_unspecified()) {
    blackhole_routes.insert({std::move(key), route});
    return;
  }
  routes.insert({std::move(key), route});
  next_hops.insert({RouteKey<Addr>{route->vrf_name, next_hop}, route});
  output_interfaces.insert(route->output_intf_name);
}

template <typename Addr>
bool FindRoute(const RouteMap<Addr>& routes, const RouteKey<Addr>& key,
               std::shared_ptr<StaticRoute>& route) {
  const auto entry = routes.find(key);
  if (entry == routes.end()) return false;
  route = entry->second;
  return true;
}

// The first key that both maps have; `route` is what `routes` holds there. Both are in key order,
// so one pass over the two is enough.
template <typename Prefix>
bool FindCommonPrefix(const RouteMap<Prefix>& blackhole_routes, const RouteMap<Prefix>& routes,
                      std::shared_ptr<StaticRoute>& route) {
  auto blackhole = blackhole_routes.begin();
  auto forwarded = routes.begin();
  while (blackhole != blackhole_routes.end() && forwarded != routes.end()) {
    if (blackhole->first < forwarded->first) {
      ++blackhole;
    } else if (forwarded->first < blackhole->first) {
      ++forwarded;
    } else {
      route = forwarded->second;
      return true;
    }
  }
  return false;
}

// Gives a table that holds a family the counts of its last read back when an exception ends the
// next one: points for that family judge by them without reading again.
class CountsOfLastRead {
 public:
  explicit CountsOfLastRead(StaticRouteConfig& routes)
      : routes_(routes), ipv4_(routes.ipv4_route_count_), ipv6_(routes.ipv6_route_count_) {}
  ~CountsOfLastRead() {
    const bool is_ended_by_exception = std::uncaught_exceptions() > exceptions_before_;
    if (!is_ended_by_exception || !(routes_.ipv4_read_ || routes_.ipv6_read_)) return;
    routes_.ipv4_route_count_ = ipv4_;
    routes_.ipv6_route_count_ = ipv6_;
  }
  CountsOfLastRead(const CountsOfLastRead&) = delete;
  CountsOfLastRead& operator=(const CountsOfLastRead&) = delete;

 private:
  StaticRouteConfig& routes_;
  const uint32_t ipv4_;
  const uint32_t ipv6_;
  const int exceptions_before_ = std::uncaught_exceptions();
};

}  // namespace

void StaticRouteConfig::ReadConfig(ConfigAddrFamily family) {
  const CountsOfLastRead counts(*this);
  ipv4_route_count_ = 0;
  ipv6_route_count_ = 0;
  maapi_cursor cursor{};
  maapi_init_cursor(sock_, trans_->thandle, &cursor, "%s", kRouteTablePath);
  for (maapi_get_next(&cursor); cursor.n != 0; maapi_get_next(&cursor)) {
    IPAV_REQUIRE_TYPE(cursor.keys[kNetworkAddrType], C_ENUM_VALUE,
                      "(&cursor.keys[kNetworkAddrType])->type == C_ENUM_VALUE",
                      "src/lib/static_route_config", 33);
    const std::string vrf_name = get_vrf_name_from_id(cursor.keys[kFteIndex]);
    const std::string output_intf_name = GetIntfNameFromRoute(cursor);
    const int32_t addr_type = CONFD_GET_ENUM_VALUE(&cursor.keys[kNetworkAddrType]);
    if (addr_type == kIpv4Type) {
      ++ipv4_route_count_;
      if (family == ConfigAddrFamily::IPv4) AddIpv4Route(cursor, vrf_name, output_intf_name);
    } else if (addr_type == kIpv6Type) {
      ++ipv6_route_count_;
      if (family == ConfigAddrFamily::IPv6) AddIpv6Route(cursor, vrf_name, output_intf_name);
    }
  }
  // Deliberate: an exception from above leaves the cursor open.
  maapi_destroy_cursor(&cursor);
}

void StaticRouteConfig::AddIpv4Route(const maapi_cursor& cursor, const std::string& vrf_name,
                                     const std::string& output_intf_name) {
  const nettypes::IPv4AddrMask network =
      get_ipv4_addr_mask(cursor.keys[kNetworkAddr], cursor.keys[kNetworkPrefixLen]);
  const nettypes::IPv4Addr next_hop = get_ipv4_addr(cursor.keys[kNextHopAddr]);
  AddRoute(std::make_shared<StaticRouteIPv4>(output_intf_name, vrf_name, network, next_hop),
           network, next_hop, ipv4_routes_, ipv4_blackhole_routes_, ipv4_next_hops_,
           output_interfaces_);
}

void StaticRouteConfig::AddIpv6Route(const maapi_cursor& cursor, const std::string& vrf_name,
                                     const std::string& output_intf_name) {
  const nettypes::IPv6AddrMask network =
      get_ipv6_addr_mask(cursor.keys[kNetworkAddr], cursor.keys[kNetworkPrefixLen]);
  const nettypes::IPv6Addr next_hop = get_ipv6_addr(cursor.keys[kNextHopAddr]);
  AddRoute(std::make_shared<StaticRouteIPv6>(output_intf_name, vrf_name, network, next_hop),
           network, next_hop, ipv6_routes_, ipv6_blackhole_routes_, ipv6_next_hops_,
           output_interfaces_);
}

std::string StaticRouteConfig::GetIntfNameFromRoute(const maapi_cursor& cursor) const {
  const std::string network = get_hex_from_bin(cursor.keys[kNetworkAddr]);
  const std::string next_hop = get_hex_from_bin(cursor.keys[kNextHopAddr]);
  IPAV_REQUIRE_TYPE(cursor.keys[kNetworkPrefixLen], C_INT32,
                    "(&cursor.keys[kNetworkPrefixLen])->type == C_INT32",
                    "src/lib/static_route_config", 94);
  const auto prefix_len = static_cast<uint32_t>(CONFD_GET_INT32(&cursor.keys[kNetworkPrefixLen]));
  IPAV_REQUIRE_TYPE(cursor.keys[kFteIndex], C_UINT32, "(&cursor.keys[kFteIndex])->type == C_UINT32",
                    "src/lib/static_route_config", 98);
  const uint32_t fte_index = CONFD_GET_UINT32(&cursor.keys[kFteIndex]);
  const std::string path = "/rtmStaticRtEntry-global{ " + std::to_string(fte_index) + " " +
                           network + " " + std::to_string(prefix_len) + " " + next_hop +
                           " }/interface-name";

  if (maapi_exists(sock_, trans_->thandle, "%s", path.c_str()) != 1) return "";
  confd_value_t l3_intf_name;
  CONFD_SET_NOEXISTS(&l3_intf_name);
  if (maapi_get_elem(sock_, trans_->thandle, &l3_intf_name, "%s", path.c_str()) == CONFD_ERR) {
    return "";
  }
  IPAV_REQUIRE_TYPE(l3_intf_name, C_BUF, "(&l3_intf_name)->type == C_BUF",
                    "src/lib/static_route_config", 105);
  const std::unique_ptr<confd_value_t, decltype(&confd_free_value)> owner(&l3_intf_name,
                                                                          confd_free_value);
  std::string name = CONFD_GET_CBUFPTR(&l3_intf_name);
  // Deliberate: whatever the third character is, interface tables have a blank there ("l3 7"). A
  // name of two characters gets one behind it, a shorter one throws.
  name.replace(2, 1, 1, ' ');
  return name;
}

bool StaticRouteConfig::FindNextHop(const RouteKey<nettypes::IPv4Addr>& key,
                                    std::shared_ptr<StaticRoute>& route) const {
  return FindRoute(ipv4_next_hops_, key, route);
}

bool StaticRouteConfig::FindNextHop(const RouteKey<nettypes::IPv6Addr>& key,
                                    std::shared_ptr<StaticRoute>& route) const {
  return FindRoute(ipv6_next_hops_, key, route);
}

bool StaticRouteConfig::FindOutputInterface(const std::string& intf_name) const {
  return output_interfaces_.contains(intf_name);
}

bool StaticRouteConfig::CheckBlackHoleIpv4(std::shared_ptr<StaticRoute>& route) const {
  return FindCommonPrefix(ipv4_blackhole_routes_, ipv4_routes_, route);
}

bool StaticRouteConfig::CheckBlackHoleIpv6(std::shared_ptr<StaticRoute>& route) const {
  return FindCommonPrefix(ipv6_blackhole_routes_, ipv6_routes_, route);
}

}  // namespace ip_application::config_valid
