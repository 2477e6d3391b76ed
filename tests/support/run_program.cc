#include "run_program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

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
  const TemporaryFile out = MakeTemporaryFile();
  const TemporaryFile err = MakeTemporaryFile();
  std::fwrite(input.standard_input.data(), 1, input.standard_input.size(), in.get());
  std::rewind(in.get());

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(in.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(err.get()), STDERR_FILENO);

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
  waitpid(pid, &status, 0);
  ProgramResult result;
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  result.out = ReadBack(out.get());
  result.err = ReadBack(err.get());
  return result;
}
