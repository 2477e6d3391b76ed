// The checks of interface addresses as plain nested loops: every address with every other, on
// copies of the interfaces. What the real checks have to answer, at a cost that grows with the
// square. Shares no code with them but the tables and the address types.
#ifndef TESTS_SUPPORT_PLAIN_OVERLAP_H_
#define TESTS_SUPPORT_PLAIN_OVERLAP_H_

#include <string>

#include "config.h"

namespace tests {

/// @returns  "accepted", or the message of the first fault
std::string PlainVerdictIpv4(const ip_application::config_valid::Config& cfg,
                             ip_application::config_valid::InterfaceType type);
std::string PlainVerdictIpv6(const ip_application::config_valid::Config& cfg,
                             ip_application::config_valid::InterfaceType type);

}  // namespace tests

#endif  // TESTS_SUPPORT_PLAIN_OVERLAP_H_
