// The one kind of error that ends ipvald without a verdict.
#ifndef HOST_INPUT_ERROR_H_
#define HOST_INPUT_ERROR_H_

#include <stdexcept>

namespace ipvald {

/// What the user gave cannot be used: a file, the data model or the plug-in. what() is one line,
/// "FILE:LINE: message" or "FILE: message" where no line is known.
class InputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace ipvald

#endif  // HOST_INPUT_ERROR_H_
