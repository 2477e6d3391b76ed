#include "static_route_config.h"

namespace ip_application::config_valid {

// The table has no reader yet and stays empty.
void StaticRouteConfig::ReadConfig(ConfigAddrFamily /*family*/) {}

}  // namespace ip_application::config_valid
