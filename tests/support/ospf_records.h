// Records of the OSPFv2 table, from and as short texts.
#ifndef TESTS_SUPPORT_OSPF_RECORDS_H_
#define TESTS_SUPPORT_OSPF_RECORDS_H_

#include <arpa/inet.h>

#include <cstdint>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "config.h"
#include "nettypes/ipv4.h"

namespace tests {

/// A dotted quad.
inline nettypes::IPv4Addr Addr(const std::string& text) {
  in_addr addr;
  if (inet_pton(AF_INET, text.c_str(), &addr) != 1) throw std::invalid_argument(text);
  return nettypes::IPv4Addr(ntohl(addr.s_addr));
}

/// "192.0.2.1/24"
inline nettypes::IPv4AddrMask Mask(const std::string& text) {
  const size_t slash = text.find('/');
  return {Addr(text.substr(0, slash)), static_cast<uint8_t>(std::stoul(text.substr(slash + 1)))};
}

inline std::list<nettypes::IPv4AddrMask> Masks(const std::vector<std::string>& texts) {
  std::list<nettypes::IPv4AddrMask> masks;
  for (const std::string& text : texts) masks.push_back(Mask(text));
  return masks;
}

/// What a test says of a record.
struct OspfUse {
  std::string name;  ///< "l3 7"
  std::vector<std::string> addresses;
  uint32_t process = 10;
  std::string vrf = "red";
  std::string area = "0.0.0.1";

  ip_application::config_valid::OspfIf Record() const {
    ip_application::config_valid::OspfIf record;
    record.process_id = process;
    record.vrf_name = vrf;
    record.area = Addr(area);
    record.intf_name = name;
    record.addresses = Masks(addresses);
    return record;
  }
};

/// "l3 7: ospf 10 vrf red area 0.0.0.1: 192.0.2.1/24 192.0.2.2/24"
inline std::string TextOf(const ip_application::config_valid::OspfIf& record) {
  std::string text = record.intf_name + ": ospf " + std::to_string(record.process_id) + " vrf " +
                     record.vrf_name + " area " + record.area.to_string() + ":";
  for (const nettypes::IPv4AddrMask& mask : record.addresses) text += " " + mask.to_string();
  return text;
}

inline std::vector<std::string> TextsOf(const ip_application::config_valid::Ospfv2Config& table) {
  std::vector<std::string> texts;
  for (const auto& record : table.table_) texts.push_back(TextOf(*record));
  return texts;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_OSPF_RECORDS_H_
