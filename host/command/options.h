// The command line.
#ifndef HOST_COMMAND_OPTIONS_H_
#define HOST_COMMAND_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace ipvald {

enum class Format { kText, kJson };
enum class Color { kAuto, kAlways, kNever };

struct CheckOptions {
  std::optional<std::string> running;  // file; none for an empty running configuration
  std::string candidate;
  std::string plugin;
  uint32_t timeout = 60;  // seconds
  bool trace = false;
  Color color = Color::kAuto;
};

struct Options {
  enum class Command { kCheck, kPoints, kText };

  Command command = Command::kCheck;
  std::string text;  // what --help or --version prints
  Format format = Format::kText;
  std::string yang;  // directory of the data model
  CheckOptions check;
};

/// The command line cannot be understood; what() is one line, which ends with where to read more.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads the command line. The plug-in and the data model default to where an installation has
/// them, relative to the running executable: ../lib and ../share/ipvald/yang.
/// @throws UsageError
Options ParseOptions(int argc, const char* const* argv);

}  // namespace ipvald

#endif  // HOST_COMMAND_OPTIONS_H_
