#ifndef SRC_LIB_VALIDATE_LOGGER_H_
#define SRC_LIB_VALIDATE_LOGGER_H_

namespace ip_application::config_valid {

/// The debug log of the validation daemon. One per process, made at the first use, which may be on
/// any thread.
class ValidateLogger {
 public:
  /// Writes one debug record, nothing added to the text; printf format. Does nothing when the
  /// daemon's log was off at the first use in the process, whatever happened to that log since.
  static void Log(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

  static ValidateLogger& instance();

  ValidateLogger(const ValidateLogger&) = delete;
  ValidateLogger& operator=(const ValidateLogger&) = delete;

 private:
  ValidateLogger();

  void* const handle_;
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_VALIDATE_LOGGER_H_
