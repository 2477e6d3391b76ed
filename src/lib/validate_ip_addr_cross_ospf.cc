#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdarg>
#include <cstdint>
#include <optional>

#include "confd_maapi.h"
#include "config.h"
#include "dotted_quad.h"
#include "limid/limid.h"
#include "list_walk.h"
#include "type_test.h"
#include "validate_config.h"
#include "validate_logger.h"
#include "validation_points.h"
#include "ztconfd.h"
#include "ztmw.h"

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

namespace {

constexpr char kOspfv3ListPath[] = "/internal/ospfv3-interface-l3";
constexpr char kVlanFormat[] = "/config/interface/l3{%s}/lower-layer-if/vlan";

// Keys of the OSPFv3 interface list.
constexpr size_t kOspfv3Process = 0;   // C_UINT32
constexpr size_t kOspfv3Area = 1;      // C_IPV4
constexpr size_t kOspfv3IntfName = 2;  // C_BUF

// The VLAN of an L3 interface before the transaction; nothing when it had none or cannot be read.
std::optional<int32_t> ReadCommittedVlan(const confd_trans_ctx* tctx, const char* intf_name) {
  const ZtConfdCdbSession session(ztconfd_instance_get(tctx->vcb_opaque), CDB_RUNNING, true);
  int32_t vlan = 0;
  if (cdb_get_int32(session.Socket(), &vlan, kVlanFormat, intf_name) != CONFD_OK) {
    return std::nullopt;
  }
  return vlan;
}

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
  return Conclude(tctx, checker, (checker.*check)(cfg, type));
}

// The static routes of one family, against each other and against the addresses of that family.
int validate_addr_route(confd_trans_ctx* tctx, ConfigAddrFamily family, Config& cfg) {
  cfg.l3_config_.ReadConfigIfNeeded(family);
  cfg.mgmt_config_.ReadConfigIfNeeded(family);
  cfg.lo_config_.ReadConfigIfNeeded(family);
  cfg.ReadStaticRouteConfig(family);
  ValidateConfig checker;
  return Conclude(tctx, checker, checker.ValidateStaticRoute(cfg));
}

}  // namespace

// An L3 interface that OSPFv3 uses keeps its VLAN: OSPFv3 knows the interface by an index that
// follows from the VLAN. Deliberate: taking the VLAN away is a change like any other. Not in
// the unnamed namespace, which would show in the messages of the type tests.
static int validate_lower_layer_cross_ospfv3(int maapi_sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* /*newval*/,
                                             Config& /*cfg*/) {
  // Deliberate: a list that cannot be counted is walked.
  if (maapi_exists(maapi_sock, tctx->thandle, kOspfv3ListPath) != 1 ||
      maapi_num_instances(maapi_sock, tctx->thandle, kOspfv3ListPath) == 0) {
    return 0;
  }
  IPAV_REQUIRE_TYPE(keypath->v[1][0], C_BUF, "(&keypath->v[1][0])->type == C_BUF",
                    "src/lib/validate_ip_addr_cross_ospf", 53);
  const std::optional<int32_t> committed_vlan =
      ReadCommittedVlan(tctx, CONFD_GET_CBUFPTR(&keypath->v[1][0]));
  if (!committed_vlan) return 0;

  IPAV_REQUIRE_TYPE(keypath->v[1][0], C_BUF, "(&keypath->v[1][0])->type == C_BUF",
                    "src/lib/validate_ip_addr_cross_ospf", 60);
  int32_t vlan = 0;
  if (maapi_get_int32_elem(maapi_sock, tctx->thandle, &vlan, kVlanFormat,
                           CONFD_GET_CBUFPTR(&keypath->v[1][0])) == CONFD_OK &&
      vlan == *committed_vlan) {
    return 0;
  }

  const uint32_t committed_index = limid_to_ifindex(limid_l3_vlan_from_components(*committed_vlan));
  for (ListWalk walk(maapi_sock, tctx->thandle, kOspfv3ListPath); walk.Next();) {
    const confd_value_t* const keys = walk.keys();
    IPAV_REQUIRE_TYPE(keys[kOspfv3Area], C_IPV4, "(&cursor.keys[1])->type == C_IPV4",
                      "src/lib/validate_ip_addr_cross_ospf", 79);
    char area_text[INET_ADDRSTRLEN];
    const in_addr area = CONFD_GET_IPV4(&keys[kOspfv3Area]);
    inet_ntop(AF_INET, &area, area_text, sizeof(area_text));
    IPAV_REQUIRE_TYPE(keys[kOspfv3IntfName], C_BUF, "(&cursor.keys[2])->type == C_BUF",
                      "src/lib/validate_ip_addr_cross_ospf", 85);
    IPAV_REQUIRE_TYPE(keys[kOspfv3Process], C_UINT32, "(&cursor.keys[0])->type == C_UINT32",
                      "src/lib/validate_ip_addr_cross_ospf", 84);
    const uint32_t process = CONFD_GET_UINT32(&keys[kOspfv3Process]);
    uint32_t index = 0;  // stays when the leaf cannot be read
    maapi_get_u_int32_elem(maapi_sock, tctx->thandle, &index, "%s{ %u %s %s }/ospfv3-pm-if-index",
                           kOspfv3ListPath, process, area_text,
                           CONFD_GET_CBUFPTR(&keys[kOspfv3IntfName]));
    if (index != committed_index) continue;
    const uint32_t area_number = ParseIpv4Addr(area_text).to_uint32();
    IPAV_REQUIRE_TYPE(keys[kOspfv3Process], C_UINT32, "(&cursor.keys[0])->type == C_UINT32",
                      "src/lib/validate_ip_addr_cross_ospf", 92);
    // Deliberate: a process number above 2147483647 is printed as a negative one.
    confd_trans_seterr(tctx,
                       "vlan %d cannot be changed, it is assigned to router ospfv3 %d area %u (%s)",
                       *committed_vlan, static_cast<int>(process), area_number, area_text);
    return -1;
  }
  return 0;
}

}  // namespace ip_application::config_valid

using ip_application::config_valid::Conclude;
using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::validate_addr_route;
using ip_application::config_valid::validate_lower_layer_cross_ospfv3;
using ip_application::config_valid::ValidateAddr;
using ip_application::config_valid::ValidateConfig;

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
  return Conclude(tctx, checker, checker.ValidateOspfv2(cfg));
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

int validate_lower_layer_cross_prot(int maapi_sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* newval, Config& cfg) {
  return validate_lower_layer_cross_ospfv3(maapi_sock, tctx, keypath, newval, cfg);
}
