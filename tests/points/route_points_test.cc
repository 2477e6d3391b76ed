// ipv4_addr_route_validation, ipv6_addr_route_validation and static_route_l3_intf_validation on
// configurations in the store.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "confd_maapi.h"
#include "support/device.h"
#include "support/point_fixture.h"
#include "support/scripted_confd.h"
#include "ztconfd.h"

namespace ip_application::config_valid {
class Config;
}

namespace tests {
namespace {

using testing::IsEmpty;

constexpr char kIpv4Route[] = "ipv4_addr_route_validation";
constexpr char kIpv6Route[] = "ipv6_addr_route_validation";
constexpr char kL3Intf[] = "static_route_l3_intf_validation";
constexpr char kRoutes[] = "/KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry";
constexpr char kL3[] = "/config/interface/l3";

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
constexpr char kInUse[] =
    "l3 7 is being used by a static route. Lower-layer-if cannot be removed from this interface";

// "l3 7" on a VLAN, with the addresses in the conflicts.
const ConfiguredIntf kL3Seven = {
    .name = "7", .vlan = 100, .primary = "192.0.2.1/24", .ipv6 = {"2001:db8::1/64"}};

const ConfiguredRoute kOwnAddress4 = {0, "10.0.0.0/8", "192.0.2.1"};
const ConfiguredRoute kOwnAddress6 = {0, "fd00::/8", "2001:db8::1"};

// `ipv4` and `ipv6` routes with a next hop, all different.
std::vector<ConfiguredRoute> ManyRoutes(int ipv4, int ipv6) {
  std::vector<ConfiguredRoute> routes;
  for (int i = 0; i < ipv4; ++i) {
    routes.push_back({0, "10." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24",
                      "198.51.100.1"});
  }
  for (int i = 0; i < ipv6; ++i) {
    routes.push_back({0, "fd00:" + std::to_string(i + 1) + "::/32", "2001:db8:1::2"});
  }
  return routes;
}

class RoutePoints : public PointTest {
 protected:
  std::string Run(const std::string& point) {
    return Validate(point, point == kL3Intf ? kL3 : kRoutes);
  }
};

// Verdicts ---------------------------------------------------------------------------------------

struct VerdictCase {
  const char* name;
  Device device;
  const char* ipv4_route;
  const char* ipv6_route;
  const char* l3_intf;
};

std::ostream& operator<<(std::ostream& out, const VerdictCase& c) { return out << c.name; }

std::vector<ConfiguredRoute> Plus(std::vector<ConfiguredRoute> routes,
                                  const std::vector<ConfiguredRoute>& more) {
  routes.insert(routes.end(), more.begin(), more.end());
  return routes;
}

constexpr char kAccepted[] = "accepted";

const VerdictCase kVerdictCases[] = {
    {"Nothing", {}, kAccepted, kAccepted, kAccepted},
    {"OwnIpv4Address",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress4}},
     kConflict4,
     kAccepted,
     kAccepted},
    {"OwnIpv6Address",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress6}},
     kAccepted,
     kConflict6,
     kAccepted},
    {"OwnAddressesOfBoth",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress4, kOwnAddress6}},
     kConflict4,
     kConflict6,
     kAccepted},
    {"NeighboursInTheSubnets",
     {.l3 = {kL3Seven}, .routes = {{0, "10.0.0.0/8", "192.0.2.2"}, {0, "fd00::/8", "2001:db8::2"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"OtherVrf",
     {.l3 = {kL3Seven}, .vrfs = {{1, "red"}}, .routes = {{1, "10.0.0.0/8", "192.0.2.1"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"VrfInOtherCase",
     {.l3 = {kL3Seven}, .vrfs = {{1, "Global"}}, .routes = {{1, "10.0.0.0/8", "192.0.2.1"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"Ipv4BlackHoleAndNextHop",
     {.routes = {{0, "10.0.0.0/8"}, {0, "10.0.0.0/8", "192.0.2.2"}}},
     kBlackHole4,
     kAccepted,
     kAccepted},
    {"Ipv6BlackHoleAndNextHop",
     {.routes = {{0, "fd00::/8"}, {0, "fd00::/8", "2001:db8::2"}}},
     kAccepted,
     kBlackHole6,
     kAccepted},
    {"Ipv4At", {.routes = ManyRoutes(1000, 0)}, kAccepted, kAccepted, kAccepted},
    {"Ipv4Above", {.routes = ManyRoutes(1001, 0)}, kExceeded, kExceeded, kAccepted},
    {"Ipv6At", {.routes = ManyRoutes(0, 500)}, kAccepted, kAccepted, kAccepted},
    {"Ipv6Above", {.routes = ManyRoutes(0, 501)}, kExceeded, kExceeded, kAccepted},
    {"MixedAt", {.routes = ManyRoutes(998, 1)}, kAccepted, kAccepted, kAccepted},
    {"MixedAbove", {.routes = ManyRoutes(999, 1)}, kExceeded, kExceeded, kAccepted},
    // The last check that fails speaks; each point sees the black holes of its family.
    {"BlackHoleAndLimit",
     {.routes = Plus(ManyRoutes(1001, 0), {{0, "10.0.0.0/8"}, {0, "10.0.0.0/8", "192.0.2.2"}})},
     kBlackHole4,
     kExceeded,
     kAccepted},
    {"NextHopAndLimit",
     {.l3 = {kL3Seven}, .routes = Plus(ManyRoutes(1001, 0), {kOwnAddress4})},
     kExceeded,
     kExceeded,
     kAccepted},
    {"OutputWithoutLowerLayer",
     {.l3 = {{.name = "7"}}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-7"}}},
     kAccepted,
     kAccepted,
     kInUse},
    {"OutputOfAnIpv6RouteWithoutLowerLayer",
     {.l3 = {{.name = "7"}}, .routes = {{0, "fd00::/8", "fe80::1", "l3-7"}}},
     kAccepted,
     kAccepted,
     kInUse},
    {"OutputOfAnyThirdCharacter",
     {.l3 = {{.name = "7"}}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3x7"}}},
     kAccepted,
     kAccepted,
     kInUse},
    {"OutputWithLowerLayer",
     {.l3 = {kL3Seven}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-7"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"OutputOfABlackHole",
     {.l3 = {{.name = "7"}},
      .routes = {{0, "10.0.0.0/8", "", "l3-7"}, {0, "fd00::/8", "", "l3-7"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"OutputOfAnotherName",
     {.l3 = {{.name = "7"}}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-8"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"RouteWithoutOutput",
     {.l3 = {{.name = "7"}}, .routes = {{0, "10.0.0.0/8", "192.0.2.2"}}},
     kAccepted,
     kAccepted,
     kAccepted},
    {"FirstL3InterfaceInKeyOrder",
     {.l3 = {{.name = "8"}, {.name = "7"}},
      .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-8"}, {0, "11.0.0.0/8", "192.0.2.2", "l3-7"}}},
     kAccepted,
     kAccepted,
     kInUse},
};

class RouteVerdict : public RoutePoints, public testing::WithParamInterface<VerdictCase> {};

// Each with a fresh snapshot.
TEST_P(RouteVerdict, IsAsListed) {
  const VerdictCase& c = GetParam();
  Configure(c.device);
  EXPECT_EQ(Run(kIpv4Route), c.ipv4_route);
  RenewConfig();
  EXPECT_EQ(Run(kIpv6Route), c.ipv6_route);
  RenewConfig();
  EXPECT_EQ(Run(kL3Intf), c.l3_intf);
}

INSTANTIATE_TEST_SUITE_P(Configurations, RouteVerdict, testing::ValuesIn(kVerdictCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Addresses of every kind of interface; the table that comes first in the order management, L3,
// loopback is told.
TEST_F(RoutePoints, NextHopOfEveryKindOfInterface) {
  Device device;
  device.routes = {kOwnAddress4};
  const std::string end =
      " and static route 10.0.0.0/8 next-hop 192.0.2.1 cannot have address conflict.";
  device.loopback = {{.name = "0", .ipv4 = {"192.0.2.1/32"}}};
  Configure(device);
  EXPECT_EQ(Run(kIpv4Route), "loopback 0 ipv4 address 192.0.2.1/32" + end);
  device.l3 = {{.name = "7", .primary = "198.51.100.1/24", .ipv4 = {"192.0.2.1/24"}}};
  RenewConfig();
  Configure(device);
  EXPECT_EQ(Run(kIpv4Route), "l3 7 ipv4 address 192.0.2.1/24" + end);
  device.mgmt = {{.name = "0", .primary = "192.0.2.1/25"}};
  RenewConfig();
  Configure(device);
  EXPECT_EQ(Run(kIpv4Route), "mgmt 0 ipv4 address 192.0.2.1/25" + end);
}

TEST_F(RoutePoints, DebugLineOfTheLimit) {
  Configure(Device{.routes = ManyRoutes(999, 1)});
  TakeLogLines();
  EXPECT_EQ(Run(kIpv6Route), kExceeded);
  EXPECT_EQ(TakeLogLines(),
            std::vector<std::string>{
                "The maximum number of available static routes was exceeded! IPv4 static routes = "
                "999; IPv6 static routes = 1;"});
}

// A message is no format.
TEST_F(RoutePoints, MessagesAreNoFormats) {
  Configure(
      Device{.l3 = {{.name = "%s%n"}}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l3-%s%n"}}});
  EXPECT_EQ(Run(kL3Intf),
            "l3 %s%n is being used by a static route. Lower-layer-if cannot be removed from this "
            "interface");
}

// Loads ------------------------------------------------------------------------------------------

// One interface of each kind without anything, and one route.
Device SmallDevice() {
  return {.l3 = {{.name = "7"}},
          .loopback = {{.name = "0"}},
          .mgmt = {{.name = "0", .primary = "192.0.2.9/24"}},
          .routes = {{0, "10.0.0.0/8", "192.0.2.2"}}};
}

const std::vector<std::string> kRouteRead = {
    "maapi_init_cursor /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry",
    "maapi_get_next",
    "maapi_exists /velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{0}/vname",
    "maapi_exists /rtmStaticRtEntry-global{ 0 0a:00:00:00 8 c0:00:02:02 }/interface-name",
    "maapi_get_next",
    "maapi_destroy_cursor",
};

std::vector<std::string> ListWalk(const std::string& list) {
  return {"maapi_exists " + list, "maapi_init_cursor " + list, "maapi_get_next", "maapi_get_next",
          "maapi_destroy_cursor"};
}

std::vector<std::string> EmptyListWalk(const std::string& list) {
  return {"maapi_exists " + list, "maapi_init_cursor " + list, "maapi_get_next",
          "maapi_destroy_cursor"};
}

std::vector<std::string> Joined(const std::vector<std::vector<std::string>>& parts) {
  std::vector<std::string> whole;
  for (const auto& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

constexpr char kL3Entry[] = "/config/interface/ipapp:l3{7}";
constexpr char kLoEntry[] = "/config/interface/ipapp:loopback{0}";
constexpr char kMgmtEntry[] = "/config/interface/ipapp:mgmt{0}";

std::vector<std::string> L3ReadIpv4() {
  const std::string entry = kL3Entry;
  return Joined(
      {ListWalk("/config/interface/ipapp:l3"),
       {"maapi_exists " + entry + "/ipv4/address/ip"},
       EmptyListWalk(entry + "/ipv4/address/secondary"),
       {"maapi_exists " + entry + "/lower-layer-if/vlan", "maapi_exists " + entry + "/vrf"}});
}

std::vector<std::string> MgmtReadIpv4() {
  const std::string entry = kMgmtEntry;
  return Joined({ListWalk("/config/interface/ipapp:mgmt"),
                 {"maapi_exists " + entry + "/ipv4/address/ip",
                  "maapi_get_ipv4_and_plen_elem " + entry + "/ipv4/address/ip",
                  "maapi_exists " + entry + "/vrf"}});
}

std::vector<std::string> LoReadIpv4() {
  const std::string entry = kLoEntry;
  return Joined({ListWalk("/config/interface/ipapp:loopback"),
                 EmptyListWalk(entry + "/ipv4/address"),
                 {"maapi_exists " + entry + "/vrf"}});
}

TEST_F(RoutePoints, Ipv4LoadsL3ManagementLoopbackRoutes) {
  Configure(SmallDevice());
  EXPECT_EQ(Run(kIpv4Route), "accepted");
  EXPECT_EQ(calls(), Joined({L3ReadIpv4(), MgmtReadIpv4(), LoReadIpv4(), kRouteRead}));
  EXPECT_THAT(TakeFaults(), IsEmpty());
}

TEST_F(RoutePoints, Ipv6LoadsL3ManagementLoopbackRoutes) {
  Configure(SmallDevice());
  EXPECT_EQ(Run(kIpv6Route), "accepted");
  const std::string l3 = kL3Entry;
  const std::string mgmt = kMgmtEntry;
  const std::string lo = kLoEntry;
  EXPECT_EQ(calls(),
            Joined({ListWalk("/config/interface/ipapp:l3"),
                    EmptyListWalk(l3 + "/ipv6/address"),
                    {"maapi_exists " + l3 + "/lower-layer-if/vlan", "maapi_exists " + l3 + "/vrf"},
                    ListWalk("/config/interface/ipapp:mgmt"),
                    EmptyListWalk(mgmt + "/ipv6/address"),
                    {"maapi_exists " + mgmt + "/vrf"},
                    ListWalk("/config/interface/ipapp:loopback"),
                    EmptyListWalk(lo + "/ipv6/address"),
                    {"maapi_exists " + lo + "/vrf"},
                    kRouteRead}));
}

TEST_F(RoutePoints, L3IntfLoadsL3AndRoutesOfBothFamilies) {
  Configure(SmallDevice());
  EXPECT_EQ(Run(kL3Intf), "accepted");
  EXPECT_EQ(calls(), Joined({L3ReadIpv4(), kRouteRead, kRouteRead}));
}

TEST_F(RoutePoints, NothingIsLoadedTwice) {
  Configure(SmallDevice());
  EXPECT_EQ(Run(kL3Intf), "accepted");
  EXPECT_EQ(Run(kIpv4Route), "accepted");
  EXPECT_EQ(calls(), Joined({MgmtReadIpv4(), LoReadIpv4()}));
  for (const char* point : {kIpv4Route, kL3Intf}) {
    EXPECT_EQ(Run(point), "accepted");
    EXPECT_THAT(calls(), IsEmpty()) << point;
  }
}

TEST_F(RoutePoints, L3IntfLoadsTheOtherFamilyOnly) {
  for (const char* point : {kIpv4Route, kIpv6Route}) {
    RenewConfig();
    Configure(SmallDevice());
    EXPECT_EQ(Run(point), "accepted");
    EXPECT_EQ(Run(kL3Intf), "accepted");
    EXPECT_EQ(calls(), point == kIpv4Route ? kRouteRead : Joined({L3ReadIpv4(), kRouteRead}));
  }
}

// Sequences: what a point sees depends on what the points before it have loaded
// ----------------------

struct Step {
  const char* point;
  const char* verdict;
};

struct SequenceCase {
  const char* name;
  Device device;
  std::vector<Step> steps;
};

std::ostream& operator<<(std::ostream& out, const SequenceCase& c) { return out << c.name; }

const SequenceCase kSequenceCases[] = {
    // Deliberate: with both families loaded next hops of IPv4 only are tested.
    {"Ipv6NextHopAlone", {.l3 = {kL3Seven}, .routes = {kOwnAddress6}}, {{kIpv6Route, kConflict6}}},
    {"Ipv6NextHopBehindIpv4",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress6}},
     {{kIpv4Route, kAccepted}, {kIpv6Route, kAccepted}}},
    {"Ipv6NextHopBehindL3Intf",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress6}},
     {{kL3Intf, kAccepted}, {kIpv6Route, kAccepted}}},
    {"Ipv6NextHopTwice",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress6}},
     {{kIpv6Route, kConflict6},
      {kIpv6Route, kConflict6},
      {kIpv4Route, kAccepted},
      {kIpv6Route, kAccepted}}},
    // The L3 interface has its IPv4 addresses because the other point has loaded them.
    {"Ipv6PointTellsOfIpv4NextHop",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress4}},
     {{kIpv6Route, kAccepted}, {kL3Intf, kAccepted}, {kIpv6Route, kConflict4}}},
    {"Ipv4NextHopInEveryOrder",
     {.l3 = {kL3Seven}, .routes = {kOwnAddress4, kOwnAddress6}},
     {{kIpv6Route, kConflict6}, {kIpv4Route, kConflict4}, {kIpv6Route, kConflict4}}},
    {"Ipv4PointTellsOfIpv6BlackHole",
     {.routes = {{0, "fd00::/8"}, {0, "fd00::/8", "fe80::1"}}},
     {{kIpv4Route, kAccepted}, {kL3Intf, kAccepted}, {kIpv4Route, kBlackHole6}}},
    {"Ipv6PointTellsOfIpv4BlackHoleFirst",
     {.routes = {{0, "fd00::/8"},
                 {0, "fd00::/8", "fe80::1"},
                 {0, "10.0.0.0/8"},
                 {0, "10.0.0.0/8", "192.0.2.2"}}},
     {{kIpv6Route, kBlackHole6}, {kIpv4Route, kBlackHole4}, {kIpv6Route, kBlackHole4}}},
    {"LimitIsTheSameForAll",
     {.routes = ManyRoutes(999, 1)},
     {{kL3Intf, kAccepted}, {kIpv4Route, kExceeded}, {kIpv6Route, kExceeded}}},
    // "mg t-0" is no name of an interface, so the loaded tables make no difference.
    {"ManagementAndLoopbackAsOutput",
     {.loopback = {{.name = "0"}},
      .mgmt = {{.name = "0"}},
      .routes = {{0, "10.0.0.0/8", "192.0.2.2", "mgmt-0"},
                 {0, "11.0.0.0/8", "192.0.2.2", "loopback-0"}}},
     {{kL3Intf, kAccepted}, {kIpv4Route, kAccepted}, {kL3Intf, kAccepted}}},
};

class Sequence : public RoutePoints, public testing::WithParamInterface<SequenceCase> {};

TEST_P(Sequence, InOneSnapshot) {
  Configure(GetParam().device);
  int number = 0;
  for (const Step& step : GetParam().steps) {
    EXPECT_EQ(Run(step.point), step.verdict) << "step " << ++number << ", " << step.point;
  }
}

INSTANTIATE_TEST_SUITE_P(Points, Sequence, testing::ValuesIn(kSequenceCases),
                         [](const auto& row) { return std::string(row.param.name); });

// A Config that outlives its transaction answers for the routes that it read first.
TEST_F(RoutePoints, KeepWhatTheyReadInAnEarlierTransaction) {
  Configure(Device{.l3 = {kL3Seven}, .routes = {kOwnAddress4}});
  EXPECT_EQ(Run(kIpv4Route), kConflict4);
  Configure(Device{});
  EXPECT_EQ(Run(kIpv4Route), kConflict4);
  RenewConfig();
  EXPECT_EQ(Run(kIpv4Route), "accepted");
}

// Arguments and exceptions -----------------------------------------------------------------------

TEST_F(RoutePoints, AreTheSameForEveryKeypath) {
  Configure(Device{.l3 = {kL3Seven}, .routes = {kOwnAddress4}});
  for (const char* path : {kRoutes, kL3, "/config/interface/l3{7}", "/config"}) {
    RenewConfig();
    EXPECT_EQ(Validate(kIpv4Route, path), kConflict4) << path;
  }
}

// Called as the dispatcher calls them, but with nothing in the arguments that they do not use: the
// sockets of the tables were bound before.
TEST_F(RoutePoints, DoNotLookAtSocketKeypathAndValue) {
  using Point = int(int, confd_trans_ctx*, confd_hkeypath_t*, confd_value_t*,
                    ip_application::config_valid::Config&);
  const struct {
    const char* function;
    const char* verdict;
  } kPoints[] = {{"validate_ipv4_addr_route", kConflict4},
                 {"validate_ipv6_addr_route", kConflict6},
                 {"validate_route_l3_intf", kInUse}};
  for (const auto& point : kPoints) {
    RenewConfig();
    Configure(
        Device{.l3 = {kL3Seven, {.name = "8"}},
               .routes = {kOwnAddress4, kOwnAddress6, {0, "11.0.0.0/8", "192.0.2.2", "l3-8"}}});
    confd::TransactionContext context;
    Fill(context.get());
    char unknown[] = "unknown";
    context.get()->validate_opaque = unknown;
    confd::Keypath keypath(candidate(), kL3);
    confd_value_t value{};
    ASSERT_EQ(LoadedModule().validate(context.get(), keypath.get(), &value), -1);
    ASSERT_FALSE(context.has_error());

    void* const config = get_lib_context(context.get()->v_opaque, "ip_app_validation");
    ASSERT_NE(config, nullptr);
    auto* const function = reinterpret_cast<Point*>(dlsym(LoadedModule().handle, point.function));
    ASSERT_NE(function, nullptr) << point.function;
    EXPECT_EQ(function(-1, context.get(), nullptr, nullptr,
                       *static_cast<ip_application::config_valid::Config*>(config)),
              -1);
    EXPECT_EQ(context.error(), std::string(point.verdict) == kInUse
                                   ? "l3 8 is being used by a static route. Lower-layer-if cannot "
                                     "be removed from this interface"
                                   : point.verdict);
  }
}

// A name too short to have its third character replaced. Nobody catches the exception, the error
// text stays unset and the cursor open.
TEST_F(RoutePoints, LetTheExceptionOfAShortOutputNamePass) {
  ScriptedConfd scripted;
  for (const char* point : {kIpv4Route, kIpv6Route, kL3Intf}) {
    RenewConfig();
    Configure(Device{.l3 = {kL3Seven}, .routes = {{0, "10.0.0.0/8", "192.0.2.2", "l"}}});
    confd::TransactionContext context;
    Fill(context.get());
    std::string opaque = point;
    context.get()->validate_opaque = opaque.data();
    confd::Keypath keypath(candidate(), kL3);
    confd_value_t value{};
    EXPECT_THROW(static_cast<void>(LoadedModule().validate(context.get(), keypath.get(), &value)),
                 std::out_of_range)
        << point;
    EXPECT_FALSE(context.has_error());
    ASSERT_NE(scripted.cursor.n, 0);
    maapi_destroy_cursor(&scripted.cursor);  // in place of the point
  }
}

}  // namespace
}  // namespace tests
