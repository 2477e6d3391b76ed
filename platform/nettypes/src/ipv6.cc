#include "nettypes/ipv6.h"

#include <charconv>

#include "nettypes/ipv4.h"

namespace nettypes {

namespace {

constexpr size_t kGroups = 8;
using Groups = std::array<uint16_t, kGroups>;

// Groups begin to end - 1; empty when there is nothing to shorten.
struct Run {
  size_t begin = 0;
  size_t end = 0;

  size_t length() const { return end - begin; }
};

// The run of zero groups that "::" stands for: the longest, the first of equally long ones, and
// never a single group (RFC 5952 sections 4.2.2 and 4.2.3).
Run LongestZeroRun(const Groups& groups) {
  Run longest;
  Run current;
  for (size_t i = 0; i < kGroups; ++i) {
    if (groups[i] != 0) {
      current = Run{i + 1, i + 1};
      continue;
    }
    current.end = i + 1;
    if (current.length() > longest.length()) longest = current;
  }
  return longest.length() >= 2 ? longest : Run{};
}

void AppendHex(std::string& text, uint16_t group) {
  char digits[4];
  const auto written = std::to_chars(std::begin(digits), std::end(digits), group, 16);
  text.append(digits, written.ptr);
}

// Groups begin to end - 1 with ":" between them.
void AppendGroups(std::string& text, const Groups& groups, size_t begin, size_t end) {
  for (size_t i = begin; i < end; ++i) {
    if (i != begin) text += ':';
    AppendHex(text, groups[i]);
  }
}

}  // namespace

std::string IPv6Addr::to_string() const {
  const bool is_ipv4_mapped = high_ == 0 && low_ >> 32 == 0xffff;
  if (is_ipv4_mapped) return "::ffff:" + IPv4Addr(static_cast<uint32_t>(low_)).to_string();

  Groups groups;
  for (size_t i = 0; i < 4; ++i) {
    groups[i] = static_cast<uint16_t>(high_ >> (48 - 16 * i));
    groups[4 + i] = static_cast<uint16_t>(low_ >> (48 - 16 * i));
  }
  const Run zeros = LongestZeroRun(groups);
  std::string text;
  AppendGroups(text, groups, 0, zeros.length() == 0 ? kGroups : zeros.begin);
  if (zeros.length() == 0) return text;
  text += "::";
  AppendGroups(text, groups, zeros.end, kGroups);
  return text;
}

std::strong_ordering IPv6Addr::Compare(const IPAddr& other) const {
  const auto* same_family = dynamic_cast<const IPv6Addr*>(&other);
  return same_family == nullptr ? std::strong_ordering::greater : *this <=> *same_family;
}

std::string IPv6AddrMask::to_string() const {
  return addr_.to_string() + "/" + std::to_string(prefix_len_);
}

std::strong_ordering IPv6AddrMask::Compare(const IPAddrMask& other) const {
  const auto* same_family = dynamic_cast<const IPv6AddrMask*>(&other);
  return same_family == nullptr ? std::strong_ordering::greater : *this <=> *same_family;
}

}  // namespace nettypes
