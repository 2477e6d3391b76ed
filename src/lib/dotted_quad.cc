#include "dotted_quad.h"

#include <boost/asio/ip/address_v4.hpp>
#include <boost/system/system_error.hpp>
#include <cerrno>

namespace ip_application::config_valid {

// Deliberate: the code is the errno that stands when a text turns out to be no dotted quad, also
// when an earlier call left it there, or EINVAL. Asio begins by clearing errno, so it is put back.
nettypes::IPv4Addr ParseIpv4Addr(const std::string& text) {
  const int left = errno;
  boost::system::error_code error;
  const auto addr = boost::asio::ip::make_address_v4(text, error);
  if (errno == 0) errno = left;
  if (!error) return nettypes::IPv4Addr(addr.to_uint());
  if (errno != 0) error.assign(errno, boost::system::system_category());
  throw boost::system::system_error(error);
}

}  // namespace ip_application::config_valid
