#include "config.h"

#include <netinet/in.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>

#include "confd_maapi.h"
#include "dotted_quad.h"
#include "list_walk.h"
#include "static_route_config.h"
#include "type_test.h"
#include "validate_logger.h"
#include "velmor-ip-app.h"
#include "vrfid/vrfid.h"
#include "ztmw.h"

namespace ip_application::config_valid {
namespace {

// The VRF of an interface or route that names none.
constexpr char kGlobalVrf[] = "global";

constexpr char kVrfConfigPath[] = "/velmor-internal:internal/velmor-internal:vrf-config";
constexpr char kL3Path[] = "/config/interface/ipapp:l3";
constexpr char kLoPath[] = "/config/interface/ipapp:loopback";
constexpr char kMgmtPath[] = "/config/interface/ipapp:mgmt";

// Keys of the OSPF interface list.
constexpr size_t kOspfCompoundId = 0;
constexpr size_t kOspfArea = 1;
constexpr size_t kOspfIntfName = 2;
constexpr size_t kOspfIntfAddr = 3;
constexpr unsigned int kOspfKeyCount = 4;

constexpr size_t kVrfNameSize = 256;       // bytes, with the zero behind the text
constexpr size_t kKeyTextSize = 256;       // bytes, with the zero behind the text
constexpr size_t kFaultMessageSize = 350;  // likewise

// The first N bytes of a C_BINARY; zero where there are none, and for any other type.
template <size_t N>
std::array<uint8_t, N> BinaryBytes(const confd_value_t& v) {
  std::array<uint8_t, N> bytes{};
  if (v.type == C_BINARY) {
    memcpy(bytes.data(), CONFD_GET_BINARY_PTR(&v), std::min<size_t>(N, CONFD_GET_BINARY_SIZE(&v)));
  }
  return bytes;
}

// Where maapi_get_elem puts a value, which is released on every way out, also when nothing was put.
class OwnedValue {
 public:
  OwnedValue() { CONFD_SET_NOEXISTS(&value_); }
  ~OwnedValue() { confd_free_value(&value_); }
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;

  confd_value_t* get() { return &value_; }

  // Up to the first zero byte. REQUIRES: a C_BUF was put.
  const char* text() const { return CONFD_GET_CBUFPTR(&value_); }

 private:
  confd_value_t value_;
};

std::string KeyText(const confd_value_t& key) {
  char text[kKeyTextSize];
  confd_pp_value(text, sizeof(text), &key);
  return text;
}

// Reports an unspecified address. `format` takes what identifies the place of the address.
void ReportUnspecified(const char* format, const std::string& place, const char* function,
                       int line) {
  char message[kFaultMessageSize];
  snprintf(message, sizeof(message), format, place.c_str());
  ztmw_gen_fault(0, function, "src/lib/config", line, message);
}

// Path of a leaf of one list entry. Deliberate: the key goes in as it is, without quoting.
std::string EntryPath(std::string_view list_path, const std::string& key, const char* suffix) {
  return std::string(list_path) + "{" + key + suffix;
}

uint32_t BindingHash(const OspfIf& record) {
  return NameIndex::HashOf(record.intf_name) ^
         (31 * NameIndex::HashOf(record.vrf_name) + record.process_id);
}

bool IsSameBinding(const OspfIf& a, const OspfIf& b) {
  return a.process_id == b.process_id && a.intf_name == b.intf_name && a.vrf_name == b.vrf_name;
}

}  // namespace

void GenericConfig::ReadConfigIfNeeded(ConfigAddrFamily family) {
  if (family != ConfigAddrFamily::IPv4 && family != ConfigAddrFamily::IPv6) return;
  bool& read = family == ConfigAddrFamily::IPv4 ? ipv4_read_ : ipv6_read_;
  if (read) return;
  ReadConfig(family);
  read = true;
}

bool GenericConfig::Exists(const std::string& path) const {
  return maapi_exists(sock_, trans_->thandle, "%s", path.c_str()) == 1;
}

nettypes::IPv4AddrMask GenericConfig::get_ipv4_addr_mask(const std::string& path) const {
  nettypes::IPv4AddrMask mask;
  confd_ipv4_prefix prefix;
  if (!Exists(path) || maapi_get_ipv4_and_plen_elem(sock_, trans_->thandle, &prefix, "%s",
                                                    path.c_str()) != CONFD_OK) {
    return mask;
  }
  mask.set_addr(nettypes::IPv4Addr(ntohl(prefix.ip.s_addr)));
  mask.set_prefix_len(prefix.len);
  return mask;
}

nettypes::IPv6AddrMask GenericConfig::get_ipv6_addr_mask(const std::string& path) const {
  nettypes::IPv6AddrMask mask;
  confd_ipv6_prefix prefix;
  if (!Exists(path) || maapi_get_ipv6_and_plen_elem(sock_, trans_->thandle, &prefix, "%s",
                                                    path.c_str()) != CONFD_OK) {
    return mask;
  }
  mask.set_addr(nettypes::IPv6Addr(std::to_array(prefix.ip6.s6_addr)));
  mask.set_prefix_len(prefix.len);
  return mask;
}

nettypes::IPv4Addr GenericConfig::get_ipv4_addr(const confd_value_t& v) const {
  const std::array<uint8_t, 4> bytes = BinaryBytes<4>(v);
  return nettypes::IPv4Addr(uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 |
                            uint32_t{bytes[2]} << 8 | uint32_t{bytes[3]});
}

nettypes::IPv6Addr GenericConfig::get_ipv6_addr(const confd_value_t& v) const {
  return nettypes::IPv6Addr(BinaryBytes<16>(v));
}

nettypes::IPv4AddrMask GenericConfig::get_ipv4_addr_mask(const confd_value_t& addr,
                                                         const confd_value_t& prefix) const {
  nettypes::IPv4AddrMask mask;
  if (addr.type != C_BINARY || prefix.type != C_INT32) return mask;
  // Deliberate: the line before leaves nothing for this test to find.
  IPAV_REQUIRE_TYPE(prefix, C_INT32, "(&prefix)->type == C_INT32", "src/lib/config", 164);
  mask.set_addr(get_ipv4_addr(addr));
  mask.set_prefix_len(static_cast<uint8_t>(CONFD_GET_INT32(&prefix)));
  return mask;
}

nettypes::IPv6AddrMask GenericConfig::get_ipv6_addr_mask(const confd_value_t& addr,
                                                         const confd_value_t& prefix) const {
  nettypes::IPv6AddrMask mask;
  if (addr.type != C_BINARY || prefix.type != C_INT32) return mask;
  // Deliberate: likewise.
  IPAV_REQUIRE_TYPE(prefix, C_INT32, "(&prefix)->type == C_INT32", "src/lib/config", 179);
  mask.set_addr(get_ipv6_addr(addr));
  mask.set_prefix_len(static_cast<uint8_t>(CONFD_GET_INT32(&prefix)));
  return mask;
}

limid_t GenericConfig::get_intf_lim_id(const std::string& path) const {
  confd_value_t confd_if_index;
  if (!Exists(path) ||
      maapi_get_elem(sock_, trans_->thandle, &confd_if_index, "%s", path.c_str()) != CONFD_OK) {
    return {};
  }
  IPAV_REQUIRE_TYPE(confd_if_index, C_INT32, "(&confd_if_index)->type == C_INT32", "src/lib/config",
                    196);
  return limid_l3_vlan_from_components(CONFD_GET_INT32(&confd_if_index));
}

std::string GenericConfig::get_vrf_name(const std::string& path) const {
  if (!Exists(path)) return kGlobalVrf;
  OwnedValue l3_vrf_name;
  if (maapi_get_elem(sock_, trans_->thandle, l3_vrf_name.get(), "%s", path.c_str()) != CONFD_OK) {
    return "";
  }
  IPAV_REQUIRE_TYPE(*l3_vrf_name.get(), C_BUF, "(&l3_vrf_name)->type == C_BUF", "src/lib/config",
                    214);
  return l3_vrf_name.text();
}

std::string GenericConfig::get_vrf_name_from_id(const confd_value_t& id) const {
  if (id.type != C_UINT32) return kGlobalVrf;
  const std::string path = std::string(kVrfConfigPath) + "/indexTOstring{" +
                           std::to_string(IdVrfFromComponent(CONFD_GET_UINT32(&id))) + "}/vname";
  // The path is itself the format; it holds no "%".
  if (maapi_exists(sock_, trans_->thandle, path.c_str()) != 1) return kGlobalVrf;
  OwnedValue vrf;
  if (maapi_get_elem(sock_, trans_->thandle, vrf.get(), path.c_str()) == CONFD_ERR) {
    return kGlobalVrf;
  }
  IPAV_REQUIRE_TYPE(*vrf.get(), C_BUF, "(&vrf)->type == C_BUF", "src/lib/config", 236);
  return vrf.text();
}

std::string GenericConfig::get_hex_from_bin(const confd_value_t& v) const {
  if (v.type != C_BINARY) return "";
  static constexpr char kDigits[] = "0123456789abcdef";
  const unsigned char* bytes = CONFD_GET_BINARY_PTR(&v);
  std::string text;
  unsigned int i = 0;
  // Deliberate: the first byte is written whatever the size. ConfD keeps a zero byte behind the
  // data, so an empty binary reads "00".
  do {
    if (i > 0) text.push_back(':');
    text.push_back(kDigits[bytes[i] >> 4]);
    text.push_back(kDigits[bytes[i] & 0x0f]);
  } while (++i < CONFD_GET_BINARY_SIZE(&v));
  return text;
}

std::list<std::string> GenericConfig::get_key_list(const std::string& list_path) const {
  std::list<std::string> keys;
  if (!Exists(list_path)) return keys;
  for (ListWalk walk(sock_, trans_->thandle, list_path); walk.Next();) {
    keys.push_back(KeyText(walk.keys()[0]));
  }
  return keys;
}

std::list<std::vector<std::string>> GenericConfig::get_key_list(const std::string& list_path,
                                                                unsigned int nkeys) const {
  std::list<std::vector<std::string>> keys;
  if (!Exists(list_path)) return keys;
  for (ListWalk walk(sock_, trans_->thandle, list_path); walk.Next();) {
    std::vector<std::string>& texts = keys.emplace_back();
    for (unsigned int i = 0; i < nkeys; ++i) texts.push_back(KeyText(walk.keys()[i]));
  }
  return keys;
}

std::list<nettypes::IPv4AddrMask> GenericConfig::get_intf_ipv4_addr_mask_list(
    const std::string& list_path) const {
  std::list<nettypes::IPv4AddrMask> masks;
  for (const std::string& key : get_key_list(list_path)) {
    const nettypes::IPv4AddrMask mask = get_ipv4_addr_mask(EntryPath(list_path, key, "}/ip"));
    if (mask.IsUnspecified()) {
      ReportUnspecified("Unspecified IPv4 address for key '%s'", key,
                        "get_intf_ipv4_addr_mask_list", 301);
    } else {
      masks.push_back(mask);
    }
  }
  return masks;
}

std::list<nettypes::IPv6AddrMask> GenericConfig::get_intf_ipv6_addr_mask_list(
    const std::string& list_path) const {
  std::list<nettypes::IPv6AddrMask> masks;
  for (const std::string& key : get_key_list(list_path)) {
    const nettypes::IPv6AddrMask mask = get_ipv6_addr_mask(EntryPath(list_path, key, "}/ip"));
    if (mask.IsUnspecified()) {
      ReportUnspecified("Unspecified IPv6 address for key '%s'", key,
                        "get_intf_ipv6_addr_mask_list", 327);
    } else {
      masks.push_back(mask);
    }
  }
  return masks;
}

size_t InterfaceIndex::FindIndexed(const std::string& name) const {
  return positions_.Find(name, [&](size_t i) { return interfaces_[i].name == name; });
}

size_t InterfaceIndex::Find(const std::string& name) {
  for (; indexed_ < interfaces_.size(); ++indexed_) {
    const std::string& added = interfaces_[indexed_].name;
    // Of entries with one name the first counts.
    if (FindIndexed(added) == kNone) positions_.Add(added, indexed_);
  }
  return FindIndexed(name);
}

void InterfaceConfig::MergeConfigAndInsert(const Interface& intf) {
  const size_t position = index_.Find(intf.name);
  if (position == InterfaceIndex::kNone) {
    interfaces_.push_back(intf);
    return;
  }
  Interface& known = interfaces_[position];
  if (known.ipv4_addr_list.empty() && !intf.ipv4_addr_list.empty()) {
    known.ipv4_addr_list = intf.ipv4_addr_list;
  } else if (known.ipv6_addr_list.empty() && !intf.ipv6_addr_list.empty()) {
    known.ipv6_addr_list = intf.ipv6_addr_list;
  }
}

void L3Config::ReadConfig(ConfigAddrFamily family) {
  for (const std::string& key : get_key_list(kL3Path)) {
    const auto path = [&key](const char* suffix) { return EntryPath(kL3Path, key, suffix); };
    Interface intf;
    if (family == ConfigAddrFamily::IPv4) {
      const nettypes::IPv4AddrMask primary = get_ipv4_addr_mask(path("}/ipv4/address/ip"));
      intf.ipv4_addr_list = get_intf_ipv4_addr_mask_list(path("}/ipv4/address/secondary"));
      if (!primary.IsUnspecified()) intf.ipv4_addr_list.push_front(primary);
    } else if (family == ConfigAddrFamily::IPv6) {
      intf.ipv6_addr_list = get_intf_ipv6_addr_mask_list(path("}/ipv6/address"));
    }
    intf.lim_id = get_intf_lim_id(path("}/lower-layer-if/vlan"));
    intf.vrf_name = get_vrf_name(path("}/vrf"));
    intf.name = "l3 " + key;
    MergeConfigAndInsert(intf);
  }
}

void LoConfig::ReadConfig(ConfigAddrFamily family) {
  for (const std::string& key : get_key_list(kLoPath)) {
    const auto path = [&key](const char* suffix) { return EntryPath(kLoPath, key, suffix); };
    Interface intf;
    if (family == ConfigAddrFamily::IPv4) {
      intf.ipv4_addr_list = get_intf_ipv4_addr_mask_list(path("}/ipv4/address"));
    } else if (family == ConfigAddrFamily::IPv6) {
      intf.ipv6_addr_list = get_intf_ipv6_addr_mask_list(path("}/ipv6/address"));
    }
    intf.vrf_name = get_vrf_name(path("}/vrf"));
    intf.name = "loopback " + key;
    MergeConfigAndInsert(intf);
  }
}

void MgmtConfig::ReadConfig(ConfigAddrFamily family) {
  for (const std::string& key : get_key_list(kMgmtPath)) {
    const auto path = [&key](const char* suffix) { return EntryPath(kMgmtPath, key, suffix); };
    Interface intf;
    if (family == ConfigAddrFamily::IPv4) {
      const nettypes::IPv4AddrMask address = get_ipv4_addr_mask(path("}/ipv4/address/ip"));
      if (address.IsUnspecified()) {
        // Deliberate: the text names the unspecified address and not the key.
        ReportUnspecified("Unspecified IPv4 address for key '%s'", address.to_string(),
                          "ReadConfig", 475);
      } else {
        intf.ipv4_addr_list.push_back(address);
      }
    } else if (family == ConfigAddrFamily::IPv6) {
      intf.ipv6_addr_list = get_intf_ipv6_addr_mask_list(path("}/ipv6/address"));
    }
    intf.vrf_name = get_vrf_name(path("}/vrf"));
    intf.name = "mgmt " + key;
    MergeConfigAndInsert(intf);
  }
}

void Ospfv2Config::ReadConfig(ConfigAddrFamily family) {
  if (family != ConfigAddrFamily::IPv4) return;
  // Merged once more, an address would count twice, and one that was added would go unseen.
  std::multiset<std::vector<std::string>> merged(merged_keys_.begin(), merged_keys_.end());
  auto entries = get_key_list(interface_list_path_, kOspfKeyCount);
  for (auto next = entries.begin(); next != entries.end();) {
    const auto entry = next++;
    std::vector<std::string>& keys = *entry;
    const std::string& keyed_name = keys[kOspfIntfName];
    const size_t hyphen = keyed_name.find('-');
    if (hyphen == std::string::npos) continue;
    const auto compound_id = static_cast<uint32_t>(std::stoul(keys[kOspfCompoundId]));
    OspfIf record;
    record.area = ParseIpv4Addr(keys[kOspfArea]);
    const nettypes::IPv4Addr addr = ParseIpv4Addr(keys[kOspfIntfAddr]);
    const uint8_t prefix_len = GetIpv4Netmask(compound_id, record.area, keyed_name, addr);
    record.addresses.emplace_back(addr.to_uint32(), prefix_len);
    record.intf_name = keyed_name;
    record.intf_name[hyphen] = ' ';  // Deliberate: only the first hyphen
    record.process_id = GetProcessIdFromCompoundId(compound_id);
    record.vrf_name = GetVrfName(compound_id);
    // With what was read of it: another transaction may say otherwise of the same entry.
    keys.insert(keys.end(),
                {std::to_string(prefix_len), std::to_string(record.process_id), record.vrf_name});
    const auto earlier = merged.find(keys);
    if (earlier != merged.end()) {
      merged.erase(earlier);  // another entry may have the same texts, which are cut
      continue;
    }
    MergeConfigAndInsert(record);
    merged_keys_.splice(merged_keys_.end(), entries, entry);
  }
  merged_keys_.clear();
}

uint8_t Ospfv2Config::GetIpv4Netmask(uint32_t compound_id, nettypes::IPv4Addr area,
                                     const std::string& intf_name, nettypes::IPv4Addr addr) const {
  uint8_t prefix_len = 0;
  if (maapi_get_u_int8_elem(sock_, trans_->thandle, &prefix_len,
                            "%s{%u %s %s %s}/ospf-pm-ip-netmask", interface_list_path_.c_str(),
                            compound_id, area.to_string().c_str(), intf_name.c_str(),
                            addr.to_string().c_str()) != CONFD_OK) {
    ValidateLogger::Log("Failed to get IPv4 netmask from process ID %u!", compound_id);
    return 0;
  }
  return prefix_len;
}

uint32_t Ospfv2Config::GetProcessIdFromCompoundId(uint32_t compound_id) const {
  uint32_t process_id = 0;
  if (maapi_get_u_int32_elem(sock_, trans_->thandle, &process_id, "%s{%u}/proc_id",
                             index_list_path_.c_str(), compound_id) != CONFD_OK) {
    ValidateLogger::Log("Failed to get process ID from compound ID %u!", compound_id);
    return 0;
  }
  return process_id;
}

std::string Ospfv2Config::GetVrfName(uint32_t compound_id) const {
  char name[kVrfNameSize] = {};
  if (maapi_get_str_elem(sock_, trans_->thandle, name, sizeof(name), "%s{%u}/vrf_name",
                         index_list_path_.c_str(), compound_id) != CONFD_OK) {
    ValidateLogger::Log("Failed to get VRF name from compound ID %u!", compound_id);
    return "";
  }
  return name;
}

OspfIf* Ospfv2Config::FindRecord(const OspfIf& wanted) {
  const auto position_of = [this](const OspfIf& record, uint32_t hash) {
    return positions_.Find(hash, [&](size_t i) { return IsSameBinding(*records_[i], record); });
  };
  // From the end, so that nothing is walked when all records are indexed.
  const size_t missing = table_.size() - records_.size();
  for (auto added = std::prev(table_.end(), static_cast<ptrdiff_t>(missing)); added != table_.end();
       ++added) {
    records_.push_back(added->get());
  }
  // Behind records_, so that no position without a record is ever in the index.
  for (; indexed_ < records_.size(); ++indexed_) {
    const OspfIf& added = *records_[indexed_];
    const uint32_t hash = BindingHash(added);
    // Of records of one binding the first counts.
    if (position_of(added, hash) == NameIndex::kNone) positions_.Add(hash, indexed_);
  }
  const size_t position = position_of(wanted, BindingHash(wanted));
  return position == NameIndex::kNone ? nullptr : records_[position];
}

void Ospfv2Config::MergeConfigAndInsert(OspfIf& record) {
  OspfIf* known = FindRecord(record);
  if (known == nullptr) {
    table_.push_back(std::make_shared<OspfIf>(record));
  } else {
    known->addresses.push_back(record.addresses.front());
  }
}

Config::Config()
    : static_route_config_(std::make_unique<StaticRouteConfig>()),
      intf_configs_{&mgmt_config_, &l3_config_, &lo_config_} {}

// The route table goes first, the other tables in reverse order of construction.
Config::~Config() { static_route_config_.reset(); }

std::array<GenericConfig*, 5> Config::tables() {
  return {&ospfv2_config_, static_route_config_.get(), &l3_config_, &lo_config_, &mgmt_config_};
}

void Config::set_sock(int sock) {
  for (GenericConfig* table : tables()) table->sock_ = sock;
}

void Config::set_confd_trans(confd_trans_ctx* tctx) {
  for (GenericConfig* table : tables()) table->trans_ = tctx;
}

void Config::ReadStaticRouteConfig(ConfigAddrFamily family) {
  static_route_config_->ReadConfigIfNeeded(family);
}

InterfaceConfig* Config::intf_by_type(InterfaceType type) const {
  const auto table =
      std::find_if(intf_configs_.begin(), intf_configs_.end(),
                   [type](const InterfaceConfig* candidate) { return candidate->type_ == type; });
  return table == intf_configs_.end() ? nullptr : *table;
}

InterfaceType Config::intf_type_from_confd_path(confd_hkeypath_t* keypath) {
  if (keypath->len <= 0) return InterfaceType::Invalid;
  IPAV_REQUIRE_TYPE(keypath->v[0][0], C_XMLTAG, "(&keypath->v[0][0])->type == C_XMLTAG",
                    "src/lib/config", 52);
  switch (CONFD_GET_XMLTAG(&keypath->v[0][0])) {
    case ipapp_mgmt:
      return InterfaceType::Mgmt;
    case ipapp_l3:
      return InterfaceType::L3;
    case ipapp_loopback:
      return InterfaceType::Lo;
    default:
      return InterfaceType::Invalid;
  }
}

}  // namespace ip_application::config_valid
