// Which characters do not get into a line, and where a long text is cut.
#include "one_line.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace ipvald {
namespace {

using std::string_literals::operator""s;

struct LineCase {
  const char* name;
  std::string text;
  std::string line;
};

std::ostream& operator<<(std::ostream& out, const LineCase& row) { return out << row.name; }

const LineCase kLines[] = {
    {"OnlyBlanks", " \t\r\n\v\f", ""},
    {"NulByte", "a\0b"s, "a b"},
    {"LastControlAndFirstCharacter", "a\x1f!b", "a !b"},
    {"LastAsciiCharacterAndDelete", "a~\x7fz", "a~ z"},
    {"OneBlankForAMixedRun", "a \xc2\x85\t\xe2\x80\xae\n b", "a b"},
    {"SteeringAtTheEnds", "\xe2\x80\x8e\xc2\x9b a\xe2\x81\xa9", "a"},
    {"BeforeTheMarks", "a\xe2\x80\x8d z", "a\xe2\x80\x8d z"},
    {"FirstMark", "a\xe2\x80\x8ez", "a z"},
    {"LastMark", "a\xe2\x80\x8fz", "a z"},
    {"BehindTheMarks", "a\xe2\x80\x90z", "a\xe2\x80\x90z"},
    {"FirstEmbedding", "a\xe2\x80\xaaz", "a z"},
    {"LastEmbedding", "a\xe2\x80\xaez", "a z"},
    {"BehindTheEmbeddings", "a\xe2\x80\xafz", "a\xe2\x80\xafz"},
    {"BeforeTheIsolates", "a\xe2\x81\xa5z", "a\xe2\x81\xa5z"},
    {"LastIsolate", "a\xe2\x81\xa9z", "a z"},
    {"BehindTheIsolates", "a\xe2\x81\xaaz", "a\xe2\x81\xaaz"},
    {"OtherCharacterThatEndsLikeAMark", "a\xe3\x80\x8ez", "a\xe3\x80\x8ez"},
    {"ControlCharacterWithoutItsSecondByte", "a\xc2", "a\xc2"},
    {"MarkWithoutItsLastByte", "a\xe2\x80", "a\xe2\x80"},
    {"BlanksBehindTheLongest", std::string(500, 'x') + " \n\xc2\x80", std::string(500, 'x')},
    {"WordBehindTheLongest", std::string(500, 'x') + " y", std::string(500, 'x') + "..."},
    {"BlanksDoNotCount", std::string(600, ' ') + std::string(500, 'x'), std::string(500, 'x')},
    {"RunsCountAsOneBlank", std::string(250, 'x') + "\n\n" + std::string(249, 'y'),
     std::string(250, 'x') + " " + std::string(249, 'y')},
    {"CutBeforeAFourByteCharacter", std::string(500, 'x') + "\xf0\x9f\x98\x80",
     std::string(500, 'x') + "..."},
};

class Line : public testing::TestWithParam<LineCase> {};

TEST_P(Line, HoldsNoControls) { EXPECT_EQ(OneLine(GetParam().text), GetParam().line); }

INSTANTIATE_TEST_SUITE_P(Texts, Line, testing::ValuesIn(kLines),
                         [](const auto& row) { return std::string(row.param.name); });

struct CutCase {
  const char* name;
  std::string text;
  size_t max;
  std::string cut;
};

std::ostream& operator<<(std::ostream& out, const CutCase& row) { return out << row.name; }

const CutCase kCuts[] = {
    {"EmptyToNothing", "", 0, ""},
    {"SomethingToNothing", "a", 0, "..."},
    {"Shorter", "ab", 3, "ab"},
    {"AsLong", "abc", 3, "abc"},
    {"OneLonger", "abcd", 3, "abc..."},
    {"ControlsStay", "a\n\x1b[", 3, "a\n\x1b..."},
    {"NulBytesCount", "a\0bc"s, 3, "a\0b..."s},
    {"BehindACharacter", "a\xc3\xa4z", 3, "a\xc3\xa4..."},
    {"InATwoByteCharacter", "a\xc3\xa4z", 2, "a..."},
    {"BehindTheFirstOfThreeBytes", "a\xe2\x82\xacz", 2, "a..."},
    {"BehindTheSecondOfThreeBytes", "a\xe2\x82\xacz", 3, "a..."},
    {"BehindTheFirstOfFourBytes", "a\xf0\x9f\x98\x80z", 2, "a..."},
    {"BehindTheThirdOfFourBytes", "a\xf0\x9f\x98\x80z", 4, "a..."},
    {"BehindAllFourBytes", "a\xf0\x9f\x98\x80z", 5, "a\xf0\x9f\x98\x80..."},
    {"InTheFirstCharacter", "\xf0\x9f\x98\x80", 3, "..."},
    {"NothingButContinuations", "\x80\x80\x80", 2, "..."},
};

class CutText : public testing::TestWithParam<CutCase> {};

TEST_P(CutText, EndsBetweenCharacters) {
  EXPECT_EQ(Cut(GetParam().text, GetParam().max), GetParam().cut);
}

INSTANTIATE_TEST_SUITE_P(Texts, CutText, testing::ValuesIn(kCuts),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
