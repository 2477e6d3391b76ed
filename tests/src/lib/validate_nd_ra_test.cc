// The two router-advertisement points: every limit, every failure, and the exact calls in their
// order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "framework/host.h"
#include "support/assertion.h"
#include "support/config_tables.h"
#include "support/keypath_builder.h"
#include "support/scripted_confd.h"
#include "validation_points.h"
#include "velmor-ip-app.h"

namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::ValidationPointFn;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::Answer;
using tests::KeypathBuilder;
using tests::ScriptedConfd;
using tests::Uint16;

constexpr uint32_t kRaTag = 101;
constexpr uint32_t kNdTag = 102;
constexpr uint32_t kIpv6Tag = 103;
constexpr uint32_t kInterfaceTag = 104;

// States of a leaf.
Answer Configured(uint16_t value) { return {.exists = 1, .value = Uint16(value)}; }
Answer Absent() { return {.exists = 0}; }
Answer DefaultOnly(uint16_t value) { return {.exists = 0, .value = Uint16(value)}; }
Answer Unreadable() { return {.exists = 1}; }
Answer ReadGivesOne() { return {.exists = 1, .read = 1}; }
Answer ExistsFails(uint16_t value) { return {.exists = -1, .value = Uint16(value)}; }
Answer ExistsIsTwo(uint16_t value) { return {.exists = 2, .value = Uint16(value)}; }

class NdRa : public testing::Test {
 protected:
  NdRa() {
    // The logger keeps the handle that it finds at the first use in this program.
    framework::SetLogEnabled(true);
    framework::TakeLogLines();
    tctx_.thandle = 42;
  }

  // "accepted" or the error text; "refused" without one.
  std::string Validate(ValidationPointFn point, uint32_t list_tag, const std::string& name) {
    KeypathBuilder path;
    path.Tag(kRaTag).Tag(kNdTag).Tag(kIpv6Tag).Key(name).Tag(list_tag).Tag(kInterfaceTag);
    return Validate(point, path);
  }

  std::string Validate(ValidationPointFn point, KeypathBuilder& path) {
    scripted_.error.reset();
    const int result = point(7, &tctx_, path.get(), nullptr, config_);
    if (result == 0) return scripted_.error.has_value() ? "accepted with a text" : "accepted";
    EXPECT_EQ(result, -1);
    EXPECT_EQ(scripted_.refused, &tctx_);
    return scripted_.error.value_or("refused");
  }

  ScriptedConfd scripted_{ScriptedConfd::Unscripted::kFails};
  confd_trans_ctx tctx_{};
  Config config_;
};

struct RaCase {
  const char* name;
  uint32_t list;
  Answer max;
  Answer other;  // min-interval or lifetime
  const char* verdict;
  const char* reads;  // leaves asked for, in order: ? exists, = read; M maximum, o the other
};

std::ostream& operator<<(std::ostream& out, const RaCase& c) { return out << c.name; }

std::string RowName(const testing::TestParamInfo<RaCase>& row) { return row.param.name; }

// Runs one row against interface "7" of its list.
class RaRows : public NdRa, public testing::WithParamInterface<RaCase> {
 protected:
  void Check(ValidationPointFn point, const std::string& other_leaf) {
    const RaCase& c = GetParam();
    const std::string list = c.list == ipapp_mgmt ? "mgmt" : "l3";
    const std::string ra = "/config/interface/" + list + "{7}/ipv6/nd/ra/";
    const std::string max_path = ra + "max-interval";
    const std::string other_path = ra + other_leaf;
    scripted_.answers[max_path] = c.max;
    scripted_.answers[other_path] = c.other;

    const std::string verdict = c.verdict;
    const bool skipped = verdict == "skipped";
    const bool refused = !skipped && verdict != "accepted";
    EXPECT_EQ(Validate(point, c.list, "7"), skipped ? "accepted" : verdict);

    std::vector<std::string> calls;
    for (const char* read = c.reads; *read != '\0'; read += 2) {
      calls.push_back(
          (read[0] == '?' ? "maapi_exists(7, 42, \"" : "maapi_get_u_int16_elem(7, 42, \"") +
          (read[1] == 'M' ? max_path : other_path) + "\")");
    }
    if (refused) calls.push_back("confd_trans_seterr(\"" + verdict + "\")");
    EXPECT_EQ(scripted_.TakeCalls(), calls);

    std::vector<std::string> log;
    if (skipped) {
      log.push_back("There is no path for '" + max_path + "' and '" + other_path +
                    "'. Skipping validation ...");
    }
    EXPECT_EQ(framework::TakeLogLines(), log);
  }
};

constexpr char kNoMaximum[] = "fail to get maximum router advertisement interval value";
constexpr char kNoMinimum[] = "fail to get minimum router advertisement interval value";
constexpr char kNoLifetime[] = "fail to get router advertisement lifetime value";
constexpr char kMinimumTooGreat[] =
    "Minimum interval must be no greater than maximum interval * 0.75";
constexpr char kLifetimeTooSmall[] =
    "Lifetime must be greater than maximum router advertisement interval";

const RaCase kIntervalCases[] = {
    {"BelowTheLimit", ipapp_l3, Configured(600), Configured(449), "accepted", "?M=M=o"},
    {"AtTheLimit", ipapp_l3, Configured(600), Configured(450), "accepted", "?M=M=o"},
    {"AboveTheLimit", ipapp_l3, Configured(600), Configured(451), kMinimumTooGreat, "?M=M=o"},
    {"MinimumEqualsMaximum", ipapp_l3, Configured(600), Configured(600), kMinimumTooGreat,
     "?M=M=o"},
    {"LimitIsNotRoundedUp", ipapp_l3, Configured(5), Configured(4), kMinimumTooGreat, "?M=M=o"},
    {"LimitBelowAWholeNumber", ipapp_l3, Configured(5), Configured(3), "accepted", "?M=M=o"},
    {"LimitIsAWholeNumber", ipapp_l3, Configured(4), Configured(3), "accepted", "?M=M=o"},
    {"ZeroAndZero", ipapp_l3, Configured(0), Configured(0), "accepted", "?M=M=o"},
    {"OneAndZero", ipapp_l3, Configured(0), Configured(1), kMinimumTooGreat, "?M=M=o"},
    {"GreatestMaximumAtTheLimit", ipapp_l3, Configured(65535), Configured(49151), "accepted",
     "?M=M=o"},
    {"GreatestMaximumAboveTheLimit", ipapp_l3, Configured(65535), Configured(49152),
     kMinimumTooGreat, "?M=M=o"},
    {"ManagementAtTheLimit", ipapp_mgmt, Configured(600), Configured(450), "accepted", "?M=M=o"},
    {"ManagementAboveTheLimit", ipapp_mgmt, Configured(600), Configured(451), kMinimumTooGreat,
     "?M=M=o"},

    {"NeitherExists", ipapp_l3, Absent(), Absent(), "skipped", "?M?o"},
    {"NeitherExistsOnManagement", ipapp_mgmt, Absent(), Absent(), "skipped", "?M?o"},
    {"NeitherExistsButHaveDefaults", ipapp_l3, DefaultOnly(4), DefaultOnly(4), "skipped", "?M?o"},
    {"FailingExistsCountsAsAbsent", ipapp_l3, ExistsFails(4), ExistsFails(4), "skipped", "?M?o"},
    {"OnlyOneMeansExists", ipapp_l3, ExistsIsTwo(4), ExistsIsTwo(4), "skipped", "?M?o"},

    {"OnlyMaximumAndADefault", ipapp_l3, Configured(600), DefaultOnly(450), "accepted", "?M=M=o"},
    {"OnlyMaximumAndAGreatDefault", ipapp_l3, Configured(600), DefaultOnly(451), kMinimumTooGreat,
     "?M=M=o"},
    {"OnlyMaximum", ipapp_l3, Configured(600), Absent(), kNoMinimum, "?M=M=o"},
    {"OnlyMinimumAndADefault", ipapp_l3, DefaultOnly(600), Configured(450), "accepted", "?M?o=M=o"},
    {"OnlyMinimumAndASmallDefault", ipapp_l3, DefaultOnly(599), Configured(450), kMinimumTooGreat,
     "?M?o=M=o"},
    {"OnlyMinimum", ipapp_l3, Absent(), Configured(450), kNoMaximum, "?M?o=M"},

    {"MaximumUnreadable", ipapp_l3, Unreadable(), Configured(450), kNoMaximum, "?M=M"},
    {"MinimumUnreadable", ipapp_l3, Configured(600), Unreadable(), kNoMinimum, "?M=M=o"},
    {"BothUnreadable", ipapp_l3, Unreadable(), Unreadable(), kNoMaximum, "?M=M"},
    {"MaximumReadGivesOne", ipapp_l3, ReadGivesOne(), Configured(0), kNoMaximum, "?M=M"},
    {"MinimumReadGivesOne", ipapp_l3, Configured(600), ReadGivesOne(), kNoMinimum, "?M=M=o"},
    {"ManagementMaximumUnreadable", ipapp_mgmt, Unreadable(), Configured(450), kNoMaximum, "?M=M"},
    {"ManagementMinimumUnreadable", ipapp_mgmt, Configured(600), Unreadable(), kNoMinimum,
     "?M=M=o"},
    {"ManagementOnlyMaximum", ipapp_mgmt, Configured(600), Absent(), kNoMinimum, "?M=M=o"},
    {"ManagementOnlyMinimum", ipapp_mgmt, Absent(), Configured(450), kNoMaximum, "?M?o=M"},
};

class Interval : public RaRows {};

TEST_P(Interval, AgainstTheMaximum) { Check(validate_ipv6_nd_ra_interval, "min-interval"); }

INSTANTIATE_TEST_SUITE_P(Rows, Interval, testing::ValuesIn(kIntervalCases), RowName);

const RaCase kLifetimeCases[] = {
    {"Zero", ipapp_l3, Configured(600), Configured(0), "accepted", "?M=M=o"},
    {"ZeroAgainstTheGreatestMaximum", ipapp_l3, Configured(65535), Configured(0), "accepted",
     "?M=M=o"},
    {"One", ipapp_l3, Configured(600), Configured(1), kLifetimeTooSmall, "?M=M=o"},
    {"BelowTheMaximum", ipapp_l3, Configured(600), Configured(599), kLifetimeTooSmall, "?M=M=o"},
    {"EqualToTheMaximum", ipapp_l3, Configured(600), Configured(600), kLifetimeTooSmall, "?M=M=o"},
    {"AboveTheMaximum", ipapp_l3, Configured(600), Configured(601), "accepted", "?M=M=o"},
    {"OneAboveMaximumZero", ipapp_l3, Configured(0), Configured(1), "accepted", "?M=M=o"},
    {"GreatestLifetimeAccepted", ipapp_l3, Configured(65534), Configured(65535), "accepted",
     "?M=M=o"},
    {"GreatestLifetimeRefused", ipapp_l3, Configured(65535), Configured(65535), kLifetimeTooSmall,
     "?M=M=o"},
    // Beyond 32767: the comparison is unsigned.
    {"UnsignedComparison", ipapp_l3, Configured(1), Configured(40000), "accepted", "?M=M=o"},

    {"NeitherExists", ipapp_l3, Absent(), Absent(), "skipped", "?M?o"},
    {"NeitherExistsOnManagement", ipapp_mgmt, Absent(), Absent(), "skipped", "?M?o"},
    {"NeitherExistsButHaveDefaults", ipapp_l3, DefaultOnly(4), DefaultOnly(4), "skipped", "?M?o"},
    {"FailingExistsCountsAsAbsent", ipapp_l3, ExistsFails(4), ExistsFails(4), "skipped", "?M?o"},
    {"OnlyOneMeansExists", ipapp_l3, ExistsIsTwo(4), ExistsIsTwo(4), "skipped", "?M?o"},

    {"OnlyMaximumAndADefault", ipapp_l3, Configured(600), DefaultOnly(1800), "accepted", "?M=M=o"},
    {"OnlyMaximumAndASmallDefault", ipapp_l3, Configured(1800), DefaultOnly(1800),
     kLifetimeTooSmall, "?M=M=o"},
    {"OnlyMaximum", ipapp_l3, Configured(600), Absent(), kNoLifetime, "?M=M=o"},
    {"OnlyLifetimeAndADefault", ipapp_l3, DefaultOnly(600), Configured(601), "accepted",
     "?M?o=M=o"},
    {"OnlyLifetimeAndAGreatDefault", ipapp_l3, DefaultOnly(600), Configured(600), kLifetimeTooSmall,
     "?M?o=M=o"},
    {"OnlyLifetime", ipapp_l3, Absent(), Configured(601), kNoMaximum, "?M?o=M"},

    {"MaximumUnreadable", ipapp_l3, Unreadable(), Configured(601), kNoMaximum, "?M=M"},
    {"LifetimeUnreadable", ipapp_l3, Configured(600), Unreadable(), kNoLifetime, "?M=M=o"},
    {"BothUnreadable", ipapp_l3, Unreadable(), Unreadable(), kNoMaximum, "?M=M"},
    {"MaximumReadGivesOne", ipapp_l3, ReadGivesOne(), Configured(601), kNoMaximum, "?M=M"},
    {"LifetimeReadGivesOne", ipapp_l3, Configured(600), ReadGivesOne(), kNoLifetime, "?M=M=o"},

    // A management interface's lifetime is never compared, nor read; its maximum interval is read.
    {"ManagementBelowTheMaximum", ipapp_mgmt, Configured(600), Configured(1), "accepted", "?M=M"},
    {"ManagementEqualToTheMaximum", ipapp_mgmt, Configured(600), Configured(600), "accepted",
     "?M=M"},
    {"ManagementLifetimeUnreadable", ipapp_mgmt, Configured(600), Unreadable(), "accepted", "?M=M"},
    {"ManagementOnlyLifetimeAndADefault", ipapp_mgmt, DefaultOnly(600), Configured(1), "accepted",
     "?M?o=M"},
    {"ManagementOnlyLifetime", ipapp_mgmt, Absent(), Configured(601), kNoMaximum, "?M?o=M"},
    {"ManagementMaximumUnreadable", ipapp_mgmt, Unreadable(), Configured(601), kNoMaximum, "?M=M"},
    {"ManagementMaximumReadGivesOne", ipapp_mgmt, ReadGivesOne(), Configured(601), kNoMaximum,
     "?M=M"},
};

class Lifetime : public RaRows {};

TEST_P(Lifetime, AgainstTheMaximumInterval) { Check(validate_ipv6_nd_ra_lifetime, "lifetime"); }

INSTANTIATE_TEST_SUITE_P(Rows, Lifetime, testing::ValuesIn(kLifetimeCases), RowName);

struct PointCase {
  const char* name;
  ValidationPointFn point;
  const char* other_leaf;
  const char* signature;
  int name_line;  // of the type test of the interface name; the list's has the next number
};

std::ostream& operator<<(std::ostream& out, const PointCase& c) { return out << c.name; }

const PointCase kPoints[] = {
    {"Interval", validate_ipv6_nd_ra_interval, "min-interval", "int validate_ipv6_nd_ra_interval",
     32},
    {"Lifetime", validate_ipv6_nd_ra_lifetime, "lifetime", "int validate_ipv6_nd_ra_lifetime", 84},
};

class BothPoints : public NdRa, public testing::WithParamInterface<PointCase> {
 protected:
  // What the point asks for first: the path of the maximum interval, as passed.
  std::string MaximumAskedFor(uint32_t list_tag, const std::string& name) {
    Validate(GetParam().point, list_tag, name);
    const std::vector<std::string> calls = scripted_.TakeCalls();
    return calls.empty() ? "nothing" : calls.front();
  }
};

TEST_P(BothPoints, RefuseOtherInterfacesWithoutReading) {
  for (const uint32_t tag : {uint32_t{ipapp_loopback}, uint32_t{0}, uint32_t{ipapp_l3 + 1}}) {
    EXPECT_EQ(Validate(GetParam().point, tag, "7"),
              "invalid interface being handled by IP-App validation");
    EXPECT_THAT(
        scripted_.TakeCalls(),
        ElementsAre(
            "confd_trans_seterr(\"invalid interface being handled by IP-App validation\")"));
  }
  EXPECT_THAT(framework::TakeLogLines(), IsEmpty());
}

TEST_P(BothPoints, PutTheNameIntoThePathAsItIs) {
  EXPECT_EQ(MaximumAskedFor(ipapp_l3, "wan-1"),
            "maapi_exists(7, 42, \"/config/interface/l3{wan-1}/ipv6/nd/ra/max-interval\")");
  EXPECT_EQ(MaximumAskedFor(ipapp_mgmt, "wan-1"),
            "maapi_exists(7, 42, \"/config/interface/mgmt{wan-1}/ipv6/nd/ra/max-interval\")");
  EXPECT_EQ(MaximumAskedFor(ipapp_l3, ""),
            "maapi_exists(7, 42, \"/config/interface/l3{}/ipv6/nd/ra/max-interval\")");
  EXPECT_EQ(MaximumAskedFor(ipapp_l3, "a }/b"),
            "maapi_exists(7, 42, \"/config/interface/l3{a }/b}/ipv6/nd/ra/max-interval\")");
}

TEST_P(BothPoints, CutTheNameAtItsFirstZeroByte) {
  EXPECT_EQ(MaximumAskedFor(ipapp_l3, std::string("7\0x", 3)),
            "maapi_exists(7, 42, \"/config/interface/l3{7}/ipv6/nd/ra/max-interval\")");
}

// Deliberate: the path is itself the format, so that "%%" in a name is looked up as "%".
TEST_P(BothPoints, PassThePathAsTheFormat) {
  const std::string ra = "/config/interface/l3{50%}/ipv6/nd/ra/";
  scripted_.answers[ra + "max-interval"] = Configured(4);
  scripted_.answers[ra + "min-interval"] = Configured(3);
  scripted_.answers[ra + "lifetime"] = Configured(9);
  EXPECT_EQ(Validate(GetParam().point, ipapp_l3, "50%%"), "accepted");
  EXPECT_EQ(scripted_.TakeCalls().size(), 3u);
  EXPECT_THAT(framework::TakeLogLines(), IsEmpty());
}

// The paths are arguments of the log line's format.
TEST_P(BothPoints, LogTheNameAsItIs) {
  EXPECT_EQ(Validate(GetParam().point, ipapp_l3, "50%%"), "accepted");
  const std::string ra = "/config/interface/l3{50%%}/ipv6/nd/ra/";
  EXPECT_THAT(framework::TakeLogLines(),
              ElementsAre("There is no path for '" + ra + "max-interval' and '" + ra +
                          GetParam().other_leaf + "'. Skipping validation ..."));
}

TEST_P(BothPoints, LookAtNoNamespace) {
  for (const uint32_t ns : {0u, 2u, 0xffffffffu}) {
    for (const auto& [tag, list] : {std::pair(uint32_t{ipapp_l3}, std::string("l3")),
                                    std::pair(uint32_t{ipapp_mgmt}, std::string("mgmt"))}) {
      KeypathBuilder path;
      path.Tag(kRaTag).Tag(kNdTag).Tag(kIpv6Tag).Key("7").Tag(tag, ns).Tag(kInterfaceTag);
      EXPECT_EQ(Validate(GetParam().point, path), "accepted");
      EXPECT_EQ(scripted_.TakeCalls().front(), "maapi_exists(7, 42, \"/config/interface/" + list +
                                                   "{7}/ipv6/nd/ra/max-interval\")");
    }
  }
}

TEST_P(BothPoints, TouchNoTable) {
  const std::string ra = "/config/interface/l3{7}/ipv6/nd/ra/";
  scripted_.answers[ra + "max-interval"] = Configured(4);
  scripted_.answers[ra + "min-interval"] = Configured(3);
  scripted_.answers[ra + "lifetime"] = Configured(9);
  EXPECT_EQ(Validate(GetParam().point, ipapp_l3, "7"), "accepted");
  for (const auto* table : tests::AllTables(config_)) {
    EXPECT_FALSE(table->ipv4_read_ || table->ipv6_read_);
    EXPECT_EQ(table->sock_, -1);
    EXPECT_EQ(table->trans_, nullptr);
  }
  for (const auto* table : config_.intf_configs_) EXPECT_TRUE(table->interfaces_.empty());
}

using BothPointsDeathTest = BothPoints;

TEST_P(BothPointsDeathTest, EndTheProcessWhenElementThreeIsNoName) {
  const std::string where = "src/lib/validate_nd_ra:" + std::to_string(GetParam().name_line);
  KeypathBuilder leaf;
  leaf.Tag(kRaTag).Tag(kNdTag).Tag(kIpv6Tag).Tag(ipapp_l3).Tag(kInterfaceTag);
  EXPECT_DEATH(
      GetParam().point(7, &tctx_, leaf.get(), nullptr, config_),
      tests::AssertionFailure(where, GetParam().signature, "(&keypath->v[3][0])->type == C_BUF"));

  // The name is tested first.
  KeypathBuilder both_wrong;
  both_wrong.Tag(kRaTag).Tag(kNdTag).Tag(kIpv6Tag).Tag(ipapp_l3).Key("7");
  EXPECT_DEATH(
      GetParam().point(7, &tctx_, both_wrong.get(), nullptr, config_),
      tests::AssertionFailure(where, GetParam().signature, "(&keypath->v[3][0])->type == C_BUF"));
}

TEST_P(BothPointsDeathTest, EndTheProcessWhenElementFourIsNoTag) {
  KeypathBuilder path;
  path.Tag(kRaTag).Tag(kNdTag).Tag(kIpv6Tag).Key("7").Key("7");
  EXPECT_DEATH(
      GetParam().point(7, &tctx_, path.get(), nullptr, config_),
      tests::AssertionFailure("src/lib/validate_nd_ra:" + std::to_string(GetParam().name_line + 1),
                              GetParam().signature, "(&keypath->v[4][0])->type == C_XMLTAG"));
}

INSTANTIATE_TEST_SUITE_P(Points, BothPoints, testing::ValuesIn(kPoints),
                         [](const auto& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Points, BothPointsDeathTest, testing::ValuesIn(kPoints),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
