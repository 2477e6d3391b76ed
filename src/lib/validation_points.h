// The validation points: eleven exported functions of one signature, and the table that gives them
// their names.
#ifndef SRC_LIB_VALIDATION_POINTS_H_
#define SRC_LIB_VALIDATION_POINTS_H_

#include <array>

#include "config.h"
#include "ip_app_validation/ip_app_validation.h"

namespace ip_application::config_valid {

/// Judges the transaction from one point of view.
///
/// @param maapi_sock  MAAPI socket for this transaction
/// @param tctx, keypath, newval  as the daemon passed them to validate, never null
/// @param cfg  bound to the socket and the transaction; only its tables may change
/// @returns 0 accepted; -1 refused, the error text of `tctx` is set.
using ValidationPointFn = int (*)(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                  confd_value_t* newval, Config& cfg);

/// One row of the table. `name` is what tailf:opaque has to begin with in the data model.
struct PointRow {
  ValidationPointFn callback;
  const char* name;
};

/// In the order of the search.
extern const std::array<PointRow, 11> validation_point_table;

}  // namespace ip_application::config_valid

extern "C" {

// validate_config.cc

/// Name and number of L3 interfaces.
IPAV_EXPORT int validate_intf_l3_name(int maapi_sock, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval,
                                      ip_application::config_valid::Config& cfg);

// validate_intf_vrf.cc

/// VRF association of interfaces against OSPF and addresses.
///
/// @param keypath  v[0][0] must be a C_XMLTAG: that of the list l3 or loopback in a path of three
///                 elements, whose changes are then walked. In a path of six, v[4][0] must be one,
///                 that of the list ospf-interface-l3 or ospfv3-interface-l3. Any other type ends
///                 the process, any other path has no changes to walk.
IPAV_EXPORT int validate_intf_vrf(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                  confd_value_t* newval, ip_application::config_valid::Config& cfg);

// validate_ip_addr_cross_ospf.cc

/// Addresses of interfaces: validity (IPv4), duplicates, overlaps, next hops of static routes.
IPAV_EXPORT int validate_ipv4_addr(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                   confd_value_t* newval,
                                   ip_application::config_valid::Config& cfg);
IPAV_EXPORT int validate_ipv6_addr(int maapi_sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                                   confd_value_t* newval,
                                   ip_application::config_valid::Config& cfg);

/// Interface addresses against OSPFv2 interface configuration.
IPAV_EXPORT int validate_ipv4_addr_cross_prot(int maapi_sock, confd_trans_ctx* tctx,
                                              confd_hkeypath_t* keypath, confd_value_t* newval,
                                              ip_application::config_valid::Config& cfg);

/// Interface addresses against static routes.
IPAV_EXPORT int validate_ipv4_addr_route(int maapi_sock, confd_trans_ctx* tctx,
                                         confd_hkeypath_t* keypath, confd_value_t* newval,
                                         ip_application::config_valid::Config& cfg);
IPAV_EXPORT int validate_ipv6_addr_route(int maapi_sock, confd_trans_ctx* tctx,
                                         confd_hkeypath_t* keypath, confd_value_t* newval,
                                         ip_application::config_valid::Config& cfg);

/// Changes of the lower-layer VLAN against OSPFv3.
///
/// @param keypath  v[1][0] is the name of the L3 interface, a C_BUF; with OSPFv3 interfaces
///                 configured, any other type ends the process
IPAV_EXPORT int validate_lower_layer_cross_prot(int maapi_sock, confd_trans_ctx* tctx,
                                                confd_hkeypath_t* keypath, confd_value_t* newval,
                                                ip_application::config_valid::Config& cfg);

// validate_nd_ra.cc

/// Router-advertisement minimum interval and lifetime, each against the maximum interval.
///
/// @param keypath  that of the container ipv6/nd/ra of an interface: v[3][0] is the interface's
///                 name, a C_BUF, and v[4][0] the tag of its list, l3 or mgmt. Any other type of
///                 these two ends the process.
IPAV_EXPORT int validate_ipv6_nd_ra_interval(int maapi_sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* newval,
                                             ip_application::config_valid::Config& cfg);
IPAV_EXPORT int validate_ipv6_nd_ra_lifetime(int maapi_sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* newval,
                                             ip_application::config_valid::Config& cfg);

/// Static routes against their output interfaces.
IPAV_EXPORT int validate_route_l3_intf(int maapi_sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* newval,
                                       ip_application::config_valid::Config& cfg);

}  // extern "C"

#endif  // SRC_LIB_VALIDATION_POINTS_H_
