// The address checks against the plain nested loops, on random small tables: result and message
// have to be equal. Every run takes a fresh seed and prints it.
//
//   IPAV_SEED=<number>    repeats a run
//   IPAV_ROUNDS=<number>  configurations, 20000 without it
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "config.h"
#include "static_route_config.h"
#include "support/plain_overlap.h"
#include "validate_config.h"

namespace tests {
namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::Interface;
using ip_application::config_valid::InterfaceConfig;
using ip_application::config_valid::InterfaceType;
using ip_application::config_valid::StaticRouteIPv4;
using ip_application::config_valid::StaticRouteIPv6;
using ip_application::config_valid::ValidateConfig;

constexpr std::array kVrfNames = {"global", "mgmt", "", "Global", "MGMT", "red", "red1"};

uint64_t NumberFromEnvironment(const char* name, uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::stoull(text);
}

// Draws one configuration after the other. What they have in common is drawn once for each: how
// many VRFs, how far apart the addresses, how long the prefixes.
class Generator {
 public:
  explicit Generator(uint64_t seed) : random_(seed) {}

  void Fill(Config& cfg) {
    vrf_count_ = 1 + Below(kVrfNames.size());
    vrf_offset_ = Below(kVrfNames.size());
    dense_bits_ = OneIn(3) ? 128 : 3 + Below(12);
    shortest_host_ = OneIn(4) ? 2 : 0;
    longest_host_ = OneIn(3) ? 128 : shortest_host_ + Below(5);
    out_of_range_ = OneIn(40);
    const bool long_lists = OneIn(8);
    for (InterfaceConfig* table : cfg.intf_configs_) {
      table->interfaces_.clear();
      const uint64_t size = OneIn(6) ? 0 : Below(long_lists ? 4 : 7);
      for (uint64_t i = 0; i < size; ++i) {
        table->interfaces_.push_back(MakeInterface(table->type_, i, long_lists));
      }
    }
    FillRoutes(cfg);
  }

 private:
  uint64_t Below(uint64_t limit) { return random_() % limit; }
  bool OneIn(uint64_t times) { return Below(times) == 0; }

  std::string VrfName() { return kVrfNames[(vrf_offset_ + Below(vrf_count_)) % kVrfNames.size()]; }

  // `width` bits: random ones at the end, and fixed ones before.
  uint64_t Bits(uint64_t width, uint64_t random_bits, uint64_t fixed) {
    if (random_bits >= width) return random_() >> (64 - width);
    const uint64_t mask = (uint64_t{1} << random_bits) - 1;
    return (fixed & ~mask) | (random_() & mask);
  }

  uint8_t PrefixLen(uint64_t full) {
    if (out_of_range_ && OneIn(6)) return static_cast<uint8_t>(full + 1 + Below(255 - full));
    const uint64_t longest = std::min(longest_host_, full);
    return static_cast<uint8_t>(full - shortest_host_ - Below(longest - shortest_host_ + 1));
  }

  nettypes::IPv4AddrMask Ipv4Mask() {
    const auto addr = static_cast<uint32_t>(Bits(32, dense_bits_, 0x0a000000));
    return nettypes::IPv4AddrMask(addr, PrefixLen(32));
  }

  // Dense addresses differ in their last bits, or in those before the last 64.
  nettypes::IPv6AddrMask Ipv6Mask() {
    const bool high_differs = dense_bits_ % 2 == 0;
    const uint64_t high = Bits(64, high_differs ? dense_bits_ : 0, 0x20010db800000000);
    const uint64_t low = high_differs && dense_bits_ < 64 ? Below(4) : Bits(64, dense_bits_, 0);
    std::array<uint8_t, 16> bytes{};
    for (size_t i = 0; i < 8; ++i) {
      bytes[i] = static_cast<uint8_t>(high >> (56 - 8 * i));
      bytes[8 + i] = static_cast<uint8_t>(low >> (56 - 8 * i));
    }
    uint8_t prefix_len = PrefixLen(128);
    if (high_differs && prefix_len >= 64 && prefix_len <= 128 && OneIn(2)) {
      prefix_len = static_cast<uint8_t>(prefix_len - 64);
    }
    return nettypes::IPv6AddrMask(nettypes::IPv6Addr(bytes), prefix_len);
  }

  // Now and then an address of the list once more, with a prefix length of its own.
  template <typename AddrMask>
  void Add(std::list<AddrMask>& addresses, const AddrMask& mask, uint64_t times) {
    addresses.push_back(mask);
    if (addresses.size() < 2 || !OneIn(times)) return;
    addresses.back().set_addr(
        std::next(addresses.begin(), static_cast<std::ptrdiff_t>(Below(addresses.size())))->addr());
  }

  Interface MakeInterface(InterfaceType type, uint64_t position, bool long_lists) {
    constexpr std::array kKinds = {"mgmt ", "l3 ", "loopback "};
    Interface intf;
    intf.name = kKinds[static_cast<size_t>(type)] + std::to_string(position);
    intf.vrf_name = VrfName();
    const uint64_t count = long_lists ? 15 + Below(20) : Below(5);
    for (uint64_t i = 0; i < count; ++i) {
      Add(intf.ipv4_addr_list, Ipv4Mask(), 8 * count);
      Add(intf.ipv6_addr_list, Ipv6Mask(), 8 * count);
    }
    return intf;
  }

  void FillRoutes(Config& cfg) {
    auto& routes = *cfg.static_route_config_;
    routes.ipv4_next_hops_.clear();
    routes.ipv6_next_hops_.clear();
    if (!OneIn(3)) return;
    const uint64_t count = 1 + Below(3);
    for (uint64_t i = 0; i < count; ++i) {
      const std::string vrf = VrfName();
      const auto network = static_cast<uint8_t>(i);
      nettypes::IPv4Addr ipv4 = Ipv4Mask().addr();
      nettypes::IPv6Addr ipv6 = Ipv6Mask().addr();
      const std::vector<Interface>& near = cfg.intf_configs_[Below(3)]->interfaces_;
      if (!near.empty() && OneIn(2)) {
        const Interface& intf = near[Below(near.size())];
        if (!intf.ipv4_addr_list.empty()) ipv4 = intf.ipv4_addr_list.back().addr();
        if (!intf.ipv6_addr_list.empty()) ipv6 = intf.ipv6_addr_list.back().addr();
      }
      routes.ipv4_next_hops_.emplace(
          ip_application::config_valid::RouteKey<nettypes::IPv4Addr>{vrf, ipv4},
          std::make_shared<StaticRouteIPv4>("", vrf, nettypes::IPv4AddrMask(network, 24), ipv4));
      routes.ipv6_next_hops_.emplace(
          ip_application::config_valid::RouteKey<nettypes::IPv6Addr>{vrf, ipv6},
          std::make_shared<StaticRouteIPv6>(
              "", vrf, nettypes::IPv6AddrMask(nettypes::IPv6Addr(), network), ipv6));
    }
  }

  std::mt19937_64 random_;
  uint64_t vrf_count_ = 1;
  uint64_t vrf_offset_ = 0;
  uint64_t dense_bits_ = 0;     // random bits of an address, from its end
  uint64_t shortest_host_ = 0;  // host bits of a prefix
  uint64_t longest_host_ = 0;
  bool out_of_range_ = false;
};

std::string Text(const Config& cfg) {
  std::ostringstream out;
  for (const InterfaceConfig* table : cfg.intf_configs_) {
    for (const Interface& intf : table->interfaces_) {
      out << intf.name << " vrf \"" << intf.vrf_name << "\"";
      for (const auto& mask : intf.ipv4_addr_list) out << " " << mask;
      for (const auto& mask : intf.ipv6_addr_list) out << " " << mask;
      out << "\n";
    }
  }
  for (const auto& [key, route] : cfg.static_route_config_->ipv4_next_hops_) {
    out << "next hop " << key.addr << " in \"" << key.vrf_name << "\"\n";
  }
  for (const auto& [key, route] : cfg.static_route_config_->ipv6_next_hops_) {
    out << "next hop " << key.addr << " in \"" << key.vrf_name << "\"\n";
  }
  return out.str();
}

// What kind of verdict a message is, so that a run can show that it met them all.
std::string KindOf(const std::string& verdict) {
  constexpr std::array kPieces = {"network address", "broadcast address", "duplicated", "overlaps",
                                  "conflict"};
  for (const std::string piece : kPieces) {
    if (verdict.find(piece) == std::string::npos) continue;
    if (piece != "overlaps") return piece;
    const std::string kind = verdict.substr(0, verdict.find(' ') + 1);
    const bool within = verdict.find("overlaps with " + kind) != std::string::npos;
    return within ? "overlap within a table" : "overlap across tables";
  }
  return verdict;
}

std::string VerdictIpv4(const Config& cfg, InterfaceType type) {
  ValidateConfig checker;
  return checker.ValidateInterfaceIPv4(cfg, type) == 0 ? "accepted" : checker.error_;
}

std::string VerdictIpv6(const Config& cfg, InterfaceType type) {
  ValidateConfig checker;
  return checker.ValidateInterfaceIPv6(cfg, type) == 0 ? "accepted" : checker.error_;
}

TEST(AddressChecks, AreThoseOfThePlainLoops) {
  const uint64_t seed = NumberFromEnvironment("IPAV_SEED", std::random_device()());
  const uint64_t rounds = NumberFromEnvironment("IPAV_ROUNDS", 20000);
  printf("IPAV_SEED=%llu IPAV_ROUNDS=%llu\n", static_cast<unsigned long long>(seed),
         static_cast<unsigned long long>(rounds));
  Generator generator(seed);
  Config cfg;
  std::map<std::string, uint64_t> ipv4_kinds;
  std::map<std::string, uint64_t> ipv6_kinds;
  for (uint64_t round = 0; round < rounds; ++round) {
    generator.Fill(cfg);
    for (const InterfaceType type : {InterfaceType::Mgmt, InterfaceType::L3, InterfaceType::Lo}) {
      const std::string ipv4 = PlainVerdictIpv4(cfg, type);
      const std::string ipv6 = PlainVerdictIpv6(cfg, type);
      ASSERT_EQ(VerdictIpv4(cfg, type), ipv4) << "round " << round << "\n" << Text(cfg);
      ASSERT_EQ(VerdictIpv6(cfg, type), ipv6) << "round " << round << "\n" << Text(cfg);
      ++ipv4_kinds[KindOf(ipv4)];
      ++ipv6_kinds[KindOf(ipv6)];
    }
  }
  for (const auto& [kind, count] : ipv4_kinds) {
    printf("IPv4 %-22s %8llu\n", kind.c_str(), static_cast<unsigned long long>(count));
  }
  for (const auto& [kind, count] : ipv6_kinds) {
    printf("IPv6 %-22s %8llu\n", kind.c_str(), static_cast<unsigned long long>(count));
  }
  if (rounds < 1000) return;
  EXPECT_EQ(ipv4_kinds.size(), 7u) << "not every kind of verdict was met";
  EXPECT_EQ(ipv6_kinds.size(), 5u) << "not every kind of verdict was met";
}

}  // namespace
}  // namespace tests
