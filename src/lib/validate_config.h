#ifndef SRC_LIB_VALIDATE_CONFIG_H_
#define SRC_LIB_VALIDATE_CONFIG_H_

#include <string>

#include "confd_dp.h"

namespace ip_application::config_valid {

class Config;

/// The checker: its member functions are the checks. A validation point makes one for its call;
/// nothing of it outlives the call.
///
/// A check returns 0 when the configuration passes, or -1 with its message in error_.
class ValidateConfig {
 public:
  /// At most 256 L3 interfaces, with names of 1 to 60 bytes, all letters, digits, "-" or "_".
  [[nodiscard]] int ValidateInterfaceL3(const Config& cfg);

  /// The message of the last check that failed, one whole sentence; empty before. A failing check
  /// replaces it.
  std::string error_;
};

/// How a validation point ends: hands the text of a check that failed to ConfD.
///
/// @param result  what a check of `checker` returned
/// @returns 0 when the check passed, else -1
int Verdict(confd_trans_ctx* tctx, const ValidateConfig& checker, int result);

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_VALIDATE_CONFIG_H_
