#include "vrfid/vrfid.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct ComponentCase {
  const char* name;
  uint32_t component;
  uint32_t vrf;
};

std::ostream& operator<<(std::ostream& out, const ComponentCase& c) {
  return out << c.name << ": component " << c.component;
}

const ComponentCase kComponentCases[] = {
    {"Zero", 0, 0},
    {"One", 1, 1},
    {"SomeVrf", 4711, 4711},
    {"LargestPositiveInt", 0x7fffffff, 0x7fffffff},
    {"SignBit", 0x80000000, 0x80000000},
    {"Largest", 0xffffffff, 0xffffffff},
};

class IdVrf : public testing::TestWithParam<ComponentCase> {};

TEST_P(IdVrf, IsTheComponentItself) {
  EXPECT_EQ(IdVrfFromComponent(GetParam().component), GetParam().vrf);
}

INSTANTIATE_TEST_SUITE_P(Components, IdVrf, testing::ValuesIn(kComponentCases),
                         [](const auto& row) { return row.param.name; });

}  // namespace
