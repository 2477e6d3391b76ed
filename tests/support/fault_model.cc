#include "support/fault_model.h"
#include "confd/watch_calls.h"

#include <algorithm>
#include <stdexcept>

namespace tests {
namespace {

constexpr char kRouteTable[] = "/KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry";
constexpr char kOspfList[] = "/internal/ospf-interface-l3";
constexpr char kOspfv3List[] = "/internal/ospfv3-interface-l3";
// What the store gives in place of a text.
constexpr char kNumberForText[] = "424242";

// Function and path of a line of the sequence of calls.
std::string FunctionOf(const std::string& call) { return call.substr(0, call.find(' ')); }
std::string PathOf(const std::string& call) {
  const size_t blank = call.find(' ');
  return blank == std::string::npos ? "" : call.substr(blank + 1);
}

// Without the prefixes of modules.
std::string WithoutPrefixes(std::string path) {
  for (const std::string prefix : {"ipapp:", "velmor-internal:"}) {
    for (size_t at = path.find(prefix); at != std::string::npos; at = path.find(prefix)) {
      path.erase(at, prefix.size());
    }
  }
  return path;
}

// What stands in the first, or the last, pair of braces.
std::string FirstKeys(const std::string& path) {
  const size_t open = path.find('{');
  return open == std::string::npos ? "" : path.substr(open + 1, path.find('}') - open - 1);
}
std::string LastKeys(const std::string& path) {
  const size_t open = path.rfind('{');
  return open == std::string::npos ? "" : path.substr(open + 1, path.rfind('}') - open - 1);
}

uint32_t FirstNumber(const std::string& keys) {
  return static_cast<uint32_t>(std::stoul(keys.substr(keys.find_first_not_of(' '))));
}

size_t KeyCount(const std::string& list) {
  if (list == kRouteTable) return 6;
  if (list == kOspfList) return 4;
  if (list == kOspfv3List) return 3;
  return 1;
}

// The walk to which the call at `position` belongs.
struct Walk {
  std::string list;
  size_t step;  // entries before this one
};
Walk WalkAt(const std::vector<std::string>& calls, size_t position) {
  size_t step = 0;
  for (size_t i = position; i-- > 0;) {
    const std::string function = FunctionOf(calls[i]);
    if (function == "maapi_init_cursor") return {WithoutPrefixes(PathOf(calls[i])), step};
    if (function == "maapi_get_next") ++step;
  }
  throw std::logic_error("a step without a cursor");
}

template <typename List>
void Truncate(List& list, size_t size) {
  if (list.size() > size) list.erase(list.begin() + static_cast<ptrdiff_t>(size), list.end());
}

// One fault, from the call to what it takes away.
class Effect {
 public:
  Effect(const Situation& situation, const std::vector<std::string>& calls, const Fault& fault,
         const std::string& route_families, const std::string& subject)
      : calls_(calls),
        fault_(fault),
        route_families_(route_families),
        subject_(subject),
        function_(FunctionOf(calls[fault.position])),
        raw_path_(PathOf(calls[fault.position])),
        path_(WithoutPrefixes(raw_path_)),
        running_(found_.equivalent.running),
        candidate_(found_.equivalent.candidate) {
    found_.equivalent = situation;
  }

  Expectation Find() {
    if (function_ == "maapi_get_next") {
      const Walk walk = WalkAt(calls_, fault_.position);
      is_wrong() ? TakeKey(walk) : TakeRest(walk);
    } else if (function_ == "maapi_init_cursor") {
      TakeRest({path_, 0});
    } else if (function_.starts_with("cdb_")) {
      // Ending the session comes after the read.
      if (function_ != "cdb_end_session") running_.Find("l3", subject_).vlan = 0;
    } else if (function_ == "maapi_keypath_diff_iterate") {
      is_wrong() ? ChangeReport() : void(running_ = candidate_);
    } else if (function_ == "maapi_xpath_eval_expr") {
      TakeVrfChange();
    } else if (function_ != "maapi_num_instances") {  // a list that cannot be counted is walked
      TakeLeaf();
    }
    found_.walk_follows = !function_.starts_with("maapi_xpath") &&
                          function_ != "maapi_keypath_diff_iterate" && !is_of_the_walk_;
    return found_;
  }

 private:
  bool is_wrong() const { return fault_.request.action == confd::CallAction::kWrongType; }

  // The kind in /config/interface/<kind>...
  static std::string KindOf(const std::string& path) {
    const std::string rest = path.substr(sizeof("/config/interface/") - 1);
    return rest.substr(0, rest.find_first_of("{/"));
  }
  static bool IsOfInterfaces(const std::string& path) {
    return path.starts_with("/config/interface/");
  }
  // The list of addresses that `list` is the path of.
  std::vector<std::string>& AddressesOf(const std::string& list) {
    ConfiguredIntf& intf = candidate_.Find(KindOf(list), FirstKeys(list));
    return list.find("/ipv6/") != std::string::npos ? intf.ipv6 : intf.ipv4;
  }
  bool IsInterfaceList(const std::string& path) const {
    return IsOfInterfaces(path) && path.find('{') == std::string::npos;
  }

  // The family for which the route table is being read; 0 when it was read before for both.
  char RouteFamily() const {
    size_t reads = 0;
    for (size_t i = 0; i <= fault_.position; ++i) {
      if (calls_[i] == std::string("maapi_init_cursor ") + kRouteTable) ++reads;
    }
    return route_families_.at(reads - 1);
  }
  bool IsRead(const ConfiguredRoute& route) const {
    return route.is_ipv6() == (RouteFamily() == '6');
  }
  ConfiguredRoute& RouteOf(uint32_t index) {
    for (ConfiguredRoute& route : candidate_.routes) {
      if (route.fte_index == index) return route;
    }
    throw std::logic_error("no such route");
  }

  // A walk ends before its entry number `step`.
  void TakeRest(const Walk& walk) {
    if (IsInterfaceList(walk.list)) {
      Truncate(candidate_.Interfaces(KindOf(walk.list)), walk.step);
    } else if (IsOfInterfaces(walk.list)) {
      Truncate(AddressesOf(walk.list), walk.step);
    } else if (walk.list == kOspfList) {
      Truncate(candidate_.ospf, walk.step);
    } else if (walk.list == kOspfv3List) {
      Truncate(candidate_.ospfv3, walk.step);
    } else {
      // A second read, for the other family, sees what this one missed.
      const bool both = route_families_.size() > 1;
      auto& routes = candidate_.routes;
      const auto rest = routes.begin() + static_cast<ptrdiff_t>(std::min(walk.step, routes.size()));
      routes.erase(std::remove_if(rest, routes.end(),
                                  [&](const auto& route) { return !both || IsRead(route); }),
                   routes.end());
    }
  }

  // A key of an entry is of another type.
  void TakeKey(const Walk& walk) {
    const size_t key = fault_.request.position;
    if (IsInterfaceList(walk.list)) {
      // The name is the text of that number, and nothing is found below it.
      candidate_.Interfaces(KindOf(walk.list)).at(walk.step) = {.name = kNumberForText};
    } else if (IsOfInterfaces(walk.list)) {
      auto& addresses = AddressesOf(walk.list);
      addresses.erase(addresses.begin() + static_cast<ptrdiff_t>(walk.step));
    } else if (walk.list == kOspfList) {
      TakeOspfKey(walk.step, key);
    } else if (walk.list == kOspfv3List) {
      static constexpr const char* kAssertions[] = {"validate_ip_addr_cross_ospf:84",
                                                    "validate_ip_addr_cross_ospf:79",
                                                    "validate_ip_addr_cross_ospf:85"};
      found_.assertion = kAssertions[key];
    } else {
      TakeRouteKey(candidate_.routes.at(walk.step), key);
    }
  }

  void TakeOspfKey(size_t entry, size_t key) {
    // Without a hyphen, as in a number, the entry is passed over before its other keys count.
    if (candidate_.ospf.at(entry).name.find('-') == std::string::npos) return;
    if (key == 0) {
      found_.exception = "std::invalid_argument";
    } else if (key == 2) {
      candidate_.ospf.erase(candidate_.ospf.begin() + static_cast<ptrdiff_t>(entry));
    } else {
      found_.exception = "boost::system::system_error";
    }
  }

  // The type of the next hop, between the last two, is not read.
  void TakeRouteKey(ConfiguredRoute& route, size_t key) {
    if (key == 0) found_.assertion = "static_route_config:98";
    if (key == 1) found_.assertion = "static_route_config:33";
    if (key == 3) found_.assertion = "static_route_config:94";
    if ((key != 2 && key != 5) || !IsRead(route)) return;
    if (key == 2) route.network = route.is_ipv6() ? "::/0" : "0.0.0.0/0";
    if (key == 5) route.next_hop.clear();
    route.output.reset();  // the path to it is made of these keys
  }

  // Not asked for and so for the table that is read last.
  void TakeLeaf() {
    if (IsInterfaceList(path_)) {
      candidate_.Interfaces(KindOf(path_)).clear();
    } else if (IsOfInterfaces(path_)) {
      TakeInterfaceLeaf();
    } else if (path_ == kOspfList) {
      candidate_.ospf.clear();
    } else if (path_ == kOspfv3List) {
      candidate_.ospfv3.clear();
    } else if (path_.starts_with("/internal/vrf-config/")) {
      const uint32_t index = FirstNumber(FirstKeys(path_));
      if (is_wrong()) found_.assertion = "config:236";
      if (IsReadRoute(index)) candidate_.vrfs.erase(index);
    } else if (path_.starts_with("/rtmStaticRtEntry-global{")) {
      const uint32_t index = FirstNumber(FirstKeys(path_));
      if (is_wrong()) found_.assertion = "static_route_config:105";
      if (IsReadRoute(index)) RouteOf(index).output.reset();
    } else if (path_.starts_with(kOspfv3List)) {
      TakeOspfv3Index();
    } else {
      TakeOspfLeaf();
    }
  }

  bool IsReadRoute(uint32_t index) { return IsRead(RouteOf(index)); }

  void TakeOspfv3Index() {
    for (Ospfv3Entry& use : candidate_.ospfv3) {
      const std::string keys =
          " " + std::to_string(use.process) + " " + use.area + " " + use.name + " ";
      if (FirstKeys(path_) == keys) use.index = -1;
    }
  }

  void TakeOspfLeaf() {
    const uint32_t id = FirstNumber(FirstKeys(path_));
    for (OspfEntry& entry : candidate_.ospf) {
      if (entry.id == id && path_.ends_with("/ospf-pm-ip-netmask")) entry.length = -1;
    }
    for (OspfProcess& process : candidate_.ospf_processes) {
      if (process.id == id && path_.ends_with("/proc_id")) process.process = 0;
      if (process.id == id && path_.ends_with("/vrf_name")) process.vrf = "";
    }
  }

  void TakeInterfaceLeaf() {
    const std::string kind = KindOf(path_);
    ConfiguredIntf& intf = candidate_.Find(kind, FirstKeys(path_));
    const std::string leaf = path_.substr(path_.rfind('/') + 1);
    const bool is_read = function_ != "maapi_exists";
    if (leaf == "vlan") {
      intf.vlan = 0;
      if (is_wrong() && function_ == "maapi_get_elem") found_.assertion = "config:196";
    } else if (leaf == "vrf" && raw_path_ == path_) {
      is_of_the_walk_ = true;
      KeepOspfv3(kind + "-" + intf.name);
    } else if (leaf == "vrf") {
      intf.vrf.reset();
      if (is_read) intf.vrf = "";
      if (is_wrong()) found_.assertion = "config:214";
    } else if (leaf == "address" || leaf == "secondary") {
      AddressesOf(path_).clear();
    } else if (path_.ends_with("}/ipv4/address/ip")) {
      intf.primary.clear();
    } else if (leaf == "ip") {
      auto& addresses = AddressesOf(path_);
      addresses.erase(std::remove(addresses.begin(), addresses.end(), LastKeys(path_)),
                      addresses.end());
    } else if (is_read) {
      intf.timers.erase(leaf);  // one timer that exists is enough to go on
    }
  }

  // As if OSPFv3 had used the interface before.
  void KeepOspfv3(const std::string& name) {
    for (const Ospfv3Entry& use : candidate_.ospfv3) {
      if (use.name == name) running_.ospfv3.push_back(use);
    }
  }

  // Where the walk is, and what every change then shows.
  void ChangeReport() {
    const size_t position = fault_.request.position;
    const std::string file = "validate_intf_vrf:";
    if (path_ == "/config/interface/l3" && position > 0) {
      found_.assertion = file + (position == 1 ? "126" : "128");
    } else if (path_ == "/config/interface/loopback" && position > 0) {
      found_.assertion = file + (position == 1 ? "98" : "102");
    } else if (path_ == kOspfv3List && position < 2) {
      found_.assertion = file + (position == 1 ? "159" : "160");
    }
  }

  // As if the interface whose change is looked at had been in that VRF before.
  void TakeVrfChange() {
    size_t changes = 0;
    std::string kind;
    for (size_t i = fault_.position; i-- > 0 && kind.empty();) {
      if (FunctionOf(calls_[i]) == "maapi_xpath_eval_expr") ++changes;
      if (FunctionOf(calls_[i]) == "maapi_keypath_diff_iterate") kind = KindOf(PathOf(calls_[i]));
    }
    for (const ConfiguredIntf& intf : candidate_.Interfaces(kind)) {
      ConfiguredIntf& before = running_.Find(kind, intf.name);
      if (!intf.vrf || before.vrf == intf.vrf || changes-- > 0) continue;
      before.vrf = intf.vrf;
      return;
    }
  }

  const std::vector<std::string>& calls_;
  const Fault& fault_;
  const std::string& route_families_;
  const std::string& subject_;
  const std::string function_;
  const std::string raw_path_;
  const std::string path_;
  bool is_of_the_walk_ = false;
  Expectation found_;
  Device& running_;
  Device& candidate_;
};

}  // namespace

std::vector<Fault> FaultsOf(const std::vector<std::string>& calls) {
  std::vector<Fault> faults;
  for (size_t i = 0; i < calls.size(); ++i) {
    const std::string function = FunctionOf(calls[i]);
    // These two cannot fail.
    if (function == "maapi_destroy_cursor" || function == "confd_free_value") continue;
    faults.push_back({i, confd::CallAction::kFail});
    size_t values = function.starts_with("maapi_get_") || function.starts_with("cdb_get_") ? 1 : 0;
    if (function == "maapi_keypath_diff_iterate") values = 3;
    if (function == "maapi_get_next") {
      const bool at_the_end = i + 1 < calls.size() && calls[i + 1] == "maapi_destroy_cursor";
      values = at_the_end ? 0 : KeyCount(WalkAt(calls, i).list);
    }
    for (size_t value = 0; value < values; ++value) {
      faults.push_back({i, {confd::CallAction::kWrongType, value}});
    }
  }
  return faults;
}

Expectation Expect(const Situation& situation, const std::vector<std::string>& calls,
                   const Fault& fault, const std::string& route_families,
                   const std::string& subject) {
  return Effect(situation, calls, fault, route_families, subject).Find();
}

}  // namespace tests
