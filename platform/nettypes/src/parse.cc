#include "nettypes/parse.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace nettypes {

namespace {

// A decimal number from 0 to `max` (at most 255) without leading zeros.
std::optional<uint8_t> ParseDecimal(std::string_view text, unsigned max) {
  if (text.empty() || text.size() > 3) return std::nullopt;
  if (text.size() > 1 && text.front() == '0') return std::nullopt;
  unsigned number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  if (number > max) return std::nullopt;
  return static_cast<uint8_t>(number);
}

std::optional<unsigned> ParseHexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return std::nullopt;
}

// One to four hexadecimal digits.
std::optional<uint16_t> ParseGroup(std::string_view text) {
  if (text.empty() || text.size() > 4) return std::nullopt;
  unsigned number = 0;
  for (const char c : text) {
    const std::optional<unsigned> digit = ParseHexDigit(c);
    if (!digit) return std::nullopt;
    number = number << 4 | *digit;
  }
  return static_cast<uint16_t>(number);
}

// The bytes of the groups on one side of "::", or of a whole address without it.
class GroupBytes {
 public:
  // Reads groups with ":" between them; an empty text has none. Only the end of an address can be a
  // dotted quad. Returns false when the text is anything else or does not fit into an address.
  bool Parse(std::string_view text, bool is_end_of_address) {
    if (text.empty()) return true;
    for (size_t colon = text.find(':'); colon != text.npos; colon = text.find(':')) {
      if (!AppendGroup(text.substr(0, colon))) return false;
      text.remove_prefix(colon + 1);
    }
    const bool is_dotted_quad = is_end_of_address && text.find('.') != text.npos;
    return is_dotted_quad ? AppendDottedQuad(text) : AppendGroup(text);
  }

  size_t size() const { return size_; }
  auto begin() const { return bytes_.begin(); }
  auto end() const { return bytes_.begin() + static_cast<std::ptrdiff_t>(size_); }

 private:
  bool AppendGroup(std::string_view text) {
    const std::optional<uint16_t> group = ParseGroup(text);
    return group && Append(static_cast<uint8_t>(*group >> 8)) &&
           Append(static_cast<uint8_t>(*group & 0xff));
  }

  bool AppendDottedQuad(std::string_view text) {
    const std::optional<IPv4Addr> quad = ParseIPv4Addr(text);
    if (!quad) return false;
    for (const int shift : {24, 16, 8, 0}) {
      if (!Append(static_cast<uint8_t>(quad->to_uint32() >> shift & 0xff))) return false;
    }
    return true;
  }

  bool Append(uint8_t byte) {
    if (size_ == bytes_.size()) return false;
    bytes_[size_++] = byte;
    return true;
  }

  std::array<uint8_t, 16> bytes_{};
  size_t size_ = 0;
};

template <typename AddrMask, typename Addr>
std::optional<AddrMask> ParseAddrMask(std::string_view text,
                                      std::optional<Addr> (*parse_addr)(std::string_view)) {
  const size_t slash = text.find('/');
  if (slash == text.npos) return std::nullopt;
  const std::optional<Addr> addr = parse_addr(text.substr(0, slash));
  const std::optional<uint8_t> prefix_len =
      ParseDecimal(text.substr(slash + 1), AddrMask::kMaxPrefixLen);
  if (!addr || !prefix_len) return std::nullopt;
  return AddrMask(*addr, *prefix_len);
}

}  // namespace

std::optional<IPv4Addr> ParseIPv4Addr(std::string_view text) {
  uint32_t address = 0;
  for (int octet = 0; octet < 4; ++octet) {
    const bool is_last = octet == 3;
    const size_t end = is_last ? text.size() : text.find('.');
    if (end == text.npos) return std::nullopt;
    const std::optional<uint8_t> number = ParseDecimal(text.substr(0, end), 255);
    if (!number) return std::nullopt;
    address = address << 8 | *number;
    if (!is_last) text.remove_prefix(end + 1);
  }
  return IPv4Addr(address);
}

std::optional<IPv6Addr> ParseIPv6Addr(std::string_view text) {
  constexpr size_t kGroupSize = 2;
  std::array<uint8_t, 16> address{};
  GroupBytes front;
  const size_t zeros = text.find("::");
  if (zeros == text.npos) {
    if (!front.Parse(text, true) || front.size() != address.size()) return std::nullopt;
    std::copy(front.begin(), front.end(), address.begin());
    return IPv6Addr(address);
  }

  // A second "::" or a third colon leaves an empty group in `back`, which no group can be.
  GroupBytes back;
  if (!front.Parse(text.substr(0, zeros), false)) return std::nullopt;
  if (!back.Parse(text.substr(zeros + 2), true)) return std::nullopt;
  if (front.size() + back.size() + kGroupSize > address.size()) return std::nullopt;
  std::copy(front.begin(), front.end(), address.begin());
  std::copy_backward(back.begin(), back.end(), address.end());
  return IPv6Addr(address);
}

std::optional<IPv4AddrMask> ParseIPv4AddrMask(std::string_view text) {
  return ParseAddrMask<IPv4AddrMask>(text, ParseIPv4Addr);
}

std::optional<IPv6AddrMask> ParseIPv6AddrMask(std::string_view text) {
  return ParseAddrMask<IPv6AddrMask>(text, ParseIPv6Addr);
}

}  // namespace nettypes
