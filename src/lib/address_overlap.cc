#include "address_overlap.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numeric>
#include <string_view>
#include <type_traits>
#include <unordered_map>

namespace ip_application::config_valid {
namespace {

// All VRFs of one address space have one name here.
std::string_view AddressSpaceOf(const std::string& vrf_name) {
  return vrf_name == "mgmt" ? "global" : std::string_view(vrf_name);
}

__extension__ using Uint128 = unsigned __int128;

// An address as a number of the width of the family. False when it cannot be had.

bool ReadNumber(const nettypes::IPv4Addr& addr, uint32_t& number) {
  number = addr.to_uint32();
  return true;
}

// The platform promises the text of an IPv6 address. Types that have its bytes as well, in network
// byte order, give them much quicker.
template <typename Addr>
bool ReadNumber(const Addr& addr, Uint128& number) {
  std::array<uint8_t, 16> bytes;
  if constexpr (requires {
                  { addr.bytes() } -> std::convertible_to<std::array<uint8_t, 16>>;
                }) {
    bytes = addr.bytes();
  } else if (inet_pton(AF_INET6, addr.to_string().c_str(), bytes.data()) != 1) {
    return false;
  }
  number = 0;
  for (const uint8_t byte : bytes) number = number << 8 | byte;
  return true;
}

template <typename AddrMask>
using NumberFor =
    std::conditional_t<std::is_same_v<AddrMask, nettypes::IPv4AddrMask>, uint32_t, Uint128>;

// The lowest `host_bits` bits, none to all.
template <typename Number>
Number HostMask(uint8_t host_bits) {
  return host_bits == 0 ? 0 : ~Number{0} >> (8 * sizeof(Number) - host_bits);
}

const auto& AddressesOf(const Interface& intf, const nettypes::IPv4AddrMask* /*family*/) {
  return intf.ipv4_addr_list;
}

const auto& AddressesOf(const Interface& intf, const nettypes::IPv6AddrMask* /*family*/) {
  return intf.ipv6_addr_list;
}

// One prefix of a table, and later one component, which is its largest prefix. Small, since the
// time goes into moving records.
template <typename Number>
struct Record {
  Number first;    // address that it covers
  uint32_t owner;  // position in the table
  uint8_t host_bits;

  Number last() const { return first | HostMask<Number>(host_bits); }
};

// False when the prefix cannot be placed: its length is out of range, or its address no number.
template <typename AddrMask, typename Number>
bool Place(const AddrMask& mask, uint32_t owner, Record<Number>& record) {
  constexpr uint8_t kMaxPrefixLen = 8 * sizeof(Number);
  Number addr;
  if (mask.prefix_len() > kMaxPrefixLen || !ReadNumber(mask.addr(), addr)) return false;
  const auto host_bits = static_cast<uint8_t>(kMaxPrefixLen - mask.prefix_len());
  record = {addr & ~HostMask<Number>(host_bits), owner, host_bits};
  return true;
}

constexpr size_t kFewRecords = 24;  // up to here comparing is quicker than dealing out
constexpr int kMaxPileBits = 11;

template <typename Number>
void SortByFirst(Record<Number>* begin, Record<Number>* end, Record<Number>* spare);

// Deals the records out to `piles` by the leading bits in which they differ, and sorts each pile.
// `begin` is spare room then.
template <typename Number>
void DealAndSort(Record<Number>* begin, Record<Number>* end, Record<Number>* piles) {
  const auto count = static_cast<size_t>(end - begin);
  Number differing = 0;
  for (const auto* record = begin; record != end; ++record) {
    differing |= record->first ^ begin->first;
  }
  const int bits = std::min(static_cast<int>(std::bit_width(count)), kMaxPileBits);
  int shift = 0;
  while (differing >> shift >> bits != 0) ++shift;
  const size_t pile_count = size_t{1} << bits;
  const auto pile_of = [shift, pile_count](const Record<Number>& record) {
    return static_cast<size_t>(record.first >> shift) & (pile_count - 1);
  };

  std::array<size_t, (size_t{1} << kMaxPileBits) + 1> starts;  // where the next one of a pile goes
  std::fill_n(starts.begin(), pile_count + 1, 0);
  for (const auto* record = begin; record != end; ++record) ++starts[pile_of(*record) + 1];
  std::partial_sum(starts.begin(), starts.begin() + static_cast<ptrdiff_t>(pile_count),
                   starts.begin());
  for (const auto* record = begin; record != end; ++record) {
    piles[starts[pile_of(*record)]++] = *record;
  }
  if (differing == 0) return;
  size_t start = 0;
  for (size_t pile = 0; pile < pile_count; ++pile) {  // starts[pile] has become the end of the pile
    if (starts[pile] - start > 1) SortByFirst(piles + start, piles + starts[pile], begin + start);
    start = starts[pile];
  }
}

// Sorts by first address, in time that grows with the number of records only. `spare` has room for
// all of them.
template <typename Number>
void SortByFirst(Record<Number>* begin, Record<Number>* end, Record<Number>* spare) {
  if (static_cast<size_t>(end - begin) <= kFewRecords) {
    std::sort(begin, end, [](const auto& a, const auto& b) { return a.first < b.first; });
    return;
  }
  DealAndSort(begin, end, spare);
  std::copy(spare, spare + (end - begin), begin);
}

}  // namespace

bool ShareAddressSpace(const std::string& vrf_a, const std::string& vrf_b) {
  return AddressSpaceOf(vrf_a) == AddressSpaceOf(vrf_b);
}

template <typename AddrMask>
struct AddressOverlap<AddrMask>::Components {
  using Records = std::vector<Record<NumberFor<AddrMask>>>;

  // Cuts the records of one address space into components, which take their place, and finds the
  // smallest owner in a component with several.
  void Cut(Records& records) {
    Records sorted(records.size());
    DealAndSort(records.data(), records.data() + records.size(), sorted.data());
    records.swap(sorted);
    auto component = records.begin();
    for (auto record = std::next(component); record != records.end(); ++record) {
      if (record->first > component->last()) {
        *++component = *record;
        continue;
      }
      // Of prefixes with one first address the largest need not come first.
      component->host_bits = std::max(component->host_bits, record->host_bits);
      if (component->owner != record->owner) {
        component->owner = std::min(component->owner, record->owner);
        first_overlapping = std::min<size_t>(first_overlapping, component->owner);
      }
    }
    records.erase(std::next(component), records.end());
  }

  std::unordered_map<std::string, Records> spaces;  // by AddressSpaceOf; none is empty
  size_t first_overlapping = std::numeric_limits<size_t>::max();
};

template <typename AddrMask>
AddressOverlap<AddrMask>::AddressOverlap(const std::vector<Interface>& interfaces) {
  auto components = std::make_unique<Components>();
  typename Components::Records* space = nullptr;  // of the interface before
  const std::string* vrf_name = nullptr;          // likewise
  for (size_t owner = 0; owner < interfaces.size(); ++owner) {
    const Interface& intf = interfaces[owner];
    const auto& addresses = AddressesOf(intf, static_cast<const AddrMask*>(nullptr));
    if (addresses.empty()) continue;
    if (space == nullptr || *vrf_name != intf.vrf_name) {
      vrf_name = &intf.vrf_name;
      space = &components->spaces[std::string(AddressSpaceOf(*vrf_name))];
      // Mostly there is one space, so the first one gets room for all.
      if (components->spaces.size() == 1) space->reserve(interfaces.size());
    }
    for (const AddrMask& mask : addresses) {
      Record<NumberFor<AddrMask>> record;
      if (!Place(mask, static_cast<uint32_t>(owner), record)) return;
      space->push_back(record);
    }
  }
  for (auto& [name, records] : components->spaces) components->Cut(records);
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
  for (const AddrMask& mask : AddressesOf(other, static_cast<const AddrMask*>(nullptr))) {
    const auto& components = space->second;
    Record<NumberFor<AddrMask>> wanted;
    if (!Place(mask, 0, wanted)) return true;
    // The first component that ends at or behind the start of the prefix.
    const auto component =
        std::lower_bound(components.begin(), components.end(), wanted,
                         [](const auto& c, const auto& w) { return c.last() < w.first; });
    if (component != components.end() && component->first <= wanted.last()) return true;
  }
  return false;
}

template class AddressOverlap<nettypes::IPv4AddrMask>;
template class AddressOverlap<nettypes::IPv6AddrMask>;

}  // namespace ip_application::config_valid
