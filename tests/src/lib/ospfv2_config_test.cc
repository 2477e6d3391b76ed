// The OSPFv2 table on configurations in the store: what it asks, what it keeps and what it logs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "config.h"
#include "support/device.h"
#include "support/hash_twins.h"
#include "support/ospf_records.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::Device;
using tests::ExpectedCalls;
using tests::OspfEntry;
using tests::OspfProcess;
using tests::OspfUse;
using tests::TextOf;
using tests::TextsOf;

using Lines = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<OspfIf>);
static_assert(std::is_base_of_v<GenericConfig, Ospfv2Config>);

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;

constexpr char kEntries[] = "/internal/ospf-interface-l3";

// The three look-ups of one entry; `keys` as in its keypath.
ExpectedCalls& LookUps(ExpectedCalls& calls, const std::string& keys, const std::string& id) {
  return calls
      .Add("maapi_get_u_int8_elem /internal/ospf-interface-l3{" + keys + "}/ospf-pm-ip-netmask")
      .Add("maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{" + id + "}/proc_id")
      .Add("maapi_get_str_elem /internal/ospf-index-to-proc-id{" + id + "}/vrf_name");
}

class Ospfv2Table : public tests::TableTest {
 protected:
  Ospfv2Table() {
    framework::SetLogEnabled(true);
    framework::TakeLogLines();
  }

  // Reads a table of its own.
  Lines Read(const std::vector<OspfEntry>& entries, const std::vector<OspfProcess>& processes) {
    ConfigureOspf(entries, processes);
    Ospfv2Config table;
    Bind(table);
    table.ReadConfigIfNeeded(kIpv4);
    return TextsOf(table);
  }

  void ConfigureOspf(const std::vector<OspfEntry>& entries,
                     const std::vector<OspfProcess>& processes) {
    Configure(Device{.ospf = entries, .ospf_processes = processes});
    TakeCalls();
  }

  Lines LogLines() { return framework::TakeLogLines(); }
};

// What it asks ---------------------------------------------------------------------------------

TEST_F(Ospfv2Table, AsksForEveryEntryAfterTheWalk) {
  EXPECT_THAT(
      Read({{1, "0.0.0.0", "l3-7", "192.0.2.1", 24}, {2, "0.0.1.0", "loopback-0", "10.0.0.1", 32}},
           {{1, 10, "red"}, {2, 4294967295, "blue"}}),
      ElementsAre("l3 7: ospf 10 vrf red area 0.0.0.0: 192.0.2.1/24",
                  "loopback 0: ospf 4294967295 vrf blue area 0.0.1.0: 10.0.0.1/32"));
  ExpectedCalls calls;
  calls.Walk(kEntries, 2);
  LookUps(calls, "1 0.0.0.0 l3-7 192.0.2.1", "1");
  LookUps(calls, "2 0.0.1.0 loopback-0 10.0.0.1", "2");
  EXPECT_EQ(TakeCalls(), calls);
  EXPECT_THAT(LogLines(), IsEmpty());
}

// What was looked up for an earlier entry of the same process is asked again.
TEST_F(Ospfv2Table, AsksForTheProcessOfEveryEntry) {
  Read({{7, "0.0.0.0", "l3-7", "10.0.0.1"}, {7, "0.0.0.0", "l3-7", "10.0.0.2"}}, {{7, 10, "red"}});
  ExpectedCalls calls;
  calls.Walk(kEntries, 2);
  LookUps(calls, "7 0.0.0.0 l3-7 10.0.0.1", "7");
  LookUps(calls, "7 0.0.0.0 l3-7 10.0.0.2", "7");
  EXPECT_EQ(TakeCalls(), calls);
}

TEST_F(Ospfv2Table, NamesWithoutHyphenAreSkippedWithoutALookUp) {
  EXPECT_THAT(Read({{1, "0.0.0.0", "", "10.0.0.1"},
                    {1, "0.0.0.0", "l3 7", "10.0.0.1"},
                    {1, "0.0.0.0", "l3-8", "10.0.0.1"},
                    {1, "0.0.0.0", "l3_7", "10.0.0.1"}},
                   {{1, 10, "red"}}),
              ElementsAre("l3 8: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24"));
  ExpectedCalls calls;
  calls.Walk(kEntries, 4);
  LookUps(calls, "1 0.0.0.0 l3-8 10.0.0.1", "1");
  EXPECT_EQ(TakeCalls(), calls);
  EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(Ospfv2Table, EmptyListIsWalkedAndNothingElse) {
  EXPECT_THAT(Read({}, {{1, 10, "red"}}), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kEntries, 0));
}

TEST_F(Ospfv2Table, Ipv6ReadsNothing) {
  ConfigureOspf({{1, "0.0.0.0", "l3-7", "10.0.0.1"}}, {{1, 10, "red"}});
  Ospfv2Config table;
  Bind(table);
  table.ReadConfig(kIpv6);
  table.ReadConfigIfNeeded(kIpv6);
  EXPECT_EQ(TakeCalls(), ExpectedCalls());
  EXPECT_THAT(table.table_, IsEmpty());
  // It says nothing about IPv4.
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table), ElementsAre("l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24"));
  TakeCalls();
  table.ReadConfig(kIpv6);
  EXPECT_EQ(TakeCalls(), ExpectedCalls());
  EXPECT_EQ(table.table_.size(), 1u);
}

TEST_F(Ospfv2Table, NumbersThatAreNoFamilyReadNothing) {
  ConfigureOspf({{1, "0.0.0.0", "l3-7", "10.0.0.1"}}, {});
  Ospfv2Config table;
  Bind(table);
  for (const int number : {0, 1, 3, 5, 7, -4}) {
    table.ReadConfig(static_cast<ConfigAddrFamily>(number));
    table.ReadConfigIfNeeded(static_cast<ConfigAddrFamily>(number));
  }
  EXPECT_EQ(TakeCalls(), ExpectedCalls());
}

TEST_F(Ospfv2Table, IsReadOnce) {
  ConfigureOspf({{1, "0.0.0.0", "l3-7", "10.0.0.1"}}, {{1, 10, "red"}});
  Ospfv2Config table;
  Bind(table);
  table.ReadConfigIfNeeded(kIpv4);
  TakeCalls();
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_EQ(TakeCalls(), ExpectedCalls());
  // Also when it is bound to another transaction.
  ConfigureOspf({{1, "0.0.0.0", "l3-8", "10.0.0.2"}}, {{1, 10, "red"}});
  Bind(table);
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_EQ(TakeCalls(), ExpectedCalls());
  EXPECT_THAT(TextsOf(table), ElementsAre("l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24"));
}

// Without the guard the addresses are appended again.
TEST_F(Ospfv2Table, ReadConfigByItselfMergesAgain) {
  ConfigureOspf({{1, "0.0.0.0", "l3-7", "10.0.0.1"}}, {{1, 10, "red"}});
  Ospfv2Config table;
  Bind(table);
  table.ReadConfig(kIpv4);
  table.ReadConfig(kIpv4);
  EXPECT_THAT(TextsOf(table),
              ElementsAre("l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24 10.0.0.1/24"));
}

// Names ----------------------------------------------------------------------------------------

struct NameCase {
  const char* name;
  std::string keyed;
  std::string stored;
};

std::ostream& operator<<(std::ostream& out, const NameCase& c) { return out << c.name; }

const NameCase kNameCases[] = {
    {"L3", "l3-7", "l3 7"},
    {"Loopback", "loopback-0", "loopback 0"},
    {"OnlyTheFirstHyphen", "l3-a-b", "l3 a-b"},
    {"TwoHyphensTogether", "l3--7", "l3 -7"},
    {"HyphenInFront", "-7", " 7"},
    {"HyphenAtTheEnd", "l3-", "l3 "},
    {"OnlyAHyphen", "-", " "},
    {"UnknownKind", "vlan-7", "vlan 7"},
    {"UpperCaseStays", "L3-Wan", "L3 Wan"},
    {"Conversions", "l3-%s%n%d", "l3 %s%n%d"},
    {"Brace", "l3-a}b", "l3 a}b"},
    {"Utf8", "l3-ü", "l3 ü"},
    {"Bytes255", "l3-" + std::string(252, 'x'), "l3 " + std::string(252, 'x')},
};

class KeyedName : public Ospfv2Table, public testing::WithParamInterface<NameCase> {};

TEST_P(KeyedName, LosesItsFirstHyphen) {
  EXPECT_THAT(Read({{1, "0.0.0.0", GetParam().keyed, "10.0.0.1"}}, {{1, 10, "red"}}),
              ElementsAre(GetParam().stored + ": ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24"));
  ExpectedCalls calls;
  calls.Walk(kEntries, 1);
  LookUps(calls, "1 0.0.0.0 " + GetParam().keyed + " 10.0.0.1", "1");
  EXPECT_EQ(TakeCalls(), calls);
  EXPECT_THAT(LogLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, KeyedName, testing::ValuesIn(kNameCases),
                         [](const auto& row) { return std::string(row.param.name); });

// The keys go into the path as they are, so a blank makes one key too many.
TEST_F(Ospfv2Table, NameWithABlankLosesItsPrefixLength) {
  EXPECT_THAT(Read({{1, "0.0.0.0", "l3-wan 1", "10.0.0.1"}}, {{1, 10, "red"}}),
              ElementsAre("l3 wan 1: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/0"));
  EXPECT_EQ(LogLines(), Lines{"Failed to get IPv4 netmask from process ID 1!"});
}

// Keys are read to 255 bytes, and the entry is not found by the part.
TEST_F(Ospfv2Table, NameIsCutBehind255Bytes) {
  EXPECT_THAT(
      Read({{1, "0.0.0.0", "l3-" + std::string(253, 'x'), "10.0.0.1"}}, {{1, 10, "red"}}),
      ElementsAre("l3 " + std::string(252, 'x') + ": ospf 10 vrf red area 0.0.0.0: 10.0.0.1/0"));
  EXPECT_EQ(LogLines(), Lines{"Failed to get IPv4 netmask from process ID 1!"});
}

// The three look-ups ---------------------------------------------------------------------------

struct LookUpCase {
  const char* name;
  OspfEntry entry;
  std::vector<OspfProcess> processes;
  std::string record;
  Lines lines;
};

std::ostream& operator<<(std::ostream& out, const LookUpCase& c) { return out << c.name; }

const LookUpCase kLookUpCases[] = {
    {"AllThere",
     {5, "0.0.0.0", "l3-7", "10.0.0.1", 24},
     {{5, 10, "red"}},
     "l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24",
     {}},
    {"NoPrefixLength",
     {5, "0.0.0.0", "l3-7", "10.0.0.1", -1},
     {{5, 10, "red"}},
     "l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/0",
     {"Failed to get IPv4 netmask from process ID 5!"}},
    // Zero that is configured is no failure.
    {"PrefixLengthZero",
     {5, "0.0.0.0", "l3-7", "10.0.0.1", 0},
     {{5, 10, "red"}},
     "l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/0",
     {}},
    {"LongestPrefix",
     {5, "0.0.0.0", "l3-7", "10.0.0.1", 32},
     {{5, 10, "red"}},
     "l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/32",
     {}},
    {"NoProcessNumber",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, {}, "red"}},
     "l3 7: ospf 0 vrf red area 0.0.0.0: 10.0.0.1/24",
     {"Failed to get process ID from compound ID 5!"}},
    {"ProcessNumberZero",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, 0, "red"}},
     "l3 7: ospf 0 vrf red area 0.0.0.0: 10.0.0.1/24",
     {}},
    {"NoVrf",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, 10}},
     "l3 7: ospf 10 vrf  area 0.0.0.0: 10.0.0.1/24",
     {"Failed to get VRF name from compound ID 5!"}},
    {"EmptyVrf",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, 10, ""}},
     "l3 7: ospf 10 vrf  area 0.0.0.0: 10.0.0.1/24",
     {}},
    {"ProcessUnknown",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{6, 10, "red"}},
     "l3 7: ospf 0 vrf  area 0.0.0.0: 10.0.0.1/24",
     {"Failed to get process ID from compound ID 5!",
      "Failed to get VRF name from compound ID 5!"}},
    {"NothingThere",
     {5, "0.0.0.0", "l3-7", "10.0.0.1", -1},
     {},
     "l3 7: ospf 0 vrf  area 0.0.0.0: 10.0.0.1/0",
     {"Failed to get IPv4 netmask from process ID 5!",
      "Failed to get process ID from compound ID 5!",
      "Failed to get VRF name from compound ID 5!"}},
    {"CompoundIdZero",
     {0, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{0, 10, "red"}},
     "l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24",
     {}},
    // Identifiers are unsigned, also in the log.
    {"LargestCompoundId",
     {4294967295, "255.255.255.255", "l3-7", "255.255.255.255", -1},
     {},
     "l3 7: ospf 0 vrf  area 255.255.255.255: 255.255.255.255/0",
     {"Failed to get IPv4 netmask from process ID 4294967295!",
      "Failed to get process ID from compound ID 4294967295!",
      "Failed to get VRF name from compound ID 4294967295!"}},
    {"Vrf255Bytes",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, 10, std::string(255, 'v')}},
     "l3 7: ospf 10 vrf " + std::string(255, 'v') + " area 0.0.0.0: 10.0.0.1/24",
     {}},
    // It does not fit with its zero byte, and ConfD cuts nothing.
    {"Vrf256Bytes",
     {5, "0.0.0.0", "l3-7", "10.0.0.1"},
     {{5, 10, std::string(256, 'v')}},
     "l3 7: ospf 10 vrf  area 0.0.0.0: 10.0.0.1/24",
     {"Failed to get VRF name from compound ID 5!"}},
};

class LookUp : public Ospfv2Table, public testing::WithParamInterface<LookUpCase> {};

TEST_P(LookUp, GivesValueOrDefault) {
  EXPECT_THAT(Read({GetParam().entry}, GetParam().processes), ElementsAre(GetParam().record));
  EXPECT_EQ(LogLines(), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Leaves, LookUp, testing::ValuesIn(kLookUpCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Ospfv2Table, LookUpsByThemselves) {
  ConfigureOspf({{5, "0.0.0.9", "l3-7", "10.0.0.1", 30}}, {{5, 10, "red"}});
  Ospfv2Config bound;
  Bind(bound);
  const Ospfv2Config& table = bound;
  EXPECT_EQ(table.GetIpv4Netmask(5, tests::Addr("0.0.0.9"), "l3-7", tests::Addr("10.0.0.1")), 30);
  EXPECT_EQ(table.GetProcessIdFromCompoundId(5), 10u);
  EXPECT_EQ(table.GetVrfName(5), "red");
  ExpectedCalls calls;
  EXPECT_EQ(TakeCalls(), LookUps(calls, "5 0.0.0.9 l3-7 10.0.0.1", "5"));
  EXPECT_THAT(LogLines(), IsEmpty());

  // The name is the keyed one, and every key counts.
  EXPECT_EQ(table.GetIpv4Netmask(5, tests::Addr("0.0.0.9"), "l3 7", tests::Addr("10.0.0.1")), 0);
  EXPECT_EQ(table.GetIpv4Netmask(6, tests::Addr("0.0.0.9"), "l3-7", tests::Addr("10.0.0.1")), 0);
  EXPECT_EQ(table.GetIpv4Netmask(5, tests::Addr("0.0.0.8"), "l3-7", tests::Addr("10.0.0.1")), 0);
  EXPECT_EQ(table.GetIpv4Netmask(5, tests::Addr("0.0.0.9"), "l3-7", tests::Addr("10.0.0.2")), 0);
  EXPECT_EQ(LogLines(), (Lines{"Failed to get IPv4 netmask from process ID 5!",
                               "Failed to get IPv4 netmask from process ID 6!",
                               "Failed to get IPv4 netmask from process ID 5!",
                               "Failed to get IPv4 netmask from process ID 5!"}));
}

TEST_F(Ospfv2Table, UnbindableSocketGivesDefaults) {
  ConfigureOspf({{5, "0.0.0.0", "l3-7", "10.0.0.1"}}, {{5, 10, "red"}});
  Ospfv2Config table;
  Bind(table);
  table.sock_ = -1;
  EXPECT_EQ(table.GetProcessIdFromCompoundId(5), 0u);
  EXPECT_EQ(table.GetVrfName(5), "");
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(table.table_, IsEmpty());
}

// Merging --------------------------------------------------------------------------------------

struct MergeCase {
  const char* name;
  std::vector<OspfUse> merged;
  Lines table;
};

std::ostream& operator<<(std::ostream& out, const MergeCase& c) { return out << c.name; }

const MergeCase kMergeCases[] = {
    {"One", {{"l3 7", {"10.0.0.1/24"}}}, {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24"}},
    {"SecondAddress",
     {{"l3 7", {"10.0.0.2/24"}}, {"l3 7", {"10.0.0.1/16"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24 10.0.0.1/16"}},
    {"SameAddressTwice",
     {{"l3 7", {"10.0.0.1/24"}}, {"l3 7", {"10.0.0.1/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24 10.0.0.1/24"}},
    // The area of the first stays.
    {"TwoAreas",
     {{"l3 7", {"10.0.0.1/24"}, 10, "red", "0.0.0.9"},
      {"l3 7", {"10.0.0.2/24"}, 10, "red", "0.0.0.1"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.9: 10.0.0.1/24 10.0.0.2/24"}},
    {"TwoProcesses",
     {{"l3 7", {"10.0.0.1/24"}, 10}, {"l3 7", {"10.0.0.2/24"}, 11}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 7: ospf 11 vrf red area 0.0.0.1: 10.0.0.2/24"}},
    {"TwoVrfs",
     {{"l3 7", {"10.0.0.1/24"}, 10, "red"}, {"l3 7", {"10.0.0.2/24"}, 10, "blue"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 7: ospf 10 vrf blue area 0.0.0.1: 10.0.0.2/24"}},
    {"TwoInterfaces",
     {{"l3 7", {"10.0.0.1/24"}}, {"l3 8", {"10.0.0.2/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 8: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24"}},
    {"NameInOtherCase",
     {{"l3 a", {"10.0.0.1/24"}}, {"l3 A", {"10.0.0.2/24"}}},
     {"l3 a: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 A: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24"}},
    {"VrfInOtherCase",
     {{"l3 7", {"10.0.0.1/24"}, 10, "red"}, {"l3 7", {"10.0.0.2/24"}, 10, "Red"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 7: ospf 10 vrf Red area 0.0.0.1: 10.0.0.2/24"}},
    {"NameThatBeginsTheOther",
     {{"l3 7", {"10.0.0.1/24"}}, {"l3 77", {"10.0.0.2/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 77: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24"}},
    // Where one text ends and the other begins counts.
    {"SameTextsInOtherFields",
     {{"l3 7", {"10.0.0.1/24"}, 1, "0red"}, {"l3 7", {"10.0.0.2/24"}, 10, "red"}},
     {"l3 7: ospf 1 vrf 0red area 0.0.0.1: 10.0.0.1/24",
      "l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24"}},
    {"EmptyVrfsAreEqual",
     {{"l3 7", {"10.0.0.1/24"}, 0, ""}, {"l3 7", {"10.0.0.2/24"}, 0, ""}},
     {"l3 7: ospf 0 vrf  area 0.0.0.1: 10.0.0.1/24 10.0.0.2/24"}},
    {"NewRecordIsCopiedWhole",
     {{"l3 7", {"10.0.0.3/24", "10.0.0.1/24", "10.0.0.2/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.3/24 10.0.0.1/24 10.0.0.2/24"}},
    {"OnlyTheFirstAddressIsAppended",
     {{"l3 7", {"10.0.0.1/24"}}, {"l3 7", {"10.0.0.2/24", "10.0.0.3/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24 10.0.0.2/24"}},
    {"InterfacesTakeTurns",
     {{"l3 7", {"10.0.0.1/24"}},
      {"l3 8", {"10.0.0.2/24"}},
      {"l3 7", {"10.0.0.3/24"}},
      {"l3 8", {"10.0.0.4/24"}}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24 10.0.0.3/24",
      "l3 8: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24 10.0.0.4/24"}},
    {"OrderOfInsertionStays",
     {{"l3 9", {"10.0.0.1/24"}}, {"l3 1", {"10.0.0.2/24"}}, {"a", {"10.0.0.3/24"}}},
     {"l3 9: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
      "l3 1: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24",
      "a: ospf 10 vrf red area 0.0.0.1: 10.0.0.3/24"}},
};

class Merge : public testing::TestWithParam<MergeCase> {};

TEST_P(Merge, LeavesTheAreaOut) {
  Ospfv2Config table;
  for (const OspfUse& use : GetParam().merged) {
    OspfIf record = use.Record();
    table.MergeConfigAndInsert(record);
    EXPECT_EQ(TextOf(record), TextOf(use.Record())) << "the argument stays as it is";
  }
  EXPECT_EQ(TextsOf(table), GetParam().table);
}

INSTANTIATE_TEST_SUITE_P(Records, Merge, testing::ValuesIn(kMergeCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MergeOspf, CopiesTheRecord) {
  Ospfv2Config table;
  OspfIf record = OspfUse{"l3 7", {"10.0.0.1/24"}}.Record();
  table.MergeConfigAndInsert(record);
  const std::string before = TextOf(record);
  record = OspfUse{"l3 8", {"10.0.0.9/8"}, 1, "blue", "9.9.9.9"}.Record();
  EXPECT_EQ(TextsOf(table), Lines{before});
  EXPECT_NE(table.table_.front().get(), &record);
}

// Held by shared pointers, so a record outlives its table.
TEST(MergeOspf, RecordsAreShared) {
  std::shared_ptr<OspfIf> kept;
  {
    Ospfv2Config table;
    OspfIf record = OspfUse{"l3 7", {"10.0.0.1/24"}}.Record();
    table.MergeConfigAndInsert(record);
    kept = table.table_.front();
    EXPECT_EQ(kept.use_count(), 2);
  }
  EXPECT_EQ(kept.use_count(), 1);
  EXPECT_EQ(kept->intf_name, "l3 7");
}

// The table finds records by a hash over all three parts of a binding.
TEST(MergeOspf, RecordsWithOneHashStayApart) {
  const auto [name, twin] = tests::NamesWithOneHash();
  const OspfUse red{name, {"10.0.0.1/24"}, 10, "red"};
  // The same hash comes of another process in another VRF.
  const uint32_t process = 10 + 31 * (NameIndex::HashOf("red") - NameIndex::HashOf("blue"));
  Ospfv2Config table;
  Lines expected;
  for (const OspfUse& use : {red, OspfUse{twin, {"10.0.0.1/24"}, 10, "red"},
                             OspfUse{name, {"10.0.0.1/24"}, process, "blue"}}) {
    OspfIf record = use.Record();
    table.MergeConfigAndInsert(record);
    expected.push_back(TextOf(record));
  }
  EXPECT_EQ(TextsOf(table), expected);
}

TEST(MergeOspf, OfTwoEqualRecordsThatWereAddedByHandTheFirstIsFilled) {
  Ospfv2Config table;
  OspfIf record = OspfUse{"l3 7", {"10.0.0.1/24"}}.Record();
  table.table_.push_back(std::make_shared<OspfIf>(record));
  table.table_.push_back(std::make_shared<OspfIf>(record));
  OspfIf other = OspfUse{"l3 7", {"10.0.0.2/24"}}.Record();
  table.MergeConfigAndInsert(other);
  EXPECT_THAT(TextsOf(table),
              ElementsAre("l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24 10.0.0.2/24",
                          "l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24"));
}

// Merging in a read ----------------------------------------------------------------------------

struct ReadMergeCase {
  const char* name;
  std::vector<OspfEntry> entries;
  std::vector<OspfProcess> processes;
  Lines table;
};

std::ostream& operator<<(std::ostream& out, const ReadMergeCase& c) { return out << c.name; }

const ReadMergeCase kReadMergeCases[] = {
    {"TwoAddresses",
     {{1, "0.0.0.0", "l3-7", "10.0.0.1", 24}, {1, "0.0.0.0", "l3-7", "10.0.0.2", 16}},
     {{1, 10, "red"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24 10.0.0.2/16"}},
    {"TwoAreas",
     {{1, "0.0.0.1", "l3-7", "10.0.0.2"}, {1, "0.0.0.2", "l3-7", "10.0.0.1"}},
     {{1, 10, "red"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.1: 10.0.0.2/24 10.0.0.1/24"}},
    {"TwoProcesses",
     {{1, "0.0.0.0", "l3-7", "10.0.0.1"}, {2, "0.0.0.0", "l3-7", "10.0.0.1"}},
     {{1, 10, "red"}, {2, 11, "red"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24",
      "l3 7: ospf 11 vrf red area 0.0.0.0: 10.0.0.1/24"}},
    {"TwoVrfs",
     {{1, "0.0.0.0", "l3-7", "10.0.0.1"}, {2, "0.0.0.0", "l3-7", "10.0.0.2"}},
     {{1, 10, "red"}, {2, 10, "blue"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24",
      "l3 7: ospf 10 vrf blue area 0.0.0.0: 10.0.0.2/24"}},
    // What the ids stand for is compared, and not the ids.
    {"TwoIdsOfOneProcess",
     {{1, "0.0.0.0", "l3-7", "10.0.0.1"}, {2, "0.0.0.0", "l3-7", "10.0.0.2"}},
     {{1, 10, "red"}, {2, 10, "red"}},
     {"l3 7: ospf 10 vrf red area 0.0.0.0: 10.0.0.1/24 10.0.0.2/24"}},
    {"TwoUnknownIds",
     {{1, "0.0.0.0", "l3-7", "10.0.0.1"}, {2, "0.0.0.0", "l3-7", "10.0.0.2"}},
     {},
     {"l3 7: ospf 0 vrf  area 0.0.0.0: 10.0.0.1/24 10.0.0.2/24"}},
};

class ReadMerge : public Ospfv2Table, public testing::WithParamInterface<ReadMergeCase> {};

TEST_P(ReadMerge, IsInTheOrderOfTheList) {
  EXPECT_EQ(Read(GetParam().entries, GetParam().processes), GetParam().table);
}

INSTANTIATE_TEST_SUITE_P(Entries, ReadMerge, testing::ValuesIn(kReadMergeCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ip_application::config_valid
