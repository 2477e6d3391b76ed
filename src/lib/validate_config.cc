#include "validate_config.h"

#include <cstdio>
#include <string_view>

#include "config.h"
#include "ip_app_validation/ip_app_validation.h"
#include "validation_points.h"
#include "ztconfd.h"

using ip_application::config_valid::Config;
using ip_application::config_valid::validation_point_table;
using ip_application::config_valid::ValidationPoint;

namespace ip_application::config_valid {

const std::array<ValidationPoint, 11> validation_point_table = {{
    {validate_intf_l3_name, "intf_l3_name_validation"},
    {validate_intf_vrf, "intf_vrf_validation"},
    {validate_ipv4_addr, "ipv4_addr_validation"},
    {validate_ipv4_addr_cross_prot, "ipv4_addr_prot_cross_validation"},
    {validate_ipv4_addr_route, "ipv4_addr_route_validation"},
    {validate_ipv6_addr, "ipv6_addr_validation"},
    {validate_ipv6_addr_route, "ipv6_addr_route_validation"},
    {validate_ipv6_nd_ra_interval, "validate_ipv6_nd_ra_interval"},
    {validate_ipv6_nd_ra_lifetime, "validate_ipv6_nd_ra_lifetime"},
    {validate_route_l3_intf, "static_route_l3_intf_validation"},
    {validate_lower_layer_cross_prot, "lower_layer_prot_cross_validation"},
}};

}  // namespace ip_application::config_valid

namespace {

// Under this name the daemon files the Config that lib_init makes.
constexpr char kContextName[] = "ip_app_validation";

// The first row with whose name `opaque` begins, or null. Deliberate: characters after the name are
// allowed, so that the data model can tell its statements apart.
const ValidationPoint* FindValidationPoint(std::string_view opaque) {
  for (const ValidationPoint& point : validation_point_table) {
    if (opaque.starts_with(point.name)) return &point;
  }
  return nullptr;
}

}  // namespace

int lib_init(void** out) {
  *out = new Config();
  return 0;
}

int get_validation_point(char* buf, int size) {
  snprintf(buf, static_cast<size_t>(size), "%s", kContextName);
  return 0;
}

int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  if (keypath == nullptr || newval == nullptr || tctx == nullptr) return -1;

  const int sock = ztconfd_maapi_socket_get(tctx->vcb_opaque);
  if (sock < 0) return -1;

  auto* const config = static_cast<Config*>(get_lib_context(tctx->v_opaque, kContextName));
  if (config == nullptr) {
    confd_trans_seterr(tctx, "Lib context is null!");
    return -1;
  }

  // Deliberate: an unknown validation point, too, leaves the Config bound to its transaction.
  config->set_sock(sock);
  config->set_confd_trans(tctx);

  const ValidationPoint* point = FindValidationPoint(tctx->validate_opaque);
  if (point == nullptr) return -1;
  return point->callback(sock, tctx, keypath, newval, *config);
}

int lib_finish(void** ctx) {
  delete static_cast<Config*>(*ctx);
  return 0;
}

int validate_intf_l3_name(int /*maapi_sock*/, confd_trans_ctx* /*tctx*/,
                          confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/,
                          Config& /*cfg*/) {
  return 0;  // checks nothing yet
}
