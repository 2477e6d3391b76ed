#include "support/device.h"

#include <arpa/inet.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace tests {
namespace {

// `text`, which is UTF-8, in double quotes and with the escapes that JSON demands.
std::string JsonText(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      json += {'\\', c};
    } else if (c >= 0 && c < ' ') {
      char escape[sizeof("\\u0000")];
      snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(c));
      json += escape;
    } else {
      json += c;
    }
  }
  return json + "\"";
}

// An object that grows member by member.
class Object {
 public:
  Object& Text(const char* name, const std::string& text) { return Add(name, JsonText(text)); }
  Object& Text(const char* name, const std::optional<std::string>& text) {
    return text ? Text(name, *text) : *this;
  }
  Object& Number(const char* name, int64_t number) { return Add(name, std::to_string(number)); }
  Object& Add(const char* name, const std::string& json) {
    members_ += (members_.empty() ? "\"" : ",\"") + std::string(name) + "\":" + json;
    return *this;
  }
  std::string Json() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

template <typename List, typename ToJson>
std::string Array(const List& list, ToJson to_json) {
  std::string entries;
  for (const auto& entry : list) entries += (entries.empty() ? "" : ",") + to_json(entry);
  return "[" + entries + "]";
}

std::string AddressList(const std::vector<std::string>& addresses) {
  return Array(addresses,
               [](const std::string& address) { return Object().Text("ip", address).Json(); });
}

std::string L3Ipv4(const ConfiguredIntf& intf) {
  Object address;
  if (!intf.primary.empty()) address.Text("ip", intf.primary);
  if (!intf.ipv4.empty()) address.Add("secondary", AddressList(intf.ipv4));
  return address.Json();
}

std::string LoopbackIpv4(const ConfiguredIntf& intf) { return AddressList(intf.ipv4); }

std::string IntfJson(const ConfiguredIntf& intf, std::string (*ipv4)(const ConfiguredIntf&)) {
  Object json;
  json.Text("name", intf.name).Text("vrf", intf.vrf);
  if (intf.vlan != 0) json.Add("lower-layer-if", Object().Number("vlan", intf.vlan).Json());
  json.Add("ipv4", Object().Add("address", ipv4(intf)).Json());
  Object ipv6;
  ipv6.Add("address", AddressList(intf.ipv6));
  Object timers;
  for (const auto& [leaf, seconds] : intf.timers) timers.Number(leaf.c_str(), seconds);
  if (!intf.timers.empty()) ipv6.Add("nd", Object().Add("ra", timers.Json()).Json());
  return json.Add("ipv6", ipv6.Json()).Json();
}

// Octets of an address as the route table spells them: "0a:00:00:01" for 10.0.0.1.
std::string HexList(const std::string& address) {
  std::array<unsigned char, 16> octets{};
  const bool is_ipv6 = address.find(':') != std::string::npos;
  if (inet_pton(is_ipv6 ? AF_INET6 : AF_INET, address.c_str(), octets.data()) != 1) {
    throw std::invalid_argument(address);
  }
  std::string text;
  for (size_t i = 0; i < (is_ipv6 ? 16u : 4u); ++i) {
    char octet[sizeof(":ff")];
    snprintf(octet, sizeof(octet), i == 0 ? "%02x" : ":%02x", octets[i]);
    text += octet;
  }
  return text;
}

// The four keys that the two lists of routes share, in their order.
struct RouteKeys {
  explicit RouteKeys(const ConfiguredRoute& route)
      : fte_index(std::to_string(route.fte_index)),
        network(HexList(route.network.substr(0, route.network.find('/')))),
        prefix_len(route.network.substr(route.network.find('/') + 1)),
        next_hop(HexList(!route.next_hop.empty() ? route.next_hop
                         : route.is_ipv6()       ? "::"
                                                 : "0.0.0.0")) {}

  std::string fte_index;
  std::string network;
  std::string prefix_len;
  std::string next_hop;
};

std::string RouteJson(const ConfiguredRoute& route) {
  const RouteKeys keys(route);
  const std::string family = route.is_ipv6() ? "ipv6" : "ipv4";
  return Object()
      .Add("rtmStaticRtFteIndex", keys.fte_index)
      .Text("rtmStaticRtNetworkAddrType", family)
      .Text("rtmStaticRtNetworkAddr", keys.network)
      .Add("rtmStaticRtNetworkPrefixLen", keys.prefix_len)
      .Text("rtmStaticRtNextHopAddrType", family)
      .Text("rtmStaticRtNextHopAddr", keys.next_hop)
      .Json();
}

std::string OutputJson(const ConfiguredRoute& route) {
  const RouteKeys keys(route);
  return Object()
      .Add("fte-index", keys.fte_index)
      .Text("network", keys.network)
      .Add("prefix-length", keys.prefix_len)
      .Text("next-hop", keys.next_hop)
      .Text("interface-name", route.output)
      .Json();
}

std::string VrfJson(const std::pair<const uint32_t, std::optional<std::string>>& vrf) {
  return Object().Number("index", vrf.first).Text("vname", vrf.second).Json();
}

std::string OspfJson(const OspfEntry& entry) {
  Object json;
  json.Number("compound-id", entry.id).Text("area", entry.area).Text("if-name", entry.name);
  json.Text("if-address", entry.address);
  if (entry.length >= 0) json.Number("ospf-pm-ip-netmask", entry.length);
  return json.Json();
}

std::string OspfProcessJson(const OspfProcess& process) {
  Object json;
  json.Number("compound-id", process.id);
  if (process.process) json.Number("proc_id", *process.process);
  return json.Text("vrf_name", process.vrf).Json();
}

std::string Ospfv3Json(const Ospfv3Entry& entry) {
  Object json;
  json.Number("process", entry.process).Text("area", entry.area);
  json.Text("ospfv3-pm-if-name", entry.name);
  if (entry.index >= 0) json.Number("ospfv3-pm-if-index", entry.index);
  return json.Json();
}

}  // namespace

std::string OutputPath(const ConfiguredRoute& route) {
  const RouteKeys keys(route);
  return "/rtmStaticRtEntry-global{ " + keys.fte_index + " " + keys.network + " " +
         keys.prefix_len + " " + keys.next_hop + " }/interface-name";
}

std::vector<ConfiguredIntf>& Device::Interfaces(const std::string& kind) {
  return kind == "l3" ? l3 : kind == "loopback" ? loopback : mgmt;
}

ConfiguredIntf& Device::Find(const std::string& kind, const std::string& name) {
  for (ConfiguredIntf& intf : Interfaces(kind)) {
    if (intf.name == name) return intf;
  }
  throw std::logic_error("no interface " + kind + " " + name);
}

std::string Device::Json() const {
  const auto l3_json = [](const ConfiguredIntf& intf) { return IntfJson(intf, L3Ipv4); };
  const auto loopback_json = [](const ConfiguredIntf& intf) {
    return IntfJson(intf, LoopbackIpv4);
  };
  std::vector<ConfiguredRoute> with_output;
  for (const ConfiguredRoute& route : routes) {
    if (route.output) with_output.push_back(route);
  }
  const Object interfaces = Object()
                                .Add("velmor-ip-app:l3", Array(l3, l3_json))
                                .Add("velmor-ip-app:loopback", Array(loopback, loopback_json))
                                .Add("velmor-ip-app:mgmt", Array(mgmt, l3_json));
  const Object internal =
      Object()
          .Add("vrf-config", Object().Add("indexTOstring", Array(vrfs, VrfJson)).Json())
          .Add("ospf-interface-l3", Array(ospf, OspfJson))
          .Add("ospf-index-to-proc-id", Array(ospf_processes, OspfProcessJson))
          .Add("ospfv3-interface-l3", Array(ospfv3, Ospfv3Json));
  const Object table = Object().Add("rtmStaticRtEntry", Array(routes, RouteJson));
  return Object()
      .Add("velmor-config:config", Object().Add("interface", interfaces.Json()).Json())
      .Add("velmor-internal:internal", internal.Json())
      .Add("KX-RTM-MIB:KX-RTM-MIB", Object().Add("rtmStaticRtTable", table.Json()).Json())
      .Add("velmor-static-route:rtmStaticRtEntry-global", Array(with_output, OutputJson))
      .Json();
}

}  // namespace tests
