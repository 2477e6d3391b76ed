#include "store/tags.h"

#include <array>
#include <utility>

#include "store/error.h"

namespace store {
namespace {

struct FixedTag {
  std::string_view name;
  uint32_t tag;
};

// Support tooling and older builds of the plug-in know these numbers.
constexpr std::array<FixedTag, 7> kFixedTags = {{
    {"mgmt", 0x1412343f},
    {"l3", 0x213f1a7a},
    {"loopback", 0x1472cced},
    {"ospf-interface-l3", 0x6af0fc0e},
    {"ospfv3-interface-l3", 0x32ca0b6a},
    {"vrf", 0x4c5f3e78},
    {"ospfv3-pm-if-name", 0x349b54d4},
}};

// FNV-1a, folded to 31 bits.
uint32_t Hash(std::string_view text) {
  uint32_t hash = 2166136261u;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 16777619u;
  }
  hash = (hash >> 31) ^ (hash & 0x7fffffffu);
  return hash == 0 ? 1 : hash;
}

}  // namespace

uint32_t TagOf(std::string_view text) {
  for (const FixedTag& fixed : kFixedTags) {
    if (fixed.name == text) return fixed.tag;
  }
  return Hash(text);
}

uint32_t TagTable::Add(const std::string& text) {
  const uint32_t tag = TagOf(text);
  const auto [entry, inserted] = texts_.emplace(tag, text);
  if (!inserted && entry->second != text) {
    throw Error("\"" + text + "\" and \"" + entry->second + "\" have the same tag number");
  }
  return tag;
}

const char* TagTable::Text(uint32_t tag) const {
  const auto entry = texts_.find(tag);
  return entry == texts_.end() ? nullptr : entry->second.c_str();
}

}  // namespace store
