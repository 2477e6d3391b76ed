// What OSPFv2 uses stays as it is: the rules on hand-built tables.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "config.h"
#include "support/ospf_records.h"
#include "validate_config.h"

namespace ip_application::config_valid {
namespace {

using tests::Masks;
using tests::OspfUse;

// An interface as a row says it.
struct Intf {
  std::string name;
  std::vector<std::string> addresses;
  std::string vrf = "red";
};

void Fill(InterfaceConfig& table, const std::vector<Intf>& interfaces) {
  for (const Intf& intf : interfaces) {
    Interface& added = table.interfaces_.emplace_back();
    added.name = intf.name;
    added.ipv4_addr_list = Masks(intf.addresses);
    added.vrf_name = intf.vrf;
  }
}

void Fill(Ospfv2Config& table, const std::vector<OspfUse>& uses) {
  for (const OspfUse& use : uses) {
    table.table_.push_back(std::make_shared<OspfIf>(use.Record()));
  }
}

struct CheckCase {
  const char* name;
  std::vector<OspfUse> ospf;
  std::vector<Intf> interfaces;
  std::string error;  // empty: passes
};

std::ostream& operator<<(std::ostream& out, const CheckCase& c) { return out << c.name; }

std::string RowName(const testing::TestParamInfo<CheckCase>& row) { return row.param.name; }

class OspfCheck : public testing::TestWithParam<CheckCase> {
 protected:
  OspfCheck() {
    Fill(ospf, GetParam().ospf);
    Fill(l3, GetParam().interfaces);
    Fill(lo, GetParam().interfaces);
  }

  // A check that passes leaves the text untouched, and one that fails replaces it.
  void ExpectVerdict(bool passes, const ValidateConfig& checker) {
    EXPECT_EQ(passes, GetParam().error.empty());
    EXPECT_EQ(checker.error_, passes ? "untouched" : GetParam().error);
  }

  Ospfv2Config ospf;
  L3Config l3;
  LoConfig lo;
};

// Addresses ------------------------------------------------------------------------------------

constexpr char kFrozen24[] =
    "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
    "(0.0.0.1)";

const CheckCase kAddressCases[] = {
    {"NothingConfigured", {}, {}, ""},
    {"NoRecord", {}, {{"l3 7", {"10.0.0.1/24"}}}, ""},
    {"NoInterface", {{"l3 7", {"10.0.0.1/24"}}}, {}, ""},
    {"Same", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 7", {"10.0.0.1/24"}}}, ""},
    {"SameTwo",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     ""},
    {"SameTwoInOtherOrder",
     {{"l3 7", {"10.0.0.2/24", "10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     ""},
    {"VrfPlaysNoPart", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 7", {"10.0.0.1/24"}, "blue"}}, ""},

    {"PrefixLengthChanged",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/25"}}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"AddressChanged", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 7", {"10.0.0.2/24"}}}, kFrozen24},
    {"AllRemoved", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 7", {}}}, kFrozen24},
    {"OneOfTwoRemoved",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     {{"l3 7", {"10.0.0.2/24"}}},
     kFrozen24},
    {"LastOfThreeRemoved",
     {{"l3 7", {"10.0.0.3/24", "10.0.0.2/24", "10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.2/24", "10.0.0.3/24"}}},
     kFrozen24},
    // The first of the record's list.
    {"TwoRemoved",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     {{"l3 7", {"10.0.0.9/24"}}},
     kFrozen24},
    {"TwoRemovedInOtherOrder",
     {{"l3 7", {"10.0.0.2/24", "10.0.0.1/24"}}},
     {{"l3 7", {}}},
     "10.0.0.2/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    // Prefix length unknown: no interface has such an address.
    {"UnknownPrefixLength",
     {{"l3 7", {"10.0.0.1/0"}}},
     {{"l3 7", {"10.0.0.1/24"}}},
     "10.0.0.1/0 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},

    {"SecondAddress",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"SecondAddressInFront",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.2/24", "10.0.0.1/24"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    // The first of the interface's list.
    {"TwoAdded",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.9/24", "10.0.0.1/24", "10.0.0.2/24"}}},
     "10.0.0.9/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"SameAddressWithOtherLengthAdded",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.1/25"}}},
     "10.0.0.1/25 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"RecordWithoutAddresses",
     {{"l3 7", {}}},
     {{"l3 7", {"10.0.0.1/24"}}},
     "10.0.0.1/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"NeitherHasAddresses", {{"l3 7", {}}}, {{"l3 7", {}}}, ""},
    {"SameAddressTwiceOnTheInterface",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.1/24"}}},
     ""},

    // An added address is looked for only when the interface has more addresses.
    {"AddedWithEqualCounts",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     ""},
    {"AddedWithFewerAddresses",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.1/24", "10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     ""},
    {"AddedWithOneAddressMore",
     {{"l3 7", {"10.0.0.1/24", "10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24", "10.0.0.3/24"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"RemovedBeforeAdded",
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.2/24", "10.0.0.3/24"}}},
     kFrozen24},

    // Records in their order, and not interfaces in theirs.
    {"FirstRecordIsReported",
     {{"l3 8", {"10.0.0.8/24"}}, {"l3 7", {"10.0.0.7/24"}}},
     {{"l3 7", {}}, {"l3 8", {}}},
     "10.0.0.8/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"AddedOnTheFirstBeforeRemovedFromTheSecond",
     {{"l3 8", {"10.0.0.8/24"}}, {"l3 7", {"10.0.0.7/24"}}},
     {{"l3 7", {}}, {"l3 8", {"10.0.0.8/24", "10.0.0.9/24"}}},
     "10.0.0.9/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"SecondRecordFails",
     {{"l3 8", {"10.0.0.8/24"}}, {"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {}}, {"l3 8", {"10.0.0.8/24"}}},
     kFrozen24},
    {"RecordWithoutInterfaceIsPassedOver",
     {{"l3 9", {"10.0.0.9/24"}}, {"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {}}},
     kFrozen24},
    // An address of one process is one added for the other.
    {"TwoProcessesEachWithOneAddress",
     {{"l3 7", {"10.0.0.1/24"}, 10}, {"l3 7", {"10.0.0.2/24"}, 11}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)"},
    {"TwoProcessesWithTheSameAddress",
     {{"l3 7", {"10.0.0.1/24"}, 10}, {"l3 7", {"10.0.0.1/24"}, 11}},
     {{"l3 7", {"10.0.0.1/24"}}},
     ""},

    // Whole names.
    {"OtherNumber", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 8", {}}}, ""},
    {"NameThatBeginsTheOther", {{"l3 7", {"10.0.0.1/24"}}}, {{"l3 77", {}}}, ""},
    {"NameThatTheOtherBegins", {{"l3 77", {"10.0.0.1/24"}}}, {{"l3 7", {}}}, ""},
    {"NameInOtherCase", {{"l3 a", {"10.0.0.1/24"}}}, {{"l3 A", {}}}, ""},
    {"NameWithHyphen", {{"l3-7", {"10.0.0.1/24"}}}, {{"l3 7", {}}}, ""},
    {"NameWithBlankBehind", {{"l3 7 ", {"10.0.0.1/24"}}}, {{"l3 7", {}}}, ""},
    {"NameWithSecondHyphen", {{"l3 a-b", {"10.0.0.1/24"}}}, {{"l3 a-b", {}}}, kFrozen24},
    {"EmptyNames", {{"", {"10.0.0.1/24"}}}, {{"", {}}}, kFrozen24},

    // Numbers are unsigned, and the area stands there twice.
    {"Largest",
     {{"l3 7", {"255.255.255.255/32"}, 4294967295, "red", "255.255.255.255"}},
     {{"l3 7", {}}},
     "255.255.255.255/32 cannot be modified nor deleted, it is assigned to router ospf 4294967295 "
     "vrf red area 4294967295 (255.255.255.255)"},
    {"LargestAdded",
     {{"l3 7", {}, 4294967295, "red", "255.255.255.255"}},
     {{"l3 7", {"255.255.255.255/32"}}},
     "255.255.255.255/32 cannot be added after interface is assigned to router ospf 4294967295 vrf "
     "red area 4294967295 (255.255.255.255)"},
    {"Smallest",
     {{"l3 7", {"0.0.0.0/0"}, 0, "", "0.0.0.0"}},
     {{"l3 7", {}}},
     "0.0.0.0/0 cannot be modified nor deleted, it is assigned to router ospf 0 vrf  area 0 "
     "(0.0.0.0)"},
    {"AreaInByteOrder",
     {{"l3 7", {"10.0.0.1/24"}, 10, "red", "1.2.3.4"}},
     {{"l3 7", {}}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area "
     "16909060 (1.2.3.4)"},
    {"AreaInByteOrderAdded",
     {{"l3 7", {}, 10, "red", "1.2.3.4"}},
     {{"l3 7", {"10.0.0.1/24"}}},
     "10.0.0.1/24 cannot be added after interface is assigned to router ospf 10 vrf red area "
     "16909060 (1.2.3.4)"},
    // The VRF of the record, not of the interface.
    {"VrfOfTheRecord",
     {{"l3 7", {"10.0.0.1/24"}, 10, "blue %s"}},
     {{"l3 7", {}, "red"}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf blue %s area "
     "1 (0.0.0.1)"},
    {"EmptyVrfAdded",
     {{"l3 7", {"10.0.0.1/24"}, 10, ""}},
     {{"l3 7", {"10.0.0.1/24", "10.0.0.2/24"}}},
     "10.0.0.2/24 cannot be added after interface is assigned to router ospf 10 vrf  area 1 "
     "(0.0.0.1)"},
};

class OspfAddresses : public OspfCheck {};

TEST_P(OspfAddresses, AreFrozenOnL3) {
  ValidateConfig checker;
  checker.error_ = "untouched";
  ExpectVerdict(checker.ValidateOspfv2CrossIfL3(l3, ospf), checker);
}

TEST_P(OspfAddresses, AreFrozenOnLoopbacks) {
  ValidateConfig checker;
  checker.error_ = "untouched";
  ExpectVerdict(checker.ValidateOspfv2CrossIfLo(lo, ospf), checker);
}

INSTANTIATE_TEST_SUITE_P(Tables, OspfAddresses, testing::ValuesIn(kAddressCases), RowName);

// VRFs -----------------------------------------------------------------------------------------

const CheckCase kVrfCases[] = {
    {"NothingConfigured", {}, {}, ""},
    {"NoInterface", {{"l3 7", {}}}, {}, ""},
    {"Same", {{"l3 7", {}, 10, "red"}}, {{"l3 7", {}, "red"}}, ""},
    {"BothEmpty", {{"l3 7", {}, 10, ""}}, {{"l3 7", {}, ""}}, ""},
    {"AddressesPlayNoPart",
     {{"l3 7", {"10.0.0.1/24"}, 10, "red"}},
     {{"l3 7", {"10.0.0.2/24", "10.0.0.3/24"}, "red"}},
     ""},
    {"Other",
     {{"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "blue"}},
     "l3 7 vrf blue and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"OnlyTheCaseDiffers",
     {{"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "Red"}},
     "l3 7 vrf Red and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"BlankBehind",
     {{"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "red "}},
     "l3 7 vrf red  and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"NameThatBeginsTheOther",
     {{"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "red2"}},
     "l3 7 vrf red2 and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"ProcessUnknown",
     {{"l3 7", {}, 0, ""}},
     {{"l3 7", {}, "global"}},
     "l3 7 vrf global and router ospf 0 vrf  cannot be associated with divergent VRF"},
    {"InterfaceVrfUnreadable",
     {{"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, ""}},
     "l3 7 vrf  and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"LargestProcess",
     {{"loopback 0", {}, 4294967295, "red"}},
     {{"loopback 0", {}, "global"}},
     "loopback 0 vrf global and router ospf 4294967295 vrf red cannot be associated with divergent "
     "VRF"},
    {"Conversions",
     {{"l3 %s", {}, 10, "%d"}},
     {{"l3 %s", {}, "%n"}},
     "l3 %s vrf %n and router ospf 10 vrf %d cannot be associated with divergent VRF"},
    {"TwoProcessesInTwoVrfs",
     {{"l3 7", {}, 10, "red"}, {"l3 7", {}, 11, "blue"}},
     {{"l3 7", {}, "red"}},
     "l3 7 vrf red and router ospf 11 vrf blue cannot be associated with divergent VRF"},
    {"FirstRecordIsReported",
     {{"l3 8", {}, 10, "red"}, {"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "blue"}, {"l3 8", {}, "blue"}},
     "l3 8 vrf blue and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"SecondRecordFails",
     {{"l3 8", {}, 10, "red"}, {"l3 9", {}, 10, "red"}, {"l3 7", {}, 10, "red"}},
     {{"l3 7", {}, "blue"}, {"l3 8", {}, "red"}},
     "l3 7 vrf blue and router ospf 10 vrf red cannot be associated with divergent VRF"},
    {"NameInOtherCase", {{"l3 a", {}, 10, "red"}}, {{"l3 A", {}, "blue"}}, ""},
    {"NameThatBeginsTheOtherName", {{"l3 7", {}, 10, "red"}}, {{"l3 77", {}, "blue"}}, ""},
};

class OspfVrf : public OspfCheck {};

TEST_P(OspfVrf, IsTheOneOfTheL3Interface) {
  ValidateConfig checker;
  checker.error_ = "untouched";
  ExpectVerdict(checker.ValidateOspfv2CrossIfL3Vrf(l3, ospf), checker);
}

TEST_P(OspfVrf, IsTheOneOfTheLoopback) {
  ValidateConfig checker;
  checker.error_ = "untouched";
  ExpectVerdict(checker.ValidateOspfv2CrossIfLoVrf(lo, ospf), checker);
}

INSTANTIATE_TEST_SUITE_P(Tables, OspfVrf, testing::ValuesIn(kVrfCases), RowName);

// Both tables ----------------------------------------------------------------------------------

// L3 interfaces and loopbacks of one snapshot; what is wrong with them is in the rows.
struct BothCase {
  const char* name;
  std::vector<OspfUse> ospf;
  std::vector<Intf> l3;
  std::vector<Intf> lo;
  std::string address_error;
  std::string vrf_error;
};

std::ostream& operator<<(std::ostream& out, const BothCase& c) { return out << c.name; }

const BothCase kBothCases[] = {
    {"Nothing", {}, {}, {}, "", ""},
    {"BothPass",
     {{"loopback 0", {"10.0.0.2/32"}}, {"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"loopback 0", {"10.0.0.2/32"}}},
     "",
     ""},
    {"UnmatchedNames",
     {{"mgmt 0", {"10.0.0.1/24"}, 10, "red"}, {"l3 9", {"10.0.0.1/24"}, 10, "red"}},
     {{"l3 7", {}, "blue"}},
     {{"loopback 0", {}, "blue"}},
     "",
     ""},
    {"OnlyTheLoopbackFails",
     {{"loopback 0", {"10.0.0.2/32"}}, {"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {"10.0.0.1/24"}}},
     {{"loopback 0", {}, "blue"}},
     "10.0.0.2/32 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)",
     "loopback 0 vrf blue and router ospf 10 vrf red cannot be associated with divergent VRF"},
    // L3 first, whatever the order of the records.
    {"BothFail",
     {{"loopback 0", {"10.0.0.2/32"}}, {"l3 7", {"10.0.0.1/24"}}},
     {{"l3 7", {}, "blue"}},
     {{"loopback 0", {}, "blue"}},
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red area 1 "
     "(0.0.0.1)",
     "l3 7 vrf blue and router ospf 10 vrf red cannot be associated with divergent VRF"},
};

class OspfBothTables : public testing::TestWithParam<BothCase> {
 protected:
  OspfBothTables() {
    Fill(config.ospfv2_config_, GetParam().ospf);
    Fill(config.l3_config_, GetParam().l3);
    Fill(config.lo_config_, GetParam().lo);
  }

  Config config;
  ValidateConfig checker;
};

TEST_P(OspfBothTables, L3AddressesGoFirst) {
  EXPECT_EQ(checker.ValidateOspfv2(config), GetParam().address_error.empty() ? 0 : -1);
  EXPECT_EQ(checker.error_, GetParam().address_error);
}

TEST_P(OspfBothTables, L3VrfsGoFirst) {
  EXPECT_EQ(checker.ValidateOspfv2Vrf(config), GetParam().vrf_error.empty() ? 0 : -1);
  EXPECT_EQ(checker.error_, GetParam().vrf_error);
}

INSTANTIATE_TEST_SUITE_P(Snapshots, OspfBothTables, testing::ValuesIn(kBothCases),
                         [](const auto& row) { return std::string(row.param.name); });

// A management interface is in neither table.
TEST(OspfChecks, LeaveManagementInterfacesAlone) {
  Config config;
  Fill(config.ospfv2_config_, {{"mgmt 0", {"10.0.0.1/24"}}});
  Fill(config.mgmt_config_, {{"mgmt 0", {}, "blue"}});
  ValidateConfig checker;
  EXPECT_EQ(checker.ValidateOspfv2(config), 0);
  EXPECT_EQ(checker.ValidateOspfv2Vrf(config), 0);
  EXPECT_EQ(checker.error_, "");
}

// A failed check changes nothing but the text.
TEST(OspfChecks, LeaveTheTablesAsTheyAre) {
  Config config;
  Fill(config.ospfv2_config_, {{"l3 7", {"10.0.0.1/24"}}, {"l3 8", {"10.0.0.8/24"}}});
  Fill(config.l3_config_, {{"l3 8", {"10.0.0.8/24"}}, {"l3 7", {"10.0.0.2/24"}, "blue"}});
  const std::vector<std::string> before = tests::TextsOf(config.ospfv2_config_);
  ValidateConfig checker;
  EXPECT_EQ(checker.ValidateOspfv2(config), -1);
  EXPECT_EQ(checker.ValidateOspfv2Vrf(config), -1);
  EXPECT_EQ(tests::TextsOf(config.ospfv2_config_), before);
  ASSERT_EQ(config.l3_config_.interfaces_.size(), 2u);
  EXPECT_EQ(config.l3_config_.interfaces_[1].name, "l3 7");
  EXPECT_EQ(config.l3_config_.interfaces_[1].ipv4_addr_list, Masks({"10.0.0.2/24"}));
  EXPECT_EQ(config.l3_config_.interfaces_[1].vrf_name, "blue");
}

// Order ----------------------------------------------------------------------------------------

// What a search from the front of the table says of the records, one after the other.
std::string PlainVrfVerdict(const L3Config& l3, const std::vector<OspfUse>& uses) {
  for (const OspfUse& use : uses) {
    for (const Interface& intf : l3.interfaces_) {
      if (intf.name != use.name || intf.vrf_name == use.vrf) continue;
      return intf.name + " vrf " + intf.vrf_name + " and router ospf " +
             std::to_string(use.process) + " vrf " + use.vrf +
             " cannot be associated with divergent VRF";
    }
  }
  return "";
}

// Records in every order over three interfaces and a name that is none, up to four of them, in two
// VRFs.
TEST(OspfVrfOrder, ReportsTheFirstRecordInAnyOrder) {
  L3Config l3;
  Fill(l3, {{"l3 1", {}, "red"}, {"l3 2", {}, "red"}, {"l3 3", {}, "red"}});
  const std::vector<OspfUse> kinds = {
      {"l3 1", {}, 1, "red"},  {"l3 2", {}, 2, "red"},  {"l3 3", {}, 3, "red"}, {"l3 4", {}, 4},
      {"l3 1", {}, 5, "blue"}, {"l3 2", {}, 6, "blue"}, {"l3 3", {}, 7, "blue"}};
  int refused = 0;
  for (size_t order = 0; order < 7 * 7 * 7 * 7; ++order) {
    std::vector<OspfUse> uses;
    for (size_t rest = order, i = 0; i < 4; ++i, rest /= 7) uses.push_back(kinds[rest % 7]);
    Ospfv2Config ospf;
    Fill(ospf, uses);
    ValidateConfig checker;
    const std::string expected = PlainVrfVerdict(l3, uses);
    EXPECT_EQ(checker.ValidateOspfv2CrossIfL3Vrf(l3, ospf), expected.empty()) << order;
    EXPECT_EQ(checker.error_, expected) << order;
    if (!expected.empty()) ++refused;
  }
  EXPECT_EQ(refused, 7 * 7 * 7 * 7 - 4 * 4 * 4 * 4);
}

}  // namespace
}  // namespace ip_application::config_valid
