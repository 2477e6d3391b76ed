// The always-on test of a ConfD value's type. The data model guarantees these types, so a wrong one
// is a programming error: the process ends with the C library's assertion message on standard
// error, in release builds too, where assert() would be empty.
#ifndef SRC_LIB_TYPE_TEST_H_
#define SRC_LIB_TYPE_TEST_H_

// What glibc's assert() calls; its header declares it only in builds without NDEBUG.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-redundant-declaration): see above
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((noreturn));

/// Ends the process unless `value` (a const confd_value_t&) is of `wanted_type`. Support tooling
/// greps for the message, so `text`, `file` and `line` are literals that stay as they are when code
/// moves:
///
///   <program>: <file>:<line>: <signature of the calling function>: Assertion `<text>' failed.
#define IPAV_REQUIRE_TYPE(value, wanted_type, text, file, line)   \
  do {                                                            \
    if ((value).type != (wanted_type)) {                          \
      __assert_fail((text), (file), (line), __PRETTY_FUNCTION__); \
    }                                                             \
  } while (false)

#endif  // SRC_LIB_TYPE_TEST_H_
