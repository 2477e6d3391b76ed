// Every single call of a read of the static routes made to fail: what then is in the tables,
// against a reader of a few lines that knows the routes and asks nobody.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "config.h"
#include "static_route_config.h"
#include "support/device.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using tests::ConfiguredRoute;

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;

// In key order. With and without a VRF name and an output interface; black holes; prefixes and next
// hops that meet when a name of a VRF cannot be read.
const std::vector<ConfiguredRoute> kRoutes = {
    {0, "10.0.0.0/8", "192.0.2.2", "l3-7"},
    {0, "2001:db8::/32", "fe80::1", "l3-7"},
    {1, "10.0.0.0/8", "", "l3-8"},
    {1, "10.0.0.0/8", "192.0.2.2", "l3-9"},
    {1, "10.0.0.0/8", "192.0.2.3"},
    {1, "2001:db8::/32", "", "l3-10"},
    {1, "2001:db8::/32", "fe80::1", "l3-11"},
    {2, "10.0.0.0/8", "192.0.2.2", "l3"},
    {2, "172.16.0.0/12", ""},
    {2, "fd00::/8", "fe80::2", "loopback-0"},
};

const std::map<uint32_t, std::optional<std::string>> kVrfs = {{1, "red"}, {2, "blue"}};

// Tables as texts: by VRF and address, the route.
struct Contents {
  uint32_t ipv4_count = 0;
  uint32_t ipv6_count = 0;
  std::map<std::string, std::string> routes = {};
  std::map<std::string, std::string> blackhole_routes = {};
  std::map<std::string, std::string> next_hops = {};
  std::set<std::string> output_interfaces = {};

  friend bool operator==(const Contents&, const Contents&) = default;
};

std::ostream& operator<<(std::ostream& out, const Contents& contents) {
  return out << contents.ipv4_count << "+" << contents.ipv6_count << " routes "
             << testing::PrintToString(contents.routes) << " black holes "
             << testing::PrintToString(contents.blackhole_routes) << " next hops "
             << testing::PrintToString(contents.next_hops) << " outputs "
             << testing::PrintToString(contents.output_interfaces);
}

template <typename Addr>
void Add(const RouteMap<Addr>& routes, std::map<std::string, std::string>& texts) {
  for (const auto& [key, route] : routes) {
    texts[key.vrf_name + " " + key.addr.to_string()] =
        route->vrf_name + " " + route->network().to_string() + " via " +
        route->next_hop().to_string() + " out " + route->output_intf_name;
  }
}

Contents ContentsOf(const StaticRouteConfig& table) {
  Contents contents{table.ipv4_route_count_, table.ipv6_route_count_};
  Add(table.ipv4_routes_, contents.routes);
  Add(table.ipv6_routes_, contents.routes);
  Add(table.ipv4_blackhole_routes_, contents.blackhole_routes);
  Add(table.ipv6_blackhole_routes_, contents.blackhole_routes);
  Add(table.ipv4_next_hops_, contents.next_hops);
  Add(table.ipv6_next_hops_, contents.next_hops);
  contents.output_interfaces = table.output_interfaces_;
  return contents;
}

// The reader as it is described, over kRoutes. The call at position `failing` fails.
class Model {
 public:
  explicit Model(size_t failing) : failing_(failing) {}

  Contents contents;
  std::vector<std::string> calls;

  void Read(ConfigAddrFamily family) {
    contents.ipv4_count = 0;
    contents.ipv6_count = 0;
    const bool open = Call("maapi_init_cursor /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry");
    for (const ConfiguredRoute& route : kRoutes) {
      if (!Call("maapi_get_next") || !open) return End();
      const std::string vrf = VrfName(route.fte_index);
      const std::string output = OutputName(route);
      ++(route.is_ipv6() ? contents.ipv6_count : contents.ipv4_count);
      if (route.is_ipv6() == (family == kIpv6)) AddRoute(route, vrf, output);
    }
    Call("maapi_get_next");
    End();
  }

 private:
  // Whether the call succeeds.
  bool Call(const std::string& call) {
    calls.push_back(call);
    return calls.size() - 1 != failing_;
  }

  void End() { Call("maapi_destroy_cursor"); }

  // "global" for all that fails.
  std::string VrfName(uint32_t index) {
    const std::string path = "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{" +
                             std::to_string(index) + "}/vname";
    const auto name = kVrfs.find(index);
    if (!Call("maapi_exists " + path) || name == kVrfs.end()) return "global";
    const bool read = Call("maapi_get_elem " + path);
    Call("confd_free_value");
    return read ? *name->second : "global";
  }

  // Empty for all that fails; what was not read is not released.
  std::string OutputName(const ConfiguredRoute& route) {
    const std::string path = tests::OutputPath(route);
    if (!Call("maapi_exists " + path) || !route.output) return "";
    if (!Call("maapi_get_elem " + path)) return "";
    Call("confd_free_value");
    std::string name = *route.output + (route.output->size() == 2 ? " " : "");
    name[2] = ' ';
    return name;
  }

  void AddRoute(const ConfiguredRoute& route, const std::string& vrf, const std::string& output) {
    const std::string unspecified = route.is_ipv6() ? "::" : "0.0.0.0";
    const std::string text = vrf + " " + route.network + " via " +
                             (route.next_hop.empty() ? unspecified : route.next_hop) + " out " +
                             output;
    if (route.next_hop.empty()) {
      contents.blackhole_routes.insert({vrf + " " + route.network, text});
      return;
    }
    contents.routes.insert({vrf + " " + route.network, text});
    contents.next_hops.insert({vrf + " " + route.next_hop, text});
    contents.output_interfaces.insert(output);
  }

  const size_t failing_;
};

struct ReadCase {
  const char* name;
  std::vector<ConfigAddrFamily> families;
};

std::ostream& operator<<(std::ostream& out, const ReadCase& c) { return out << c.name; }

const ReadCase kReadCases[] = {
    {"Ipv4", {kIpv4}},
    {"Ipv6", {kIpv6}},
    {"Ipv4ThenIpv6", {kIpv4, kIpv6}},
    {"Ipv6ThenIpv4", {kIpv6, kIpv4}},
};

// Calls that cannot fail.
bool HasNoResult(const std::string& call) {
  return call == "maapi_destroy_cursor" || call == "confd_free_value";
}

constexpr size_t kNone = static_cast<size_t>(-1);

class StaticRouteFaults : public tests::TableTest, public testing::WithParamInterface<ReadCase> {
 protected:
  // One read in a transaction of its own; when it is closed, nothing may be left.
  void ExpectReadAsModelled(size_t failing) {
    Configure(tests::Device{.vrfs = kVrfs, .routes = kRoutes});
    TakeCalls();
    FailCall(failing);
    StaticRouteConfig table;
    Bind(table);
    Model model(failing);
    for (const ConfigAddrFamily family : GetParam().families) {
      table.ReadConfigIfNeeded(family);
      model.Read(family);
      EXPECT_TRUE(family == kIpv4 ? table.ipv4_read_ : table.ipv6_read_);
    }
    calls_made = TakeCalls();
    EXPECT_EQ(calls_made, model.calls);
    EXPECT_EQ(ContentsOf(table), model.contents);
    EXPECT_TRUE(framework::TakeFaults().empty());
  }

  std::vector<std::string> calls_made;
};

TEST_P(StaticRouteFaults, OfEveryCallGiveTheDefault) {
  ExpectReadAsModelled(kNone);
  const std::vector<std::string> all_calls = calls_made;
  ASSERT_GT(all_calls.size(), kRoutes.size());
  int faults = 0;
  for (size_t failing = 0; failing < all_calls.size(); ++failing) {
    if (HasNoResult(all_calls[failing])) continue;
    ++faults;
    SCOPED_TRACE("call " + std::to_string(failing) + ", " + all_calls[failing]);
    ExpectReadAsModelled(failing);
    if (HasFailure()) break;
  }
  RecordProperty("injected_faults", faults);
  std::cout << GetParam().name << ": " << faults << " faults injected\n";
}

INSTANTIATE_TEST_SUITE_P(Reads, StaticRouteFaults, testing::ValuesIn(kReadCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ip_application::config_valid
