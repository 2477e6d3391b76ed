// lower_layer_prot_cross_validation on changes of configurations in the store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "support/data_model.h"
#include "support/device.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::IsEmpty;

using Calls = std::vector<std::string>;

constexpr char kPoint[] = "lower_layer_prot_cross_validation";
constexpr char kPath[] = "/config/interface/l3{7}/lower-layer-if";
constexpr char kRefused[] =
    "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)";

// L3 interface 7; zero: without VLAN.
ConfiguredIntf OnVlan(int vlan, const std::string& name = "7") {
  return {.name = name, .vlan = vlan};
}

// The index that OSPFv3 keeps for an interface on that VLAN.
constexpr int64_t IndexOf(int vlan) { return 1000000 + vlan; }

const Ospfv3Entry kUses100 = {10, "0.0.0.1", "l3-7", IndexOf(100)};

struct VlanCase {
  const char* name;
  Device running;
  Device candidate;
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const VlanCase& c) { return out << c.name; }

// From VLAN 100 to 200, with these OSPFv3 interfaces in the candidate.
VlanCase Changed(const char* name, const std::vector<Ospfv3Entry>& ospfv3,
                 const std::string& verdict) {
  return {name, {.l3 = {OnVlan(100)}}, {.l3 = {OnVlan(200)}, .ospfv3 = ospfv3}, verdict};
}

const VlanCase kVlanCases[] = {
    Changed("ChangedAndUsed", {kUses100}, kRefused),
    Changed("ChangedAndNotUsed", {{10, "0.0.0.1", "l3-8", IndexOf(101)}}, "accepted"),
    Changed("NoOspfv3", {}, "accepted"),
    // The index counts, not the name.
    Changed("OtherNameSameIndex", {{10, "0.0.0.1", "x", IndexOf(100)}}, kRefused),
    Changed("SameNameOtherIndex", {{10, "0.0.0.1", "l3-7", IndexOf(99)}}, "accepted"),
    Changed("SameNameNewIndex", {{10, "0.0.0.1", "l3-7", IndexOf(200)}}, "accepted"),
    Changed("NoIndex", {{10, "0.0.0.1", "l3-7"}}, "accepted"),
    Changed("IndexZero", {{10, "0.0.0.1", "l3-7", 0}}, "accepted"),
    {"FirstVlan", {.l3 = {OnVlan(0)}}, {.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}}, "accepted"},
    {"InterfaceCreated", {}, {.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}}, "accepted"},
    {"SameVlan", {.l3 = {OnVlan(100)}}, {.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}}, "accepted"},
    {"VlanDeleted", {.l3 = {OnVlan(100)}}, {.l3 = {OnVlan(0)}, .ospfv3 = {kUses100}}, kRefused},
    {"VlanDeletedAndNotUsed",
     {.l3 = {OnVlan(100)}},
     {.l3 = {OnVlan(0)}, .ospfv3 = {{10, "0.0.0.1", "l3-8", IndexOf(101)}}},
     "accepted"},
    {"NeverHadAVlan", {.l3 = {OnVlan(0)}}, {.l3 = {OnVlan(0)}, .ospfv3 = {kUses100}}, "accepted"},
    // The OSPFv3 interfaces are those after the change.
    {"ReleasedTogetherWithTheChange",
     {.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}},
     {.l3 = {OnVlan(200)}},
     "accepted"},
    {"MovedTogetherWithTheChange",
     {.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}},
     {.l3 = {OnVlan(200)}, .ospfv3 = {{10, "0.0.0.1", "l3-7", IndexOf(200)}}},
     "accepted"},
    {"TwoInterfacesSwapVlans",
     {.l3 = {OnVlan(100), OnVlan(200, "8")}},
     {.l3 = {OnVlan(200), OnVlan(100, "8")}, .ospfv3 = {kUses100}},
     kRefused},
    {"LimitsOfVlans",
     {.l3 = {OnVlan(1)}},
     {.l3 = {OnVlan(4094)}, .ospfv3 = {{10, "0.0.0.1", "l3-7", IndexOf(1)}}},
     "vlan 1 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)"},
    {"UpperLimitOfVlans",
     {.l3 = {OnVlan(4094)}},
     {.l3 = {OnVlan(1)}, .ospfv3 = {{10, "0.0.0.1", "l3-7", IndexOf(4094)}}},
     "vlan 4094 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)"},
    // Only the first one is reported, in the order of the list.
    Changed("FirstOfTwo",
            {{11, "0.0.0.1", "l3-7", IndexOf(100)}, {9, "0.0.0.2", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 9 area 2 (0.0.0.2)"),
    Changed("SecondOfTwo", {{9, "0.0.0.1", "l3-8", IndexOf(8)}, kUses100}, kRefused),
    Changed("FirstArea",
            {{10, "0.0.0.3", "l3-7", IndexOf(100)}, {10, "0.0.0.2", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 2 (0.0.0.2)"),
    // The area as one number, and in its dotted form.
    Changed("Backbone", {{0, "0.0.0.0", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 0 area 0 (0.0.0.0)"),
    Changed("AreaOfFourOctets", {{10, "1.2.3.4", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 16909060 "
            "(1.2.3.4)"),
    Changed("LargestArea", {{10, "255.255.255.255", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 4294967295 "
            "(255.255.255.255)"),
    // Deliberate: the process number is printed as a signed one.
    Changed("LargestSignedProcess", {{2147483647, "0.0.0.1", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 2147483647 area 1 "
            "(0.0.0.1)"),
    Changed("FirstNegativeProcess", {{2147483648, "0.0.0.1", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 -2147483648 area 1 "
            "(0.0.0.1)"),
    Changed("LargestProcess", {{4294967295, "0.0.0.1", "l3-7", IndexOf(100)}},
            "vlan 100 cannot be changed, it is assigned to router ospfv3 -1 area 1 (0.0.0.1)"),
    // Names of OSPFv3 interfaces that mean something to a path. Deliberate: they go into it as they
    // are, and where it then names nothing the index counts as unknown.
    Changed("NameWithQuote", {{10, "0.0.0.1", "it's", IndexOf(100)}}, kRefused),
    Changed("NameWithBrackets", {{10, "0.0.0.1", "a]b[", IndexOf(100)}}, kRefused),
    Changed("NameWithBrace", {{10, "0.0.0.1", "{a}", IndexOf(100)}}, kRefused),
    Changed("NameWithConversions", {{10, "0.0.0.1", "%s%n", IndexOf(100)}}, kRefused),
    Changed("NameWithBlank", {{10, "0.0.0.1", "l3-a b", IndexOf(100)}}, "accepted"),
    Changed("NameInDoubleQuotes", {{10, "0.0.0.1", "\"a\"", IndexOf(100)}}, "accepted"),
    Changed("EmptyName", {{10, "0.0.0.1", "", IndexOf(100)}}, "accepted"),
    Changed("NameWithBraceAndSlash", {{10, "0.0.0.1", "a}/b", IndexOf(100)}}, "accepted"),
    Changed("NameOf300Bytes", {{10, "0.0.0.1", std::string(300, 'n'), IndexOf(100)}}, kRefused),
    Changed("NameOf1100Bytes", {{10, "0.0.0.1", std::string(1100, 'n'), IndexOf(100)}}, kRefused),
};

class LowerLayer : public PointTest {
 protected:
  std::string Validate(const std::string& path = kPath) {
    return PointTest::Validate(kPoint, path);
  }
};

class LowerLayerVlan : public LowerLayer, public testing::WithParamInterface<VlanCase> {};

TEST_P(LowerLayerVlan, IsJudgedAsListed) {
  Configure(GetParam().running, GetParam().candidate);
  EXPECT_EQ(Validate(), GetParam().verdict);
  EXPECT_THAT(TakeFaults(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Changes, LowerLayerVlan, testing::ValuesIn(kVlanCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Names of the L3 interface -----------------------------------------------------------------------

struct NameCase {
  const char* name;
  std::string intf;
  const char* verdict;
};

std::ostream& operator<<(std::ostream& out, const NameCase& c) { return out << c.name; }

const NameCase kNameCases[] = {
    {"Quote", "it's", kRefused},
    {"DoubleQuote", "a\"b", kRefused},
    {"Brackets", "a]b[", kRefused},
    {"Braces", "{a}", kRefused},
    {"Blank", "a b", kRefused},
    {"Conversions", "%s%n", kRefused},
    {"Empty", "", kRefused},
    {"Of300Bytes", std::string(300, 'n'), kRefused},
    {"Of1100Bytes", std::string(1100, 'n'), kRefused},
    // Deliberate: the name goes into the path as it is, and a path that names nothing has no VLAN.
    {"InDoubleQuotes", "\"a\"", "accepted"},
    {"BraceAndSlash", "a}/b", "accepted"},
    {"BlankAtTheEnd", "a ", "accepted"},
};

class LowerLayerName : public LowerLayer, public testing::WithParamInterface<NameCase> {};

TEST_P(LowerLayerName, GoesIntoThePathAsItIs) {
  const std::string& name = GetParam().intf;
  const auto device = [&name](int vlan) {
    return Device{.l3 = {OnVlan(vlan, name)}, .ospfv3 = {kUses100}};
  };
  Configure(device(100), device(200));
  // As the daemon does it, from the node and not from a text.
  const auto& points = DataModel()->validation_points();
  const auto guard = std::find_if(points.begin(), points.end(),
                                  [](const auto& point) { return point.opaque == kPoint; });
  ASSERT_NE(guard, points.end());
  const std::vector<const lyd_node*> containers = candidate().Instances(guard->node, nullptr);
  ASSERT_EQ(containers.size(), 1u);
  confd::Keypath keypath(candidate().schema(), containers.front());
  EXPECT_EQ(PointTest::Validate(kPoint, keypath), GetParam().verdict);
}

INSTANTIATE_TEST_SUITE_P(Names, LowerLayerName, testing::ValuesIn(kNameCases),
                         [](const auto& row) { return std::string(row.param.name); });

// What is read ------------------------------------------------------------------------------------

const std::string kList = "/internal/ospfv3-interface-l3";
const std::string kVlanPath = "/config/interface/l3{7}/lower-layer-if/vlan";
const Calls kCommitted = {"maapi_exists " + kList, "maapi_num_instances " + kList,
                          "cdb_start_session2", "cdb_get_int32 " + kVlanPath, "cdb_end_session"};

Calls After(Calls calls, const Calls& more) {
  calls.insert(calls.end(), more.begin(), more.end());
  return calls;
}

struct ReadCase {
  const char* name;
  Device running;
  Device candidate;
  Calls calls;
};

std::ostream& operator<<(std::ostream& out, const ReadCase& c) { return out << c.name; }

// Three entries, of which the second and the third have the index.
const std::vector<Ospfv3Entry> kThree = {
    {9, "0.0.0.1", "l3-8", IndexOf(8)}, kUses100, {11, "0.0.0.1", "l3-7", IndexOf(100)}};

const ReadCase kReadCases[] = {
    {"NoOspfv3",
     {.l3 = {OnVlan(100)}},
     {.l3 = {OnVlan(200)}},
     {"maapi_exists " + kList, "maapi_num_instances " + kList}},
    {"FirstVlan", {.l3 = {OnVlan(0)}}, {.l3 = {OnVlan(200)}, .ospfv3 = kThree}, kCommitted},
    {"SameVlan",
     {.l3 = {OnVlan(100)}},
     {.l3 = {OnVlan(100)}, .ospfv3 = kThree},
     After(kCommitted, {"maapi_get_int32_elem " + kVlanPath})},
    {"UpToTheFirstMatch",
     {.l3 = {OnVlan(100)}},
     {.l3 = {OnVlan(200)}, .ospfv3 = kThree},
     After(kCommitted,
           {"maapi_get_int32_elem " + kVlanPath, "maapi_init_cursor " + kList, "maapi_get_next",
            "maapi_get_u_int32_elem " + kList + "{ 9 0.0.0.1 l3-8 }/ospfv3-pm-if-index",
            "maapi_get_next",
            "maapi_get_u_int32_elem " + kList + "{ 10 0.0.0.1 l3-7 }/ospfv3-pm-if-index",
            "maapi_destroy_cursor"})},
    {"ToTheEnd",
     {.l3 = {OnVlan(300)}},
     {.l3 = {OnVlan(0)}, .ospfv3 = {kUses100}},
     After(kCommitted,
           {"maapi_get_int32_elem " + kVlanPath, "maapi_init_cursor " + kList, "maapi_get_next",
            "maapi_get_u_int32_elem " + kList + "{ 10 0.0.0.1 l3-7 }/ospfv3-pm-if-index",
            "maapi_get_next", "maapi_destroy_cursor"})},
};

class LowerLayerReads : public LowerLayer, public testing::WithParamInterface<ReadCase> {};

// Nothing is kept: the second call reads the same again.
TEST_P(LowerLayerReads, AreThese) {
  Configure(GetParam().running, GetParam().candidate);
  const std::string verdict = Validate();
  EXPECT_EQ(calls(), GetParam().calls);
  EXPECT_EQ(Validate(), verdict);
  EXPECT_EQ(calls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Changes, LowerLayerReads, testing::ValuesIn(kReadCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Reads that fail ---------------------------------------------------------------------------------

struct FaultCase {
  const char* call;
  const char* verdict;
};

// From VLAN 100 to 200, in use by the second of three entries.
const FaultCase kFaults[] = {
    {"maapi_exists", "accepted"},
    {"maapi_num_instances", kRefused},  // Deliberate: then the list is walked
    {"cdb_start_session2", "accepted"},
    {"cdb_get_int32", "accepted"},
    {"cdb_end_session", kRefused},
    {"maapi_get_int32_elem", kRefused},  // Deliberate: counts as a change
    {"maapi_init_cursor", "accepted"},
    {"maapi_get_next", "accepted"},
    {"maapi_get_u_int32_elem", kRefused},  // of the first entry
    {"maapi_get_next", "accepted"},
    // Of the second entry: the third is found.
    {"maapi_get_u_int32_elem",
     "vlan 100 cannot be changed, it is assigned to router ospfv3 11 area 1 (0.0.0.1)"},
};

TEST_F(LowerLayer, PassesWhatItCannotRead) {
  const Device running{.l3 = {OnVlan(100)}};
  const Device candidate{.l3 = {OnVlan(200)}, .ospfv3 = kThree};
  int position = 0;
  for (const FaultCase& fault : kFaults) {
    SCOPED_TRACE("call " + std::to_string(position) + ", " + fault.call);
    // Each time anew, because a session that cannot be ended stays open.
    Configure(running, candidate);
    FailCall(position);
    EXPECT_EQ(Validate(), fault.verdict);
    ASSERT_GT(calls().size(), static_cast<size_t>(position));
    EXPECT_TRUE(calls()[static_cast<size_t>(position)].starts_with(fault.call));
    ++position;
  }
  Configure(running, candidate);
  Validate();
  ASSERT_EQ(calls().size(), static_cast<size_t>(position) + 1);
  EXPECT_EQ(calls().back(), "maapi_destroy_cursor");  // cannot fail
  RecordProperty("injected_faults", position);
  std::cout << "lower_layer_prot_cross_validation: " << position << " faults injected\n";
}

// A read that fails is a change, also when the VLAN is the same.
TEST_F(LowerLayer, RefusesTheSameVlanThatItCannotRead) {
  Configure(Device{.l3 = {OnVlan(100)}}, Device{.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}});
  FailCall(static_cast<int>(kCommitted.size()));
  EXPECT_EQ(Validate(), kRefused);
}

// The keypath tells the interface by its second element, whatever the first one is.
TEST_F(LowerLayer, TakesTheNameFromTheSecondElement) {
  Configure(Device{.l3 = {OnVlan(100)}}, Device{.l3 = {OnVlan(200)}, .ospfv3 = {kUses100}});
  EXPECT_EQ(Validate("/config/interface/l3{7}/ipv4"), kRefused);
}

// A deleted interface has no VLAN any more. ConfD does not ask about deleted nodes.
TEST_F(LowerLayer, RefusesToDeleteAnInterfaceInUse) {
  Configure(Device{.l3 = {OnVlan(100)}}, Device{.l3 = {OnVlan(100)}, .ospfv3 = {kUses100}});
  confd::Keypath keypath(candidate(), kPath);
  Configure(Device{.l3 = {OnVlan(100)}}, Device{.ospfv3 = {kUses100}});
  EXPECT_EQ(PointTest::Validate(kPoint, keypath), kRefused);
}

}  // namespace
}  // namespace tests
