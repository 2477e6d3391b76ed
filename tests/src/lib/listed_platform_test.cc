// The plug-in compiled against address and identifier types that have the listed operations and no
// others. That it compiles shows that it needs no others; the messages show which of the two text
// forms goes where.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <concepts>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "config.h"
#include "static_route_config.h"
#include "validate_config.h"

namespace ip_application::config_valid {
namespace {

// What the stand-ins have beyond the list.
template <typename Addr>
concept HasBytes = requires(Addr addr) {
  addr.bytes();
};
template <typename AddrMask>
concept HasWidth = requires {
  AddrMask::kMaxPrefixLen;
};
static_assert(!HasBytes<nettypes::IPv6Addr>);
static_assert(!HasWidth<nettypes::IPv4AddrMask>);
static_assert(!std::equality_comparable<limid_t>);

nettypes::IPv4Addr Ipv4(const std::string& text) {
  in_addr addr;
  if (inet_pton(AF_INET, text.c_str(), &addr) != 1) throw std::invalid_argument(text);
  return nettypes::IPv4Addr(ntohl(addr.s_addr));
}

nettypes::IPv6Addr Ipv6(const std::string& text) {
  std::array<uint8_t, 16> bytes;
  if (inet_pton(AF_INET6, text.c_str(), bytes.data()) != 1) throw std::invalid_argument(text);
  return nettypes::IPv6Addr(bytes);
}

// "192.0.2.1/24"
template <typename AddrMask, typename Addr>
AddrMask MaskOf(const std::string& text, Addr (*addr)(const std::string&)) {
  const size_t slash = text.find('/');
  AddrMask mask;
  mask.set_addr(addr(text.substr(0, slash)));
  mask.set_prefix_len(static_cast<uint8_t>(std::stoul(text.substr(slash + 1))));
  return mask;
}

nettypes::IPv4AddrMask Mask4(const std::string& text) {
  return MaskOf<nettypes::IPv4AddrMask>(text, Ipv4);
}
nettypes::IPv6AddrMask Mask6(const std::string& text) {
  return MaskOf<nettypes::IPv6AddrMask>(text, Ipv6);
}

// The tables of a Config that a case fills.
class Tables {
 public:
  Tables() {
    config_.static_route_config_->ipv4_read_ = true;
    config_.static_route_config_->ipv6_read_ = true;
  }

  Tables& L3(const std::string& name, const std::vector<std::string>& addresses) {
    Interface intf;
    intf.name = name;
    intf.vrf_name = "global";
    for (const std::string& text : addresses) {
      if (text.find(':') == std::string::npos) {
        intf.ipv4_addr_list.push_back(Mask4(text));
      } else {
        intf.ipv6_addr_list.push_back(Mask6(text));
      }
    }
    config_.l3_config_.MergeConfigAndInsert(intf);
    return *this;
  }

  // Without a next hop: a black hole.
  Tables& Route4(const std::string& prefix, const std::string& next_hop = "0.0.0.0") {
    StaticRouteConfig& table = *config_.static_route_config_;
    const nettypes::IPv4AddrMask network = Mask4(prefix);
    const auto route = std::make_shared<StaticRouteIPv4>("l3 1", "global", network, Ipv4(next_hop));
    if (Ipv4(next_hop).is_unspecified()) {
      table.ipv4_blackhole_routes_.insert({{"global", network}, route});
    } else {
      table.ipv4_routes_.insert({{"global", network}, route});
      table.ipv4_next_hops_.insert({{"global", Ipv4(next_hop)}, route});
      table.output_interfaces_.insert(route->output_intf_name);
    }
    return *this;
  }

  Tables& Route6(const std::string& prefix, const std::string& next_hop = "::") {
    StaticRouteConfig& table = *config_.static_route_config_;
    const nettypes::IPv6AddrMask network = Mask6(prefix);
    const auto route = std::make_shared<StaticRouteIPv6>("l3 1", "global", network, Ipv6(next_hop));
    if (Ipv6(next_hop).is_unspecified()) {
      table.ipv6_blackhole_routes_.insert({{"global", network}, route});
    } else {
      table.ipv6_routes_.insert({{"global", network}, route});
      table.ipv6_next_hops_.insert({{"global", Ipv6(next_hop)}, route});
    }
    return *this;
  }

  Tables& Ospf(const std::string& intf_name, const std::string& address) {
    OspfIf record;
    record.process_id = 10;
    record.vrf_name = "global";
    record.area = Ipv4("0.0.0.1");
    record.intf_name = intf_name;
    record.addresses.push_back(Mask4(address));
    config_.ospfv2_config_.MergeConfigAndInsert(record);
    return *this;
  }

  Tables& Vlan(int vlan) {
    config_.l3_config_.interfaces_.back().lim_id = limid_l3_vlan_from_components(vlan);
    return *this;
  }

  const Config& config() const { return config_; }

 private:
  Config config_;
};

using Check = int (*)(ValidateConfig&, const Config&);

int CheckIpv4(ValidateConfig& checker, const Config& config) {
  return checker.ValidateInterfaceIPv4(config, InterfaceType::L3);
}
int CheckIpv6(ValidateConfig& checker, const Config& config) {
  return checker.ValidateInterfaceIPv6(config, InterfaceType::L3);
}
int CheckOspf(ValidateConfig& checker, const Config& config) {
  return checker.ValidateOspfv2(config);
}
int CheckBlackHoles(ValidateConfig& checker, const Config& config) {
  return checker.ValidateRouteBlackHole(config);
}
int CheckOutputInterfaces(ValidateConfig& checker, const Config& config) {
  return checker.ValidateStaticRouteOutputIntf(config);
}

struct FormCase {
  const char* name;
  Check check;
  void (*fill)(Tables&);
  const char* message;  // empty: accepted
};

std::ostream& operator<<(std::ostream& out, const FormCase& c) { return out << c.name; }

const FormCase kFormCases[] = {
    {"NetworkAddress", CheckIpv4, [](Tables& t) { t.L3("l3 1", {"192.0.2.0/24"}); },
     "l3 1 ipv4 address <192.0.2.0/24> cannot be configured as network address."},
    {"BroadcastAddress", CheckIpv4, [](Tables& t) { t.L3("l3 1", {"192.0.2.255/24"}); },
     "l3 1 ipv4 address <192.0.2.255/24> cannot be configured as broadcast address."},
    {"OverlapOfIpv4", CheckIpv4,
     [](Tables& t) { t.L3("l3 1", {"192.0.2.1/24"}).L3("l3 2", {"192.0.2.2/25"}); },
     "l3 1 vrf global ipv4 address <192.0.2.1/24> overlaps with l3 2 vrf global ipv4 address "
     "<192.0.2.2/25>."},
    {"OverlapOfIpv6", CheckIpv6,
     [](Tables& t) { t.L3("l3 1", {"2001:db8::1/64"}).L3("l3 2", {"2001:db8::2/96"}); },
     "l3 1 ipv6 address <2001:db8::1/64> overlaps with l3 2 ipv6 address <2001:db8::2/96>."},
    {"DuplicateOfIpv4", CheckIpv4,
     [](Tables& t) {
       t.L3("l3 1", {"192.0.2.1/24", "192.0.2.1/32"});
     },
     "l3 1 has duplicated IPv4 address 192.0.2.1"},
    {"DuplicateOfIpv6", CheckIpv6,
     [](Tables& t) {
       t.L3("l3 1", {"2001:db8::1/64", "2001:db8::1/128"});
     },
     "l3 1 has duplicated IPv6 address 2001:db8::1"},
    {"NextHopOfIpv4", CheckIpv4,
     [](Tables& t) { t.L3("l3 1", {"192.0.2.1/24"}).Route4("10.0.0.0/8", "192.0.2.1"); },
     "l3 1 ipv4 address 192.0.2.1/24 and static route 10.0.0.0/8 next-hop 192.0.2.1 cannot have "
     "address conflict."},
    {"NextHopOfIpv6", CheckIpv6,
     [](Tables& t) { t.L3("l3 1", {"2001:db8::1/64"}).Route6("fd00::/8", "2001:db8::1"); },
     "l3 1 ipv6 address 2001:db8::1/64 and static route fd00::/8 next-hop 2001:db8::1 cannot have "
     "address conflict."},
    {"BlackHoleOfIpv4", CheckBlackHoles,
     [](Tables& t) { t.Route4("10.0.0.0/8").Route4("10.0.0.0/8", "192.0.2.1"); },
     "Prefix 10.0.0.0/8 cannot be black-hole and have next-hop at the same time"},
    {"BlackHoleOfIpv6", CheckBlackHoles,
     [](Tables& t) { t.Route6("fd00::/8").Route6("fd00::/8", "2001:db8::1"); },
     "Prefix fd00::/8 cannot be black-hole and have next-hop at the same time"},
    {"OspfAddressGone", CheckOspf,
     [](Tables& t) { t.L3("l3 1", {"192.0.2.1/24"}).Ospf("l3 1", "192.0.2.2/24"); },
     "192.0.2.2/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf global "
     "area 1 (0.0.0.1)"},
    {"OspfAddressAdded", CheckOspf,
     [](Tables& t) {
       t.L3("l3 1", {"192.0.2.1/24", "198.51.100.1/24"}).Ospf("l3 1", "192.0.2.1/24");
     },
     "198.51.100.1/24 cannot be added after interface is assigned to router ospf 10 vrf global "
     "area 1 (0.0.0.1)"},
    {"LowerLayerGone", CheckOutputInterfaces,
     [](Tables& t) { t.L3("l3 1", {}).Route4("10.0.0.0/8", "192.0.2.9"); },
     "l3 1 is being used by a static route. Lower-layer-if cannot be removed from this "
     "interface"},
    {"LowerLayerThere", CheckOutputInterfaces,
     [](Tables& t) { t.L3("l3 1", {}).Vlan(100).Route4("10.0.0.0/8", "192.0.2.9"); }, ""},
    // One bit of the identifier is set, in its first and in its last byte.
    {"LowerLayerOfOneLowBit", CheckOutputInterfaces,
     [](Tables& t) { t.L3("l3 1", {}).Vlan(-0x0fffffff).Route4("10.0.0.0/8", "192.0.2.9"); }, ""},
    {"LowerLayerOfOneHighBit", CheckOutputInterfaces,
     [](Tables& t) { t.L3("l3 1", {}).Vlan(0x70000000).Route4("10.0.0.0/8", "192.0.2.9"); }, ""},
};

class TextForm : public testing::TestWithParam<FormCase> {};

TEST_P(TextForm, IsTheOneOfTheMessage) {
  Tables tables;
  GetParam().fill(tables);
  ValidateConfig checker;
  const bool accepted = *GetParam().message == '\0';
  EXPECT_EQ(GetParam().check(checker, tables.config()), accepted ? 0 : -1);
  EXPECT_EQ(checker.error_, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Messages, TextForm, testing::ValuesIn(kFormCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Without their bytes addresses are placed by their texts, and where these are no addresses alone
// every pair is compared.
struct OverlapCase {
  const char* name;
  std::vector<std::string> addresses;  // of one interface each
  const char* message;
};

std::ostream& operator<<(std::ostream& out, const OverlapCase& c) { return out << c.name; }

const OverlapCase kOverlapCases[] = {
    {"None", {"2001:db8:1::1/64", "2001:db8:2::1/64", "2001:db8:3::1/128", "::/128"}, ""},
    {"NeighboursInTheLastBit", {"2001:db8::2/127", "2001:db8::4/127", "2001:db8::1/128"}, ""},
    {"LastByte",
     {"2001:db8:1::1/64", "2001:db8::2/127", "2001:db8::4/127", "2001:db8::3/128"},
     "l3 1 ipv6 address <2001:db8::2/127> overlaps with l3 3 ipv6 address <2001:db8::3/128>."},
    {"FirstByte",
     {"8000::1/1", "2001:db8:2::1/64", "fe80::1/64"},
     "l3 0 ipv6 address <8000::1/1> overlaps with l3 2 ipv6 address <fe80::1/64>."},
    {"FirstOfTwo",
     {"fd00::1/64", "2001:db8::1/64", "2001:db8::2/64", "fd00::2/64"},
     "l3 0 ipv6 address <fd00::1/64> overlaps with l3 3 ipv6 address <fd00::2/64>."},
    {"MappedIpv4",
     {"::ffff:192.0.2.1/120", "::ffff:192.0.3.1/120", "::ffff:192.0.2.9/128"},
     "l3 0 ipv6 address <::ffff:192.0.2.1/120> overlaps with l3 2 ipv6 address "
     "<::ffff:192.0.2.9/128>."},
};

class Ipv6Overlap : public testing::TestWithParam<OverlapCase> {
 protected:
  ~Ipv6Overlap() override { nettypes::IPv6Addr::zone.clear(); }

  static std::string Message() {
    Tables tables;
    int number = 0;
    for (const std::string& address : GetParam().addresses) {
      tables.L3("l3 " + std::to_string(number++), {address});
    }
    ValidateConfig checker;
    const int result = CheckIpv6(checker, tables.config());
    EXPECT_EQ(result, checker.error_.empty() ? 0 : -1);
    return checker.error_;
  }
};

TEST_P(Ipv6Overlap, IsFoundByText) { EXPECT_EQ(Message(), GetParam().message); }

TEST_P(Ipv6Overlap, IsFoundWhereTheTextIsNoAddressAlone) {
  nettypes::IPv6Addr::zone = "%zone";
  std::string expected = GetParam().message;
  for (size_t slash = expected.find('/'); slash != std::string::npos;
       slash = expected.find('/', slash + 6)) {
    expected.insert(slash, "%zone");
  }
  EXPECT_EQ(Message(), expected);
}

INSTANTIATE_TEST_SUITE_P(Tables, Ipv6Overlap, testing::ValuesIn(kOverlapCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ip_application::config_valid
