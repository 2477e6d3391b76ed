// Any text as a JSON string.
#ifndef TESTS_SUPPORT_JSON_TEXT_H_
#define TESTS_SUPPORT_JSON_TEXT_H_

#include <cstdio>
#include <string>

namespace tests {

/// `text`, which is UTF-8, in double quotes and with the escapes that JSON demands.
inline std::string JsonText(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      json += {'\\', c};
    } else if (c >= 0 && c < ' ') {
      char escape[sizeof("\\u0000")];
      snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(c));
      json += escape;
    } else {
      json += c;
    }
  }
  return json + "\"";
}

}  // namespace tests

#endif  // TESTS_SUPPORT_JSON_TEXT_H_
