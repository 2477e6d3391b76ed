// How a fuzz target says that a property does not hold.
#ifndef FUZZ_REQUIRE_H_
#define FUZZ_REQUIRE_H_

#include <stdexcept>
#include <string>

namespace fuzz {

/// A property does not hold. No target catches it: libFuzzer takes it for a crash, and the replay
/// for a failed test.
class PropertyViolated : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline void Require(bool holds, const std::string& property) {
  if (!holds) throw PropertyViolated(property);
}

}  // namespace fuzz

#endif  // FUZZ_REQUIRE_H_
