// The checks of static routes on hand-built tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "config.h"
#include "framework/host.h"
#include "static_route_config.h"
#include "validate_config.h"

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kExceeded[] = "The maximum number of available static routes was exceeded.";
constexpr char kConflict4[] =
    "l3 7 ipv4 address 192.0.2.1/24 and static route 10.0.0.0/8 next-hop 192.0.2.1 cannot have "
    "address conflict.";
constexpr char kConflict6[] =
    "l3 7 ipv6 address 2001:db8::1/64 and static route fd00::/8 next-hop 2001:db8::1 cannot have "
    "address conflict.";
constexpr char kBlackHole4[] =
    "Prefix 10.0.0.0/8 cannot be black-hole and have next-hop at the same time";
constexpr char kBlackHole6[] =
    "Prefix fd00::/8 cannot be black-hole and have next-hop at the same time";

nettypes::IPv4Addr Ipv4(uint8_t host) { return nettypes::IPv4Addr(0xc0000200u + host); }

nettypes::IPv6Addr Ipv6(uint8_t host) {
  return nettypes::IPv6Addr({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, host});
}

nettypes::IPv4AddrMask Net4(uint8_t first) {
  return nettypes::IPv4AddrMask(uint32_t{first} << 24, 8);
}

nettypes::IPv6AddrMask Net6(uint8_t first) { return {nettypes::IPv6Addr({first}), 8}; }

// A snapshot in the making. Next hops and addresses are hosts of 192.0.2.0/24 and 2001:db8::/64,
// networks are of 8 bits.
class StaticRouteChecks : public testing::Test {
 protected:
  StaticRouteChecks() {
    framework::SetLogEnabled(true);
    framework::TakeLogLines();
    routes.ipv4_read_ = true;
  }

  void Route4(uint8_t network, uint8_t next_hop, const std::string& vrf = "global") {
    const auto route =
        std::make_shared<StaticRouteIPv4>("l3 9", vrf, Net4(network), Ipv4(next_hop));
    routes.ipv4_routes_.insert({{vrf, Net4(network)}, route});
    routes.ipv4_next_hops_.insert({{vrf, Ipv4(next_hop)}, route});
  }
  void Route6(uint8_t network, uint8_t next_hop, const std::string& vrf = "global") {
    const auto route =
        std::make_shared<StaticRouteIPv6>("l3 9", vrf, Net6(network), Ipv6(next_hop));
    routes.ipv6_routes_.insert({{vrf, Net6(network)}, route});
    routes.ipv6_next_hops_.insert({{vrf, Ipv6(next_hop)}, route});
  }
  void BlackHole4(uint8_t network, const std::string& vrf = "global") {
    routes.ipv4_blackhole_routes_.insert(
        {{vrf, Net4(network)},
         std::make_shared<StaticRouteIPv4>("", vrf, Net4(network), nettypes::IPv4Addr())});
  }
  void BlackHole6(uint8_t network, const std::string& vrf = "global") {
    routes.ipv6_blackhole_routes_.insert(
        {{vrf, Net6(network)},
         std::make_shared<StaticRouteIPv6>("", vrf, Net6(network), nettypes::IPv6Addr())});
  }

  static Interface& AddInterface(InterfaceConfig& table, const std::string& name) {
    Interface& intf = table.interfaces_.emplace_back();
    intf.name = name;
    intf.vrf_name = "global";
    return intf;
  }
  // "l3 7" with 192.0.2.1/24 and 2001:db8::1/64.
  Interface& AddInterface() {
    Interface& intf = AddInterface(config.l3_config_, "l3 7");
    intf.ipv4_addr_list.emplace_back(Ipv4(1), 24);
    intf.ipv6_addr_list.emplace_back(Ipv6(1), 64);
    return intf;
  }

  // "accepted", or the text of the refusal.
  std::string Run(int (ValidateConfig::*check)(const Config&)) {
    ValidateConfig checker;
    const int result = (checker.*check)(config);
    EXPECT_TRUE(result == 0 || result == -1) << result;
    EXPECT_EQ(checker.error_.empty(), result == 0);
    return result == 0 ? "accepted" : checker.error_;
  }

  Config config;
  StaticRouteConfig& routes = *config.static_route_config_;
};

// Limit ----------------------------------------------------------------------------------------

struct LimitCase {
  const char* name;
  uint32_t ipv4;
  uint32_t ipv6;
  bool passes;
};

std::ostream& operator<<(std::ostream& out, const LimitCase& c) { return out << c.name; }

const LimitCase kLimitCases[] = {
    {"NoRoutes", 0, 0, true},
    {"Ipv4Below", 999, 0, true},
    {"Ipv4At", 1000, 0, true},
    {"Ipv4Above", 1001, 0, false},
    {"Ipv6Below", 0, 499, true},
    {"Ipv6At", 0, 500, true},
    {"Ipv6Above", 0, 501, false},
    {"MixedAt", 998, 1, true},
    {"MixedAboveByOneIpv4", 999, 1, false},
    {"MixedAboveByOneIpv6", 998, 2, false},
    {"MixedFewIpv4At", 2, 499, true},
    {"MixedFewIpv4Above", 1, 500, false},
    {"Large", 4294967295u, 0, false},
    // 32 bits: 2 * 2147483648 is 0.
    {"DoubleWraps", 0, 2147483648u, true},
    {"SumWraps", 4294967295u, 1, true},
    {"JustNotWrapped", 4294967293u, 1, false},
};

class RouteLimit : public StaticRouteChecks, public testing::WithParamInterface<LimitCase> {};

TEST_P(RouteLimit, IsOfUnitsWhateverWasRead) {
  const LimitCase& c = GetParam();
  routes.ipv4_route_count_ = c.ipv4;
  routes.ipv6_route_count_ = c.ipv6;
  for (const bool ipv4_read : {false, true}) {
    for (const bool ipv6_read : {false, true}) {
      routes.ipv4_read_ = ipv4_read;
      routes.ipv6_read_ = ipv6_read;
      const std::string verdict =
          c.passes ? "accepted" : "The maximum number of available static routes was exceeded.";
      EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteLimit), verdict);
      const std::vector<std::string> lines = framework::TakeLogLines();
      if (c.passes) {
        EXPECT_THAT(lines, IsEmpty());
      } else {
        EXPECT_THAT(lines,
                    ElementsAre("The maximum number of available static routes was exceeded! "
                                "IPv4 static routes = " +
                                std::to_string(c.ipv4) +
                                "; IPv6 static routes = " + std::to_string(c.ipv6) + ";"));
      }
      EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRoute), verdict);
      framework::TakeLogLines();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, RouteLimit, testing::ValuesIn(kLimitCases),
                         [](const auto& row) { return std::string(row.param.name); });

// The plain counts, not the units.
TEST_F(StaticRouteChecks, DebugLineOfTheLimit) {
  routes.ipv4_route_count_ = 999;
  routes.ipv6_route_count_ = 1;
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteLimit), kExceeded);
  EXPECT_THAT(framework::TakeLogLines(),
              ElementsAre("The maximum number of available static routes was exceeded! IPv4 static "
                          "routes = 999; IPv6 static routes = 1;"));
}

// Which message ----------------------------------------------------------------------------------

// Of next hop, limit and black hole, the last that fails speaks.
struct CombinationCase {
  const char* name;
  bool next_hop;
  bool limit;
  bool black_hole;
  const char* verdict;
};

std::ostream& operator<<(std::ostream& out, const CombinationCase& c) { return out << c.name; }

const CombinationCase kCombinationCases[] = {
    {"Nothing", false, false, false, "accepted"},
    {"NextHop", true, false, false, kConflict4},
    {"Limit", false, true, false, kExceeded},
    {"BlackHole", false, false, true, kBlackHole4},
    {"NextHopAndLimit", true, true, false, kExceeded},
    {"NextHopAndBlackHole", true, false, true, kBlackHole4},
    {"LimitAndBlackHole", false, true, true, kBlackHole4},
    {"All", true, true, true, kBlackHole4},
};

class LastMessage : public StaticRouteChecks,
                    public testing::WithParamInterface<CombinationCase> {};

TEST_P(LastMessage, Wins) {
  const CombinationCase& c = GetParam();
  AddInterface();
  Route4(10, c.next_hop ? 1 : 2);
  if (c.limit) routes.ipv4_route_count_ = 1001;
  if (c.black_hole) BlackHole4(10);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRoute), c.verdict);
  // All three are run, whatever fails.
  EXPECT_EQ(framework::TakeLogLines().size(), c.limit ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Faults, LastMessage, testing::ValuesIn(kCombinationCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(StaticRouteChecks, PassingCheckLeavesAnEarlierMessage) {
  ValidateConfig checker;
  checker.error_ = "earlier";
  EXPECT_EQ(checker.ValidateStaticRoute(config), 0);
  EXPECT_EQ(checker.ValidateStaticRouteOutputIntf(config), 0);
  EXPECT_EQ(checker.error_, "earlier");
}

// Families ---------------------------------------------------------------------------------------

// Faults of both families are there; which is told depends on what was read.
struct FamilyCase {
  const char* name;
  bool ipv4_read;
  bool ipv6_read;
  bool ipv4_fault;
  bool ipv6_fault;
  const char* next_hop;
  const char* black_hole;
};

std::ostream& operator<<(std::ostream& out, const FamilyCase& c) { return out << c.name; }

const FamilyCase kFamilyCases[] = {
    {"NothingRead", false, false, true, true, "accepted", "accepted"},
    {"Ipv4Read", true, false, true, true, kConflict4, kBlackHole4},
    {"Ipv4ReadIpv6Fault", true, false, false, true, "accepted", "accepted"},
    {"Ipv6Read", false, true, true, true, kConflict6, kBlackHole6},
    {"Ipv6ReadIpv4Fault", false, true, true, false, "accepted", "accepted"},
    {"BothRead", true, true, true, true, kConflict4, kBlackHole4},
    {"BothReadIpv4Fault", true, true, true, false, kConflict4, kBlackHole4},
    // Deliberate: next hops of IPv4 only, black holes of both.
    {"BothReadIpv6Fault", true, true, false, true, "accepted", kBlackHole6},
    {"BothReadNoFault", true, true, false, false, "accepted", "accepted"},
};

class Families : public StaticRouteChecks, public testing::WithParamInterface<FamilyCase> {};

TEST_P(Families, AreJudgedAsRead) {
  const FamilyCase& c = GetParam();
  AddInterface();
  routes.ipv4_read_ = c.ipv4_read;
  routes.ipv6_read_ = c.ipv6_read;
  Route4(10, c.ipv4_fault ? 1 : 2);
  Route6(0xfd, c.ipv6_fault ? 1 : 2);
  BlackHole4(c.ipv4_fault ? 10 : 11);
  BlackHole6(c.ipv6_fault ? 0xfd : 0xfc);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop), c.next_hop);
  EXPECT_EQ(Run(&ValidateConfig::ValidateRouteBlackHole), c.black_hole);
}

INSTANTIATE_TEST_SUITE_P(Reads, Families, testing::ValuesIn(kFamilyCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Black holes ------------------------------------------------------------------------------------

TEST_F(StaticRouteChecks, BlackHoleInAnotherVrfIsNone) {
  routes.ipv6_read_ = true;
  Route4(10, 2, "red");
  Route6(0xfd, 2, "red");
  for (const char* vrf : {"blue", "Red", "RED", "re", "global", ""}) {
    BlackHole4(10, vrf);
    BlackHole6(0xfd, vrf);
  }
  EXPECT_EQ(Run(&ValidateConfig::ValidateRouteBlackHole), "accepted");
  BlackHole6(0xfd, "red");
  EXPECT_EQ(Run(&ValidateConfig::ValidateRouteBlackHole), kBlackHole6);
}

TEST_F(StaticRouteChecks, BlackHolesInTwoVrfsTellThatOfTheFirstName) {
  for (const char* vrf : {"red", "blue"}) {
    const uint8_t network = *vrf == 'r' ? 10 : 11;
    Route4(network, 2, vrf);
    BlackHole4(network, vrf);
  }
  EXPECT_EQ(Run(&ValidateConfig::ValidateRouteBlackHole),
            "Prefix 11.0.0.0/8 cannot be black-hole and have next-hop at the same time");
}

// Next hops --------------------------------------------------------------------------------------

TEST_F(StaticRouteChecks, NextHopInTheSubnetIsNoConflict) {
  AddInterface();
  Route4(10, 2);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop), "accepted");
  Route4(11, 1);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop),
            "l3 7 ipv4 address 192.0.2.1/24 and static route 11.0.0.0/8 next-hop 192.0.2.1 cannot "
            "have address conflict.");
}

TEST_F(StaticRouteChecks, NextHopInAnotherVrfIsNoConflict) {
  Interface& intf = AddInterface();
  Route4(10, 1, "red");
  for (const char* vrf : {"global", "Red", "blue", ""}) {
    intf.vrf_name = vrf;
    EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop), "accepted") << vrf;
  }
  intf.vrf_name = "red";
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop), kConflict4);
}

// Not even the management VRF and the global one share next hops.
TEST_F(StaticRouteChecks, NextHopInTheManagementVrfIsNoConflictWithGlobal) {
  AddInterface().vrf_name = "mgmt";
  Route4(10, 1);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteNextHop), "accepted");
}

TEST_F(StaticRouteChecks, NextHopInTheOrderOfTheTables) {
  Route4(10, 1);
  AddInterface(config.lo_config_, "loopback 0").ipv4_addr_list = {{Ipv4(1), 32}};
  const std::string end =
      " and static route 10.0.0.0/8 next-hop 192.0.2.1 cannot have address "
      "conflict.";
  const auto check = [this] { return Run(&ValidateConfig::ValidateStaticRouteNextHop); };
  EXPECT_EQ(check(), "loopback 0 ipv4 address 192.0.2.1/32" + end);
  AddInterface(config.l3_config_, "l3 8").ipv4_addr_list = {{Ipv4(3), 24}, {Ipv4(1), 25}};
  AddInterface(config.l3_config_, "l3 7").ipv4_addr_list = {{Ipv4(1), 24}};
  EXPECT_EQ(check(), "l3 8 ipv4 address 192.0.2.1/25" + end);
  AddInterface(config.mgmt_config_, "mgmt 0").ipv4_addr_list = {{Ipv4(1), 26}};
  EXPECT_EQ(check(), "mgmt 0 ipv4 address 192.0.2.1/26" + end);
}

TEST_F(StaticRouteChecks, NextHopInTheOrderOfTheAddresses) {
  Interface& intf = AddInterface(config.l3_config_, "l3 7");
  intf.ipv4_addr_list = {{Ipv4(9), 24}, {Ipv4(5), 24}, {Ipv4(3), 24}};
  intf.ipv6_addr_list = {{Ipv6(9), 64}, {Ipv6(5), 64}, {Ipv6(3), 64}};
  Route4(10, 3);
  Route4(11, 5);
  Route6(0xfc, 3);
  Route6(0xfd, 5);
  ValidateConfig checker;
  EXPECT_TRUE(checker.InterfaceIPv4MatchStaticRouteNextHop(intf, routes));
  EXPECT_EQ(checker.error_,
            "l3 7 ipv4 address 192.0.2.5/24 and static route 11.0.0.0/8 next-hop 192.0.2.5 cannot "
            "have address conflict.");
  EXPECT_TRUE(checker.InterfaceIPv6MatchStaticRouteNextHop(intf, routes));
  EXPECT_EQ(
      checker.error_,
      "l3 7 ipv6 address 2001:db8::5/64 and static route fd00::/8 next-hop 2001:db8::5 cannot "
      "have address conflict.");
}

// The two match functions look at the tables and not at what was read.
TEST_F(StaticRouteChecks, MatchFunctionsDoNotAskWhatWasRead) {
  routes.ipv4_read_ = false;
  const Interface& intf = AddInterface();
  ValidateConfig checker;
  EXPECT_FALSE(checker.InterfaceIPv4MatchStaticRouteNextHop(intf, routes));
  EXPECT_FALSE(checker.InterfaceIPv6MatchStaticRouteNextHop(intf, routes));
  EXPECT_EQ(checker.error_, "");
  Route4(10, 1);
  Route6(0xfd, 1);
  EXPECT_TRUE(checker.InterfaceIPv4MatchStaticRouteNextHop(intf, routes));
  EXPECT_EQ(checker.error_, kConflict4);
  EXPECT_TRUE(checker.InterfaceIPv6MatchStaticRouteNextHop(intf, routes));
  EXPECT_EQ(checker.error_, kConflict6);
}

TEST_F(StaticRouteChecks, TablesThatWereNeverReadHoldNothing) {
  Route4(10, 1);
  routes.output_interfaces_ = {"", "l3 7"};
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRoute), "accepted");
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf), "accepted");
}

// Output interfaces ------------------------------------------------------------------------------

TEST_F(StaticRouteChecks, OutputInterfaceKeepsItsLowerLayer) {
  Interface& intf = AddInterface();
  routes.output_interfaces_ = {"l3 7"};
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf),
            "l3 7 is being used by a static route. Lower-layer-if cannot be removed from this "
            "interface");
  intf.lim_id = limid_l3_vlan_from_components(100);
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf), "accepted");
}

TEST_F(StaticRouteChecks, OutputInterfaceIsComparedToTheByte) {
  AddInterface();
  routes.output_interfaces_ = {"", "L3 7", "l3 77", "l3-7", "l3", "7"};
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf), "accepted");
}

// What was read does not matter, only what is in the set.
TEST_F(StaticRouteChecks, OutputInterfaceWhateverWasRead) {
  AddInterface();
  routes.output_interfaces_ = {"l3 7"};
  routes.ipv4_read_ = false;
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf),
            "l3 7 is being used by a static route. Lower-layer-if cannot be removed from this "
            "interface");
}

// Of a route with a next hop and no output interface.
TEST_F(StaticRouteChecks, EmptyOutputNameConcernsOnlyAnInterfaceWithoutName) {
  AddInterface();
  routes.output_interfaces_ = {""};
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf), "accepted");
  AddInterface(config.l3_config_, "");
  EXPECT_EQ(Run(&ValidateConfig::ValidateStaticRouteOutputIntf),
            " is being used by a static route. Lower-layer-if cannot be removed from this "
            "interface");
}

TEST_F(StaticRouteChecks, OutputInterfaceInTheOrderOfTheTables) {
  const std::string end =
      " is being used by a static route. Lower-layer-if cannot be removed from this interface";
  routes.output_interfaces_ = {"l3 6", "l3 7", "l3 8", "lo 0", "mg 0"};
  const auto check = [this] { return Run(&ValidateConfig::ValidateStaticRouteOutputIntf); };
  AddInterface(config.lo_config_, "lo 0");
  EXPECT_EQ(check(), "lo 0" + end);
  AddInterface(config.l3_config_, "l3 6").lim_id = limid_l3_vlan_from_components(1);
  AddInterface(config.l3_config_, "l3 8");
  AddInterface(config.l3_config_, "l3 7");
  EXPECT_EQ(check(), "l3 8" + end);
  AddInterface(config.mgmt_config_, "mg 0");
  EXPECT_EQ(check(), "mg 0" + end);
}

}  // namespace
}  // namespace ip_application::config_valid
