// Names that an index by hash cannot tell apart.
#ifndef TESTS_SUPPORT_HASH_TWINS_H_
#define TESTS_SUPPORT_HASH_TWINS_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>

#include "name_index.h"

namespace tests {

/// Two names of L3 interfaces with the same hash.
inline std::pair<std::string, std::string> NamesWithOneHash() {
  std::unordered_map<uint32_t, std::string> by_hash;
  for (int i = 0; i < 1000000; ++i) {
    const std::string name = "l3 " + std::to_string(i);
    const auto [known, added] =
        by_hash.emplace(ip_application::config_valid::NameIndex::HashOf(name), name);
    if (!added) return {known->second, name};
  }
  throw std::logic_error("no two names have one hash");
}

}  // namespace tests

#endif  // TESTS_SUPPORT_HASH_TWINS_H_
