// docs/checks.md against the program and the sources: each example gives exactly the message beside
// it, and the plug-in has no message without a row.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "message_table.h"
#include "source_messages.h"
#include "store/schema.h"
#include "support/data_model.h"
#include "support/run_program.h"

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

const fs::path kSourceDir = IPAV_SOURCE_DIR;

std::string TextOf(const fs::path& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  return {std::istreambuf_iterator<char>(stream), {}};
}

const MessageTable& Table() {
  static const MessageTable table = ReadMessageTable(TextOf(kSourceDir / "docs/checks.md"));
  return table;
}

// Every expression of the plug-in that makes a message.
const std::vector<SourceMessage>& SourceMessages() {
  static const std::vector<SourceMessage> messages = [] {
    std::vector<SourceMessage> all;
    for (const auto& entry : fs::directory_iterator(kSourceDir / "src/lib")) {
      const std::string file = entry.path().filename();
      if (!file.ends_with(".cc") && !file.ends_with(".h")) continue;
      for (const SourceMessage& message : CollectMessages(file, TextOf(entry.path()))) {
        all.push_back(message);
      }
    }
    return all;
  }();
  return messages;
}

// Those that no row shows, as texts.
std::vector<std::string> SourceMessagesWithoutRow(const MessageTable& table) {
  std::vector<std::string> without;
  for (const SourceMessage& message : SourceMessages()) {
    const auto shows = [&message](const auto& row) { return IsMadeBy(message, row.message); };
    if (std::any_of(table.messages.begin(), table.messages.end(), shows) ||
        std::any_of(table.unshown.begin(), table.unshown.end(), shows)) {
      continue;
    }
    without.push_back(testing::PrintToString(message));
  }
  return without;
}

struct CaseMessage {
  fs::path file;
  std::string point;
  std::string text;
};

// What the case files say.
const std::vector<CaseMessage>& CaseMessages() {
  static const std::vector<CaseMessage> messages = [] {
    std::vector<CaseMessage> all;
    for (const auto& entry : fs::recursive_directory_iterator(kSourceDir / "tests/cases")) {
      const fs::path& file = entry.path();
      if (file.extension() != ".txt" || file.filename() == "CMakeLists.txt") continue;
      std::string text = TextOf(file);
      text.pop_back();  // the line end
      all.push_back({file, file.parent_path().filename(), text});
    }
    return all;
  }();
  return messages;
}

// Case files with a message that their point has no row for.
std::vector<std::string> CasesWithoutRow(const MessageTable& table) {
  std::vector<std::string> without;
  for (const CaseMessage& message : CaseMessages()) {
    const auto fits = [&message](const MessageRow& row) {
      return row.point == message.point && Matches(row.message, message.text);
    };
    if (std::none_of(table.messages.begin(), table.messages.end(), fits)) {
      without.push_back(message.file);
    }
  }
  return without;
}

// The value behind a label of ipvald's output, or nothing but the line itself.
std::string Value(const std::string& line, const std::string& label) {
  const size_t value = line.find_first_not_of(' ', label.size() + 1);
  return line.starts_with(label + ":") && value != std::string::npos ? line.substr(value) : line;
}

class Example : public testing::TestWithParam<MessageRow> {};

TEST_P(Example, GivesExactlyItsMessage) {
  const MessageRow& row = GetParam();
  ASSERT_GE(row.command.size(), 3u);
  ASSERT_EQ(row.command[0], "ipvald");
  ASSERT_EQ(row.command[1], "check");
  std::vector<std::string> command = row.command;
  command[0] = IPAV_IPVALD;
  fs::current_path(kSourceDir);  // the commands are for the top of the checkout
  const ProgramResult result = RunProgram(command);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "");

  std::istringstream stream(result.out);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), 4u) << result.out;
  EXPECT_EQ(lines[0], "rejected");
  EXPECT_EQ(Value(lines[1], "point"), row.point);
  const std::string message = Value(lines[3], "message");
  EXPECT_TRUE(Matches(row.message, message)) << "expected " << row.message << "\n"
                                             << "got      " << message;
}

std::string RowName(const testing::TestParamInfo<MessageRow>& row) {
  return row.param.point + "_line_" + std::to_string(row.param.line);
}

INSTANTIATE_TEST_SUITE_P(Rows, Example, testing::ValuesIn(Table().messages), RowName);

// A test of the project that has the text and the name that the document gives.
TEST(UnshownText, IsInTheTestThatIsNamed) {
  EXPECT_FALSE(Table().unshown.empty());
  for (const UnshownRow& row : Table().unshown) {
    SCOPED_TRACE(testing::PrintToString(row));
    const std::string source = TextOf(kSourceDir / row.file);
    EXPECT_NE(source.find("\"" + row.message + "\""), std::string::npos);
    const std::string suite = row.test.substr(0, row.test.find('.'));
    const std::string name = row.test.substr(row.test.find('.') + 1);
    EXPECT_NE(source.find("(" + suite + ", " + name + ") {"), std::string::npos);
  }
}

TEST(CheckTable, HasEveryPointAndEveryPointAMessage) {
  std::set<std::string> points;
  for (const store::ValidationPoint& point : tests::DataModel()->validation_points()) {
    points.insert(point.opaque);
  }
  std::set<std::string> with_messages;
  for (const MessageRow& row : Table().messages) with_messages.insert(row.point);
  EXPECT_EQ(std::set<std::string>(Table().points.begin(), Table().points.end()), points);
  EXPECT_EQ(Table().points.size(), points.size());
  EXPECT_EQ(with_messages, points);
}

TEST(CheckTable, ExplainsWhatIsFilledIn) { EXPECT_EQ(Table().placeholders, KnownPlaceholders()); }

TEST(CheckTable, HasEveryMessageOfTheSources) {
  EXPECT_GE(SourceMessages().size(), 30u);
  EXPECT_THAT(SourceMessagesWithoutRow(Table()), IsEmpty());
}

TEST(CheckTable, HasEveryMessageOfTheCaseFiles) {
  EXPECT_FALSE(CaseMessages().empty());

  EXPECT_THAT(CasesWithoutRow(Table()), IsEmpty());
}

// The two tests above would notice.
TEST(CheckTable, HasNoRowThatCouldBeMissing) {
  for (size_t i = 0; i < Table().messages.size(); ++i) {
    MessageTable table = Table();
    table.messages.erase(table.messages.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_FALSE(SourceMessagesWithoutRow(table).empty() && CasesWithoutRow(table).empty())
        << testing::PrintToString(Table().messages[i]);
  }
  MessageTable table = Table();
  table.unshown.clear();
  EXPECT_EQ(SourceMessagesWithoutRow(table).size(), 6u);
}

TEST(CheckTable, HasNoRowWithAChangedWord) {
  for (size_t i = 0; i < Table().messages.size(); ++i) {
    MessageTable table = Table();
    std::string& message = table.messages[i].message;
    message.insert(message.rfind(' '), "s");
    EXPECT_FALSE(SourceMessagesWithoutRow(table).empty() && CasesWithoutRow(table).empty())
        << message;
  }
}

}  // namespace
