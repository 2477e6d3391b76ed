// Texts of addresses and prefixes, and the arithmetic of prefixes.
//
// The input is taken twice: as lines of text, which are parsed, and as bytes, which make two
// prefixes of each family with any length. The C library's reader knows the same text forms.
#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "byte_reader.h"
#include "nettypes/parse.h"
#include "require.h"

namespace {

using fuzz::ByteReader;
using fuzz::Require;
using nettypes::IPv4Addr;
using nettypes::IPv4AddrMask;
using nettypes::IPv6Addr;
using nettypes::IPv6AddrMask;

std::array<uint8_t, 4> Octets(const IPv4Addr& addr) {
  const uint32_t number = addr.to_uint32();
  return {static_cast<uint8_t>(number >> 24), static_cast<uint8_t>(number >> 16),
          static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}

std::array<uint8_t, 16> Octets(const IPv6Addr& addr) { return addr.bytes(); }

template <size_t N>
bool Bit(const std::array<uint8_t, N>& octets, size_t position) {
  return (octets[position / 8] >> (7 - position % 8) & 1) != 0;
}

// Two prefixes share an address when they agree in every bit that both fix.
template <typename AddrMask>
bool OverlapBitByBit(const AddrMask& a, const AddrMask& b) {
  const size_t fixed = std::min({a.prefix_len(), b.prefix_len(), AddrMask::kMaxPrefixLen});
  for (size_t i = 0; i < fixed; ++i) {
    if (Bit(Octets(a.addr()), i) != Bit(Octets(b.addr()), i)) return false;
  }
  return true;
}

template <typename AddrMask>
void CheckPair(const AddrMask& a, const AddrMask& b) {
  const std::string pair = a.to_string() + " and " + b.to_string();
  Require(a.Overlap(b) == b.Overlap(a), "Overlap is symmetric: " + pair);
  Require(a.Overlap(b) == OverlapBitByBit(a, b), "Overlap is what the bits say: " + pair);
  Require(a.Overlap(a) && b.Overlap(b), "a prefix overlaps itself: " + pair);
  Require((a == b) == (a.to_string() == b.to_string()), "equal texts, equal values: " + pair);
  const int less = (a < b ? 1 : 0) + (b < a ? 1 : 0) + (a == b ? 1 : 0);
  Require(less == 1, "exactly one of less, greater, equal: " + pair);
  Require(a.IsUnspecified() == (a.addr().is_unspecified() && a.prefix_len() == 0),
          "only the zero prefix is unspecified: " + pair);
}

void CheckHostBits(const IPv4AddrMask& mask) {
  bool all_zero = true;
  bool all_one = true;
  for (size_t i = mask.prefix_len(); i < IPv4AddrMask::kMaxPrefixLen; ++i) {
    (Bit(Octets(mask.addr()), i) ? all_zero : all_one) = false;
  }
  Require(mask.IsNetworkAddr() == all_zero, "network address: " + mask.to_string());
  Require(mask.IsBroadcastAddr() == all_one, "broadcast address: " + mask.to_string());
}

// What parses prints to a text that parses to the same value.
template <typename Value>
std::optional<Value> CheckText(std::optional<Value> (*parse)(std::string_view),
                               std::string_view text) {
  const std::optional<Value> value = parse(text);
  if (!value) return std::nullopt;
  const std::optional<Value> again = parse(value->to_string());
  Require(again && *again == *value, "reads back what it prints: " + value->to_string());
  return value;
}

template <typename Addr>
void CheckAgainstLibrary(int family, const std::optional<Addr>& addr, std::string_view text) {
  if (text.find('\0') != text.npos) return;  // the end of the text for the C library only
  decltype(Octets(Addr())) octets{};
  const bool is_address = inet_pton(family, std::string(text).c_str(), octets.data()) == 1;
  Require(is_address == addr.has_value(), "an address for both or none: " + std::string(text));
  if (addr) Require(Octets(*addr) == octets, "the same address for both: " + std::string(text));
}

void CheckTexts(std::string_view first, std::string_view second) {
  for (const std::string_view text : {first, second}) {
    CheckAgainstLibrary(AF_INET, CheckText(nettypes::ParseIPv4Addr, text), text);
    CheckAgainstLibrary(AF_INET6, CheckText(nettypes::ParseIPv6Addr, text), text);
  }
  const auto ipv4 = CheckText(nettypes::ParseIPv4AddrMask, first);
  const auto other_ipv4 = CheckText(nettypes::ParseIPv4AddrMask, second);
  if (ipv4) CheckHostBits(*ipv4);
  if (ipv4 && other_ipv4) CheckPair(*ipv4, *other_ipv4);
  const auto ipv6 = CheckText(nettypes::ParseIPv6AddrMask, first);
  const auto other_ipv6 = CheckText(nettypes::ParseIPv6AddrMask, second);
  if (ipv6 && other_ipv6) CheckPair(*ipv6, *other_ipv6);
}

template <size_t N>
std::array<uint8_t, N> ReadOctets(ByteReader& reader) {
  std::array<uint8_t, N> octets{};
  for (uint8_t& octet : octets) octet = reader.Byte();
  return octets;
}

IPv4AddrMask ReadIpv4Mask(ByteReader& reader) {
  const uint8_t prefix_len = reader.Byte();
  uint32_t address = 0;
  for (const uint8_t octet : ReadOctets<4>(reader)) address = address << 8 | octet;
  return {IPv4Addr(address), prefix_len};
}

IPv6AddrMask ReadIpv6Mask(ByteReader& reader) {
  const uint8_t prefix_len = reader.Byte();
  return {IPv6Addr(ReadOctets<16>(reader)), prefix_len};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 256) return 0;  // two lines of any length that can be an address

  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const size_t line_end = std::min(text.find('\n'), size);
  std::string_view second = text.substr(std::min(line_end + 1, size));
  if (second.ends_with('\n')) second.remove_suffix(1);
  CheckTexts(text.substr(0, line_end), second);

  ByteReader ipv4_bytes({data, size});
  const IPv4AddrMask ipv4 = ReadIpv4Mask(ipv4_bytes);
  CheckHostBits(ipv4);
  CheckPair(ipv4, ReadIpv4Mask(ipv4_bytes));
  ByteReader ipv6_bytes({data, size});
  const IPv6AddrMask ipv6 = ReadIpv6Mask(ipv6_bytes);
  CheckPair(ipv6, ReadIpv6Mask(ipv6_bytes));
  return 0;
}
