// ipv4_addr_validation and ipv6_addr_validation on configurations in the store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::IsEmpty;

constexpr char kInvalid[] = "invalid interface being handled by IP-App validation";

struct Family {
  bool ipv4;
  const char* name;
  const char* point;
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

const Family kFamilies[] = {{true, "Ipv4", "ipv4_addr_validation"},
                            {false, "Ipv6", "ipv6_addr_validation"}};

class AddressPoint : public PointTest, public testing::WithParamInterface<Family> {
 protected:
  std::string Validate(const std::string& path) {
    return PointTest::Validate(GetParam().point, path);
  }
};

INSTANTIATE_TEST_SUITE_P(Families, AddressPoint, testing::ValuesIn(kFamilies),
                         [](const auto& row) { return std::string(row.param.name); });

// Each list has a fault of its own, so that the message tells which one was checked.
TEST_P(AddressPoint, ChecksTheListAtWhichTheKeypathEnds) {
  Configure(Device{.l3 = {{.name = "1",
                           .vrf = "a",
                           .primary = "10.0.0.1/24",
                           .ipv4 = {"10.0.0.1/25"},
                           .ipv6 = {"2001:db8:1::1/64", "2001:db8:1::1/65"}}},
                   .loopback = {{.name = "2",
                                 .vrf = "b",
                                 .ipv4 = {"10.0.0.2/24", "10.0.0.2/25"},
                                 .ipv6 = {"2001:db8:2::2/64", "2001:db8:2::2/65"}}},
                   .mgmt = {{.name = "3",
                             .vrf = "c",
                             .primary = "10.0.0.0/24",
                             .ipv6 = {"2001:db8:3::3/64", "2001:db8:3::3/65"}}}});
  const bool ipv4 = GetParam().ipv4;
  EXPECT_EQ(Validate("/config/interface/l3"),
            ipv4 ? "l3 1 has duplicated IPv4 address 10.0.0.1"
                 : "l3 1 has duplicated IPv6 address 2001:db8:1::1");
  EXPECT_EQ(Validate("/config/interface/loopback"),
            ipv4 ? "loopback 2 has duplicated IPv4 address 10.0.0.2"
                 : "loopback 2 has duplicated IPv6 address 2001:db8:2::2");
  EXPECT_EQ(Validate("/config/interface/mgmt"),
            ipv4 ? "mgmt 3 ipv4 address 10.0.0.0/24 cannot be configured as network address."
                 : "mgmt 3 has duplicated IPv6 address 2001:db8:3::3");
}

TEST_P(AddressPoint, RefusesOtherNodesWithoutAnyRead) {
  Configure(Device{.l3 = {{.name = "1", .primary = "10.0.0.0/24"}}});
  for (const char* path :
       {"/config", "/config/interface", "/config/interface/l3{1}/ipv4/address/ip",
        "/config/interface/l3{1}/ipv4/address/secondary", "/velmor-internal:internal/vrf-config"}) {
    EXPECT_EQ(Validate(path), kInvalid) << path;
    EXPECT_THAT(calls(), IsEmpty()) << path;
  }
}

// The tables in the order L3, loopback, management, then the routes; whichever is checked.
TEST_P(AddressPoint, ReadsTheTablesInOrder) {
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/ipapp:l3", "maapi_exists /config/interface/ipapp:loopback",
      "maapi_exists /config/interface/ipapp:mgmt",
      "maapi_init_cursor /KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry"};
  for (const char* list : {"l3", "loopback", "mgmt"}) {
    RenewConfig();
    Configure("{}");
    EXPECT_EQ(Validate(std::string("/config/interface/") + list), "accepted");
    std::vector<std::string> with_path;
    for (const std::string& call : calls()) {
      const bool cursor_of_a_table = call.starts_with("maapi_init_cursor /config");
      if (call.find(" /") != std::string::npos && !cursor_of_a_table) with_path.push_back(call);
    }
    EXPECT_EQ(with_path, expected) << list;
  }
}

TEST_P(AddressPoint, ReadsOnlyTheAddressesOfItsFamily) {
  Configure(
      Device{.l3 = {{.name = "1", .primary = "10.1.0.1/24", .ipv6 = {"2001:db8:1::1/64"}}},
             .loopback = {{.name = "2", .ipv4 = {"10.2.0.1/24"}, .ipv6 = {"2001:db8:2::1/64"}}},
             .mgmt = {{.name = "3", .primary = "10.3.0.1/24", .ipv6 = {"2001:db8:3::1/64"}}}});
  EXPECT_EQ(Validate("/config/interface/l3"), "accepted");
  const bool ipv4 = GetParam().ipv4;
  const std::string other_family = ipv4 ? "/ipv6/" : "/ipv4/";
  std::vector<std::string> reads;
  for (const std::string& call : calls()) {
    EXPECT_EQ(call.find(other_family), std::string::npos) << call;
    if (call.find("_and_plen_elem") != std::string::npos) reads.push_back(call);
  }
  const std::string get = ipv4 ? "maapi_get_ipv4_and_plen_elem " : "maapi_get_ipv6_and_plen_elem ";
  const std::string base = "/config/interface/ipapp:";
  EXPECT_EQ(
      reads,
      ipv4 ? (std::vector<std::string>{get + base + "l3{1}/ipv4/address/ip",
                                       get + base + "loopback{2}/ipv4/address{10.2.0.1/24}/ip",
                                       get + base + "mgmt{3}/ipv4/address/ip"})
           : (std::vector<std::string>{get + base + "l3{1}/ipv6/address{2001:db8:1::1/64}/ip",
                                       get + base + "loopback{2}/ipv6/address{2001:db8:2::1/64}/ip",
                                       get + base + "mgmt{3}/ipv6/address{2001:db8:3::1/64}/ip"}));
}

TEST_P(AddressPoint, ReadsNothingTheSecondTime) {
  Configure(Device{.l3 = {{.name = "1", .primary = "10.1.0.1/24"}}});
  EXPECT_EQ(Validate("/config/interface/l3"), "accepted");
  EXPECT_FALSE(calls().empty());
  EXPECT_EQ(Validate("/config/interface/mgmt"), "accepted");
  EXPECT_THAT(calls(), IsEmpty());
}

// A Config that stays answers for the addresses that it read first.
TEST_P(AddressPoint, KeepsWhatItReadInAnEarlierTransaction) {
  const Device clash = {
      .l3 = {{.name = "1", .primary = "10.0.0.1/24", .ipv6 = {"2001:db8::1/64"}}},
      .mgmt = {{.name = "0", .vrf = "mgmt", .primary = "10.0.0.2/24", .ipv6 = {"2001:db8::2/64"}}}};
  const std::string message =
      GetParam().ipv4
          ? "l3 1 vrf global ipv4 address 10.0.0.1/24 overlaps with mgmt 0 vrf mgmt ipv4 address "
            "10.0.0.2/24."
          : "l3 1 ipv6 address 2001:db8::1/64 overlaps with mgmt 0 ipv6 address 2001:db8::2/64.";
  Configure(clash);
  EXPECT_EQ(Validate("/config/interface/l3"), message);
  Configure("{}");
  EXPECT_EQ(Validate("/config/interface/l3"), message);
  RenewConfig();
  EXPECT_EQ(Validate("/config/interface/l3"), "accepted");
}

// The text is data, not a format.
TEST_P(AddressPoint, PassesThePercentSignsOfNames) {
  Configure(Device{.l3 = {{.name = "%s%n",
                           .primary = "10.0.0.1/24",
                           .ipv4 = {"10.0.0.1/25"},
                           .ipv6 = {"2001:db8::1/64", "2001:db8::1/65"}}}});
  EXPECT_EQ(Validate("/config/interface/l3"),
            GetParam().ipv4 ? "l3 %s%n has duplicated IPv4 address 10.0.0.1"
                            : "l3 %s%n has duplicated IPv6 address 2001:db8::1");
}

// Next hops through the store, in the interface's VRF and in another.
TEST_P(AddressPoint, NextHopsOfStaticRoutes) {
  const auto device = [](const std::string& vrf) {
    return Device{
        .l3 = {{.name = "1", .vrf = vrf, .primary = "10.0.0.1/24", .ipv6 = {"2001:db8::1/64"}}},
        .vrfs = {{1, "red"}},
        .routes = {{1, "198.51.100.0/24", "10.0.0.1"}, {1, "2001:db8:9::/48", "2001:db8::1"}}};
  };
  Configure(device("red"));
  EXPECT_EQ(Validate("/config/interface/l3"),
            GetParam().ipv4
                ? "l3 1 ipv4 address 10.0.0.1/24 and static route 198.51.100.0/24 next-hop "
                  "10.0.0.1 cannot have address conflict."
                : "l3 1 ipv6 address 2001:db8::1/64 and static route 2001:db8:9::/48 next-hop "
                  "2001:db8::1 cannot have address conflict.");
  RenewConfig();
  Configure(device("blue"));
  EXPECT_EQ(Validate("/config/interface/l3"), "accepted");
}

// Both points of one transaction share the tables: the second adds its family.
TEST_F(PointTest, BothFamiliesOneAfterTheOther) {
  Configure(Device{.l3 = {{.name = "1", .primary = "10.0.0.0/24", .ipv6 = {"2001:db8::/64"}}},
                   .loopback = {{.name = "0", .ipv6 = {"2001:db8::1/128"}}}});
  EXPECT_EQ(Validate("ipv6_addr_validation", "/config/interface/l3"),
            "l3 1 ipv6 address 2001:db8::/64 overlaps with loopback 0 ipv6 address "
            "2001:db8::1/128.");
  EXPECT_EQ(Validate("ipv4_addr_validation", "/config/interface/l3"),
            "l3 1 ipv4 address 10.0.0.0/24 cannot be configured as network address.");
  EXPECT_EQ(Validate("ipv4_addr_validation", "/config/interface/loopback"), "accepted");
}

// An unreadable list is no interface.
TEST_P(AddressPoint, UnreadableListIsNoInterface) {
  Configure(Device{.l3 = {{.name = "1",
                           .primary = "10.0.0.1/24",
                           .ipv4 = {"10.0.0.1/25"},
                           .ipv6 = {"2001:db8::1/64", "2001:db8::1/65"}}}});
  FailCall(0);
  EXPECT_EQ(Validate("/config/interface/l3"), "accepted");
}

}  // namespace
}  // namespace tests
