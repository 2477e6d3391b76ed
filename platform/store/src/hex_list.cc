#include "store/hex_list.h"

namespace store {
namespace {

int HexDigit(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

}  // namespace

std::optional<std::string> CanonicalHexList(std::string_view text) {
  if (!text.empty() && text.size() % 3 != 2) return std::nullopt;
  std::string canonical(text);
  for (size_t i = 0; i < canonical.size(); ++i) {
    char& c = canonical[i];
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    const bool is_digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    if (i % 3 == 2 ? c != ':' : !is_digit) return std::nullopt;
  }
  return canonical;
}

std::string HexListBytes(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes.push_back(static_cast<char>(HexDigit(text[i]) * 16 + HexDigit(text[i + 1])));
  }
  return bytes;
}

}  // namespace store
