#include <cstdarg>

#include "config.h"
#include "validate_config.h"
#include "validate_logger.h"
#include "validation_points.h"
#include "ztmw.h"

using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::InterfaceType;
using ip_application::config_valid::ValidateConfig;
using ip_application::config_valid::Verdict;

namespace ip_application::config_valid {

ValidateLogger::ValidateLogger() : handle_(get_config_vald_log_handle()) {}

ValidateLogger& ValidateLogger::instance() {
  static ValidateLogger logger;
  return logger;
}

void ValidateLogger::Log(const char* fmt, ...) {
  void* const handle = instance().handle_;
  if (handle == nullptr) return;
  va_list args;
  va_start(args, fmt);
  ztmw_vlog_debug(handle, fmt, args);
  va_end(args);
}

}  // namespace ip_application::config_valid

namespace {

// What the address points have in common: the kind of interface, the tables, one family's check.
int ValidateAddr(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, Config& cfg,
                 ConfigAddrFamily family,
                 int (ValidateConfig::*check)(const Config&, InterfaceType)) {
  const InterfaceType type = Config::intf_type_from_confd_path(keypath);
  if (type == InterfaceType::Invalid) {
    confd_trans_seterr(tctx, "%s", "invalid interface being handled by IP-App validation");
    return -1;
  }
  cfg.l3_config_.ReadConfigIfNeeded(family);
  cfg.lo_config_.ReadConfigIfNeeded(family);
  cfg.mgmt_config_.ReadConfigIfNeeded(family);
  cfg.ReadStaticRouteConfig(family);
  ValidateConfig checker;
  return Verdict(tctx, checker, (checker.*check)(cfg, type));
}

}  // namespace

int validate_ipv4_addr(int /*maapi_sock*/, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                       confd_value_t* /*newval*/, Config& cfg) {
  return ValidateAddr(tctx, keypath, cfg, ConfigAddrFamily::IPv4,
                      &ValidateConfig::ValidateInterfaceIPv4);
}

int validate_ipv6_addr(int /*maapi_sock*/, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                       confd_value_t* /*newval*/, Config& cfg) {
  return ValidateAddr(tctx, keypath, cfg, ConfigAddrFamily::IPv6,
                      &ValidateConfig::ValidateInterfaceIPv6);
}

int validate_ipv4_addr_cross_prot(int /*maapi_sock*/, confd_trans_ctx* tctx,
                                  confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/,
                                  Config& cfg) {
  cfg.l3_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.lo_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.ospfv2_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  ValidateConfig checker;
  return Verdict(tctx, checker, checker.ValidateOspfv2(cfg));
}

// The static routes of one family, against each other and against the addresses of that family.
static int validate_addr_route(confd_trans_ctx* tctx, ConfigAddrFamily family, Config& cfg) {
  cfg.l3_config_.ReadConfigIfNeeded(family);
  cfg.mgmt_config_.ReadConfigIfNeeded(family);
  cfg.lo_config_.ReadConfigIfNeeded(family);
  cfg.ReadStaticRouteConfig(family);
  ValidateConfig checker;
  return Verdict(tctx, checker, checker.ValidateStaticRoute(cfg));
}

int validate_ipv4_addr_route(int /*maapi_sock*/, confd_trans_ctx* tctx,
                             confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/,
                             Config& cfg) {
  return validate_addr_route(tctx, ConfigAddrFamily::IPv4, cfg);
}

int validate_ipv6_addr_route(int /*maapi_sock*/, confd_trans_ctx* tctx,
                             confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/,
                             Config& cfg) {
  return validate_addr_route(tctx, ConfigAddrFamily::IPv6, cfg);
}

int validate_lower_layer_cross_prot(int /*maapi_sock*/, confd_trans_ctx* /*tctx*/,
                                    confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/,
                                    Config& /*cfg*/) {
  return 0;  // checks nothing yet
}
