// The program as a user runs it: what it prints where, and its exit status.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/run_program.h"

namespace {

using Arguments = std::vector<std::string>;

const std::string kExamples = IPAV_SOURCE_DIR "/examples/";
const std::string kIntervalRefused = kExamples + "ra-interval-refused.json";
const std::string kLifetimeRefused = kExamples + "ra-lifetime-refused.json";
const std::string kRunning = kExamples + "ra-running.json";

ProgramResult Ipvald(Arguments arguments, const ProgramInput& input = {}) {
  arguments.insert(arguments.begin(), IPAV_IPVALD);
  return RunProgram(arguments, input);
}

// Text of a file of the examples.
std::string Example(const std::string& name) {
  std::ifstream file(kExamples + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

void ExpectResult(const ProgramResult& result, int status, const std::string& out,
                  const std::string& err) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
}

struct ProgramCase {
  const char* name;
  Arguments arguments;
  std::string standard_input;
  int status;
  const char* out;
  std::string err;
};

std::ostream& operator<<(std::ostream& out, const ProgramCase& row) { return out << row.name; }

const char kIntervalText[] =
    "rejected\n"
    "point:      validate_ipv6_nd_ra_interval\n"
    "path:       /config/interface/l3{lan-1}/ipv6/nd/ra\n"
    "message:    Minimum interval must be no greater than maximum interval * 0.75\n";

const char kLifetimeText[] =
    "rejected\n"
    "point:      validate_ipv6_nd_ra_lifetime\n"
    "path:       /config/interface/l3{lan-1}/ipv6/nd/ra\n"
    "message:    Lifetime must be greater than maximum router advertisement interval\n";

const ProgramCase kVerdicts[] = {
    {"Accepted", {"check", kExamples + "ra-accepted.json"}, "", 0, "accepted\n", ""},
    {"AcceptedChange",
     {"check", "--running", kRunning, kExamples + "ra-accepted.json"},
     "",
     0,
     "accepted\n",
     ""},
    {"NoChange", {"check", "--running", kRunning, kRunning}, "", 0, "accepted\n", ""},
    {"SameConfigurationAsXml",
     {"check", "--running", kRunning, kExamples + "ra-running.xml"},
     "",
     0,
     "accepted\n",
     ""},
    {"IntervalRefused", {"check", kIntervalRefused}, "", 1, kIntervalText, ""},
    {"LifetimeRefused", {"check", kLifetimeRefused}, "", 1, kLifetimeText, ""},
    {"ChangeRefused", {"check", "--running", kRunning, kLifetimeRefused}, "", 1, kLifetimeText, ""},
    {"CandidateAsOption", {"check", "--candidate", kIntervalRefused}, "", 1, kIntervalText, ""},
    {"CandidateFromStandardInput",
     {"check", "-"},
     Example("ra-interval-refused.json"),
     1,
     kIntervalText,
     ""},
    {"RunningFromStandardInput",
     {"check", "--running", "-", kLifetimeRefused},
     Example("ra-running.xml"),
     1,
     kLifetimeText,
     ""},
    {"ColorAlways",
     {"check", "--color", "always", kRunning},
     "",
     0,
     "\x1b[32maccepted\x1b[0m\n",
     ""},
    {"TraceOfNoChange",
     {"check", "--trace", "--running", kRunning, kRunning},
     "",
     0,
     "accepted\n\nno validation point concerned\n",
     ""},
};

const std::string kNoSuch = "/nonexistent/file";

const ProgramCase kErrors[] = {
    {"NoArguments",
     {},
     "",
     2,
     "",
     "ipvald: a command is required: check or points (see ipvald --help)\n"},
    {"NoFile", {"check"}, "", 2, "", "ipvald: check: FILE is required (see ipvald --help)\n"},
    {"UnknownOption",
     {"check", "--colour", kRunning},
     "",
     2,
     "",
     "ipvald: The following argument was not expected: --colour (see ipvald --help)\n"},
    {"UnknownCommand",
     {"chek", kRunning},
     "",
     2,
     "",
     "ipvald: a command is required: check or points (see ipvald --help)\n"},
    {"TwoFiles",
     {"check", kRunning, "b"},
     "",
     2,
     "",
     "ipvald: The following argument was not expected: b (see ipvald --help)\n"},
    {"UnknownFormat",
     {"check", "--format", "yaml", kRunning},
     "",
     2,
     "",
     "ipvald: --format: yaml is not one of text, json (see ipvald --help)\n"},
    {"TimeoutZero",
     {"check", "--timeout", "0", kRunning},
     "",
     2,
     "",
     "ipvald: --timeout: 0 is not a number from 1 to 86400 (see ipvald --help)\n"},
    {"TimeoutNotANumber",
     {"check", "--timeout", "soon", kRunning},
     "",
     2,
     "",
     "ipvald: --timeout: soon is not a number from 1 to 86400 (see ipvald --help)\n"},
    {"BothFromStandardInput",
     {"check", "--running", "-", "-"},
     "",
     2,
     "",
     "ipvald: only one of the two configurations can be standard input (see ipvald --help)\n"},
    {"MissingFile",
     {"check", kNoSuch},
     "",
     2,
     "",
     "ipvald: /nonexistent/file: No such file or directory\n"},
    {"MissingRunning",
     {"check", "--running", kNoSuch, kRunning},
     "",
     2,
     "",
     "ipvald: /nonexistent/file: No such file or directory\n"},
    {"EmptyFileName",
     {"check", "--running", "", kRunning},
     "",
     2,
     "",
     "ipvald: \"\": No such file or directory\n"},
    {"InvalidStandardInput",
     {"check", "-"},
     "{\n\"colour\": 1}",
     2,
     "",
     "ipvald: standard input:2: Top-level JSON object member \"colour\" must be namespace-qualified.\n"},
    {"InvalidInputInJsonFormat",
     {"check", "--format", "json", "-"},
     "",
     2,
     "",
     "ipvald: standard input: the file is empty\n"},
    {"PluginMissing",
     {"check", "--plugin", kNoSuch, kRunning},
     "",
     2,
     "",
     "ipvald: /nonexistent/file: cannot open shared object file: No such file or directory\n"},
    {"PluginNoSharedObject",
     {"check", "--plugin", kRunning, kRunning},
     "",
     2,
     "",
     "ipvald: " + kRunning + ": invalid ELF header\n"},
    {"PluginWithoutValidate",
     {"check", "--plugin", IPAV_INCOMPLETE_PLUGIN, kRunning},
     "",
     2,
     "",
     "ipvald: " IPAV_INCOMPLETE_PLUGIN ": not a validation plug-in: no entry point \"validate\"\n"},
    {"DataModelMissing",
     {"check", "--yang", kNoSuch, kRunning},
     "",
     2,
     "",
     "ipvald: cannot read the YANG folder /nonexistent/file: No such file or directory\n"},
    {"DataModelMissingForPoints",
     {"points", "--yang", kNoSuch},
     "",
     2,
     "",
     "ipvald: cannot read the YANG folder /nonexistent/file: No such file or directory\n"},
};

class IpvaldProgram : public testing::TestWithParam<ProgramCase> {};

TEST_P(IpvaldProgram, PrintsAndExits) {
  const ProgramCase& row = GetParam();
  ExpectResult(Ipvald(row.arguments, {row.standard_input, {}}), row.status, row.out, row.err);
}

INSTANTIATE_TEST_SUITE_P(Verdicts, IpvaldProgram, testing::ValuesIn(kVerdicts),
                         [](const auto& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(Errors, IpvaldProgram, testing::ValuesIn(kErrors),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(IpvaldHelp, ShowsTheCommands) {
  const ProgramResult result = Ipvald({"--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* part : {"Usage: ipvald", "check ", "points ", "Examples:", "Exit status:"}) {
    EXPECT_NE(result.out.find(part), std::string::npos) << part;
  }
}

TEST(IpvaldHelp, OfCheckShowsItsOptions) {
  const ProgramResult result = Ipvald({"check", "--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* part : {"Usage: ipvald check", "--running FILE", "--candidate", "--format",
                           "--trace", "--plugin", "--yang", "--timeout", "--color"}) {
    EXPECT_NE(result.out.find(part), std::string::npos) << part;
  }
}

TEST(IpvaldHelp, OfPointsShowsItsOptions) {
  const ProgramResult result = Ipvald({"points", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("Usage: ipvald points"), std::string::npos);
  EXPECT_EQ(result.out.find("--running"), std::string::npos);
}

TEST(IpvaldVersion, IsOneLine) { ExpectResult(Ipvald({"--version"}), 0, "ipvald 0.1.0\n", ""); }

TEST(IpvaldTrace, ShowsEachCallWithItsReason) {
  const ProgramResult result =
      Ipvald({"check", "--trace", "--running", kRunning, kLifetimeRefused});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out.find(kLifetimeText), 0u);
  const size_t call = result.out.find(
      "validate_ipv6_nd_ra_lifetime /config/interface/l3{lan-1}/ipv6/nd/ra\n"
      "   changed /config/interface/l3{lan-1}/ipv6/nd/ra/lifetime: rejected, ");
  ASSERT_NE(call, std::string::npos) << result.out;
  EXPECT_NE(result.out.find(" us, ", call), std::string::npos);
  EXPECT_NE(result.out.find(" data-store calls\n", call), std::string::npos);
}

TEST(IpvaldJson, RejectionHasTheDocumentedFields) {
  const ProgramResult result =
      Ipvald({"check", "--format", "json", "--running", kRunning, kIntervalRefused});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "");
  const auto verdict = nlohmann::ordered_json::parse(result.out);
  std::vector<std::string> names;
  for (const auto& [name, value] : verdict.items()) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"verdict", "point", "id", "path", "message",
                                             "diagnostic", "stage", "output", "warnings", "calls",
                                             "faults", "open_cursors"}));
  EXPECT_EQ(verdict["verdict"], "rejected");
  EXPECT_EQ(verdict["point"], "validate_ipv6_nd_ra_interval");
  EXPECT_EQ(verdict["id"], "vp-ipv6-nd-ra-interval");
  EXPECT_EQ(verdict["path"], "/config/interface/l3{lan-1}/ipv6/nd/ra");
  EXPECT_EQ(verdict["message"], "Minimum interval must be no greater than maximum interval * 0.75");
  EXPECT_TRUE(verdict["diagnostic"].is_null());
  EXPECT_TRUE(verdict["stage"].is_null());
  EXPECT_EQ(verdict["faults"], nlohmann::ordered_json::array());

  const auto& last = verdict["calls"].back();
  names.clear();
  for (const auto& [name, value] : last.items()) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"point", "id", "path", "reason", "result", "message",
                                             "microseconds", "datastore_calls", "log"}));
  EXPECT_EQ(last["point"], verdict["point"]);
  EXPECT_EQ(last["reason"], "changed /config/interface/l3{lan-1}/ipv6/nd/ra/min-interval");
  EXPECT_EQ(last["result"], -1);
  EXPECT_GT(last["datastore_calls"], 0);
}

TEST(IpvaldJson, AcceptanceNamesNoPoint) {
  const auto verdict = nlohmann::json::parse(
      Ipvald({"check", "--format", "json", "--running", kRunning, kRunning}).out);
  EXPECT_EQ(verdict["verdict"], "accepted");
  EXPECT_TRUE(verdict["point"].is_null());
  EXPECT_TRUE(verdict["message"].is_null());
  EXPECT_EQ(verdict["calls"], nlohmann::json::array());
}

TEST(IpvaldPoints, TextHasARowForEachStatement) {
  const ProgramResult text = Ipvald({"points"});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out.find("POINT "), 0u);
  const auto rows = nlohmann::json::parse(Ipvald({"points", "--format", "json"}).out);
  EXPECT_EQ(static_cast<size_t>(std::count(text.out.begin(), text.out.end(), '\n')),
            rows.size() + 1);
}

TEST(IpvaldPoints, JsonDescribesTheRouterAdvertisementPoint) {
  const ProgramResult result = Ipvald({"points", "--format", "json"});
  EXPECT_EQ(result.status, 0);
  const auto rows = nlohmann::json::parse(result.out);
  const auto found = std::find_if(rows.begin(), rows.end(), [](const auto& row) {
    return row["point"] == "validate_ipv6_nd_ra_interval" &&
           row["node"] == "/config/interface/l3/ipv6/nd/ra";
  });
  ASSERT_NE(found, rows.end());
  EXPECT_EQ((*found)["id"], "vp-ipv6-nd-ra-interval");
  EXPECT_EQ((*found)["call_once"], false);
  EXPECT_EQ((*found)["priority"], 20);
  EXPECT_EQ((*found)["dependencies"],
            nlohmann::json::parse(
                R"([{"path": "/config/interface/l3/ipv6/nd/ra/max-interval", "absolute": false},
                    {"path": "/config/interface/l3/ipv6/nd/ra/min-interval", "absolute": false}])"));
}

// Runs ipvald by a shell that sets up its standard output.
ProgramResult Shell(const std::string& command) { return RunProgram({"/bin/sh", "-c", command}); }

TEST(IpvaldOutput, FullDiskIsNoVerdict) {
  ExpectResult(Shell(IPAV_IPVALD " check " + kRunning + " > /dev/full"), 2, "",
               "ipvald: standard output: No space left on device\n");
}

TEST(IpvaldOutput, ClosedStandardOutputIsNoVerdict) {
  ExpectResult(Shell(IPAV_IPVALD " check " + kRunning + " >&-"), 2, "",
               "ipvald: standard output: Bad file descriptor\n");
}

TEST(IpvaldOutput, ReaderGoneIsNoVerdict) {
  std::string pattern = testing::TempDir() + "ipvald-pipe-XXXXXX";
  const std::filesystem::path folder = mkdtemp(pattern.data());
  const std::string fifo = folder / "fifo";
  // Descriptor 4 writes into a pipe whose only reader, descriptor 3, is closed again.
  ExpectResult(Shell("mkfifo " + fifo + " && exec 3<>" + fifo + " 4>" + fifo +
                     " 3<&- && " IPAV_IPVALD " check " + kRunning + " >&4"),
               2, "", "ipvald: standard output: Broken pipe\n");
  std::filesystem::remove_all(folder);
}

TEST(IpvaldOutput, ClosedStandardErrorDoesNotTakeTheVerdict) {
  ExpectResult(Shell(IPAV_IPVALD " check " + kRunning + " 2>&-"), 0, "accepted\n", "");
}

TEST(IpvaldInstallation, FindsPluginAndModelBesideItself) {
  namespace fs = std::filesystem;
  std::string pattern = testing::TempDir() + "ipvald-prefix-XXXXXX";
  const fs::path prefix = mkdtemp(pattern.data());
  fs::create_directories(prefix / "bin");
  fs::create_directories(prefix / "share/ipvald");
  fs::copy_file(IPAV_IPVALD, prefix / "bin/ipvald");
  fs::create_directory_symlink(fs::path(IPAV_PLUGIN).parent_path(), prefix / "lib");
  fs::create_directory_symlink(IPAV_SOURCE_DIR "/yang", prefix / "share/ipvald/yang");
  ExpectResult(RunProgram({prefix / "bin/ipvald", "check", kIntervalRefused}), 1, kIntervalText,
               "");
  fs::remove(prefix / "lib");
  ExpectResult(RunProgram({"/bin/sh", "-c",
                           "LD_LIBRARY_PATH=" + fs::path(IPAV_PLUGIN).parent_path().string() + " " +
                               (prefix / "bin/ipvald").string() + " check " + kRunning}),
               2, "",
               "ipvald: " + (prefix / "lib/libip_app_validation.so").string() +
                   ": cannot open shared object file: No such file or directory\n");
  fs::remove_all(prefix);
}

}  // namespace
