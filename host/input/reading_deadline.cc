#include "reading_deadline.h"

#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <utility>

#include "input_error.h"

namespace ipvald {
namespace {

// What the signal handler says and ends with: made beforehand, since it may not allocate.
struct LastWords {
  std::string line;
  int status;
};
const LastWords* last_words = nullptr;

void EndProcess(int /*signal*/) {
  // There is nowhere left to tell that this failed.
  [[maybe_unused]] const ssize_t written =
      write(STDERR_FILENO, last_words->line.data(), last_words->line.size());
  _exit(last_words->status);
}

void SetTimer(std::chrono::seconds time) {
  const itimerval timer{{0, 0}, {time.count(), 0}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

ReadingDeadline::ReadingDeadline(const std::string& file, std::chrono::seconds limit, int status) {
  last_words = new LastWords{"ipvald: " + DisplayName(file) + ": not read and checked within " +
                                 std::to_string(limit.count()) + " s (--timeout)\n",
                             status};
  std::signal(SIGALRM, EndProcess);
  sigset_t alarm_only;
  sigemptyset(&alarm_only);
  sigaddset(&alarm_only, SIGALRM);
  sigprocmask(SIG_UNBLOCK, &alarm_only, nullptr);  // the caller may have blocked it
  SetTimer(limit);
}

ReadingDeadline::~ReadingDeadline() {
  SetTimer(std::chrono::seconds(0));
  std::signal(SIGALRM, SIG_DFL);
  delete std::exchange(last_words, nullptr);
}

}  // namespace ipvald
