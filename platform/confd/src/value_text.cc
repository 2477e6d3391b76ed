#include "value_text.h"

#include <sys/socket.h>

#include <cinttypes>
#include <cstdio>

#include "store/address_text.h"

namespace confd {
namespace {

std::string HexText(const confd_buf_t& buf, const char* separator) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < buf.size; ++i) {
    if (i > 0) text += separator;
    text.push_back(kDigits[buf.ptr[i] >> 4]);
    text.push_back(kDigits[buf.ptr[i] & 15]);
  }
  return text;
}

std::string BitsText(uint64_t bits) {
  char text[16 + sizeof("bits<>")];
  snprintf(text, sizeof(text), "bits<%" PRIx64 ">", bits);
  return text;
}

std::string NameText(uint32_t hash, const char* unknown) {
  const char* name = confd_hash2str(hash);
  return name != nullptr ? name : std::string(unknown) + "<" + std::to_string(hash) + ">";
}

std::string Decimal64Text(const confd_decimal64& number) {
  if (number.fraction_digits < 1 || number.fraction_digits > 18) {
    return "invalid64<" + std::to_string(number.value) + ">";
  }
  const bool negative = number.value < 0;
  std::string digits = std::to_string(negative ? 0 - static_cast<uint64_t>(number.value)
                                               : static_cast<uint64_t>(number.value));
  if (digits.size() <= number.fraction_digits) {
    digits.insert(0, number.fraction_digits + 1 - digits.size(), '0');
  }
  digits.insert(digits.size() - number.fraction_digits, 1, '.');
  while (digits.back() == '0' && digits[digits.size() - 2] != '.') digits.pop_back();
  if (negative) digits.insert(digits.begin(), '-');
  return digits;
}

}  // namespace

std::string PrintValue(const confd_value_t& value) {
  switch (value.type) {
    case C_XMLTAG:
      return NameText(value.val.xmltag.tag, "tag");
    case C_STR:
      return value.val.c_s;
    case C_BUF:
      return {reinterpret_cast<const char*>(value.val.buf.ptr), value.val.buf.size};
    case C_INT8:
      return std::to_string(value.val.i8);
    case C_INT16:
      return std::to_string(value.val.i16);
    case C_INT32:
      return std::to_string(value.val.i32);
    case C_INT64:
      return std::to_string(value.val.i64);
    case C_UINT8:
      return std::to_string(value.val.u8);
    case C_UINT16:
      return std::to_string(value.val.u16);
    case C_UINT32:
      return std::to_string(value.val.u32);
    case C_UINT64:
      return std::to_string(value.val.u64);
    case C_BOOL:
      return value.val.boolean != 0 ? "true" : "false";
    case C_ENUM_VALUE:
      return "enum<" + std::to_string(value.val.enumvalue) + ">";
    case C_IPV4:
      return store::AddressText(AF_INET, &value.val.ip);
    case C_IPV6:
      return store::AddressText(AF_INET6, &value.val.ip6);
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      return store::AddressText(AF_INET, &value.val.ipv4prefix.ip) + "/" +
             std::to_string(value.val.ipv4prefix.len);
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      return store::AddressText(AF_INET6, &value.val.ipv6prefix.ip6) + "/" +
             std::to_string(value.val.ipv6prefix.len);
    case C_BINARY:
      return HexText(value.val.buf, "");
    case C_HEXSTR:
      return HexText(value.val.buf, ":");
    case C_BIT32:
      return BitsText(value.val.b32);
    case C_BIT64:
      return BitsText(value.val.b64);
    case C_BITBIG:
      return "bits<" + HexText(value.val.buf, "") + ">";
    case C_DQUAD:
      return store::AddressText(AF_INET, &value.val.dquad);
    case C_DECIMAL64:
      return Decimal64Text(value.val.d64);
    case C_IDENTITYREF:
      return NameText(value.val.idref.id, "idref");
    default:
      return "";
  }
}

std::string PrintKey(const confd_value_t& value) {
  // As a hex list is written; without separators the text could not be read back.
  std::string text = value.type == C_BINARY ? HexText(value.val.buf, ":") : PrintValue(value);
  if (!text.empty() && text.find_first_of(" \t\n\"{}") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + "\"";
}

}  // namespace confd
