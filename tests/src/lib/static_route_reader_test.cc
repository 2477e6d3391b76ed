// How the static route tables are read: the calls, what becomes of output interface names, and what
// ends the process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "confd_maapi.h"
#include "config.h"
#include "static_route_config.h"
#include "support/device.h"
#include "support/scripted_confd.h"
#include "support/table_fixture.h"
#include "validation_points.h"

namespace ip_application::config_valid {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using tests::ConfiguredRoute;
using tests::Device;
using tests::ExpectedCalls;

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;
const std::map<uint32_t, std::optional<std::string>> kVrfs = {{1, "red"}};
constexpr char kTable[] = "/KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry";
constexpr char kVrf1[] =
    "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{1}/vname";
constexpr char kVrf7[] =
    "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{7}/vname";

class StaticRouteReader : public tests::TableTest {
 protected:
  // A cursor that still answers was left open. It is destroyed here, in place of the reader.
  void ExpectCursorLeftOpen() {
    ASSERT_NE(scripted.cursor.walk, nullptr);
    maapi_get_next(&scripted.cursor);
    EXPECT_NE(scripted.cursor.n, 0) << "the entry behind the bad one";
    maapi_destroy_cursor(&scripted.cursor);
  }

  void Use(const std::vector<ConfiguredRoute>& routes) {
    Configure(Device{.vrfs = kVrfs, .routes = routes});
    Bind(table);
  }

  tests::ScriptedConfd scripted;
  StaticRouteConfig table;
};

// Calls ----------------------------------------------------------------------------------------

// Every entry is asked for its VRF and its output interface, of whatever family it is.
// A failure of the second read shows which one was first.
TEST_F(StaticRouteReader, PointForL3InterfacesReadsIpv4First) {
  Configure(Device{.routes = {{0, "10.0.0.0/8", "192.0.2.2"}}});
  Config config;
  Bind(*config.static_route_config_);
  Bind(config.l3_config_);
  int walks = 0;
  on_call = [&walks](const std::string& call) {
    if (call == std::string("maapi_init_cursor ") + kTable && ++walks == 2) throw std::bad_alloc();
  };
  EXPECT_THROW(validate_route_l3_intf(-1, nullptr, nullptr, nullptr, config), std::bad_alloc);
  EXPECT_TRUE(config.static_route_config_->ipv4_read_);
  EXPECT_FALSE(config.static_route_config_->ipv6_read_);
}

TEST_F(StaticRouteReader, MakesTheseCallsForEitherFamily) {
  for (const ConfigAddrFamily family : {kIpv4, kIpv6}) {
    Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"},
         {1, "2001:db8::/32", "fe80::1"},
         {7, "172.16.0.0/12"}});
    TakeCalls();
    StaticRouteConfig fresh;
    Bind(fresh);
    fresh.ReadConfig(family);
    const std::string prefix = "/rtmStaticRtEntry-global{ ";
    EXPECT_EQ(
        TakeCalls(),
        ExpectedCalls()
            .Add(std::string("maapi_init_cursor ") + kTable)
            .Add("maapi_get_next")
            .Text(kVrf1)
            .Text(prefix + "1 0a:00:00:00 8 c0:00:02:02 }/interface-name")
            .Add("maapi_get_next")
            .Text(kVrf1)
            .Exists(prefix + "1 20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:00 32 "
                             "fe:80:00:00:00:00:00:00:00:00:00:00:00:00:00:01 }/interface-name")
            .Add("maapi_get_next")
            .Exists(kVrf7)
            .Exists(prefix + "7 ac:10:00:00 12 00:00:00:00 }/interface-name")
            .Add("maapi_get_next")
            .Add("maapi_destroy_cursor"));
  }
}

// The list is not asked whether it exists.
TEST_F(StaticRouteReader, MakesTheseCallsForAnEmptyTable) {
  Use({});
  TakeCalls();
  table.ReadConfig(kIpv4);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("maapi_init_cursor /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry",
                          "maapi_get_next", "maapi_destroy_cursor"));
}

TEST_F(StaticRouteReader, PathsAreArgumentsOfTheFormatExceptForTheVrf) {
  Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"}});
  table.ReadConfig(kIpv4);
  EXPECT_THAT(
      scripted.formats,
      ElementsAre("maapi_init_cursor %s", std::string("maapi_exists ") + kVrf1,
                  std::string("maapi_get_elem ") + kVrf1, "maapi_exists %s", "maapi_get_elem %s"));
}

TEST_F(StaticRouteReader, LargestKeys) {
  const ConfiguredRoute route = {4294967295, "2001:db8::1/128", "ffff::ffff", "l3-7"};
  Use({route});
  table.ReadConfig(kIpv6);
  EXPECT_TRUE(table.FindOutputInterface("l3 7"));
  EXPECT_EQ(tests::OutputPath(route),
            "/rtmStaticRtEntry-global{ 4294967295 20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01 "
            "128 ff:ff:00:00:00:00:00:00:00:00:00:00:00:00:ff:ff }/interface-name");
}

// Only 1 says that a name is there.
TEST_F(StaticRouteReader, OutputInterfaceIsReadWhenExactlyOneExists) {
  const ConfiguredRoute route = {1, "10.0.0.0/8", "192.0.2.2", "l3-7"};
  for (const int exists : {-1, 0, 1, 2}) {
    Use({route});
    StaticRouteConfig fresh;
    Bind(fresh);
    scripted.answers[tests::OutputPath(route)] = {.exists = exists};
    fresh.ReadConfig(kIpv4);
    EXPECT_THAT(fresh.output_interfaces_, ElementsAre(exists == 1 ? "l3 7" : "")) << exists;
  }
}

// Names of output interfaces ---------------------------------------------------------------------

struct NameCase {
  const char* name;
  const char* configured;
  const char* read;
};

std::ostream& operator<<(std::ostream& out, const NameCase& c) { return out << c.name; }

// Deliberate: the third byte becomes a blank, whatever it is.
const NameCase kNameCases[] = {
    {"Hyphen", "l3-7", "l3 7"},
    {"Letter", "l3x7", "l3 7"},
    {"BlankAlready", "l3 7", "l3 7"},
    {"NothingBehind", "l3-", "l3 "},
    {"TwoCharacters", "l3", "l3 "},
    {"OneHyphenOfTwo", "l3-wan-1", "l3 wan-1"},
    {"LoopbackLosesALetter", "loopback-0", "lo pback-0"},
    {"ManagementLosesALetter", "mgmt-0", "mg t-0"},
    {"ByteOfACharacter", "l3\xc3\xa4", "l3 \xa4"},
};

class OutputName : public StaticRouteReader, public testing::WithParamInterface<NameCase> {};

TEST_P(OutputName, HasABlankAsItsThirdCharacter) {
  const NameCase& c = GetParam();
  Use({{0, "10.0.0.0/8", "192.0.2.2", c.configured}});
  table.ReadConfig(kIpv4);
  EXPECT_THAT(table.output_interfaces_, ElementsAre(c.read));
  EXPECT_EQ(table.ipv4_routes_.begin()->second->output_intf_name, c.read);
}

INSTANTIATE_TEST_SUITE_P(Names, OutputName, testing::ValuesIn(kNameCases),
                         [](const auto& row) { return std::string(row.param.name); });

// The exception passes, and the cursor stays open. A family that is not asked for does not help,
// nor does a black hole.
TEST_F(StaticRouteReader, NameShorterThanTwoCharactersThrows) {
  for (const char* name : {"", "l"}) {
    for (const ConfiguredRoute& route : {ConfiguredRoute{0, "11.0.0.0/8", "192.0.2.2", name},
                                         {0, "11.0.0.0/8", "", name},
                                         {0, "fd00::/8", "fe80::1", name}}) {
      Use({{0, "10.0.0.0/8", "192.0.2.2", "l3-7"}, route, {0, "fd01::/16", "fe80::1", "l3-8"}});
      StaticRouteConfig fresh;
      Bind(fresh);
      TakeCalls();
      try {
        fresh.ReadConfigIfNeeded(kIpv4);
        ADD_FAILURE() << "no exception for " << route.network;
      } catch (const std::out_of_range& e) {
        EXPECT_THAT(e.what(), StartsWith("basic_string::replace"));
      }
      const std::vector<std::string> calls = TakeCalls();
      EXPECT_EQ(calls.back(), "confd_free_value");
      EXPECT_EQ(calls[calls.size() - 2], "maapi_get_elem " + tests::OutputPath(route));
      ExpectCursorLeftOpen();
      // What was read before it stays; the family counts as not read, so the next call reads again.
      EXPECT_FALSE(fresh.ipv4_read_);
      EXPECT_EQ(fresh.ipv4_route_count_, 1u);
      EXPECT_EQ(fresh.ipv6_route_count_, 0u);
      EXPECT_THAT(fresh.output_interfaces_, ElementsAre("l3 7"));
    }
  }
}

TEST_F(StaticRouteReader, ReadsAgainAfterAnException) {
  Use({{0, "10.0.0.0/8", "192.0.2.2", "l"}, {0, "11.0.0.0/8"}});
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::out_of_range);
  ExpectCursorLeftOpen();
  Use({{0, "10.0.0.0/8", "192.0.2.2", "l3"}});
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_TRUE(table.ipv4_read_);
  EXPECT_EQ(table.ipv4_route_count_, 1u);
  EXPECT_THAT(table.output_interfaces_, ElementsAre("l3 "));
}

// A point that asks for the family that was read does not read again, and still judges by the
// counts of the whole table.
TEST_F(StaticRouteReader, CountsOutliveAReadThatFails) {
  Use({{0, "10.0.0.0/8", "192.0.2.2", "l3"}, {0, "fd00::/8", "fe80::1", "l3"}});
  table.ReadConfigIfNeeded(kIpv4);
  Use({{0, "10.0.0.0/8", "192.0.2.2", "l"}, {0, "11.0.0.0/8"}});
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv6), std::out_of_range);
  ExpectCursorLeftOpen();
  EXPECT_EQ(table.ipv4_route_count_, 1u);
  EXPECT_EQ(table.ipv6_route_count_, 1u);
}

// Keys that the data model does not deliver
// --------------------------------------------------------

TEST_F(StaticRouteReader, OtherAddressTypesAreNeitherCountedNorStored) {
  for (const int type : {0, 3, 4, 16, -1}) {
    Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"}, {1, "11.0.0.0/8", "192.0.2.3", "l3-8"}});
    bool first = true;
    scripted.on_entry = [&first, type](maapi_cursor& cursor) {
      if (first) CONFD_SET_ENUM_VALUE(&cursor.keys[1], type);
      first = false;
    };
    StaticRouteConfig fresh;
    Bind(fresh);
    TakeCalls();
    fresh.ReadConfigIfNeeded(kIpv4);
    EXPECT_EQ(fresh.ipv4_route_count_, 1u) << type;
    EXPECT_EQ(fresh.ipv6_route_count_, 0u) << type;
    EXPECT_EQ(fresh.ipv4_routes_.size(), 1u) << type;
    EXPECT_THAT(fresh.output_interfaces_, ElementsAre("l3 8")) << type;
    // VRF and output interface are read before the type is looked at.
    EXPECT_EQ(TakeCalls(),
              ExpectedCalls()
                  .Add(std::string("maapi_init_cursor ") + kTable)
                  .Add("maapi_get_next")
                  .Text(kVrf1)
                  .Text("/rtmStaticRtEntry-global{ 1 0a:00:00:00 8 c0:00:02:02 }/interface-name")
                  .Add("maapi_get_next")
                  .Text(kVrf1)
                  .Text("/rtmStaticRtEntry-global{ 1 0b:00:00:00 8 c0:00:02:03 }/interface-name")
                  .Add("maapi_get_next")
                  .Add("maapi_destroy_cursor"))
        << type;
  }
}

TEST_F(StaticRouteReader, AddressesOfOtherTypesAreDefaults) {
  Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"}});
  scripted.on_entry = [](maapi_cursor& cursor) {
    for (confd_value_t* key : {&cursor.keys[2], &cursor.keys[5]}) {
      confd_free_value(key);
      CONFD_SET_INT32(key, 10);
    }
  };
  TakeCalls();
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TakeCalls(),
              Contains("maapi_exists /rtmStaticRtEntry-global{ 1  8  }/interface-name"));
  EXPECT_THAT(table.ipv4_routes_, IsEmpty());
  ASSERT_EQ(table.ipv4_blackhole_routes_.size(), 1u);
  EXPECT_EQ(table.ipv4_blackhole_routes_.begin()->first.addr, nettypes::IPv4AddrMask());
}

// The type of the next hop's address is not looked at.
TEST_F(StaticRouteReader, NextHopTypeIsNotRead) {
  Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"}});
  scripted.on_entry = [](maapi_cursor& cursor) { CONFD_SET_NOEXISTS(&cursor.keys[4]); };
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_EQ(table.ipv4_routes_.size(), 1u);
}

// Ends of the process ----------------------------------------------------------------------------

// What support tooling looks for; between function and text stand the types of the arguments, which
// compilers write differently.
auto AssertionIn(const std::string& line, const std::string& function, const std::string& text) {
  return AllOf(HasSubstr(": src/lib/static_route_config:" + line + ": "),
               HasSubstr("::StaticRouteConfig::" + function + "("),
               HasSubstr(": Assertion `" + text + "' failed.\n"));
}

class StaticRouteReaderDeathTest : public StaticRouteReader {
 protected:
  void SetUp() override {
    Use({{1, "10.0.0.0/8", "192.0.2.2", "l3-7"}});
    cursor.n = 6;
    CONFD_SET_UINT32(&cursor.keys[0], 1);
    CONFD_SET_INT32(&cursor.keys[3], 8);
  }

  maapi_cursor cursor{};
};

TEST_F(StaticRouteReaderDeathTest, AddressTypeIsAnEnumeration) {
  const auto failure =
      AssertionIn("33", "ReadConfig", "(&cursor.keys[kNetworkAddrType])->type == C_ENUM_VALUE");
  scripted.on_entry = [](maapi_cursor& at) { CONFD_SET_INT32(&at.keys[1], 1); };
  EXPECT_DEATH(table.ReadConfig(kIpv4), failure);
  scripted.on_entry = [](maapi_cursor& at) { CONFD_SET_NOEXISTS(&at.keys[1]); };
  EXPECT_DEATH(table.ReadConfig(kIpv6), failure);
}

TEST_F(StaticRouteReaderDeathTest, PrefixLengthIsAnInt32) {
  const auto failure = AssertionIn("94", "GetIntfNameFromRoute",
                                   "(&cursor.keys[kNetworkPrefixLen])->type == C_INT32");
  CONFD_SET_UINT32(&cursor.keys[3], 8);
  EXPECT_DEATH(table.GetIntfNameFromRoute(cursor), failure);
  scripted.on_entry = [](maapi_cursor& at) { CONFD_SET_NOEXISTS(&at.keys[3]); };
  EXPECT_DEATH(table.ReadConfig(kIpv4), failure);
}

TEST_F(StaticRouteReaderDeathTest, FteIndexIsAUint32) {
  const auto failure =
      AssertionIn("98", "GetIntfNameFromRoute", "(&cursor.keys[kFteIndex])->type == C_UINT32");
  CONFD_SET_INT32(&cursor.keys[0], 1);
  EXPECT_DEATH(table.GetIntfNameFromRoute(cursor), failure);
  scripted.on_entry = [](maapi_cursor& at) { CONFD_SET_INT32(&at.keys[0], 1); };
  EXPECT_DEATH(table.ReadConfig(kIpv4), failure);
}

TEST_F(StaticRouteReaderDeathTest, PrefixLengthIsTestedBeforeFteIndex) {
  CONFD_SET_NOEXISTS(&cursor.keys[0]);
  CONFD_SET_NOEXISTS(&cursor.keys[3]);
  EXPECT_DEATH(table.GetIntfNameFromRoute(cursor),
               AssertionIn("94", "GetIntfNameFromRoute",
                           "(&cursor.keys[kNetworkPrefixLen])->type == C_INT32"));
}

TEST_F(StaticRouteReaderDeathTest, NameOfTheOutputInterfaceIsAText) {
  confd_value_t number;
  CONFD_SET_INT32(&number, 7);
  scripted.answers["/rtmStaticRtEntry-global{ 1 0a:00:00:00 8 c0:00:02:02 }/interface-name"] = {
      .exists = 1, .read = 0, .value = number};
  EXPECT_DEATH(table.ReadConfig(kIpv4),
               AssertionIn("105", "GetIntfNameFromRoute", "(&l3_intf_name)->type == C_BUF"));
}

// Numbers are written as unsigned ones.
TEST_F(StaticRouteReader, NumbersBelowZeroInThePath) {
  Use({});
  maapi_cursor cursor{};
  CONFD_SET_UINT32(&cursor.keys[0], 4294967295u);
  CONFD_SET_INT32(&cursor.keys[3], -1);
  TakeCalls();
  EXPECT_EQ(table.GetIntfNameFromRoute(cursor), "");
  EXPECT_THAT(
      TakeCalls(),
      ElementsAre(
          "maapi_exists /rtmStaticRtEntry-global{ 4294967295  4294967295  }/interface-name"));
}

}  // namespace
}  // namespace ip_application::config_valid
