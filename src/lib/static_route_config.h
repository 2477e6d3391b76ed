#ifndef SRC_LIB_STATIC_ROUTE_CONFIG_H_
#define SRC_LIB_STATIC_ROUTE_CONFIG_H_

#include "config.h"

namespace ip_application::config_valid {

/// The static routes, both address families. Owned by Config.
class StaticRouteConfig : public GenericConfig {
 public:
  void ReadConfig(ConfigAddrFamily family) override;
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_STATIC_ROUTE_CONFIG_H_
