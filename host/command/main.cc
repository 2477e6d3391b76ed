// ipvald: what a device's configuration validation says about a configuration.

#include <fcntl.h>
#include <malloc.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "configuration_file.h"
#include "input_error.h"
#include "interrupted.h"
#include "one_line.h"
#include "options.h"
#include "reading_deadline.h"
#include "report_json.h"
#include "report_text.h"
#include "resources.h"
#include "standard_output.h"
#include "transaction.h"

namespace ipvald {
namespace {

constexpr int kNoVerdictStatus = 2;
constexpr int kSignalStatus = 128;  // plus the signal's number

int StatusOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kAccepted:
      return 0;
    case Verdict::kRejected:
      return 1;
    case Verdict::kPluginFailure:
      break;
  }
  return 3;
}

bool UseColor(Color color) {
  if (color != Color::kAuto) return color == Color::kAlways;
  const char* no_color = std::getenv("NO_COLOR");
  if (no_color != nullptr && *no_color != '\0') return false;
  return isatty(STDOUT_FILENO) == 1;
}

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

std::shared_ptr<const confd::Schema> LoadSchema(const std::string& directory) {
  try {
    return confd::Schema::Load(directory);
  } catch (const confd::Error& error) {
    throw InputError(OneLine(error.what()));
  }
}

// Bytes by which the heap grows; a large configuration would otherwise ask the kernel hundreds of
// times.
constexpr int kHeapStep = 32 << 20;

// The process ends soon. To take a large tree apart node by node would take it a good part of the
// time that reading the tree took.
void KeepUntilExit(const std::shared_ptr<const confd::Snapshot>& configuration) {
  static auto* const kept = new std::vector<std::shared_ptr<const confd::Snapshot>>();
  kept->push_back(configuration);
}

std::shared_ptr<const confd::Snapshot> ReadInTime(
    const std::shared_ptr<const confd::Schema>& schema, const std::string& file,
    std::chrono::seconds limit) {
  const ReadingDeadline deadline(file, limit, kNoVerdictStatus);
  return ReadConfiguration(schema, file);
}

int Check(const Options& options) {
  const CheckOptions& check = options.check;
  const auto schema = LoadSchema(options.yang);
  const std::chrono::seconds timeout(check.timeout);
  const auto running =
      check.running ? ReadInTime(schema, *check.running, timeout) : confd::Snapshot::Empty(schema);
  const auto candidate = ReadInTime(schema, check.candidate, timeout);
  KeepUntilExit(running);
  KeepUntilExit(candidate);
  const TransactionReport report =
      RunTransaction(running, candidate, {check.plugin, timeout, check.trace});
  Print(options.format == Format::kJson ? JsonReport(report)
                                        : TextReport(report, {check.trace, UseColor(check.color)}));
  return StatusOf(report.verdict);
}

int Points(const Options& options) {
  const auto schema = LoadSchema(options.yang);
  const auto& points = schema->validation_points();
  Print(options.format == Format::kJson ? JsonPoints(points) : TextPoints(points));
  return 0;
}

int Run(int argc, const char* const* argv) {
  RequireDescriptors();
  const Options options = ParseOptions(argc, argv);
  switch (options.command) {
    case Options::Command::kCheck:
      return Check(options);
    case Options::Command::kPoints:
      return Points(options);
    case Options::Command::kText:
      break;
  }
  Print(options.text);
  return 0;
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
  _exit(kNoVerdictStatus);
});

// Runs the command and tells what goes wrong, but for want of memory.
// @returns the exit status
// @throws std::bad_alloc
int RunAndTell(int argc, const char* const* argv) {
  try {
    return Run(argc, argv);
  } catch (const Interrupted& interrupted) {
    return kSignalStatus + interrupted.signal();
  } catch (const UsageError& error) {
    PrintError(error.what());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    PrintError(OneLine(error.what()));
  }
  return kNoVerdictStatus;
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
  return ipvald::kNoVerdictStatus;
}
