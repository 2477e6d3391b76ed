#include "config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "static_route_config.h"
#include "support/assertion.h"
#include "support/config_tables.h"
#include "support/keypath_builder.h"
#include "support/scripted_confd.h"
#include "velmor-ip-app.h"

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::AllTables;
using tests::KeypathBuilder;

// No test here lets a table ask ConfD.
class NothingIsAsked : public testing::Environment {
 public:
  void TearDown() override { EXPECT_THAT(scripted_.TakeCalls(), IsEmpty()); }

 private:
  tests::ScriptedConfd scripted_;
};
[[maybe_unused]] const auto* const nothing_is_asked =
    testing::AddGlobalTestEnvironment(new NothingIsAsked);

static_assert(static_cast<int>(ConfigAddrFamily::IPv4) == 4);
static_assert(static_cast<int>(ConfigAddrFamily::IPv6) == 6);
static_assert(static_cast<int>(InterfaceType::Mgmt) == 0);
static_assert(static_cast<int>(InterfaceType::L3) == 1);
static_assert(static_cast<int>(InterfaceType::Lo) == 2);
static_assert(static_cast<int>(InterfaceType::Invalid) == 3);
static_assert(sizeof(ConfigAddrFamily) == sizeof(int) && sizeof(InterfaceType) == sizeof(int));
static_assert(!std::is_copy_constructible_v<Config> && !std::is_move_constructible_v<Config>);
static_assert(!std::is_copy_assignable_v<Config> && !std::is_move_assignable_v<Config>);
static_assert(std::is_abstract_v<GenericConfig> && std::has_virtual_destructor_v<GenericConfig>);
static_assert(std::is_abstract_v<InterfaceConfig>);
static_assert(std::is_copy_constructible_v<Interface>);

// Whether these stand in memory in this order.
bool InOrder(const std::vector<const void*>& members) {
  return std::adjacent_find(members.begin(), members.end(), std::greater_equal<const void*>()) ==
         members.end();
}

// A table that notes what it is asked to read.
class SpyTable : public GenericConfig {
 public:
  void ReadConfig(ConfigAddrFamily family) override {
    reads.push_back(static_cast<int>(family));
    if (failing) throw std::invalid_argument("stoul");
  }

  std::vector<int> reads;
  bool failing = false;
};

struct LazyReadCase {
  const char* name;
  std::vector<int> asked;
  std::vector<int> read;
  bool ipv4_read;
  bool ipv6_read;
};

std::ostream& operator<<(std::ostream& out, const LazyReadCase& c) { return out << c.name; }

const LazyReadCase kLazyReadCases[] = {
    {"NotAsked", {}, {}, false, false},           {"Ipv4Once", {4}, {4}, true, false},
    {"Ipv4Twice", {4, 4}, {4}, true, false},      {"Ipv6Once", {6}, {6}, false, true},
    {"Ipv6Twice", {6, 6}, {6}, false, true},      {"Ipv4ThenIpv6", {4, 6}, {4, 6}, true, true},
    {"Ipv6ThenIpv4", {6, 4}, {6, 4}, true, true}, {"BothTwice", {4, 6, 6, 4}, {4, 6}, true, true},
    {"NoFamily", {0}, {}, false, false},          {"NextToIpv4", {3, 5}, {}, false, false},
    {"NextToIpv6", {5, 7}, {}, false, false},     {"BothBits", {4 | 6, -4}, {6}, false, true},
};

class ReadConfigIfNeeded : public testing::TestWithParam<LazyReadCase> {};

TEST_P(ReadConfigIfNeeded, ReadsEachFamilyOnce) {
  SpyTable table;
  for (const int family : GetParam().asked) {
    table.ReadConfigIfNeeded(static_cast<ConfigAddrFamily>(family));
  }
  EXPECT_EQ(table.reads, GetParam().read);
  EXPECT_EQ(table.ipv4_read_, GetParam().ipv4_read);
  EXPECT_EQ(table.ipv6_read_, GetParam().ipv6_read);
}

INSTANTIATE_TEST_SUITE_P(LazyReads, ReadConfigIfNeeded, testing::ValuesIn(kLazyReadCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ReadConfigIfNeededThrowing, LetsTheExceptionPassAndReadsAgainNextTime) {
  for (const ConfigAddrFamily family : {ConfigAddrFamily::IPv4, ConfigAddrFamily::IPv6}) {
    const int number = static_cast<int>(family);
    SpyTable table;
    table.failing = true;
    EXPECT_THROW(table.ReadConfigIfNeeded(family), std::invalid_argument);
    EXPECT_FALSE(table.ipv4_read_ || table.ipv6_read_);

    table.failing = false;
    table.ReadConfigIfNeeded(family);
    table.ReadConfigIfNeeded(family);
    EXPECT_THAT(table.reads, ElementsAre(number, number));
  }
}

TEST(ReadConfigIfNeededRebound, KeepsWhatItReadInAnEarlierTransaction) {
  SpyTable table;
  table.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  confd_trans_ctx second{};
  table.sock_ = 8;
  table.trans_ = &second;
  table.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  EXPECT_THAT(table.reads, ElementsAre(4));
}

TEST(ConfigConstruction, EveryTableIsUnboundAndUnread) {
  Config config;
  for (const GenericConfig* table : AllTables(config)) {
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->sock_, -1);
    EXPECT_EQ(table->trans_, nullptr);
    EXPECT_FALSE(table->ipv4_read_);
    EXPECT_FALSE(table->ipv6_read_);
  }
  for (const InterfaceConfig* table : config.intf_configs_) {
    EXPECT_TRUE(table->interfaces_.empty());
  }
}

// The order of the members is that of their construction.
TEST(ConfigConstruction, MembersStandInTheirOrder) {
  const Config config;
  EXPECT_TRUE(InOrder({&config.ospfv2_config_, &config.static_route_config_, &config.l3_config_,
                       &config.lo_config_, &config.mgmt_config_, &config.intf_configs_}));
  const L3Config& table = config.l3_config_;
  EXPECT_TRUE(InOrder({&table, &table.sock_, &table.trans_, &table.ipv4_read_, &table.ipv6_read_,
                       &table.interfaces_, &table.type_}));
}

TEST(ConfigConstruction, InterfaceTablesAreSearchedManagementL3Loopback) {
  Config config;
  EXPECT_THAT(config.intf_configs_,
              ElementsAre(&config.mgmt_config_, &config.l3_config_, &config.lo_config_));
}

TEST(ConfigConstruction, Ospfv2TableKnowsItsLists) {
  const Config config;
  EXPECT_EQ(config.ospfv2_config_.interface_list_path_, "/internal/ospf-interface-l3");
  EXPECT_EQ(config.ospfv2_config_.index_list_path_, "/internal/ospf-index-to-proc-id");
}

TEST(ConfigBinding, ReachesEveryTable) {
  Config config;
  confd_trans_ctx tctx{};
  config.set_sock(7);
  for (const GenericConfig* table : AllTables(config)) {
    EXPECT_EQ(table->sock_, 7);
    EXPECT_EQ(table->trans_, nullptr);
  }
  config.set_confd_trans(&tctx);
  for (const GenericConfig* table : AllTables(config)) {
    EXPECT_EQ(table->sock_, 7);
    EXPECT_EQ(table->trans_, &tctx);
  }
}

TEST(ConfigBinding, ClearsNoTableAndNoReadFlag) {
  Config config;
  for (GenericConfig* table : AllTables(config)) {
    table->ipv4_read_ = true;
    table->ipv6_read_ = true;
  }
  config.l3_config_.interfaces_.emplace_back().name = "l3 7";

  confd_trans_ctx second{};
  config.set_sock(8);
  config.set_confd_trans(&second);

  for (const GenericConfig* table : AllTables(config)) {
    EXPECT_TRUE(table->ipv4_read_);
    EXPECT_TRUE(table->ipv6_read_);
  }
  ASSERT_EQ(config.l3_config_.interfaces_.size(), 1u);
  EXPECT_EQ(config.l3_config_.interfaces_[0].name, "l3 7");
}

// A route table that notes what happens to it outside of itself.
class SpyRoutes : public StaticRouteConfig {
 public:
  explicit SpyRoutes(std::vector<std::string>* events) : events_(events) {}
  ~SpyRoutes() override { events_->push_back("destroyed"); }
  void ReadConfig(ConfigAddrFamily family) override {
    events_->push_back("read " + std::to_string(static_cast<int>(family)));
  }

 private:
  std::vector<std::string>* events_;
};

TEST(ConfigStaticRoutes, AreReadOncePerFamilyAndDestroyedWithTheConfig) {
  std::vector<std::string> events;
  {
    Config config;
    config.static_route_config_ = std::make_unique<SpyRoutes>(&events);
    config.ReadStaticRouteConfig(ConfigAddrFamily::IPv6);
    config.ReadStaticRouteConfig(ConfigAddrFamily::IPv6);
    config.ReadStaticRouteConfig(static_cast<ConfigAddrFamily>(5));
    config.ReadStaticRouteConfig(ConfigAddrFamily::IPv4);
    EXPECT_THAT(events, ElementsAre("read 6", "read 4"));
  }
  EXPECT_THAT(events, ElementsAre("read 6", "read 4", "destroyed"));
}

TEST(IntfByType, FindsTheTableOfTheKind) {
  Config config;
  EXPECT_EQ(config.intf_by_type(InterfaceType::Mgmt), &config.mgmt_config_);
  EXPECT_EQ(config.intf_by_type(InterfaceType::L3), &config.l3_config_);
  EXPECT_EQ(config.intf_by_type(InterfaceType::Lo), &config.lo_config_);
}

TEST(IntfByType, IsNullWhenThereIsNone) {
  const Config config;
  EXPECT_EQ(config.intf_by_type(InterfaceType::Invalid), nullptr);
  EXPECT_EQ(config.intf_by_type(static_cast<InterfaceType>(4)), nullptr);
}

TEST(IntfByType, TakesTheFirstOfTwo) {
  Config config;
  L3Config other;
  config.intf_configs_ = {&other, &config.l3_config_};
  EXPECT_EQ(config.intf_by_type(InterfaceType::L3), &other);
}

struct TagCase {
  const char* name;
  uint32_t tag;
  uint32_t ns;
  InterfaceType type;
};

std::ostream& operator<<(std::ostream& out, const TagCase& c) { return out << c.name; }

const TagCase kTagCases[] = {
    {"Mgmt", ipapp_mgmt, 1, InterfaceType::Mgmt},
    {"L3", ipapp_l3, 1, InterfaceType::L3},
    {"Loopback", ipapp_loopback, 1, InterfaceType::Lo},
    {"MgmtByNumber", 0x1412343f, 1, InterfaceType::Mgmt},
    {"L3ByNumber", 0x213f1a7a, 1, InterfaceType::L3},
    {"LoopbackByNumber", 0x1472cced, 1, InterfaceType::Lo},
    {"OtherNamespace", ipapp_l3, 0xffffffff, InterfaceType::L3},
    {"AnotherNode", 0x4c5f3e78, 1, InterfaceType::Invalid},
    {"Zero", 0, 1, InterfaceType::Invalid},
    {"NextToL3", ipapp_l3 + 1, 1, InterfaceType::Invalid},
};

class IntfTypeFromTag : public testing::TestWithParam<TagCase> {};

TEST_P(IntfTypeFromTag, OfTheDeepestElement) {
  KeypathBuilder path;
  path.Tag(GetParam().tag, GetParam().ns);
  EXPECT_EQ(Config::intf_type_from_confd_path(path.get()), GetParam().type);

  // What is above plays no part.
  path.Tag(ipapp_mgmt).Tag(ipapp_loopback);
  EXPECT_EQ(Config::intf_type_from_confd_path(path.get()), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(Tags, IntfTypeFromTag, testing::ValuesIn(kTagCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(IntfTypeFromConfdPath, IsInvalidForAnEmptyPathWhateverItsFirstElement) {
  for (const int length : {0, -1}) {
    KeypathBuilder path;
    path.Tag(ipapp_l3);
    path.get()->len = length;
    EXPECT_EQ(Config::intf_type_from_confd_path(path.get()), InterfaceType::Invalid) << length;

    path.get()->v[0][0].type = C_BUF;
    EXPECT_EQ(Config::intf_type_from_confd_path(path.get()), InterfaceType::Invalid) << length;
  }
}

TEST(IntfTypeFromConfdPathDeathTest, EndsTheProcessWhenThePathEndsAtAListEntry) {
  KeypathBuilder path;
  path.Key("7").Tag(ipapp_l3);
  EXPECT_DEATH(
      Config::intf_type_from_confd_path(path.get()),
      tests::AssertionFailure("src/lib/config:52",
                              "static ip_application::config_valid::InterfaceType "
                              "ip_application::config_valid::Config::intf_type_from_confd_path",
                              "(&keypath->v[0][0])->type == C_XMLTAG"));
}

}  // namespace
}  // namespace ip_application::config_valid
