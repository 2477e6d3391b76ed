// The program as a user runs it: what it prints where, and its exit status.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "options.h"
#include "support/run_program.h"

namespace {

using Arguments = std::vector<std::string>;

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();

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
    {"TraceOfNoChange",
     {"check", "--trace", "--running", kRunning, kRunning},
     "",
     0,
     "accepted\n\nno validation point concerned\n",
     ""},
};

const std::string kNoSuch = "/nonexistent/file";

const ProgramCase kErrors[] = {
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
     "ipvald: standard input:2: \"colour\" has no module name and is not known in the configuration, which holds \"KX-RTM-MIB:KX-RTM-MIB\", \"velmor-internal:internal\", \"velmor-config:config\", \"velmor-static-route:rtmStaticRtEntry-global\"\n"},
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

// Input files that give no verdict. The test writes `text` into a file, whose name takes the place
// of FILE in `error`.
struct BadFileCase {
  const char* name;
  std::string text;
  const char* error;
};

std::ostream& operator<<(std::ostream& out, const BadFileCase& row) { return out << row.name; }

// A configuration whose L3 interface holds `leaves`, which begin on line 4.
std::string Xml(const std::string& leaves) {
  return "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n"
         "<l3 xmlns=\"urn:velmor:yang:ip-app\">\n" +
         leaves + "</l3>\n</interface>\n</config>\n";
}

const BadFileCase kBadFiles[] = {
    {"Empty", "", "FILE: the file is empty"},
    {"TruncatedXml", "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n",
     "FILE:3: the text ends inside <interface>, which begins on line 2"},
    {"JsonSyntax", "{\"velmor-config:config\":\n{\"interface\":}}",
     "FILE:2: a value is expected before }"},
    {"UnknownElement", Xml("<name>7</name>\n<colour>red</colour>"),
     "FILE:5: <colour> is not known in <l3>, which holds <name>, <vrf>, <lower-layer-if>, <ipv4>, "
     "<ipv6>"},
    {"ValueOutOfRange", Xml("<name>7</name>\n<lower-layer-if><vlan>4095</vlan></lower-layer-if>"),
     "FILE:5: <vlan> is \"4095\", but takes a whole number from 1 to 4094: A VLAN identifier is 1 to "
     "4094."},
    {"DuplicateEntry",
     Xml("<name>7</name></l3><l3 xmlns=\"urn:velmor:yang:ip-app\"><name>7</name>"),
     "FILE:4: a second <l3> with name \"7\"; the first is on line 3"},
    {"BinaryGarbage",
     std::string("\x7f"
                 "ELF\x02\x01\x01\0\n\xff",
                 10),
     "FILE:1: neither XML nor JSON: binary data"},
    {"NotUtf8", Xml("<name>\xff</name>"),
     "FILE:4: not UTF-8; convert the file, such as by iconv -t UTF-8"},
};

class BadFile : public testing::TestWithParam<BadFileCase> {
 protected:
  BadFile() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    file_ = folder_ / "bad";
    std::ofstream(file_, std::ios::binary) << GetParam().text;
    error_ = std::string("ipvald: ") + GetParam().error + "\n";
    error_.replace(error_.find("FILE"), 4, file_);
  }
  ~BadFile() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_;
  std::string file_;
  std::string error_;
};

TEST_P(BadFile, AsCandidate) {
  ExpectResult(Ipvald({"check", "--running", kRunning, file_}), 2, "", error_);
}

TEST_P(BadFile, AsRunning) {
  ExpectResult(Ipvald({"check", "--running", file_, kRunning}), 2, "", error_);
}

TEST_P(BadFile, InJsonFormat) {
  ExpectResult(Ipvald({"check", "--format", "json", file_}), 2, "", error_);
}

INSTANTIATE_TEST_SUITE_P(Texts, BadFile, testing::ValuesIn(kBadFiles),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(BadFolder, IsNoConfiguration) {
  const std::string folder = IPAV_SOURCE_DIR "/examples";
  const std::string error = "ipvald: " + folder + ": Is a directory\n";
  ExpectResult(Ipvald({"check", folder}), 2, "", error);
  ExpectResult(Ipvald({"check", "--running", folder, kRunning}), 2, "", error);
}

// A file of `size` bytes that begins with `start` and goes on with `piece` over and over.
struct GarbageCase {
  const char* name;
  const char* start;
  const char* piece;
  size_t size;
  const char* error;  // its beginning behind the file's name
};

std::ostream& operator<<(std::ostream& out, const GarbageCase& row) { return out << row.name; }

constexpr size_t kMegabyte = 1'000'000;

const GarbageCase kGarbage[] = {
    {"Braces", "{", "{", 100 * kMegabyte,
     ":1: the name of a member, in double quotes, is expected before {\n"},
    {"AngleBrackets", "<", "<", 100 * kMegabyte, ":1: < begins no tag here"},
    {"Elements", "<", "a><", 100 * kMegabyte, ":1: <a> has no namespace (xmlns) and "},
    {"Attributes", "<a ", "b='c' ", 20 * kMegabyte, ":1: the text ends inside a tag, "},
};

class Garbage : public testing::TestWithParam<GarbageCase> {};

TEST_P(Garbage, IsRefusedInBoundedTimeAndMemory) {
  const GarbageCase& row = GetParam();
  std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
  const std::filesystem::path folder = mkdtemp(pattern.data());
  const std::string file = folder / "garbage";
  {
    std::string pieces;
    while (pieces.size() < 60'000) pieces += row.piece;
    std::ofstream out(file, std::ios::binary);
    out << row.start;
    for (size_t written = 0; written < row.size; written += pieces.size()) out << pieces;
  }
  // Released memory that the address sanitizer holds back is not the program's.
  const ProgramResult result =
      Ipvald({"check", file}, {.environment = {"ASAN_OPTIONS=quarantine_size_mb=0"}});
  std::filesystem::remove_all(folder);

  const std::string expected = "ipvald: " + file + row.error;
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err.substr(0, expected.size()), expected);
  EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
  EXPECT_LT(result.err.size(), expected.size() + 600);

  EXPECT_LT(result.cpu_seconds, 10);
  // The text, once more what libyang quotes of it, and a little. A sanitizer needs as much again.
  const size_t limit = row.size * 5 / 2 + 16 * kMegabyte;
  EXPECT_LT(static_cast<size_t>(result.peak_memory_kib) * 1024, kSanitized ? 2 * limit : limit);
}

INSTANTIATE_TEST_SUITE_P(Files, Garbage, testing::ValuesIn(kGarbage),
                         [](const auto& row) { return std::string(row.param.name); });

// Colour. `environment` holds NO_COLOR or nothing.
struct ColorCase {
  const char* name;
  Arguments arguments;
  bool terminal;
  std::vector<std::string> environment;
  int status;
  const char* first_line;
};

std::ostream& operator<<(std::ostream& out, const ColorCase& row) { return out << row.name; }

const char kGreenAccepted[] = "\x1b[32maccepted\x1b[0m";
const char kRedRejected[] = "\x1b[31mrejected\x1b[0m";
const char kMagentaFailure[] = "\x1b[35mplugin-failure\x1b[0m";

const ColorCase kColors[] = {
    {"AcceptedOnATerminal", {kRunning}, true, {}, 0, kGreenAccepted},
    {"RejectedOnATerminal", {kIntervalRefused}, true, {}, 1, kRedRejected},
    {"FailureOnATerminal",
     {"--plugin", IPAV_MISBEHAVING_PLUGIN, kRunning},
     true,
     {"MISBEHAVE=lib_init:abort"},
     3,
     kMagentaFailure},
    {"AutoOnATerminal", {"--color", "auto", kRunning}, true, {}, 0, kGreenAccepted},
    {"NoColorOnATerminal", {kRunning}, true, {"NO_COLOR=1"}, 0, "accepted"},
    {"EmptyNoColorOnATerminal", {kRunning}, true, {"NO_COLOR="}, 0, kGreenAccepted},
    {"NeverOnATerminal", {"--color", "never", kRunning}, true, {}, 0, "accepted"},
    {"AlwaysOutweighsNoColor",
     {"--color", "always", kRunning},
     true,
     {"NO_COLOR=1"},
     0,
     kGreenAccepted},
    {"AutoInAFile", {kRunning}, false, {}, 0, "accepted"},
    {"NeverInAFile", {"--color", "never", kRunning}, false, {}, 0, "accepted"},
    {"AlwaysAccepted", {"--color", "always", kRunning}, false, {}, 0, kGreenAccepted},
    {"AlwaysRejected", {"--color", "always", kIntervalRefused}, false, {}, 1, kRedRejected},
    {"AlwaysFailure",
     {"--color", "always", "--plugin", IPAV_MISBEHAVING_PLUGIN, kRunning},
     false,
     {"MISBEHAVE=validate:abort"},
     3,
     kMagentaFailure},
    {"JsonOnATerminal", {"--format", "json", kRunning}, true, {}, 0, "{"},
    {"JsonAlways", {"--format", "json", "--color", "always", kIntervalRefused}, true, {}, 1, "{"},
};

class IpvaldColor : public testing::TestWithParam<ColorCase> {
 protected:
  IpvaldColor() { unsetenv("NO_COLOR"); }
};

TEST_P(IpvaldColor, IsInTheFirstLineAlone) {
  const ColorCase& row = GetParam();
  Arguments arguments = {"check"};
  arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
  const ProgramResult result =
      Ipvald(arguments, {.environment = row.environment, .terminal = row.terminal});
  EXPECT_EQ(result.status, row.status);
  EXPECT_EQ(result.err, "");
  const size_t end = result.out.find('\n');
  ASSERT_NE(end, std::string::npos);
  EXPECT_EQ(result.out.substr(0, end), row.first_line);
  EXPECT_EQ(result.out.find('\x1b', end), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Rows, IpvaldColor, testing::ValuesIn(kColors),
                         [](const auto& row) { return std::string(row.param.name); });

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
  for (const char* part :
       {"Usage: ipvald check [OPTIONS] FILE\n", "  --candidate FILE  ", "  --running FILE  ",
        "  --format WORD  ", "text (default) or json\n", "  --yang DIR  ",
        "default\n                            ../share/ipvald/yang beside the program\n",
        "  --trace  ", "  --plugin SO  ",
        "default\n                            ../lib/libip_app_validation.so beside the program\n",
        "  --timeout SECONDS  ", "1 to 86400, default 60\n", "  --color WORD  ",
        "auto (default), always or never\n", "128+N ended by signal N.\n"}) {
    EXPECT_NE(result.out.find(part), std::string::npos) << part;
  }
}

TEST(IpvaldOptions, DefaultTimeoutIsAMinute) {
  const std::vector<const char*> arguments = {"ipvald", "check", "candidate.json"};
  EXPECT_EQ(ipvald::ParseOptions(3, arguments.data()).check.timeout, 60u);
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
