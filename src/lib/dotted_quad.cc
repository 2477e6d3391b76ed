#include "dotted_quad.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <boost/system/system_error.hpp>
#include <cerrno>

namespace ip_application::config_valid {

// Deliberate: inet_pton sets no errno for a text that is no dotted quad, so the code is what an
// earlier call left there, or EINVAL.
nettypes::IPv4Addr ParseIpv4Addr(const std::string& text) {
  in_addr addr;
  if (inet_pton(AF_INET, text.c_str(), &addr) == 1) return nettypes::IPv4Addr(ntohl(addr.s_addr));
  throw boost::system::system_error(errno != 0 ? errno : EINVAL, boost::system::system_category());
}

}  // namespace ip_application::config_valid
