// What Print does where standard output takes a text, a part of it, or nothing.
#include "standard_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace ipvald {
namespace {

// What Print says of `text` while `fd` is standard output, or none is when it is negative.
std::string ErrorOfPrinting(std::string_view text, int fd) {
  std::fflush(stdout);
  const int previous = dup(STDOUT_FILENO);
  if (fd < 0) {
    close(STDOUT_FILENO);
  } else {
    dup2(fd, STDOUT_FILENO);
  }
  std::string error = "none";
  try {
    Print(text);
  } catch (const OutputError& thrown) {
    error = thrown.what();
  }
  dup2(previous, STDOUT_FILENO);
  close(previous);
  return error;
}

// A signal that does not end this process while the object lives.
class Ignored {
 public:
  explicit Ignored(int signal) : signal_(signal), previous_(std::signal(signal, SIG_IGN)) {}
  ~Ignored() { std::signal(signal_, previous_); }
  Ignored(const Ignored&) = delete;
  Ignored& operator=(const Ignored&) = delete;

 private:
  int signal_;
  void (*previous_)(int);
};

TEST(FullDisk, IsTold) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(ErrorOfPrinting("x", full), "standard output: No space left on device");
  EXPECT_EQ(ErrorOfPrinting("", full), "none");
  close(full);
}

TEST(ClosedDescriptor, IsTold) {
  EXPECT_EQ(ErrorOfPrinting("x", -1), "standard output: Bad file descriptor");
}

TEST(DescriptorForReading, IsTold) {
  const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(ErrorOfPrinting("x", null), "standard output: Bad file descriptor");
  close(null);
}

TEST(PipeWithoutReader, IsTold) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  close(ends[0]);
  const Ignored no_signal(SIGPIPE);
  EXPECT_EQ(ErrorOfPrinting("x", ends[1]), "standard output: Broken pipe");
  close(ends[1]);
}

// More than a pipe holds, into one that does not make its writer wait.
TEST(Pipe, GetsTheWholeText) {
  std::string text;
  for (int i = 0; text.size() < 500'000; ++i) text += std::to_string(i) + '\0';
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
  const pid_t writer = fork();
  if (writer == 0) _exit(ErrorOfPrinting(text, ends[1]) == "none" ? 0 : 1);
  close(ends[1]);
  fcntl(ends[0], F_SETFL, 0);
  std::string arrived;
  std::array<char, 4096> piece;
  for (ssize_t got = 1; got > 0;) {
    got = read(ends[0], piece.data(), piece.size());
    if (got > 0) arrived.append(piece.data(), static_cast<size_t>(got));
  }
  close(ends[0]);
  int status = -1;
  waitpid(writer, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(arrived.size(), text.size());
  EXPECT_TRUE(arrived == text);
}

// A file that takes the beginning of a text, here as far as a limit allows.
TEST(FileThatGetsFull, IsTold) {
  std::string name = testing::TempDir() + "standard-output-XXXXXX";
  const int file = mkstemp(name.data());
  ASSERT_GE(file, 0);
  const Ignored no_signal(SIGXFSZ);
  rlimit previous{};
  getrlimit(RLIMIT_FSIZE, &previous);
  const rlimit small{10, previous.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const std::string longer = ErrorOfPrinting("eleven char", file);
  const off_t size = lseek(file, 0, SEEK_CUR);
  lseek(file, 0, SEEK_SET);
  const std::string as_long = ErrorOfPrinting("ten chars.", file);
  setrlimit(RLIMIT_FSIZE, &previous);
  EXPECT_EQ(longer, "standard output: File too large");
  EXPECT_EQ(size, 10);
  EXPECT_EQ(as_long, "none");
  close(file);
  unlink(name.c_str());
}

}  // namespace
}  // namespace ipvald
