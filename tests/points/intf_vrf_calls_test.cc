// intf_vrf_validation: what it checks before it walks changes, what it reads, and what it does when
// a read fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "support/device.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<std::string>;

constexpr char kPoint[] = "intf_vrf_validation";
constexpr char kL3List[] = "/config/interface/l3";
constexpr char kLoopbackList[] = "/config/interface/loopback";
constexpr char kOspfEntry[] =
    "/internal/ospf-interface-l3{1 0.0.0.9 l3-7 192.0.2.1}/pm/binding/association";
constexpr char kOspfv3Entry[] =
    "/internal/ospfv3-interface-l3{10 0.0.0.1 l3-7}/pm/binding/association";

constexpr char kL3Refused[] = "l3 7 is configured in OSPFv3 and cannot be associated with a VRF";
constexpr char kOspfv3Refused[] =
    "l3 7 is associated with a VRF and cannot be configured in OSPFv3";

const Ospfv3Entry kIn7 = {10, "0.0.0.1", "l3-7"};

// The calls that walk changes and look at one.
bool IsOfTheWalk(const std::string& call) {
  return call.starts_with("maapi_keypath_diff_iterate") ||
         call.starts_with("maapi_xpath_eval_expr");
}

// The tables come first ---------------------------------------------------------------------------

// Every list has something that a walk would refuse.
const Device kOverlap{.l3 = {{.name = "7", .vrf = "red", .primary = "192.0.2.9/24"},
                             {.name = "8", .vrf = "red", .primary = "192.0.2.8/24"}},
                      .ospf = {{1, "0.0.0.9", "l3-7", "192.0.2.1"}},
                      .ospf_processes = {{1, 10, "red"}},
                      .ospfv3 = {kIn7}};
const Device kDivergent{.l3 = {{.name = "7", .vrf = "red"}},
                        .loopback = {{.name = "7", .vrf = "red"}},
                        .ospf = {{1, "0.0.0.9", "l3-7", "192.0.2.1"}},
                        .ospf_processes = {{1, 10, "blue"}},
                        .ospfv3 = {kIn7, {10, "0.0.0.1", "loopback-7"}}};
constexpr char kOverlapText[] =
    "l3 7 vrf red ipv4 address 192.0.2.9/24 overlaps with l3 8 vrf red ipv4 address 192.0.2.8/24.";
constexpr char kDivergentText[] =
    "l3 7 vrf red and router ospf 10 vrf blue cannot be associated with divergent VRF";

Device OverlapAndDivergent() {
  Device device = kOverlap;
  device.ospf_processes = kDivergent.ospf_processes;
  return device;
}

Device NextHop() {
  Device device{.l3 = {{.name = "7", .primary = "192.0.2.9/24"}}, .ospfv3 = {kIn7}};
  device.routes = {{.network = "10.0.0.0/8", .next_hop = "192.0.2.9"}};
  return device;
}

struct TableCase {
  const char* name;
  Device device;
  std::string path;
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const TableCase& c) { return out << c.name; }

const TableCase kTableCases[] = {
    {"Overlap", kOverlap, kL3List, kOverlapText},
    {"NextHopOfARoute", NextHop(), kL3List,
     "l3 7 ipv4 address 192.0.2.9/24 and static route 10.0.0.0/8 next-hop 192.0.2.9 cannot have "
     "address conflict."},
    {"DivergentVrf", kDivergent, kL3List, kDivergentText},
    {"DivergentVrfOfAnotherKind", kDivergent, kLoopbackList, kDivergentText},
    {"DivergentVrfOfAnOspfEntry", kDivergent, kOspfEntry, kDivergentText},
    {"DivergentVrfOfAnOspfv3Entry", kDivergent, kOspfv3Entry, kDivergentText},
    {"AddressesBeforeVrfs", OverlapAndDivergent(), kL3List, kOverlapText},
    {"AddressesOfManagement",
     {.mgmt = {{.name = "0", .primary = "192.0.2.0/24"}}},
     "/config/interface/mgmt",
     "mgmt 0 ipv4 address 192.0.2.0/24 cannot be configured as network address."},
    {"AddressesOfLoopbacks",
     {.loopback = {{.name = "0", .ipv4 = {"192.0.2.0/24"}}}},
     kLoopbackList,
     "loopback 0 ipv4 address 192.0.2.0/24 cannot be configured as network address."},
    {"OverlapWithALoopback",
     {.l3 = {{.name = "7", .primary = "192.0.2.1/24"}},
      .loopback = {{.name = "0", .ipv4 = {"192.0.2.2/32"}}}},
     kL3List,
     "l3 7 vrf global ipv4 address 192.0.2.1/24 overlaps with loopback 0 vrf global ipv4 address "
     "192.0.2.2/32."},
    // Where the path ends at no list of interfaces, only the VRFs are looked at.
    {"DivergentVrfElsewhere", OverlapAndDivergent(), "/config", kDivergentText},
};

class TablesFirst : public PointTest, public testing::WithParamInterface<TableCase> {};

TEST_P(TablesFirst, AndNothingIsWalkedAfterARefusal) {
  Configure(GetParam().device);
  EXPECT_EQ(Validate(kPoint, GetParam().path), GetParam().verdict);
  for (const std::string& call : calls()) EXPECT_FALSE(IsOfTheWalk(call)) << call;
}

INSTANTIATE_TEST_SUITE_P(Devices, TablesFirst, testing::ValuesIn(kTableCases),
                         [](const auto& row) { return std::string(row.param.name); });

// What is walked ----------------------------------------------------------------------------------

struct PathCase {
  const char* name;
  std::string path;
  Calls calls;  // with the tables already loaded
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const PathCase& c) { return out << c.name; }

const PathCase kPathCases[] = {
    {"L3List",
     kL3List,
     {"maapi_keypath_diff_iterate /config/interface/l3", "maapi_xpath_eval_expr /internal"},
     kL3Refused},
    {"LoopbackList",
     kLoopbackList,
     {"maapi_keypath_diff_iterate /config/interface/loopback", "maapi_xpath_eval_expr /internal"},
     "loopback 7 is configured in OSPFv3 and cannot be associated with a VRF"},
    {"OspfEntry",
     kOspfEntry,
     {"maapi_keypath_diff_iterate /internal/ospf-interface-l3"},
     "accepted"},
    {"Ospfv3Entry",
     kOspfv3Entry,
     {"maapi_keypath_diff_iterate /internal/ospfv3-interface-l3",
      "maapi_exists /config/interface/l3{7}/vrf"},
     kOspfv3Refused},
    // Paths of another length, or through other nodes.
    {"ManagementList", "/config/interface/mgmt", {}, "accepted"},
    {"OtherListOfThatDepth", "/internal/vrf-config/indexTOstring", {}, "accepted"},
    {"L3LeafOfTheOtherLength", "/config/interface/l3{7}/ipv4/address", {}, "accepted"},
    {"AboveTheLists", "/config/interface", {}, "accepted"},
    {"Leaf", "/config/interface/l3{7}/vrf", {}, "accepted"},
    {"OspfEntryOneLevelHigher",
     "/internal/ospf-interface-l3{1 0.0.0.9 l3-7 192.0.2.1}/pm/binding",
     {},
     "accepted"},
    {"Ospfv3EntryOneLevelHigher",
     "/internal/ospfv3-interface-l3{10 0.0.0.1 l3-7}/pm/binding",
     {},
     "accepted"},
    {"Ospfv3List", "/internal/ospfv3-interface-l3", {}, "accepted"},
};

class Path : public PointTest, public testing::WithParamInterface<PathCase> {};

TEST_P(Path, DecidesWhatIsWalked) {
  Configure(Device{.l3 = {{.name = "7", .vrf = "red", .primary = "192.0.2.1/24"}},
                   .loopback = {{.name = "7", .vrf = "red"}},
                   .ospf = {{1, "0.0.0.9", "l3-7", "192.0.2.1"}},
                   .ospf_processes = {{1, 10, "red"}},
                   .ospfv3 = {kIn7, {10, "0.0.0.1", "loopback-7"}}});
  Validate(kPoint, kOspfEntry);
  EXPECT_EQ(Validate(kPoint, GetParam().path), GetParam().verdict);
  EXPECT_EQ(calls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Paths, Path, testing::ValuesIn(kPathCases),
                         [](const auto& row) { return std::string(row.param.name); });

class IntfVrf : public PointTest {
 protected:
  // The calls of a walk over changes of the list, with the tables already loaded.
  Calls Walk(const std::string& path, const std::string& verdict) {
    EXPECT_EQ(Validate(kPoint, path), verdict);
    EXPECT_EQ(Validate(kPoint, path), verdict);
    return calls();
  }
};

TEST_F(IntfVrf, LooksAtVrfLeavesOnly) {
  Configure(Device{.l3 = {{.name = "1"},
                          {.name = "2", .vrf = "red"},
                          {.name = "3", .vrf = "red"},
                          {.name = "4"},
                          {.name = "5", .vrf = "red"}}},
            Device{.l3 = {{.name = "0", .vrf = "red", .vlan = 9},
                          {.name = "1", .vrf = "red"},
                          {.name = "2"},
                          {.name = "3", .vrf = "blue"},
                          {.name = "4", .vlan = 10}},
                   .ospfv3 = {kIn7}});
  EXPECT_THAT(Walk(kL3List, "accepted"),
              ElementsAre("maapi_keypath_diff_iterate /config/interface/l3",
                          "maapi_xpath_eval_expr /internal",    // 0, created with it
                          "maapi_xpath_eval_expr /internal",    // 1, set
                          "maapi_xpath_eval_expr /internal"));  // 3, changed
}

TEST_F(IntfVrf, StopsAtTheFirstRefusal) {
  Configure(Device{
      .l3 = {{.name = "6", .vrf = "red"}, {.name = "7", .vrf = "red"}, {.name = "8", .vrf = "red"}},
      .ospfv3 = {kIn7, {10, "0.0.0.1", "l3-8"}}});
  EXPECT_THAT(Walk(kL3List, kL3Refused),
              ElementsAre("maapi_keypath_diff_iterate /config/interface/l3",
                          "maapi_xpath_eval_expr /internal", "maapi_xpath_eval_expr /internal"));
}

TEST_F(IntfVrf, LooksAtNamesOfCreatedOspfv3EntriesOnly) {
  const std::vector<ConfiguredIntf> interfaces = {
      {.name = "7", .vrf = "red"}, {.name = "8"}, {.name = "9"}};
  Configure(
      Device{.l3 = interfaces,
             .ospfv3 = {{1, "0.0.0.1", "l3-9"}, {2, "0.0.0.1", "l3-9"}, {3, "0.0.0.1", "l3-9", 1}}},
      Device{.l3 = interfaces,
             .ospfv3 = {{0, "0.0.0.1", "l3-8"},
                        {0, "0.0.0.1", "loopback-8"},
                        {0, "0.0.0.1", "mgmt-8"},
                        {2, "0.0.0.1", "l3-9"},
                        {3, "0.0.0.1", "l3-9", 2},
                        {9, "0.0.0.1", "l3-7"},
                        {9, "0.0.0.1", "l3-8"}}});
  EXPECT_THAT(
      Walk("/internal/ospfv3-interface-l3{9 0.0.0.1 l3-7}/pm/binding/association", kOspfv3Refused),
      ElementsAre("maapi_keypath_diff_iterate /internal/ospfv3-interface-l3",
                  "maapi_exists /config/interface/l3{8}/vrf",
                  "maapi_exists /config/interface/loopback{8}/vrf",
                  "maapi_exists /config/interface/l3{7}/vrf"));
}

// What is read ------------------------------------------------------------------------------------

const Calls kFullLoad = {
    "maapi_exists /config/interface/ipapp:l3",
    "maapi_init_cursor /config/interface/ipapp:l3",
    "maapi_get_next",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/ip",
    "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary",
    "maapi_init_cursor /config/interface/ipapp:l3{7}/ipv4/address/secondary",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_exists /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
    "maapi_exists /config/interface/ipapp:l3{7}/vrf",
    "maapi_get_elem /config/interface/ipapp:l3{7}/vrf",
    "confd_free_value",
    "maapi_exists /config/interface/ipapp:loopback",
    "maapi_init_cursor /config/interface/ipapp:loopback",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_exists /config/interface/ipapp:mgmt",
    "maapi_init_cursor /config/interface/ipapp:mgmt",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_init_cursor /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_exists /internal/ospf-interface-l3",
    "maapi_init_cursor /internal/ospf-interface-l3",
    "maapi_get_next",
    "maapi_destroy_cursor",
    "maapi_keypath_diff_iterate /config/interface/l3",
    "maapi_xpath_eval_expr /internal",
};

TEST_F(IntfVrf, ReadsEveryIpv4TableOnceAndWalksEveryTime) {
  Configure(Device{.l3 = {{.name = "7", .vrf = "red"}}, .ospfv3 = {kIn7}});
  EXPECT_EQ(Validate(kPoint, kL3List), kL3Refused);
  EXPECT_EQ(calls(), kFullLoad);
  EXPECT_EQ(Validate(kPoint, kL3List), kL3Refused);
  EXPECT_EQ(calls(), Calls(kFullLoad.end() - 2, kFullLoad.end()));
}

// A failing read of a table gives its default, and one in the walk passes the change.
TEST_F(IntfVrf, PassesWhatItCannotRead) {
  Configure(Device{.l3 = {{.name = "7", .vrf = "red"}}, .ospfv3 = {kIn7}});
  int faults = 0;
  for (size_t failing = 0; failing < kFullLoad.size(); ++failing) {
    if (kFullLoad[failing] == "maapi_destroy_cursor" || kFullLoad[failing] == "confd_free_value") {
      continue;  // cannot fail
    }
    SCOPED_TRACE("call " + std::to_string(failing) + ", " + kFullLoad[failing]);
    ++faults;
    RenewConfig();
    FailCall(static_cast<int>(failing));
    EXPECT_EQ(Validate(kPoint, kL3List), IsOfTheWalk(kFullLoad[failing]) ? "accepted" : kL3Refused);
    ASSERT_GT(calls().size(), failing);
    EXPECT_EQ(calls()[failing], kFullLoad[failing]);
    EXPECT_THAT(TakeFaults(), IsEmpty());
  }
  RecordProperty("injected_faults", faults);
  std::cout << "intf_vrf_validation, L3: " << faults << " faults injected\n";
}

TEST_F(IntfVrf, PassesAnOspfv3EntryThatItCannotJudge) {
  Configure(Device{.l3 = {{.name = "7", .vrf = "red"}}, .ospfv3 = {kIn7}});
  const Calls walk = Walk(kOspfv3Entry, kOspfv3Refused);
  ASSERT_EQ(walk.size(), 2u);
  for (size_t failing = 0; failing < walk.size(); ++failing) {
    FailCall(static_cast<int>(failing));
    EXPECT_EQ(Validate(kPoint, kOspfv3Entry), "accepted") << walk[failing];
  }
}

// The refusal of one change does not stay for the next transaction.
TEST_F(IntfVrf, KeepsNoRefusal) {
  const Device running{.l3 = {{.name = "7"}}, .ospfv3 = {kIn7}};
  Configure(running, Device{.l3 = {{.name = "7", .vrf = "red"}}, .ospfv3 = {kIn7}});
  EXPECT_EQ(Validate(kPoint, kL3List), kL3Refused);
  Configure(running, running);
  EXPECT_EQ(Validate(kPoint, kL3List), "accepted");
}

}  // namespace
}  // namespace tests
