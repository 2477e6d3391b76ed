#include "store/address_text.h"

#include <arpa/inet.h>

#include <charconv>

namespace store {

std::string AddressText(int family, const void* address) {
  if (family == AF_INET) {  // inet_ntop would print it with sprintf
    const auto* bytes = static_cast<const uint8_t*>(address);
    return std::to_string(bytes[0]) + "." + std::to_string(bytes[1]) + "." +
           std::to_string(bytes[2]) + "." + std::to_string(bytes[3]);
  }
  char text[INET6_ADDRSTRLEN];
  return inet_ntop(family, address, text, sizeof(text));
}

void ReadAddress(int family, std::string_view text, void* address) {
  inet_pton(family, std::string(text.substr(0, text.find('%'))).c_str(), address);
}

uint8_t ReadAddressAndLength(int family, std::string_view text, void* address) {
  const size_t slash = text.rfind('/');
  const std::string address_text(text.substr(0, slash));
  inet_pton(family, address_text.c_str(), address);
  unsigned length = 0;
  std::from_chars(text.data() + slash + 1, text.data() + text.size(), length);
  return static_cast<uint8_t>(length);
}

}  // namespace store
