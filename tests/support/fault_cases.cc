#include "support/fault_cases.h"

#include <map>

namespace tests {
namespace {

const std::vector<DocumentedAssertion> kAssertions = {
    {"config:52", "Config::intf_type_from_confd_path", "(&keypath->v[0][0])->type == C_XMLTAG"},
    {"config:196", "GenericConfig::get_intf_lim_id", "(&confd_if_index)->type == C_INT32"},
    {"config:214", "GenericConfig::get_vrf_name", "(&l3_vrf_name)->type == C_BUF"},
    {"config:236", "GenericConfig::get_vrf_name_from_id", "(&vrf)->type == C_BUF"},
    {"static_route_config:33", "StaticRouteConfig::ReadConfig",
     "(&cursor.keys[kNetworkAddrType])->type == C_ENUM_VALUE"},
    {"static_route_config:94", "StaticRouteConfig::GetIntfNameFromRoute",
     "(&cursor.keys[kNetworkPrefixLen])->type == C_INT32"},
    {"static_route_config:98", "StaticRouteConfig::GetIntfNameFromRoute",
     "(&cursor.keys[kFteIndex])->type == C_UINT32"},
    {"static_route_config:105", "StaticRouteConfig::GetIntfNameFromRoute",
     "(&l3_intf_name)->type == C_BUF"},
    {"validate_intf_vrf:98", "ValidateIntfLoVrf::IterValidate",
     "(&keypath->v[0][0])->type == C_XMLTAG"},
    {"validate_intf_vrf:102", "ValidateIntfLoVrf::IterValidate",
     "(&keypath->v[1][0])->type == C_BUF"},
    {"validate_intf_vrf:126", "ValidateIntfL3Vrf::IterValidate",
     "(&keypath->v[0][0])->type == C_XMLTAG"},
    {"validate_intf_vrf:128", "ValidateIntfL3Vrf::IterValidate",
     "(&keypath->v[1][0])->type == C_BUF"},
    {"validate_intf_vrf:159", "ValidateIntfVrfOspfv3::IterValidate",
     "(&keypath->v[0][0])->type == C_XMLTAG"},
    {"validate_intf_vrf:160", "ValidateIntfVrfOspfv3::IterValidate", "(newval)->type == C_BUF"},
    {"validate_intf_vrf:237", "validate_intf_vrf", "(&keypath->v[4][0])->type == C_XMLTAG"},
    {"validate_ip_addr_cross_ospf:53", "validate_lower_layer_cross_ospfv3",
     "(&keypath->v[1][0])->type == C_BUF"},
    {"validate_ip_addr_cross_ospf:79", "validate_lower_layer_cross_ospfv3",
     "(&cursor.keys[1])->type == C_IPV4"},
    {"validate_ip_addr_cross_ospf:84", "validate_lower_layer_cross_ospfv3",
     "(&cursor.keys[0])->type == C_UINT32"},
    {"validate_ip_addr_cross_ospf:85", "validate_lower_layer_cross_ospfv3",
     "(&cursor.keys[2])->type == C_BUF"},
    {"validate_nd_ra:32", "validate_ipv6_nd_ra_interval", "(&keypath->v[3][0])->type == C_BUF"},
    {"validate_nd_ra:33", "validate_ipv6_nd_ra_interval", "(&keypath->v[4][0])->type == C_XMLTAG"},
    {"validate_nd_ra:84", "validate_ipv6_nd_ra_lifetime", "(&keypath->v[3][0])->type == C_BUF"},
    {"validate_nd_ra:85", "validate_ipv6_nd_ra_lifetime", "(&keypath->v[4][0])->type == C_XMLTAG"},
};
// The configuration -------------------------------------------------------------------------------

// Every point accepts it, and many values matter: without its VRF an interface overlaps with
// another one, and a route contradicts another one.
Device Candidate() {
  const std::map<std::string, int> timers = {
      {"max-interval", 600}, {"min-interval", 450}, {"lifetime", 1800}};
  Device device;
  device.l3 = {{.name = "lan-1",
                .vlan = 100,
                .primary = "192.0.2.1/25",
                .ipv4 = {"198.51.100.1/24"},
                .ipv6 = {"2001:db8:1::1/64", "2001:db8:2::1/64"},
                .timers = timers},
               {.name = "lan-2",
                .vrf = "red",
                .vlan = 200,
                .primary = "192.0.2.2/25",
                .ipv6 = {"2001:db8:1::2/64"}},
               {.name = "lan-3", .vlan = 300, .primary = "203.0.113.1/24"},
               {.name = "wan", .vrf = "blue", .vlan = 400, .primary = "10.4.0.1/24"}};
  device.loopback = {{.name = "0", .ipv4 = {"10.255.0.1/32"}, .ipv6 = {"2001:db8:ff::1/128"}},
                     {.name = "1",
                      .vrf = "red",
                      .ipv4 = {"10.255.0.1/32", "10.255.0.2/32"},
                      .ipv6 = {"2001:db8:ff::1/128"}}};
  device.mgmt = {
      {.name = "0",
       .vrf = "mgmt",
       .primary = "172.16.0.1/24",
       .ipv6 = {"2001:db8:99::1/64"},
       .timers = timers},
      {.name = "1", .vrf = "blue", .primary = "172.16.0.2/24", .ipv6 = {"2001:db8:99::2/64"}}};
  device.vrfs = {{11, "red"}, {13, "red"}, {21, "blue"}, {22, "blue"}};
  device.routes = {
      {1, "10.0.0.0/8", "192.0.2.3", "l3-lan-1"},
      {2, "10.1.0.0/16"},
      {3, "10.2.0.0/16", "203.0.113.9"},
      {4, "2001:db8:aaaa::/48", "2001:db8:1::9", "l3-lan-1"},
      {5, "2001:db8:bbbb::/48"},
      {11, "10.1.0.0/16", "192.0.2.4", "l3-lan-2"},
      {13, "2001:db8:bbbb::/48", "2001:db8:1::8", "l3-lan-2"},
      {21, "10.5.0.0/16", "192.0.2.1"},
      {22, "2001:db8:cccc::/48", "2001:db8:1::1"},
  };
  device.ospf = {
      {10, "0.0.0.1", "l3-lan-1", "192.0.2.1", 25}, {11, "0.0.0.1", "l3-lan-1", "198.51.100.1", 24},
      {20, "0.0.0.0", "l3-lan-2", "192.0.2.2", 25}, {30, "0.0.0.0", "loopback-0", "10.255.0.1", 32},
      {40, "0.0.0.0", "mgmt", "172.16.0.1", 24},    {50, "0.0.0.0", "l3-gone", "10.9.9.9", 24}};
  device.ospf_processes = {{10, 1, "global"}, {11, 1, "global"}, {20, 2, "red"},
                           {30, 1, "global"}, {40, 1, "global"}, {50, 1, "global"}};
  device.ospfv3 = {{10, "0.0.0.1", "l3-lan-3", 1000300},
                   {10, "0.0.0.1", "loopback-0", -1},
                   {11, "0.0.0.0", "l3-old", 1000999}};
  return device;
}

// The calls ---------------------------------------------------------------------------------------

const std::set<std::string> kL3Table = {"config:196", "config:214"};
const std::set<std::string> kRoutes = {"config:236", "static_route_config:33",
                                       "static_route_config:94", "static_route_config:98",
                                       "static_route_config:105"};

std::set<std::string> Places(std::vector<std::set<std::string>> sets) {
  std::set<std::string> all;
  for (const auto& set : sets) all.insert(set.begin(), set.end());
  return all;
}

constexpr char kL3List[] = "/config/interface/l3";
constexpr char kLoopbackList[] = "/config/interface/loopback";
constexpr char kMgmtList[] = "/config/interface/mgmt";
constexpr char kL3Timers[] = "/config/interface/l3{lan-1}/ipv6/nd/ra";
constexpr char kMgmtTimers[] = "/config/interface/mgmt{0}/ipv6/nd/ra";

void OverlapIpv4(Situation& situation) {
  situation.candidate.Find("loopback", "0").ipv4.push_back("192.0.2.20/32");
  situation.candidate.Find("mgmt", "1").primary = "172.16.0.0/24";
}
void OverlapIpv6(Situation& situation) {
  situation.candidate.Find("loopback", "0").ipv6.push_back("2001:db8:1::20/128");
  situation.candidate.Find("mgmt", "0").ipv6.push_back("2001:db8:1::30/64");
}
void ContradictOspfv3(Situation& situation) {
  situation.candidate.Find("l3", "lan-3").vrf = "green";
  situation.candidate.Find("loopback", "1").vrf = "green";
  situation.candidate.ospfv3.push_back({12, "0.0.0.0", "loopback-1", -1});
}
void ShortenTimers(Situation& situation) {
  for (ConfiguredIntf* intf :
       {&situation.candidate.Find("l3", "lan-1"), &situation.candidate.Find("mgmt", "0")}) {
    intf->timers["min-interval"] = 451;
    intf->timers["lifetime"] = 600;
  }
}

const std::vector<FaultCase> kCases = {
    {"Names", "intf_l3_name_validation", kL3List, "",
     [](Situation& s) { s.candidate.l3.push_back({.name = "z z"}); },
     "L3 interface name z z contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)",
     kL3Table},
    {"VrfOfL3", "intf_vrf_validation", kL3List, "4", ContradictOspfv3,
     "l3 lan-3 is configured in OSPFv3 and cannot be associated with a VRF",
     Places({kL3Table, kRoutes, {"config:52", "validate_intf_vrf:126", "validate_intf_vrf:128"}})},
    {"VrfOfLoopback", "intf_vrf_validation", kLoopbackList, "4", ContradictOspfv3,
     "loopback 1 is configured in OSPFv3 and cannot be associated with a VRF",
     Places({kL3Table, kRoutes, {"config:52", "validate_intf_vrf:98", "validate_intf_vrf:102"}}),
     false},
    {"VrfOfOspf", "intf_vrf_validation",
     "/internal/ospf-interface-l3{10 0.0.0.1 l3-lan-1 192.0.2.1}/pm/binding/association", "4",
     [](Situation& s) { s.candidate.ospf_processes[3].vrf = "red"; },
     "loopback 0 vrf global and router ospf 1 vrf red cannot be associated with divergent VRF",
     Places({kL3Table, kRoutes, {"config:52", "validate_intf_vrf:237"}})},
    {"VrfOfOspfv3", "intf_vrf_validation",
     "/internal/ospfv3-interface-l3{10 0.0.0.1 l3-lan-3}/pm/binding/association", "4",
     [](Situation& s) {
       s.candidate.ospfv3.push_back({12, "0.0.0.0", "loopback-1", -1});
     },
     "loopback 1 is associated with a VRF and cannot be configured in OSPFv3",
     Places({kL3Table,
             kRoutes,
             {"config:52", "validate_intf_vrf:159", "validate_intf_vrf:160",
              "validate_intf_vrf:237"}}),
     false},
    {"Ipv4OfL3", "ipv4_addr_validation", kL3List, "4", OverlapIpv4,
     "l3 lan-1 vrf global ipv4 address 192.0.2.1/25 overlaps with loopback 0 vrf global ipv4 "
     "address 192.0.2.20/32.",
     Places({kL3Table, kRoutes, {"config:52"}})},
    {"Ipv4OfLoopback", "ipv4_addr_validation", kLoopbackList, "4", OverlapIpv4,
     "loopback 0 vrf global ipv4 address 192.0.2.20/32 overlaps with l3 lan-1 vrf global ipv4 "
     "address 192.0.2.1/25.",
     Places({kL3Table, kRoutes, {"config:52"}}), false},
    {"Ipv4OfMgmt", "ipv4_addr_validation", kMgmtList, "4", OverlapIpv4,
     "mgmt 1 ipv4 address 172.16.0.0/24 cannot be configured as network address.",
     Places({kL3Table, kRoutes, {"config:52"}}), false},
    {"Ospf", "ipv4_addr_prot_cross_validation", kL3List, "",
     [](Situation& s) { s.candidate.Find("l3", "lan-2").primary = "192.0.2.5/25"; },
     "192.0.2.2/25 cannot be modified nor deleted, it is assigned to router ospf 2 vrf red area 0 "
     "(0.0.0.0)",
     kL3Table},
    {"Ipv4Routes", "ipv4_addr_route_validation", kL3List, "4",
     [](Situation& s) { s.candidate.routes[2].next_hop = "203.0.113.1"; },
     "l3 lan-3 ipv4 address 203.0.113.1/24 and static route 10.2.0.0/16 next-hop 203.0.113.1 "
     "cannot have address conflict.",
     Places({kL3Table, kRoutes})},
    {"Ipv6OfL3", "ipv6_addr_validation", kL3List, "6", OverlapIpv6,
     "l3 lan-1 ipv6 address 2001:db8:1::1/64 overlaps with mgmt 0 ipv6 address "
     "2001:db8:1::30/64.",
     Places({kL3Table, kRoutes, {"config:52"}})},
    {"Ipv6OfLoopback", "ipv6_addr_validation", kLoopbackList, "6", OverlapIpv6,
     "loopback 0 ipv6 address 2001:db8:1::20/128 overlaps with mgmt 0 ipv6 address "
     "2001:db8:1::30/64.",
     Places({kL3Table, kRoutes, {"config:52"}}), false},
    {"Ipv6OfMgmt", "ipv6_addr_validation", kMgmtList, "6", OverlapIpv6,
     "mgmt 0 ipv6 address 2001:db8:1::30/64 overlaps with l3 lan-1 ipv6 address 2001:db8:1::1/64.",
     Places({kL3Table, kRoutes, {"config:52"}}), false},
    {"Ipv6Routes", "ipv6_addr_route_validation", kL3List, "6",
     [](Situation& s) { s.candidate.routes[3].next_hop = "2001:db8:2::1"; },
     "l3 lan-1 ipv6 address 2001:db8:2::1/64 and static route 2001:db8:aaaa::/48 next-hop "
     "2001:db8:2::1 cannot have address conflict.",
     Places({kL3Table, kRoutes})},
    {"IntervalOfL3",
     "validate_ipv6_nd_ra_interval",
     kL3Timers,
     "",
     ShortenTimers,
     "Minimum interval must be no greater than maximum interval * 0.75",
     {"validate_nd_ra:32", "validate_nd_ra:33"}},
    {"IntervalOfMgmt",
     "validate_ipv6_nd_ra_interval",
     kMgmtTimers,
     "",
     ShortenTimers,
     "Minimum interval must be no greater than maximum interval * 0.75",
     {"validate_nd_ra:32", "validate_nd_ra:33"}},
    {"LifetimeOfL3",
     "validate_ipv6_nd_ra_lifetime",
     kL3Timers,
     "",
     ShortenTimers,
     "Lifetime must be greater than maximum router advertisement interval",
     {"validate_nd_ra:84", "validate_nd_ra:85"}},
    // Its lifetime is not compared.
    {"LifetimeOfMgmt",
     "validate_ipv6_nd_ra_lifetime",
     kMgmtTimers,
     "",
     ShortenTimers,
     "accepted",
     {"validate_nd_ra:84", "validate_nd_ra:85"}},
    {"OutputInterfaces", "static_route_l3_intf_validation", kL3List, "46",
     [](Situation& s) { s.candidate.Find("l3", "lan-2").vlan = 0; },
     "l3 lan-2 is being used by a static route. Lower-layer-if cannot be removed from this "
     "interface",
     Places({kL3Table, kRoutes})},
    {"LowerLayer",
     "lower_layer_prot_cross_validation",
     "/config/interface/l3{lan-3}/lower-layer-if",
     "",
     [](Situation& s) { s.candidate.ospfv3[0].index = 1000299; },
     "vlan 299 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)",
     {"validate_ip_addr_cross_ospf:53", "validate_ip_addr_cross_ospf:79",
      "validate_ip_addr_cross_ospf:84", "validate_ip_addr_cross_ospf:85"}},
};

}  // namespace

const std::vector<DocumentedAssertion>& DocumentedAssertions() { return kAssertions; }

// Before the transaction: VRFs, VLANs and OSPFv3 interfaces were others.
Situation CleanSituation() {
  Situation situation{Candidate(), Candidate()};
  Device& running = situation.running;
  running.Find("l3", "lan-2").vrf.reset();
  running.Find("l3", "lan-3").vlan = 299;
  running.Find("l3", "wan").vrf = "red";
  running.Find("loopback", "1").vrf = "blue";
  running.ospf.pop_back();
  running.ospf_processes.pop_back();
  running.ospfv3.erase(running.ospfv3.begin(), running.ospfv3.begin() + 2);
  return situation;
}

const std::vector<FaultCase>& FaultCases() { return kCases; }

}  // namespace tests
