// What the address types of both families have in common: a text form and an order.
//
// A record that holds "an address" or "a prefix" of either family can hand it out by const
// reference to these bases. Nothing is owned or deleted through them.
#ifndef NETTYPES_ADDRESS_H
#define NETTYPES_ADDRESS_H

#include <compare>
#include <ostream>
#include <string>

namespace nettypes {

/// An address of either family: an IPv4Addr or an IPv6Addr.
class IPAddr {
 public:
  /// The address as text, see the final classes.
  virtual std::string to_string() const = 0;

  /// Where this address stands beside `other`: those of IPv4 before those of IPv6, within a family
  /// in the order of its class.
  virtual std::strong_ordering Compare(const IPAddr& other) const = 0;

 protected:
  constexpr IPAddr() = default;
  constexpr IPAddr(const IPAddr&) = default;
  constexpr IPAddr& operator=(const IPAddr&) = default;
  ~IPAddr() = default;
};

/// An address of either family with a prefix length: an IPv4AddrMask or an IPv6AddrMask.
class IPAddrMask {
 public:
  /// The text of the address, "/", and the prefix length in decimal.
  virtual std::string to_string() const = 0;

  /// Where this prefix stands beside `other`: those of IPv4 before those of IPv6, within a family
  /// in the order of its class.
  virtual std::strong_ordering Compare(const IPAddrMask& other) const = 0;

 protected:
  constexpr IPAddrMask() = default;
  constexpr IPAddrMask(const IPAddrMask&) = default;
  constexpr IPAddrMask& operator=(const IPAddrMask&) = default;
  ~IPAddrMask() = default;
};

// The order of Compare().

inline bool operator==(const IPAddr& a, const IPAddr& b) { return std::is_eq(a.Compare(b)); }
inline std::strong_ordering operator<=>(const IPAddr& a, const IPAddr& b) { return a.Compare(b); }
inline bool operator==(const IPAddrMask& a, const IPAddrMask& b) {
  return std::is_eq(a.Compare(b));
}
inline std::strong_ordering operator<=>(const IPAddrMask& a, const IPAddrMask& b) {
  return a.Compare(b);
}

/// Writes to_string().
inline std::ostream& operator<<(std::ostream& out, const IPAddr& addr) {
  return out << addr.to_string();
}

/// Writes to_string().
inline std::ostream& operator<<(std::ostream& out, const IPAddrMask& mask) {
  return out << mask.to_string();
}

}  // namespace nettypes

#endif  // NETTYPES_ADDRESS_H
