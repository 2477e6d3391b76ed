// validate_ipv6_nd_ra_interval and validate_ipv6_nd_ra_lifetime on configurations in the store.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/point_fixture.h"

namespace tests {
namespace {

constexpr char kInterval[] = "validate_ipv6_nd_ra_interval";
constexpr char kLifetime[] = "validate_ipv6_nd_ra_lifetime";
constexpr char kUnreadableMax[] = "fail to get maximum router advertisement interval value";
constexpr char kUnreadableMin[] = "fail to get minimum router advertisement interval value";
constexpr char kUnreadableLifetime[] = "fail to get router advertisement lifetime value";
constexpr char kIntervalTooLarge[] =
    "Minimum interval must be no greater than maximum interval * 0.75";
constexpr char kLifetimeTooSmall[] =
    "Lifetime must be greater than maximum router advertisement interval";

// Timers of one interface in seconds; what is absent is not configured.
struct Timers {
  std::optional<int> max;
  std::optional<int> min;
  std::optional<int> lifetime;
};

ConfiguredIntf Entry(const std::string& name, const Timers& timers) {
  ConfiguredIntf entry{.name = name};
  if (timers.max) entry.timers["max-interval"] = *timers.max;
  if (timers.min) entry.timers["min-interval"] = *timers.min;
  if (timers.lifetime) entry.timers["lifetime"] = *timers.lifetime;
  return entry;
}

struct Case {
  const char* name;
  const char* point;
  const char* list;
  Timers timers;
  const char* verdict;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

const Case kCases[] = {
    {"MinBelowThreeQuarters", kInterval, "l3", {600, 449, {}}, "accepted"},
    {"MinAtThreeQuarters", kInterval, "l3", {600, 450, {}}, "accepted"},
    {"MinAboveThreeQuarters", kInterval, "l3", {600, 451, {}}, kIntervalTooLarge},
    {"ProductIsNotRoundedDown", kInterval, "l3", {5, 3, {}}, "accepted"},
    {"ProductIsNotRoundedUp", kInterval, "l3", {5, 4, {}}, kIntervalTooLarge},
    {"BothZero", kInterval, "l3", {0, 0, {}}, "accepted"},
    {"MinOneOfMaxZero", kInterval, "l3", {0, 1, {}}, kIntervalTooLarge},
    {"LargestNumbers", kInterval, "l3", {65535, 65535, {}}, kIntervalTooLarge},
    {"LargestMinThatFits", kInterval, "l3", {65535, 49151, {}}, "accepted"},
    {"OneAboveLargestMin", kInterval, "l3", {65535, 49152, {}}, kIntervalTooLarge},
    {"IntervalWithoutMax", kInterval, "l3", {{}, 3, {}}, kUnreadableMax},
    {"IntervalWithoutMin", kInterval, "l3", {600, {}, {}}, kUnreadableMin},
    {"IntervalWithoutBoth", kInterval, "l3", {{}, {}, 1800}, "accepted"},
    {"IntervalIgnoresLifetime", kInterval, "l3", {600, 200, 1}, "accepted"},
    {"MgmtMinAtThreeQuarters", kInterval, "mgmt", {600, 450, {}}, "accepted"},
    {"MgmtMinAboveThreeQuarters", kInterval, "mgmt", {600, 451, {}}, kIntervalTooLarge},
    {"MgmtIntervalWithoutMax", kInterval, "mgmt", {{}, 3, {}}, kUnreadableMax},
    {"MgmtIntervalWithoutMin", kInterval, "mgmt", {600, {}, {}}, kUnreadableMin},
    {"MgmtIntervalWithoutBoth", kInterval, "mgmt", {{}, {}, {}}, "accepted"},

    {"LifetimeBelowMax", kLifetime, "l3", {600, {}, 599}, kLifetimeTooSmall},
    {"LifetimeEqualToMax", kLifetime, "l3", {600, {}, 600}, kLifetimeTooSmall},
    {"LifetimeOneAboveMax", kLifetime, "l3", {600, {}, 601}, "accepted"},
    {"LifetimeZero", kLifetime, "l3", {600, {}, 0}, "accepted"},
    {"LifetimeZeroOfLargestMax", kLifetime, "l3", {65535, {}, 0}, "accepted"},
    {"LargestLifetimeOfLargestMax", kLifetime, "l3", {65535, {}, 65535}, kLifetimeTooSmall},
    {"LargestLifetime", kLifetime, "l3", {65534, {}, 65535}, "accepted"},
    {"LifetimeWithoutMax", kLifetime, "l3", {{}, {}, 1800}, kUnreadableMax},
    {"MaxWithoutLifetime", kLifetime, "l3", {600, {}, {}}, kUnreadableLifetime},
    {"LifetimeWithoutBoth", kLifetime, "l3", {{}, 200, {}}, "accepted"},
    {"MgmtLifetimeBelowMax", kLifetime, "mgmt", {600, {}, 1}, "accepted"},
    {"MgmtWithoutLifetime", kLifetime, "mgmt", {600, {}, {}}, "accepted"},
    {"MgmtLifetimeWithoutMax", kLifetime, "mgmt", {{}, {}, 1800}, kUnreadableMax},
    {"MgmtLifetimeWithoutBoth", kLifetime, "mgmt", {{}, {}, {}}, "accepted"},
};

class RouterAdvertisement : public PointTest {
 protected:
  void ConfigureEntry(const std::string& list, const ConfiguredIntf& entry) {
    Device device;
    device.Interfaces(list) = {entry};
    Configure(device);
  }
};

class TimerCase : public RouterAdvertisement, public testing::WithParamInterface<Case> {};

TEST_P(TimerCase, GivesVerdict) {
  const Case& c = GetParam();
  ConfigureEntry(c.list, Entry("7", c.timers));
  const std::string path = "/config/interface/" + std::string(c.list) + "{7}/ipv6/nd/ra";
  EXPECT_EQ(Validate(c.point, path), c.verdict);
}

INSTANTIATE_TEST_SUITE_P(Timers, TimerCase, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(RouterAdvertisement, ReadsMaximumThenMinimum) {
  ConfigureEntry("l3", Entry("wan 1", {600, 450, {}}));
  EXPECT_EQ(Validate(kInterval, "/config/interface/l3{wan 1}/ipv6/nd/ra"), "accepted");
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/l3{wan 1}/ipv6/nd/ra/max-interval",
      "maapi_get_u_int16_elem /config/interface/l3{wan 1}/ipv6/nd/ra/max-interval",
      "maapi_get_u_int16_elem /config/interface/l3{wan 1}/ipv6/nd/ra/min-interval",
  };
  EXPECT_EQ(calls(), expected);
}

TEST_F(RouterAdvertisement, NeitherLeafIsLoggedWithBothPaths) {
  ConfigureEntry("l3", Entry("7", {}));
  EXPECT_EQ(Validate(kLifetime, "/config/interface/l3{7}/ipv6/nd/ra"), "accepted");
  const std::vector<std::string> log = {
      "There is no path for '/config/interface/l3{7}/ipv6/nd/ra/max-interval' and "
      "'/config/interface/l3{7}/ipv6/nd/ra/lifetime'. Skipping validation ..."};
  EXPECT_EQ(TakeLogLines(), log);
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/l3{7}/ipv6/nd/ra/max-interval",
      "maapi_exists /config/interface/l3{7}/ipv6/nd/ra/lifetime",
  };
  EXPECT_EQ(calls(), expected);
}

TEST_F(RouterAdvertisement, LoopbackIsAnInvalidInterface) {
  // No node of a loopback lies so deep: the keypath of an L3 interface gets the loopback's tag.
  ConfigureEntry("l3", Entry("0", {600, 450, 1800}));
  confd::Keypath keypath(candidate(), "/config/interface/l3{0}/ipv6/nd/ra");
  keypath.get()->v[4][0].val.xmltag.tag = 0x1472cced;
  EXPECT_EQ(Validate(kInterval, keypath), "invalid interface being handled by IP-App validation");
  EXPECT_EQ(Validate(kLifetime, keypath), "invalid interface being handled by IP-App validation");
  EXPECT_TRUE(calls().empty());
}

TEST_F(RouterAdvertisement, KeypathOfAnotherShapeEndsTheProcess) {
  ConfigureEntry("l3", Entry("7", {600, 450, 1800}));
  EXPECT_DEATH(Validate(kInterval, "/config/interface/l3{7}/ipv6/nd/ra/max-interval"),
               "src/lib/validate_nd_ra:32: .*validate_ipv6_nd_ra_interval.*: Assertion "
               "`\\(&keypath->v\\[3\\]\\[0\\]\\)->type == C_BUF' failed\\.");
  EXPECT_DEATH(Validate(kLifetime, "/config/interface/l3{7}/ipv6/nd/ra/max-interval"),
               "src/lib/validate_nd_ra:84: .*validate_ipv6_nd_ra_lifetime.*: Assertion "
               "`\\(&keypath->v\\[3\\]\\[0\\]\\)->type == C_BUF' failed\\.");
}

// The path is itself the format, so a "%" in the name is taken for a conversion. The store refuses
// such a format, and the timers count as not configured.
class RouterAdvertisementName : public RouterAdvertisement,
                                public testing::WithParamInterface<const char*> {};

TEST_P(RouterAdvertisementName, WithPercentIsNotChecked) {
  const std::string name = GetParam();
  const std::string ra = "/config/interface/mgmt{" + name + "}/ipv6/nd/ra";
  ConfigureEntry("mgmt", Entry(name, {600, 600, 1}));
  EXPECT_EQ(Validate(kInterval, ra), "accepted");
  EXPECT_EQ(Validate(kLifetime, ra), "accepted");
  const std::vector<std::string> log = {"There is no path for '" + ra + "/max-interval' and '" +
                                            ra + "/min-interval'. Skipping validation ...",
                                        "There is no path for '" + ra + "/max-interval' and '" +
                                            ra + "/lifetime'. Skipping validation ..."};
  EXPECT_EQ(TakeLogLines(), log);
}

INSTANTIATE_TEST_SUITE_P(Names, RouterAdvertisementName,
                         testing::Values("%s", "%d", "%n", "%", "%%", "a%sb", "50%s", "100%"));

// Deliberate: "%%" is a conversion, too, and the timers of the interface "%" are those read.
TEST_F(RouterAdvertisement, NameWithPercentTwiceIsReadAsOnePercent) {
  Configure(Device{.mgmt = {Entry("%", {600, 600, 1}), Entry("%%", {600, 450, 1800})}});
  EXPECT_EQ(Validate(kInterval, "/config/interface/mgmt{%%}/ipv6/nd/ra"), kIntervalTooLarge);
  EXPECT_EQ(Validate(kInterval, "/config/interface/mgmt{%}/ipv6/nd/ra"), "accepted");
}

}  // namespace
}  // namespace tests
