#include "address_overlap.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <tuple>
#include <unordered_map>

namespace ip_application::config_valid {
namespace {

// All VRFs of one address space have one name here.
std::string_view AddressSpaceOf(const std::string& vrf_name) {
  return vrf_name == "mgmt" ? "global" : std::string_view(vrf_name);
}

template <typename AddrMask>
struct Family;

template <>
struct Family<nettypes::IPv4AddrMask> {
  static constexpr unsigned kFullLength = 32;
  static const auto& Addresses(const Interface& intf) { return intf.ipv4_addr_list; }
};

template <>
struct Family<nettypes::IPv6AddrMask> {
  static constexpr unsigned kFullLength = 128;
  static const auto& Addresses(const Interface& intf) { return intf.ipv6_addr_list; }
};

// First and last address of a prefix, as numbers.
struct Ipv4Range {
  uint32_t first;
  uint32_t last;
};

struct Number128 {
  uint64_t high;
  uint64_t low;
  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the defaulted body for a null pointer
  friend constexpr auto operator<=>(const Number128&, const Number128&) = default;
};

struct Ipv6Range {
  Number128 first;
  Number128 last;
};

Ipv4Range RangeOf(const nettypes::IPv4AddrMask& mask) {
  const uint32_t host_bits =
      mask.prefix_len() == 0 ? ~uint32_t{0} : (uint32_t{1} << (32 - mask.prefix_len())) - 1;
  const uint32_t addr = mask.addr().to_uint32();
  return {addr & ~host_bits, addr | host_bits};
}

// The `count` lowest bits set, 0 to 64.
uint64_t LowBits(unsigned count) {
  return count == 0 ? 0 : std::numeric_limits<uint64_t>::max() >> (64 - count);
}

Ipv6Range RangeOf(const nettypes::IPv6AddrMask& mask) {
  Number128 addr{0, 0};
  const auto bytes = mask.addr().bytes();
  for (size_t i = 0; i < 8; ++i) {
    addr.high = addr.high << 8 | bytes[i];
    addr.low = addr.low << 8 | bytes[i + 8];
  }
  const unsigned host_bits = 128u - mask.prefix_len();
  const uint64_t high = LowBits(host_bits > 64 ? host_bits - 64 : 0);
  const uint64_t low = LowBits(std::min(host_bits, 64u));
  return {{addr.high & ~high, addr.low & ~low}, {addr.high | high, addr.low | low}};
}

}  // namespace

bool ShareAddressSpace(const std::string& vrf_a, const std::string& vrf_b) {
  return AddressSpaceOf(vrf_a) == AddressSpaceOf(vrf_b);
}

template <typename AddrMask>
struct AddressOverlap<AddrMask>::Components {
  using Range = decltype(RangeOf(AddrMask()));

  // One address, and later one component.
  struct Record {
    uint32_t space;
    uint32_t owner;  // position in the table
    Range range;
  };

  uint32_t SpaceNumber(const std::string& vrf_name) {
    const auto next = static_cast<uint32_t>(spaces.size());
    return spaces.try_emplace(std::string(AddressSpaceOf(vrf_name)), next).first->second;
  }

  // Cuts the sorted records into components, which take their place, and finds the smallest owner
  // in a component with several.
  void Build(std::vector<Record> records) {
    std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
      return std::tie(a.space, a.range.first) < std::tie(b.space, b.range.first);
    });
    for (const Record& record : records) {
      const bool inside = !components.empty() && components.back().space == record.space &&
                          record.range.first <= components.back().range.last;
      if (!inside) {
        components.push_back(record);
        continue;
      }
      Record& component = components.back();
      component.range.last = std::max(component.range.last, record.range.last);
      if (component.owner != record.owner) {
        component.owner = std::min(component.owner, record.owner);
        first_overlapping = std::min<size_t>(first_overlapping, component.owner);
      }
    }
  }

  bool Meets(uint32_t space, const Range& range) const {
    // The last component that begins at or before the end of the range.
    const auto behind = std::upper_bound(
        components.begin(), components.end(), range, [space](const Range& r, const Record& c) {
          return std::tie(space, r.last) < std::tie(c.space, c.range.first);
        });
    if (behind == components.begin()) return false;
    const Record& component = *std::prev(behind);
    return component.space == space && component.range.last >= range.first;
  }

  std::unordered_map<std::string, uint32_t> spaces;  // by AddressSpaceOf
  std::vector<Record> components;                    // by address space and first address
  size_t first_overlapping = std::numeric_limits<size_t>::max();
};

template <typename AddrMask>
AddressOverlap<AddrMask>::AddressOverlap(const std::vector<Interface>& interfaces) {
  auto components = std::make_unique<Components>();
  std::vector<typename Components::Record> records;
  uint32_t owner = 0;
  for (const Interface& intf : interfaces) {
    const auto& addresses = Family<AddrMask>::Addresses(intf);
    const uint32_t space = addresses.empty() ? 0 : components->SpaceNumber(intf.vrf_name);
    for (const AddrMask& mask : addresses) {
      if (mask.prefix_len() > Family<AddrMask>::kFullLength) return;
      records.push_back({space, owner, RangeOf(mask)});
    }
    ++owner;
  }
  components->Build(std::move(records));
  components_ = std::move(components);
}

template <typename AddrMask>
AddressOverlap<AddrMask>::~AddressOverlap() = default;

template <typename AddrMask>
bool AddressOverlap<AddrMask>::MayOverlapLater(size_t position) const {
  return components_ == nullptr || position == components_->first_overlapping;
}

template <typename AddrMask>
bool AddressOverlap<AddrMask>::MayOverlap(const Interface& other) const {
  if (components_ == nullptr) return true;
  const auto space = components_->spaces.find(std::string(AddressSpaceOf(other.vrf_name)));
  if (space == components_->spaces.end()) return false;
  for (const AddrMask& mask : Family<AddrMask>::Addresses(other)) {
    if (mask.prefix_len() > Family<AddrMask>::kFullLength) return true;
    if (components_->Meets(space->second, RangeOf(mask))) return true;
  }
  return false;
}

template class AddressOverlap<nettypes::IPv4AddrMask>;
template class AddressOverlap<nettypes::IPv6AddrMask>;

}  // namespace ip_application::config_valid
