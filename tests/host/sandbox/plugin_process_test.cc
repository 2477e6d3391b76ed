// A plug-in in its child process: what is reported of it, and what it leaves in this process.
#include "plugin_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <string>

#include "host/sandbox/sample_task.h"
#include "input_error.h"
#include "interrupted.h"

namespace ipvald {
namespace {

constexpr std::chrono::seconds kLong{60};

PluginRun RunOrdered(const std::string& order, std::chrono::seconds timeout = kLong) {
  setenv("MISBEHAVE", order.c_str(), 1);
  return RunPlugin(TaskFor(IPAV_MISBEHAVING_PLUGIN), timeout);
}

// What became of the two calls: how many came back, where and why the plug-in failed, and the
// cursors left open.
std::string Described(const PluginRun& run) {
  std::string text = std::to_string(run.ended.size());
  if (run.in_call) text += ", in call " + std::to_string(*run.in_call);
  if (!run.failure.empty() && !run.in_call) text += ", in " + run.stage;
  if (!run.failure.empty()) text += ": " + run.failure;
  if (run.open_cursors > 0) text += ", cursors " + std::to_string(run.open_cursors);
  return text;
}

struct RunCase {
  const char* name;
  const char* order;
  const char* described;
};

std::ostream& operator<<(std::ostream& out, const RunCase& row) { return out << row.name; }

const RunCase kRuns[] = {
    {"AllAccepted", "", "2"},
    {"Refused", "validate:refuse", "1"},
    {"CursorsLeftOpen", "validate:leave-cursor", "2, cursors 2"},
    {"KilledInACall", "validate:kill", "0, in call 0: killed by signal 9 (Killed)"},
    {"ExitInACall", "validate:exit-9", "0, in call 0: the process ended with status 9"},
    {"ExceptionInACall", "validate:throw", "0, in call 0: exception std::invalid_argument: stoul"},
    {"ExitWhileLoading", "loading:exit-9", "0, in loading: the process ended with status 9"},
    {"KilledInInit", "lib_init:kill", "0, in lib_init: killed by signal 9 (Killed)"},
    {"ExitInFinish", "lib_finish:quick-exit", "2, in lib_finish: the process ended with status 0"},
    {"KilledBehindARefusal", "validate:refuse,lib_finish:kill",
     "1, in lib_finish: killed by signal 9 (Killed)"},
};

class PluginRunOf : public testing::TestWithParam<RunCase> {};

TEST_P(PluginRunOf, IsReported) {
  EXPECT_EQ(Described(RunOrdered(GetParam().order)), GetParam().described);
}

INSTANTIATE_TEST_SUITE_P(Orders, PluginRunOf, testing::ValuesIn(kRuns),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Timeout, EndsACallThatHangs) {
  EXPECT_EQ(Described(RunOrdered("validate:hang", std::chrono::seconds(1))),
            "0, in call 0: no answer within 1 s");
}

TEST(Timeout, OfNothingIsOverAtOnce) {
  EXPECT_EQ(RunOrdered("loading:hang", std::chrono::seconds(0)).failure, "no answer within 0 s");
}

TEST(Output, IsKept) {
  const std::string output = RunOrdered("lib_init:print").output;
  EXPECT_NE(output.find("said on standard output\n"), std::string::npos);
  EXPECT_NE(output.find("said on standard error\n"), std::string::npos);
}

TEST(Output, OfMoreThanIsKeptEndsWithItsEnd) {
  const std::string output = RunOrdered("validate:print-much").output;
  EXPECT_EQ(output.size(), size_t{64} << 10);
  EXPECT_TRUE(output.ends_with("...\nlast words\n"));
}

std::string ErrorOf(const std::string& plugin) {
  try {
    RunPlugin(TaskFor(plugin), kLong);
  } catch (const InputError& error) {
    return error.what();
  }
  return "run";
}

TEST(FileThatIsNoPlugin, IsNamed) {
  const std::string incomplete = IPAV_INCOMPLETE_PLUGIN;
  EXPECT_EQ(ErrorOf(incomplete),
            incomplete + ": not a validation plug-in: no entry point \"validate\"");
  EXPECT_EQ(ErrorOf("/nonexistent\n.so"),
            "/nonexistent .so: cannot open shared object file: No such file or directory");
}

TEST(Signal, IsAnException) {
  try {
    RunOrdered("validate:signal-host");
    // Delivered behind the end of the plug-in, it would have ended this process.
    ADD_FAILURE() << "not interrupted";
  } catch (const Interrupted& interrupted) {
    EXPECT_EQ(interrupted.signal(), SIGTERM);
  }
}

size_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(all), end(all)));
}

// Whatever the plug-in does, this process has afterwards what it had before.
TEST(ThisProcess, IsLeftAsItWas) {
  sigset_t mask_before;
  sigprocmask(SIG_SETMASK, nullptr, &mask_before);
  const size_t descriptors_before = OpenDescriptors();
  for (const char* order : {"", "validate:kill", "validate:leave-process", "lib_init:throw",
                            "validate:close", "validate:garbage", "validate:signal-host"}) {
    SCOPED_TRACE(order);
    try {
      RunOrdered(order);
    } catch (const Interrupted&) {
    }
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    for (int signal = 1; signal < NSIG; ++signal) {
      EXPECT_EQ(sigismember(&mask, signal), sigismember(&mask_before, signal)) << signal;
    }
    EXPECT_EQ(OpenDescriptors(), descriptors_before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }
}

}  // namespace
}  // namespace ipvald
