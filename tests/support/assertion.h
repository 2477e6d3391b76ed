// What support tooling looks for on standard error when a type test ends the process.
#ifndef TESTS_SUPPORT_ASSERTION_H_
#define TESTS_SUPPORT_ASSERTION_H_

#include <gmock/gmock.h>

#include <string>

namespace tests {

/// Matches a line
///   <program>: <source>:<line>: <return type> <function>(<types>): Assertion `<text>' failed.
///
/// @param where     "<source>:<line>"
/// @param function  return type and qualified name, without the types of the arguments: compilers
///                  write them differently
inline auto AssertionFailure(const std::string& where, const std::string& function,
                             const std::string& text) {
  return testing::AllOf(testing::HasSubstr(": " + where + ": " + function + "("),
                        testing::HasSubstr("): Assertion `" + text + "' failed.\n"));
}

}  // namespace tests

#endif  // TESTS_SUPPORT_ASSERTION_H_
