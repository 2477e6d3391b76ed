#include "support/plain_overlap.h"

#include <iterator>
#include <memory>
#include <sstream>
#include <vector>

#include "static_route_config.h"

namespace tests {
namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::Interface;
using ip_application::config_valid::InterfaceConfig;
using ip_application::config_valid::InterfaceType;
using ip_application::config_valid::StaticRoute;

struct Ipv4 {
  static const auto& Addresses(const Interface& intf) { return intf.ipv4_addr_list; }

  static std::string Validity(const Interface& intf) {
    for (const nettypes::IPv4AddrMask& a : intf.ipv4_addr_list) {
      std::ostringstream text;
      text << intf.name << " ipv4 address " << a << " cannot be configured as ";
      if (a.prefix_len() == 31 || a.prefix_len() == 32) continue;
      if (a.IsNetworkAddr()) return text.str() + "network address.";
      if (a.IsBroadcastAddr()) return text.str() + "broadcast address.";
    }
    return "";
  }

  static constexpr char kDuplicate[] = " has duplicated IPv4 address ";
  static constexpr char kAddress[] = " ipv4 address ";
  static std::string OverlapName(const Interface& intf) {
    return intf.name + " vrf " + intf.vrf_name;
  }
};

struct Ipv6 {
  static const auto& Addresses(const Interface& intf) { return intf.ipv6_addr_list; }
  static std::string Validity(const Interface& /*intf*/) { return ""; }
  static constexpr char kDuplicate[] = " has duplicated IPv6 address ";
  static constexpr char kAddress[] = " ipv6 address ";
  static std::string OverlapName(const Interface& intf) { return intf.name; }
};

// Each gives the message of a fault, or an empty text.

template <typename Family>
std::string Duplicate(const Interface& intf) {
  const auto& addresses = Family::Addresses(intf);
  for (auto a = addresses.begin(); a != addresses.end(); ++a) {
    for (auto b = std::next(a); b != addresses.end(); ++b) {
      if (a->addr() == b->addr()) return intf.name + Family::kDuplicate + a->addr().to_string();
    }
  }
  return "";
}

bool IsGlobalOrMgmt(const std::string& vrf) { return vrf == "global" || vrf == "mgmt"; }

template <typename Family>
std::string Overlap(const Interface& a, const Interface& b) {
  if (a.vrf_name != b.vrf_name && !(IsGlobalOrMgmt(a.vrf_name) && IsGlobalOrMgmt(b.vrf_name))) {
    return "";
  }
  for (const auto& addr_a : Family::Addresses(a)) {
    for (const auto& addr_b : Family::Addresses(b)) {
      if (!addr_a.Overlap(addr_b)) continue;
      std::ostringstream text;
      text << Family::OverlapName(a) << Family::kAddress << addr_a << " overlaps with "
           << Family::OverlapName(b) << Family::kAddress << addr_b << ".";
      return text.str();
    }
  }
  return "";
}

template <typename Family>
std::string NextHop(const Interface& intf, const Config& cfg) {
  for (const auto& a : Family::Addresses(intf)) {
    std::shared_ptr<StaticRoute> route;
    if (!cfg.static_route_config_->FindNextHop({intf.vrf_name, a.addr()}, route)) continue;
    std::ostringstream text;
    text << intf.name << Family::kAddress << a << " and static route " << route->network()
         << " next-hop " << route->next_hop() << " cannot have address conflict.";
    return text.str();
  }
  return "";
}

template <typename Family>
std::string AcrossTables(const InterfaceConfig& table, std::vector<InterfaceConfig*> tables) {
  for (const InterfaceConfig* other : tables) {
    if (other->type_ == table.type_) continue;
    for (const Interface& x : other->interfaces_) {
      for (const Interface& y : table.interfaces_) {
        const Interface y_copy = y;
        const Interface x_copy = x;
        std::string fault = Overlap<Family>(y_copy, x_copy);
        if (!fault.empty()) return fault;
      }
    }
  }
  return "";
}

template <typename Family>
std::string Verdict(const Config& cfg, InterfaceType type) {
  const InterfaceConfig* table = cfg.intf_by_type(type);
  if (table == nullptr) return "invalid interface being handled by IP-App validation";
  const std::vector<Interface>& interfaces = table->interfaces_;
  for (size_t i = 0; i < interfaces.size(); ++i) {
    std::string fault = Family::Validity(interfaces[i]);
    if (!fault.empty()) return fault;
    fault = Duplicate<Family>(interfaces[i]);
    if (!fault.empty()) return fault;
    for (size_t j = i + 1; j < interfaces.size(); ++j) {
      const Interface a = interfaces[i];
      const Interface b = interfaces[j];
      fault = Overlap<Family>(a, b);
      if (!fault.empty()) return fault;
    }
    fault = NextHop<Family>(interfaces[i], cfg);
    if (!fault.empty()) return fault;
  }
  std::string fault = AcrossTables<Family>(*table, cfg.intf_configs_);
  return fault.empty() ? "accepted" : fault;
}

}  // namespace

std::string PlainVerdictIpv4(const Config& cfg, InterfaceType type) {
  return Verdict<Ipv4>(cfg, type);
}

std::string PlainVerdictIpv6(const Config& cfg, InterfaceType type) {
  return Verdict<Ipv6>(cfg, type);
}

}  // namespace tests
