#include "support/world.h"

#include <stdexcept>

#include "support/json_text.h"
#include "support/ospf_json.h"

namespace tests {
namespace {

std::string AddressList(const std::vector<std::string>& addresses) {
  std::vector<std::string> entries;
  for (const std::string& address : addresses) {
    entries.push_back(R"({"ip":)" + JsonText(address) + "}");
  }
  return "[" + Join(entries) + "]";
}

std::string IntfJson(const std::string& kind, const World::Intf& intf) {
  std::string json = R"({"name":)" + JsonText(intf.name);
  if (intf.vrf) json += R"(,"vrf":)" + JsonText(*intf.vrf);
  if (intf.vlan != 0) json += R"(,"lower-layer-if":{"vlan":)" + std::to_string(intf.vlan) + "}";
  if (kind == "loopback") {
    json += R"(,"ipv4":{"address":)" + AddressList(intf.ipv4) + "}";
  } else {
    std::vector<std::string> members;
    if (!intf.primary.empty()) members.push_back(R"("ip":)" + JsonText(intf.primary));
    if (!intf.ipv4.empty()) members.push_back(R"("secondary":)" + AddressList(intf.ipv4));
    json += R"(,"ipv4":{"address":{)" + Join(members) + "}}";
  }
  json += R"(,"ipv6":{"address":)" + AddressList(intf.ipv6);
  std::vector<std::string> timers;
  for (const auto& [leaf, seconds] : intf.timers) {
    timers.push_back(JsonText(leaf) + ":" + std::to_string(seconds));
  }
  if (!timers.empty()) json += R"(,"nd":{"ra":{)" + Join(timers) + "}}";
  return json + "}}";
}

}  // namespace

World::Intf* World::Find(const std::string& kind, const std::string& name) {
  for (Intf& intf : interfaces.at(kind)) {
    if (intf.name == name) return &intf;
  }
  throw std::logic_error("no interface " + kind + " " + name);
}

Device World::ToDevice() const {
  const auto list = [this](const std::string& kind) {
    std::vector<std::string> entries;
    for (const Intf& intf : interfaces.at(kind)) entries.push_back(IntfJson(kind, intf));
    return Join(entries);
  };
  Device device{.l3 = list("l3"), .loopback = list("loopback"), .mgmt = list("mgmt")};
  std::vector<std::string> entries;
  for (const auto& [index, name] : vrf_names) {
    entries.push_back(R"({"index":)" + std::to_string(index) + R"(,"vname":)" + JsonText(name) +
                      "}");
  }
  device.vrfs = Join(entries);
  AddRoutes(device, routes);
  entries.clear();
  std::vector<std::string> processes;
  for (const OspfUse& use : ospf) {
    entries.push_back(OspfEntry(use.id, use.area, use.name, use.address, use.length));
    processes.push_back(OspfProcess(use.id, use.process, use.vrf));
  }
  device.ospf = Join(entries);
  device.ospf_processes = Join(processes);
  entries.clear();
  for (const Ospfv3Use& use : ospfv3) {
    entries.push_back(Ospfv3Entry(use.process, use.area, use.name, use.index));
  }
  device.ospfv3 = Join(entries);
  return device;
}

}  // namespace tests
