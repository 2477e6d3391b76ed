// What a command prints for its user.
#ifndef HOST_COMMAND_STANDARD_OUTPUT_H_
#define HOST_COMMAND_STANDARD_OUTPUT_H_

#include <stdexcept>
#include <string_view>

namespace ipvald {

/// Standard output took not all of a text. what() is one line.
class OutputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Writes the whole text to standard output: a verdict that nobody got is none.
/// @throws OutputError
void Print(std::string_view text);

}  // namespace ipvald

#endif  // HOST_COMMAND_STANDARD_OUTPUT_H_
