#ifndef NETTYPES_IPV6_H
#define NETTYPES_IPV6_H

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>

#include "nettypes/address.h"

namespace nettypes {

/// An IPv6 address, without a zone. A value: cheap to copy, ordered as its bytes in network order,
/// :: when default-constructed.
class IPv6Addr final : public IPAddr {
 public:
  constexpr IPv6Addr() = default;
  /// @param network_order  the sixteen bytes of the address in network byte order; 2001:db8::1
  /// begins with 0x20, 0x01.
  constexpr explicit IPv6Addr(const std::array<uint8_t, 16>& network_order)
      : high_(BigEndian(network_order, 0)), low_(BigEndian(network_order, 8)) {}

  /// The sixteen bytes of the address in network byte order.
  constexpr std::array<uint8_t, 16> bytes() const {
    std::array<uint8_t, 16> network_order{};
    for (size_t i = 0; i < 8; ++i) {
      network_order[i] = static_cast<uint8_t>(high_ >> (56 - 8 * i));
      network_order[8 + i] = static_cast<uint8_t>(low_ >> (56 - 8 * i));
    }
    return network_order;
  }

  /// True for ::.
  constexpr bool is_unspecified() const { return high_ == 0 && low_ == 0; }

  /// The canonical text of RFC 5952, for example "2001:db8::1": lower case, no leading zeros, the
  /// longest run of two or more zero groups (the first of equally long ones) as "::". An
  /// IPv4-mapped address (::ffff:0:0/96) ends in a dotted quad, "::ffff:192.0.2.1"; no other
  /// address does.
  std::string to_string() const override;

  std::strong_ordering Compare(const IPAddr& other) const override;

  friend constexpr bool operator==(const IPv6Addr& a, const IPv6Addr& b) {
    return a.high_ == b.high_ && a.low_ == b.low_;
  }
  friend constexpr std::strong_ordering operator<=>(const IPv6Addr& a, const IPv6Addr& b) {
    const std::strong_ordering by_high = a.high_ <=> b.high_;
    return std::is_neq(by_high) ? by_high : a.low_ <=> b.low_;
  }

 private:
  friend class IPv6AddrMask;

  static constexpr uint64_t BigEndian(const std::array<uint8_t, 16>& bytes, size_t begin) {
    uint64_t number = 0;
    for (size_t i = begin; i < begin + 8; ++i) number = number << 8 | bytes[i];
    return number;
  }

  // Two numbers compare faster than sixteen bytes.
  uint64_t high_ = 0;  // the first eight bytes, most significant first
  uint64_t low_ = 0;   // the last eight bytes
};

/// An IPv6 address with the length of its prefix: an interface address or the destination of a
/// route. The host bits are kept as given. A value: cheap to copy, ordered by address, then by
/// prefix length.
///
/// The prefix length counts bits, 0 to 128. A larger number is kept, compared and printed as it is;
/// everything that asks for the prefix takes it as 128.
class IPv6AddrMask final : public IPAddrMask {
 public:
  static constexpr uint8_t kMaxPrefixLen = 128;  // bits

  /// The unspecified prefix, ::/0.
  constexpr IPv6AddrMask() = default;
  /// @param prefix_len  bits
  constexpr IPv6AddrMask(const IPv6Addr& addr, uint8_t prefix_len)
      : addr_(addr), prefix_len_(prefix_len) {}

  constexpr void set_addr(const IPv6Addr& addr) { addr_ = addr; }
  /// @param prefix_len  bits
  constexpr void set_prefix_len(uint8_t prefix_len) { prefix_len_ = prefix_len; }

  /// The address, host bits included.
  constexpr IPv6Addr addr() const { return addr_; }
  /// Bits, as given.
  constexpr uint8_t prefix_len() const { return prefix_len_; }

  /// True when nothing was set: the value equals the default-constructed one. "Nothing" has no mark
  /// of its own, so a configured ::/0 counts as unspecified too; ::/64 and 2001:db8::1/0 do not.
  constexpr bool IsUnspecified() const { return *this == IPv6AddrMask(); }

  /// True when the two prefixes share at least one address, which is when the shorter one contains
  /// the longer one. Host bits play no part; a prefix of length 0 overlaps every other.
  constexpr bool Overlap(const IPv6AddrMask& other) const {
    const int common_bits =
        std::min({int{prefix_len_}, int{other.prefix_len_}, int{kMaxPrefixLen}});
    if (common_bits == 0) return true;  // a shift by 64 would be undefined
    const uint64_t high_differing = addr_.high_ ^ other.addr_.high_;
    if (common_bits <= 64) return high_differing >> (64 - common_bits) == 0;
    const uint64_t low_differing = addr_.low_ ^ other.addr_.low_;
    return high_differing == 0 && low_differing >> (128 - common_bits) == 0;
  }

  /// The address, "/" and the prefix length, for example "2001:db8::1/64"; the unspecified prefix
  /// is "::/0".
  std::string to_string() const override;

  std::strong_ordering Compare(const IPAddrMask& other) const override;

  friend constexpr bool operator==(const IPv6AddrMask& a, const IPv6AddrMask& b) {
    return a.addr_ == b.addr_ && a.prefix_len_ == b.prefix_len_;
  }
  friend constexpr std::strong_ordering operator<=>(const IPv6AddrMask& a, const IPv6AddrMask& b) {
    const std::strong_ordering by_addr = a.addr_ <=> b.addr_;
    return std::is_neq(by_addr) ? by_addr : a.prefix_len_ <=> b.prefix_len_;
  }

 private:
  IPv6Addr addr_;
  uint8_t prefix_len_ = 0;
};

}  // namespace nettypes

#endif  // NETTYPES_IPV6_H
