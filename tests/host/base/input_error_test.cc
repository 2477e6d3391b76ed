// How a message names a file and a line.
#include "input_error.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace ipvald {
namespace {

struct NameCase {
  const char* name;
  std::string file;
  std::string shown;
};

std::ostream& operator<<(std::ostream& out, const NameCase& row) { return out << row.name; }

const NameCase kNames[] = {
    {"StandardInput", "-", "standard input"},
    {"FileCalledLikeStandardInput", "./-", "./-"},
    {"TwoDashes", "--", "--"},
    {"NoName", "", "\"\""},
    {"Path", "/tmp/a b.json", "/tmp/a b.json"},
    {"LineEndInTheName", "a\nb:1", "a b:1"},
    {"TerminalSequenceInTheName", "\x1b[2Ja", "[2Ja"},
    {"LongName", std::string(501, 'n'), std::string(500, 'n') + "..."},
};

class FileName : public testing::TestWithParam<NameCase> {};

TEST_P(FileName, IsOnOneLine) { EXPECT_EQ(DisplayName(GetParam().file), GetParam().shown); }

INSTANTIATE_TEST_SUITE_P(Files, FileName, testing::ValuesIn(kNames),
                         [](const auto& row) { return std::string(row.param.name); });

struct ErrorCase {
  const char* name;
  size_t line;
  std::string message;
  std::string what;
};

std::ostream& operator<<(std::ostream& out, const ErrorCase& row) { return out << row.name; }

const ErrorCase kErrors[] = {
    {"NoLine", 0, "message", "name: message"},
    {"FirstLine", 1, "message", "name:1: message"},
    {"FarLine", 4294967296, "message", "name:4294967296: message"},
    {"MessageOfTwoLines", 2, "first\nsecond\n", "name:2: first second"},
    {"LongMessage", 3, std::string(501, 'm'), "name:3: " + std::string(500, 'm') + "..."},
    {"EmptyMessage", 4, "", "name:4: "},
};

class Located : public testing::TestWithParam<ErrorCase> {};

TEST_P(Located, TellsThePlaceFirst) {
  EXPECT_EQ(LocatedError("name", GetParam().line, GetParam().message).what(), GetParam().what);
}

INSTANTIATE_TEST_SUITE_P(Messages, Located, testing::ValuesIn(kErrors),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ipvald
