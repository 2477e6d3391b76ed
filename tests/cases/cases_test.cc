// Every case file through the built `ipvald check` and through the module.
//
//   tests/cases/<point>/<case>.json          candidate configuration
//   tests/cases/<point>/<case>.running.json  running configuration; without it, an empty one
//   tests/cases/<point>/<case>.txt           the message with which <point> refuses the change;
//                                            without it, the change is accepted
//
// <point> is a validation-point name, and the change has to make ConfD call it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "store/schema.h"
#include "store/snapshot.h"
#include "support/data_model.h"
#include "support/run_program.h"
#include "transaction.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = IPAV_SOURCE_DIR "/tests/cases";

std::string TextOf(const fs::path& file) {
  std::ifstream stream(file);
  EXPECT_TRUE(stream) << file;
  return {std::istreambuf_iterator<char>(stream), {}};
}

struct Case {
  std::string point;
  std::string name;
  fs::path candidate;
  std::optional<fs::path> running;
  std::optional<fs::path> message;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.point << "/" << c.name;
}

std::vector<fs::path> PointFolders() {
  std::vector<fs::path> folders;
  for (const auto& entry : fs::directory_iterator(kCases)) {
    if (entry.is_directory()) folders.push_back(entry.path());
  }
  return folders;
}

// In the order of their paths.
std::vector<Case> FindCases() {
  std::vector<Case> cases;
  for (const fs::path& folder : PointFolders()) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      const std::string file = entry.path().filename();
      if (!file.ends_with(".json") || file.ends_with(".running.json")) continue;
      Case found{.point = folder.filename(),
                 .name = entry.path().stem(),
                 .candidate = entry.path(),
                 .running = std::nullopt,
                 .message = std::nullopt};
      const fs::path running = folder / (found.name + ".running.json");
      const fs::path message = folder / (found.name + ".txt");
      if (fs::exists(running)) found.running = running;
      if (fs::exists(message)) found.message = message;
      cases.push_back(found);
    }
  }
  std::sort(cases.begin(), cases.end(),
            [](const Case& a, const Case& b) { return a.candidate < b.candidate; });
  return cases;
}

// The text of the file without the line end behind it.
std::string Message(const fs::path& file) {
  std::string text = TextOf(file);
  EXPECT_TRUE(text.ends_with('\n')) << file << " does not end with a line end";
  if (!text.empty()) text.pop_back();
  return text;
}

// GoogleTest takes letters, digits and underscores.
std::string TestName(const testing::TestParamInfo<Case>& row) {
  std::string name = row.param.point + "_" + row.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

class CaseFile : public testing::TestWithParam<Case> {};

TEST_P(CaseFile, ThroughTheProgram) {
  const Case& c = GetParam();
  std::vector<std::string> command = {IPAV_IPVALD, "check", "--format", "json"};
  if (c.running) command.insert(command.end(), {"--running", *c.running});
  command.push_back(c.candidate);

  const ProgramResult result = RunProgram(command);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, c.message ? 1 : 0);
  const nlohmann::json report = nlohmann::json::parse(result.out, nullptr, false);
  ASSERT_TRUE(report.is_object()) << result.out;
  EXPECT_EQ(report["verdict"], c.message ? "rejected" : "accepted");
  if (c.message) {
    EXPECT_EQ(report["message"], Message(*c.message));
    EXPECT_EQ(report["point"], c.point);
  } else {
    EXPECT_TRUE(report["message"].is_null() && report["point"].is_null()) << result.out;
  }
  EXPECT_EQ(report["open_cursors"], 0);
  const auto& calls = report["calls"];
  EXPECT_TRUE(std::any_of(calls.begin(), calls.end(), [&c](const nlohmann::json& call) {
    return call["point"] == c.point;
  })) << "the point was not called";
}

TEST_P(CaseFile, ThroughTheModule) {
  const Case& c = GetParam();
  const auto running =
      store::Snapshot::FromText(tests::DataModel(), c.running ? TextOf(*c.running) : "{}");
  const auto candidate = store::Snapshot::FromText(tests::DataModel(), TextOf(c.candidate));

  const ipvald::TransactionReport report =
      ipvald::RunTransaction(running, candidate, {.plugin = IPAV_PLUGIN});
  EXPECT_EQ(report.verdict, c.message ? ipvald::Verdict::kRejected : ipvald::Verdict::kAccepted)
      << report.diagnostic;
  ASSERT_EQ(report.decisive.has_value(), c.message.has_value());
  if (c.message) {
    const ipvald::CallReport& call = report.calls[*report.decisive];
    EXPECT_EQ(call.point, c.point);
    EXPECT_EQ(call.result, -1);
    EXPECT_EQ(call.message, Message(*c.message));
  }
  EXPECT_EQ(report.open_cursors, 0u);
}

INSTANTIATE_TEST_SUITE_P(Cases, CaseFile, testing::ValuesIn(FindCases()), TestName);

TEST(CaseFolders, HoldNothingElse) {
  std::set<std::string> points;
  for (const store::ValidationPoint& point : tests::DataModel()->validation_points()) {
    points.insert(point.opaque);
  }
  std::set<fs::path> known;
  for (const Case& c : FindCases()) {
    EXPECT_TRUE(points.contains(c.point)) << c.point << " is no validation point";
    known.insert(c.candidate);
    if (c.running) known.insert(*c.running);
    if (c.message) known.insert(*c.message);
  }
  for (const fs::path& folder : PointFolders()) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      EXPECT_TRUE(known.contains(entry.path())) << entry.path() << " belongs to no case";
    }
  }
}

TEST(CaseFolders, HaveAnAcceptedAndARefusedCase) {
  std::set<std::string> accepted;
  std::set<std::string> refused;
  for (const Case& c : FindCases()) (c.message ? refused : accepted).insert(c.point);
  EXPECT_FALSE(accepted.empty());
  EXPECT_EQ(accepted, refused);
}

}  // namespace
