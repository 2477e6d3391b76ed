// Reading and writing pipes that would make the caller wait, and what neither does wait for.
#include "descriptor_io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <functional>
#include <string>

namespace ipvald {
namespace {

// A pipe whose ends block or not.
class Pipe {
 public:
  explicit Pipe(int flags) { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC | flags), 0); }
  ~Pipe() {
    CloseReader();
    CloseWriter();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void CloseReader() { Close(ends_[0]); }
  void CloseWriter() { Close(ends_[1]); }

  // As much as it holds.
  void Fill() {
    const int flags = fcntl(writer(), F_GETFL);
    fcntl(writer(), F_SETFL, flags | O_NONBLOCK);
    const std::array<char, 4096> page{};
    while (write(writer(), page.data(), page.size()) > 0) {
    }
    fcntl(writer(), F_SETFL, flags);
  }

  // All that it holds, in the child process.
  void Empty() {
    std::array<char, 65536> bytes;
    if (read(reader(), bytes.data(), bytes.size()) <= 0) _exit(1);
  }

 private:
  static void Close(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
  }

  std::array<int, 2> ends_{-1, -1};
};

// Returns once the process waits for something.
void AwaitWaiting(pid_t process) {
  for (std::string number, name, state; state != "S"; sched_yield()) {
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    status >> number >> name >> state;
  }
}

// A child process that does something as soon as this process waits.
class OnceThisWaits {
 public:
  explicit OnceThisWaits(const std::function<void(pid_t waiting)>& act) {
    const pid_t parent = getpid();
    child_ = fork();
    if (child_ != 0) return;
    alarm(60);  // in case it never does
    AwaitWaiting(parent);
    act(parent);
    _exit(0);
  }
  ~OnceThisWaits() {
    int status = -1;
    EXPECT_EQ(waitpid(child_, &status, 0), child_);
    EXPECT_EQ(status, 0);
  }
  OnceThisWaits(const OnceThisWaits&) = delete;
  OnceThisWaits& operator=(const OnceThisWaits&) = delete;

 private:
  pid_t child_;
};

int signal_seen = -1;  // writer of a pipe that tells that a signal came

// A signal that this process answers, and that makes system calls end early.
class Interruption {
 public:
  Interruption() {
    signal_seen = seen_.writer();
    struct sigaction action {};
    action.sa_handler = [](int) {
      const int before = errno;
      if (write(signal_seen, "s", 1) != 1) _exit(1);
      errno = before;
    };
    sigaction(SIGUSR1, &action, &previous_);
  }
  ~Interruption() { sigaction(SIGUSR1, &previous_, nullptr); }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // Sends it, and returns once it was answered and the process waits again.
  void Send(pid_t process) const {
    char byte = 0;
    if (kill(process, SIGUSR1) != 0 || read(seen_.reader(), &byte, 1) != 1) _exit(1);
    AwaitWaiting(process);
  }

 private:
  Pipe seen_{0};
  struct sigaction previous_ {};
};

// Both settings that whoever shares a descriptor can choose.
class Descriptor : public testing::TestWithParam<int> {
 protected:
  Pipe pipe_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Settings, Descriptor, testing::Values(0, O_NONBLOCK), [](const auto& row) {
  return std::string(row.param == 0 ? "Blocks" : "DoesNotBlock");
});

std::string Read(int fd, size_t size) {
  std::string text(size, '.');
  const ssize_t got = ReadBlocking(fd, text.data(), size);
  return got < 0 ? "error" : text.substr(0, static_cast<size_t>(got));
}

TEST_P(Descriptor, GivesWhatIsThere) {
  ASSERT_EQ(WriteBlocking(pipe_.writer(), "text", 4), 4);
  EXPECT_EQ(Read(pipe_.reader(), 3), "tex");
  EXPECT_EQ(Read(pipe_.reader(), 3), "t");
}

TEST_P(Descriptor, EndsWithItsWriter) {
  pipe_.CloseWriter();
  EXPECT_EQ(Read(pipe_.reader(), 3), "");
}

TEST_P(Descriptor, IsWaitedForUntilThereIsSomething) {
  const OnceThisWaits writes([this](pid_t) { WriteBlocking(pipe_.writer(), "late", 4); });
  EXPECT_EQ(Read(pipe_.reader(), 10), "late");
}

TEST_P(Descriptor, IsWaitedForUntilItEnds) {
  const OnceThisWaits ends([](pid_t) {});
  pipe_.CloseWriter();
  EXPECT_EQ(Read(pipe_.reader(), 10), "");
}

TEST_P(Descriptor, IsReadBehindASignal) {
  const Interruption interruption;
  const OnceThisWaits interrupts([&](pid_t waiting) {
    interruption.Send(waiting);
    WriteBlocking(pipe_.writer(), "late", 4);
  });
  EXPECT_EQ(Read(pipe_.reader(), 10), "late");
}

TEST_P(Descriptor, IsWaitedForUntilThereIsRoom) {
  pipe_.Fill();
  const OnceThisWaits reads([this](pid_t) { pipe_.Empty(); });
  EXPECT_EQ(WriteBlocking(pipe_.writer(), "late", 4), 4);
}

TEST_P(Descriptor, IsWrittenBehindASignal) {
  pipe_.Fill();
  const Interruption interruption;
  const OnceThisWaits interrupts([&](pid_t waiting) {
    interruption.Send(waiting);
    pipe_.Empty();
  });
  EXPECT_EQ(WriteBlocking(pipe_.writer(), "late", 4), 4);
}

TEST_P(Descriptor, TakesNothingOfNothing) { EXPECT_EQ(WriteBlocking(pipe_.writer(), "", 0), 0); }

TEST_P(Descriptor, WithoutReaderTakesNothing) {
  pipe_.CloseReader();
  const auto previous = std::signal(SIGPIPE, SIG_IGN);
  errno = 0;
  EXPECT_EQ(WriteBlocking(pipe_.writer(), "x", 1), -1);
  EXPECT_EQ(errno, EPIPE);
  std::signal(SIGPIPE, previous);
}

TEST(DescriptorThatDoesNotBlock, TakesAPart) {
  Pipe pipe(O_NONBLOCK);
  const std::string text(static_cast<size_t>(fcntl(pipe.writer(), F_GETPIPE_SZ)) + 1, 'x');
  EXPECT_EQ(WriteBlocking(pipe.writer(), text.data(), text.size()),
            static_cast<ssize_t>(text.size()) - 1);
}

TEST(DescriptorOfTheOtherKind, IsNoDescriptor) {
  Pipe pipe(0);
  char byte = 0;
  errno = 0;
  EXPECT_EQ(ReadBlocking(pipe.writer(), &byte, 1), -1);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_EQ(WriteBlocking(pipe.reader(), &byte, 1), -1);
  EXPECT_EQ(errno, EBADF);
}

// The memory of a process that is gone takes nothing and tells no error.
TEST(DescriptorThatTakesNothing, IsAnError) {
  const pid_t child = fork();
  if (child == 0) {
    for (;;) pause();
  }
  const int memory = open(("/proc/" + std::to_string(child) + "/mem").c_str(), O_WRONLY);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  ASSERT_GE(memory, 0);
  errno = 0;
  EXPECT_EQ(WriteBlocking(memory, "x", 1), -1);
  EXPECT_EQ(errno, EIO);
  close(memory);
}

}  // namespace
}  // namespace ipvald
