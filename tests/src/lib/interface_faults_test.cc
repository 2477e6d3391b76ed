// Every single call of a full read made to fail: what then is in the table, and what was asked and
// reported, against a reader of a few lines that knows the configuration and asks nobody.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <list>
#include <new>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "config.h"
#include "support/device.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using tests::ConfiguredIntf;
using tests::Device;

// One interface of a table, as text.
struct Row {
  std::string name;
  std::vector<std::string> ipv4 = {};
  std::vector<std::string> ipv6 = {};
  std::string vrf = {};
  uint32_t ifindex = 0;

  friend bool operator==(const Row&, const Row&) = default;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << "[" << row.name << "] " << testing::PrintToString(row.ipv4) << " "
             << testing::PrintToString(row.ipv6) << " vrf:" << row.vrf << " lower:" << row.ifindex;
}

template <typename Mask>
std::vector<std::string> Texts(const std::list<Mask>& masks) {
  std::vector<std::string> texts;
  for (const Mask& mask : masks) texts.push_back(mask.to_string());
  return texts;
}

std::vector<Row> RowsOf(const InterfaceConfig& table) {
  std::vector<Row> rows;
  for (const Interface& intf : table.interfaces_) {
    rows.push_back({intf.name, Texts(intf.ipv4_addr_list), Texts(intf.ipv6_addr_list),
                    intf.vrf_name, limid_to_ifindex(intf.lim_id)});
  }
  return rows;
}

// The readers as they are described, over ConfiguredIntf instead of ConfD. The call at position
// `failing` fails.
class Model {
 public:
  Model(InterfaceType type, std::vector<ConfiguredIntf> interfaces, size_t failing)
      : type_(type), interfaces_(std::move(interfaces)), failing_(failing) {
    base_ = type == InterfaceType::L3   ? "/config/interface/ipapp:l3"
            : type == InterfaceType::Lo ? "/config/interface/ipapp:loopback"
                                        : "/config/interface/ipapp:mgmt";
    word_ = type == InterfaceType::L3 ? "l3 " : type == InterfaceType::Lo ? "loopback " : "mgmt ";
  }

  std::vector<Row> rows;
  std::vector<std::string> calls;
  std::vector<framework::Fault> faults;

  void Read(ConfigAddrFamily family) {
    std::vector<std::string> names;
    for (const ConfiguredIntf& intf : interfaces_) names.push_back(intf.name);
    const size_t read = Walk(base_, names);
    for (size_t i = 0; i < read; ++i) ReadInterface(interfaces_[i], family);
  }

 private:
  // Whether the call succeeds.
  bool Call(const std::string& call) {
    calls.push_back(call);
    return calls.size() - 1 != failing_;
  }

  // Number of keys that the walk over a list gives.
  size_t Walk(const std::string& list, const std::vector<std::string>& keys) {
    if (!Call("maapi_exists " + list)) return 0;
    const bool open = Call("maapi_init_cursor " + list);
    size_t read = 0;
    while (Call("maapi_get_next") && open && read < keys.size()) ++read;
    Call("maapi_destroy_cursor");
    return read;
  }

  // Whether a leaf that is there or not can be read.
  bool Leaf(const std::string& function, const std::string& path, bool present) {
    return Call("maapi_exists " + path) && present && Call(function + " " + path);
  }

  std::vector<std::string> AddressList(int family, const std::string& list,
                                       const std::vector<std::string>& addresses) {
    const std::string number = std::to_string(family);
    std::vector<std::string> read;
    const size_t keys = Walk(list, addresses);
    for (size_t i = 0; i < keys; ++i) {
      if (Leaf("maapi_get_ipv" + number + "_and_plen_elem", list + "{" + addresses[i] + "}/ip",
               true)) {
        read.push_back(addresses[i]);
      } else {
        faults.push_back({0, "get_intf_ipv" + number + "_addr_mask_list", "src/lib/config",
                          family == 4 ? 301 : 327,
                          "Unspecified IPv" + number + " address for key '" + addresses[i] + "'"});
      }
    }
    return read;
  }

  std::vector<std::string> Primary(const ConfiguredIntf& intf, const std::string& entry) {
    if (!Leaf("maapi_get_ipv4_and_plen_elem", entry + "/ipv4/address/ip", !intf.primary.empty())) {
      return {};
    }
    return {intf.primary};
  }

  std::vector<std::string> Ipv4(const ConfiguredIntf& intf, const std::string& entry) {
    if (type_ == InterfaceType::Lo) return AddressList(4, entry + "/ipv4/address", intf.ipv4);
    std::vector<std::string> addresses = Primary(intf, entry);
    if (type_ == InterfaceType::Mgmt) {
      if (addresses.empty()) {
        faults.push_back({0, "ReadConfig", "src/lib/config", 475,
                          "Unspecified IPv4 address for key '0.0.0.0/0'"});
      }
      return addresses;
    }
    for (const std::string& secondary :
         AddressList(4, entry + "/ipv4/address/secondary", intf.ipv4)) {
      addresses.push_back(secondary);
    }
    return addresses;
  }

  void ReadInterface(const ConfiguredIntf& intf, ConfigAddrFamily family) {
    const std::string entry = base_ + "{" + intf.name + "}";
    Row row{.name = word_ + intf.name};
    if (family == ConfigAddrFamily::IPv4) {
      row.ipv4 = Ipv4(intf, entry);
    } else {
      row.ipv6 = AddressList(6, entry + "/ipv6/address", intf.ipv6);
    }
    if (type_ == InterfaceType::L3 &&
        Leaf("maapi_get_elem", entry + "/lower-layer-if/vlan", intf.vlan != 0)) {
      row.ifindex = 1000000 + static_cast<uint32_t>(intf.vlan);
    }
    row.vrf = "global";
    if (Call("maapi_exists " + entry + "/vrf") && intf.vrf) {
      row.vrf = Call("maapi_get_elem " + entry + "/vrf") ? *intf.vrf : "";
      Call("confd_free_value");
    }
    Merge(row);
  }

  void Merge(const Row& row) {
    const auto known = std::find_if(rows.begin(), rows.end(),
                                    [&row](const Row& other) { return other.name == row.name; });
    if (known == rows.end()) {
      rows.push_back(row);
    } else if (known->ipv4.empty() && !row.ipv4.empty()) {
      known->ipv4 = row.ipv4;
    } else if (known->ipv6.empty() && !row.ipv6.empty()) {
      known->ipv6 = row.ipv6;
    }
  }

  const InterfaceType type_;
  const std::vector<ConfiguredIntf> interfaces_;
  const size_t failing_;
  std::string base_;
  std::string word_;
};

// In key order. Everything, nothing and what is between; keys with characters that mean something
// in a path.
const std::vector<ConfiguredIntf> kL3Interfaces = {
    {.name = "", .vrf = "red", .primary = "192.0.2.9/24"},
    {.name = "100%", .vlan = 9, .ipv4 = {"10.0.9.1/24"}, .ipv6 = {"2001:db8:9::1/64"}},
    {.name = "7",
     .vrf = "red",
     .vlan = 100,
     .primary = "192.0.2.1/24",
     .ipv4 = {"10.0.3.1/24", "10.0.1.1/24", "10.0.2.1/24"},
     .ipv6 = {"2001:db8:3::1/64", "2001:db8:1::1/64"}},
    {.name = "8"},
    {.name = "9", .vlan = 4094, .primary = "198.51.100.1/32", .ipv6 = {"2001:db8::9/128"}},
    {.name = "a}b", .vrf = "blue green", .ipv4 = {"203.0.113.1/31", "203.0.113.3/31"}},
    {.name = "wan 1", .vrf = "{blue}", .vlan = 1, .primary = "0.0.0.1/0", .ipv6 = {"::1/0"}},
};

const std::vector<ConfiguredIntf> kLoopbacks = {
    {.name = "0",
     .vrf = "red",
     .ipv4 = {"10.0.3.1/32", "10.0.1.1/32"},
     .ipv6 = {"2001:db8::3/128", "2001:db8::1/128", "2001:db8::2/128"}},
    {.name = "1", .ipv4 = {"10.0.4.1/32"}},
    {.name = "2", .ipv6 = {"2001:db8::4/128"}},
    {.name = "3"},
};

const std::vector<ConfiguredIntf> kManagementInterfaces = {
    {.name = "0", .vrf = "mgmt", .primary = "10.0.0.10/24", .ipv6 = {"2001:db8:a::1/64"}},
    {.name = "1", .ipv6 = {"2001:db8:b::1/64", "2001:db8:c::1/64"}},
    {.name = "2", .primary = "10.0.1.10/24"},
    {.name = "3", .vrf = "mgmt"},
};

struct TableCase {
  const char* name;
  InterfaceType type;
  const std::vector<ConfiguredIntf>& interfaces;
  std::vector<ConfigAddrFamily> families;
};

std::ostream& operator<<(std::ostream& out, const TableCase& c) { return out << c.name; }

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr ConfigAddrFamily kIpv6 = ConfigAddrFamily::IPv6;

const TableCase kTableCases[] = {
    {"L3Ipv4", InterfaceType::L3, kL3Interfaces, {kIpv4}},
    {"L3Ipv6", InterfaceType::L3, kL3Interfaces, {kIpv6}},
    {"L3Ipv4ThenIpv6", InterfaceType::L3, kL3Interfaces, {kIpv4, kIpv6}},
    {"L3Ipv6ThenIpv4", InterfaceType::L3, kL3Interfaces, {kIpv6, kIpv4}},
    {"LoopbackIpv4", InterfaceType::Lo, kLoopbacks, {kIpv4}},
    {"LoopbackIpv6", InterfaceType::Lo, kLoopbacks, {kIpv6}},
    {"LoopbackIpv4ThenIpv6", InterfaceType::Lo, kLoopbacks, {kIpv4, kIpv6}},
    {"LoopbackIpv6ThenIpv4", InterfaceType::Lo, kLoopbacks, {kIpv6, kIpv4}},
    {"ManagementIpv4", InterfaceType::Mgmt, kManagementInterfaces, {kIpv4}},
    {"ManagementIpv6", InterfaceType::Mgmt, kManagementInterfaces, {kIpv6}},
    {"ManagementIpv4ThenIpv6", InterfaceType::Mgmt, kManagementInterfaces, {kIpv4, kIpv6}},
    {"ManagementIpv6ThenIpv4", InterfaceType::Mgmt, kManagementInterfaces, {kIpv6, kIpv4}},
};

// Calls that cannot fail.
bool HasNoResult(const std::string& call) {
  return call == "maapi_destroy_cursor" || call == "confd_free_value";
}

constexpr size_t kNone = static_cast<size_t>(-1);

class InterfaceFaults : public tests::TableTest, public testing::WithParamInterface<TableCase> {
 protected:
  // One full read in a transaction of its own; when it is closed, nothing may be left.
  void ExpectReadAsModelled(size_t failing) {
    const TableCase& c = GetParam();
    ConfigureInterfaces();
    if (failing != kNone) FailCall(failing);
    Config config;
    InterfaceConfig& table = *config.intf_by_type(c.type);
    Bind(table);
    Model model(c.type, c.interfaces, failing);
    for (const ConfigAddrFamily family : c.families) {
      table.ReadConfigIfNeeded(family);
      model.Read(family);
    }
    calls_made = TakeCalls();
    EXPECT_EQ(calls_made, model.calls);
    EXPECT_EQ(RowsOf(table), model.rows);
    EXPECT_EQ(framework::TakeFaults(), model.faults);
  }

  // One full read in a transaction of its own, in which that call throws, and another one.
  void ExpectToBeReadAgainAfterAnException(size_t throwing) {
    const TableCase& c = GetParam();
    ConfigureInterfaces();
    size_t calls = 0;
    on_call = [&calls, throwing](const std::string& /*call*/) {
      if (calls++ == throwing) throw std::bad_alloc();
    };
    Config config;
    InterfaceConfig& table = *config.intf_by_type(c.type);
    Bind(table);
    Model model(c.type, c.interfaces, kNone);
    int thrown = 0;
    for (const ConfigAddrFamily family : c.families) {
      const bool& read = family == kIpv4 ? table.ipv4_read_ : table.ipv6_read_;
      try {
        table.ReadConfigIfNeeded(family);
      } catch (const std::bad_alloc&) {
        ++thrown;
        EXPECT_FALSE(read);
        table.ReadConfigIfNeeded(family);
      }
      EXPECT_TRUE(read);
      model.Read(family);
    }
    on_call = nullptr;
    EXPECT_EQ(thrown, 1);
    EXPECT_EQ(RowsOf(table), model.rows);  // each name once
    framework::TakeFaults();
  }

  std::vector<std::string> calls_made;

 private:
  void ConfigureInterfaces() {
    const TableCase& c = GetParam();
    Device device;
    (c.type == InterfaceType::L3   ? device.l3
     : c.type == InterfaceType::Lo ? device.loopback
                                   : device.mgmt) = c.interfaces;
    Configure(device);
    TakeCalls();
  }
};

TEST_P(InterfaceFaults, OfEveryCallGiveTheDefault) {
  ExpectReadAsModelled(kNone);
  const std::vector<std::string> all_calls = calls_made;
  ASSERT_GT(all_calls.size(), GetParam().interfaces.size());
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

TEST_P(InterfaceFaults, ThatThrowLeaveTheTableToBeReadAgain) {
  ExpectReadAsModelled(kNone);
  const std::vector<std::string> all_calls = calls_made;
  ASSERT_GT(all_calls.size(), GetParam().interfaces.size());
  for (size_t throwing = 0; throwing < all_calls.size(); ++throwing) {
    if (HasNoResult(all_calls[throwing])) continue;
    SCOPED_TRACE("call " + std::to_string(throwing) + ", " + all_calls[throwing]);
    ExpectToBeReadAgainAfterAnException(throwing);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, InterfaceFaults, testing::ValuesIn(kTableCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ip_application::config_valid
