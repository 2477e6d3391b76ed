#ifndef SRC_LIB_VALIDATE_CONFIG_H_
#define SRC_LIB_VALIDATE_CONFIG_H_

#include <string>
#include <vector>

#include "confd_dp.h"
#include "config.h"

namespace ip_application::config_valid {

class StaticRouteConfig;

/// The checker: its member functions are the checks. A validation point makes one for its call;
/// nothing of it outlives the call.
///
/// A check returns 0 when the configuration passes, or -1 with its message in error_.
class ValidateConfig {
 public:
  /// At most 256 L3 interfaces, with names of 1 to 60 bytes, all letters, digits, "-" or "_".
  [[nodiscard]] int ValidateInterfaceL3(const Config& cfg);

  /// The addresses of every interface of one kind: usable (IPv4), no duplicates, no overlap with
  /// another interface of any kind, not the next hop of a static route. The first fault wins.
  [[nodiscard]] int ValidateInterfaceIPv4(const Config& cfg, InterfaceType type);
  [[nodiscard]] int ValidateInterfaceIPv6(const Config& cfg, InterfaceType type);

  /// Whether no address is the network or broadcast address of its subnet; false is a fault.
  [[nodiscard]] bool InterfaceIPv4IsValid(const Interface& intf);

  /// Whether an address occurs twice, with whatever prefix lengths; true is a fault.
  [[nodiscard]] bool InterfaceHasDuplicateIpv4(const Interface& intf);
  [[nodiscard]] bool InterfaceHasDuplicateIpv6(const Interface& intf);

  /// Whether an address of `a` overlaps one of `b` in a shared address space; true is a fault.
  [[nodiscard]] bool InterfaceIPv4Overlap(const Interface& a, const Interface& b);
  [[nodiscard]] bool InterfaceIPv6Overlap(const Interface& a, const Interface& b);

  /// Whether an interface of `table` overlaps one of another kind; true is a fault.
  [[nodiscard]] bool InterfaceIPv4Overlap(const InterfaceConfig& table,
                                          const std::vector<InterfaceConfig*>& tables);
  [[nodiscard]] bool InterfaceIPv6Overlap(const InterfaceConfig& table,
                                          const std::vector<InterfaceConfig*>& tables);

  /// Addresses of L3 and then loopback interfaces stay those that OSPFv2 processes use.
  [[nodiscard]] int ValidateOspfv2(const Config& cfg);

  /// Whether every interface still has the addresses that an OSPFv2 process uses and, when it has
  /// more of them than the process, no others.
  [[nodiscard]] bool ValidateOspfv2CrossIfL3(const L3Config& l3, const Ospfv2Config& ospf);
  [[nodiscard]] bool ValidateOspfv2CrossIfLo(const LoConfig& lo, const Ospfv2Config& ospf);

  /// L3 and then loopback interfaces are in the VRF of the OSPFv2 process that uses them.
  [[nodiscard]] int ValidateOspfv2Vrf(const Config& cfg);

  /// Whether every interface is in the VRF of its OSPFv2 process.
  [[nodiscard]] bool ValidateOspfv2CrossIfL3Vrf(const L3Config& l3, const Ospfv2Config& ospf);
  [[nodiscard]] bool ValidateOspfv2CrossIfLoVrf(const LoConfig& lo, const Ospfv2Config& ospf);

  /// The three rules about static routes that follow. All are checked; the message is that of the
  /// last one that fails.
  [[nodiscard]] int ValidateStaticRoute(const Config& cfg);

  /// No address of an interface is the next hop of a static route in the interface's VRF. Tests
  /// IPv4 when IPv4 routes were read, otherwise IPv6 when IPv6 routes were.
  [[nodiscard]] int ValidateStaticRouteNextHop(const Config& cfg);

  /// At most 1000 units of static routes; an IPv6 route weighs two.
  [[nodiscard]] int ValidateStaticRouteLimit(const Config& cfg);

  /// No prefix of a VRF is both a black hole and a route with a next hop.
  [[nodiscard]] int ValidateRouteBlackHole(const Config& cfg);

  /// An interface that is the output interface of a static route with a next hop has a lower layer.
  [[nodiscard]] int ValidateStaticRouteOutputIntf(const Config& cfg);

  /// Whether an address of the interface is the next hop of a route in its VRF; true is a fault.
  [[nodiscard]] bool InterfaceIPv4MatchStaticRouteNextHop(const Interface& intf,
                                                          const StaticRouteConfig& routes);
  [[nodiscard]] bool InterfaceIPv6MatchStaticRouteNextHop(const Interface& intf,
                                                          const StaticRouteConfig& routes);

  /// The message of the last check that failed, one whole sentence; empty before. A failing check
  /// replaces it.
  std::string error_;

 private:
  [[nodiscard]] bool KeepsOspfAddresses(const Interface& intf, const OspfIf& ospf);
  [[nodiscard]] bool IsInOspfVrf(const Interface& intf, const OspfIf& ospf);
};

/// How a validation point ends: hands the text of a check that failed to ConfD.
///
/// @param result  what a check of `checker` returned
/// @returns 0 when the check passed, else -1
int Conclude(confd_trans_ctx* tctx, const ValidateConfig& checker, int result);

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_VALIDATE_CONFIG_H_
