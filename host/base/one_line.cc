#include "one_line.h"

namespace ipvald {
namespace {

constexpr size_t kMaxLength = 500;  // bytes; a message may quote a value of any length

bool IsBlankOrControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x20 || byte == 0x7f;
}

// Length of a character of several bytes at `i` that steers a terminal, or 0: the controls U+0080
// to U+009F, and those that change the direction of what follows.
size_t SteeringLength(std::string_view text, size_t i) {
  const auto byte = [&](size_t k) {
    return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0;
  };
  if (byte(0) == 0xc2 && byte(1) >= 0x80 && byte(1) <= 0x9f) return 2;
  if (byte(0) != 0xe2) return 0;
  const bool is_mark = byte(1) == 0x80 && (byte(2) == 0x8e || byte(2) == 0x8f);
  const bool is_embedding = byte(1) == 0x80 && byte(2) >= 0xaa && byte(2) <= 0xae;
  const bool is_isolate = byte(1) == 0x81 && byte(2) >= 0xa6 && byte(2) <= 0xa9;
  return is_mark || is_embedding || is_isolate ? 3 : 0;
}

bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  bool gap = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const size_t steering = SteeringLength(text, i);
    if (IsBlankOrControl(c) || steering > 0) {
      gap = !line.empty();
      if (steering > 0) i += steering - 1;
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
