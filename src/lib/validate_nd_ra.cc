#include <cstdint>
#include <optional>
#include <string>

#include "confd_maapi.h"
#include "config.h"
#include "type_test.h"
#include "validate_config.h"
#include "validate_logger.h"
#include "validation_points.h"
#include "velmor-ip-app.h"

namespace ip_application::config_valid {
namespace {

// RFC 4861, section 6.2.1: MinRtrAdvInterval is at most three quarters of MaxRtrAdvInterval.
constexpr double kMinIntervalShare = 0.75;

// The container of an interface's router-advertisement leaves.
struct RaContainer {
  bool is_mgmt;
  std::string path;  // with the final slash
};

// Nothing when the interface is in neither of the two lists.
// REQUIRES: keypath->v[3][0] is a C_BUF, keypath->v[4][0] a C_XMLTAG.
std::optional<RaContainer> FindRaContainer(const confd_hkeypath_t* keypath) {
  const std::string name = CONFD_GET_CBUFPTR(&keypath->v[3][0]);  // up to its first zero byte
  const uint32_t list_tag = CONFD_GET_XMLTAG(&keypath->v[4][0]);
  const bool is_mgmt = list_tag == ipapp_mgmt;
  if (!is_mgmt && list_tag != ipapp_l3) return std::nullopt;
  const std::string list = is_mgmt ? "mgmt{" : "l3{";
  return RaContainer{is_mgmt, "/config/interface/" + list + name + "}/ipv6/nd/ra/"};
}

// In the calls below the assembled path is itself the format.
// Deliberate: a "%" in an interface name is therefore taken for the start of a conversion.

bool Exists(int maapi_sock, const confd_trans_ctx* tctx, const std::string& path) {
  return maapi_exists(maapi_sock, tctx->thandle, path.c_str()) == 1;
}

// Leaves `value` alone and returns false when the leaf cannot be read.
bool ReadSeconds(int maapi_sock, const confd_trans_ctx* tctx, const std::string& path,
                 uint16_t* value) {
  return maapi_get_u_int16_elem(maapi_sock, tctx->thandle, value, path.c_str()) == CONFD_OK;
}

// One of the two leaves is enough to go on: the other may have a default. The second path is asked
// for only when the first does not exist.
bool NeitherExists(int maapi_sock, const confd_trans_ctx* tctx, const std::string& first,
                   const std::string& second) {
  if (Exists(maapi_sock, tctx, first) || Exists(maapi_sock, tctx, second)) return false;
  ValidateLogger::Log("There is no path for '%s' and '%s'. Skipping validation ...", first.c_str(),
                      second.c_str());
  return true;
}

}  // namespace
}  // namespace ip_application::config_valid

using ip_application::config_valid::Conclude;
using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::FindRaContainer;
using ip_application::config_valid::kMinIntervalShare;
using ip_application::config_valid::NeitherExists;
using ip_application::config_valid::RaContainer;
using ip_application::config_valid::ReadSeconds;
using ip_application::config_valid::ValidateConfig;

// The minimum interval may be at most 0.75 times the maximum interval. The product is not rounded.
int validate_ipv6_nd_ra_interval(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                 confd_value_t* /*newval*/, Config& /*cfg*/) {
  IPAV_REQUIRE_TYPE(keypath->v[3][0], C_BUF, "(&keypath->v[3][0])->type == C_BUF",
                    "src/lib/validate_nd_ra", 32);
  IPAV_REQUIRE_TYPE(keypath->v[4][0], C_XMLTAG, "(&keypath->v[4][0])->type == C_XMLTAG",
                    "src/lib/validate_nd_ra", 33);
  const std::optional<RaContainer> ra = FindRaContainer(keypath);
  if (!ra) {
    confd_trans_seterr(tctx, "invalid interface being handled by IP-App validation");
    return -1;
  }

  const std::string max_path = ra->path + "max-interval";
  const std::string min_path = ra->path + "min-interval";
  if (NeitherExists(maapi_sock, tctx, max_path, min_path)) return 0;

  uint16_t max_interval = 0;
  if (!ReadSeconds(maapi_sock, tctx, max_path, &max_interval)) {
    confd_trans_seterr(tctx, "fail to get maximum router advertisement interval value");
    return -1;
  }
  uint16_t min_interval = 0;
  if (!ReadSeconds(maapi_sock, tctx, min_path, &min_interval)) {
    confd_trans_seterr(tctx, "fail to get minimum router advertisement interval value");
    return -1;
  }
  if (min_interval <= max_interval * kMinIntervalShare) return 0;
  confd_trans_seterr(tctx, "Minimum interval must be no greater than maximum interval * 0.75");
  return -1;
}

// A router lifetime is zero (not a default router) or greater than the maximum interval.
// Deliberate: a lifetime equal to the maximum interval is refused.
int validate_ipv6_nd_ra_lifetime(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                 confd_value_t* /*newval*/, Config& /*cfg*/) {
  IPAV_REQUIRE_TYPE(keypath->v[3][0], C_BUF, "(&keypath->v[3][0])->type == C_BUF",
                    "src/lib/validate_nd_ra", 84);
  IPAV_REQUIRE_TYPE(keypath->v[4][0], C_XMLTAG, "(&keypath->v[4][0])->type == C_XMLTAG",
                    "src/lib/validate_nd_ra", 85);
  const std::optional<RaContainer> ra = FindRaContainer(keypath);
  if (!ra) {
    confd_trans_seterr(tctx, "invalid interface being handled by IP-App validation");
    return -1;
  }

  const std::string max_path = ra->path + "max-interval";
  const std::string lifetime_path = ra->path + "lifetime";
  if (NeitherExists(maapi_sock, tctx, max_path, lifetime_path)) return 0;

  uint16_t max_interval = 0;
  if (!ReadSeconds(maapi_sock, tctx, max_path, &max_interval)) {
    confd_trans_seterr(tctx, "fail to get maximum router advertisement interval value");
    return -1;
  }
  // Deliberate: the lifetime of a management interface is not compared, although its maximum
  // interval has to be readable.
  if (ra->is_mgmt) return 0;

  uint16_t lifetime = 0;
  if (!ReadSeconds(maapi_sock, tctx, lifetime_path, &lifetime)) {
    confd_trans_seterr(tctx, "fail to get router advertisement lifetime value");
    return -1;
  }
  if (lifetime == 0 || max_interval < lifetime) return 0;
  confd_trans_seterr(tctx, "Lifetime must be greater than maximum router advertisement interval");
  return -1;
}

// An L3 interface that static routes of either family go out of keeps its lower layer.
int validate_route_l3_intf(int /*maapi_sock*/, confd_trans_ctx* tctx, confd_hkeypath_t* /*keypath*/,
                           confd_value_t* /*newval*/, Config& cfg) {
  cfg.l3_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.ReadStaticRouteConfig(ConfigAddrFamily::IPv4);
  cfg.ReadStaticRouteConfig(ConfigAddrFamily::IPv6);
  ValidateConfig checker;
  return Conclude(tctx, checker, checker.ValidateStaticRouteOutputIntf(cfg));
}
