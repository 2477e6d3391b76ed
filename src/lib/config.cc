#include "config.h"

#include <algorithm>

#include "static_route_config.h"
#include "type_test.h"
#include "velmor-ip-app.h"

namespace ip_application::config_valid {

void GenericConfig::ReadConfigIfNeeded(ConfigAddrFamily family) {
  if (family != ConfigAddrFamily::IPv4 && family != ConfigAddrFamily::IPv6) return;
  bool& read = family == ConfigAddrFamily::IPv4 ? ipv4_read_ : ipv6_read_;
  if (read) return;
  ReadConfig(family);
  read = true;
}

// The tables have no readers yet and stay empty.

void L3Config::ReadConfig(ConfigAddrFamily /*family*/) {}

void LoConfig::ReadConfig(ConfigAddrFamily /*family*/) {}

void MgmtConfig::ReadConfig(ConfigAddrFamily /*family*/) {}

void Ospfv2Config::ReadConfig(ConfigAddrFamily /*family*/) {}

Config::Config()
    : static_route_config_(std::make_unique<StaticRouteConfig>()),
      intf_configs_{&mgmt_config_, &l3_config_, &lo_config_} {}

// The route table goes first, the other tables in reverse order of construction.
Config::~Config() { static_route_config_.reset(); }

std::array<GenericConfig*, 5> Config::tables() {
  return {&ospfv2_config_, static_route_config_.get(), &l3_config_, &lo_config_, &mgmt_config_};
}

void Config::set_sock(int sock) {
  for (GenericConfig* table : tables()) table->sock_ = sock;
}

void Config::set_confd_trans(confd_trans_ctx* tctx) {
  for (GenericConfig* table : tables()) table->trans_ = tctx;
}

void Config::ReadStaticRouteConfig(ConfigAddrFamily family) {
  static_route_config_->ReadConfigIfNeeded(family);
}

InterfaceConfig* Config::intf_by_type(InterfaceType type) const {
  const auto table =
      std::find_if(intf_configs_.begin(), intf_configs_.end(),
                   [type](const InterfaceConfig* candidate) { return candidate->type_ == type; });
  return table == intf_configs_.end() ? nullptr : *table;
}

InterfaceType Config::intf_type_from_confd_path(confd_hkeypath_t* keypath) {
  if (keypath->len <= 0) return InterfaceType::Invalid;
  IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                    "src/lib/config", 52);
  switch (CONFD_GET_XMLTAG(&keypath->v[0][0])) {
    case ipapp_mgmt:
      return InterfaceType::Mgmt;
    case ipapp_l3:
      return InterfaceType::L3;
    case ipapp_loopback:
      return InterfaceType::Lo;
    default:
      return InterfaceType::Invalid;
  }
}

}  // namespace ip_application::config_valid
