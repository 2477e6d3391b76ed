#include "validate_config.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "address_overlap.h"
#include "config.h"
#include "ip_app_validation/ip_app_validation.h"
#include "static_route_config.h"
#include "validate_logger.h"
#include "validation_points.h"
#include "ztconfd.h"

namespace ip_application::config_valid {

const std::array<PointRow, 11> validation_point_table = {{
    {validate_intf_l3_name, "intf_l3_name_validation"},
    {validate_intf_vrf, "intf_vrf_validation"},
    {validate_ipv4_addr, "ipv4_addr_validation"},
    {validate_ipv4_addr_cross_prot, "ipv4_addr_prot_cross_validation"},
    {validate_ipv4_addr_route, "ipv4_addr_route_validation"},
    {validate_ipv6_addr, "ipv6_addr_validation"},
    {validate_ipv6_addr_route, "ipv6_addr_route_validation"},
    {validate_ipv6_nd_ra_interval, "validate_ipv6_nd_ra_interval"},
    {validate_ipv6_nd_ra_lifetime, "validate_ipv6_nd_ra_lifetime"},
    {validate_route_l3_intf, "static_route_l3_intf_validation"},
    {validate_lower_layer_cross_prot, "lower_layer_prot_cross_validation"},
}};

namespace {

constexpr size_t kMaxL3Interfaces = 256;
constexpr size_t kMaxL3NameLength = 60;  // bytes
constexpr size_t kMinL3NameLength = 1;   // bytes
constexpr uint32_t kMaxStaticRouteUnits = 1000;
constexpr uint32_t kIpv6RouteUnits = 2;  // an IPv6 route takes the room of two IPv4 routes
constexpr char kL3NameCharacters[] =
    "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";

// Under this name the daemon files the Config that lib_init makes.
constexpr char kContextName[] = "ip_app_validation";

constexpr char kInvalidInterface[] = "invalid interface being handled by IP-App validation";
constexpr size_t kFewAddresses = 20;  // up to here comparing all pairs is quicker than sorting

// The first address that occurs again further on, or null. Prefix lengths play no part:
// 10.0.0.1/24 and 10.0.0.1/16 are the same address.
template <typename AddrMask>
const AddrMask* FirstDuplicateOfFew(const std::list<AddrMask>& addrs) {
  for (auto a = addrs.begin(); a != addrs.end(); ++a) {
    const auto same_addr = [a](const AddrMask& b) { return b.addr() == a->addr(); };
    if (std::any_of(std::next(a), addrs.end(), same_addr)) return &*a;
  }
  return nullptr;
}

// The same for any number: sorted by address, and equal ones by position, an address that occurs
// again has an equal one behind it. The one with the smallest position is wanted.
template <typename AddrMask>
const AddrMask* FirstDuplicate(const std::list<AddrMask>& addrs) {
  if (addrs.size() <= kFewAddresses) return FirstDuplicateOfFew(addrs);
  struct Entry {
    const AddrMask* mask;
    size_t position;
  };
  std::vector<Entry> sorted;
  for (const AddrMask& mask : addrs) sorted.push_back({&mask, sorted.size()});
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Entry& a, const Entry& b) { return a.mask->addr() < b.mask->addr(); });
  const Entry* first = nullptr;
  for (size_t i = 0; i + 1 < sorted.size(); ++i) {
    if (!(sorted[i].mask->addr() == sorted[i + 1].mask->addr())) continue;
    if (first == nullptr || sorted[i].position < first->position) first = &sorted[i];
  }
  return first == nullptr ? nullptr : first->mask;
}

// The first two that overlap, in the order of `addrs_a` and for each of these of `addrs_b`; null
// when none do.
template <typename AddrMask>
std::pair<const AddrMask*, const AddrMask*> FirstOverlap(const std::list<AddrMask>& addrs_a,
                                                         const std::list<AddrMask>& addrs_b) {
  for (const AddrMask& a : addrs_a) {
    for (const AddrMask& b : addrs_b) {
      if (a.Overlap(b)) return {&a, &b};
    }
  }
  return {nullptr, nullptr};
}

// The first of `addrs` that is the next hop of a route in the VRF, or null. `route` then is that
// route.
template <typename AddrMask>
const AddrMask* FirstNextHop(const std::list<AddrMask>& addrs, const std::string& vrf_name,
                             const StaticRouteConfig& routes, std::shared_ptr<StaticRoute>& route) {
  for (const AddrMask& address : addrs) {
    if (routes.FindNextHop({vrf_name, address.addr()}, route)) return &address;
  }
  return nullptr;
}

// What the platform's stream operator writes, which need not be what to_string() gives.
template <typename AddrMask>
std::string Streamed(const AddrMask& mask) {
  std::ostringstream text;
  text.exceptions(std::ios_base::badbit);  // otherwise a text is cut short where memory runs out
  text << mask;
  return text.str();
}

// A device's library compares no identifiers: the one of no logical interface is all zero bytes.
bool HasLowerLayer(const limid_t& lim_id) {
  const auto bytes = std::bit_cast<std::array<uint8_t, sizeof(limid_t)>>(lim_id);
  return std::any_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; });
}

// The rules of one address family. Each says whether it is broken, and by then has left its
// sentence in the checker.

struct Ipv4Rules {
  using AddrMask = nettypes::IPv4AddrMask;

  bool IsFaulty(const Interface& intf) const {
    return !checker.InterfaceIPv4IsValid(intf) || checker.InterfaceHasDuplicateIpv4(intf);
  }
  bool Overlap(const Interface& a, const Interface& b) const {
    return checker.InterfaceIPv4Overlap(a, b);
  }
  bool IsNextHop(const Interface& intf, const StaticRouteConfig& routes) const {
    return checker.InterfaceIPv4MatchStaticRouteNextHop(intf, routes);
  }

  ValidateConfig& checker;
};

struct Ipv6Rules {
  using AddrMask = nettypes::IPv6AddrMask;

  bool IsFaulty(const Interface& intf) const { return checker.InterfaceHasDuplicateIpv6(intf); }
  bool Overlap(const Interface& a, const Interface& b) const {
    return checker.InterfaceIPv6Overlap(a, b);
  }
  bool IsNextHop(const Interface& intf, const StaticRouteConfig& routes) const {
    return checker.InterfaceIPv6MatchStaticRouteNextHop(intf, routes);
  }

  ValidateConfig& checker;
};

// Whether an interface of `table` overlaps one of a table of another kind: tables in their order,
// then the other table's interfaces, then those of `table`. Interfaces that can meet none of
// `table` are passed over: `overlap` is that of `table`.
template <typename Rules>
bool OverlapsAcrossTables(const Rules& rules,
                          const AddressOverlap<typename Rules::AddrMask>& overlap,
                          const InterfaceConfig& table,
                          const std::vector<InterfaceConfig*>& tables) {
  for (const InterfaceConfig* other_table : tables) {
    if (other_table->type_ == table.type_) continue;
    for (const Interface& other : other_table->interfaces_) {
      if (!overlap.MayOverlap(other)) continue;
      for (const Interface& own : table.interfaces_) {
        if (rules.Overlap(own, other)) return true;
      }
    }
  }
  return false;
}

// Whether a rule is broken: on an interface of `table`, each one in turn, and after that between
// one of them and one of another kind. The first fault wins.
template <typename Rules>
bool AnyFault(const Rules& rules, const Config& cfg, const InterfaceConfig& table) {
  const std::vector<Interface>& interfaces = table.interfaces_;
  const AddressOverlap<typename Rules::AddrMask> overlap(interfaces);
  for (size_t i = 0; i < interfaces.size(); ++i) {
    if (rules.IsFaulty(interfaces[i])) return true;
    if (overlap.MayOverlapLater(i)) {
      for (size_t j = i + 1; j < interfaces.size(); ++j) {
        if (rules.Overlap(interfaces[i], interfaces[j])) return true;
      }
    }
    if (rules.IsNextHop(interfaces[i], *cfg.static_route_config_)) return true;
  }
  return OverlapsAcrossTables(rules, overlap, table, cfg.intf_configs_);
}

// Whether `passes` holds for every OSPF record and the interface of its name, in the order of the
// records. As long as they come in the order of the table each name is only compared with the next
// one, so that the tables of a large device stream through the caches; the index for all other
// questions is made when the first of them comes. Either way the answer is the one that a search
// from the front gives: names are unique.
template <typename Passes>
bool AllPairsByName(const Ospfv2Config& ospf, const InterfaceConfig& table, const Passes& passes) {
  const std::vector<Interface>& interfaces = table.interfaces_;
  InterfaceIndex index(interfaces);
  size_t next = 0;  // behind the interface found last
  return std::all_of(ospf.table_.begin(), ospf.table_.end(), [&](const auto& record) {
    const std::string& name = record->intf_name;
    const bool is_next = next < interfaces.size() && interfaces[next].name == name;
    const size_t position = is_next ? next : index.Find(name);
    if (position == InterfaceIndex::kNone) return true;
    next = position + 1;
    return passes(interfaces[position], *record);
  });
}

// The first of `wanted` that is not in `present`, prefix length included; null when all are.
const nettypes::IPv4AddrMask* FirstMissing(const std::list<nettypes::IPv4AddrMask>& wanted,
                                           const std::list<nettypes::IPv4AddrMask>& present) {
  for (const nettypes::IPv4AddrMask& mask : wanted) {
    if (std::find(present.begin(), present.end(), mask) == present.end()) return &mask;
  }
  return nullptr;
}

// The first row with whose name `opaque` begins, or null. Deliberate: characters after the name are
// allowed, so that the data model can tell its statements apart.
const PointRow* FindPointRow(std::string_view opaque) {
  for (const PointRow& point : validation_point_table) {
    if (opaque.starts_with(point.name)) return &point;
  }
  return nullptr;
}

// The list key in a display name: what stands behind its first blank.
std::string KeyOf(const std::string& display_name) {
  return display_name.substr(display_name.find(' ') + 1);  // the whole name if there is no blank
}

}  // namespace

int ValidateConfig::ValidateInterfaceL3(const Config& cfg) {
  const std::vector<Interface>& interfaces = cfg.l3_config_.interfaces_;
  if (interfaces.size() > kMaxL3Interfaces) {
    error_ = "too many 'interface l3', " + std::to_string(interfaces.size()) +
             " configured, at most " + std::to_string(kMaxL3Interfaces) + " must be configured";
    return -1;
  }
  for (const Interface& intf : interfaces) {
    const std::string key = KeyOf(intf.name);
    if (key.size() > kMaxL3NameLength) {
      error_ = "L3 interface name " + key +
               " is too long (maximum length: " + std::to_string(kMaxL3NameLength) + " characters)";
      return -1;
    }
    if (key.size() < kMinL3NameLength) {
      error_ = "L3 interface name " + key +
               " is too short (minimum length: " + std::to_string(kMinL3NameLength) + " character)";
      return -1;
    }
    if (key.find_first_not_of(kL3NameCharacters) != std::string::npos) {
      error_ = "L3 interface name " + key +
               " contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)";
      return -1;
    }
  }
  return 0;
}

int ValidateConfig::ValidateInterfaceIPv4(const Config& cfg, InterfaceType type) {
  const InterfaceConfig* table = cfg.intf_by_type(type);
  if (table == nullptr) {
    error_ = kInvalidInterface;
    return -1;
  }
  return AnyFault(Ipv4Rules{*this}, cfg, *table) ? -1 : 0;
}

int ValidateConfig::ValidateInterfaceIPv6(const Config& cfg, InterfaceType type) {
  const InterfaceConfig* table = cfg.intf_by_type(type);
  if (table == nullptr) {
    error_ = kInvalidInterface;
    return -1;
  }
  return AnyFault(Ipv6Rules{*this}, cfg, *table) ? -1 : 0;
}

// An interface address is neither the network nor the broadcast address of its subnet. Deliberate:
// prefixes of 31 and 32 bits, point-to-point links and hosts, are exempt.
bool ValidateConfig::InterfaceIPv4IsValid(const Interface& intf) {
  for (const nettypes::IPv4AddrMask& address : intf.ipv4_addr_list) {
    if (address.prefix_len() == 31 || address.prefix_len() == 32) continue;
    if (address.IsNetworkAddr()) {
      error_ = intf.name + " ipv4 address " + Streamed(address) +
               " cannot be configured as network address.";
      return false;
    }
    if (address.IsBroadcastAddr()) {
      error_ = intf.name + " ipv4 address " + Streamed(address) +
               " cannot be configured as broadcast address.";
      return false;
    }
  }
  return true;
}

// An address may be configured only once on an interface.
bool ValidateConfig::InterfaceHasDuplicateIpv4(const Interface& intf) {
  const nettypes::IPv4AddrMask* duplicate = FirstDuplicate(intf.ipv4_addr_list);
  if (duplicate == nullptr) return false;
  error_ = intf.name + " has duplicated IPv4 address " + duplicate->addr().to_string();
  return true;
}

bool ValidateConfig::InterfaceHasDuplicateIpv6(const Interface& intf) {
  const nettypes::IPv6AddrMask* duplicate = FirstDuplicate(intf.ipv6_addr_list);
  if (duplicate == nullptr) return false;
  error_ = intf.name + " has duplicated IPv6 address " + duplicate->addr().to_string();
  return true;
}

// Interfaces of one address space have no address in common. Deliberate: the IPv4 message names the
// VRFs, the IPv6 message does not.
bool ValidateConfig::InterfaceIPv4Overlap(const Interface& a, const Interface& b) {
  if (!ShareAddressSpace(a.vrf_name, b.vrf_name)) return false;
  const auto [addr_a, addr_b] = FirstOverlap(a.ipv4_addr_list, b.ipv4_addr_list);
  if (addr_a == nullptr) return false;
  error_ = a.name + " vrf " + a.vrf_name + " ipv4 address " + Streamed(*addr_a) +
           " overlaps with " + b.name + " vrf " + b.vrf_name + " ipv4 address " +
           Streamed(*addr_b) + ".";
  return true;
}

bool ValidateConfig::InterfaceIPv6Overlap(const Interface& a, const Interface& b) {
  if (!ShareAddressSpace(a.vrf_name, b.vrf_name)) return false;
  const auto [addr_a, addr_b] = FirstOverlap(a.ipv6_addr_list, b.ipv6_addr_list);
  if (addr_a == nullptr) return false;
  error_ = a.name + " ipv6 address " + Streamed(*addr_a) + " overlaps with " + b.name +
           " ipv6 address " + Streamed(*addr_b) + ".";
  return true;
}

bool ValidateConfig::InterfaceIPv4Overlap(const InterfaceConfig& table,
                                          const std::vector<InterfaceConfig*>& tables) {
  const AddressOverlap<nettypes::IPv4AddrMask> overlap(table.interfaces_);
  return OverlapsAcrossTables(Ipv4Rules{*this}, overlap, table, tables);
}

bool ValidateConfig::InterfaceIPv6Overlap(const InterfaceConfig& table,
                                          const std::vector<InterfaceConfig*>& tables) {
  const AddressOverlap<nettypes::IPv6AddrMask> overlap(table.interfaces_);
  return OverlapsAcrossTables(Ipv6Rules{*this}, overlap, table, tables);
}

int ValidateConfig::ValidateOspfv2(const Config& cfg) {
  const bool passes = ValidateOspfv2CrossIfL3(cfg.l3_config_, cfg.ospfv2_config_) &&
                      ValidateOspfv2CrossIfLo(cfg.lo_config_, cfg.ospfv2_config_);
  return passes ? 0 : -1;
}

int ValidateConfig::ValidateOspfv2Vrf(const Config& cfg) {
  const bool passes = ValidateOspfv2CrossIfL3Vrf(cfg.l3_config_, cfg.ospfv2_config_) &&
                      ValidateOspfv2CrossIfLoVrf(cfg.lo_config_, cfg.ospfv2_config_);
  return passes ? 0 : -1;
}

bool ValidateConfig::ValidateOspfv2CrossIfL3(const L3Config& l3, const Ospfv2Config& ospf) {
  return AllPairsByName(ospf, l3, std::bind_front(&ValidateConfig::KeepsOspfAddresses, this));
}

bool ValidateConfig::ValidateOspfv2CrossIfLo(const LoConfig& lo, const Ospfv2Config& ospf) {
  return AllPairsByName(ospf, lo, std::bind_front(&ValidateConfig::KeepsOspfAddresses, this));
}

bool ValidateConfig::ValidateOspfv2CrossIfL3Vrf(const L3Config& l3, const Ospfv2Config& ospf) {
  return AllPairsByName(ospf, l3, std::bind_front(&ValidateConfig::IsInOspfVrf, this));
}

bool ValidateConfig::ValidateOspfv2CrossIfLoVrf(const LoConfig& lo, const Ospfv2Config& ospf) {
  return AllPairsByName(ospf, lo, std::bind_front(&ValidateConfig::IsInOspfVrf, this));
}

// An address that OSPFv2 uses stays on its interface with its prefix length, and no other is added.
// Deliberate: an added address is looked for only when the interface has more addresses than the
// process uses.
bool ValidateConfig::KeepsOspfAddresses(const Interface& intf, const OspfIf& ospf) {
  const nettypes::IPv4AddrMask* gone = FirstMissing(ospf.addresses, intf.ipv4_addr_list);
  if (gone != nullptr) {
    error_ = gone->to_string() + " cannot be modified nor deleted, it is assigned to router ospf " +
             std::to_string(ospf.process_id) + " vrf " + ospf.vrf_name + " area " +
             std::to_string(ospf.area.to_uint32()) + " (" + ospf.area.to_string() + ")";
    return false;
  }
  if (ospf.addresses.size() >= intf.ipv4_addr_list.size()) return true;
  const nettypes::IPv4AddrMask* added = FirstMissing(intf.ipv4_addr_list, ospf.addresses);
  if (added == nullptr) return true;
  error_ = added->to_string() + " cannot be added after interface is assigned to router ospf " +
           std::to_string(ospf.process_id) + " vrf " + ospf.vrf_name + " area " +
           std::to_string(ospf.area.to_uint32()) + " (" + ospf.area.to_string() + ")";
  return false;
}

// An interface is in the VRF of the OSPFv2 process that uses it.
bool ValidateConfig::IsInOspfVrf(const Interface& intf, const OspfIf& ospf) {
  if (intf.vrf_name == ospf.vrf_name) return true;
  error_ = intf.name + " vrf " + intf.vrf_name + " and router ospf " +
           std::to_string(ospf.process_id) + " vrf " + ospf.vrf_name +
           " cannot be associated with divergent VRF";
  return false;
}

// All three rules about routes. Deliberate: they always run all three, and the message of the last
// one that fails is the one that the operator sees.
int ValidateConfig::ValidateStaticRoute(const Config& cfg) {
  int result = ValidateStaticRouteNextHop(cfg);
  result |= ValidateStaticRouteLimit(cfg);
  result |= ValidateRouteBlackHole(cfg);
  return result;
}

// An address of an interface may not be the next hop of a static route in the interface's VRF.
// Deliberate: with both families loaded only IPv4 is tested.
int ValidateConfig::ValidateStaticRouteNextHop(const Config& cfg) {
  const StaticRouteConfig& routes = *cfg.static_route_config_;
  for (const InterfaceConfig* table : cfg.intf_configs_) {
    for (const Interface& intf : table->interfaces_) {
      if (routes.ipv4_read_) {
        if (InterfaceIPv4MatchStaticRouteNextHop(intf, routes)) return -1;
      } else if (routes.ipv6_read_) {
        if (InterfaceIPv6MatchStaticRouteNextHop(intf, routes)) return -1;
      }
    }
  }
  return 0;
}

// At most 1000 units of static routes, of both families together.
int ValidateConfig::ValidateStaticRouteLimit(const Config& cfg) {
  const uint32_t ipv4_count = cfg.static_route_config_->ipv4_route_count_;
  const uint32_t ipv6_count = cfg.static_route_config_->ipv6_route_count_;
  if (ipv4_count + kIpv6RouteUnits * ipv6_count <= kMaxStaticRouteUnits) return 0;
  ValidateLogger::Log(
      "The maximum number of available static routes was exceeded! IPv4 static routes = %u; IPv6 "
      "static routes = %u;",
      ipv4_count, ipv6_count);
  error_ = "The maximum number of available static routes was exceeded.";
  return -1;
}

// A prefix of a VRF is either a black hole or has next hops. The families that were read are
// tested, IPv4 first.
int ValidateConfig::ValidateRouteBlackHole(const Config& cfg) {
  const StaticRouteConfig& routes = *cfg.static_route_config_;
  std::shared_ptr<StaticRoute> route;
  if ((routes.ipv4_read_ && routes.CheckBlackHoleIpv4(route)) ||
      (routes.ipv6_read_ && routes.CheckBlackHoleIpv6(route))) {
    error_ = "Prefix " + route->network().to_string() +
             " cannot be black-hole and have next-hop at the same time";
    return -1;
  }
  return 0;
}

bool ValidateConfig::InterfaceIPv4MatchStaticRouteNextHop(const Interface& intf,
                                                          const StaticRouteConfig& routes) {
  std::shared_ptr<StaticRoute> route;
  const nettypes::IPv4AddrMask* address =
      FirstNextHop(intf.ipv4_addr_list, intf.vrf_name, routes, route);
  if (address == nullptr) return false;
  error_ = intf.name + " ipv4 address " + address->to_string() + " and static route " +
           route->network().to_string() + " next-hop " + route->next_hop().to_string() +
           " cannot have address conflict.";
  return true;
}

bool ValidateConfig::InterfaceIPv6MatchStaticRouteNextHop(const Interface& intf,
                                                          const StaticRouteConfig& routes) {
  std::shared_ptr<StaticRoute> route;
  const nettypes::IPv6AddrMask* address =
      FirstNextHop(intf.ipv6_addr_list, intf.vrf_name, routes, route);
  if (address == nullptr) return false;
  error_ = intf.name + " ipv6 address " + address->to_string() + " and static route " +
           route->network().to_string() + " next-hop " + route->next_hop().to_string() +
           " cannot have address conflict.";
  return true;
}

// The output interface of a static route with a next hop keeps its lower layer. Loopback and
// management interfaces never have one, so their names are tested whenever they are in a table.
int ValidateConfig::ValidateStaticRouteOutputIntf(const Config& cfg) {
  for (const InterfaceConfig* table : cfg.intf_configs_) {
    for (const Interface& intf : table->interfaces_) {
      if (HasLowerLayer(intf.lim_id)) continue;
      if (!cfg.static_route_config_->FindOutputInterface(intf.name)) continue;
      error_ = intf.name +
               " is being used by a static route. Lower-layer-if cannot be removed from this "
               "interface";
      return -1;
    }
  }
  return 0;
}

int Conclude(confd_trans_ctx* tctx, const ValidateConfig& checker, int result) {
  if (result == 0) return 0;
  confd_trans_seterr(tctx, "%s", checker.error_.c_str());
  return -1;
}

}  // namespace ip_application::config_valid

using ip_application::config_valid::Conclude;
using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::FindPointRow;
using ip_application::config_valid::kContextName;
using ip_application::config_valid::PointRow;
using ip_application::config_valid::ValidateConfig;

int lib_init(void** out) {
  *out = new Config();
  return 0;
}

int get_validation_point(char* buf, int size) {
  snprintf(buf, static_cast<size_t>(size), "%s", kContextName);
  return 0;
}

int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  if (keypath == nullptr || newval == nullptr || tctx == nullptr) return -1;

  const int sock = ztconfd_maapi_socket_get(tctx->vcb_opaque);
  if (sock < 0) return -1;

  auto* const config = static_cast<Config*>(get_lib_context(tctx->v_opaque, kContextName));
  if (config == nullptr) {
    confd_trans_seterr(tctx, "Lib context is null!");
    return -1;
  }

  // Deliberate: an unknown validation point, too, leaves the Config bound to its transaction.
  config->set_sock(sock);
  config->set_confd_trans(tctx);

  const PointRow* point = FindPointRow(tctx->validate_opaque);
  if (point == nullptr) return -1;
  return point->callback(sock, tctx, keypath, newval, *config);
}

int lib_finish(void** ctx) {
  delete static_cast<Config*>(*ctx);
  return 0;
}

int validate_intf_l3_name(int /*maapi_sock*/, confd_trans_ctx* tctx, confd_hkeypath_t* /*keypath*/,
                          confd_value_t* /*newval*/, Config& cfg) {
  cfg.l3_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  ValidateConfig checker;
  return Conclude(tctx, checker, checker.ValidateInterfaceL3(cfg));
}
