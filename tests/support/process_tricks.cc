#include "process_tricks.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <list>
#include <map>

namespace {

[[noreturn]] void Hang() {
  for (;;) pause();
}

void NoteProcess() {
  const char* file = std::getenv("MISBEHAVE_PROCESSES");
  if (file != nullptr) std::ofstream(file, std::ios::app) << getpid() << std::endl;
}

// Runs `child` in a process of its own, and returns when that has noted its number.
void StartProcess(const std::function<void()>& child) {
  int noted[2];
  if (pipe(noted) != 0) std::abort();
  if (fork() == 0) {
    child();
    NoteProcess();
    close(noted[0]);
    close(noted[1]);
    Hang();
  }
  close(noted[1]);
  char byte = 0;
  // Ends when the last writer has closed its end.
  while (read(noted[0], &byte, 1) > 0) continue;
  close(noted[0]);
}

// In a session of its own, as daemons are, and no longer a child of the plug-in's process.
void LeaveDaemon() {
  StartProcess([] {
    setsid();
    if (fork() != 0) _exit(0);
  });
}

void SignalHostAndHang(int signal) {
  NoteProcess();
  StartProcess([] {});
  LeaveDaemon();
  kill(getppid(), signal);
  Hang();
}

void CloseStandard() {
  for (int fd = 0; fd <= STDERR_FILENO; ++fd) close(fd);
}

void CloseEverything() {
  CloseStandard();
  close_range(STDERR_FILENO + 1, ~0U, 0);
}

// Whatever is written from now on gets lost without an error.
void ReplaceDescriptors() {
  const int null_fd = open("/dev/null", O_RDWR);
  for (int fd = 0; fd < 1024; ++fd) dup2(null_fd, fd);
}

// What a process has only one of.
void ChangeProcess() {
  if (chdir("/") != 0) std::abort();
  umask(0777);
  clearenv();
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, nullptr);
  for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_IGN);
  const rlimit none{0, 0};
  setrlimit(RLIMIT_FSIZE, &none);
  setrlimit(RLIMIT_NOFILE, &none);
  if (setpgid(0, getpgid(getppid())) != 0) std::abort();
}

void EatMemory() {
  std::list<std::string> eaten;
  for (;;) eaten.emplace_back(1 << 20, 'x');
}

const std::map<std::string, void (*)()> kTricks = {
    {"leave-daemon", LeaveDaemon},
    {"interrupt-host", [] { SignalHostAndHang(SIGINT); }},
    {"terminate-host", [] { SignalHostAndHang(SIGTERM); }},
    {"hang-up-host", [] { SignalHostAndHang(SIGHUP); }},
    {"hang-up-host-and-go-on", [] { kill(getppid(), SIGHUP); }},
    {"terminate-host-group", [] { kill(-getpgid(getppid()), SIGTERM); }},
    {"twin", [] { fork(); }},
    {"twin-alone", [] { fork() != 0 ? (usleep(300'000), _exit(0)) : (void)0; }},
    {"twin-exits", [] { fork() == 0 ? std::exit(0) : (void)0; }},
    {"close-standard", CloseStandard},
    {"close-everything", CloseEverything},
    {"replace-descriptors", ReplaceDescriptors},
    {"change-process", ChangeProcess},
    {"eat-memory", EatMemory},
    {"stop", [] { raise(SIGSTOP); }},
    {"alarm", [] { raise(SIGALRM); }},
    {"exit-later", [] { std::atexit([] { _exit(0); }); }},
};

}  // namespace

void PlayProcessTrick(const std::string& name) {
  const auto trick = kTricks.find(name);
  if (trick != kTricks.end()) trick->second();
}
