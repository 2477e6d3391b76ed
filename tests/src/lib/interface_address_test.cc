// The checks of interface addresses on hand-built tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "config.h"
#include "static_route_config.h"
#include "support/address_tables.h"
#include "validate_config.h"

namespace ip_application::config_valid {
namespace {

using tests::Intf;
using Addresses = std::vector<std::string>;

template <typename Case>
std::string CaseName(const testing::TestParamInfo<Case>& row) {
  return row.param.name;
}

// Network and broadcast addresses ---------------------------------------------------------------

struct AddressesCase {
  const char* name;
  Addresses addresses;
  const char* error;  // empty: accepted
};

std::ostream& operator<<(std::ostream& out, const AddressesCase& c) { return out << c.name; }

const AddressesCase kValidityCases[] = {
    {"NoAddresses", {}, ""},
    {"Host", {"192.168.1.1/24"}, ""},
    {"Length31NetworkIsExempt", {"192.168.1.0/31"}, ""},
    {"Length31BroadcastIsExempt", {"192.168.1.1/31"}, ""},
    {"Length32IsExempt", {"192.168.1.255/32"}, ""},
    {"Length32EndingInZeroIsExempt", {"192.168.1.0/32"}, ""},
    {"Length30Network",
     {"192.168.1.0/30"},
     "l3 7 ipv4 address 192.168.1.0/30 cannot be configured as network address."},
    {"Length30FirstHost", {"192.168.1.1/30"}, ""},
    {"Length30LastHost", {"192.168.1.2/30"}, ""},
    {"Length30Broadcast",
     {"192.168.1.3/30"},
     "l3 7 ipv4 address 192.168.1.3/30 cannot be configured as broadcast address."},
    {"Length23Broadcast",
     {"10.42.1.255/23"},
     "l3 7 ipv4 address 10.42.1.255/23 cannot be configured as broadcast address."},
    {"Length23EndOfTheFirstHalf", {"10.42.0.255/23"}, ""},
    {"Length23StartOfTheSecondHalf", {"10.42.1.0/23"}, ""},
    {"Length23Network",
     {"10.42.0.0/23"},
     "l3 7 ipv4 address 10.42.0.0/23 cannot be configured as network address."},
    {"Length1Network",
     {"128.0.0.0/1"},
     "l3 7 ipv4 address 128.0.0.0/1 cannot be configured as network address."},
    {"Length1Broadcast",
     {"127.255.255.255/1"},
     "l3 7 ipv4 address 127.255.255.255/1 cannot be configured as broadcast address."},
    {"Length0Network",
     {"0.0.0.0/0"},
     "l3 7 ipv4 address 0.0.0.0/0 cannot be configured as network address."},
    {"Length0Broadcast",
     {"255.255.255.255/0"},
     "l3 7 ipv4 address 255.255.255.255/0 cannot be configured as broadcast address."},
    {"Length0Host", {"10.0.0.1/0"}, ""},
    {"FirstFaultInOrderOfTheList",
     {"10.0.0.1/24", "10.0.1.255/24", "10.0.2.0/24"},
     "l3 7 ipv4 address 10.0.1.255/24 cannot be configured as broadcast address."},
    {"BehindAnExemptOne",
     {"10.0.0.0/31", "10.0.0.0/32", "10.0.2.0/24"},
     "l3 7 ipv4 address 10.0.2.0/24 cannot be configured as network address."},
};

class Ipv4Validity : public testing::TestWithParam<AddressesCase> {};

TEST_P(Ipv4Validity, OfOneInterface) {
  ValidateConfig checker;
  const bool valid = checker.InterfaceIPv4IsValid(Intf("l3 7", "global", GetParam().addresses));
  EXPECT_EQ(checker.error_, GetParam().error);
  EXPECT_EQ(valid, checker.error_.empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, Ipv4Validity, testing::ValuesIn(kValidityCases),
                         CaseName<AddressesCase>);

// Duplicates ------------------------------------------------------------------------------------

// `count` different host addresses, 10.x.y.1/32 or 2001:db8::.../128, then `behind`.
Addresses Hosts(int count, const Addresses& behind, bool ipv6) {
  Addresses addresses;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(100 + i * 7 % 100);  // not in the order of addresses
    addresses.push_back(ipv6 ? "2001:db8:" + number + "::1/128" : "10." + number + ".0.1/32");
  }
  addresses.insert(addresses.end(), behind.begin(), behind.end());
  return addresses;
}

Addresses Ipv4Hosts(int count, const Addresses& behind = {}) { return Hosts(count, behind, false); }
Addresses Ipv6Hosts(int count, const Addresses& behind = {}) { return Hosts(count, behind, true); }

// 20 addresses are compared in pairs, 21 are sorted; the answers are the same.
const AddressesCase kDuplicateCases[] = {
    {"NoAddresses", {}, ""},
    {"OneAddress", {"10.0.0.1/24"}, ""},
    {"TwoOfOneSubnet", {"10.0.0.1/24", "10.0.0.2/24"}, ""},
    {"SameAddress", {"10.0.0.1/24", "10.0.0.1/24"}, "l3 7 has duplicated IPv4 address 10.0.0.1"},
    {"SameAddressOtherLength",
     {"10.0.0.1/24", "10.0.0.1/16"},
     "l3 7 has duplicated IPv4 address 10.0.0.1"},
    {"NotNeighbours",
     {"10.0.0.1/24", "10.0.1.1/24", "10.0.0.1/16"},
     "l3 7 has duplicated IPv4 address 10.0.0.1"},
    {"Triple",
     {"10.0.0.9/24", "10.0.0.1/24", "10.0.0.1/16", "10.0.0.1/8"},
     "l3 7 has duplicated IPv4 address 10.0.0.1"},
    {"TwoPairsNested",  // of the pairs, the one whose first member is first
     {"10.0.0.2/24", "10.0.0.1/24", "10.0.0.1/16", "10.0.0.2/16"},
     "l3 7 has duplicated IPv4 address 10.0.0.2"},
    {"TwoPairsInterlaced",
     {"10.0.0.2/24", "10.0.0.1/24", "10.0.0.2/16", "10.0.0.1/16"},
     "l3 7 has duplicated IPv4 address 10.0.0.2"},
    {"All20Different", Ipv4Hosts(20), ""},
    {"The20thIsTheFirst", Ipv4Hosts(19, {"10.100.0.1/8"}),
     "l3 7 has duplicated IPv4 address 10.100.0.1"},
    {"All21Different", Ipv4Hosts(21), ""},
    {"The21stIsTheFirst", Ipv4Hosts(20, {"10.100.0.1/8"}),
     "l3 7 has duplicated IPv4 address 10.100.0.1"},
    {"The21stIsThe20th", Ipv4Hosts(20, {"10.133.0.1/8"}),
     "l3 7 has duplicated IPv4 address 10.133.0.1"},
    {"LongListTwoPairsNested", Ipv4Hosts(20, {"10.107.0.1/8", "10.100.0.1/8"}),
     "l3 7 has duplicated IPv4 address 10.100.0.1"},
    {"LongListSmallerAddressLater",  // the position counts, not the address
     Ipv4Hosts(20, {"10.0.0.9/32", "10.0.0.1/32", "10.0.0.1/8", "10.0.0.9/8"}),
     "l3 7 has duplicated IPv4 address 10.0.0.9"},
    {"LongListTriple",
     Ipv4Hosts(20, {"10.0.0.9/32", "10.0.0.1/32", "10.0.0.1/8", "10.0.0.1/16", "10.0.0.9/8"}),
     "l3 7 has duplicated IPv4 address 10.0.0.9"},
    {"LongListTripleFirst",
     Ipv4Hosts(20, {"10.0.0.1/32", "10.0.0.9/32", "10.0.0.9/8", "10.0.0.1/8", "10.0.0.1/16"}),
     "l3 7 has duplicated IPv4 address 10.0.0.1"},
    {"Ipv6TwoOfOneSubnet", {"2001:db8::1/64", "2001:db8::2/64"}, ""},
    {"Ipv6SameAddressOtherLength",
     {"2001:db8::1/64", "2001:db8::1/48"},
     "l3 7 has duplicated IPv6 address 2001:db8::1"},
    {"Ipv6MappedIpv4",
     {"::ffff:192.0.2.1/128", "::ffff:192.0.2.1/96"},
     "l3 7 has duplicated IPv6 address ::ffff:192.0.2.1"},
    {"Ipv6DifferInTheUpperHalf", {"2001:db8:0:1::1/64", "2001:db8:0:2::1/64"}, ""},
    {"Ipv6All21Different", Ipv6Hosts(21), ""},
    {"Ipv6The20thIsTheFirst", Ipv6Hosts(19, {"2001:db8:100::1/64"}),
     "l3 7 has duplicated IPv6 address 2001:db8:100::1"},
    {"Ipv6The21stIsTheFirst", Ipv6Hosts(20, {"2001:db8:100::1/64"}),
     "l3 7 has duplicated IPv6 address 2001:db8:100::1"},
    {"Ipv6LongListTriple",
     Ipv6Hosts(20, {"2001:db8::9/64", "2001:db8::1/64", "2001:db8::1/48", "2001:db8::1/32",
                    "2001:db8::9/48"}),
     "l3 7 has duplicated IPv6 address 2001:db8::9"},
};

class Duplicates : public testing::TestWithParam<AddressesCase> {};

TEST_P(Duplicates, OnOneInterface) {
  const Interface intf = Intf("l3 7", "global", GetParam().addresses);
  ValidateConfig checker;
  const bool ipv4 = checker.InterfaceHasDuplicateIpv4(intf);
  const bool ipv6 = checker.InterfaceHasDuplicateIpv6(intf);
  EXPECT_EQ(checker.error_, GetParam().error);
  EXPECT_EQ(ipv4, checker.error_.find("IPv4") != std::string::npos);
  EXPECT_EQ(ipv6, checker.error_.find("IPv6") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Rows, Duplicates, testing::ValuesIn(kDuplicateCases),
                         CaseName<AddressesCase>);

// Two interfaces --------------------------------------------------------------------------------

struct PairCase {
  const char* name;
  const char* vrf_a;
  Addresses a;
  const char* vrf_b;
  Addresses b;
  const char* error;  // empty: no overlap
};

std::ostream& operator<<(std::ostream& out, const PairCase& c) { return out << c.name; }

const PairCase kPairCases[] = {
    {"NoAddresses", "red", {}, "red", {}, ""},
    {"Apart", "red", {"10.0.0.1/24"}, "red", {"10.0.1.1/24"}, ""},
    {"SameSubnet",
     "red",
     {"10.0.0.1/24"},
     "red",
     {"10.0.0.2/24"},
     "l3 1 vrf red ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.0.2/24."},
    {"SmallerInLarger",
     "red",
     {"10.0.0.1/8"},
     "red",
     {"10.1.2.3/24"},
     "l3 1 vrf red ipv4 address 10.0.0.1/8 overlaps with loopback 2 vrf red ipv4 address "
     "10.1.2.3/24."},
    {"LargerAroundSmaller",
     "red",
     {"10.1.2.3/24"},
     "red",
     {"10.0.0.1/8"},
     "l3 1 vrf red ipv4 address 10.1.2.3/24 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.0.1/8."},
    {"HostInSubnet",
     "red",
     {"10.0.0.1/24"},
     "red",
     {"10.0.0.99/32"},
     "l3 1 vrf red ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.0.99/32."},
    {"GlobalAndMgmt",
     "global",
     {"10.0.0.1/24"},
     "mgmt",
     {"10.0.0.2/24"},
     "l3 1 vrf global ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf mgmt ipv4 address "
     "10.0.0.2/24."},
    {"MgmtAndGlobal",
     "mgmt",
     {"10.0.0.1/24"},
     "global",
     {"10.0.0.2/24"},
     "l3 1 vrf mgmt ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf global ipv4 address "
     "10.0.0.2/24."},
    {"MgmtAndMgmt",
     "mgmt",
     {"10.0.0.1/24"},
     "mgmt",
     {"10.0.0.2/24"},
     "l3 1 vrf mgmt ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf mgmt ipv4 address "
     "10.0.0.2/24."},
    {"RedAndBlue", "red", {"10.0.0.1/24"}, "blue", {"10.0.0.1/24"}, ""},
    {"RedAndGlobal", "red", {"10.0.0.1/24"}, "global", {"10.0.0.1/24"}, ""},
    {"MgmtAndRed", "mgmt", {"10.0.0.1/24"}, "red", {"10.0.0.1/24"}, ""},
    {"EmptyAndGlobal", "", {"10.0.0.1/24"}, "global", {"10.0.0.1/24"}, ""},
    {"EmptyAndEmpty",
     "",
     {"10.0.0.1/24"},
     "",
     {"10.0.0.2/24"},
     "l3 1 vrf  ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf  ipv4 address 10.0.0.2/24."},
    {"CaseOfMgmt", "MGMT", {"10.0.0.1/24"}, "global", {"10.0.0.1/24"}, ""},
    {"CaseOfGlobal", "Global", {"10.0.0.1/24"}, "global", {"10.0.0.1/24"}, ""},
    {"FirstOfAThenFirstOfB",
     "red",
     {"10.9.0.1/24", "10.0.0.1/24", "10.1.0.1/24"},
     "red",
     {"10.8.0.1/24", "10.1.0.2/24", "10.0.0.2/24"},
     "l3 1 vrf red ipv4 address 10.0.0.1/24 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.0.2/24."},
    {"FirstMatchInB",
     "red",
     {"10.0.0.1/16"},
     "red",
     {"10.0.9.1/24", "10.0.1.1/24"},
     "l3 1 vrf red ipv4 address 10.0.0.1/16 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.9.1/24."},
    {"Length0",
     "red",
     {"10.0.0.1/0"},
     "red",
     {"203.0.113.1/32"},
     "l3 1 vrf red ipv4 address 10.0.0.1/0 overlaps with loopback 2 vrf red ipv4 address "
     "203.0.113.1/32."},
    {"LengthAboveFullCountsAsFull",
     "red",
     {"10.0.0.1/33"},
     "red",
     {"10.0.0.1/32"},
     "l3 1 vrf red ipv4 address 10.0.0.1/33 overlaps with loopback 2 vrf red ipv4 address "
     "10.0.0.1/32."},
    {"Ipv6Apart", "red", {"2001:db8:0:1::1/64"}, "red", {"2001:db8:0:2::1/64"}, ""},
    {"Ipv6SameSubnet",
     "red",
     {"2001:db8::1/64"},
     "red",
     {"2001:db8::2/64"},
     "l3 1 ipv6 address 2001:db8::1/64 overlaps with loopback 2 ipv6 address 2001:db8::2/64."},
    {"Ipv6NetworkLike",
     "red",
     {"2001:db8::/64"},
     "red",
     {"2001:db8::1/128"},
     "l3 1 ipv6 address 2001:db8::/64 overlaps with loopback 2 ipv6 address 2001:db8::1/128."},
    {"Ipv6GlobalAndMgmt",
     "global",
     {"2001:db8::1/64"},
     "mgmt",
     {"2001:db8::2/64"},
     "l3 1 ipv6 address 2001:db8::1/64 overlaps with loopback 2 ipv6 address 2001:db8::2/64."},
    {"Ipv6RedAndBlue", "red", {"2001:db8::1/64"}, "blue", {"2001:db8::1/64"}, ""},
    {"Ipv6EmptyAndMgmt", "", {"2001:db8::1/64"}, "mgmt", {"2001:db8::1/64"}, ""},
    {"Ipv6MappedIpv4",
     "red",
     {"::ffff:192.0.2.1/120"},
     "red",
     {"::ffff:192.0.2.9/128"},
     "l3 1 ipv6 address ::ffff:192.0.2.1/120 overlaps with loopback 2 ipv6 address "
     "::ffff:192.0.2.9/128."},
    {"Ipv6MappedIsNotIpv4", "red", {"::ffff:192.0.2.1/128"}, "red", {"192.0.2.1/32"}, ""},
    {"Ipv6LinkLocalIsLikeAnyOther",
     "red",
     {"fe80::1/64"},
     "red",
     {"fe80::1/64"},
     "l3 1 ipv6 address fe80::1/64 overlaps with loopback 2 ipv6 address fe80::1/64."},
};

class OverlapOfTwo : public testing::TestWithParam<PairCase> {};

TEST_P(OverlapOfTwo, Interfaces) {
  const PairCase& c = GetParam();
  const Interface a = Intf("l3 1", c.vrf_a, c.a);
  const Interface b = Intf("loopback 2", c.vrf_b, c.b);
  ValidateConfig checker;
  const bool ipv4 = checker.InterfaceIPv4Overlap(a, b);
  const bool ipv6 = checker.InterfaceIPv6Overlap(a, b);
  EXPECT_EQ(checker.error_, c.error);
  EXPECT_EQ(ipv4, checker.error_.find("ipv4") != std::string::npos);
  EXPECT_EQ(ipv6, checker.error_.find("ipv6") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Rows, OverlapOfTwo, testing::ValuesIn(kPairCases), CaseName<PairCase>);

// The whole check -------------------------------------------------------------------------------

struct Route {
  std::string vrf;
  std::string network;
  std::string next_hop;
};

struct ConfigCase {
  const char* name;
  InterfaceType type;
  std::vector<Interface> l3 = {};
  std::vector<Interface> loopback = {};
  std::vector<Interface> mgmt = {};
  std::vector<Route> routes = {};
  std::string verdict = "accepted";
};

std::ostream& operator<<(std::ostream& out, const ConfigCase& c) { return out << c.name; }

void AddRoute(StaticRouteConfig& routes, const Route& route) {
  if (const auto network = nettypes::ParseIPv4AddrMask(route.network)) {
    const auto next_hop = nettypes::ParseIPv4Addr(route.next_hop).value();
    routes.ipv4_next_hops_.emplace(
        RouteKey<nettypes::IPv4Addr>{route.vrf, next_hop},
        std::make_shared<StaticRouteIPv4>("", route.vrf, *network, next_hop));
  } else {
    const auto next_hop = nettypes::ParseIPv6Addr(route.next_hop).value();
    routes.ipv6_next_hops_.emplace(
        RouteKey<nettypes::IPv6Addr>{route.vrf, next_hop},
        std::make_shared<StaticRouteIPv6>(
            "", route.vrf, nettypes::ParseIPv6AddrMask(route.network).value(), next_hop));
  }
}

void Fill(Config& config, const ConfigCase& c) {
  config.l3_config_.interfaces_ = c.l3;
  config.lo_config_.interfaces_ = c.loopback;
  config.mgmt_config_.interfaces_ = c.mgmt;
  for (const Route& route : c.routes) AddRoute(*config.static_route_config_, route);
}

constexpr InterfaceType kL3 = InterfaceType::L3;
constexpr InterfaceType kLo = InterfaceType::Lo;
constexpr InterfaceType kMgmt = InterfaceType::Mgmt;

const ConfigCase kIpv4Cases[] = {
    {.name = "NoInterfaces", .type = kL3},
    {.name = "NoAddresses",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {}), Intf("l3 2", "global", {})}},
    {.name = "TwoOfOneSubnetOnOneInterface",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24", "10.0.0.2/24"})}},
    {.name = "ValidityBeforeDuplicate",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24", "10.0.0.1/24", "10.0.0.0/24"})},
     .verdict = "l3 1 ipv4 address 10.0.0.0/24 cannot be configured as network address."},
    {.name = "DuplicateBeforeOverlap",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24", "10.0.0.1/16"}),
            Intf("l3 2", "global", {"10.0.0.2/24"})},
     .verdict = "l3 1 has duplicated IPv4 address 10.0.0.1"},
    {.name = "OverlapBeforeNextHop",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24"}), Intf("l3 2", "global", {"10.0.0.2/24"})},
     .routes = {{"global", "198.51.100.0/24", "10.0.0.1"}},
     .verdict = "l3 1 vrf global ipv4 address 10.0.0.1/24 overlaps with l3 2 vrf global ipv4 "
                "address 10.0.0.2/24."},
    {.name = "OverlapBeforeValidityOfTheNext",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24"}), Intf("l3 2", "global", {"10.0.0.0/24"})},
     .verdict = "l3 1 vrf global ipv4 address 10.0.0.1/24 overlaps with l3 2 vrf global ipv4 "
                "address 10.0.0.0/24."},
    {.name = "ValidityBeforeOverlapOfLaterOnes",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.9.0.255/24"}), Intf("l3 2", "global", {"10.0.0.1/24"}),
            Intf("l3 3", "global", {"10.0.0.2/24"})},
     .verdict = "l3 1 ipv4 address 10.9.0.255/24 cannot be configured as broadcast address."},
    {.name = "NextHopBeforeValidityOfTheNext",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24"}), Intf("l3 2", "global", {"10.1.0.0/24"})},
     .routes = {{"global", "198.51.100.0/24", "10.0.0.1"}},
     .verdict = "l3 1 ipv4 address 10.0.0.1/24 and static route 198.51.100.0/24 next-hop 10.0.0.1 "
                "cannot have address conflict."},
    {.name = "NextHopBeforeOverlapOfLaterOnes",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.9.0.1/24"}), Intf("l3 2", "global", {"10.0.0.1/24"}),
            Intf("l3 3", "global", {"10.0.0.2/24"})},
     .routes = {{"global", "198.51.100.0/24", "10.9.0.1"}},
     .verdict = "l3 1 ipv4 address 10.9.0.1/24 and static route 198.51.100.0/24 next-hop 10.9.0.1 "
                "cannot have address conflict."},
    {.name = "NextHopOfAnotherVrf",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24"})},
     .routes = {{"mgmt", "198.51.100.0/24", "10.0.0.1"}}},
    {.name = "NextHopBeforeAnotherTable",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.0.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.0.0.2/32"})},
     .routes = {{"global", "198.51.100.0/24", "10.0.0.1"}},
     .verdict = "l3 1 ipv4 address 10.0.0.1/24 and static route 198.51.100.0/24 next-hop 10.0.0.1 "
                "cannot have address conflict."},
    {.name = "FirstPairInTableOrder",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"}), Intf("l3 2", "global", {"10.2.0.1/24"}),
            Intf("l3 3", "global", {"10.3.0.1/24"}), Intf("l3 4", "global", {"10.3.0.4/24"}),
            Intf("l3 5", "global", {"10.2.0.5/24"}), Intf("l3 6", "global", {"10.2.0.6/24"})},
     .verdict = "l3 2 vrf global ipv4 address 10.2.0.1/24 overlaps with l3 5 vrf global ipv4 "
                "address 10.2.0.5/24."},
    {.name = "LargerPrefixFurtherBehind",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"}), Intf("l3 2", "global", {"10.2.0.1/24"}),
            Intf("l3 3", "global", {"10.0.0.1/8"})},
     .verdict = "l3 1 vrf global ipv4 address 10.1.0.1/24 overlaps with l3 3 vrf global ipv4 "
                "address 10.0.0.1/8."},
    {.name = "WithinTheTableBeforeAnotherTable",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"}), Intf("l3 2", "global", {"10.2.0.1/24"}),
            Intf("l3 3", "global", {"10.2.0.3/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.1.0.9/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.1.0.8/32"})},
     .verdict = "l3 2 vrf global ipv4 address 10.2.0.1/24 overlaps with l3 3 vrf global ipv4 "
                "address 10.2.0.3/24."},
    {.name = "L3MgmtBeforeLoopback",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"}), Intf("l3 2", "global", {"10.2.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.1.0.9/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.2.0.8/32"})},
     .verdict = "l3 2 vrf global ipv4 address 10.2.0.1/24 overlaps with mgmt 0 vrf mgmt ipv4 "
                "address 10.2.0.8/32."},
    {.name = "LoopbackMgmtBeforeL3",
     .type = kLo,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.1.0.9/32"}),
                  Intf("loopback 1", "global", {"10.2.0.9/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.2.0.8/24"})},
     .verdict = "loopback 1 vrf global ipv4 address 10.2.0.9/32 overlaps with mgmt 0 vrf mgmt ipv4 "
                "address 10.2.0.8/24."},
    {.name = "MgmtL3BeforeLoopback",
     .type = kMgmt,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.2.0.9/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.2.0.8/24"}), Intf("mgmt 1", "mgmt", {"10.1.0.8/24"})},
     .verdict = "mgmt 1 vrf mgmt ipv4 address 10.1.0.8/24 overlaps with l3 1 vrf global ipv4 "
                "address 10.1.0.1/24."},
    {.name = "OtherTablesInterfaceDecidesBeforeOwn",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"}), Intf("l3 2", "global", {"10.2.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.2.0.9/32"}),
                  Intf("loopback 1", "global", {"10.1.0.9/32"})},
     .verdict = "l3 2 vrf global ipv4 address 10.2.0.1/24 overlaps with loopback 0 vrf global ipv4 "
                "address 10.2.0.9/32."},
    {.name = "FirstOwnOfOneOther",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.2.0.1/24"}), Intf("l3 2", "global", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.0.0.9/8"})},
     .verdict = "l3 1 vrf global ipv4 address 10.2.0.1/24 overlaps with loopback 0 vrf global ipv4 "
                "address 10.0.0.9/8."},
    {.name = "OverlapsBetweenOtherTablesDoNotCount",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.2.0.9/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.2.0.8/24"})}},
    {.name = "FaultsWithinAnotherTableDoNotCount",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "global", {"10.2.0.0/24", "10.2.0.0/24"}),
                  Intf("loopback 1", "global", {"10.2.0.1/24"})},
     .routes = {{"global", "198.51.100.0/24", "10.2.0.1"}}},
    {.name = "AnotherTableInAnotherVrf",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"10.1.0.1/24"})},
     .loopback = {Intf("loopback 0", "blue", {"10.1.0.1/32"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"10.1.0.1/24"})}},
    {.name = "Ipv6IsNotLookedAt",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"2001:db8::1/64", "2001:db8::1/64"}),
            Intf("l3 2", "red", {"2001:db8::2/64"})},
     .routes = {{"red", "2001:db8:9::/48", "2001:db8::1"}}},
    {.name = "LengthAboveFullIsComparedAsFull",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"10.0.0.1/24"}), Intf("l3 2", "red", {"10.0.0.2/33"})},
     .verdict = "l3 1 vrf red ipv4 address 10.0.0.1/24 overlaps with l3 2 vrf red ipv4 address "
                "10.0.0.2/33."},
    {.name = "Invalid",
     .type = InterfaceType::Invalid,
     .l3 = {Intf("l3 1", "red", {"10.0.0.0/24"})},
     .verdict = "invalid interface being handled by IP-App validation"},
    {.name = "NoKindAtAll",
     .type = static_cast<InterfaceType>(7),
     .verdict = "invalid interface being handled by IP-App validation"},
};

const ConfigCase kIpv6Cases[] = {
    {.name = "NoInterfaces", .type = kL3},
    {.name = "NetworkLikeAddress", .type = kL3, .l3 = {Intf("l3 1", "global", {"2001:db8::/64"})}},
    {.name = "AllHostBitsOne",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::ffff:ffff:ffff:ffff/64"})}},
    {.name = "TwoOfOneSubnetOnOneInterface",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64", "2001:db8::2/64"})}},
    {.name = "DuplicateBeforeOverlap",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64", "2001:db8::1/48"}),
            Intf("l3 2", "global", {"2001:db8::2/64"})},
     .verdict = "l3 1 has duplicated IPv6 address 2001:db8::1"},
    {.name = "OverlapBeforeNextHop",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64"}), Intf("l3 2", "global", {"2001:db8::2/64"})},
     .routes = {{"global", "2001:db8:9::/48", "2001:db8::1"}},
     .verdict = "l3 1 ipv6 address 2001:db8::1/64 overlaps with l3 2 ipv6 address 2001:db8::2/64."},
    {.name = "OverlapBeforeDuplicateOfTheNext",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64"}),
            Intf("l3 2", "global", {"2001:db8::2/64", "2001:db8::2/64"})},
     .verdict = "l3 1 ipv6 address 2001:db8::1/64 overlaps with l3 2 ipv6 address 2001:db8::2/64."},
    {.name = "NextHopBeforeDuplicateOfTheNext",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64"}),
            Intf("l3 2", "global", {"2001:db8:1::1/64", "2001:db8:1::1/64"})},
     .routes = {{"global", "2001:db8:9::/48", "2001:db8::1"}},
     .verdict = "l3 1 ipv6 address 2001:db8::1/64 and static route 2001:db8:9::/48 next-hop "
                "2001:db8::1 cannot have address conflict."},
    {.name = "NextHopBeforeAnotherTable",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8::1/64"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"2001:db8::2/64"})},
     .routes = {{"global", "2001:db8:9::/48", "2001:db8::1"}},
     .verdict = "l3 1 ipv6 address 2001:db8::1/64 and static route 2001:db8:9::/48 next-hop "
                "2001:db8::1 cannot have address conflict."},
    {.name = "WithinTheTableBeforeAnotherTable",
     .type = kLo,
     .l3 = {Intf("l3 1", "global", {"2001:db8:1::1/64"})},
     .loopback = {Intf("loopback 0", "global", {"2001:db8:1::2/128"}),
                  Intf("loopback 1", "global", {"2001:db8:2::1/64"}),
                  Intf("loopback 2", "global", {"2001:db8:2::2/128"})},
     .verdict = "loopback 1 ipv6 address 2001:db8:2::1/64 overlaps with loopback 2 ipv6 address "
                "2001:db8:2::2/128."},
    {.name = "MgmtBeforeLoopback",
     .type = kL3,
     .l3 = {Intf("l3 1", "global", {"2001:db8:1::1/64"}),
            Intf("l3 2", "global", {"2001:db8:2::1/64"})},
     .loopback = {Intf("loopback 0", "global", {"2001:db8:1::9/128"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"2001:db8:2::8/128"})},
     .verdict = "l3 2 ipv6 address 2001:db8:2::1/64 overlaps with mgmt 0 ipv6 address "
                "2001:db8:2::8/128."},
    {.name = "AnotherTableInAnotherVrf",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"2001:db8::1/64"})},
     .loopback = {Intf("loopback 0", "blue", {"2001:db8::1/64"})},
     .mgmt = {Intf("mgmt 0", "mgmt", {"2001:db8::1/64"})}},
    {.name = "Ipv4IsNotLookedAt",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"10.0.0.0/24", "10.0.0.0/24"}),
            Intf("l3 2", "red", {"10.0.0.0/24"})},
     .routes = {{"red", "198.51.100.0/24", "10.0.0.0"}}},
    {.name = "LengthAboveFullIsComparedAsFull",
     .type = kL3,
     .l3 = {Intf("l3 1", "red", {"2001:db8::1/64"}), Intf("l3 2", "red", {"2001:db8::2/129"})},
     .verdict =
         "l3 1 ipv6 address 2001:db8::1/64 overlaps with l3 2 ipv6 address 2001:db8::2/129."},
    {.name = "Invalid",
     .type = InterfaceType::Invalid,
     .verdict = "invalid interface being handled by IP-App validation"},
};

class Ipv4Check : public testing::TestWithParam<ConfigCase> {};
class Ipv6Check : public testing::TestWithParam<ConfigCase> {};

TEST_P(Ipv4Check, OfOneKindOfInterface) {
  Config config;
  Fill(config, GetParam());
  ValidateConfig checker;
  const int result = checker.ValidateInterfaceIPv4(config, GetParam().type);
  EXPECT_EQ(result == 0 ? "accepted" : checker.error_, GetParam().verdict);
  EXPECT_EQ(result, GetParam().verdict == "accepted" ? 0 : -1);
}

TEST_P(Ipv6Check, OfOneKindOfInterface) {
  Config config;
  Fill(config, GetParam());
  ValidateConfig checker;
  const int result = checker.ValidateInterfaceIPv6(config, GetParam().type);
  EXPECT_EQ(result == 0 ? "accepted" : checker.error_, GetParam().verdict);
  EXPECT_EQ(result, GetParam().verdict == "accepted" ? 0 : -1);
}

INSTANTIATE_TEST_SUITE_P(Rows, Ipv4Check, testing::ValuesIn(kIpv4Cases), CaseName<ConfigCase>);
INSTANTIATE_TEST_SUITE_P(Rows, Ipv6Check, testing::ValuesIn(kIpv6Cases), CaseName<ConfigCase>);

// Tables against tables -------------------------------------------------------------------------

// The list decides about the order, and a table of the same kind is passed over even when it is
// another one.
TEST(AcrossTables, GoesByTheGivenList) {
  Config config;
  Config other;
  config.l3_config_.interfaces_ = {Intf("l3 1", "global", {"10.0.0.1/16", "2001:db8::1/32"})};
  config.lo_config_.interfaces_ = {
      Intf("loopback 0", "global", {"10.0.0.2/32", "2001:db8::2/128"})};
  config.mgmt_config_.interfaces_ = {Intf("mgmt 0", "mgmt", {"10.0.0.3/32", "2001:db8::3/128"})};
  other.l3_config_.interfaces_ = {Intf("l3 2", "global", {"10.0.0.4/32", "2001:db8::4/128"})};
  ValidateConfig checker;

  EXPECT_FALSE(checker.InterfaceIPv4Overlap(config.l3_config_, {}));
  EXPECT_FALSE(checker.InterfaceIPv6Overlap(config.l3_config_, {&other.l3_config_}));
  EXPECT_FALSE(
      checker.InterfaceIPv4Overlap(config.l3_config_, {&other.l3_config_, &config.l3_config_}));
  EXPECT_EQ(checker.error_, "");

  EXPECT_TRUE(
      checker.InterfaceIPv4Overlap(config.l3_config_, {&config.lo_config_, &config.mgmt_config_}));
  EXPECT_EQ(checker.error_,
            "l3 1 vrf global ipv4 address 10.0.0.1/16 overlaps with loopback 0 vrf global ipv4 "
            "address 10.0.0.2/32.");
  EXPECT_TRUE(
      checker.InterfaceIPv6Overlap(config.l3_config_, {&config.mgmt_config_, &config.lo_config_}));
  EXPECT_EQ(checker.error_,
            "l3 1 ipv6 address 2001:db8::1/32 overlaps with mgmt 0 ipv6 address 2001:db8::3/128.");
}

// A table that overlaps itself is no obstacle.
TEST(AcrossTables, FindsTheFirstOwnInterface) {
  Config config;
  config.l3_config_.interfaces_ = {Intf("l3 1", "global", {"10.9.0.1/24"}),
                                   Intf("l3 2", "global", {"10.0.0.1/24"}),
                                   Intf("l3 3", "global", {"10.0.0.1/16"})};
  config.lo_config_.interfaces_ = {Intf("loopback 0", "global", {"10.0.7.1/32"}),
                                   Intf("loopback 1", "global", {"10.0.0.7/32"})};
  ValidateConfig checker;
  EXPECT_TRUE(checker.InterfaceIPv4Overlap(config.l3_config_, config.intf_configs_));
  EXPECT_EQ(checker.error_,
            "l3 3 vrf global ipv4 address 10.0.0.1/16 overlaps with loopback 0 vrf global ipv4 "
            "address 10.0.7.1/32.");
}

// The message of a check ------------------------------------------------------------------------

TEST(AddressMessage, IsReplacedByAFaultAndLeftByAPass) {
  Config config;
  ValidateConfig checker;
  checker.error_ = "an earlier text";
  EXPECT_EQ(checker.ValidateInterfaceIPv4(config, InterfaceType::L3), 0);
  EXPECT_EQ(checker.ValidateInterfaceIPv6(config, InterfaceType::L3), 0);
  EXPECT_EQ(checker.error_, "an earlier text");
  config.l3_config_.interfaces_ = {Intf("l3 1", "global", {"10.0.0.0/24"})};
  EXPECT_EQ(checker.ValidateInterfaceIPv4(config, InterfaceType::L3), -1);
  EXPECT_EQ(checker.error_,
            "l3 1 ipv4 address 10.0.0.0/24 cannot be configured as network address.");
  EXPECT_EQ(checker.ValidateInterfaceIPv6(config, InterfaceType::Invalid), -1);
  EXPECT_EQ(checker.error_, "invalid interface being handled by IP-App validation");
}

TEST(AddressCheck, LeavesTheTablesAsTheyAre) {
  Config config;
  config.l3_config_.interfaces_ = {Intf("l3 2", "global", {"10.1.0.1/24", "2001:db8:1::1/64"}),
                                   Intf("l3 1", "global", {"10.0.0.1/24", "2001:db8::1/64"})};
  const std::vector<Interface> before = config.l3_config_.interfaces_;
  const std::vector<InterfaceConfig*> tables = config.intf_configs_;
  ValidateConfig checker;
  EXPECT_EQ(checker.ValidateInterfaceIPv4(config, InterfaceType::L3), 0);
  EXPECT_EQ(checker.ValidateInterfaceIPv6(config, InterfaceType::L3), 0);
  EXPECT_TRUE(std::equal(before.begin(), before.end(), config.l3_config_.interfaces_.begin(),
                         config.l3_config_.interfaces_.end(),
                         [](const Interface& a, const Interface& b) {
                           return a.name == b.name && a.ipv4_addr_list == b.ipv4_addr_list &&
                                  a.ipv6_addr_list == b.ipv6_addr_list;
                         }));
  EXPECT_EQ(config.intf_configs_, tables);
}

}  // namespace
}  // namespace ip_application::config_valid
