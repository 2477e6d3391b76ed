// Plug-ins that play tricks with their process and with the processes around it: the verdict is
// right or there is none, and nothing that they started lives on.
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/run_program.h"

namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();

const char kAccepted[] = "accepted\n";

// A failure in the first call.
const char kFirstCall[] =
    "plugin-failure\n"
    "point:      intf_l3_name_validation\n"
    "path:       /config/interface/l3\n"
    "diagnostic: ";

void ExpectResult(const ProgramResult& result, int status, const std::string& out,
                  const std::string& err) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
}

const std::string kCommand = IPAV_IPVALD " check --timeout 1 --plugin " IPAV_MISBEHAVING_PLUGIN
                                         " " IPAV_SOURCE_DIR "/examples/ra-running.json";

// Runs `command` with orders for the plug-in.
ProgramResult Shell(const std::string& command, const std::string& order) {
  return RunProgram({"/bin/sh", "-c", command}, {"", {"MISBEHAVE=" + order}});
}

struct TrickCase {
  const char* name;
  const char* trick;
  int status;
  std::string out;
};

std::ostream& operator<<(std::ostream& out, const TrickCase& row) { return out << row.name; }

const TrickCase kTricks[] = {
    // A check goes on in a process whose surroundings are in ruins.
    {"StandardDescriptorsClosed", "validate:close-standard", 0, kAccepted},
    {"EverythingChanged", "validate:change-process", 0, kAccepted},
    {"ForkedProcessExits", "validate:twin-exits", 0, kAccepted},
    {"ForkedProcessComesBackToo", "validate:twin", 0, kAccepted},
    // The verdict cannot come any more.
    {"EverythingClosed", "validate:close-everything", 3,
     std::string(kFirstCall) + "the results could not be passed on\n"},
    {"EverythingReplaced", "validate:replace-descriptors", 3,
     std::string(kFirstCall) + "the process ended with status 0\n"},
    {"ForkedProcessComesBackAlone", "validate:twin-alone", 3,
     std::string(kFirstCall) + "the process ended with status 0\n"},
    {"Stopped", "validate:stop", 3, std::string(kFirstCall) + "no answer within 1 s\n"},
    {"Alarm", "validate:alarm", 3, std::string(kFirstCall) + "killed by signal 14 (Alarm clock)\n"},
    {"ExitWhenUnloaded", "lib_init:exit-later", 3,
     "plugin-failure\nstage:      unloading\ndiagnostic: the process ended with status 0\n"},
    {"ExitInFinish", "lib_finish:exit", 3,
     "plugin-failure\nstage:      lib_finish\ndiagnostic: the process ended with status 0\n"},
    {"QuickExitInFinish", "lib_finish:quick-exit", 3,
     "plugin-failure\nstage:      lib_finish\ndiagnostic: the process ended with status 0\n"},
};

class Trick : public testing::TestWithParam<TrickCase> {};

TEST_P(Trick, GetsTheRightVerdictOrNone) {
  ExpectResult(Shell(kCommand, GetParam().trick), GetParam().status, GetParam().out, "");
}

INSTANTIATE_TEST_SUITE_P(Tricks, Trick, testing::ValuesIn(kTricks),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MemoryEater, FailsAtTheLimitOfItsCaller) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer needs more address space than any limit";
  ExpectResult(Shell("ulimit -v 400000; " + kCommand, "validate:eat-memory"), 3,
               std::string(kFirstCall) + "exception std::bad_alloc: std::bad_alloc\n", "");
}

TEST(IgnoredSignal, DoesNotEndTheHost) {
  ExpectResult(Shell("trap '' HUP; exec " + kCommand, "validate:hang-up-host-and-go-on"), 0,
               kAccepted, "");
  ExpectResult(Shell("exec " + kCommand, "validate:hang-up-host-and-go-on"), 128 + SIGHUP, "", "");
}

TEST(ProcessGroup, IsThatOfTheHostAlone) {
  // setsid keeps the signal away from this test.
  ExpectResult(Shell("exec setsid -w " + kCommand, "validate:terminate-host-group"), 128 + SIGTERM,
               "", "");
}

}  // namespace
