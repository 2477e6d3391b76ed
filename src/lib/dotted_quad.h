// IPv4 addresses as ConfD's keys spell them.
#ifndef SRC_LIB_DOTTED_QUAD_H_
#define SRC_LIB_DOTTED_QUAD_H_

#include <string>

#include "nettypes/ipv4.h"

namespace ip_application::config_valid {

/// The address that a dotted quad such as "192.0.2.1" stands for.
/// @throws boost::system::system_error  for any other text: system category, no text of its own,
/// the code errno or, where that is 0, EINVAL. An address leaves errno as it is.
nettypes::IPv4Addr ParseIpv4Addr(const std::string& text);

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_DOTTED_QUAD_H_
