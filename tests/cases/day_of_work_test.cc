// One day's work on one device: twenty transactions, accepted and refused in turn. What is accepted
// becomes the running configuration; what is refused leaves it as it is, and the next transaction
// starts from it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

#include "support/device.h"
#include "support/run_program.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

const fs::path kMorning = IPAV_SOURCE_DIR "/examples/ra-running.json";

// Edits of a configuration ----------------------------------------------------------------------

json& L3List(json& device) {
  return device["velmor-config:config"]["interface"]["velmor-ip-app:l3"];
}

json& L3(json& device, const std::string& name) {
  for (json& entry : L3List(device)) {
    if (entry["name"] == name) return entry;
  }
  throw std::invalid_argument(name);
}

json& Primary(json& l3) { return l3["ipv4"]["address"]["ip"]; }

void AddSecondary(json& l3, const std::string& address) {
  l3["ipv4"]["address"]["secondary"].push_back({{"ip", address}});
}

json& Timers(json& l3) { return l3["ipv6"]["nd"]["ra"]; }

// Adds the routes and what OSPF uses.
void Add(json& device, const tests::Device& more) {
  const json added = json::parse(more.Json());
  for (const char* path : {"/KX-RTM-MIB:KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry",
                           "/velmor-static-route:rtmStaticRtEntry-global",
                           "/velmor-internal:internal/ospf-interface-l3",
                           "/velmor-internal:internal/ospf-index-to-proc-id",
                           "/velmor-internal:internal/ospfv3-interface-l3"}) {
    const json::json_pointer list(path);
    for (const json& entry : added.at(list)) device[list].push_back(entry);
  }
}

// The day ---------------------------------------------------------------------------------------

struct Step {
  const char* wish;  // what the operator wants
  void (*edit)(json& device);
  const char* point;    // that refuses; null: accepted
  const char* message;  // likewise
};

const Step kDay[] = {
    {"a new network for the workshop, on VLAN 30",
     [](json& device) {
       L3List(device).push_back({{"name", "lan-2"}, {"lower-layer-if", {{"vlan", 30}}}});
       Primary(L3(device, "lan-2")) = "198.18.0.1/24";
     },
     nullptr, nullptr},
    {"another one for the printers, called lan.3",
     [](json& device) {
       L3List(device).push_back({{"name", "lan.3"}, {"lower-layer-if", {{"vlan", 40}}}});
     },
     "intf_l3_name_validation",
     "L3 interface name lan.3 contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, "
     "-)"},
    {"router advertisements in the workshop",
     [](json& device) {
       Timers(L3(device, "lan-2")) = {
           {"max-interval", 600}, {"min-interval", 450}, {"lifetime", 1800}};
     },
     nullptr, nullptr},
    {"more frequent advertisements there",
     [](json& device) { Timers(L3(device, "lan-2"))["max-interval"] = 500; },
     "validate_ipv6_nd_ra_interval",
     "Minimum interval must be no greater than maximum interval * 0.75"},
    {"less frequent ones, then",
     [](json& device) { Timers(L3(device, "lan-2"))["max-interval"] = 1200; }, nullptr, nullptr},
    {"advertisements as rare as hosts keep a router",
     [](json& device) { Timers(L3(device, "lan-2"))["max-interval"] = 1800; },
     "validate_ipv6_nd_ra_lifetime",
     "Lifetime must be greater than maximum router advertisement interval"},
    {"the workshop in a VRF of its own",
     [](json& device) {
       L3(device, "lan-2")["vrf"] = "red";
     },
     nullptr, nullptr},
    {"part of the uplink's subnet on the first LAN as well",
     [](json& device) { AddSecondary(L3(device, "lan-1"), "198.51.100.200/25"); },
     "ipv4_addr_validation",
     "l3 lan-1 vrf global ipv4 address 198.51.100.200/25 overlaps with l3 uplink vrf global ipv4 "
     "address 198.51.100.2/24."},
    {"the first LAN's subnet in the workshop, which is in another VRF",
     [](json& device) { AddSecondary(L3(device, "lan-2"), "192.0.2.2/25"); }, nullptr, nullptr},
    {"the workshop back in the global VRF", [](json& device) { L3(device, "lan-2").erase("vrf"); },
     "ipv4_addr_validation",
     "l3 lan-1 vrf global ipv4 address 192.0.2.1/25 overlaps with l3 lan-2 vrf global ipv4 address "
     "192.0.2.2/25."},
    {"default routes of both families out of the uplink",
     [](json& device) {
       Add(device, {.routes = {{0, "0.0.0.0/0", "198.51.100.1", "l3-uplink"},
                               {0, "::/0", "2001:db8:0:10::1", "l3-uplink"}}});
     },
     nullptr, nullptr},
    {"an IPv6 route to the first LAN, by mistake through the device itself",
     [](json& device) {
       Add(device, {.routes = {{.network = "fd00::/8", .next_hop = "2001:db8:0:20::1"}}});
     },
     "ipv6_addr_route_validation",
     "l3 lan-1 ipv6 address 2001:db8:0:20::1/64 and static route fd00::/8 next-hop "
     "2001:db8:0:20::1 cannot have address conflict."},
    {"what goes to 10.0.0.0/8 dropped",
     [](json& device) { Add(device, {.routes = {{.network = "10.0.0.0/8"}}}); }, nullptr, nullptr},
    {"the same prefix forwarded",
     [](json& device) {
       Add(device, {.routes = {{.network = "10.0.0.0/8", .next_hop = "192.0.2.3"}}});
     },
     "ipv4_addr_route_validation",
     "Prefix 10.0.0.0/8 cannot be black-hole and have next-hop at the same time"},
    {"OSPF on the uplink",
     [](json& device) {
       Add(device, {.ospf_processes = {{1, 10, "global"}}});
       Add(device, {.ospf = {{1, "0.0.0.0", "l3-uplink", "198.51.100.2"}}});
     },
     nullptr, nullptr},
    {"another address on the uplink",
     [](json& device) { Primary(L3(device, "uplink")) = "198.51.100.3/24"; },
     "ipv4_addr_prot_cross_validation",
     "198.51.100.2/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf global "
     "area 0 (0.0.0.0)"},
    {"OSPFv3 on the first LAN",
     [](json& device) {
       Add(device, {.ospfv3 = {{20, "0.0.0.1", "l3-lan-1", 1000020}}});
     },
     nullptr, nullptr},
    {"a VRF for the first LAN",
     [](json& device) {
       L3(device, "lan-1")["vrf"] = "blue";
     },
     "intf_vrf_validation", "l3 lan-1 is configured in OSPFv3 and cannot be associated with a VRF"},
    {"the workshop on VLAN 31",
     [](json& device) {
       L3(device, "lan-2")["lower-layer-if"]["vlan"] = 31;
     },
     nullptr, nullptr},
    {"the first LAN on VLAN 21",
     [](json& device) {
       L3(device, "lan-1")["lower-layer-if"]["vlan"] = 21;
     },
     "lower_layer_prot_cross_validation",
     "vlan 20 cannot be changed, it is assigned to router ospfv3 20 area 1 (0.0.0.1)"},
};

std::string TextOf(const fs::path& file) {
  std::ifstream stream(file);
  EXPECT_TRUE(stream) << file;
  return {std::istreambuf_iterator<char>(stream), {}};
}

fs::path MakeFolder() {
  std::string pattern = testing::TempDir() + "ipvald-XXXXXX";
  return mkdtemp(pattern.data());
}

// The files of one device, in a folder of their own.
class DayOfWork : public testing::Test {
 protected:
  DayOfWork() { fs::copy_file(kMorning, running_); }
  ~DayOfWork() override { fs::remove_all(folder_); }

  // The running configuration with one edit, in the file of the candidate.
  void WriteCandidate(void (*edit)(json& device)) const {
    const json running = json::parse(TextOf(running_));
    json candidate = running;
    edit(candidate);
    ASSERT_NE(candidate, running);
    std::ofstream(candidate_) << candidate.dump(2) << "\n";
  }

  // What ipvald says to the change.
  void Check(const Step& step) const {
    const bool accepted = step.point == nullptr;
    const ProgramResult result =
        RunProgram({IPAV_IPVALD, "check", "--format", "json", "--running", running_, candidate_});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, accepted ? 0 : 1);
    const json report = json::parse(result.out, nullptr, false);
    ASSERT_TRUE(report.is_object()) << result.out;
    EXPECT_EQ(report["verdict"], json(accepted ? "accepted" : "rejected"));
    EXPECT_EQ(report["point"], accepted ? json() : json(step.point));
    EXPECT_EQ(report["message"], accepted ? json() : json(step.message));
  }

  const fs::path folder_ = MakeFolder();
  const fs::path running_ = folder_ / "running.json";
  const fs::path candidate_ = folder_ / "candidate.json";
};

TEST_F(DayOfWork, OfTwentyTransactions) {
  ASSERT_EQ(std::size(kDay), 20u);
  json evening = json::parse(TextOf(running_));  // with what was accepted, and nothing else
  for (const Step& step : kDay) {
    SCOPED_TRACE(std::string("The operator wants ") + step.wish);
    const std::string before = TextOf(running_);
    ASSERT_NO_FATAL_FAILURE(WriteCandidate(step.edit));
    const std::string wanted = TextOf(candidate_);
    Check(step);
    EXPECT_EQ(TextOf(running_), before);
    EXPECT_EQ(TextOf(candidate_), wanted);
    if (HasFailure()) return;  // the steps that follow build on this one
    if (step.point == nullptr) {
      fs::rename(candidate_, running_);
      step.edit(evening);
    }
  }
  EXPECT_EQ(json::parse(TextOf(running_)), evening);
}

}  // namespace
