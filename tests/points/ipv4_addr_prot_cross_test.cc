// ipv4_addr_prot_cross_validation on configurations in the store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/system/system_error.hpp>
#include <cerrno>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/device.h"
#include "support/point_fixture.h"
#include "support/scripted_confd.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<std::string>;

constexpr char kPoint[] = "ipv4_addr_prot_cross_validation";
constexpr char kL3List[] = "/config/interface/l3";

class OspfCross : public PointTest {
 protected:
  std::string Validate() { return PointTest::Validate(kPoint, kL3List); }
};

struct CrossCase {
  const char* name;
  Device device;
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const CrossCase& c) { return out << c.name; }

// L3 interface 7 in VRF red with these addresses.
ConfiguredIntf L3(const std::string& primary, const std::vector<std::string>& secondaries = {}) {
  return {.name = "7", .vrf = "red", .primary = primary, .ipv4 = secondaries};
}

ConfiguredIntf Loopback(const std::vector<std::string>& addresses) {
  return {.name = "0", .vrf = "red", .ipv4 = addresses};
}

const OspfProcess kProcess1 = {1, 10, "red"};
const OspfEntry kUses1 = {1, "0.0.0.9", "l3-7", "10.0.0.1", 24};
const OspfEntry kUses2 = {1, "0.0.0.9", "l3-7", "10.0.0.2", 24};
const OspfEntry kUsesLoopback = {1, "0.0.0.9", "loopback-0", "10.0.3.1", 32};

const CrossCase kCrossCases[] = {
    {"NothingConfigured", {}, "accepted"},
    {"NoOspf", {.l3 = {L3("10.0.0.1/24")}}, "accepted"},
    {"NoInterface", {.ospf = {kUses1}, .ospf_processes = {kProcess1}}, "accepted"},
    {"Same",
     {.l3 = {L3("10.0.0.1/24")}, .ospf = {kUses1}, .ospf_processes = {kProcess1}},
     "accepted"},
    {"PrefixLengthChanged",
     {.l3 = {L3("10.0.0.1/25")}, .ospf = {kUses1}, .ospf_processes = {kProcess1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"Removed",
     {.l3 = {{.name = "7", .vrf = "red"}}, .ospf = {kUses1}, .ospf_processes = {kProcess1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"SecondaryAdded",
     {.l3 = {L3("10.0.0.1/24", {"10.0.0.2/24"})}, .ospf = {kUses1}, .ospf_processes = {kProcess1}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    // The primary address is the first of the interface.
    {"PrimaryAndSecondaryAdded",
     {.l3 = {L3("10.0.0.3/24", {"10.0.0.1/24", "10.0.0.2/24"})},
      .ospf = {kUses1},
      .ospf_processes = {kProcess1}},
     "10.0.0.3/24 cannot be added after interface is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"BothUsed",
     {.l3 = {L3("10.0.0.2/24", {"10.0.0.1/24"})},
      .ospf = {kUses1, kUses2},
      .ospf_processes = {kProcess1}},
     "accepted"},
    {"InTwoAreas",
     {.l3 = {L3("10.0.0.2/24", {"10.0.0.1/24"})},
      .ospf = {{1, "0.0.0.1", "l3-7", "10.0.0.2"}, {1, "0.0.0.2", "l3-7", "10.0.0.1"}},
      .ospf_processes = {kProcess1}},
     "accepted"},
    // The area of the first entry is named for an address of the second.
    {"RemovedFromTheSecondArea",
     {.l3 = {L3("10.0.0.2/24")},
      .ospf = {{1, "0.0.0.1", "l3-7", "10.0.0.2"}, {1, "0.0.0.2", "l3-7", "10.0.0.1"}},
      .ospf_processes = {kProcess1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"TwoProcesses",
     {.l3 = {L3("10.0.0.1/24", {"10.0.0.2/24"})},
      .ospf = {kUses1, {2, "0.0.0.9", "l3-7", "10.0.0.2"}},
      .ospf_processes = {kProcess1, {2, 11, "red"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"LoopbackSame",
     {.loopback = {Loopback({"10.0.3.1/32"})},
      .ospf = {kUsesLoopback},
      .ospf_processes = {kProcess1}},
     "accepted"},
    {"LoopbackRemoved",
     {.loopback = {Loopback({})}, .ospf = {kUsesLoopback}, .ospf_processes = {kProcess1}},
     "10.0.3.1/32 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"LoopbackAdded",
     {.loopback = {Loopback({"10.0.3.1/32", "10.0.3.2/32"})},
      .ospf = {kUsesLoopback},
      .ospf_processes = {kProcess1}},
     "10.0.3.2/32 cannot be added after interface is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    // L3 interfaces go first, whatever the order of the list.
    {"L3AndLoopback",
     {.l3 = {L3("10.0.0.9/24")},
      .loopback = {Loopback({})},
      .ospf = {{0, "0.0.0.9", "loopback-0", "10.0.3.1", 32}, kUses1},
      .ospf_processes = {kProcess1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"SecondHyphenStays",
     {.l3 = {{.name = "lan-1"}},
      .ospf = {{1, "0.0.0.9", "l3-lan-1", "10.0.0.1"}},
      .ospf_processes = {kProcess1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"NameWithoutHyphen",
     {.l3 = {L3("10.0.0.9/24")},
      .ospf = {{1, "0.0.0.9", "l3 7", "10.0.0.1"}},
      .ospf_processes = {kProcess1}},
     "accepted"},
    {"NameInOtherCase",
     {.l3 = {L3("10.0.0.9/24")},
      .ospf = {{1, "0.0.0.9", "L3-7", "10.0.0.1"}},
      .ospf_processes = {kProcess1}},
     "accepted"},
    {"PrefixLengthMissing",
     {.l3 = {L3("10.0.0.1/24")},
      .ospf = {{1, "0.0.0.9", "l3-7", "10.0.0.1", -1}},
      .ospf_processes = {kProcess1}},
     "10.0.0.1/0 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
     "(0.0.0.9)"},
    {"ProcessUnknown",
     {.l3 = {L3("10.0.0.9/24")}, .ospf = {kUses1}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 0 vrf  area 9 "
     "(0.0.0.9)"},
    // The text is no format.
    {"Conversions",
     {.l3 = {L3("10.0.0.9/24")}, .ospf = {kUses1}, .ospf_processes = {{1, 10, "%s%n%d"}}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf %s%n%d area "
     "9 (0.0.0.9)"},
    {"VrfOf255Bytes",
     {.l3 = {L3("10.0.0.9/24")},
      .ospf = {kUses1},
      .ospf_processes = {{1, 10, std::string(255, 'v')}}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf " +
         std::string(255, 'v') + " area 9 (0.0.0.9)"},
    // The VRFs are the matter of another point.
    {"OtherVrf",
     {.l3 = {{.name = "7", .vrf = "blue", .primary = "10.0.0.1/24"}},
      .ospf = {kUses1},
      .ospf_processes = {kProcess1}},
     "accepted"},
};

class CrossVerdict : public OspfCross, public testing::WithParamInterface<CrossCase> {};

TEST_P(CrossVerdict, IsAsListed) {
  Configure(GetParam().device);
  EXPECT_EQ(Validate(), GetParam().verdict);
  EXPECT_THAT(TakeFaults(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Devices, CrossVerdict, testing::ValuesIn(kCrossCases),
                         [](const auto& row) { return std::string(row.param.name); });

// What it reads --------------------------------------------------------------------------------

TEST_F(OspfCross, ReadsL3ThenLoopbackThenOspf) {
  Configure(Device{.l3 = {{.name = "7", .primary = "10.0.0.1/24"}},
                   .loopback = {{.name = "0"}},
                   .ospf = {kUses1},
                   .ospf_processes = {kProcess1}});
  EXPECT_EQ(Validate(), "accepted");
  const Calls expected = {
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
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_exists /config/interface/ipapp:l3{7}/vrf",
      "maapi_exists /config/interface/ipapp:loopback",
      "maapi_init_cursor /config/interface/ipapp:loopback",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:loopback{0}/ipv4/address",
      "maapi_init_cursor /config/interface/ipapp:loopback{0}/ipv4/address",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:loopback{0}/vrf",
      "maapi_exists /internal/ospf-interface-l3",
      "maapi_init_cursor /internal/ospf-interface-l3",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_get_u_int8_elem "
      "/internal/ospf-interface-l3{1 0.0.0.9 l3-7 10.0.0.1}/ospf-pm-ip-netmask",
      "maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{1}/proc_id",
      "maapi_get_str_elem /internal/ospf-index-to-proc-id{1}/vrf_name",
  };
  EXPECT_EQ(calls(), expected);
}

TEST_F(OspfCross, ReadsNothingTheSecondTime) {
  Configure(Device{.l3 = {L3("10.0.0.9/24")}, .ospf = {kUses1}, .ospf_processes = {kProcess1}});
  const std::string refusal =
      "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 9 "
      "(0.0.0.9)";
  EXPECT_EQ(Validate(), refusal);
  EXPECT_EQ(Validate(), refusal);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(OspfCross, LogsLookUpsThatFail) {
  Configure(Device{.ospf = {{4000000000, "0.0.0.9", "l3-7", "10.0.0.1", -1}}});
  TakeLogLines();
  EXPECT_EQ(Validate(), "accepted");
  EXPECT_THAT(TakeLogLines(),
              testing::IsSupersetOf({"Failed to get IPv4 netmask from process ID 4000000000!",
                                     "Failed to get process ID from compound ID 4000000000!",
                                     "Failed to get VRF name from compound ID 4000000000!"}));
}

TEST_F(OspfCross, UnreadableOspfListFreezesNothing) {
  Configure(Device{.l3 = {L3("10.0.0.9/24")}, .ospf = {kUses1}, .ospf_processes = {kProcess1}});
  Validate();
  const size_t walk = calls().size() - 8;
  ASSERT_EQ(calls()[walk], "maapi_exists /internal/ospf-interface-l3");
  RenewConfig();
  FailCall(static_cast<int>(walk));
  EXPECT_EQ(Validate(), "accepted");
  EXPECT_EQ(calls().back(), "maapi_exists /internal/ospf-interface-l3");
}

// The keypath plays no part.
TEST_F(OspfCross, IsTheSameForEveryKeypath) {
  Configure(Device{.l3 = {L3("10.0.0.9/24")},
                   .loopback = {Loopback({})},
                   .ospf = {kUses1},
                   .ospf_processes = {kProcess1}});
  for (const char* path : {"/config/interface/loopback", "/config/interface/l3{7}", "/config"}) {
    EXPECT_EQ(PointTest::Validate(kPoint, path),
              "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf "
              "red area 9 (0.0.0.9)")
        << path;
  }
}

// Exceptions -----------------------------------------------------------------------------------

// Nothing in the plug-in catches what a malformed key makes the conversions throw.
class OspfCrossException : public OspfCross {
 protected:
  OspfCrossException() {
    Configure(Device{.l3 = {L3("10.0.0.9/24")},
                     .ospf = {kUses1, {2, "0.0.0.8", "l3-8", "10.0.0.8"}},
                     .ospf_processes = {kProcess1}});
  }
  ~OspfCrossException() override { confd::WatchCalls(nullptr); }

  ScriptedConfd scripted;
};

TEST_F(OspfCrossException, CompoundIdIsNoNumber) {
  scripted.printed_instead["2"] = "two";
  try {
    Validate();
    FAIL() << "no exception";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "stoul");
  }
}

TEST_F(OspfCrossException, CompoundIdIsTooLarge) {
  scripted.printed_instead["2"] = "18446744073709551616";
  try {
    Validate();
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoul");
  }
}

TEST_F(OspfCrossException, AreaOrAddressIsNoQuad) {
  for (const char* text : {"0.0.0.8", "10.0.0.8"}) {
    SCOPED_TRACE(text);
    RenewConfig();
    scripted.printed_instead = {{text, "quad"}};
    errno = 0;
    try {
      Validate();
      FAIL() << "no exception";
    } catch (const boost::system::system_error& error) {
      EXPECT_EQ(error.code().value(), EINVAL);
      EXPECT_TRUE(error.code().category() == boost::system::system_category());
    }
  }
}

// The next call reads again, on top of what was merged before.
TEST_F(OspfCrossException, LeavesAPlugInThatGoesOn) {
  scripted.printed_instead["2"] = "two";
  EXPECT_THROW(Validate(), std::invalid_argument);
  confd::WatchCalls(nullptr);
  scripted.printed_instead.clear();
  EXPECT_EQ(Validate(),
            "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red "
            "area 9 (0.0.0.9)");
  EXPECT_EQ(calls().front(), "maapi_exists /internal/ospf-interface-l3");
}

}  // namespace
}  // namespace tests
