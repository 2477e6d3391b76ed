// How far a word may be away and is still taken for another one.
#include "nearest_word.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace ipvald {
namespace {

struct WordCase {
  const char* name;
  std::string typed;
  std::vector<std::string> known;
  std::string nearest;
};

std::ostream& operator<<(std::ostream& out, const WordCase& row) { return out << row.name; }

const WordCase kWords[] = {
    {"OneCharacterBySwapAtTheEnd", "chekc", {"check"}, "check"},
    {"TwoMissing", "ceck", {"xcheckx", "checkk"}, "checkk"},
    {"TwoMore", "xcheckx", {"check"}, "check"},
    {"ThreeMore", "xcheckxx", {"check"}, ""},
    {"ThreeMissing", "xy", {"axbyc"}, ""},
    {"SwapAndOneMore", "hceckk", {"check"}, "check"},
    {"SwapAndTwoMore", "hceckkk", {"check"}, ""},
    {"OtherCase", "CHeck", {"check"}, "check"},
    {"FourAwayOfEleven", "xxxxefghijk", {"abcdefghijk"}, ""},
    {"FourAwayOfTwelve", "xxxxefghijkl", {"abcdefghijkl"}, "abcdefghijkl"},
    {"FiveAwayOfTwelve", "xxxxxfghijkl", {"abcdefghijkl"}, ""},
    // The third is of what was typed, not of what is known.
    {"ThreeAwayOfEightToEleven", "abcdefgh", {"abcdefghijk"}, ""},
    {"ThreeAwayOfNineToSix", "abcdefghi", {"abcdef"}, "abcdef"},
    {"ExactBehindNear", "points", {"point", "points"}, "points"},
    {"FirstOfEqualsAtTheLimit", "abcd", {"abxy", "xycd"}, "abxy"},
    {"SameWordTwice", "points", {"points", "points"}, "points"},
};

class Word : public testing::TestWithParam<WordCase> {};

TEST_P(Word, IsNotFarAway) {
  EXPECT_EQ(NearestWord(GetParam().typed, GetParam().known), GetParam().nearest);
}

INSTANTIATE_TEST_SUITE_P(Typed, Word, testing::ValuesIn(kWords),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
