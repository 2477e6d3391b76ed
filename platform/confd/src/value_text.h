// Values of ConfD as texts.
#ifndef PLATFORM_CONFD_VALUE_TEXT_H_
#define PLATFORM_CONFD_VALUE_TEXT_H_

#include <string>

#include "confd_lib.h"

namespace confd {

/// What confd_pp_value prints.
std::string PrintValue(const confd_value_t& value);

/// As PrintValue, in double quotes when the bare text could not be read back as a key.
std::string PrintKey(const confd_value_t& value);

}  // namespace confd

#endif  // PLATFORM_CONFD_VALUE_TEXT_H_
