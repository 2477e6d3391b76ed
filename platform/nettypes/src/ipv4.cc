#include "nettypes/ipv4.h"

namespace nettypes {

std::string IPv4Addr::to_string() const {
  return std::to_string(value_ >> 24) + "." + std::to_string(value_ >> 16 & 0xff) + "." +
         std::to_string(value_ >> 8 & 0xff) + "." + std::to_string(value_ & 0xff);
}

std::string IPv4AddrMask::to_string() const {
  return addr_.to_string() + "/" + std::to_string(prefix_len_);
}

}  // namespace nettypes
