// Interfaces for hand-built tables, with their addresses in text form.
#ifndef TESTS_SUPPORT_ADDRESS_TABLES_H_
#define TESTS_SUPPORT_ADDRESS_TABLES_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "config.h"
#include "nettypes/parse.h"

namespace tests {

/// Adds an address of either family, "10.0.0.1/24". Any prefix length from 0 to 255 is kept.
inline void AddAddress(ip_application::config_valid::Interface& intf, const std::string& text) {
  const size_t slash = text.find('/');
  const auto prefix_len = static_cast<uint8_t>(std::stoul(text.substr(slash + 1)));
  const std::string addr = text.substr(0, slash);
  if (const auto ipv4 = nettypes::ParseIPv4Addr(addr)) {
    intf.ipv4_addr_list.emplace_back(*ipv4, prefix_len);
  } else if (const auto ipv6 = nettypes::ParseIPv6Addr(addr)) {
    intf.ipv6_addr_list.emplace_back(*ipv6, prefix_len);
  } else {
    throw std::invalid_argument(text);
  }
}

inline ip_application::config_valid::Interface Intf(std::string name, std::string vrf,
                                                    const std::vector<std::string>& addresses) {
  ip_application::config_valid::Interface intf;
  intf.name = std::move(name);
  intf.vrf_name = std::move(vrf);
  for (const std::string& text : addresses) AddAddress(intf, text);
  return intf;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_ADDRESS_TABLES_H_
