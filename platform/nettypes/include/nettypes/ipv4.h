#ifndef NETTYPES_IPV4_H
#define NETTYPES_IPV4_H

#include <algorithm>
#include <compare>
#include <cstdint>
#include <string>

#include "nettypes/address.h"

namespace nettypes {

/// An IPv4 address. A value: cheap to copy, ordered numerically, 0.0.0.0 when default-constructed.
class IPv4Addr final : public IPAddr {
 public:
  constexpr IPv4Addr() = default;
  /// @param host_order  address as a number in host byte order; 10.0.0.1 is 0x0a000001.
  constexpr explicit IPv4Addr(uint32_t host_order) : value_(host_order) {}

  /// The address as a number in host byte order; 10.0.0.1 is 0x0a000001.
  constexpr uint32_t to_uint32() const { return value_; }

  /// True for 0.0.0.0.
  constexpr bool is_unspecified() const { return value_ == 0; }

  /// Dotted quad without leading zeros, for example "192.0.2.1".
  std::string to_string() const override;

  std::strong_ordering Compare(const IPAddr& other) const override;

  friend constexpr bool operator==(const IPv4Addr& a, const IPv4Addr& b) {
    return a.value_ == b.value_;
  }
  friend constexpr std::strong_ordering operator<=>(const IPv4Addr& a, const IPv4Addr& b) {
    return a.value_ <=> b.value_;
  }

 private:
  uint32_t value_ = 0;
};

/// An IPv4 address with the length of its prefix: an interface address or the destination of a
/// route. The host bits are kept as given. A value: cheap to copy, ordered by address, then by
/// prefix length.
///
/// The prefix length counts bits, 0 to 32. A larger number is kept, compared and printed as it is;
/// everything that asks for the prefix takes it as 32.
class IPv4AddrMask final : public IPAddrMask {
 public:
  static constexpr uint8_t kMaxPrefixLen = 32;  // bits

  /// The unspecified prefix, 0.0.0.0/0.
  constexpr IPv4AddrMask() = default;
  /// @param prefix_len  bits
  constexpr IPv4AddrMask(const IPv4Addr& addr, uint8_t prefix_len)
      : addr_(addr), prefix_len_(prefix_len) {}
  /// @param host_order  address as a number in host byte order; 10.0.0.1 is 0x0a000001.
  /// @param prefix_len  bits
  constexpr explicit IPv4AddrMask(uint32_t host_order, uint8_t prefix_len)
      : addr_(host_order), prefix_len_(prefix_len) {}

  constexpr void set_addr(const IPv4Addr& addr) { addr_ = addr; }
  /// @param prefix_len  bits
  constexpr void set_prefix_len(uint8_t prefix_len) { prefix_len_ = prefix_len; }

  /// The address, host bits included.
  constexpr IPv4Addr addr() const { return addr_; }
  /// Bits, as given.
  constexpr uint8_t prefix_len() const { return prefix_len_; }

  /// True when nothing was set: the value equals the default-constructed one. "Nothing" has no mark
  /// of its own, so a configured 0.0.0.0/0 counts as unspecified too; 0.0.0.0/8 and 10.0.0.1/0 do
  /// not.
  constexpr bool IsUnspecified() const { return *this == IPv4AddrMask(); }

  /// True when the two prefixes share at least one address, which is when the shorter one contains
  /// the longer one. Host bits play no part; a prefix of length 0 overlaps every other.
  constexpr bool Overlap(const IPv4AddrMask& other) const {
    const int host_bits = kMaxPrefixLen - std::min(Bits(), other.Bits());
    const uint64_t differing = addr_.to_uint32() ^ other.addr_.to_uint32();
    return differing >> host_bits == 0;  // 64 bits wide, so that a shift by 32 is defined
  }

  /// True when all host bits are zero. A prefix of length 32 has no host bits, so its address is
  /// both network and broadcast address, and each of the two addresses of a /31 is one of them; who
  /// exempts these lengths from a rule asks for the length first.
  constexpr bool IsNetworkAddr() const { return (addr_.to_uint32() & HostBits()) == 0; }

  /// True when all host bits are one. See IsNetworkAddr() for the lengths 31 and 32.
  constexpr bool IsBroadcastAddr() const { return (addr_.to_uint32() & HostBits()) == HostBits(); }

  /// Dotted quad, "/" and the prefix length, for example "192.0.2.1/24"; the unspecified prefix is
  /// "0.0.0.0/0".
  std::string to_string() const override;

  std::strong_ordering Compare(const IPAddrMask& other) const override;

  friend constexpr bool operator==(const IPv4AddrMask& a, const IPv4AddrMask& b) {
    return a.addr_ == b.addr_ && a.prefix_len_ == b.prefix_len_;
  }
  friend constexpr std::strong_ordering operator<=>(const IPv4AddrMask& a, const IPv4AddrMask& b) {
    const std::strong_ordering by_addr = a.addr_ <=> b.addr_;
    return std::is_neq(by_addr) ? by_addr : a.prefix_len_ <=> b.prefix_len_;
  }

 private:
  constexpr int Bits() const { return std::min(prefix_len_, kMaxPrefixLen); }
  constexpr uint32_t HostBits() const {
    return static_cast<uint32_t>(uint64_t{0xffffffff} >> Bits());
  }

  IPv4Addr addr_;
  uint8_t prefix_len_ = 0;
};

}  // namespace nettypes

#endif  // NETTYPES_IPV4_H
