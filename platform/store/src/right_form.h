// How a value that is none was probably meant.
#ifndef PLATFORM_STORE_RIGHT_FORM_H_
#define PLATFORM_STORE_RIGHT_FORM_H_

#include <string>

namespace store {

/// A sentence on what `text` lacks to be an address with prefix length of `family` (AF_INET or
/// AF_INET6), such as "192.0.2.1 lacks its length, such as 192.0.2.1/24."; empty when it looks like
/// none.
std::string RightAddressAndLength(const std::string& text, int family);

/// The same for a list of octets: "10.0.0.0 is written 0a:00:00:00 here.".
std::string RightHexList(const std::string& text);

}  // namespace store

#endif  // PLATFORM_STORE_RIGHT_FORM_H_
