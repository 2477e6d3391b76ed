#include "nettypes/ipv4.h"

namespace nettypes {

std::string IPv4Addr::to_string() const {
  return std::to_string(value_ >> 24) + "." + std::to_string(value_ >> 16 & 0xff) + "." +
         std::to_string(value_ >> 8 & 0xff) + "." + std::to_string(value_ & 0xff);
}

std::strong_ordering IPv4Addr::Compare(const IPAddr& other) const {
  const auto* same_family = dynamic_cast<const IPv4Addr*>(&other);
  return same_family == nullptr ? std::strong_ordering::less : *this <=> *same_family;
}

std::string IPv4AddrMask::to_string() const {
  return addr_.to_string() + "/" + std::to_string(prefix_len_);
}

std::strong_ordering IPv4AddrMask::Compare(const IPAddrMask& other) const {
  const auto* same_family = dynamic_cast<const IPv4AddrMask*>(&other);
  return same_family == nullptr ? std::strong_ordering::less : *this <=> *same_family;
}

}  // namespace nettypes
