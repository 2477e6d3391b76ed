#include "run_program.h"

#include <pty.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};
using TemporaryFile = std::unique_ptr<FILE, CloseFile>;

TemporaryFile MakeTemporaryFile() {
  TemporaryFile file(std::tmpfile());
  if (file == nullptr) {
    std::perror("tmpfile");
    std::abort();
  }
  return file;
}

std::string ReadBack(FILE* file) {
  std::string text;
  std::rewind(file);
  std::array<char, 65536> piece{};
  size_t got = 0;
  while ((got = std::fread(piece.data(), 1, piece.size(), file)) > 0) {
    text.append(piece.data(), got);
  }
  return text;
}

// A pseudo terminal: what is written to the terminal can be read from the master side.
struct Terminal {
  TemporaryFile master;
  TemporaryFile terminal;
};

Terminal MakeTerminal() {
  termios raw{};
  cfmakeraw(&raw);
  int master = -1;
  int terminal = -1;
  if (openpty(&master, &terminal, nullptr, &raw, nullptr) != 0) {
    std::perror("openpty");
    std::abort();
  }
  return {TemporaryFile(fdopen(master, "r")), TemporaryFile(fdopen(terminal, "w"))};
}

// What was written to a terminal that nobody has open any more.
std::string ReadTerminal(FILE* master) {
  std::string text;
  std::array<char, 4096> piece{};
  ssize_t got = 0;
  while ((got = read(fileno(master), piece.data(), piece.size())) > 0) {
    text.append(piece.data(), static_cast<size_t>(got));
  }
  return text;
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& command, const ProgramInput& input) {
  const TemporaryFile in = MakeTemporaryFile();
  Terminal terminal;
  if (input.terminal) terminal = MakeTerminal();
  TemporaryFile out = input.terminal ? std::move(terminal.terminal) : MakeTemporaryFile();
  const TemporaryFile err = MakeTemporaryFile();
  std::fwrite(input.standard_input.data(), 1, input.standard_input.size(), in.get());
  std::rewind(in.get());

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(in.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(err.get()), STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

  std::vector<std::string> arguments = command;
  // The first of two entries for one name counts, so the added ones stand in front.
  std::vector<std::string> environment = input.environment;
  for (char** entry = environ; *entry != nullptr; ++entry) environment.emplace_back(*entry);

  pid_t pid = 0;
  const int error = posix_spawn(&pid, command[0].c_str(), &actions, nullptr,
                                Pointers(arguments).data(), Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    std::fprintf(stderr, "cannot run %s\n", command[0].c_str());
    std::abort();
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  ProgramResult result;
  result.cpu_seconds = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  result.peak_memory_kib = usage.ru_maxrss;
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  if (input.terminal) {
    out.reset();
    result.out = ReadTerminal(terminal.master.get());
  } else {
    result.out = ReadBack(out.get());
  }
  result.err = ReadBack(err.get());
  return result;
}
