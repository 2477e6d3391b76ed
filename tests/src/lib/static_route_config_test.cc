// What the static route tables hold after which reads, and what the queries find in them.
#include "static_route_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "config.h"
#include "support/device.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using testing::IsEmpty;
using tests::ConfiguredRoute;
using tests::Device;

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;
const std::map<uint32_t, std::optional<std::string>> kVrfs = {
    {1, "red"}, {2, "red"}, {3, "Red"}, {4, "blue"}, {5, "re"}};

std::string Text(const StaticRoute& route) {
  return route.vrf_name + " " + route.network().to_string() + " via " +
         route.next_hop().to_string() + " out " + route.output_intf_name;
}

// The records of a map in its order, each behind its key.
template <typename Addr>
std::vector<std::string> Rows(const RouteMap<Addr>& routes) {
  std::vector<std::string> rows;
  for (const auto& [key, route] : routes) {
    rows.push_back("[" + key.vrf_name + " " + key.addr.to_string() + "] " + Text(*route));
  }
  return rows;
}

nettypes::IPv4Addr Ipv4(uint32_t host_order) { return nettypes::IPv4Addr(host_order); }

nettypes::IPv6Addr Ipv6(uint8_t last_octet) {
  return nettypes::IPv6Addr({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last_octet});
}

// RouteKey -------------------------------------------------------------------------------------

struct KeyCase {
  const char* name;
  const char* vrf_a;
  uint32_t addr_a;
  const char* vrf_b;
  uint32_t addr_b;
  int order;  // below zero: a is first
};

std::ostream& operator<<(std::ostream& out, const KeyCase& c) { return out << c.name; }

const KeyCase kKeyCases[] = {
    {"Same", "red", 1, "red", 1, 0},
    {"AddressDecidesInOneVrf", "red", 1, "red", 2, -1},
    {"VrfGoesBeforeAddress", "blue", 9, "red", 1, -1},
    {"UpperCaseIsAnotherVrfAndFirst", "RED", 9, "red", 1, -1},
    {"CommonPrefixTheShorterIsFirst", "re", 9, "red", 1, -1},
    {"NoNameIsFirst", "", 9, "red", 1, -1},
    {"BytesAreUnsigned", "z", 9, "\xc3\xa4", 1, -1},
    {"AddressesAreUnsigned", "red", 0x7fffffff, "red", 0x80000000, -1},
};

class RouteKeyOrder : public testing::TestWithParam<KeyCase> {};

TEST_P(RouteKeyOrder, IsOfNamesThenAddresses) {
  const KeyCase& c = GetParam();
  const RouteKey<nettypes::IPv4Addr> a{c.vrf_a, Ipv4(c.addr_a)};
  const RouteKey<nettypes::IPv4Addr> b{c.vrf_b, Ipv4(c.addr_b)};
  EXPECT_EQ(a < b, c.order < 0);
  EXPECT_FALSE(b < a);
}

INSTANTIATE_TEST_SUITE_P(Keys, RouteKeyOrder, testing::ValuesIn(kKeyCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RouteKey, OrdersTheOtherAddressTypesAlike) {
  using Prefix4 = RouteKey<nettypes::IPv4AddrMask>;
  using Prefix6 = RouteKey<nettypes::IPv6AddrMask>;
  using Addr6 = RouteKey<nettypes::IPv6Addr>;
  EXPECT_TRUE((Prefix4{"red", {Ipv4(1), 8}} < Prefix4{"red", {Ipv4(1), 16}}));
  EXPECT_FALSE((Prefix4{"red", {Ipv4(1), 16}} < Prefix4{"red", {Ipv4(1), 8}}));
  EXPECT_TRUE((Prefix4{"blue", {Ipv4(9), 8}} < Prefix4{"red", {Ipv4(1), 8}}));
  EXPECT_TRUE((Prefix6{"red", {Ipv6(1), 64}} < Prefix6{"red", {Ipv6(2), 32}}));
  EXPECT_TRUE((Prefix6{"blue", {Ipv6(9), 64}} < Prefix6{"red", {Ipv6(1), 64}}));
  EXPECT_TRUE((Addr6{"red", Ipv6(1)} < Addr6{"red", Ipv6(2)}));
  EXPECT_FALSE((Addr6{"red", Ipv6(2)} < Addr6{"blue", Ipv6(3)}));
}

// Records --------------------------------------------------------------------------------------

TEST(StaticRoute, GivesBackWhatItWasMadeOf) {
  const StaticRouteIPv4 ipv4("l3 7", "red", {Ipv4(0x0a000000), 8}, Ipv4(0xc0000202));
  EXPECT_EQ(Text(ipv4), "red 10.0.0.0/8 via 192.0.2.2 out l3 7");
  const StaticRouteIPv6 ipv6("", "global", {Ipv6(0), 32}, nettypes::IPv6Addr());
  EXPECT_EQ(Text(ipv6), "global 2001:db8::/32 via :: out ");
}

// Reads ----------------------------------------------------------------------------------------

struct ReadCase {
  const char* name;
  std::vector<ConfiguredRoute> routes;
  std::vector<ConfigAddrFamily> families;
  uint32_t ipv4_count;
  std::vector<std::string> ipv4_routes;
  std::vector<std::string> ipv4_blackholes;
  std::vector<std::string> ipv4_next_hops;
  uint32_t ipv6_count;
  std::vector<std::string> ipv6_routes;
  std::vector<std::string> ipv6_blackholes;
  std::vector<std::string> ipv6_next_hops;
  std::set<std::string> output_interfaces;
};

std::ostream& operator<<(std::ostream& out, const ReadCase& c) { return out << c.name; }

const std::vector<ConfiguredRoute> kBothFamilies = {
    {1, "10.0.0.0/8", "192.0.2.2", "l3-4"},
    {1, "10.1.0.0/16"},
    {1, "2001:db8::/32", "2001:db8:1::2", "l3-6"},
    {1, "2001:db8:2::/48"},
    {1, "2001:db8:3::/48"},
};

const ReadCase kReadCases[] = {
    {"EmptyTable", {}, {kIpv4, kIpv6}, 0, {}, {}, {}, 0, {}, {}, {}, {}},
    {"NothingIsReadForNoFamily", kBothFamilies, {}, 0, {}, {}, {}, 0, {}, {}, {}, {}},
    {"Ipv4AloneCountsBoth",
     kBothFamilies,
     {kIpv4},
     2,
     {"[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out l3 4"},
     {"[red 10.1.0.0/16] red 10.1.0.0/16 via 0.0.0.0 out "},
     {"[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out l3 4"},
     3,
     {},
     {},
     {},
     {"l3 4"}},
    {"Ipv6AloneCountsBoth",
     kBothFamilies,
     {kIpv6},
     2,
     {},
     {},
     {},
     3,
     {"[red 2001:db8::/32] red 2001:db8::/32 via 2001:db8:1::2 out l3 6"},
     {"[red 2001:db8:2::/48] red 2001:db8:2::/48 via :: out ",
      "[red 2001:db8:3::/48] red 2001:db8:3::/48 via :: out "},
     {"[red 2001:db8:1::2] red 2001:db8::/32 via 2001:db8:1::2 out l3 6"},
     {"l3 6"}},
    {"SecondReadAddsAndDoesNotAddUp",
     kBothFamilies,
     {kIpv4, kIpv6},
     2,
     {"[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out l3 4"},
     {"[red 10.1.0.0/16] red 10.1.0.0/16 via 0.0.0.0 out "},
     {"[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out l3 4"},
     3,
     {"[red 2001:db8::/32] red 2001:db8::/32 via 2001:db8:1::2 out l3 6"},
     {"[red 2001:db8:2::/48] red 2001:db8:2::/48 via :: out ",
      "[red 2001:db8:3::/48] red 2001:db8:3::/48 via :: out "},
     {"[red 2001:db8:1::2] red 2001:db8::/32 via 2001:db8:1::2 out l3 6"},
     {"l3 4", "l3 6"}},
    {"FirstNextHopOfAPrefixStaysBothAreNextHops",
     {{1, "10.0.0.0/8", "192.0.2.2", "l3-2"}, {1, "10.0.0.0/8", "192.0.2.3", "l3-3"}},
     {kIpv4},
     2,
     {"[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out l3 2"},
     {},
     {"[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out l3 2",
      "[red 192.0.2.3] red 10.0.0.0/8 via 192.0.2.3 out l3 3"},
     0,
     {},
     {},
     {},
     {"l3 2", "l3 3"}},
    {"FirstPrefixOfANextHopStays",
     {{1, "10.0.0.0/8", "192.0.2.2", "l3-2"}, {1, "11.0.0.0/8", "192.0.2.2", "l3-3"}},
     {kIpv4},
     2,
     {"[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out l3 2",
      "[red 11.0.0.0/8] red 11.0.0.0/8 via 192.0.2.2 out l3 3"},
     {},
     {"[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out l3 2"},
     0,
     {},
     {},
     {},
     {"l3 2", "l3 3"}},
    {"FirstIpv6NextHopOfAPrefixAndPrefixOfANextHop",
     {{1, "2001:db8::/32", "fe80::1"}, {1, "2001:db8::/32", "fe80::2"}, {2, "fd00::/8", "fe80::1"}},
     {kIpv6},
     0,
     {},
     {},
     {},
     3,
     {"[red 2001:db8::/32] red 2001:db8::/32 via fe80::1 out ",
      "[red fd00::/8] red fd00::/8 via fe80::1 out "},
     {},
     {"[red fe80::1] red 2001:db8::/32 via fe80::1 out ",
      "[red fe80::2] red 2001:db8::/32 via fe80::2 out "},
     {""}},
    // Both indexes have the name red.
    {"TwoIndexesOfOneVrfAreOneKeyButTwoCounts",
     {{1, "10.0.0.0/8", "192.0.2.2", "l3-1"},
      {2, "10.0.0.0/8", "192.0.2.2", "l3-2"},
      {1, "10.1.0.0/16", "", "l3-3"},
      {2, "10.1.0.0/16", "", "l3-4"}},
     {kIpv4},
     4,
     {"[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out l3 1"},
     {"[red 10.1.0.0/16] red 10.1.0.0/16 via 0.0.0.0 out l3 3"},
     {"[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out l3 1"},
     0,
     {},
     {},
     {},
     {"l3 1", "l3 2"}},
    {"VrfsInByteOrderWhateverTheIndex",
     {{1, "10.0.0.0/8", "192.0.2.2"},
      {3, "10.0.0.0/8", "192.0.2.2"},
      {4, "11.0.0.0/8", "192.0.2.3"},
      {5, "10.0.0.0/8", "192.0.2.2"}},
     {kIpv4},
     4,
     {"[Red 10.0.0.0/8] Red 10.0.0.0/8 via 192.0.2.2 out ",
      "[blue 11.0.0.0/8] blue 11.0.0.0/8 via 192.0.2.3 out ",
      "[re 10.0.0.0/8] re 10.0.0.0/8 via 192.0.2.2 out ",
      "[red 10.0.0.0/8] red 10.0.0.0/8 via 192.0.2.2 out "},
     {},
     {"[Red 192.0.2.2] Red 10.0.0.0/8 via 192.0.2.2 out ",
      "[blue 192.0.2.3] blue 11.0.0.0/8 via 192.0.2.3 out ",
      "[re 192.0.2.2] re 10.0.0.0/8 via 192.0.2.2 out ",
      "[red 192.0.2.2] red 10.0.0.0/8 via 192.0.2.2 out "},
     0,
     {},
     {},
     {},
     {""}},
    {"IndexWithoutNameIsGlobal",
     {{0, "10.0.0.0/8", "192.0.2.2"}, {4294967295, "10.0.0.0/8", "192.0.2.3"}},
     {kIpv4},
     2,
     {"[global 10.0.0.0/8] global 10.0.0.0/8 via 192.0.2.2 out "},
     {},
     {"[global 192.0.2.2] global 10.0.0.0/8 via 192.0.2.2 out ",
      "[global 192.0.2.3] global 10.0.0.0/8 via 192.0.2.3 out "},
     0,
     {},
     {},
     {},
     {""}},
    {"BlackHoleBesideItsPrefixWithANextHop",
     {{0, "10.0.0.0/8", "", "l3-1"}, {0, "10.0.0.0/8", "192.0.2.2", "l3-2"}},
     {kIpv4},
     2,
     {"[global 10.0.0.0/8] global 10.0.0.0/8 via 192.0.2.2 out l3 2"},
     {"[global 10.0.0.0/8] global 10.0.0.0/8 via 0.0.0.0 out l3 1"},
     {"[global 192.0.2.2] global 10.0.0.0/8 via 192.0.2.2 out l3 2"},
     0,
     {},
     {},
     {},
     {"l3 2"}},
    {"BlackHoleKeepsItsOutputInterfaceToItself",
     {{0, "10.0.0.0/8", "", "l3-1"}, {0, "2001:db8::/32", "", "l3-2"}},
     {kIpv4, kIpv6},
     1,
     {},
     {"[global 10.0.0.0/8] global 10.0.0.0/8 via 0.0.0.0 out l3 1"},
     {},
     1,
     {},
     {"[global 2001:db8::/32] global 2001:db8::/32 via :: out l3 2"},
     {},
     {}},
    {"DefaultRoutes",
     {{0, "0.0.0.0/0", "192.0.2.2"}, {0, "::/0", "fe80::1"}},
     {kIpv4, kIpv6},
     1,
     {"[global 0.0.0.0/0] global 0.0.0.0/0 via 192.0.2.2 out "},
     {},
     {"[global 192.0.2.2] global 0.0.0.0/0 via 192.0.2.2 out "},
     1,
     {"[global ::/0] global ::/0 via fe80::1 out "},
     {},
     {"[global fe80::1] global ::/0 via fe80::1 out "},
     {""}},
};

class StaticRouteRead : public tests::TableTest, public testing::WithParamInterface<ReadCase> {};

TEST_P(StaticRouteRead, FillsTheTables) {
  const ReadCase& c = GetParam();
  Configure(Device{.vrfs = kVrfs, .routes = c.routes});
  StaticRouteConfig table;
  Bind(table);
  for (const ConfigAddrFamily family : c.families) table.ReadConfigIfNeeded(family);
  EXPECT_EQ(table.ipv4_route_count_, c.ipv4_count);
  EXPECT_EQ(Rows(table.ipv4_routes_), c.ipv4_routes);
  EXPECT_EQ(Rows(table.ipv4_blackhole_routes_), c.ipv4_blackholes);
  EXPECT_EQ(Rows(table.ipv4_next_hops_), c.ipv4_next_hops);
  EXPECT_EQ(table.ipv6_route_count_, c.ipv6_count);
  EXPECT_EQ(Rows(table.ipv6_routes_), c.ipv6_routes);
  EXPECT_EQ(Rows(table.ipv6_blackhole_routes_), c.ipv6_blackholes);
  EXPECT_EQ(Rows(table.ipv6_next_hops_), c.ipv6_next_hops);
  EXPECT_EQ(table.output_interfaces_, c.output_interfaces);
  EXPECT_THAT(framework::TakeFaults(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Routes, StaticRouteRead, testing::ValuesIn(kReadCases),
                         [](const auto& row) { return std::string(row.param.name); });

class StaticRouteTable : public tests::TableTest {
 protected:
  // Reads the families of `routes` into `table`.
  void Read(const std::vector<ConfiguredRoute>& routes,
            const std::vector<ConfigAddrFamily>& families = {kIpv4, kIpv6}) {
    Configure(Device{.vrfs = kVrfs, .routes = routes});
    Bind(table);
    for (const ConfigAddrFamily family : families) table.ReadConfigIfNeeded(family);
  }

  StaticRouteConfig table;
};

TEST_F(StaticRouteTable, MapsShareOneRecord) {
  Read({{1, "10.0.0.0/8", "192.0.2.2"}});
  ASSERT_EQ(table.ipv4_routes_.size(), 1u);
  ASSERT_EQ(table.ipv4_next_hops_.size(), 1u);
  const std::shared_ptr<StaticRoute>& record = table.ipv4_routes_.begin()->second;
  EXPECT_EQ(record, table.ipv4_next_hops_.begin()->second);
  EXPECT_EQ(record.use_count(), 2);
}

// A Config that outlives its transaction counts what is there at the last read.
TEST_F(StaticRouteTable, CountsAreThoseOfTheLastReadMapsOfAll) {
  Read({{1, "10.0.0.0/8", "192.0.2.2"}, {1, "11.0.0.0/8"}}, {kIpv4});
  Read({{1, "fd00::/8", "fe80::1"}}, {kIpv6});
  EXPECT_EQ(table.ipv4_route_count_, 0u);
  EXPECT_EQ(table.ipv6_route_count_, 1u);
  EXPECT_EQ(table.ipv4_routes_.size(), 1u);
  EXPECT_EQ(table.ipv4_blackhole_routes_.size(), 1u);
  EXPECT_EQ(table.ipv6_routes_.size(), 1u);
}

TEST_F(StaticRouteTable, ReadsAFamilyOnce) {
  Read({{1, "10.0.0.0/8", "192.0.2.2"}}, {kIpv4});
  TakeCalls();
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TakeCalls(), IsEmpty());
  EXPECT_TRUE(table.ipv4_read_);
  EXPECT_FALSE(table.ipv6_read_);
}

// Queries --------------------------------------------------------------------------------------

TEST_F(StaticRouteTable, NextHopIsFoundInItsVrfOnly) {
  Read({{1, "10.0.0.0/8", "192.0.2.2"}, {1, "fd00::/8", "2001:db8::2"}});
  std::shared_ptr<StaticRoute> route;
  EXPECT_TRUE(table.FindNextHop({"red", Ipv4(0xc0000202)}, route));
  EXPECT_EQ(Text(*route), "red 10.0.0.0/8 via 192.0.2.2 out ");
  EXPECT_EQ(route.use_count(), 3);
  EXPECT_TRUE(table.FindNextHop({"red", Ipv6(2)}, route));
  EXPECT_EQ(Text(*route), "red fd00::/8 via 2001:db8::2 out ");

  const std::shared_ptr<StaticRoute> before = route;
  for (const char* vrf : {"Red", "RED", "re", "redd", "", "global", "blue"}) {
    EXPECT_FALSE(table.FindNextHop({vrf, Ipv4(0xc0000202)}, route)) << vrf;
    EXPECT_FALSE(table.FindNextHop({vrf, Ipv6(2)}, route)) << vrf;
  }
  EXPECT_FALSE(table.FindNextHop({"red", Ipv4(0xc0000203)}, route));
  EXPECT_FALSE(table.FindNextHop({"red", Ipv4(0)}, route));
  EXPECT_FALSE(table.FindNextHop({"red", Ipv6(3)}, route));
  EXPECT_EQ(route, before) << "touched without a match";
}

TEST_F(StaticRouteTable, NextHopOfTwoRoutesIsThatOfTheFirst) {
  Read({{1, "10.0.0.0/8", "192.0.2.2"},
        {1, "9.0.0.0/8", "192.0.2.2"},
        {2, "8.0.0.0/8", "192.0.2.2"}});
  std::shared_ptr<StaticRoute> route;
  ASSERT_TRUE(table.FindNextHop({"red", Ipv4(0xc0000202)}, route));
  EXPECT_EQ(route->network().to_string(), "9.0.0.0/8") << "the table is in the order of its keys";
}

TEST_F(StaticRouteTable, NextHopsOfBlackHolesAreNone) {
  Read({{0, "10.0.0.0/8"}, {0, "fd00::/8"}});
  std::shared_ptr<StaticRoute> route;
  EXPECT_FALSE(table.FindNextHop({"global", Ipv4(0)}, route));
  EXPECT_FALSE(table.FindNextHop({"global", nettypes::IPv6Addr()}, route));
  EXPECT_EQ(route, nullptr);
}

TEST_F(StaticRouteTable, OutputInterfacesAreThoseOfRoutesWithANextHop) {
  Read({{0, "10.0.0.0/8", "192.0.2.2", "l3-v4"},
        {0, "11.0.0.0/8", "", "l3-blackhole"},
        {0, "fd00::/8", "fe80::1", "l3-v6"},
        {0, "fd00::/9", "", "l3-blackhole6"}});
  EXPECT_TRUE(table.FindOutputInterface("l3 v4"));
  EXPECT_TRUE(table.FindOutputInterface("l3 v6"));
  for (const char* name :
       {"l3-v4", "L3 v4", "l3 V4", "l3 v", "l3 v44", "l3 blackhole", "l3 blackhole6", ""}) {
    EXPECT_FALSE(table.FindOutputInterface(name)) << name;
  }
}

TEST_F(StaticRouteTable, EmptyNameIsAnOutputInterfaceOnceARouteHasNone) {
  Read({{0, "10.0.0.0/8"}}, {kIpv4});
  EXPECT_FALSE(table.FindOutputInterface(""));
  StaticRouteConfig other;
  Configure(Device{.routes = {{0, "10.0.0.0/8", "192.0.2.2"}}});
  Bind(other);
  other.ReadConfigIfNeeded(kIpv4);
  EXPECT_TRUE(other.FindOutputInterface(""));
}

TEST_F(StaticRouteTable, QueriesOnAFamilyThatWasNotReadFindNothing) {
  const std::vector<ConfiguredRoute> routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-4"},
                                               {0, "10.0.0.0/8"},
                                               {0, "fd00::/8", "2001:db8::2", "l3-6"},
                                               {0, "fd00::/8"}};
  std::shared_ptr<StaticRoute> route;
  Read(routes, {kIpv4});
  EXPECT_FALSE(table.FindNextHop({"global", Ipv6(2)}, route));
  EXPECT_FALSE(table.CheckBlackHoleIpv6(route));
  EXPECT_FALSE(table.FindOutputInterface("l3 6"));
  EXPECT_EQ(route, nullptr);

  StaticRouteConfig ipv6_only;
  Configure(Device{.routes = routes});
  Bind(ipv6_only);
  ipv6_only.ReadConfigIfNeeded(kIpv6);
  EXPECT_FALSE(ipv6_only.FindNextHop({"global", Ipv4(0xc0000202)}, route));
  EXPECT_FALSE(ipv6_only.CheckBlackHoleIpv4(route));
  EXPECT_FALSE(ipv6_only.FindOutputInterface("l3 4"));
  EXPECT_EQ(route, nullptr);
}

struct BlackHoleCase {
  const char* name;
  std::vector<ConfiguredRoute> routes;
  const char* ipv4;  // the route found, or null
  const char* ipv6;
};

std::ostream& operator<<(std::ostream& out, const BlackHoleCase& c) { return out << c.name; }

const BlackHoleCase kBlackHoleCases[] = {
    {"NoRoutes", {}, nullptr, nullptr},
    {"OnlyBlackHoles", {{0, "10.0.0.0/8"}, {0, "fd00::/8"}}, nullptr, nullptr},
    {"OnlyNextHops",
     {{0, "10.0.0.0/8", "192.0.2.2"}, {0, "fd00::/8", "fe80::1"}},
     nullptr,
     nullptr},
    {"Ipv4Conflict",
     {{0, "10.0.0.0/8"}, {0, "10.0.0.0/8", "192.0.2.2"}},
     "global 10.0.0.0/8 via 192.0.2.2 out ",
     nullptr},
    {"Ipv6Conflict",
     {{0, "fd00::/8"}, {0, "fd00::/8", "fe80::1"}},
     nullptr,
     "global fd00::/8 via fe80::1 out "},
    {"FirstOfTwoNextHops",
     {{0, "10.0.0.0/8"}, {0, "10.0.0.0/8", "192.0.2.3"}, {0, "10.0.0.0/8", "192.0.2.2"}},
     "global 10.0.0.0/8 via 192.0.2.2 out ",
     nullptr},
    {"OtherPrefixLength", {{0, "10.0.0.0/8"}, {0, "10.0.0.0/9", "192.0.2.2"}}, nullptr, nullptr},
    {"OtherNetwork", {{0, "10.0.0.0/8"}, {0, "11.0.0.0/8", "192.0.2.2"}}, nullptr, nullptr},
    {"OtherVrf", {{1, "10.0.0.0/8"}, {4, "10.0.0.0/8", "192.0.2.2"}}, nullptr, nullptr},
    {"OtherCaseOfTheVrf", {{1, "10.0.0.0/8"}, {3, "10.0.0.0/8", "192.0.2.2"}}, nullptr, nullptr},
    {"TwoIndexesOfOneVrf",
     {{1, "10.0.0.0/8"}, {2, "10.0.0.0/8", "192.0.2.2"}},
     "red 10.0.0.0/8 via 192.0.2.2 out ",
     nullptr},
    // Red, then blue, then red: by their bytes.
    {"ConflictsInThreeVrfs",
     {{1, "10.0.0.0/8"},
      {1, "10.0.0.0/8", "192.0.2.1"},
      {3, "12.0.0.0/8"},
      {3, "12.0.0.0/8", "192.0.2.3"},
      {4, "11.0.0.0/8"},
      {4, "11.0.0.0/8", "192.0.2.4"}},
     "Red 12.0.0.0/8 via 192.0.2.3 out ",
     nullptr},
    {"FirstPrefixInOneVrf",
     {{0, "fd01::/16"}, {0, "fd01::/16", "fe80::1"}, {0, "fd00::/16"}, {0, "fd00::/16", "fe80::2"}},
     nullptr,
     "global fd00::/16 via fe80::2 out "},
    {"BehindOthersOnBothSides",
     {{0, "9.0.0.0/8"},
      {0, "10.0.0.0/8", "192.0.2.2"},
      {0, "11.0.0.0/8"},
      {0, "12.0.0.0/8", "192.0.2.2"},
      {0, "13.0.0.0/8"},
      {0, "13.0.0.0/8", "192.0.2.9"},
      {0, "14.0.0.0/8"}},
     "global 13.0.0.0/8 via 192.0.2.9 out ",
     nullptr},
    {"LastOnBothSides",
     {{0, "10.0.0.0/8", "192.0.2.2"},
      {0, "11.0.0.0/8", "192.0.2.2"},
      {0, "12.0.0.0/8"},
      {0, "12.0.0.0/8", "192.0.2.9"}},
     "global 12.0.0.0/8 via 192.0.2.9 out ",
     nullptr},
};

class BlackHole : public tests::TableTest, public testing::WithParamInterface<BlackHoleCase> {};

TEST_P(BlackHole, GivesTheRouteWithTheNextHop) {
  const BlackHoleCase& c = GetParam();
  Configure(Device{.vrfs = kVrfs, .routes = c.routes});
  StaticRouteConfig table;
  Bind(table);
  table.ReadConfigIfNeeded(kIpv4);
  table.ReadConfigIfNeeded(kIpv6);
  const auto untouched =
      std::make_shared<StaticRouteIPv4>("", "", nettypes::IPv4AddrMask(), nettypes::IPv4Addr());
  std::shared_ptr<StaticRoute> route = untouched;
  EXPECT_EQ(table.CheckBlackHoleIpv4(route), c.ipv4 != nullptr);
  EXPECT_EQ(Text(*route), c.ipv4 != nullptr ? c.ipv4 : Text(*untouched));
  route = untouched;
  EXPECT_EQ(table.CheckBlackHoleIpv6(route), c.ipv6 != nullptr);
  EXPECT_EQ(Text(*route), c.ipv6 != nullptr ? c.ipv6 : Text(*untouched));
}

INSTANTIATE_TEST_SUITE_P(Routes, BlackHole, testing::ValuesIn(kBlackHoleCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ip_application::config_valid
