#include "plugin_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "input_error.h"
#include "interrupted.h"
#include "one_line.h"
#include "orphans.h"
#include "record_stream.h"
#include "resources.h"

namespace ipvald {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kKeptOutput = 65536;   // bytes of the plug-in's own output
constexpr int kResultDescriptor = 200;  // number for the result pipe, out of a plug-in's way

// Statuses of a child that cannot report why it ends.
constexpr int kTooFewDescriptorsStatus = 123;
constexpr int kOutOfMemoryStatus = 124;
constexpr int kLostResultsStatus = 125;

// Bytes of address space that must be left before a plug-in is loaded: the loader would otherwise
// say that the file cannot be mapped.
constexpr size_t kLoadingRoom = size_t{4} << 20;

// Says what this process has too little of, in words that tell what to change.
[[noreturn]] void ThrowShortage(int error, const char* what) {
  if (error == EMFILE) what = "too few file descriptors (ulimit -n)";
  if (error == ENOMEM) what = "out of memory (ulimit -v)";
  throw std::system_error(error, std::generic_category(), what);
}

// A file descriptor that is closed when it goes out of scope.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;

  int get() const { return fd_; }
  bool is_open() const { return fd_ >= 0; }
  void Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

 private:
  int fd_;
};

struct Pipe {
  Descriptor reader;
  Descriptor writer;
};

Pipe MakePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) ThrowShortage(errno, "pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

Descriptor MakeSignalDescriptor(const sigset_t* signals) {
  const int fd = signalfd(-1, signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd < 0) ThrowShortage(errno, "signalfd");
  return Descriptor(fd);
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Holds back the signals that the parent answers itself while a child runs. What the caller ignores
// stays ignored, such as SIGHUP under nohup: held back, it would be delivered all the same.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigemptyset(&set_);
    sigaddset(&set_, SIGCHLD);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      if (!IsIgnored(signal)) sigaddset(&set_, signal);
    }
    sigprocmask(SIG_BLOCK, &set_, &previous_);
  }
  ~BlockedSignals() { Restore(); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

  void Restore() const { sigprocmask(SIG_SETMASK, &previous_, nullptr); }
  const sigset_t* set() const { return &set_; }

 private:
  sigset_t set_{};
  sigset_t previous_{};
};

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// Closes all descriptors but the standard ones and `result_fd`, for which it returns another: out
// of a plug-in's way where the limit allows.
int KeepOnly(int result_fd) {
  constexpr int kFirst = STDERR_FILENO + 1;
  if (result_fd > kFirst) close_range(kFirst, static_cast<unsigned>(result_fd - 1), 0);
  close_range(static_cast<unsigned>(result_fd + 1), ~0U, 0);
  const auto highest =
      static_cast<int>(std::min<uint64_t>(DescriptorLimit() - 1, kResultDescriptor));
  if (result_fd >= highest) return result_fd;
  const int results = fcntl(result_fd, F_DUPFD_CLOEXEC, highest);
  if (results < 0) _exit(kTooFewDescriptorsStatus);
  close(result_fd);
  return results;
}

// Ends the process where `new` would throw: under a limit that is no fault of the plug-in's.
void LeaveWhenMemoryRunsOut() {
  std::set_new_handler([] { _exit(kOutOfMemoryStatus); });
  void* room =
      mmap(nullptr, kLoadingRoom, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (room == MAP_FAILED) _exit(kOutOfMemoryStatus);
  munmap(room, kLoadingRoom);
}

// The child's life from fork to end.
[[noreturn]] void RunChild(const PluginTask& task, pid_t parent, int result_fd, int output_fd) {
  setpgid(0, 0);
  // A parent that is killed outright takes the child with it, also when that happened just now.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(kLostResultsStatus);
  const rlimit no_core_file{0, RLIM_INFINITY};
  setrlimit(RLIMIT_CORE, &no_core_file);
  std::signal(SIGPIPE, SIG_DFL);

  dup2(output_fd, STDOUT_FILENO);
  dup2(output_fd, STDERR_FILENO);
  const int results = KeepOnly(result_fd);
  // Needs the one descriptor more that loading the plug-in needs, too.
  const int null_fd = open("/dev/null", O_RDONLY);
  if (null_fd < 0 && errno == EMFILE) _exit(kTooFewDescriptorsStatus);
  if (null_fd >= 0) {
    dup2(null_fd, STDIN_FILENO);
    close(null_fd);
  }
  if (IsMemoryLimited()) LeaveWhenMemoryRunsOut();

  // A plug-in that forks comes back twice, and only the first process speaks for it.
  const pid_t self = getpid();
  RunPluginSession(task, [results, self](const Record& record) {
    if (getpid() != self) _exit(kLostResultsStatus);
    if (!WriteAll(results, Encode(record))) _exit(kLostResultsStatus);
  });
  std::fflush(nullptr);
  _exit(0);
}

// Follows one child: collects its records and output until it is gone or its time is up.
class ChildWatch {
 public:
  ChildWatch(pid_t child, const OrphanKeeper& orphans, Descriptor results, Descriptor output,
             Descriptor signals, std::chrono::seconds timeout, uint32_t calls)
      : child_(child),
        orphans_(orphans),
        results_(std::move(results)),
        output_(std::move(output)),
        signals_(std::move(signals)),
        timeout_(timeout),
        deadline_(Clock::now() + timeout),
        protocol_(calls) {
    fcntl(results_.get(), F_SETFL, O_NONBLOCK);
    fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  }
  ~ChildWatch() { KillGroup(); }
  ChildWatch(const ChildWatch&) = delete;
  ChildWatch& operator=(const ChildWatch&) = delete;

  PluginRun Watch(const std::string& plugin) {
    while (!exited_ && run().failure.empty()) WaitForEvent();
    KillGroup();
    // What the child wrote before it ended is still in the pipes.
    ReadResults();
    ReadOutput();
    if (run().failure.empty()) {
      ThrowIfTooLittleWasLeft();
      if (protocol_.unusable()) throw LocatedError(DisplayName(plugin), 0, *protocol_.unusable());
      run().failure = FailureFromEnd();
    }
    return std::move(run());
  }

 private:
  void WaitForEvent() {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
    if (left.count() <= 0) {
      run().failure = "no answer within " + std::to_string(timeout_.count()) + " s";
      return;
    }
    std::array<pollfd, 3> watched{
        {{results_.get(), POLLIN, 0}, {output_.get(), POLLIN, 0}, {signals_.get(), POLLIN, 0}}};
    const auto milliseconds = std::min<int64_t>(left.count(), 3'600'000);
    if (poll(watched.data(), watched.size(), static_cast<int>(milliseconds)) <= 0) return;
    if (watched[0].revents != 0) ReadResults();
    if (watched[1].revents != 0) ReadOutput();
    if (watched[2].revents != 0) ReadSignals();
  }

  void ReadSignals() {
    signalfd_siginfo info{};
    while (read(signals_.get(), &info, sizeof(info)) == sizeof(info)) {
      if (info.ssi_signo == SIGCHLD) {
        LookForExit();
      } else {
        KillGroup();
        throw Interrupted(static_cast<int>(info.ssi_signo));
      }
    }
  }

  // Looks whether the child has ended, but leaves it unreaped: until then nothing else gets its
  // number.
  void LookForExit() {
    siginfo_t info{};
    const auto id = static_cast<id_t>(child_);
    if (waitid(P_PID, id, &info, WEXITED | WNOHANG | WNOWAIT) == 0) exited_ = info.si_pid == child_;
  }

  // Ends the child and whatever processes it started: those of its group, then those that left it.
  void KillGroup() {
    if (reaped_) return;
    kill(-child_, SIGKILL);
    kill(child_, SIGKILL);
    waitpid(child_, &status_, 0);
    reaped_ = true;
    orphans_.EndAll();
  }

  void ReadOutput() {
    Drain(output_, [this](std::string_view bytes) {
      run().output.append(bytes);
      if (run().output.size() > 2 * kKeptOutput) TrimOutput();
    });
    TrimOutput();
  }

  void TrimOutput() {
    std::string& output = run().output;
    if (output.size() > kKeptOutput) output.erase(0, output.size() - kKeptOutput);
  }

  void ReadResults() {
    Drain(results_, [this](std::string_view bytes) { reader_.Append(bytes); });
    try {
      while (run().failure.empty()) {
        std::optional<Record> record = reader_.Next();
        if (!record) return;
        protocol_.Take(std::move(*record));
      }
    } catch (const std::runtime_error& error) {
      run().failure = std::string("damaged results: ") + error.what();
    }
  }

  // Hands what can be read now to `take`, at most a few pieces so that a flood does not outrun the
  // deadline.
  template <typename Take>
  static void Drain(Descriptor& descriptor, const Take& take) {
    std::array<char, 65536> piece;
    for (int pieces = 0; descriptor.is_open() && pieces < 64; ++pieces) {
      const ssize_t got = read(descriptor.get(), piece.data(), piece.size());
      if (got > 0) {
        take(std::string_view(piece.data(), static_cast<size_t>(got)));
      } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
        descriptor.Close();
      } else if (errno == EAGAIN) {
        return;
      }
    }
  }

  // Believes the child's word only where the plug-in could not have ended the process like this, or
  // where there is a limit that it could have met.
  void ThrowIfTooLittleWasLeft() const {
    if (!WIFEXITED(status_)) return;
    const int status = WEXITSTATUS(status_);
    if (status == kTooFewDescriptorsStatus && !protocol_.has_begun()) {
      ThrowShortage(EMFILE, "plug-in process");
    }
    if (status == kOutOfMemoryStatus && IsMemoryLimited()) ThrowShortage(ENOMEM, "plug-in process");
  }

  std::string FailureFromEnd() const {
    if (WIFSIGNALED(status_)) {
      const int signal = WTERMSIG(status_);
      return "killed by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    const int status = WEXITSTATUS(status_);
    if (status == kLostResultsStatus) return "the results could not be passed on";
    if (!protocol_.is_done() || status != 0) {
      return "the process ended with status " + std::to_string(status);
    }
    return reader_.has_rest() ? "damaged results: a result record behind the end" : "";
  }

  PluginRun& run() { return protocol_.run(); }

  pid_t child_;
  const OrphanKeeper& orphans_;
  Descriptor results_;
  Descriptor output_;
  Descriptor signals_;
  std::chrono::seconds timeout_;
  Clock::time_point deadline_;
  RecordReader reader_;
  PluginProtocol protocol_;
  bool exited_ = false;
  bool reaped_ = false;
  int status_ = 0;
};

}  // namespace

PluginRun RunPlugin(const PluginTask& task, std::chrono::seconds timeout) {
  const BlockedSignals blocked;
  const OrphanKeeper orphans;
  Pipe results = MakePipe();
  Pipe output = MakePipe();
  Descriptor signals = MakeSignalDescriptor(blocked.set());
  const pid_t parent = getpid();
  std::fflush(nullptr);  // or the child would write once more what is still buffered
  const pid_t child = fork();
  if (child < 0) ThrowShortage(errno, "no process can be started (ulimit -u)");
  if (child == 0) {
    blocked.Restore();
    RunChild(task, parent, results.writer.get(), output.writer.get());
  }
  setpgid(child, child);  // the child does the same: whoever comes first
  results.writer.Close();
  output.writer.Close();
  ChildWatch watch(child, orphans, std::move(results.reader), std::move(output.reader),
                   std::move(signals), timeout, static_cast<uint32_t>(task.calls.size()));
  return watch.Watch(task.plugin);
}

}  // namespace ipvald
