#include "scenario_decoder.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "byte_reader.h"

namespace fuzz {
namespace {

using nlohmann::json;

constexpr size_t kRecordSize = 8;
constexpr size_t kMaxCalls = 12;
// What slows a run down is only for inputs with so few records, or it would take all the time: a
// large device, and the names that make a reader throw, since the leak sanitizer looks closely at
// runs that leave something behind.
constexpr size_t kFewRecords = 4;

constexpr std::array<const char*, 3> kKinds = {"l3", "loopback", "mgmt"};
constexpr std::array<const char*, 16> kNames = {
    "7",     "8",     "0",
    "lan-1", "l3-7",  "wan 1",
    "",      "a}b",   "x}/y",
    "50%",   "\"7\"", " 7",
    "it's",  "Größe", "sixty-one-bytes-are-one-more-than-the-longest-name-of-an-l3-if",
    "%s%d"};
constexpr std::array<const char*, 8> kVrfs = {nullptr, "red", "blue", "global",
                                              "mgmt",  "RED", "",     "red\""};
constexpr std::array<int, 5> kVlans = {0, 20, 21, 1, 4094};                     // 0: none
constexpr std::array<int, 8> kSeconds = {-1, 0, 1, 450, 451, 600, 601, 65535};  // -1: none
constexpr std::array<int, 8> kIpv4Lengths = {24, 8, 16, 30, 31, 32, 25, 0};
constexpr std::array<int, 8> kIpv6Lengths = {64, 32, 48, 127, 128, 65, 1, 0};
constexpr std::array<int, 8> kRouteLengths = {8, 24, 32, 0, 64, 128, 33, 16};
constexpr std::array<const char*, 8> kAreas = {"0.0.0.0",  "0.0.0.1",   "0.0.0.10",
                                               "10.0.0.1", "192.0.2.1", "255.255.255.255",
                                               "1.0.0.0",  "0.0.1.0"};

// The same address as text and as octets; the route table has octets.
struct Address {
  const char* text;
  const char* octets;
};
constexpr std::array<Address, 8> kIpv4 = {{{"10.0.0.1", "0a:00:00:01"},
                                           {"10.0.0.2", "0a:00:00:02"},
                                           {"10.0.0.0", "0a:00:00:00"},
                                           {"10.0.0.255", "0a:00:00:ff"},
                                           {"10.0.1.1", "0a:00:01:01"},
                                           {"192.0.2.1", "c0:00:02:01"},
                                           {"0.0.0.0", "00:00:00:00"},
                                           {"255.255.255.255", "ff:ff:ff:ff"}}};
constexpr std::array<Address, 8> kIpv6 = {
    {{"2001:db8::1", "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01"},
     {"2001:db8::2", "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:02"},
     {"2001:db8::", "20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:00"},
     {"2001:db8:0:1::1", "20:01:0d:b8:00:00:00:01:00:00:00:00:00:00:00:01"},
     {"fe80::1", "fe:80:00:00:00:00:00:00:00:00:00:00:00:00:00:01"},
     {"::ffff:10.0.0.1", "00:00:00:00:00:00:00:00:00:00:ff:ff:0a:00:00:01"},
     {"::", "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:00"},
     {"::1", "00:00:00:00:00:00:00:00:00:00:00:00:00:00:00:01"}}};
// Octets that are no address of either family.
constexpr std::array<const char*, 3> kOddOctets = {"0a", "0a:00:00:00:00", "00"};

// What stands behind the kind of interface in the name of a route's output interface; the short
// ones stand alone.
constexpr std::array<const char*, 4> kShortOutputs = {"", "x", "l3", "l3-"};
constexpr size_t kShortOutput = 60;  // from here on, of 64

constexpr std::array<const char*, 11> kPoints = {"intf_l3_name_validation",
                                                 "intf_vrf_validation",
                                                 "ipv4_addr_validation",
                                                 "ipv4_addr_prot_cross_validation",
                                                 "ipv4_addr_route_validation",
                                                 "ipv6_addr_validation",
                                                 "ipv6_addr_route_validation",
                                                 "validate_ipv6_nd_ra_interval",
                                                 "validate_ipv6_nd_ra_lifetime",
                                                 "static_route_l3_intf_validation",
                                                 "lower_layer_prot_cross_validation"};

// The entry of a list with these keys, made when it is not there.
json& Entry(json& list, const json& keys) {
  for (json& entry : list) {
    bool is_same = true;
    for (const auto& key : keys.items()) is_same = is_same && entry[key.key()] == key.value();
    if (is_same) return entry;
  }
  return list.emplace_back(keys);
}

json& Interface(json& side, const std::string& kind, const std::string& name) {
  json& list = side["velmor-config:config"]["interface"]["velmor-ip-app:" + kind];
  return Entry(list, {{"name", name}});
}

json& Internal(json& side, const char* list, const json& keys) {
  return Entry(side["velmor-internal:internal"][list], keys);
}

void SetText(json& entry, const char* leaf, const char* text) {
  if (text != nullptr) entry[leaf] = text;
}

class Decoder {
 public:
  explicit Decoder(std::span<const uint8_t> bytes)
      : may_be_slow_(bytes.size() <= kFewRecords * kRecordSize) {
    for (ByteReader records(bytes); !records.empty();) ReadRecord(records.Part(kRecordSize));
  }

  Scenario Take() {
    scenario_.candidate = sides_[0].dump();
    scenario_.running = sides_[1].dump();
    return std::move(scenario_);
  }

 private:
  void ReadRecord(ByteReader record) {
    const size_t kind = record.Below(13);
    if (kind >= 9) return ReadCall(record);
    if (kind == 8 && (scenario_.is_large || !may_be_slow_)) return;
    // Most records are on both sides, so that a change is a small one.
    const size_t where = record.Below(4);
    for (size_t side = 0; side < sides_.size(); ++side) {
      if (where == 2 + side) continue;
      ReadEntry(kind, sides_[side], side == 0, record);
    }
  }

  // The record is a copy: both sides read the same choices.
  void ReadEntry(size_t kind, json& side, bool is_candidate, ByteReader record) {
    switch (kind) {
      case 0:
        return AddInterface(side, is_candidate, record);
      case 1:
        return AddAddress(side, record);
      case 2:
        return AddTimers(side, record);
      case 3:
        return AddVrf(side, record);
      case 4:
        return AddRoute(side, is_candidate, record);
      case 5:
        return AddOspfInterface(side, record);
      case 6:
        return AddOspfProcess(side, is_candidate, record);
      case 7:
        return AddOspfv3Interface(side, is_candidate, record);
      default:
        return AddMany(side, record);
    }
  }

  // The choice of this side; the other side's stands beside it.
  template <typename T, size_t N>
  static T OfSide(const std::array<T, N>& choices, bool is_candidate, ByteReader& record) {
    const T candidate = record.Of(choices);
    const T running = record.Of(choices);
    return is_candidate ? candidate : running;
  }

  static void AddInterface(json& side, bool is_candidate, ByteReader record) {
    const std::string kind = record.Of(kKinds);
    json& entry = Interface(side, kind, record.Of(kNames));
    SetText(entry, "vrf", OfSide(kVrfs, is_candidate, record));
    const int vlan = OfSide(kVlans, is_candidate, record);
    if (kind == "l3" && vlan != 0) entry["lower-layer-if"]["vlan"] = vlan;
  }

  static void AddAddress(json& side, ByteReader record) {
    const std::string kind = record.Of(kKinds);
    json& entry = Interface(side, kind, record.Of(kNames));
    const bool is_ipv6 = record.Below(2) == 1;
    const std::string text = record.Of(is_ipv6 ? kIpv6 : kIpv4).text;
    const std::string ip =
        text + "/" + std::to_string(record.Of(is_ipv6 ? kIpv6Lengths : kIpv4Lengths));
    if (is_ipv6) {
      Entry(entry["ipv6"]["address"], {{"ip", ip}});
    } else if (kind == "loopback") {
      Entry(entry["ipv4"]["address"], {{"ip", ip}});
    } else if (kind == "l3" && record.Below(2) == 1) {
      Entry(entry["ipv4"]["address"]["secondary"], {{"ip", ip}});
    } else {
      entry["ipv4"]["address"]["ip"] = ip;
    }
  }

  static void AddTimers(json& side, ByteReader record) {
    const std::string kind = record.Below(2) == 0 ? "l3" : "mgmt";
    json& timers = Interface(side, kind, record.Of(kNames))["ipv6"]["nd"]["ra"];
    timers = json::object();
    for (const char* leaf : {"max-interval", "min-interval", "lifetime"}) {
      const int seconds = record.Of(kSeconds);
      if (seconds >= 0) timers[leaf] = seconds;
    }
  }

  static void AddVrf(json& side, ByteReader record) {
    json& list = side["velmor-internal:internal"]["vrf-config"]["indexTOstring"];
    json& entry = Entry(list, {{"index", record.Below(4)}});
    SetText(entry, "vname", record.Of(kVrfs));
  }

  void AddRoute(json& side, bool is_candidate, ByteReader record) {
    const size_t fte_index = record.Below(4);
    const bool is_ipv6 = record.Below(2) == 1;
    const auto& pool = is_ipv6 ? kIpv6 : kIpv4;
    const std::string network = record.Of(pool).octets;
    const int length = record.Of(kRouteLengths);
    const size_t choice = record.Below(pool.size() + kOddOctets.size());
    const std::string next_hop =
        choice < pool.size() ? pool[choice].octets : kOddOctets[choice - pool.size()];
    Entry(Routes(side), RouteKeys(fte_index, is_ipv6, network, length, next_hop));
    const size_t output = record.Below(kShortOutput + kShortOutputs.size());
    if (output == 0) return;
    json& entry =
        Entry(side["velmor-static-route:rtmStaticRtEntry-global"], {{"fte-index", fte_index},
                                                                    {"network", network},
                                                                    {"prefix-length", length},
                                                                    {"next-hop", next_hop}});
    entry["interface-name"] = OutputName(output);
    if (is_candidate && OutputName(output).size() < 2) {
      scenario_.has_short_output_name = true;
    }
  }

  std::string OutputName(size_t output) const {
    if (output < kShortOutput) {
      const size_t choice = output - 1;
      return kKinds[choice / 16 % 3] + std::string("-") + kNames[choice % 16];
    }
    const std::string name = kShortOutputs[output - kShortOutput];
    return may_be_slow_ || name.size() >= 2 ? name : kShortOutputs.back();
  }

  static json& Routes(json& side) {
    return side["KX-RTM-MIB:KX-RTM-MIB"]["rtmStaticRtTable"]["rtmStaticRtEntry"];
  }

  static json RouteKeys(size_t fte_index, bool is_ipv6, const std::string& network, int length,
                        const std::string& next_hop) {
    const char* family = is_ipv6 ? "ipv6" : "ipv4";
    return {{"rtmStaticRtFteIndex", fte_index},     {"rtmStaticRtNetworkAddrType", family},
            {"rtmStaticRtNetworkAddr", network},    {"rtmStaticRtNetworkPrefixLen", length},
            {"rtmStaticRtNextHopAddrType", family}, {"rtmStaticRtNextHopAddr", next_hop}};
  }

  static void AddOspfInterface(json& side, ByteReader record) {
    const size_t id = record.Below(3);
    const size_t kind = record.Below(8 * kKinds.size());
    const char* separator = kind < 7 * kKinds.size() ? "-" : "";
    const std::string name =
        std::string(kKinds[kind % kKinds.size()]) + separator + record.Of(kNames);
    json& entry = Internal(side, "ospf-interface-l3",
                           {{"compound-id", id},
                            {"area", record.Of(kAreas)},
                            {"if-name", name},
                            {"if-address", record.Of(kIpv4).text}});
    const size_t length = record.Below(9);
    if (length > 0) entry["ospf-pm-ip-netmask"] = kIpv4Lengths[length - 1];
  }

  static void AddOspfProcess(json& side, bool is_candidate, ByteReader record) {
    json& entry = Internal(side, "ospf-index-to-proc-id", {{"compound-id", record.Below(3)}});
    const size_t process = record.Below(4);
    if (process > 0) entry["proc_id"] = process;
    SetText(entry, "vrf_name", OfSide(kVrfs, is_candidate, record));
  }

  static void AddOspfv3Interface(json& side, bool is_candidate, ByteReader record) {
    const size_t process = record.Below(3);
    std::string name = record.Of(kKinds) + std::string("-");
    name += record.Of(kNames);
    json& entry =
        Internal(side, "ospfv3-interface-l3",
                 {{"process", process}, {"area", record.Of(kAreas)}, {"ospfv3-pm-if-name", name}});
    const int vlan = OfSide(kVlans, is_candidate, record);
    if (vlan != 0) entry["ospfv3-pm-if-index"] = 1000000 + vlan;
  }

  // Around the limits, 256 interfaces and 1000 units of routes.
  void AddMany(json& side, ByteReader record) {
    const uint8_t what = record.Byte();
    const size_t more = record.Below(4);
    if (what != 'i' && what != 'r') return;
    scenario_.is_large = true;
    for (size_t i = 0; what == 'i' && i < 254 + more; ++i) {
      json& list = side["velmor-config:config"]["interface"]["velmor-ip-app:l3"];
      list.push_back({{"name", "many-" + std::to_string(i)}});
    }
    for (size_t i = 0; what == 'r' && i < 499 + more; ++i) {
      Routes(side).push_back(RouteKeys(4 + i, true, kIpv6[0].octets, 64, kIpv6[1].octets));
    }
  }

  void ReadCall(ByteReader record) {
    if (scenario_.calls.size() == kMaxCalls) return;
    CallPlan& call = scenario_.calls.emplace_back();
    call.opaque = record.Of(kPoints);
    call.fitting = record.Below(4) != 3;
    call.keypath = record.Byte();
    call.keypath = call.keypath * 256 + record.Byte();
    const size_t oddity = record.Below(16);
    if (oddity == 1) call.opaque += "_again";
    if (oddity == 2) call.opaque.pop_back();
    if (oddity >= 3 && oddity < 8) call.fault = static_cast<Fault>(oddity - 2);
  }

  bool may_be_slow_;
  Scenario scenario_;
  std::array<json, 2> sides_{json::object(), json::object()};  // candidate, running
};

}  // namespace

Scenario DecodeScenario(std::span<const uint8_t> bytes) { return Decoder(bytes).Take(); }

}  // namespace fuzz
