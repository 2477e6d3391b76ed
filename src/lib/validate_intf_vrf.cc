#include "validate_intf_vrf.h"

#include <netinet/in.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "confd_maapi.h"
#include "config.h"
#include "list_walk.h"
#include "type_test.h"
#include "validate_config.h"
#include "validation_points.h"
#include "velmor-internal.h"
#include "velmor-ip-app.h"

using ip_application::config_valid::Conclude;
using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::InterfaceType;
using ip_application::config_valid::ListWalk;
using ip_application::config_valid::ValidateConfig;

// Of the walkers, which stand outside the plug-in's namespace.
namespace {

constexpr size_t kExpressionSize = 1024;  // bytes, with the zero behind the text
constexpr size_t kKeyTextSize = 8192;     // likewise

// A maapi_iterate_fn. ConfD keeps no objects, so the walker comes as the state.
confd_iter_ret JudgeChange(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                           confd_value_t* newval, void* walker) {
  return static_cast<ValidateIntfVrf*>(walker)->IterValidate(keypath, op, oldval, newval);
}

// Whether an OSPFv3 process uses the interface `kind`-`name` of the candidate. Deliberate: the name
// goes into the XPath expression as it is, and the expression is cut at 1023 bytes; one that does
// not parse then finds nothing.
bool IsInOspfv3(int sock, const confd_trans_ctx* tctx, const char* kind, const std::string& name) {
  char expression[kExpressionSize];
  snprintf(expression, sizeof(expression),
           "ospfv3-interface-l3[ospfv3-pm-if-name='%s-%s']/ospfv3-pm-if-name", kind, name.c_str());
  char* found = nullptr;
  const bool evaluated = maapi_xpath_eval_expr(sock, tctx->thandle, expression, &found, nullptr,
                                               "/internal") == CONFD_OK;
  const bool in_ospfv3 = evaluated && found != nullptr && *found != '\0';
  free(found);
  return in_ospfv3;
}

}  // namespace

int ValidateIntfVrf::RunValidation() {
  // Deliberate: whether the changes could be walked is not looked at.
  maapi_keypath_diff_iterate(sock_, trans_->thandle, JudgeChange, 0, this, "%s", path_.c_str());
  if (error_.empty()) return 0;
  confd_trans_seterr(trans_, "%s", error_.c_str());
  return -1;
}

nettypes::IPv4AddrMask ValidateIntfVrf::get_ipv4_addr_mask(const std::string& path) const {
  nettypes::IPv4AddrMask mask;
  confd_ipv4_prefix prefix;
  if (maapi_exists(sock_, trans_->thandle, "%s", path.c_str()) != 1 ||
      maapi_get_ipv4_and_plen_elem(sock_, trans_->thandle, &prefix, "%s", path.c_str()) !=
          CONFD_OK) {
    return mask;
  }
  mask.set_addr(nettypes::IPv4Addr(ntohl(prefix.ip.s_addr)));
  mask.set_prefix_len(prefix.len);
  return mask;
}

std::list<std::string> ValidateIntfVrf::get_key_list(const std::string& list_path) const {
  std::list<std::string> keys;
  if (maapi_exists(sock_, trans_->thandle, "%s", list_path.c_str()) != 1) return keys;
  for (ListWalk walk(sock_, trans_->thandle, list_path); walk.Next();) {
    char text[kKeyTextSize];
    confd_pp_value(text, sizeof(text), &walk.keys()[0]);
    keys.emplace_back(text);
  }
  return keys;
}

confd_iter_ret ValidateIntfLoVrf::IterValidate(confd_hkeypath_t* keypath, confd_iter_op op,
                                               confd_value_t* /*oldval*/, confd_value_t* newval) {
  if (op != MOP_VALUE_SET) return ITER_RECURSE;
  IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                    "src/lib/validate_intf_vrf", 98);
  if (CONFD_GET_XMLTAG(&keypath->v[0][0]) != ipapp_vrf || newval == nullptr) return ITER_RECURSE;
  IPAV_REQUIRE_TYPE(keypath->v[1][0], C_BUF, "(&keypath->v[1][0])->type == C_BUF",
                    "src/lib/validate_intf_vrf", 102);
  const std::string name = CONFD_GET_CBUFPTR(&keypath->v[1][0]);
  if (!IsInOspfv3(sock_, trans_, "loopback", name)) return ITER_RECURSE;
  error_ = "loopback " + name + " is configured in OSPFv3 and cannot be associated with a VRF";
  return ITER_STOP;
}

confd_iter_ret ValidateIntfL3Vrf::IterValidate(confd_hkeypath_t* keypath, confd_iter_op op,
                                               confd_value_t* /*oldval*/, confd_value_t* newval) {
  if (op != MOP_VALUE_SET) return ITER_RECURSE;
  IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                    "src/lib/validate_intf_vrf", 126);
  if (CONFD_GET_XMLTAG(&keypath->v[0][0]) != ipapp_vrf || newval == nullptr) return ITER_RECURSE;
  IPAV_REQUIRE_TYPE(keypath->v[1][0], C_BUF, "(&keypath->v[1][0])->type == C_BUF",
                    "src/lib/validate_intf_vrf", 128);
  const std::string name = CONFD_GET_CBUFPTR(&keypath->v[1][0]);
  if (!IsInOspfv3(sock_, trans_, "l3", name)) return ITER_RECURSE;
  error_ = "l3 " + name + " is configured in OSPFv3 and cannot be associated with a VRF";
  return ITER_STOP;
}

confd_iter_ret ValidateIntfVrfOspf::IterValidate(confd_hkeypath_t* /*keypath*/,
                                                 confd_iter_op /*op*/, confd_value_t* /*oldval*/,
                                                 confd_value_t* /*newval*/) {
  return ITER_RECURSE;
}

confd_iter_ret ValidateIntfVrfOspfv3::IterValidate(confd_hkeypath_t* keypath, confd_iter_op op,
                                                   confd_value_t* /*oldval*/,
                                                   confd_value_t* newval) {
  // How OSPFv3 names an interface of one kind begins like this.
  struct Kind {
    const char* word;
    const char* mark;
    const char* vrf_format;
  };
  static constexpr Kind kKinds[] = {
      {"l3", "l3-", "/config/interface/l3{%s}/vrf"},
      {"loopback", "loopback-", "/config/interface/loopback{%s}/vrf"}};

  if (op != MOP_VALUE_SET) return ITER_RECURSE;
  IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                    "src/lib/validate_intf_vrf", 159);
  if (CONFD_GET_XMLTAG(&keypath->v[0][0]) != velmor_internal_ospfv3_pm_if_name ||
      newval == nullptr) {
    return ITER_RECURSE;
  }
  IPAV_REQUIRE_TYPE(*newval, C_BUF, "(newval)->type == C_BUF", "src/lib/validate_intf_vrf", 160);
  const std::string ospfv3_name = CONFD_GET_CBUFPTR(newval);
  for (const Kind& kind : kKinds) {
    // Deliberate: the mark counts anywhere in the name, and a name with the mark of an L3 interface
    // is not tried as a loopback.
    const size_t mark = ospfv3_name.find(kind.mark);
    if (mark == std::string::npos) continue;
    const std::string name = ospfv3_name.substr(mark + std::string(kind.mark).size());
    if (maapi_exists(sock_, trans_->thandle, kind.vrf_format, name.c_str()) != 1) break;
    error_ = std::string(kind.word) + " " + name +
             " is associated with a VRF and cannot be configured in OSPFv3";
    return ITER_STOP;
  }
  return ITER_RECURSE;
}

// Interfaces and the OSPF processes that use them are in one VRF, and OSPFv3 only in the global
// one. The outcome is checked first, then the changes below the list that called.
int validate_intf_vrf(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                      confd_value_t* /*newval*/, Config& cfg) {
  // The lists by which the point is called, as the elements of a keypath show them.
  constexpr int kInterfaceListLength = 3;    // /config/interface/<list>
  constexpr int kOspfAssociationLength = 6;  // /internal/<list>{<keys>}/<three containers>

  const InterfaceType type = Config::intf_type_from_confd_path(keypath);
  cfg.l3_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.lo_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.mgmt_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
  cfg.ReadStaticRouteConfig(ConfigAddrFamily::IPv4);
  cfg.ospfv2_config_.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);

  ValidateConfig checker;
  if (type != InterfaceType::Invalid &&
      Conclude(tctx, checker, checker.ValidateInterfaceIPv4(cfg, type)) != 0) {
    return -1;
  }
  if (Conclude(tctx, checker, checker.ValidateOspfv2Vrf(cfg)) != 0) return -1;

  std::unique_ptr<ValidateIntfVrf> walker;
  if (keypath->len == kInterfaceListLength) {
    IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                      "src/lib/validate_intf_vrf", 225);
    const uint32_t list_tag = CONFD_GET_XMLTAG(&keypath->v[0][0]);
    if (list_tag == ipapp_loopback) {
      walker = std::make_unique<ValidateIntfLoVrf>(maapi_sock, tctx, "/config/interface/loopback");
    } else if (list_tag == ipapp_l3) {
      walker = std::make_unique<ValidateIntfL3Vrf>(maapi_sock, tctx, "/config/interface/l3");
    }
  } else if (keypath->len == kOspfAssociationLength) {
    IPAV_REQUIRE_TYPE(keypath->v[4][0], C_XMLTAG, "(&keypath->v[4][0])->type == C_XMLTAG",
                      "src/lib/validate_intf_vrf", 237);
    const uint32_t list_tag = CONFD_GET_XMLTAG(&keypath->v[4][0]);
    if (list_tag == velmor_internal_ospf_interface_l3) {
      walker =
          std::make_unique<ValidateIntfVrfOspf>(maapi_sock, tctx, "/internal/ospf-interface-l3");
    } else if (list_tag == velmor_internal_ospfv3_interface_l3) {
      walker = std::make_unique<ValidateIntfVrfOspfv3>(maapi_sock, tctx,
                                                       "/internal/ospfv3-interface-l3");
    }
  }
  return walker == nullptr ? 0 : walker->RunValidation();
}
