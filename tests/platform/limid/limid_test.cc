#include "limid/limid.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <ostream>
#include <set>
#include <type_traits>

namespace {

static_assert(sizeof(limid_t) == 4);
static_assert(std::is_trivially_copyable_v<limid_t> && std::is_standard_layout_v<limid_t>);

constexpr int kFirstVlan = 1;
constexpr int kLastVlan = 4094;

bool AllFourBytesAreZero(const limid_t& id) {
  const unsigned char zero[4] = {0, 0, 0, 0};
  return std::memcmp(&id, zero, sizeof(zero)) == 0;
}

struct VlanCase {
  const char* name;
  int vlan;
  bool has_identifier;  // not the zero identifier
  uint32_t ifindex;
};

std::ostream& operator<<(std::ostream& out, const VlanCase& c) {
  return out << c.name << ": vlan " << c.vlan;
}

const VlanCase kVlanCases[] = {
    {"Zero", 0, true, 1000000},
    {"FirstVlan", 1, true, 1000001},
    {"SecondVlan", 2, true, 1000002},
    {"SomeVlan", 100, true, 1000100},
    {"LastVlan", 4094, true, 1004094},
    {"ReservedVlan", 4095, true, 1004095},
    {"AboveTwelveBits", 4096, true, 1004096},
    {"Negative", -1, true, 999999},
    {"Largest", std::numeric_limits<int>::max(), true, 2148483647},
    {"Smallest", std::numeric_limits<int>::min(), true, 2148483648},
    {"TheOneNumberWithoutIdentifier", -0x10000000, false, 0},
};

class LimidOfVlan : public testing::TestWithParam<VlanCase> {};

TEST_P(LimidOfVlan, HasIdentifierAndIndex) {
  const limid_t id = limid_l3_vlan_from_components(GetParam().vlan);
  EXPECT_EQ(!AllFourBytesAreZero(id), GetParam().has_identifier);
  EXPECT_EQ(!(id == limid_t{}), GetParam().has_identifier);
  EXPECT_EQ(limid_to_ifindex(id), GetParam().ifindex);
}

INSTANTIATE_TEST_SUITE_P(Vlans, LimidOfVlan, testing::ValuesIn(kVlanCases),
                         [](const auto& row) { return row.param.name; });

TEST(Limid, ZeroInitialisedIsNoInterface) {
  const limid_t id{};
  EXPECT_TRUE(AllFourBytesAreZero(id));
  EXPECT_EQ(limid_to_ifindex(id), 0u);
}

TEST(Limid, SameVlanGivesSameIdentifier) {
  EXPECT_TRUE(limid_l3_vlan_from_components(100) == limid_l3_vlan_from_components(100));
  EXPECT_FALSE(limid_l3_vlan_from_components(100) == limid_l3_vlan_from_components(101));
}

TEST(Limid, EveryVlanHasItsOwnNonZeroIdentifierAndIndex) {
  std::set<uint32_t> identifiers;
  std::set<uint32_t> indexes;
  for (int vlan = kFirstVlan; vlan <= kLastVlan; ++vlan) {
    const limid_t id = limid_l3_vlan_from_components(vlan);
    EXPECT_FALSE(AllFourBytesAreZero(id)) << vlan;
    EXPECT_NE(limid_to_ifindex(id), 0u) << vlan;
    identifiers.insert(id.value);
    indexes.insert(limid_to_ifindex(id));
  }
  EXPECT_EQ(identifiers.size(), 4094u);
  EXPECT_EQ(indexes.size(), 4094u);
}

}  // namespace
