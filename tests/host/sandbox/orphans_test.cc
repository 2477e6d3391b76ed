// Processes that would outlive whoever started them, each test in a process of its own with one
// thread and no children.
#include "orphans.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>

namespace ipvald {
namespace {

// Whether `check` holds in a process of its own.
testing::AssertionResult InAProcess(const std::function<bool()>& check) {
  const pid_t process = fork();
  if (process == 0) {
    alarm(60);  // in case it waits for ever
    _exit(check() ? 0 : 1);
  }
  int status = -1;
  waitpid(process, &status, 0);
  if (status == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "status " << status;
}

bool IsSubreaper() {
  int value = -1;
  prctl(PR_GET_CHILD_SUBREAPER, &value);
  return value == 1;
}

[[noreturn]] void Hang() {
  alarm(60);  // does not outlive the tests
  for (;;) pause();
}

// A process that waits, and does `first` before.
pid_t Start(const std::function<void()>& first = [] {}) {
  const pid_t process = fork();
  if (process != 0) return process;
  first();
  Hang();
}

// A process whose parent has ended, and that has left the group and the session of this one.
pid_t StartOrphan() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return -1;
  const pid_t parent = fork();
  if (parent == 0) {
    const pid_t orphan = Start([] { setsid(); });
    _exit(write(ends[1], &orphan, sizeof(orphan)) == sizeof(orphan) ? 0 : 1);
  }
  pid_t orphan = -1;
  const ssize_t got = read(ends[0], &orphan, sizeof(orphan));
  close(ends[0]);
  close(ends[1]);
  waitpid(parent, nullptr, 0);
  return got == sizeof(orphan) ? orphan : -1;
}

bool IsChild(pid_t process) { return waitpid(process, nullptr, WNOHANG) == 0; }
bool HasChildren() { return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD; }
bool IsGone(pid_t process) { return kill(process, 0) != 0 && errno == ESRCH; }

TEST(Orphan, BecomesAChildOfTheKeeper) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    const pid_t orphan = StartOrphan();
    const bool is_child = IsChild(orphan);
    kill(orphan, SIGKILL);  // or CTest would wait for it: it holds the test's output
    return is_child;
  }));
}

TEST(Orphan, IsEnded) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    const pid_t orphan = StartOrphan();
    keeper.EndAll();
    return orphan > 0 && IsGone(orphan) && !HasChildren();
  }));
}

TEST(Child, IsEndedWithItsOwnChildren) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return false;
    Start([&ends] {
      const pid_t below = Start([&ends] {
        const pid_t lowest = Start();
        if (write(ends[1], &lowest, sizeof(lowest)) < 0) _exit(1);
      });
      if (write(ends[1], &below, sizeof(below)) < 0) _exit(1);
    });
    std::array<pid_t, 2> below{};
    for (pid_t& process : below) {
      if (read(ends[0], &process, sizeof(process)) != sizeof(process)) return false;
    }
    keeper.EndAll();
    return IsGone(below[0]) && IsGone(below[1]) && !HasChildren();
  }));
}

TEST(Child, ThatIsStoppedOrIgnoresSignalsIsEnded) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    Start([] { raise(SIGSTOP); });
    Start([] {
      for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_IGN);
    });
    keeper.EndAll();
    return !HasChildren();
  }));
}

TEST(Child, ThatHasEndedIsWaitedFor) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    const pid_t child = fork();
    if (child == 0) _exit(0);
    keeper.EndAll();
    return !HasChildren();
  }));
}

TEST(NoChild, IsNothingToEnd) {
  EXPECT_TRUE(InAProcess([] {
    const OrphanKeeper keeper;
    keeper.EndAll();
    keeper.EndAll();
    return true;
  }));
}

TEST(ChildrenFromTheBeginning, AreLeftAlone) {
  EXPECT_TRUE(InAProcess([] {
    const pid_t child = Start();
    const OrphanKeeper keeper;
    const bool keeps = IsSubreaper();
    const pid_t later = Start();
    keeper.EndAll();
    const bool left_alone = IsChild(child) && IsChild(later);
    kill(child, SIGKILL);
    kill(later, SIGKILL);
    return left_alone && !keeps;
  }));
}

TEST(Keeper, KeepsWhileItLives) {
  EXPECT_TRUE(InAProcess([] {
    const bool before = IsSubreaper();
    bool meanwhile = false;
    {
      const OrphanKeeper keeper;
      meanwhile = IsSubreaper();
    }
    return !before && meanwhile && !IsSubreaper();
  }));
}

TEST(Keeper, LeavesASubreaperOne) {
  EXPECT_TRUE(InAProcess([] {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    { const OrphanKeeper keeper; }
    return IsSubreaper();
  }));
}

}  // namespace
}  // namespace ipvald
