// Cost of the static routes at 1000 and 100 000 routes: building the tables from the store, and the
// checks on tables that are there, measured separately. Prints how either grows with the number of
// routes, as the exponent between the two sizes, and what the walk over two ordered maps at once
// saves over looking every black hole up.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "confd/transaction.h"
#include "config.h"
#include "growth.h"
#include "static_route_config.h"
#include "store/snapshot.h"
#include "support/data_model.h"
#include "validate_config.h"

namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::ConfigAddrFamily;
using ip_application::config_valid::Interface;
using ip_application::config_valid::RouteMap;
using ip_application::config_valid::StaticRoute;
using ip_application::config_valid::StaticRouteConfig;
using ip_application::config_valid::StaticRouteIPv4;
using ip_application::config_valid::ValidateConfig;
using nettypes::IPv4Addr;
using nettypes::IPv4AddrMask;

constexpr double kMaxExponent = 1.1;
constexpr int kSmall = 1000;
constexpr int kLarge = 100000;

// Median time of `run` in seconds; `prepare` is not measured.
double MedianSeconds(int repetitions, const std::function<void()>& prepare,
                     const std::function<void()>& run) {
  std::vector<double> seconds;
  for (int i = 0; i < repetitions; ++i) {
    prepare();
    const double begin = bench::CpuSeconds();
    run();
    seconds.push_back(bench::CpuSeconds() - begin);
  }
  std::nth_element(seconds.begin(), seconds.begin() + repetitions / 2, seconds.end());
  return seconds[static_cast<size_t>(repetitions / 2)];
}

std::string HexList(uint32_t address) {
  char text[sizeof("00:00:00:00")];
  snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x", address >> 24, address >> 16 & 255,
           address >> 8 & 255, address & 255);
  return text;
}

// Every second route is a black hole; the others have next hops of their own. No route has an
// output interface in the store: its list stands at the top, where libyang takes square time to
// build one.
uint32_t Network(int i) { return 0x64400000u + 4u * static_cast<uint32_t>(i); }
uint32_t NextHop(int i) { return i % 2 == 0 ? 0 : 0x0a000002u + 4u * static_cast<uint32_t>(i); }

std::shared_ptr<const store::Snapshot> MakeSnapshot(int size) {
  std::string entries;
  for (int i = 0; i < size; ++i) {
    const std::string network = HexList(Network(i));
    const std::string next_hop = HexList(NextHop(i));
    entries += (i > 0 ? "," : "") + std::string(R"({"rtmStaticRtFteIndex":0,)") +
               R"("rtmStaticRtNetworkAddrType":"ipv4","rtmStaticRtNetworkAddr":")" + network +
               R"(","rtmStaticRtNetworkPrefixLen":30,"rtmStaticRtNextHopAddrType":"ipv4",)" +
               R"("rtmStaticRtNextHopAddr":")" + next_hop + R"("})";
  }
  return store::Snapshot::FromText(
      tests::DataModel(),
      R"({"KX-RTM-MIB:KX-RTM-MIB":{"rtmStaticRtTable":{"rtmStaticRtEntry":[)" + entries + "]}}}");
}

// The same tables without a store.
void FillTables(Config& config, int size) {
  StaticRouteConfig& routes = *config.static_route_config_;
  routes.ipv4_read_ = true;
  for (int i = 0; i < size; ++i) {
    const IPv4AddrMask network(Network(i), 30);
    const IPv4Addr next_hop(NextHop(i));
    const auto route = std::make_shared<StaticRouteIPv4>("l3 7", "global", network, next_hop);
    if (next_hop.is_unspecified()) {
      routes.ipv4_blackhole_routes_.insert({{"global", network}, route});
    } else {
      routes.ipv4_routes_.insert({{"global", network}, route});
      routes.ipv4_next_hops_.insert({{"global", next_hop}, route});
      routes.output_interfaces_.insert(route->output_intf_name);
    }
  }
  // As many interfaces as a device can have.
  for (int i = 0; i < 256; ++i) {
    Interface intf;
    intf.name = "l3 if-" + std::to_string(i);
    intf.vrf_name = "global";
    intf.ipv4_addr_list.emplace_back(0x0a000001u + 4u * static_cast<uint32_t>(i), 30);
    config.l3_config_.interfaces_.push_back(intf);
  }
}

// The walk with a look-up per black hole: what CheckBlackHoleIpv4 has to give.
bool LookUpBlackHoles(const StaticRouteConfig& table, std::shared_ptr<StaticRoute>& route) {
  for (const auto& [key, blackhole] : table.ipv4_blackhole_routes_) {
    const auto found = table.ipv4_routes_.find(key);
    if (found == table.ipv4_routes_.end()) continue;
    route = found->second;
    return true;
  }
  return false;
}

double LoadSeconds(int size, int repetitions) {
  const auto snapshot = MakeSnapshot(size);
  confd::Database store(store::Snapshot::Empty(tests::DataModel()));
  confd_trans_ctx context{};
  context.thandle = store.StartTransaction(snapshot);
  const int sock = store.OpenSocket();
  store.Attach(sock, context.thandle);
  std::unique_ptr<Config> config;
  const double seconds = MedianSeconds(
      repetitions,
      [&] {
        config = std::make_unique<Config>();
        config->set_sock(sock);
        config->set_confd_trans(&context);
      },
      [&] { config->ReadStaticRouteConfig(ConfigAddrFamily::IPv4); });
  const StaticRouteConfig& routes = *config->static_route_config_;
  const size_t stored = routes.ipv4_routes_.size() + routes.ipv4_blackhole_routes_.size();
  if (stored != static_cast<size_t>(size) || routes.output_interfaces_.size() != 1) return NAN;
  store.FinishTransaction(context.thandle);
  return seconds;
}

struct CheckTimes {
  double all;      // next hop, limit, black hole, output interface
  double merged;   // black holes, as the plug-in walks
  double look_up;  // black holes, with a look-up for each
};

CheckTimes CheckSeconds(int size, int repetitions) {
  Config config;
  FillTables(config, size);
  const StaticRouteConfig& routes = *config.static_route_config_;
  std::shared_ptr<StaticRoute> route;
  int found = 0;
  const auto nothing = [] {};
  CheckTimes times{};
  times.all = MedianSeconds(repetitions, nothing, [&] {
    ValidateConfig checker;
    found += checker.ValidateStaticRoute(config);
    found += checker.ValidateStaticRouteOutputIntf(config);
  });
  times.merged =
      MedianSeconds(repetitions, nothing, [&] { found += routes.CheckBlackHoleIpv4(route); });
  times.look_up =
      MedianSeconds(repetitions, nothing, [&] { found += LookUpBlackHoles(routes, route); });
  if (found != 0) times.all = NAN;  // there is nothing to find, so every walk goes to its end
  return times;
}

}  // namespace

// Exit status 1 when the growth is more than linear or a table is wrong.
int main() {
  bench::KeepFreedMemory();
  const double load_small = LoadSeconds(kSmall, 51);
  const double load_large = LoadSeconds(kLarge, 5);
  const CheckTimes small = CheckSeconds(kSmall, 501);
  const CheckTimes large = CheckSeconds(kLarge, 31);

  puts("routes   load         checks       black holes: merged, looked up");
  const auto print = [](int size, double load, const CheckTimes& check) {
    printf("%6d  %8.3f ms  %8.4f ms  %8.4f ms  %8.4f ms  %.1f times as long\n", size, load * 1e3,
           check.all * 1e3, check.merged * 1e3, check.look_up * 1e3, check.look_up / check.merged);
  };
  print(kSmall, load_small, small);
  print(kLarge, load_large, large);
  const double load_exponent = bench::Exponent({{kSmall, load_small}, {kLarge, load_large}});
  const double check_exponent = bench::Exponent({{kSmall, small.all}, {kLarge, large.all}});
  printf(
      "load grows with the number of routes to the power of %.3f, checks of %.3f (at most %.1f)\n",
      load_exponent, check_exponent, kMaxExponent);
  return load_exponent <= kMaxExponent && check_exponent <= kMaxExponent ? 0 : 1;
}
