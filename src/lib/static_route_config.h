// The static routes of the configuration snapshot, and the questions that the checks ask of them.
#ifndef SRC_LIB_STATIC_ROUTE_CONFIG_H_
#define SRC_LIB_STATIC_ROUTE_CONFIG_H_

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "confd_maapi.h"
#include "config.h"
#include "nettypes/address.h"
#include "nettypes/ipv4.h"
#include "nettypes/ipv6.h"

namespace ip_application::config_valid {

/// One static route. Shared by the maps that index it; never changed once it is in one.
class StaticRoute {
 public:
  StaticRoute(std::string output_intf, std::string vrf)
      : output_intf_name(std::move(output_intf)), vrf_name(std::move(vrf)) {}
  virtual ~StaticRoute() = default;

  /// Destination prefix.
  virtual const nettypes::IPAddrMask& network() const = 0;

  /// Next hop, the unspecified address when the route has none.
  virtual const nettypes::IPAddr& next_hop() const = 0;

  /// Output interface, its third character made a blank: for an L3 interface the form of
  /// Interface::name ("l3 7"), but not for other kinds ("lo pback-0"). Empty when the route names
  /// none.
  std::string output_intf_name;
  std::string vrf_name;
};

/// A route of one address family.
template <typename Prefix, typename Addr>
class StaticRouteOf : public StaticRoute {
 public:
  StaticRouteOf(std::string output_intf, std::string vrf, Prefix network, Addr next_hop)
      : StaticRoute(std::move(output_intf), std::move(vrf)),
        network_(network),
        next_hop_(next_hop) {}

  const Prefix& network() const override { return network_; }
  const Addr& next_hop() const override { return next_hop_; }

 private:
  Prefix network_;
  Addr next_hop_;
};

using StaticRouteIPv4 = StaticRouteOf<nettypes::IPv4AddrMask, nettypes::IPv4Addr>;
using StaticRouteIPv6 = StaticRouteOf<nettypes::IPv6AddrMask, nettypes::IPv6Addr>;

/// A prefix or a next hop in a VRF. Ordered by VRF name, byte by byte, then by address.
template <typename T>
struct RouteKey {
  std::string vrf_name;
  T addr;

  friend bool operator<(const RouteKey& a, const RouteKey& b) {
    const int order = a.vrf_name.compare(b.vrf_name);
    return order != 0 ? order < 0 : a.addr < b.addr;
  }
};

template <typename T>
using RouteMap = std::map<RouteKey<T>, std::shared_ptr<StaticRoute>>;

/// The static route table. A route without a next hop is a black hole. Where two entries have the
/// same key in a map, the first in table order stays in it.
class StaticRouteConfig : public GenericConfig {
 public:
  /// Adds the routes of one family to the maps and counts those of both.
  ///
  /// @throws std::out_of_range  an output interface name is shorter than two characters; the cursor
  /// stays open then
  /// Source: candidate, /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry, and for the output interface
  /// /rtmStaticRtEntry-global/interface-name.
  void ReadConfig(ConfigAddrFamily family) override;

  /// Output interface of the route on which the cursor stands, its third character made a blank
  /// ("l3-7" becomes "l3 7"); empty when the route has none or it cannot be read.
  ///
  /// @throws std::out_of_range  the name is shorter than two characters
  std::string GetIntfNameFromRoute(const maapi_cursor& cursor) const;

  /// Whether a route has this next hop in this VRF; `route` then is the first such route in table
  /// order, otherwise it stays as it is.
  bool FindNextHop(const RouteKey<nettypes::IPv4Addr>& key,
                   std::shared_ptr<StaticRoute>& route) const;
  bool FindNextHop(const RouteKey<nettypes::IPv6Addr>& key,
                   std::shared_ptr<StaticRoute>& route) const;

  /// Whether a route with a next hop, of either family, has this output interface. The empty name
  /// is found when some such route names no interface.
  bool FindOutputInterface(const std::string& intf_name) const;

  /// Whether a prefix is both a black hole and a route with a next hop in one VRF; `route` then is
  /// the route with the next hop of the first such prefix in key order, otherwise it stays as it
  /// is.
  bool CheckBlackHoleIpv4(std::shared_ptr<StaticRoute>& route) const;
  bool CheckBlackHoleIpv6(std::shared_ptr<StaticRoute>& route) const;

  // Counts are of the whole table at the last read, whichever family it was for; one that an
  // exception ends changes them only as long as no family is read. Maps hold the families read so
  // far.
  uint32_t ipv4_route_count_ = 0;
  RouteMap<nettypes::IPv4AddrMask> ipv4_routes_;  ///< with a next hop, by prefix
  RouteMap<nettypes::IPv4AddrMask> ipv4_blackhole_routes_;
  RouteMap<nettypes::IPv4Addr> ipv4_next_hops_;  ///< with a next hop, by that
  uint32_t ipv6_route_count_ = 0;
  RouteMap<nettypes::IPv6AddrMask> ipv6_routes_;
  RouteMap<nettypes::IPv6AddrMask> ipv6_blackhole_routes_;
  RouteMap<nettypes::IPv6Addr> ipv6_next_hops_;
  std::set<std::string> output_interfaces_;  ///< of the routes with a next hop, both families

 private:
  void AddIpv4Route(const maapi_cursor& cursor, const std::string& vrf_name,
                    const std::string& output_intf_name);
  void AddIpv6Route(const maapi_cursor& cursor, const std::string& vrf_name,
                    const std::string& output_intf_name);
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_STATIC_ROUTE_CONFIG_H_
