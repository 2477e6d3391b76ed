#include "right_form.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>

namespace store {
namespace {

bool IsAddress(const std::string& text, int family) {
  in6_addr bytes;
  return inet_pton(family, text.c_str(), &bytes) == 1;
}

bool IsAll(const std::string& text, const char* characters) {
  return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
}

std::string IsWritten(const std::string& text, const std::string& right) {
  return text + " is written " + right + " here.";
}

// Length of the prefix whose mask this is: 24 for 255.255.255.0.
std::optional<int> LengthOfMask(const std::string& text) {
  in_addr mask;
  if (inet_pton(AF_INET, text.c_str(), &mask) != 1) return std::nullopt;
  const uint32_t bits = ntohl(mask.s_addr);
  const int length = std::countl_one(bits);
  if (std::popcount(bits) != length) return std::nullopt;
  return length;
}

// `digits` in groups of two.
std::string InOctets(const std::string& digits) {
  std::string octets;
  for (size_t i = 0; i < digits.size(); i += 2) {
    if (i > 0) octets += ':';
    octets.append(digits, i, 2);
  }
  return octets;
}

constexpr char kHexDigits[] = "0123456789abcdefABCDEF";

// The digits of octets that are written with one or two digits each and ":" or "-" between them;
// empty for any other text.
std::string DigitsBetween(const std::string& text) {
  std::string digits;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find_first_of(":-", begin), text.size());
    const std::string octet = text.substr(begin, end - begin);
    if (octet.size() > 2 || !IsAll(octet, kHexDigits)) return "";
    digits += (octet.size() == 1 ? "0" : "") + octet;
    begin = end + 1;
  }
  return digits;
}

std::string HexDigits(const unsigned char* bytes, size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  for (size_t i = 0; i < count; ++i) {
    digits += kDigits[bytes[i] >> 4];
    digits += kDigits[bytes[i] & 0xf];
  }
  return digits;
}

}  // namespace

std::string RightAddressAndLength(const std::string& text, int family) {
  const std::string usual_length = family == AF_INET ? "/24" : "/64";
  if (IsAddress(text, family)) {
    return text + " lacks its length, such as " + text + usual_length + ".";
  }
  // As the command lines of devices have it: 192.0.2.1 255.255.255.0.
  const size_t slash = text.find_last_of("/ ");
  if (slash == std::string::npos) return "";
  const std::string address = text.substr(0, slash);
  std::string length = text.substr(slash + 1);
  if (!IsAddress(address, family)) return "";
  if (const auto of_mask = LengthOfMask(length); of_mask && family == AF_INET) {
    return IsWritten(text, address + "/" + std::to_string(*of_mask));
  }
  if (length.size() < 2 || length.front() != '0' || !IsAll(length, "0123456789")) return "";
  length.erase(0, std::min(length.find_first_not_of('0'), length.size() - 1));
  const size_t full_length = family == AF_INET ? 32 : 128;
  if (length.size() > 3 || std::stoul(length) > full_length) return "";
  return IsWritten(text, address + "/" + length);
}

std::string RightHexList(const std::string& text) {
  std::array<unsigned char, sizeof(in6_addr)> bytes;
  if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) {
    return IsWritten(text, InOctets(HexDigits(bytes.data(), sizeof(in_addr))));
  }
  if (inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1) {
    return IsWritten(text, InOctets(HexDigits(bytes.data(), bytes.size())));
  }
  if (const size_t slash = text.find('/'); slash != std::string::npos) {
    const std::string address = text.substr(0, slash);
    const std::string right = RightHexList(address);
    return IsAddress(address, AF_INET) || IsAddress(address, AF_INET6)
               ? right + " A length has no place in it."
               : "";
  }
  if (text.starts_with("0x")) {
    return RightHexList(text.substr(2)).empty() ? "" : IsWritten(text, InOctets(text.substr(2)));
  }
  if (text.size() % 2 == 0 && IsAll(text, kHexDigits)) return IsWritten(text, InOctets(text));
  const std::string digits = DigitsBetween(text);
  return digits.empty() ? "" : IsWritten(text, InOctets(digits));
}

}  // namespace store
