#ifndef NETTYPES_IPV4_H
#define NETTYPES_IPV4_H

#include <cstdint>
#include <string>

#include "nettypes/address.h"

namespace nettypes {

class IPv4Addr final : public IPAddr {
 public:
  IPv4Addr() = default;
  explicit IPv4Addr(uint32_t host_order) : value_(host_order) {}

  uint32_t to_uint32() const { return value_; }
  bool is_unspecified() const { return value_ == 0; }
  std::string to_string() const override {
    return std::to_string(value_ >> 24) + "." + std::to_string(value_ >> 16 & 0xff) + "." +
           std::to_string(value_ >> 8 & 0xff) + "." + std::to_string(value_ & 0xff);
  }

  friend bool operator==(const IPv4Addr& a, const IPv4Addr& b) { return a.value_ == b.value_; }
  friend bool operator<(const IPv4Addr& a, const IPv4Addr& b) { return a.value_ < b.value_; }

 private:
  uint32_t value_ = 0;
};

class IPv4AddrMask final : public IPAddrMask {
 public:
  IPv4AddrMask() = default;
  IPv4AddrMask(uint32_t host_order, uint8_t prefix_len)
      : addr_(host_order), prefix_len_(prefix_len) {}

  void set_addr(const IPv4Addr& addr) { addr_ = addr; }
  void set_prefix_len(uint8_t prefix_len) { prefix_len_ = prefix_len; }
  const IPv4Addr& addr() const { return addr_; }
  uint8_t prefix_len() const { return prefix_len_; }

  bool IsUnspecified() const { return addr_.is_unspecified() && prefix_len_ == 0; }
  bool IsNetworkAddr() const { return (addr_.to_uint32() & HostBits(prefix_len_)) == 0; }
  bool IsBroadcastAddr() const {
    return (addr_.to_uint32() & HostBits(prefix_len_)) == HostBits(prefix_len_);
  }
  bool Overlap(const IPv4AddrMask& other) const {
    const uint32_t host_bits = HostBits(prefix_len_) | HostBits(other.prefix_len_);
    return ((addr_.to_uint32() ^ other.addr_.to_uint32()) & ~host_bits) == 0;
  }
  std::string to_string() const override {
    return addr_.to_string() + "/" + std::to_string(prefix_len_);
  }

  friend bool operator==(const IPv4AddrMask& a, const IPv4AddrMask& b) {
    return a.addr_ == b.addr_ && a.prefix_len_ == b.prefix_len_;
  }
  friend bool operator<(const IPv4AddrMask& a, const IPv4AddrMask& b) {
    return a.addr_ == b.addr_ ? a.prefix_len_ < b.prefix_len_ : a.addr_ < b.addr_;
  }

 private:
  static uint32_t HostBits(uint8_t prefix_len) {
    return static_cast<uint32_t>(uint64_t{0xffffffff} >> prefix_len);
  }

  IPv4Addr addr_;
  uint8_t prefix_len_ = 0;
};

}  // namespace nettypes

#endif  // NETTYPES_IPV4_H
