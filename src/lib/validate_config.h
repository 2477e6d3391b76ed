#ifndef SRC_LIB_VALIDATE_CONFIG_H_
#define SRC_LIB_VALIDATE_CONFIG_H_

#include <string>

namespace ip_application::config_valid {

/// The checker: its member functions are the checks. A validation point makes one for its call;
/// nothing of it outlives the call.
class ValidateConfig {
 public:
  /// The message of the last check that failed, one whole sentence; empty before. A failing check
  /// replaces it.
  std::string error_;
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_VALIDATE_CONFIG_H_
