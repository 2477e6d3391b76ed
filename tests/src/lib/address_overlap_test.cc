// The index of overlaps on hand-built tables: from where on an interface may overlap, and which
// interfaces of another table may.
#include "address_overlap.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/address_tables.h"

namespace ip_application::config_valid {
namespace {

using tests::Intf;

// VRF classes -----------------------------------------------------------------------------------

struct VrfCase {
  const char* name;
  const char* vrf_a;
  const char* vrf_b;
  bool shared;
};

std::ostream& operator<<(std::ostream& out, const VrfCase& c) { return out << c.name; }

const VrfCase kVrfCases[] = {
    {"Equal", "red", "red", true},
    {"Different", "red", "blue", false},
    {"Global", "global", "global", true},
    {"Mgmt", "mgmt", "mgmt", true},
    {"GlobalAndMgmt", "global", "mgmt", true},
    {"GlobalAndOther", "global", "red", false},
    {"MgmtAndOther", "mgmt", "red", false},
    {"Empty", "", "", true},
    {"EmptyIsNotGlobal", "", "global", false},
    {"EmptyIsNotMgmt", "", "mgmt", false},
    {"UpperCaseMgmtIsAnOrdinaryName", "MGMT", "global", false},
    {"UpperCaseMgmtEqual", "MGMT", "MGMT", true},
    {"CapitalGlobalIsAnOrdinaryName", "Global", "mgmt", false},
    {"CaseCounts", "Global", "global", false},
    {"BeginningIsNotEnough", "mgmt1", "global", false},
    {"BlankBehind", "mgmt ", "mgmt", false},
};

class AddressSpace : public testing::TestWithParam<VrfCase> {};

TEST_P(AddressSpace, IsTheSameForBothVrfs) {
  const VrfCase& c = GetParam();
  EXPECT_EQ(ShareAddressSpace(c.vrf_a, c.vrf_b), c.shared);
  EXPECT_EQ(ShareAddressSpace(c.vrf_b, c.vrf_a), c.shared);
}

TEST_P(AddressSpace, SeparatesWhatCannotOverlap) {
  const VrfCase& c = GetParam();
  const std::vector<Interface> interfaces = {Intf("l3 1", c.vrf_a, {"10.0.0.1/24"}),
                                             Intf("l3 2", c.vrf_b, {"10.0.0.2/24"})};
  const AddressOverlap<nettypes::IPv4AddrMask> overlap(interfaces);
  EXPECT_EQ(overlap.MayOverlapLater(0), c.shared);
  const AddressOverlap<nettypes::IPv4AddrMask> first({interfaces[0]});
  EXPECT_EQ(first.MayOverlap(interfaces[1]), c.shared);
}

template <typename Case>
std::string CaseName(const testing::TestParamInfo<Case>& row) {
  return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Vrfs, AddressSpace, testing::ValuesIn(kVrfCases), CaseName<VrfCase>);

// Within a table --------------------------------------------------------------------------------

constexpr int kNone = -1;

// Interface i has addresses[i] and is in the VRF "red".
struct TableCase {
  const char* name;
  std::vector<std::vector<std::string>> addresses;
  int first_overlapping;
};

std::ostream& operator<<(std::ostream& out, const TableCase& c) { return out << c.name; }

const TableCase kTableCases[] = {
    {"NoInterface", {}, kNone},
    {"OneInterface", {{"10.0.0.1/24"}}, kNone},
    {"NoAddresses", {{}, {}}, kNone},
    {"Apart", {{"10.0.0.1/24"}, {"10.0.1.1/24"}}, kNone},
    {"SameSubnet", {{"10.0.0.1/24"}, {"10.0.0.2/24"}}, 0},
    {"SameAddress", {{"10.0.0.1/32"}, {"10.0.0.1/32"}}, 0},
    {"NeighbouringHosts", {{"10.0.0.1/32"}, {"10.0.0.2/32"}}, kNone},
    {"SmallerInLarger", {{"10.0.0.1/8"}, {"10.1.2.3/24"}}, 0},
    {"LargerBehind", {{"10.1.2.3/24"}, {"10.0.0.1/8"}}, 0},
    {"LastAddressOfLarger", {{"10.0.0.1/24"}, {"10.0.0.255/32"}}, 0},
    {"OneBehindLarger", {{"10.0.0.1/24"}, {"10.0.1.0/32"}}, kNone},
    {"FirstAddressOfLarger", {{"10.0.1.9/24"}, {"10.0.1.0/32"}}, 0},
    {"OneBeforeLarger", {{"10.0.1.9/24"}, {"10.0.0.255/32"}}, kNone},
    {"HostBitsPlayNoPart", {{"10.0.0.255/24"}, {"10.0.0.0/24"}}, 0},
    {"Length0MeetsEverything", {{"203.0.113.1/32"}, {"0.0.0.1/0"}}, 0},
    {"Length0MeetsTheLastAddress", {{"0.0.0.1/0"}, {"255.255.255.255/32"}}, 0},
    {"Length0Alone", {{"0.0.0.0/0"}}, kNone},
    {"BothHalves", {{"10.0.0.1/1"}, {"192.0.2.1/1"}}, kNone},
    {"ThreeLevelsInnermostOfAnother", {{"10.0.0.1/8", "10.1.0.1/16"}, {"10.1.1.1/24"}}, 0},
    {"BehindANestedOneInTheLargest", {{"10.0.0.1/8"}, {"10.1.1.1/24"}, {"10.255.0.1/16"}}, 0},
    {"OnlyTheLargestHoldsTheLast", {{"10.1.1.1/24"}, {"10.0.0.1/8"}, {"10.9.0.1/16"}}, 0},
    {"OwnOverlapsDoNotCount", {{"10.0.0.1/24", "10.0.0.2/24"}, {"10.0.1.1/24"}}, kNone},
    {"OwnNestedOnesDoNotCount", {{"10.0.0.1/8", "10.1.0.1/16", "10.1.1.1/24"}, {}}, kNone},
    {"OwnOverlapAndAnother", {{}, {"10.0.0.1/24", "10.0.0.2/24"}, {"10.0.0.3/32"}}, 1},
    {"SmallestOwnerNotFirstAddress",
     {{"10.2.0.1/24"}, {"10.9.0.1/24"}, {"10.0.0.1/24"}, {"10.0.0.2/24"}, {"10.9.0.2/24"}},
     1},
    {"SmallestOwnerIsInTheMiddleOfItsComponent",
     {{"10.200.0.1/24"}, {"10.1.5.1/24"}, {"10.1.0.1/16"}, {"10.1.1.1/24"}},
     1},
    {"LastTwo", {{"10.0.0.1/24"}, {"10.0.1.1/24"}, {"10.0.2.1/24"}, {"10.0.2.2/24"}}, 2},
    {"OwnerComesAgainAfterAnother", {{"10.0.0.1/32", "10.0.0.3/32"}, {"10.0.0.2/32"}}, kNone},
    {"OwnerComesAgainAroundAnother", {{"10.0.0.0/24", "10.0.0.3/32"}, {"10.0.0.2/32"}}, 0},
    {"Ipv6Apart", {{"2001:db8:0:1::1/64"}, {"2001:db8:0:2::1/64"}}, kNone},
    {"Ipv6SameSubnet", {{"2001:db8::1/64"}, {"2001:db8::2/64"}}, 0},
    {"Ipv6SmallerInLarger", {{"2001:db8::1/32"}, {"2001:db8:ffff:ffff::1/64"}}, 0},
    {"Ipv6LastOfTheUpperHalf", {{"2001:db8::/63"}, {"2001:db8:0:1:ffff:ffff:ffff:ffff/128"}}, 0},
    {"Ipv6OneBehindTheUpperHalf", {{"2001:db8::/63"}, {"2001:db8:0:2::/128"}}, kNone},
    {"Ipv6Length64", {{"2001:db8::/64"}, {"2001:db8::ffff:ffff:ffff:ffff/128"}}, 0},
    {"Ipv6OneBehindLength64", {{"2001:db8::/64"}, {"2001:db8:0:1::/128"}}, kNone},
    {"Ipv6Length65", {{"2001:db8::/65"}, {"2001:db8::7fff:ffff:ffff:ffff/128"}}, 0},
    {"Ipv6OneBehindLength65", {{"2001:db8::/65"}, {"2001:db8::8000:0:0:0/128"}}, kNone},
    {"Ipv6NeighbouringHosts", {{"2001:db8::1/128"}, {"2001:db8::2/128"}}, kNone},
    {"Ipv6SameHost", {{"2001:db8::1/128"}, {"2001:db8::1/128"}}, 0},
    {"Ipv6Length0MeetsEverything", {{"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/128"}, {"::1/0"}}, 0},
    {"Ipv6OwnOverlapsDoNotCount", {{"2001:db8::1/64", "2001:db8::2/64"}, {}}, kNone},
    {"FamiliesDoNotMeet", {{"10.0.0.1/8"}, {"::10.0.0.1/128"}}, kNone},
};

std::vector<Interface> Table(const TableCase& c) {
  std::vector<Interface> interfaces;
  for (const std::vector<std::string>& addresses : c.addresses) {
    interfaces.push_back(Intf("l3 " + std::to_string(interfaces.size()), "red", addresses));
  }
  return interfaces;
}

// The first position for which MayOverlapLater is true.
template <typename AddrMask>
int FirstOverlapping(const std::vector<Interface>& interfaces) {
  const AddressOverlap<AddrMask> overlap(interfaces);
  for (size_t i = 0; i < interfaces.size(); ++i) {
    if (overlap.MayOverlapLater(i)) return static_cast<int>(i);
  }
  return kNone;
}

class WithinTable : public testing::TestWithParam<TableCase> {};

TEST_P(WithinTable, FindsTheFirstInterfaceThatOverlaps) {
  const std::vector<Interface> interfaces = Table(GetParam());
  const int ipv4 = FirstOverlapping<nettypes::IPv4AddrMask>(interfaces);
  const int ipv6 = FirstOverlapping<nettypes::IPv6AddrMask>(interfaces);
  EXPECT_EQ(ipv4 == kNone ? ipv6 : ipv4, GetParam().first_overlapping);
  EXPECT_TRUE(ipv4 == kNone || ipv6 == kNone);
}

INSTANTIATE_TEST_SUITE_P(Tables, WithinTable, testing::ValuesIn(kTableCases), CaseName<TableCase>);

// More than a handful of addresses of every length, in every order of two halves.
TEST(WithinTable, FindsOnePairAmongMany) {
  for (const unsigned changed : {0u, 1u, 511u, 998u}) {
    std::vector<Interface> interfaces;
    for (unsigned i = 0; i < 1000; ++i) {
      const unsigned mixed = i * 617 % 1000;
      interfaces.push_back(Intf(
          "l3 " + std::to_string(i), "red",
          {"10." + std::to_string(mixed / 250) + "." + std::to_string(mixed % 250) + ".1/24"}));
    }
    EXPECT_EQ(FirstOverlapping<nettypes::IPv4AddrMask>(interfaces), kNone);
    interfaces.back().ipv4_addr_list = interfaces[changed].ipv4_addr_list;
    EXPECT_EQ(FirstOverlapping<nettypes::IPv4AddrMask>(interfaces), static_cast<int>(changed));
  }
}

// Addresses close together beside one far away, so that most have the leading bits in common.
TEST(WithinTable, FindsOnePairInACrowd) {
  const auto host = [](const char* ipv4, const char* ipv6, unsigned number) {
    return std::vector{
        ipv4 + std::to_string(number / 256) + "." + std::to_string(number % 256) + "/32",
        ipv6 + std::to_string(number) + "/128"};
  };
  for (const unsigned changed : {0u, 1u, 511u, 998u}) {
    std::vector<Interface> interfaces;
    for (unsigned i = 0; i < 1000; ++i) {
      interfaces.push_back(
          Intf("l3 " + std::to_string(i), "red", host("10.0.", "2001:db8::", i * 617 % 1000)));
    }
    interfaces.push_back(Intf("l3 far", "red", host("203.0.", "ffff::", 113)));
    EXPECT_EQ(FirstOverlapping<nettypes::IPv4AddrMask>(interfaces), kNone);
    EXPECT_EQ(FirstOverlapping<nettypes::IPv6AddrMask>(interfaces), kNone);
    interfaces[999] = interfaces[changed];
    EXPECT_EQ(FirstOverlapping<nettypes::IPv4AddrMask>(interfaces), static_cast<int>(changed));
    EXPECT_EQ(FirstOverlapping<nettypes::IPv6AddrMask>(interfaces), static_cast<int>(changed));
  }
}

// Across tables ---------------------------------------------------------------------------------

struct OtherCase {
  const char* name;
  std::vector<std::string> own;
  std::string other;
  bool may_overlap;
};

std::ostream& operator<<(std::ostream& out, const OtherCase& c) { return out << c.name; }

const OtherCase kOtherCases[] = {
    {"EmptyTable", {}, "10.0.0.1/24", false},
    {"BeforeAll", {"10.1.0.1/24"}, "10.0.255.255/32", false},
    {"FirstAddress", {"10.1.0.1/24"}, "10.1.0.0/32", true},
    {"LastAddress", {"10.1.0.1/24"}, "10.1.0.255/32", true},
    {"BehindAll", {"10.1.0.1/24"}, "10.1.1.0/32", false},
    {"BetweenTwo", {"10.1.0.1/24", "10.3.0.1/24"}, "10.2.0.1/24", false},
    {"AroundOne", {"10.1.0.1/24"}, "10.0.0.1/8", true},
    {"AroundSeveral", {"10.1.0.1/24", "10.3.0.1/24"}, "10.0.0.1/8", true},
    {"OnlyTheFirstOfSeveral", {"10.1.0.1/24", "10.3.0.1/24"}, "10.1.0.1/16", true},
    {"OnlyTheLastOfSeveral", {"10.1.0.1/24", "10.3.0.1/24"}, "10.3.0.1/16", true},
    {"InTheLargestBehindANestedOne", {"10.0.0.1/8", "10.1.0.1/16"}, "10.9.9.9/32", true},
    {"Length0InTheTable", {"0.0.0.1/0"}, "255.255.255.255/32", true},
    {"Length0InTheOther", {"255.255.255.255/32"}, "0.0.0.1/0", true},
    {"Ipv6LastAddress", {"2001:db8::1/64"}, "2001:db8::ffff:ffff:ffff:ffff/128", true},
    {"Ipv6Behind", {"2001:db8::1/64"}, "2001:db8:0:1::/128", false},
    {"Ipv6Before", {"2001:db8:0:1::1/64"}, "2001:db8::ffff:ffff:ffff:ffff/128", false},
    {"Ipv6Around", {"2001:db8::1/64"}, "::1/0", true},
    {"OtherFamily", {"10.0.0.1/8"}, "::1/0", false},
};

class AcrossTables : public testing::TestWithParam<OtherCase> {};

TEST_P(AcrossTables, TellsWhetherOneMayOverlap) {
  const OtherCase& c = GetParam();
  const std::vector<Interface> table = {Intf("l3 1", "red", c.own)};
  const Interface other = Intf("loopback 0", "red", {c.other});
  EXPECT_EQ(AddressOverlap<nettypes::IPv4AddrMask>(table).MayOverlap(other) ||
                AddressOverlap<nettypes::IPv6AddrMask>(table).MayOverlap(other),
            c.may_overlap);
}

TEST_P(AcrossTables, NeverInAnotherAddressSpace) {
  const OtherCase& c = GetParam();
  const std::vector<Interface> table = {Intf("l3 1", "red", c.own)};
  const Interface other = Intf("loopback 0", "blue", {c.other});
  EXPECT_FALSE(AddressOverlap<nettypes::IPv4AddrMask>(table).MayOverlap(other));
  EXPECT_FALSE(AddressOverlap<nettypes::IPv6AddrMask>(table).MayOverlap(other));
}

INSTANTIATE_TEST_SUITE_P(Others, AcrossTables, testing::ValuesIn(kOtherCases), CaseName<OtherCase>);

TEST(AcrossTables, LooksAtEveryAddressOfTheOther) {
  const std::vector<Interface> table = {Intf("l3 1", "red", {"10.1.0.1/24"})};
  const AddressOverlap<nettypes::IPv4AddrMask> overlap(table);
  EXPECT_TRUE(overlap.MayOverlap(Intf("mgmt 0", "red", {"10.0.0.1/24", "10.1.0.9/32"})));
  EXPECT_FALSE(overlap.MayOverlap(Intf("mgmt 0", "red", {"10.0.0.1/24", "10.2.0.9/32"})));
  EXPECT_FALSE(overlap.MayOverlap(Intf("mgmt 0", "red", {})));
}

// The neighbours of an address in the index may be those of another address space.
TEST(AcrossTables, KeepsAddressSpacesApart) {
  const std::vector<Interface> table = {Intf("l3 1", "red", {"10.1.0.1/24"}),
                                        Intf("l3 2", "blue", {"10.5.0.1/24"}),
                                        Intf("l3 3", "global", {"10.3.0.1/24"})};
  const AddressOverlap<nettypes::IPv4AddrMask> overlap(table);
  const char* const vrfs[] = {"red", "blue", "mgmt"};
  const char* const addresses[] = {"10.1.0.9/32", "10.5.0.9/32", "10.3.0.9/32"};
  for (int vrf = 0; vrf < 3; ++vrf) {
    for (int address = 0; address < 3; ++address) {
      EXPECT_EQ(overlap.MayOverlap(Intf("mgmt 0", vrfs[vrf], {addresses[address]})), vrf == address)
          << vrfs[vrf] << " " << addresses[address];
    }
  }
}

// Also on a table with overlaps of its own the answer is exact.
TEST(AcrossTables, OwnOverlapsPlayNoPart) {
  const std::vector<Interface> table = {Intf("l3 1", "red", {"10.1.1.1/24"}),
                                        Intf("l3 2", "red", {"10.1.0.1/16"}),
                                        Intf("l3 3", "red", {"10.1.2.1/24"})};
  const AddressOverlap<nettypes::IPv4AddrMask> overlap(table);
  EXPECT_TRUE(overlap.MayOverlap(Intf("mgmt 0", "red", {"10.1.9.9/32"})));
  EXPECT_FALSE(overlap.MayOverlap(Intf("mgmt 0", "red", {"10.2.0.0/32"})));
}

// Prefix lengths out of range -------------------------------------------------------------------

struct RangeCase {
  const char* name;
  std::string address;
  bool in_range;
};

std::ostream& operator<<(std::ostream& out, const RangeCase& c) { return out << c.name; }

const RangeCase kRangeCases[] = {
    {"Ipv4Full", "10.0.0.1/32", true},          {"Ipv4OneAbove", "10.0.0.1/33", false},
    {"Ipv4Largest", "10.0.0.1/255", false},     {"Ipv6Full", "2001:db8::1/128", true},
    {"Ipv6OneAbove", "2001:db8::1/129", false}, {"Ipv6Largest", "2001:db8::1/255", false},
};

class PrefixLength : public testing::TestWithParam<RangeCase> {};

// Out of range: no interface of the table is passed over.
TEST_P(PrefixLength, OutOfRangeInTheTable) {
  const RangeCase& c = GetParam();
  const std::vector<Interface> table = {Intf("l3 1", "red", {"192.0.2.1/32", "2001:db8:1::1/128"}),
                                        Intf("l3 2", "blue", {c.address}), Intf("l3 3", "red", {})};
  const Interface other = Intf("mgmt 0", "green", {"203.0.113.1/32", "2001:db8:2::1/128"});
  const AddressOverlap<nettypes::IPv4AddrMask> ipv4(table);
  const AddressOverlap<nettypes::IPv6AddrMask> ipv6(table);
  for (size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(ipv4.MayOverlapLater(i) || ipv6.MayOverlapLater(i), !c.in_range) << i;
  }
  EXPECT_EQ(ipv4.MayOverlap(other) || ipv6.MayOverlap(other), !c.in_range);
}

// Out of range: this interface of the other table is not passed over.
TEST_P(PrefixLength, OutOfRangeInTheOther) {
  const RangeCase& c = GetParam();
  const std::vector<Interface> table = {Intf("l3 1", "red", {"192.0.2.1/32", "2001:db8:1::1/128"})};
  const Interface other = Intf("mgmt 0", "red", {c.address});
  EXPECT_EQ(AddressOverlap<nettypes::IPv4AddrMask>(table).MayOverlap(other) ||
                AddressOverlap<nettypes::IPv6AddrMask>(table).MayOverlap(other),
            !c.in_range);
}

INSTANTIATE_TEST_SUITE_P(Lengths, PrefixLength, testing::ValuesIn(kRangeCases),
                         CaseName<RangeCase>);

}  // namespace
}  // namespace ip_application::config_valid
