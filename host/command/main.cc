// ipvald: what a device's configuration validation says about a configuration.

#include <fcntl.h>
#include <malloc.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "check.h"
#include "exit_status.h"
#include "interrupted.h"
#include "one_line.h"
#include "options.h"
#include "points.h"
#include "resources.h"
#include "standard_output.h"

namespace ipvald {
namespace {

// A descriptor that the caller left closed would be given to the next file that is opened, and the
// verdict be written there. A descriptor that can only be read takes its place: writing to it
// fails.
void OccupyStandardDescriptors() {
  int fd = open("/dev/null", O_RDONLY);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = open("/dev/null", O_RDONLY);
  if (fd >= 0) close(fd);
}

// libyang would load and run every library in the folders that these name.
void ForgetLibyangPlugins() {
  for (const char* name : {"LIBYANG_TYPES_PLUGINS_DIR", "LIBYANG_EXTENSIONS_PLUGINS_DIR"}) {
    unsetenv(name);
  }
}

// Bytes by which the heap grows; a large configuration would otherwise ask the kernel hundreds of
// times.
constexpr int kHeapStep = 32 << 20;

int Run(int argc, const char* const* argv) {
  RequireDescriptors();
  const Options options = ParseOptions(argc, argv);
  switch (options.command) {
    case Options::Command::kCheck:
      return RunCheck(options);
    case Options::Command::kPoints:
      return RunPoints(options);
    case Options::Command::kText:
      break;
  }
  Print(options.text);
  return kDone;
}

// Takes no memory, since that may be what there is too little of.
void PrintError(std::string_view message) {
  const auto piece = [](std::string_view text) {
    return iovec{const_cast<char*>(text.data()), text.size()};
  };
  const std::array<iovec, 3> line = {piece("ipvald: "), piece(message), piece("\n")};
  // There is nowhere left to tell that this failed.
  [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, line.data(), line.size());
}

constexpr const char* kOutOfMemory = "out of memory";

// Static objects of CLI11 take memory before main begins, where nothing can be caught. Those of
// this file come first.
[[maybe_unused]] const std::new_handler kBeforeMain = std::set_new_handler([] {
  PrintError(kOutOfMemory);
  _exit(kNoVerdict);
});

// Runs the command and tells what goes wrong, but for want of memory.
// @returns the exit status
// @throws std::bad_alloc
int RunAndTell(int argc, const char* const* argv) {
  try {
    return Run(argc, argv);
  } catch (const Interrupted& interrupted) {
    return StatusOfSignal(interrupted.signal());
  } catch (const UsageError& error) {
    PrintError(error.what());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    PrintError(OneLine(error.what()));
  }
  return kNoVerdict;
}

}  // namespace
}  // namespace ipvald

int main(int argc, char** argv) {
  std::set_new_handler(nullptr);
  mallopt(M_TOP_PAD, ipvald::kHeapStep);
  ipvald::OccupyStandardDescriptors();
  ipvald::ForgetLibyangPlugins();
  std::signal(SIGPIPE, SIG_IGN);  // a reader that went away is reported like a full disk
  std::signal(SIGCHLD, SIG_DFL);
  try {
    if (ipvald::HasMemory(ipvald::kMemoryOfCommand)) return ipvald::RunAndTell(argc, argv);
  } catch (const std::bad_alloc&) {
    // Said below.
  }
  ipvald::PrintError(ipvald::kOutOfMemory);
  return ipvald::kNoVerdict;
}
