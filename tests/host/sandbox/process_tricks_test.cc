// Plug-ins that play tricks with their process and with the processes around it: the verdict is
// right or there is none, and nothing that they started lives on.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

// TIMEOUT is a variable of the shell.
const std::string kCommand =
    IPAV_IPVALD " check --timeout ${TIMEOUT:-30} --plugin " IPAV_MISBEHAVING_PLUGIN
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

TEST(StoppedProcess, IsNotWaitedForLongerThanTheTimeout) {
  ExpectResult(Shell("TIMEOUT=1; " + kCommand, "validate:stop"), 3,
               std::string(kFirstCall) + "no answer within 1 s\n", "");
}

// Nobody can tell whether the limit is too low or the plug-in too greedy.
TEST(MemoryEater, MeetsTheLimitOfItsCaller) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer needs more address space than any limit";
  ExpectResult(Shell("ulimit -v 400000; " + kCommand, "validate:eat-memory"), 2, "",
               "ipvald: out of memory (ulimit -v): Cannot allocate memory\n");
}

// Nothing that the plug-in started is left when the program has ended, also when it left its
// process group and session.
class StartedProcesses : public testing::Test {
 protected:
  StartedProcesses() {
    std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  ~StartedProcesses() override { std::filesystem::remove_all(folder_); }

  // Expects that the trick gets that status, and that it noted `count` processes of which none
  // lives.
  void ExpectGone(const std::string& trick, int status, size_t count) {
    const std::string list = folder_ / trick;
    EXPECT_EQ(
        Shell("MISBEHAVE_PROCESSES=" + list + " exec " + kCommand, "lib_init:" + trick).status,
        status);
    std::ifstream file(list);
    size_t noted = 0;
    for (pid_t process = 0; file >> process; ++noted) {
      EXPECT_TRUE(kill(process, 0) != 0 && errno == ESRCH) << trick << ": process " << process;
    }
    EXPECT_EQ(noted, count) << trick;
  }

 private:
  std::filesystem::path folder_;
};

TEST_F(StartedProcesses, AreGoneAfterAVerdict) { ExpectGone("leave-daemon", 0, 1); }

// The plug-in itself, a child and a daemon; all of them hang.
TEST_F(StartedProcesses, AreGoneAfterASignal) {
  ExpectGone("interrupt-host", 128 + SIGINT, 3);
  ExpectGone("terminate-host", 128 + SIGTERM, 3);
  ExpectGone("hang-up-host", 128 + SIGHUP, 3);
}

// They are not the plug-in's.
TEST_F(StartedProcesses, OfTheShellBeforeLiveOn) {
  const ProgramResult result =
      Shell("sleep 100 > /dev/null & echo $!; exec " + kCommand, "lib_init:leave-process");
  EXPECT_EQ(result.status, 0);
  const pid_t sleeping = std::atoi(result.out.c_str());
  ASSERT_GT(sleeping, 1);
  EXPECT_EQ(result.out, std::to_string(sleeping) + "\n" + kAccepted);
  EXPECT_EQ(kill(sleeping, SIGKILL), 0);
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
