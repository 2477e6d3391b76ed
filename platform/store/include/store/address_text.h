// Addresses as canonical texts and as bytes in network order. `family` is AF_INET, and the bytes
// are an in_addr, or AF_INET6, and they are an in6_addr.
#ifndef STORE_ADDRESS_TEXT_H_
#define STORE_ADDRESS_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace store {

std::string AddressText(int family, const void* address);

/// Reads "ADDRESS" or "ADDRESS%ZONE"; the zone is dropped. Bytes stay as they are when `text` is no
/// address, which a value of the data model cannot be.
void ReadAddress(int family, std::string_view text, void* address);

/// Reads "ADDRESS/LENGTH". @returns the length in bits
uint8_t ReadAddressAndLength(int family, std::string_view text, void* address);

}  // namespace store

#endif  // STORE_ADDRESS_TEXT_H_
