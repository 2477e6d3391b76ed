// Why a data model or a configuration cannot be used.
#ifndef STORE_ERROR_H_
#define STORE_ERROR_H_

#include <cstdint>
#include <stdexcept>
#include <string>

namespace store {

/// The data model or a configuration cannot be used. what() is one line; line() is where libyang
/// saw it, 0 if unknown.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& what, uint64_t line = 0)
      : std::runtime_error(what), line_(line) {}
  uint64_t line() const { return line_; }

 private:
  uint64_t line_;
};

}  // namespace store

#endif  // STORE_ERROR_H_
