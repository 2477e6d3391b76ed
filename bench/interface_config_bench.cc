// Cost of building an interface table, without the calls to ConfD: records of both address families
// go through MergeConfigAndInsert, as the two reads of a table do it. Prints how the time
// grows with the number of interfaces, as the exponent of the line through the medians in
// logarithmic scale, and how it compares with a search from the front of the table.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "config.h"
#include "growth.h"

namespace {

using ip_application::config_valid::Interface;
using ip_application::config_valid::L3Config;

constexpr double kMaxExponent = 1.1;
constexpr int kFrontSearchSize = 10000;  // interfaces

// The keys of a list of interfaces, in an order of their own for every seed.
std::vector<std::string> Keys(int size, uint32_t seed) {
  std::vector<std::string> keys;
  for (int i = 0; i < size; ++i) keys.push_back("uplink-" + std::to_string(i));
  std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
  return keys;
}

// What a reader makes of one entry.
Interface Record(const std::string& key) {
  Interface intf;
  intf.name = "l3 " + key;
  intf.vrf_name = "global";
  intf.lim_id = limid_l3_vlan_from_components(100);
  return intf;
}

// A table that finds a name by searching from the front: what MergeConfigAndInsert has to give.
struct FrontSearchTable {
  void MergeConfigAndInsert(const Interface& intf) {
    const auto known =
        std::find_if(interfaces_.begin(), interfaces_.end(),
                     [&intf](const Interface& other) { return other.name == intf.name; });
    if (known == interfaces_.end()) {
      interfaces_.push_back(intf);
    } else if (known->ipv4_addr_list.empty() && !intf.ipv4_addr_list.empty()) {
      known->ipv4_addr_list = intf.ipv4_addr_list;
    } else if (known->ipv6_addr_list.empty() && !intf.ipv6_addr_list.empty()) {
      known->ipv6_addr_list = intf.ipv6_addr_list;
    }
  }

  std::vector<Interface> interfaces_;
};

// The IPv4 read and then the IPv6 read of a table, one address of each family for an interface.
template <typename Table>
void Load(const std::vector<std::string>& keys, Table& table) {
  const nettypes::IPv4AddrMask ipv4(0x0a000001u, 24);
  const nettypes::IPv6AddrMask ipv6(nettypes::IPv6Addr({0x20, 0x01, 0x0d, 0xb8}), 64);
  for (const std::string& key : keys) {
    Interface intf = Record(key);
    intf.ipv4_addr_list.push_back(ipv4);
    table.MergeConfigAndInsert(intf);
  }
  for (const std::string& key : keys) {
    Interface intf = Record(key);
    intf.ipv6_addr_list.push_back(ipv6);
    table.MergeConfigAndInsert(intf);
  }
}

bool GivesTheSameTable(const std::vector<std::string>& keys) {
  L3Config table;
  FrontSearchTable expected;
  Load(keys, table);
  Load(keys, expected);
  return std::equal(table.interfaces_.begin(), table.interfaces_.end(),
                    expected.interfaces_.begin(), expected.interfaces_.end(),
                    [](const Interface& x, const Interface& y) {
                      return x.name == y.name && x.ipv4_addr_list == y.ipv4_addr_list &&
                             x.ipv6_addr_list == y.ipv6_addr_list && x.vrf_name == y.vrf_name &&
                             x.lim_id == y.lim_id;
                    });
}

// Median of the time of one load in seconds; every repetition gets its own order of names.
template <typename Table>
double MedianSeconds(int size, int repetitions) {
  std::vector<double> seconds;
  for (int i = 0; i < repetitions; ++i) {
    const std::vector<std::string> keys = Keys(size, static_cast<uint32_t>(i));
    Table table;
    const double begin = bench::CpuSeconds();
    Load(keys, table);
    seconds.push_back(bench::CpuSeconds() - begin);
  }
  std::nth_element(seconds.begin(), seconds.begin() + repetitions / 2, seconds.end());
  return seconds[static_cast<size_t>(repetitions / 2)];
}

}  // namespace

// Exit status 1 when the growth is more than linear or a table is wrong.
int main() {
  bench::KeepFreedMemory();

  if (!GivesTheSameTable(Keys(2000, 7))) {
    puts("the table is not the one that a search from the front gives");
    return 1;
  }

  std::vector<bench::Measured> points;
  puts("interfaces  load, both families  per interface");
  for (const int size : {1000, 2000, 5000, 10000, 20000, 50000, 100000}) {
    const int repetitions = std::max(9, 200000 / size) | 1;
    const double seconds = MedianSeconds<L3Config>(size, repetitions);
    points.push_back({size, seconds});
    printf("%10d  %15.3f ms  %10.0f ns\n", size, seconds * 1e3, seconds / size * 1e9);
  }
  const double exponent = bench::Exponent(points);
  printf("time grows with the number of interfaces to the power of %.3f (at most %.1f)\n", exponent,
         kMaxExponent);

  const double fast = MedianSeconds<L3Config>(kFrontSearchSize, 21);
  const double slow = MedianSeconds<FrontSearchTable>(kFrontSearchSize, 3);
  printf("search from the front, %d interfaces: %.1f ms, %.0f times as long\n", kFrontSearchSize,
         slow * 1e3, slow / fast);
  return exponent <= kMaxExponent ? 0 : 1;
}
