// Runs a program to its end and keeps what it wrote.
#ifndef TESTS_SUPPORT_RUN_PROGRAM_H_
#define TESTS_SUPPORT_RUN_PROGRAM_H_

#include <string>
#include <vector>

struct ProgramResult {
  int status = -1;  // exit status, or 128 plus the number of the signal that ended it
  std::string out;
  std::string err;
  double cpu_seconds = 0;    // in user and kernel mode
  long peak_memory_kib = 0;  // largest resident set
};

struct ProgramInput {
  std::string standard_input = {};
  std::vector<std::string> environment = {};  // NAME=VALUE, added to that of this process
  bool terminal = false;  // standard output is a terminal that passes everything on as it is
};

/// Runs `command` (file name, then arguments) with the three standard descriptors and no other.
/// Aborts the test program when it cannot be started.
ProgramResult RunProgram(const std::vector<std::string>& command, const ProgramInput& input = {});

#endif  // TESTS_SUPPORT_RUN_PROGRAM_H_
