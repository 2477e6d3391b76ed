#include "one_line.h"

namespace ipvald {
namespace {

constexpr size_t kMaxLength = 500;  // bytes; a message may quote a value of any length

bool IsBlankOrControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x20 || byte == 0x7f;
}

bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  bool gap = false;
  for (const char c : text) {
    if (IsBlankOrControl(c)) {
      gap = !line.empty();
      continue;
    }
    if (line.size() >= kMaxLength && !IsUtf8Continuation(c)) return line + "...";
    if (gap) line += ' ';
    gap = false;
    line += c;
  }
  return line;
}

std::string Cut(std::string_view text, size_t max) {
  if (text.size() <= max) return std::string(text);
  size_t length = max;
  while (length > 0 && IsUtf8Continuation(text[length])) --length;
  return std::string(text.substr(0, length)) + "...";
}

}  // namespace ipvald
