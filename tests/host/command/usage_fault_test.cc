// The first fault of a command line, on a small program with options of every kind.
#include "usage_fault.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace ipvald {
namespace {

using Words = std::vector<std::string>;

// With a command that takes a file, and one that takes none.
std::string FaultIn(const Words& words) {
  CLI::App app("", "program");
  app.set_help_flag("--help,-h");
  app.set_version_flag("--version", "1");
  std::string file;
  CLI::App* check = app.add_subcommand("check");
  check->add_option("FILE,--candidate", file);
  check->add_option("--running", file)->type_name("FILE");
  check->add_option("--level", file)->type_name("WORD");
  check->add_flag("--trace");
  CLI::App* points = app.add_subcommand("points");
  points->add_option("--format", file)->type_name("WORD");
  return FindUsageFault(app, words);
}

struct FaultCase {
  const char* name;
  Words words;
  std::string fault;
};

std::ostream& operator<<(std::ostream& out, const FaultCase& row) { return out << row.name; }

const char kNoCommand[] = ": a command is required, check or points";

const FaultCase kFaults[] = {
    {"NoWords", {}, "a command is required: check or points"},
    {"CommandAlone", {"check"}, ""},
    {"EmptyCommand", {""}, std::string("unknown command \"\"") + kNoCommand},
    {"BlankCommand", {" \n"}, std::string("unknown command \"\"") + kNoCommand},
    {"OneDash", {"-"}, std::string("unknown command -") + kNoCommand},
    {"NearCommand", {"point"}, "unknown command point: did you mean points?"},
    {"CommandOnTwoLines", {"che\nck"}, "unknown command che ck: did you mean check?"},
    {"HelpFirst", {"--help", "--nothing"}, ""},
    {"ShortHelpFirst", {"-h"}, ""},
    {"VersionFirst", {"--version"}, ""},
    {"UnknownFirst", {"--nothing", "check"}, "unknown option --nothing"},
    {"TerminatorFirst", {"--", "check"}, "unknown option --"},
    {"OptionOfTheFirstCommandFirst",
     {"--level=a", "points"},
     "--level stands before the command, but belongs behind it: check --level"},
    {"OptionOfTheSecondCommandFirst",
     {"--format"},
     "--format stands before the command, but belongs behind it: points --format"},
    {"OptionNearThatOfACommandFirst",
     {"--levle", "check"},
     "unknown option --levle: did you mean --level?"},
    {"EveryOptionOnce", {"check", "--running", "a", "--level=b", "--trace", "c"}, ""},
    {"FlagTwice", {"check", "--trace", "--trace"}, ""},
    {"OptionTwice", {"check", "--level", "a", "--level", "b"}, "--level is given twice"},
    {"OptionTwiceInTwoForms", {"check", "--level=a", "--level", "b"}, "--level is given twice"},
    {"OtherCommandsOption", {"check", "--format"}, "unknown option --format"},
    {"UnknownWithAValue", {"check", "--lavel=a"}, "unknown option --lavel: did you mean --level?"},
    {"NoValueAtTheEnd", {"check", "--level"}, "--level lacks its WORD"},
    {"NoValueBehindTheSign", {"check", "--level="}, "--level lacks its WORD"},
    {"OptionInPlaceOfAValue", {"check", "--level", "--trace"}, "--level lacks its WORD"},
    {"OptionWithAValueInPlaceOfAValue",
     {"check", "--level", "--running=a"},
     "--level lacks its WORD"},
    {"OptionOfTheOtherCommandAsAValue", {"check", "--level", "--format"}, ""},
    {"OptionAsAValueBehindTheSign", {"check", "--level=--trace"}, ""},
    {"EmptyValue", {"check", "--level", ""}, ""},
    {"DashAsAValue", {"check", "--level", "-"}, ""},
    {"FileByItsOptionWithoutName", {"check", "--candidate"}, "--candidate lacks its FILE"},
    {"EmptyFile", {"check", ""}, ""},
    {"DashAsAFile", {"check", "-"}, ""},
    {"TwoFiles",
     {"check", "a", "b"},
     "b is one FILE too many; the configuration before a change is given by --running FILE"},
    {"TwoFilesBesideRunning", {"check", "--running", "r", "a", "b"}, "b is one FILE too many"},
    {"SecondFileOnTwoLines", {"check", "--running", "r", "a", "b\nc"}, "b c is one FILE too many"},
    {"SecondFileIsBlank", {"check", "--running", "r", "a", " "}, "\"\" is one FILE too many"},
    {"FileWhereThereIsNone", {"points", "a"}, "points takes no FILE: a"},
    {"OptionsBehindTheTerminatorAreFiles", {"check", "--", "--nothing"}, ""},
    {"SecondTerminatorIsAFile",
     {"check", "--running", "r", "--", "a", "--"},
     "-- is one FILE too many"},
    {"HelpBehindTheTerminatorIsAFile",
     {"check", "--running", "r", "a", "--", "-h"},
     "-h is one FILE too many"},
    {"HelpBehindAFault", {"check", "--nothing", "--help"}, ""},
    {"ShortHelpBehindAFault", {"points", "a", "-h"}, ""},
    {"HelpInPlaceOfAValue", {"check", "--level", "--help"}, ""},
    {"FirstOfTwo", {"check", "--nothing", "--level"}, "unknown option --nothing"},
    {"FirstOfTwoInTheOtherOrder",
     {"check", "--level", "--trace", "--nothing"},
     "--level lacks its WORD"},
};

class Fault : public testing::TestWithParam<FaultCase> {};

TEST_P(Fault, IsTheFirst) { EXPECT_EQ(FaultIn(GetParam().words), GetParam().fault); }

INSTANTIATE_TEST_SUITE_P(CommandLines, Fault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
