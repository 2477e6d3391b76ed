// What the program says about a command line that it does not understand.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "nearest_word.h"
#include "support/run_program.h"

namespace {

// A command line, its words separated by single blanks, and the message. An empty word is written
// as ''.
struct UsageCase {
  const char* name;
  std::string words;
  std::string message;  // without "ipvald: " and the end of the line
};

std::ostream& operator<<(std::ostream& out, const UsageCase& row) { return out << row.words; }

const UsageCase kUsage[] = {
    // Commands.
    {"NoCommand", "", "a command is required: check or points (see ipvald --help)"},
    {"CommandWithALetterTooFew", "chec a.json",
     "unknown command chec: did you mean check? (see ipvald --help)"},
    {"CommandWithALetterTooMany", "pointts",
     "unknown command pointts: did you mean points? (see ipvald --help)"},
    {"CommandWithAnotherLetter", "Check a.json",
     "unknown command Check: did you mean check? (see ipvald --help)"},
    {"CommandWithSwappedLetters", "pionts",
     "unknown command pionts: did you mean points? (see ipvald --help)"},
    {"FileInPlaceOfACommand", "a.json",
     "unknown command a.json: a command is required, check or points (see ipvald --help)"},
    {"AnotherCommand", "help",
     "unknown command help: a command is required, check or points (see ipvald --help)"},
    {"EmptyCommand", "''",
     "unknown command \"\": a command is required, check or points (see ipvald --help)"},
    {"StandardInputInPlaceOfACommand", "-",
     "unknown command -: a command is required, check or points (see ipvald --help)"},
    {"CommandWithControlCharacters", "che\x1b[1m\nck",
     "unknown command che [1m ck: a command is required, check or points (see ipvald --help)"},
    {"CommandTwice", "points points", "points takes no FILE: points (see ipvald points --help)"},
    {"OtherCommandBehind", "points check",
     "points takes no FILE: check (see ipvald points --help)"},
    {"TerminatorInPlaceOfACommand", "-- check a.json", "unknown option -- (see ipvald --help)"},
    // Options that are not known.
    {"OptionWithALetterTooFew", "check --runing a.json b.json",
     "unknown option --runing: did you mean --running? (see ipvald check --help)"},
    {"OptionWithALetterTooFewAndValue", "check --runing=a.json b.json",
     "unknown option --runing: did you mean --running? (see ipvald check --help)"},
    {"OptionWithALetterTooMany", "check --colour always a.json",
     "unknown option --colour: did you mean --color? (see ipvald check --help)"},
    {"OptionWithOneDash", "check -running a.json b.json",
     "unknown option -running: did you mean --running? (see ipvald check --help)"},
    {"OptionWithThreeDashes", "check ---running a.json b.json",
     "unknown option ---running: did you mean --running? (see ipvald check --help)"},
    {"OptionWithSwappedLetters", "points --fromat json",
     "unknown option --fromat: did you mean --format? (see ipvald points --help)"},
    {"OptionFarFromAll", "check --verbose a.json",
     "unknown option --verbose (see ipvald check --help)"},
    {"OptionOfOneLetter", "check -x a.json", "unknown option -x (see ipvald check --help)"},
    {"OptionOfOneLetterBesideHelp", "check -v a.json",
     "unknown option -v (see ipvald check --help)"},
    {"OptionOfCheckForPoints", "points --running a.json",
     "unknown option --running (see ipvald points --help)"},
    {"OptionBehindTheFile", "check a.json --trase",
     "unknown option --trase: did you mean --trace? (see ipvald check --help)"},
    {"OptionOfTheProgramBehindACommand", "check --version",
     "unknown option --version (see ipvald check --help)"},
    {"FirstOfSeveralFaults", "check a.json b.json --runing c.json",
     "b.json is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"OptionOfTheProgram", "--versoin",
     "unknown option --versoin: did you mean --version? (see ipvald --help)"},
    {"OptionOfTheProgramOfOneLetter", "-V", "unknown option -V (see ipvald --help)"},
    {"OptionBeforeItsCommand", "--running a.json check b.json",
     "--running stands before the command, but belongs behind it: check --running (see ipvald "
     "--help)"},
    {"OptionWithValueBeforeItsCommand", "--format=json points",
     "--format stands before the command, but belongs behind it: check --format (see ipvald "
     "--help)"},
    {"UnknownOptionBeforeTheCommand", "--runing a.json check b.json",
     "unknown option --runing: did you mean --running? (see ipvald --help)"},
    // Files.
    {"NoFile", "check", "check: FILE is required (see ipvald check --help)"},
    {"NoFileBehindRunning", "check --running a.json",
     "check: FILE is required: the candidate, beside --running (see ipvald check --help)"},
    {"NoFileBehindTheTerminator", "check --", "check: FILE is required (see ipvald check --help)"},
    {"TwoFiles", "check a.json b.json",
     "b.json is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"ThreeFiles", "check a.json b.json c.json",
     "b.json is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"TwoFilesBehindRunning", "check --running a.json b.json c.json",
     "c.json is one FILE too many (see ipvald check --help)"},
    {"TwoFilesBehindTheTerminator", "check -- a.json -b",
     "-b is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"CandidateAndFile", "check --candidate a.json b.json",
     "b.json is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"FileAndCandidate", "check a.json --candidate b.json",
     "--candidate is given twice (see ipvald check --help)"},
    {"SecondFileEmpty", "check a.json ''",
     "\"\" is one FILE too many; the configuration before a change is given by --running FILE "
     "(see ipvald check --help)"},
    {"FileForPoints", "points a.json", "points takes no FILE: a.json (see ipvald points --help)"},
    {"BothFromStandardInput", "check --running - -",
     "only one of the two configurations can be standard input (see ipvald check --help)"},
    // Values that are missing.
    {"RunningEmpty", "check --running= a.json",
     "--running lacks its FILE (see ipvald check --help)"},
    {"RunningLast", "check --running", "--running lacks its FILE (see ipvald check --help)"},
    {"RunningBeforeAnOption", "check --running --trace a.json",
     "--running lacks its FILE (see ipvald check --help)"},
    {"RunningBeforeAnOptionWithValue", "check --running --format=json a.json",
     "--running lacks its FILE (see ipvald check --help)"},
    {"CandidateLast", "check --candidate", "--candidate lacks its FILE (see ipvald check --help)"},
    {"CandidateEmpty",
     "check --candidate=", "--candidate lacks its FILE (see ipvald check --help)"},
    {"TimeoutLast", "check a.json --timeout",
     "--timeout lacks its SECONDS (see ipvald check --help)"},
    {"TimeoutEmpty", "check --timeout= a.json",
     "--timeout lacks its SECONDS (see ipvald check --help)"},
    {"FormatLast", "points --format", "--format lacks its WORD (see ipvald points --help)"},
    {"FormatEmpty", "check --format= a.json", "--format lacks its WORD (see ipvald check --help)"},
    {"ColorEmpty", "check --color= a.json", "--color lacks its WORD (see ipvald check --help)"},
    {"PluginLast", "check a.json --plugin", "--plugin lacks its SO (see ipvald check --help)"},
    {"YangLast", "points --yang", "--yang lacks its DIR (see ipvald points --help)"},
    // Values that are wrong.
    {"FormatUnknown", "check --format xml a.json",
     "--format: xml is not one of text, json (see ipvald check --help)"},
    {"FormatUnknownForPoints", "points --format=xml",
     "--format: xml is not one of text, json (see ipvald points --help)"},
    {"FormatIsTheFile", "check --format a.json",
     "--format: a.json is not one of text, json (see ipvald check --help)"},
    {"ColorUnknown", "check --color yes a.json",
     "--color: yes is not one of auto, always, never (see ipvald check --help)"},
    {"TraceWithAValue", "check --trace=maybe a.json",
     "Could not convert: --trace = maybe (see ipvald check --help)"},
    {"TimeoutBelow", "check --timeout 0 a.json",
     "--timeout: 0 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"TimeoutAbove", "check --timeout 86401 a.json",
     "--timeout: 86401 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"TimeoutNegative", "check --timeout -1 a.json",
     "--timeout: -1 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"TimeoutNotANumber", "check --timeout a.json",
     "--timeout: a.json is not a number from 1 to 86400 (see ipvald check --help)"},
    // Options twice.
    {"RunningTwice", "check --running a.json --running b.json c.json",
     "--running is given twice (see ipvald check --help)"},
    {"RunningTwiceInTwoForms", "check --running=a.json --running b.json c.json",
     "--running is given twice (see ipvald check --help)"},
    {"CandidateTwice", "check --candidate a.json --candidate b.json",
     "--candidate is given twice (see ipvald check --help)"},
    {"FormatTwice", "points --format text --format json",
     "--format is given twice (see ipvald points --help)"},
    {"TimeoutTwice", "check --timeout 1 a.json --timeout 2",
     "--timeout is given twice (see ipvald check --help)"},
};

ProgramResult Ipvald(const std::string& words) {
  std::vector<std::string> command = {IPAV_IPVALD};
  for (size_t begin = 0; begin < words.size();) {
    const size_t end = std::min(words.find(' ', begin), words.size());
    const std::string word = words.substr(begin, end - begin);
    command.push_back(word == "''" ? "" : word);
    begin = end + 1;
  }
  return RunProgram(command);
}

class Usage : public testing::TestWithParam<UsageCase> {};

TEST_P(Usage, FaultIsOneLine) {
  const ProgramResult result = Ipvald(GetParam().words);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "ipvald: " + GetParam().message + "\n");
}

INSTANTIATE_TEST_SUITE_P(CommandLines, Usage, testing::ValuesIn(kUsage),
                         [](const auto& row) { return std::string(row.param.name); });

// The end of the line is there however long a word is.
TEST(UsageFault, CutsALongWord) {
  const std::string word(100'000, 'a');
  EXPECT_EQ(Ipvald("check --" + word).err,
            "ipvald: unknown option --" + word.substr(0, 483) + "... (see ipvald check --help)\n");
}

// Command lines that look as if something were wrong with them, and the beginning of what comes of
// them.
struct GoodCase {
  const char* name;
  std::string words;
  int status;
  std::string beginning;  // of all that is printed
};

std::ostream& operator<<(std::ostream& out, const GoodCase& row) { return out << row.words; }

const GoodCase kGood[] = {
    {"HelpBehindAFault", "check --runing a b --help", 0, "Say whether the device would accept"},
    {"ShortHelp", "check -h", 0, "Say whether the device would accept"},
    {"HelpAsAWord", "--help", 0, "Tell what a device's configuration"},
    {"VersionBeforeACommand", "--version check", 0, "ipvald 0.1.0\n"},
    {"FileNamedLikeAnOption", "check -- --trace", 2, "ipvald: --trace: No such file or directory"},
    {"FileNamedLikeHelp", "check -- -h", 2, "ipvald: -h: No such file or directory"},
    {"RunningNamedLikeAnOption", "check --running=--trace a.json", 2,
     "ipvald: --trace: No such file or directory"},
    {"RunningNamedLikeNoOption", "check --running -x a.json", 2,
     "ipvald: -x: No such file or directory"},
    {"FileNamedLikeACommand", "check points", 2, "ipvald: points: No such file or directory"},
    {"ValueWithAnEqualsSign", "check --running=a=b c", 2, "ipvald: a=b: No such file or directory"},
    {"EmptyFile", "check ''", 2, "ipvald: \"\": No such file or directory"},
    {"EmptyRunning", "check --running '' a.json", 2, "ipvald: \"\": No such file or directory"},
    {"FlagTwice", "check --trace --trace /nonexistent", 2,
     "ipvald: /nonexistent: No such file or directory"},
};

class GoodUsage : public testing::TestWithParam<GoodCase> {};

TEST_P(GoodUsage, IsUnderstood) {
  const ProgramResult result = Ipvald(GetParam().words);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ((result.out + result.err).substr(0, GetParam().beginning.size()), GetParam().beginning);
}

INSTANTIATE_TEST_SUITE_P(CommandLines, GoodUsage, testing::ValuesIn(kGood),
                         [](const auto& row) { return std::string(row.param.name); });

struct NearestCase {
  const char* name;
  std::string typed;
  std::vector<std::string> known;
  std::string nearest;
};

std::ostream& operator<<(std::ostream& out, const NearestCase& row) { return out << row.name; }

const NearestCase kNearest[] = {
    {"Same", "check", {"points", "check"}, "check"},
    {"OneMissing", "chck", {"check"}, "check"},
    {"OneMore", "checkk", {"check"}, "check"},
    {"OneOther", "chack", {"check"}, "check"},
    {"NeighboursSwapped", "hceck", {"check"}, "check"},
    {"TwoPairsSwapped", "cehkc", {"check"}, "check"},
    {"TwoAway", "chk", {"check"}, "check"},
    {"ThreeAway", "chexxx", {"check"}, ""},
    {"ThreeAwayOfNine", "--rxnnixx", {"--running"}, "--running"},
    {"ThreeAwayOfEight", "--runxxx", {"--running"}, ""},
    {"FourAwayOfNine", "--rxnxixx", {"--running"}, ""},
    {"FirstOfEqualsOfOtherLength", "--colr", {"--cold", "--color"}, "--cold"},
    {"NearerBehindNear", "abcd", {"abxy", "abcx"}, "abcx"},
    {"FirstOfEquals", "abc", {"abx", "aby"}, "abx"},
    {"FarFromNothing", "", {"check"}, ""},
    {"TwoCharactersFromNothing", "", {"ab"}, "ab"},
    {"NothingKnown", "check", {}, ""},
};

class Nearest : public testing::TestWithParam<NearestCase> {};

TEST_P(Nearest, IsFewestErrorsAway) {
  EXPECT_EQ(ipvald::NearestWord(GetParam().typed, GetParam().known), GetParam().nearest);
}

INSTANTIATE_TEST_SUITE_P(Words, Nearest, testing::ValuesIn(kNearest),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
