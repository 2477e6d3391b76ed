// The tables of L3, loopback and management interfaces: what they read, in which order, and how
// they merge it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <list>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "config.h"
#include "support/device.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::ConfiguredIntf;
using tests::Device;
using tests::ExpectedCalls;

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;
constexpr ConfigAddrFamily kNoFamily = static_cast<ConfigAddrFamily>(5);

// An interface as one line: name, IPv4 addresses, IPv6 addresses, VRF, index of the lower layer
// ("-" for the zero identifier).
std::string Line(const Interface& intf) {
  std::string ipv4;
  for (const nettypes::IPv4AddrMask& mask : intf.ipv4_addr_list) ipv4 += " " + mask.to_string();
  std::string ipv6;
  for (const nettypes::IPv6AddrMask& mask : intf.ipv6_addr_list) ipv6 += " " + mask.to_string();
  const std::string lower =
      intf.lim_id == limid_t{} ? "-" : std::to_string(limid_to_ifindex(intf.lim_id));
  return "[" + intf.name + "] 4:" + ipv4 + " 6:" + ipv6 + " vrf:" + intf.vrf_name +
         " lower:" + lower;
}

std::vector<std::string> Lines(const InterfaceConfig& table) {
  std::vector<std::string> lines;
  for (const Interface& intf : table.interfaces_) lines.push_back(Line(intf));
  return lines;
}

// Whether two identifiers are the same byte for byte.
bool SameBytes(const limid_t& a, const limid_t& b) {
  return std::memcmp(&a, &b, sizeof(limid_t)) == 0;
}

class InterfaceTable : public tests::TableTest {
 protected:
  void Configure(const Device& device) {
    TableTest::Configure(device);
    Bind(l3);
    Bind(lo);
    Bind(mgmt);
  }

  L3Config l3;
  LoConfig lo;
  MgmtConfig mgmt;
};

const std::string kL3 = "/config/interface/ipapp:l3";
const std::string kLo = "/config/interface/ipapp:loopback";
const std::string kMgmt = "/config/interface/ipapp:mgmt";

// The fault of a management interface without IPv4 address. Its text names the unspecified address
// and not the key.
const framework::Fault kMgmtFault = {0, "ReadConfig", "src/lib/config", 475,
                                     "Unspecified IPv4 address for key '0.0.0.0/0'"};

// Whole traces ---------------------------------------------------------------------------------

const ConfiguredIntf kL3Seven = {.name = "7",
                                 .vrf = "red",
                                 .vlan = 100,
                                 .primary = "192.0.2.1/24",
                                 .ipv4 = {"198.51.100.1/24", "10.0.0.1/8"},
                                 .ipv6 = {"2001:db8:2::1/64", "2001:db8:1::1/64"}};

TEST_F(InterfaceTable, CallsOfTheL3ReaderForIpv4) {
  Configure(Device{.l3 = {kL3Seven}});
  l3.ReadConfig(kIpv4);
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/ipapp:l3",
      "maapi_init_cursor /config/interface/ipapp:l3",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/ip",
      "maapi_get_ipv4_and_plen_elem /config/interface/ipapp:l3{7}/ipv4/address/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary",
      "maapi_init_cursor /config/interface/ipapp:l3{7}/ipv4/address/secondary",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary{198.51.100.1/24}/ip",
      "maapi_get_ipv4_and_plen_elem "
      "/config/interface/ipapp:l3{7}/ipv4/address/secondary{198.51.100.1/24}/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary{10.0.0.1/8}/ip",
      "maapi_get_ipv4_and_plen_elem "
      "/config/interface/ipapp:l3{7}/ipv4/address/secondary{10.0.0.1/8}/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_get_elem /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_exists /config/interface/ipapp:l3{7}/vrf",
      "maapi_get_elem /config/interface/ipapp:l3{7}/vrf",
      "confd_free_value",
  };
  EXPECT_EQ(TakeCalls(), expected);
  EXPECT_THAT(Lines(l3), ElementsAre("[l3 7] 4: 192.0.2.1/24 198.51.100.1/24 10.0.0.1/8 6: vrf:red "
                                     "lower:1000100"));
}

TEST_F(InterfaceTable, CallsOfTheL3ReaderForIpv6) {
  Configure(Device{.l3 = {kL3Seven}});
  l3.ReadConfig(kIpv6);
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/ipapp:l3",
      "maapi_init_cursor /config/interface/ipapp:l3",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv6/address",
      "maapi_init_cursor /config/interface/ipapp:l3{7}/ipv6/address",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv6/address{2001:db8:2::1/64}/ip",
      "maapi_get_ipv6_and_plen_elem "
      "/config/interface/ipapp:l3{7}/ipv6/address{2001:db8:2::1/64}/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv6/address{2001:db8:1::1/64}/ip",
      "maapi_get_ipv6_and_plen_elem "
      "/config/interface/ipapp:l3{7}/ipv6/address{2001:db8:1::1/64}/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_get_elem /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_exists /config/interface/ipapp:l3{7}/vrf",
      "maapi_get_elem /config/interface/ipapp:l3{7}/vrf",
      "confd_free_value",
  };
  EXPECT_EQ(TakeCalls(), expected);
  EXPECT_THAT(Lines(l3), ElementsAre("[l3 7] 4: 6: 2001:db8:2::1/64 2001:db8:1::1/64 vrf:red "
                                     "lower:1000100"));
}

// Tables of cases ------------------------------------------------------------------------------

struct ReadCase {
  const char* name;
  Device device;
  ConfigAddrFamily family;
  std::vector<std::string> failing;  // these calls fail
  ExpectedCalls calls;
  std::vector<std::string> lines;
  std::vector<framework::Fault> faults = {};
};

std::ostream& operator<<(std::ostream& out, const ReadCase& c) { return out << c.name; }

Device WithL3(const std::vector<ConfiguredIntf>& entries) { return {.l3 = entries}; }
Device WithLo(const std::vector<ConfiguredIntf>& entries) { return {.loopback = entries}; }
Device WithMgmt(const std::vector<ConfiguredIntf>& entries) { return {.mgmt = entries}; }

framework::Fault AddressListFault4(const std::string& key) {
  return {0, "get_intf_ipv4_addr_mask_list", "src/lib/config", 301,
          "Unspecified IPv4 address for key '" + key + "'"};
}
framework::Fault AddressListFault6(const std::string& key) {
  return {0, "get_intf_ipv6_addr_mask_list", "src/lib/config", 327,
          "Unspecified IPv6 address for key '" + key + "'"};
}

ExpectedCalls L3Walk(int entries) { return ExpectedCalls().Walk(kL3, entries); }
ExpectedCalls LoWalk(int entries) { return ExpectedCalls().Walk(kLo, entries); }
ExpectedCalls MgmtWalk(int entries) { return ExpectedCalls().Walk(kMgmt, entries); }

const std::string kIp = kL3 + "{7}/ipv4/address/ip";
const std::string kSecondary = kL3 + "{7}/ipv4/address/secondary";
const std::string kAddress6 = kL3 + "{7}/ipv6/address";
const std::string kVlan = kL3 + "{7}/lower-layer-if/vlan";
const std::string kVrf = kL3 + "{7}/vrf";

const ReadCase kL3Cases[] = {
    {"NoEntry", WithL3({}), kIpv4, {}, L3Walk(0), {}},
    {"NoEntryIpv6", WithL3({}), kIpv6, {}, L3Walk(0), {}},
    {"NothingConfigured",
     WithL3({{.name = "7"}}),
     kIpv4,
     {},
     L3Walk(1).Exists(kIp).Walk(kSecondary, 0).Exists(kVlan).Exists(kVrf),
     {"[l3 7] 4: 6: vrf:global lower:-"}},
    {"NothingConfiguredIpv6",
     WithL3({{.name = "7"}}),
     kIpv6,
     {},
     L3Walk(1).Walk(kAddress6, 0).Exists(kVlan).Exists(kVrf),
     {"[l3 7] 4: 6: vrf:global lower:-"}},
    {"PrimaryOnly",
     WithL3({{.name = "7", .primary = "192.0.2.1/24"}}),
     kIpv4,
     {},
     L3Walk(1).Ipv4(kIp).Walk(kSecondary, 0).Exists(kVlan).Exists(kVrf),
     {"[l3 7] 4: 192.0.2.1/24 6: vrf:global lower:-"}},
    {"OneSecondary",
     WithL3({{.name = "7", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8"}}}),
     kIpv4,
     {},
     L3Walk(1)
         .Ipv4(kIp)
         .Walk(kSecondary, 1)
         .Ipv4(kSecondary + "{10.0.0.1/8}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 192.0.2.1/24 10.0.0.1/8 6: vrf:global lower:-"}},
    {"ThreeSecondaries",
     WithL3({{.name = "7",
              .primary = "192.0.2.1/24",
              .ipv4 = {"10.0.3.1/24", "10.0.1.1/24", "10.0.2.1/24"}}}),
     kIpv4,
     {},
     L3Walk(1)
         .Ipv4(kIp)
         .Walk(kSecondary, 3)
         .Ipv4(kSecondary + "{10.0.3.1/24}/ip")
         .Ipv4(kSecondary + "{10.0.1.1/24}/ip")
         .Ipv4(kSecondary + "{10.0.2.1/24}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 192.0.2.1/24 10.0.3.1/24 10.0.1.1/24 10.0.2.1/24 6: vrf:global lower:-"}},
    {"SecondariesWithoutPrimary",
     WithL3({{.name = "7", .ipv4 = {"10.0.2.1/24", "10.0.1.1/24"}}}),
     kIpv4,
     {},
     L3Walk(1)
         .Exists(kIp)
         .Walk(kSecondary, 2)
         .Ipv4(kSecondary + "{10.0.2.1/24}/ip")
         .Ipv4(kSecondary + "{10.0.1.1/24}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 10.0.2.1/24 10.0.1.1/24 6: vrf:global lower:-"}},
    {"PrimaryIsAlsoSecondary",
     WithL3({{.name = "7", .primary = "10.0.0.1/8", .ipv4 = {"10.0.0.1/8"}}}),
     kIpv4,
     {},
     L3Walk(1)
         .Ipv4(kIp)
         .Walk(kSecondary, 1)
         .Ipv4(kSecondary + "{10.0.0.1/8}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 10.0.0.1/8 10.0.0.1/8 6: vrf:global lower:-"}},
    // No fault: only a management interface has to have an address.
    {"PrimaryUnspecified",
     WithL3({{.name = "7", .primary = "0.0.0.0/0"}}),
     kIpv4,
     {},
     L3Walk(1).Ipv4(kIp).Walk(kSecondary, 0).Exists(kVlan).Exists(kVrf),
     {"[l3 7] 4: 6: vrf:global lower:-"}},
    {"PrimaryUnreadable",
     WithL3({{.name = "7", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8"}}}),
     kIpv4,
     {"maapi_get_ipv4_and_plen_elem " + kIp},
     L3Walk(1)
         .Ipv4(kIp)
         .Walk(kSecondary, 1)
         .Ipv4(kSecondary + "{10.0.0.1/8}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 10.0.0.1/8 6: vrf:global lower:-"}},
    {"SecondaryUnreadable",
     WithL3({{.name = "7", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8", "11.0.0.1/8"}}}),
     kIpv4,
     {"maapi_get_ipv4_and_plen_elem " + kSecondary + "{10.0.0.1/8}/ip"},
     L3Walk(1)
         .Ipv4(kIp)
         .Walk(kSecondary, 2)
         .Ipv4(kSecondary + "{10.0.0.1/8}/ip")
         .Ipv4(kSecondary + "{11.0.0.1/8}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 192.0.2.1/24 11.0.0.1/8 6: vrf:global lower:-"},
     {AddressListFault4("10.0.0.1/8")}},
    {"SecondariesUnreadable",
     WithL3({{.name = "7", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8"}}}),
     kIpv4,
     {"maapi_exists " + kSecondary},
     L3Walk(1).Ipv4(kIp).Exists(kSecondary).Exists(kVlan).Exists(kVrf),
     {"[l3 7] 4: 192.0.2.1/24 6: vrf:global lower:-"}},
    {"Ipv6AddressUnreadable",
     WithL3({{.name = "7", .ipv6 = {"2001:db8::1/64", "2001:db8::2/64"}}}),
     kIpv6,
     {"maapi_exists " + kAddress6 + "{2001:db8::1/64}/ip"},
     L3Walk(1)
         .Walk(kAddress6, 2)
         .Exists(kAddress6 + "{2001:db8::1/64}/ip")
         .Ipv6(kAddress6 + "{2001:db8::2/64}/ip")
         .Exists(kVlan)
         .Exists(kVrf),
     {"[l3 7] 4: 6: 2001:db8::2/64 vrf:global lower:-"},
     {AddressListFault6("2001:db8::1/64")}},
    {"VlanAndVrfUnreadable",
     WithL3({{.name = "7", .vrf = "red", .vlan = 100}}),
     kIpv4,
     {"maapi_get_elem " + kVlan, "maapi_get_elem " + kVrf},
     L3Walk(1).Exists(kIp).Walk(kSecondary, 0).Element(kVlan).Text(kVrf),
     {"[l3 7] 4: 6: vrf: lower:-"}},
    {"VlanAndVrfUnreadableIpv6",
     WithL3({{.name = "7", .vrf = "red", .vlan = 100}}),
     kIpv6,
     {"maapi_get_elem " + kVlan, "maapi_get_elem " + kVrf},
     L3Walk(1).Walk(kAddress6, 0).Element(kVlan).Text(kVrf),
     {"[l3 7] 4: 6: vrf: lower:-"}},
    {"AnotherFamilyReadsNoAddresses",
     WithL3({kL3Seven}),
     kNoFamily,
     {},
     L3Walk(1).Element(kVlan).Text(kVrf),
     {"[l3 7] 4: 6: vrf:red lower:1000100"}},
    {"TwoEntriesInKeyOrder",
     WithL3({{.name = "8", .vrf = "red"}, {.name = "10", .vlan = 1}}),
     kIpv4,
     {},
     L3Walk(2)
         .Exists(kL3 + "{10}/ipv4/address/ip")
         .Walk(kL3 + "{10}/ipv4/address/secondary", 0)
         .Element(kL3 + "{10}/lower-layer-if/vlan")
         .Exists(kL3 + "{10}/vrf")
         .Exists(kL3 + "{8}/ipv4/address/ip")
         .Walk(kL3 + "{8}/ipv4/address/secondary", 0)
         .Exists(kL3 + "{8}/lower-layer-if/vlan")
         .Text(kL3 + "{8}/vrf"),
     {"[l3 10] 4: 6: vrf:global lower:1000001", "[l3 8] 4: 6: vrf:red lower:-"}},
};

const std::string kLoAddress = kLo + "{0}/ipv4/address";
const std::string kLoAddress6 = kLo + "{0}/ipv6/address";
const std::string kLoVrf = kLo + "{0}/vrf";

const ReadCase kLoCases[] = {
    {"NoEntry", WithLo({}), kIpv4, {}, LoWalk(0), {}},
    {"NothingConfigured",
     WithLo({{.name = "0"}}),
     kIpv4,
     {},
     LoWalk(1).Walk(kLoAddress, 0).Exists(kLoVrf),
     {"[loopback 0] 4: 6: vrf:global lower:-"}},
    {"ThreeAddresses",
     WithLo({{.name = "0", .vrf = "red", .ipv4 = {"10.0.3.1/32", "10.0.1.1/32", "10.0.2.1/32"}}}),
     kIpv4,
     {},
     LoWalk(1)
         .Walk(kLoAddress, 3)
         .Ipv4(kLoAddress + "{10.0.3.1/32}/ip")
         .Ipv4(kLoAddress + "{10.0.1.1/32}/ip")
         .Ipv4(kLoAddress + "{10.0.2.1/32}/ip")
         .Text(kLoVrf),
     {"[loopback 0] 4: 10.0.3.1/32 10.0.1.1/32 10.0.2.1/32 6: vrf:red lower:-"}},
    {"AddressUnreadable",
     WithLo({{.name = "0", .ipv4 = {"10.0.3.1/32", "10.0.1.1/32"}}}),
     kIpv4,
     {"maapi_get_ipv4_and_plen_elem " + kLoAddress + "{10.0.1.1/32}/ip"},
     LoWalk(1)
         .Walk(kLoAddress, 2)
         .Ipv4(kLoAddress + "{10.0.3.1/32}/ip")
         .Ipv4(kLoAddress + "{10.0.1.1/32}/ip")
         .Exists(kLoVrf),
     {"[loopback 0] 4: 10.0.3.1/32 6: vrf:global lower:-"},
     {AddressListFault4("10.0.1.1/32")}},
    {"Ipv6Addresses",
     WithLo({{.name = "0",
              .vrf = "red",
              .ipv4 = {"10.0.3.1/32"},
              .ipv6 = {"2001:db8::2/128", "2001:db8::1/128"}}}),
     kIpv6,
     {},
     LoWalk(1)
         .Walk(kLoAddress6, 2)
         .Ipv6(kLoAddress6 + "{2001:db8::2/128}/ip")
         .Ipv6(kLoAddress6 + "{2001:db8::1/128}/ip")
         .Text(kLoVrf),
     {"[loopback 0] 4: 6: 2001:db8::2/128 2001:db8::1/128 vrf:red lower:-"}},
    {"VrfUnreadable",
     WithLo({{.name = "0", .vrf = "red"}}),
     kIpv4,
     {"maapi_get_elem " + kLoVrf},
     LoWalk(1).Walk(kLoAddress, 0).Text(kLoVrf),
     {"[loopback 0] 4: 6: vrf: lower:-"}},
    {"AnotherFamilyReadsNoAddresses",
     WithLo({{.name = "0", .vrf = "red", .ipv4 = {"10.0.3.1/32"}}}),
     kNoFamily,
     {},
     LoWalk(1).Text(kLoVrf),
     {"[loopback 0] 4: 6: vrf:red lower:-"}},
};

const std::string kMgmtIp = kMgmt + "{0}/ipv4/address/ip";
const std::string kMgmtAddress6 = kMgmt + "{0}/ipv6/address";
const std::string kMgmtVrf = kMgmt + "{0}/vrf";

const ReadCase kMgmtCases[] = {
    {"NoEntry", WithMgmt({}), kIpv4, {}, MgmtWalk(0), {}},
    {"Address",
     WithMgmt({{.name = "0", .vrf = "mgmt", .primary = "10.0.0.10/24"}}),
     kIpv4,
     {},
     MgmtWalk(1).Ipv4(kMgmtIp).Text(kMgmtVrf),
     {"[mgmt 0] 4: 10.0.0.10/24 6: vrf:mgmt lower:-"}},
    {"NoAddress",
     WithMgmt({{.name = "0"}}),
     kIpv4,
     {},
     MgmtWalk(1).Exists(kMgmtIp).Exists(kMgmtVrf),
     {"[mgmt 0] 4: 6: vrf:global lower:-"},
     {kMgmtFault}},
    {"AddressUnspecified",
     WithMgmt({{.name = "0", .primary = "0.0.0.0/0"}}),
     kIpv4,
     {},
     MgmtWalk(1).Ipv4(kMgmtIp).Exists(kMgmtVrf),
     {"[mgmt 0] 4: 6: vrf:global lower:-"},
     {kMgmtFault}},
    {"AddressUnreadable",
     WithMgmt({{.name = "0", .primary = "10.0.0.10/24"}}),
     kIpv4,
     {"maapi_get_ipv4_and_plen_elem " + kMgmtIp},
     MgmtWalk(1).Ipv4(kMgmtIp).Exists(kMgmtVrf),
     {"[mgmt 0] 4: 6: vrf:global lower:-"},
     {kMgmtFault}},
    {"TwoWithoutAddress",
     WithMgmt({{.name = "0"}, {.name = "1"}}),
     kIpv4,
     {},
     MgmtWalk(2)
         .Exists(kMgmtIp)
         .Exists(kMgmtVrf)
         .Exists(kMgmt + "{1}/ipv4/address/ip")
         .Exists(kMgmt + "{1}/vrf"),
     {"[mgmt 0] 4: 6: vrf:global lower:-", "[mgmt 1] 4: 6: vrf:global lower:-"},
     {kMgmtFault, kMgmtFault}},
    {"Ipv6WithoutIpv4IsNoFault",
     WithMgmt({{.name = "0", .vrf = "mgmt", .ipv6 = {"2001:db8::2/64", "2001:db8::1/64"}}}),
     kIpv6,
     {},
     MgmtWalk(1)
         .Walk(kMgmtAddress6, 2)
         .Ipv6(kMgmtAddress6 + "{2001:db8::2/64}/ip")
         .Ipv6(kMgmtAddress6 + "{2001:db8::1/64}/ip")
         .Text(kMgmtVrf),
     {"[mgmt 0] 4: 6: 2001:db8::2/64 2001:db8::1/64 vrf:mgmt lower:-"}},
    {"VrfUnreadable",
     WithMgmt({{.name = "0", .vrf = "mgmt", .primary = "10.0.0.10/24"}}),
     kIpv4,
     {"maapi_get_elem " + kMgmtVrf},
     MgmtWalk(1).Ipv4(kMgmtIp).Text(kMgmtVrf),
     {"[mgmt 0] 4: 10.0.0.10/24 6: vrf: lower:-"}},
    {"AnotherFamilyReadsNoAddresses",
     WithMgmt({{.name = "0", .vrf = "mgmt", .primary = "10.0.0.10/24"}}),
     kNoFamily,
     {},
     MgmtWalk(1).Text(kMgmtVrf),
     {"[mgmt 0] 4: 6: vrf:mgmt lower:-"}},
};

template <typename Table>
class Reading : public tests::TableTest, public testing::WithParamInterface<ReadCase> {
 protected:
  void CheckCase() {
    const ReadCase& c = GetParam();
    Configure(c.device);
    FailCalls(c.failing);
    Table table;
    Bind(table);
    table.ReadConfig(c.family);
    EXPECT_EQ(TakeCalls(), c.calls);
    EXPECT_EQ(Lines(table), c.lines);
    EXPECT_EQ(framework::TakeFaults(), c.faults);
  }
};

std::string NameOf(const testing::TestParamInfo<ReadCase>& row) { return row.param.name; }

using ReadingL3 = Reading<L3Config>;
using ReadingLo = Reading<LoConfig>;
using ReadingMgmt = Reading<MgmtConfig>;
TEST_P(ReadingL3, MakesTheseCalls) { CheckCase(); }
TEST_P(ReadingLo, MakesTheseCalls) { CheckCase(); }
TEST_P(ReadingMgmt, MakesTheseCalls) { CheckCase(); }
INSTANTIATE_TEST_SUITE_P(Interfaces, ReadingL3, testing::ValuesIn(kL3Cases), NameOf);
INSTANTIATE_TEST_SUITE_P(Interfaces, ReadingLo, testing::ValuesIn(kLoCases), NameOf);
INSTANTIATE_TEST_SUITE_P(Interfaces, ReadingMgmt, testing::ValuesIn(kMgmtCases), NameOf);

// Keys -----------------------------------------------------------------------------------------

// The key goes into the paths as it was read, without quoting. What then is found depends on how
// ConfD reads a key in a path.
struct KeyCase {
  const char* name;
  std::string key;
  bool found;  // whether the paths lead to the entry's leaves
};

std::ostream& operator<<(std::ostream& out, const KeyCase& c) { return out << c.name; }

const KeyCase kKeyCases[] = {
    {"Plain", "7", true},
    {"Empty", "", true},
    {"Bytes60", std::string(60, 'x'), true},
    {"Bytes61", std::string(61, 'x'), true},
    {"Bytes255", std::string(255, 'x'), true},
    {"Bytes256", std::string(256, 'x'), false},  // only 255 of them are read
    {"Bytes300", std::string(300, 'x'), false},
    {"BlankInside", "wan 1", true},
    {"BlanksInside", "a  b c", true},
    {"BlankInFront", " a", false},
    {"BlankBehind", "a ", false},
    {"OnlyABlank", " ", false},
    {"TabInside", "a\tb", true},
    {"TabBehind", "a\t", false},
    {"LineEndInside", "a\nb", true},
    {"LineEndInFront", "\na", false},
    {"CarriageReturnBehind", "a\r", true},
    {"ClosingBrace", "}", true},
    {"ClosingBraceInside", "a}b", true},
    {"ClosingBraceBehind", "a}", true},
    {"ClosingBraces", "}}", true},
    {"OpeningBrace", "{", true},
    {"Braces", "{a}", true},
    {"Slash", "a/b", true},
    {"SlashInFront", "/a", true},
    {"ClosingBraceAndSlash", "a}/b", false},
    {"PathInside", "a}/vrf", false},
    {"Percent", "%", true},
    {"PercentBehind", "100%", true},
    {"Conversion", "%s%n%x", true},
    {"PercentTwice", "%%", true},
    {"SingleQuote", "it's", true},
    {"InSingleQuotes", "'a'", true},
    {"DoubleQuote", "\"", true},
    {"DoubleQuoteInside", "19\"rack", true},
    {"DoubleQuoteInFront", "\"a", true},
    {"DoubleQuoteBehind", "a\"", true},
    {"InDoubleQuotes", "\"a\"", false},
    {"TwoDoubleQuotes", "\"\"", false},
    {"DoubleQuotesAroundBraceAndSlash", "\"a}/b\"", false},
    {"TextBehindDoubleQuotes", "\"a\" b", true},
    {"Backslash", "\\", true},
    {"BackslashInside", "a\\b", true},
    {"EscapedQuoteInDoubleQuotes", "\"a\\\"b\"", false},
    {"TwoByteCharacters", "zürich-ä", true},
    {"FourByteCharacter", "\xf0\x9f\x94\x8c", true},
    {"Prefix", "ipapp:l3", true},
};

class OddKey : public InterfaceTable, public testing::WithParamInterface<KeyCase> {
 protected:
  // As get_key_list gives it.
  const std::string key = GetParam().key.substr(0, 255);
  const bool found = GetParam().found;
};

TEST_P(OddKey, OfAnL3Interface) {
  Configure(WithL3({{.name = GetParam().key,
                     .vrf = "red",
                     .vlan = 100,
                     .primary = "192.0.2.1/24",
                     .ipv6 = {"2001:db8::1/64"}}}));
  const std::string entry = kL3 + "{" + key + "}";
  const std::string ip = entry + "/ipv4/address/ip";
  const std::string secondary = entry + "/ipv4/address/secondary";
  const std::string address6 = entry + "/ipv6/address";
  const std::string vlan = entry + "/lower-layer-if/vlan";
  const std::string vrf = entry + "/vrf";

  l3.ReadConfig(kIpv4);
  EXPECT_EQ(TakeCalls(), found ? L3Walk(1).Ipv4(ip).Walk(secondary, 0).Element(vlan).Text(vrf)
                               : L3Walk(1).Exists(ip).Exists(secondary).Exists(vlan).Exists(vrf));
  l3.ReadConfig(kIpv6);
  EXPECT_EQ(TakeCalls(), found ? L3Walk(1)
                                     .Walk(address6, 1)
                                     .Ipv6(address6 + "{2001:db8::1/64}/ip")
                                     .Element(vlan)
                                     .Text(vrf)
                               : L3Walk(1).Exists(address6).Exists(vlan).Exists(vrf));
  EXPECT_THAT(Lines(l3),
              ElementsAre("[l3 " + key + "]" +
                          (found ? " 4: 192.0.2.1/24 6: 2001:db8::1/64 vrf:red lower:1000100"
                                 : " 4: 6: vrf:global lower:-")));
  EXPECT_THAT(framework::TakeFaults(), IsEmpty());
}

TEST_P(OddKey, OfALoopback) {
  Configure(WithLo({{.name = GetParam().key,
                     .vrf = "red",
                     .ipv4 = {"192.0.2.1/24"},
                     .ipv6 = {"2001:db8::1/64"}}}));
  const std::string entry = kLo + "{" + key + "}";
  const std::string address = entry + "/ipv4/address";
  const std::string address6 = entry + "/ipv6/address";
  const std::string vrf = entry + "/vrf";

  lo.ReadConfig(kIpv4);
  EXPECT_EQ(TakeCalls(),
            found ? LoWalk(1).Walk(address, 1).Ipv4(address + "{192.0.2.1/24}/ip").Text(vrf)
                  : LoWalk(1).Exists(address).Exists(vrf));
  lo.ReadConfig(kIpv6);
  EXPECT_EQ(TakeCalls(),
            found ? LoWalk(1).Walk(address6, 1).Ipv6(address6 + "{2001:db8::1/64}/ip").Text(vrf)
                  : LoWalk(1).Exists(address6).Exists(vrf));
  EXPECT_THAT(Lines(lo), ElementsAre("[loopback " + key + "]" +
                                     (found ? " 4: 192.0.2.1/24 6: 2001:db8::1/64 vrf:red lower:-"
                                            : " 4: 6: vrf:global lower:-")));
}

TEST_P(OddKey, OfAManagementInterface) {
  Configure(WithMgmt({{.name = GetParam().key,
                       .vrf = "red",
                       .primary = "192.0.2.1/24",
                       .ipv6 = {"2001:db8::1/64"}}}));
  const std::string entry = kMgmt + "{" + key + "}";
  const std::string ip = entry + "/ipv4/address/ip";
  const std::string address6 = entry + "/ipv6/address";
  const std::string vrf = entry + "/vrf";

  mgmt.ReadConfig(kIpv4);
  EXPECT_EQ(TakeCalls(),
            found ? MgmtWalk(1).Ipv4(ip).Text(vrf) : MgmtWalk(1).Exists(ip).Exists(vrf));
  EXPECT_EQ(framework::TakeFaults(),
            found ? std::vector<framework::Fault>{} : std::vector{kMgmtFault});
  mgmt.ReadConfig(kIpv6);
  EXPECT_EQ(TakeCalls(),
            found ? MgmtWalk(1).Walk(address6, 1).Ipv6(address6 + "{2001:db8::1/64}/ip").Text(vrf)
                  : MgmtWalk(1).Exists(address6).Exists(vrf));
  EXPECT_THAT(Lines(mgmt), ElementsAre("[mgmt " + key + "]" +
                                       (found ? " 4: 192.0.2.1/24 6: 2001:db8::1/64 vrf:red lower:-"
                                              : " 4: 6: vrf:global lower:-")));
}

INSTANTIATE_TEST_SUITE_P(Keys, OddKey, testing::ValuesIn(kKeyCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(InterfaceTable, KeyInQuotesOrBlanksReadsTheEntryInside) {
  Configure(WithLo({{.name = "a", .vrf = "red"},
                    {.name = " a", .vrf = "blue"},
                    {.name = "\"a\"", .vrf = "green"}}));
  lo.ReadConfig(kIpv4);
  EXPECT_THAT(Lines(lo), ElementsAre("[loopback  a] 4: 6: vrf:red lower:-",
                                     "[loopback \"a\"] 4: 6: vrf:red lower:-",
                                     "[loopback a] 4: 6: vrf:red lower:-"));
}

TEST_F(InterfaceTable, KeysThatDifferBehind255BytesAreOneInterface) {
  const std::string common(255, 'x');
  Configure(WithLo({{.name = common + "1", .vrf = "red"}, {.name = common + "2", .vrf = "blue"}}));
  lo.ReadConfig(kIpv4);
  EXPECT_THAT(Lines(lo), ElementsAre("[loopback " + common + "] 4: 6: vrf:global lower:-"));
}

// Two reads of one table -----------------------------------------------------------------------

TEST_F(InterfaceTable, BothOrdersOfFamiliesGiveTheSameRecords) {
  const Device device = {
      .l3 = {kL3Seven,
             {.name = "6", .primary = "192.0.2.6/24"},
             {.name = "8", .ipv6 = {"2001:db8:8::1/64"}},
             {.name = "9"}},
      .loopback =
          {{.name = "0", .vrf = "red", .ipv4 = {"10.0.3.1/32"}, .ipv6 = {"2001:db8::2/128"}}},
      .mgmt = {
          {.name = "0", .vrf = "mgmt", .primary = "10.0.0.10/24", .ipv6 = {"2001:db8::2/64"}}}};
  const std::vector<std::vector<ConfigAddrFamily>> orders = {{kIpv4, kIpv6}, {kIpv6, kIpv4}};
  for (const std::vector<ConfigAddrFamily>& order : orders) {
    Config config;
    Configure(device);
    for (InterfaceConfig* table : config.intf_configs_) {
      Bind(*table);
      for (const ConfigAddrFamily family : order) table->ReadConfigIfNeeded(family);
    }
    EXPECT_THAT(Lines(config.l3_config_),
                ElementsAre("[l3 6] 4: 192.0.2.6/24 6: vrf:global lower:-",
                            "[l3 7] 4: 192.0.2.1/24 198.51.100.1/24 10.0.0.1/8 6: 2001:db8:2::1/64 "
                            "2001:db8:1::1/64 vrf:red lower:1000100",
                            "[l3 8] 4: 6: 2001:db8:8::1/64 vrf:global lower:-",
                            "[l3 9] 4: 6: vrf:global lower:-"));
    EXPECT_THAT(Lines(config.lo_config_),
                ElementsAre("[loopback 0] 4: 10.0.3.1/32 6: 2001:db8::2/128 vrf:red lower:-"));
    EXPECT_THAT(Lines(config.mgmt_config_),
                ElementsAre("[mgmt 0] 4: 10.0.0.10/24 6: 2001:db8::2/64 vrf:mgmt lower:-"));
  }
}

TEST_F(InterfaceTable, ValuesOfTheFirstReadStay) {
  Configure(WithL3({{.name = "7", .vrf = "red", .vlan = 100, .primary = "192.0.2.1/24"}}));
  l3.ReadConfigIfNeeded(kIpv4);
  Configure(WithL3({{.name = "6", .vrf = "green"},
                    {.name = "7",
                     .vrf = "blue",
                     .vlan = 200,
                     .primary = "198.51.100.1/24",
                     .ipv6 = {"2001:db8::1/64"}}}));
  l3.ReadConfigIfNeeded(kIpv6);
  l3.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(Lines(l3),
              ElementsAre("[l3 7] 4: 192.0.2.1/24 6: 2001:db8::1/64 vrf:red lower:1000100",
                          "[l3 6] 4: 6: vrf:green lower:-"));
}

TEST_F(InterfaceTable, IdentifierOfTheLowerLayerIsKeptByteForByte) {
  const limid_t lim_id = limid_l3_vlan_from_components(100);
  Configure(WithL3({kL3Seven}));
  l3.ReadConfig(kIpv4);
  ASSERT_EQ(l3.interfaces_.size(), 1u);
  EXPECT_TRUE(SameBytes(l3.interfaces_[0].lim_id, lim_id));
  Configure(WithL3({{.name = "7", .vlan = 200, .ipv6 = {"2001:db8::1/64"}}}));
  l3.ReadConfig(kIpv6);
  ASSERT_EQ(l3.interfaces_.size(), 1u);
  EXPECT_TRUE(SameBytes(l3.interfaces_[0].lim_id, lim_id));
  const Interface copy = l3.interfaces_[0];
  EXPECT_TRUE(SameBytes(copy.lim_id, lim_id));
}

// Before the rest of the interface is read.
TEST_F(InterfaceTable, ManagementWithoutIpv4AddressIsReportedAtOnce) {
  Configure(Device{.mgmt = {{.name = "0"}}});
  std::vector<framework::Fault> faults_at_vrf;
  on_call = [&faults_at_vrf](const std::string& call) {
    if (call == "maapi_exists " + kMgmt + "{0}/vrf") faults_at_vrf = framework::TakeFaults();
  };
  mgmt.ReadConfig(kIpv4);
  EXPECT_THAT(faults_at_vrf, ElementsAre(kMgmtFault));
}

TEST_F(InterfaceTable, AbsentListLeavesTheTableAsItIs) {
  Configure(WithL3({kL3Seven}));
  l3.ReadConfig(kIpv4);
  const std::vector<std::string> before = Lines(l3);
  Configure(Device{});
  l3.ReadConfig(kIpv6);
  EXPECT_EQ(Lines(l3), before);
}

TEST_F(InterfaceTable, ReadAgainWithoutTheFlagExtendsNoList) {
  Configure(WithL3({{.name = "7", .primary = "192.0.2.1/24"}}));
  l3.ReadConfig(kIpv4);
  Configure(WithL3({{.name = "7", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8"}}}));
  l3.ReadConfig(kIpv4);
  EXPECT_THAT(Lines(l3), ElementsAre("[l3 7] 4: 192.0.2.1/24 6: vrf:global lower:-"));
}

// Merging --------------------------------------------------------------------------------------

std::list<nettypes::IPv4AddrMask> Ipv4List(int count, uint32_t first) {
  std::list<nettypes::IPv4AddrMask> list;
  for (int i = 0; i < count; ++i) list.emplace_back(first + static_cast<uint32_t>(i), 24);
  return list;
}

std::list<nettypes::IPv6AddrMask> Ipv6List(int count, uint8_t first) {
  std::list<nettypes::IPv6AddrMask> list;
  for (int i = 0; i < count; ++i) {
    std::array<uint8_t, 16> bytes{0x20, 1};
    bytes[15] = static_cast<uint8_t>(first + i);
    list.emplace_back(nettypes::IPv6Addr(bytes), 64);
  }
  return list;
}

Interface Record(const std::string& name, int ipv4, int ipv6, uint32_t which = 1) {
  return {.name = name,
          .ipv4_addr_list = Ipv4List(ipv4, which << 24),
          .ipv6_addr_list = Ipv6List(ipv6, static_cast<uint8_t>(16 * which)),
          .vrf_name = "vrf-" + std::to_string(which),
          .lim_id = limid_l3_vlan_from_components(static_cast<int>(which))};
}

struct MergeCase {
  const char* name;
  Interface known;
  Interface merged;
  const char* line;
};

std::ostream& operator<<(std::ostream& out, const MergeCase& c) { return out << c.name; }

const MergeCase kMergeCases[] = {
    {"NothingIntoNothing", Record("l3 7", 0, 0), Record("l3 7", 0, 0, 2),
     "[l3 7] 4: 6: vrf:vrf-1 lower:1000001"},
    {"Ipv4IntoNothing", Record("l3 7", 0, 0), Record("l3 7", 2, 0, 2),
     "[l3 7] 4: 2.0.0.0/24 2.0.0.1/24 6: vrf:vrf-1 lower:1000001"},
    {"Ipv6IntoNothing", Record("l3 7", 0, 0), Record("l3 7", 0, 2, 2),
     "[l3 7] 4: 6: 2001::20/64 2001::21/64 vrf:vrf-1 lower:1000001"},
    {"BothIntoNothingTakesIpv4Only", Record("l3 7", 0, 0), Record("l3 7", 1, 1, 2),
     "[l3 7] 4: 2.0.0.0/24 6: vrf:vrf-1 lower:1000001"},
    {"Ipv4IntoIpv6", Record("l3 7", 0, 1), Record("l3 7", 1, 0, 2),
     "[l3 7] 4: 2.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001"},
    {"Ipv6IntoIpv4", Record("l3 7", 1, 0), Record("l3 7", 0, 1, 2),
     "[l3 7] 4: 1.0.0.0/24 6: 2001::20/64 vrf:vrf-1 lower:1000001"},
    {"BothIntoIpv4TakesIpv6", Record("l3 7", 1, 0), Record("l3 7", 1, 1, 2),
     "[l3 7] 4: 1.0.0.0/24 6: 2001::20/64 vrf:vrf-1 lower:1000001"},
    {"BothIntoIpv6TakesIpv4", Record("l3 7", 0, 1), Record("l3 7", 1, 1, 2),
     "[l3 7] 4: 2.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001"},
    {"BothIntoBoth", Record("l3 7", 1, 1), Record("l3 7", 2, 2, 2),
     "[l3 7] 4: 1.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001"},
    {"Ipv4IntoIpv4", Record("l3 7", 1, 0), Record("l3 7", 2, 0, 2),
     "[l3 7] 4: 1.0.0.0/24 6: vrf:vrf-1 lower:1000001"},
    {"Ipv6IntoIpv6", Record("l3 7", 0, 1), Record("l3 7", 0, 2, 2),
     "[l3 7] 4: 6: 2001::10/64 vrf:vrf-1 lower:1000001"},
    {"NothingIntoBoth", Record("l3 7", 1, 1), Record("l3 7", 0, 0, 2),
     "[l3 7] 4: 1.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001"},
};

class Merge : public testing::TestWithParam<MergeCase> {};

TEST_P(Merge, FillsOneEmptyListAtMost) {
  L3Config table;
  table.MergeConfigAndInsert(GetParam().known);
  table.MergeConfigAndInsert(GetParam().merged);
  EXPECT_THAT(Lines(table), ElementsAre(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(Records, Merge, testing::ValuesIn(kMergeCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MergeConfigAndInsert, KeepsTheOrderOfFirstInsertion) {
  LoConfig table;
  for (const char* name : {"b", "a", "c", "a", "b", "d"}) {
    table.MergeConfigAndInsert(Record(name, 0, 0));
  }
  std::vector<std::string> names;
  for (const Interface& intf : table.interfaces_) names.push_back(intf.name);
  EXPECT_THAT(names, ElementsAre("b", "a", "c", "d"));
}

TEST(MergeConfigAndInsert, ComparesNamesByteByByte) {
  LoConfig table;
  const std::string with_zero("a\0b", 3);
  for (const std::string& name : {std::string("a"), std::string("A"), std::string("a "), with_zero,
                                  std::string("a\0c", 3), std::string()}) {
    table.MergeConfigAndInsert(Record(name, 0, 0));
  }
  EXPECT_EQ(table.interfaces_.size(), 6u);
  table.MergeConfigAndInsert(Record(with_zero, 1, 0));
  EXPECT_EQ(table.interfaces_.size(), 6u);
  EXPECT_EQ(table.interfaces_[3].ipv4_addr_list.size(), 1u);
}

TEST(MergeConfigAndInsert, CopiesTheRecord) {
  LoConfig table;
  Interface intf = Record("loopback 0", 1, 1);
  table.MergeConfigAndInsert(intf);
  intf.ipv4_addr_list.clear();
  intf.vrf_name = "changed";
  EXPECT_THAT(Lines(table),
              ElementsAre("[loopback 0] 4: 1.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001"));
}

TEST(MergeConfigAndInsert, FindsEntriesThatWereAddedByHand) {
  LoConfig table;
  table.MergeConfigAndInsert(Record("first", 0, 0));
  table.interfaces_.push_back(Record("by hand", 0, 0));
  table.MergeConfigAndInsert(Record("by hand", 1, 0));
  EXPECT_EQ(table.interfaces_.size(), 2u);
  EXPECT_EQ(table.interfaces_[1].ipv4_addr_list.size(), 1u);
}

TEST(MergeConfigAndInsert, OfTwoEntriesWithOneNameFillsTheFirst) {
  LoConfig table;
  table.interfaces_ = {Record("other", 0, 0), Record("twice", 0, 0, 1), Record("twice", 0, 0, 2)};
  table.MergeConfigAndInsert(Record("twice", 1, 0));
  table.MergeConfigAndInsert(Record("twice", 0, 1));
  EXPECT_THAT(Lines(table),
              ElementsAre("[other] 4: 6: vrf:vrf-1 lower:1000001",
                          "[twice] 4: 1.0.0.0/24 6: 2001::10/64 vrf:vrf-1 lower:1000001",
                          "[twice] 4: 6: vrf:vrf-2 lower:1000002"));
}

// Whatever the index had to move while it grew.
TEST(MergeConfigAndInsert, OfManyEntriesWithTwoNamesFillsTheFirst) {
  for (int round = 0; round < 30; ++round) {
    LoConfig table;
    for (int i = 0; i < 200; ++i) {
      const std::string name = std::to_string(round) + " " + std::to_string(i);
      table.interfaces_.push_back(Record(name, 0, 0));
      table.interfaces_.push_back(Record(name, 0, 0));
    }
    for (size_t i = 0; i < table.interfaces_.size(); i += 2) {
      table.MergeConfigAndInsert(Record(table.interfaces_[i].name, 1, 0));
      EXPECT_EQ(table.interfaces_[i].ipv4_addr_list.size(), 1u) << table.interfaces_[i].name;
    }
  }
}

// The rule with a search from the front.
void MergeByFrontSearch(std::vector<Interface>& table, const Interface& intf) {
  const auto known = std::find_if(table.begin(), table.end(), [&intf](const Interface& other) {
    return other.name == intf.name;
  });
  if (known == table.end()) {
    table.push_back(intf);
  } else if (known->ipv4_addr_list.empty() && !intf.ipv4_addr_list.empty()) {
    known->ipv4_addr_list = intf.ipv4_addr_list;
  } else if (known->ipv6_addr_list.empty() && !intf.ipv6_addr_list.empty()) {
    known->ipv6_addr_list = intf.ipv6_addr_list;
  }
}

TEST(MergeConfigAndInsert, GivesWhatASearchFromTheFrontGives) {
  std::mt19937 random(1);
  for (const unsigned names : {1u, 3u, 40u, 1000u}) {
    L3Config table;
    L3Config expected;
    for (unsigned i = 0; i < 3 * names + 100; ++i) {
      const Interface record =
          Record("l3 " + std::to_string(random() % names), static_cast<int>(random() % 2),
                 static_cast<int>(random() % 2), 1 + static_cast<uint32_t>(random() % 9));
      if (random() % 16 == 0) {  // by hand, so that names occur twice
        table.interfaces_.push_back(record);
        expected.interfaces_.push_back(record);
      } else {
        table.MergeConfigAndInsert(record);
        MergeByFrontSearch(expected.interfaces_, record);
      }
    }
    EXPECT_EQ(Lines(table), Lines(expected)) << names;
  }
}

}  // namespace
}  // namespace ip_application::config_valid
