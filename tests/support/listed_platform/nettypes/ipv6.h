#ifndef NETTYPES_IPV6_H
#define NETTYPES_IPV6_H

#include <arpa/inet.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "nettypes/address.h"

namespace nettypes {

class IPv6Addr final : public IPAddr {
 public:
  IPv6Addr() = default;
  explicit IPv6Addr(const std::array<uint8_t, 16>& network_order) : bytes_(network_order) {}

  bool is_unspecified() const { return *this == IPv6Addr(); }

  // Of the tests: behind every text, as some libraries write the zone of an address.
  static inline std::string zone;

  std::string to_string() const override {
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, bytes_.data(), text, sizeof(text)) + zone;
  }

  friend bool operator==(const IPv6Addr& a, const IPv6Addr& b) { return a.bytes_ == b.bytes_; }
  friend bool operator<(const IPv6Addr& a, const IPv6Addr& b) { return a.bytes_ < b.bytes_; }

 private:
  friend class IPv6AddrMask;

  std::array<uint8_t, 16> bytes_{};
};

class IPv6AddrMask final : public IPAddrMask {
 public:
  void set_addr(const IPv6Addr& addr) { addr_ = addr; }
  void set_prefix_len(uint8_t prefix_len) { prefix_len_ = prefix_len; }
  const IPv6Addr& addr() const { return addr_; }
  uint8_t prefix_len() const { return prefix_len_; }

  bool IsUnspecified() const { return addr_.is_unspecified() && prefix_len_ == 0; }
  bool Overlap(const IPv6AddrMask& other) const {
    const size_t bits = prefix_len_ < other.prefix_len_ ? prefix_len_ : other.prefix_len_;
    for (size_t i = 0; i < bits; ++i) {
      if ((addr_.bytes_[i / 8] ^ other.addr_.bytes_[i / 8]) >> (7 - i % 8) & 1) return false;
    }
    return true;
  }
  std::string to_string() const override {
    return addr_.to_string() + "/" + std::to_string(prefix_len_);
  }

  friend bool operator<(const IPv6AddrMask& a, const IPv6AddrMask& b) {
    return a.addr_ == b.addr_ ? a.prefix_len_ < b.prefix_len_ : a.addr_ < b.addr_;
  }

 private:
  IPv6Addr addr_;
  uint8_t prefix_len_ = 0;
};

}  // namespace nettypes

#endif  // NETTYPES_IPV6_H
