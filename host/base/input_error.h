// What the user gave and cannot be used.
#ifndef HOST_BASE_INPUT_ERROR_H_
#define HOST_BASE_INPUT_ERROR_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ipvald {

/// What the user gave cannot be used: a file, the data model or the plug-in. what() is one line,
/// "FILE:LINE: message" or "FILE: message" where no line is known.
class InputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// How messages call the file: its name on one line, "standard input" for "-".
std::string DisplayName(const std::string& file);

/// "NAME:LINE: message", or "NAME: message" when `line` is 0; one line whatever `message` holds.
InputError LocatedError(const std::string& name, size_t line, std::string_view message);

}  // namespace ipvald

#endif  // HOST_BASE_INPUT_ERROR_H_
