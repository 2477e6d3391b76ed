#include "validation_points.h"

int validate_intf_vrf(int /*maapi_sock*/, confd_trans_ctx* /*tctx*/, confd_hkeypath_t* /*keypath*/,
                      confd_value_t* /*newval*/, ip_application::config_valid::Config& /*cfg*/) {
  return 0;  // checks nothing yet
}
