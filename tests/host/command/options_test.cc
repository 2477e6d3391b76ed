// What a command line means: every default, every option, and the words for what it cannot mean.
#include "options.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace ipvald {
namespace {

using Words = std::vector<std::string>;

// `words` stand behind the program's name.
Options Parse(const Words& words) {
  std::vector<const char*> argv = {"ipvald"};
  for (const std::string& word : words) argv.push_back(word.c_str());
  return ParseOptions(static_cast<int>(argv.size()), argv.data());
}

std::string ErrorOf(const Words& words) {
  try {
    Parse(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "understood";
}

const char* NameOf(Color color) {
  if (color == Color::kAuto) return "auto";
  return color == Color::kAlways ? "always" : "never";
}

const char* NameOf(Options::Command command) {
  if (command == Options::Command::kText) return "text";
  return command == Options::Command::kCheck ? "check" : "points";
}

// All options of `check` on one line. "*" is a place in the tree of the running executable.
std::string Described(const Options& options) {
  const CheckOptions& check = options.check;
  const bool own_plugin = check.plugin == IPAV_BINARY_DIR "/lib/libip_app_validation.so";
  const bool own_yang = options.yang == IPAV_BINARY_DIR "/share/ipvald/yang";
  return std::string(NameOf(options.command)) + " " + check.candidate + " running " +
         (check.running ? *check.running : "none") + " plugin " +
         (own_plugin ? "*" : check.plugin) + " yang " + (own_yang ? "*" : options.yang) +
         " timeout " + std::to_string(check.timeout) + (check.trace ? " trace" : "") + " color " +
         NameOf(check.color) + (options.format == Format::kJson ? " json" : " text");
}

struct GoodCase {
  const char* name;
  Words words;
  std::string described;
};

std::ostream& operator<<(std::ostream& out, const GoodCase& row) { return out << row.name; }

const GoodCase kGood[] = {
    {"DefaultsOfCheck",
     {"check", "a"},
     "check a running none plugin * yang * timeout 60 color auto text"},
    {"DefaultsOfPoints",
     {"points"},
     "points  running none plugin * yang * timeout 60 color auto text"},
    {"AllOfCheck",
     {"check", "--running", "r", "--plugin", "p", "--yang", "y", "--timeout", "7", "--trace",
      "--color", "never", "--format", "json", "a"},
     "check a running r plugin p yang y timeout 7 trace color never json"},
    {"AllOfCheckBehindTheFile",
     {"check", "a", "--color=always", "--format=text", "--timeout=8", "--yang=y", "--plugin=p",
      "--running=r"},
     "check a running r plugin p yang y timeout 8 color always text"},
    {"AllOfPoints",
     {"points", "--format", "json", "--yang", "y"},
     "points  running none plugin * yang y timeout 60 color auto json"},
    {"CandidateByItsOption",
     {"check", "--candidate", "a"},
     "check a running none plugin * yang * timeout 60 color auto text"},
    {"CandidateFromStandardInput",
     {"check", "-"},
     "check - running none plugin * yang * timeout 60 color auto text"},
    {"RunningFromStandardInput",
     {"check", "--running", "-", "a"},
     "check a running - plugin * yang * timeout 60 color auto text"},
    {"StandardInputBesideAFileOfItsName",
     {"check", "--running", "./-", "-"},
     "check - running ./- plugin * yang * timeout 60 color auto text"},
    {"EmptyRunningIsAFile",
     {"check", "--running", "", "a"},
     "check a running  plugin * yang * timeout 60 color auto text"},
    {"ColorAuto",
     {"check", "--color", "auto", "a"},
     "check a running none plugin * yang * timeout 60 color auto text"},
    {"ShortestTimeout",
     {"check", "--timeout", "1", "a"},
     "check a running none plugin * yang * timeout 1 color auto text"},
    {"LongestTimeout",
     {"check", "--timeout", "86400", "a"},
     "check a running none plugin * yang * timeout 86400 color auto text"},
    {"WordBehindTheTerminator",
     {"check", "--", "--running"},
     "check --running running none plugin * yang * timeout 60 color auto text"},
};

class Good : public testing::TestWithParam<GoodCase> {};

TEST_P(Good, IsUnderstood) { EXPECT_EQ(Described(Parse(GetParam().words)), GetParam().described); }

INSTANTIATE_TEST_SUITE_P(CommandLines, Good, testing::ValuesIn(kGood),
                         [](const auto& row) { return std::string(row.param.name); });

struct TextCase {
  const char* name;
  Words words;
  std::string beginning;
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

const char kProgramHelp[] = "Tell what a device's configuration validation says";
const char kCheckHelp[] = "Say whether the device would accept a configuration";
const char kPointsHelp[] = "List the validation points of the data model";

const TextCase kTexts[] = {
    {"Version", {"--version"}, "ipvald "},
    {"Help", {"--help"}, kProgramHelp},
    {"ShortHelp", {"-h"}, kProgramHelp},
    {"HelpOfCheck", {"check", "--help"}, kCheckHelp},
    {"HelpOfCheckBehindAFile", {"check", "a", "-h"}, kCheckHelp},
    {"HelpOfPoints", {"points", "--help"}, kPointsHelp},
};

class Text : public testing::TestWithParam<TextCase> {};

TEST_P(Text, IsToBePrinted) {
  const Options options = Parse(GetParam().words);
  EXPECT_EQ(options.command, Options::Command::kText);
  EXPECT_EQ(options.text.substr(0, GetParam().beginning.size()), GetParam().beginning);
  EXPECT_EQ(options.text.back(), '\n');
}

INSTANTIATE_TEST_SUITE_P(CommandLines, Text, testing::ValuesIn(kTexts),
                         [](const auto& row) { return std::string(row.param.name); });

struct BadCase {
  const char* name;
  Words words;
  std::string error;
};

std::ostream& operator<<(std::ostream& out, const BadCase& row) { return out << row.name; }

// Of a number and of words, and of what belongs together. The rest is seen before any value is.
const BadCase kBad[] = {
    {"NothingAtAll", {}, "a command is required: check or points (see ipvald --help)"},
    {"NoFile", {"check", "--trace"}, "check: FILE is required (see ipvald check --help)"},
    {"NoFileBesideRunning",
     {"check", "--running=r"},
     "check: FILE is required: the candidate, beside --running (see ipvald check --help)"},
    {"StandardInputTwiceByItsOption",
     {"check", "--candidate=-", "--running=-"},
     "only one of the two configurations can be standard input (see ipvald check --help)"},
    {"FractionOfASecond",
     {"check", "--timeout", "1.5", "a"},
     "--timeout: 1.5 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"SecondsWithAUnit",
     {"check", "--timeout", "60s", "a"},
     "--timeout: 60s is not a number from 1 to 86400 (see ipvald check --help)"},
    {"SecondsWithASign",
     {"check", "--timeout", "+60", "a"},
     "--timeout: +60 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"SecondsInHex",
     {"check", "--timeout", "0x10", "a"},
     "--timeout: 0x10 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"SecondsPast32Bits",
     {"check", "--timeout", "4294967297", "a"},
     "--timeout: 4294967297 is not a number from 1 to 86400 (see ipvald check --help)"},
    {"FormatInUpperCase",
     {"points", "--format", "JSON"},
     "--format: JSON is not one of text, json (see ipvald points --help)"},
    {"ColorByItsBeginning",
     {"check", "--color", "alway", "a"},
     "--color: alway is not one of auto, always, never (see ipvald check --help)"},
    {"ValueOfTwoLines",
     {"check", "--format", "te\nxt", "a"},
     "--format: te xt is not one of text, json (see ipvald check --help)"},
    {"FaultBeforeAnyCommand",
     {"--trace", "check", "a"},
     "--trace stands before the command, but belongs behind it: check --trace (see ipvald --help)"},
};

class Bad : public testing::TestWithParam<BadCase> {};

TEST_P(Bad, IsToldOnOneLine) { EXPECT_EQ(ErrorOf(GetParam().words), GetParam().error); }

INSTANTIATE_TEST_SUITE_P(CommandLines, Bad, testing::ValuesIn(kBad),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CommandLineWithoutAProgram, LacksItsCommand) {
  EXPECT_THROW(ParseOptions(0, nullptr), UsageError);
}

}  // namespace
}  // namespace ipvald
