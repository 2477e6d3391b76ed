// The tables of a Config, for tests of what concerns each of them.
#ifndef TESTS_SUPPORT_CONFIG_TABLES_H_
#define TESTS_SUPPORT_CONFIG_TABLES_H_

#include <array>

#include "config.h"
#include "static_route_config.h"

namespace tests {

/// In the order of construction.
inline std::array<ip_application::config_valid::GenericConfig*, 5> AllTables(
    ip_application::config_valid::Config& config) {
  return {&config.ospfv2_config_, config.static_route_config_.get(), &config.l3_config_,
          &config.lo_config_, &config.mgmt_config_};
}

}  // namespace tests

#endif  // TESTS_SUPPORT_CONFIG_TABLES_H_
