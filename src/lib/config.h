// The configuration snapshot: what the checks know about the candidate configuration.
//
// A Config belongs to the daemon, from lib_init to lib_finish. It holds five tables; each is read
// from ConfD when a check first asks for it, one address family at a time, through the socket and
// transaction bound at that moment. Nothing here is locked: calls may not overlap.
#ifndef SRC_LIB_CONFIG_H_
#define SRC_LIB_CONFIG_H_

#include <array>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "confd_dp.h"
#include "confd_lib.h"
#include "limid/limid.h"
#include "name_index.h"
#include "nettypes/ipv4.h"
#include "nettypes/ipv6.h"

namespace ip_application::config_valid {

class StaticRouteConfig;

/// The address family that a read or a check is about.
enum class ConfigAddrFamily : int { IPv4 = 4, IPv6 = 6 };

/// The interface lists of the data model. Invalid: a keypath that ends at none of them.
enum class InterfaceType : int { Mgmt = 0, L3 = 1, Lo = 2, Invalid = 3 };

/// Base of every table. Part of a Config, which binds it to each transaction before a check runs.
class GenericConfig {
 public:
  GenericConfig() = default;
  virtual ~GenericConfig() = default;
  GenericConfig(const GenericConfig&) = delete;
  GenericConfig& operator=(const GenericConfig&) = delete;

  /// Reads the table's part for `family` from ConfD and merges it into the table. Called by
  /// ReadConfigIfNeeded.
  virtual void ReadConfig(ConfigAddrFamily family) = 0;

  /// Reads the part for `family` unless that was done before; a number that is no family reads
  /// nothing. A part is read at most once in the life of the table, also when the table was bound
  /// to another transaction since. An exception of ReadConfig passes through, and the next call
  /// reads again.
  void ReadConfigIfNeeded(ConfigAddrFamily family);

  // Reads of single values and key lists from the candidate, through sock_ and trans_. Paths are
  // absolute keypath texts. A value that is absent or cannot be read is no error: each read gives
  // the default that it names. A value of another ConfD type than the data model promises ends the
  // process.

  /// The address and prefix length at `path`; the unspecified mask when absent or unreadable.
  nettypes::IPv4AddrMask get_ipv4_addr_mask(const std::string& path) const;
  nettypes::IPv6AddrMask get_ipv6_addr_mask(const std::string& path) const;

  /// The address in a C_BINARY of 4 or 16 bytes in network byte order; the all-zero address for any
  /// other type. Missing bytes count as zero, bytes behind the address do not count.
  nettypes::IPv4Addr get_ipv4_addr(const confd_value_t& v) const;
  nettypes::IPv6Addr get_ipv6_addr(const confd_value_t& v) const;

  /// The same with the prefix length in a C_INT32, of which the low eight bits count; the
  /// unspecified mask when either has another type.
  nettypes::IPv4AddrMask get_ipv4_addr_mask(const confd_value_t& addr,
                                            const confd_value_t& prefix) const;
  nettypes::IPv6AddrMask get_ipv6_addr_mask(const confd_value_t& addr,
                                            const confd_value_t& prefix) const;

  /// Identifier of the L3 interface on the VLAN at `path`, a C_INT32; zero when absent or
  /// unreadable.
  limid_t get_intf_lim_id(const std::string& path) const;

  /// The VRF name at `path`, a C_BUF, up to its first zero byte. "global" when the leaf does not
  /// exist; empty when it exists and cannot be read.
  std::string get_vrf_name(const std::string& path) const;

  /// Name of the VRF behind a forwarding-table index.
  ///
  /// @param id  C_UINT32; any other type gives "global" without a read
  /// @returns  "global" also when the index has no name
  /// Source: candidate,
  /// /velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{index}/vname.
  std::string get_vrf_name_from_id(const confd_value_t& id) const;

  /// Bytes of a C_BINARY as two lower-case hex digits each, joined by ":" ("0a:ff"); empty for any
  /// other type.
  std::string get_hex_from_bin(const confd_value_t& v) const;

  /// First key of every entry of a list as text of at most 255 bytes, in the list's order.
  std::list<std::string> get_key_list(const std::string& list_path) const;

  /// The first `nkeys` keys of every entry, likewise. The list may have fewer: how many it has is
  /// not looked at. REQUIRES: at most MAXKEYLEN.
  std::list<std::vector<std::string>> get_key_list(const std::string& list_path,
                                                   unsigned int nkeys) const;

  /// The leaf `ip` of every entry of an address list, in the list's order. An entry whose address
  /// is unspecified is left out and reported as a fault.
  std::list<nettypes::IPv4AddrMask> get_intf_ipv4_addr_mask_list(
      const std::string& list_path) const;
  std::list<nettypes::IPv6AddrMask> get_intf_ipv6_addr_mask_list(
      const std::string& list_path) const;

  int sock_ = -1;                     ///< MAAPI socket, -1 until bound
  confd_trans_ctx* trans_ = nullptr;  ///< its thandle goes into every MAAPI call; null until bound
  bool ipv4_read_ = false;
  bool ipv6_read_ = false;

 private:
  bool Exists(const std::string& path) const;
};

/// One interface. Copyable.
struct Interface {
  /// Kind word ("l3", "loopback" or "mgmt"), one blank, list key: "l3 7". Begins every message
  /// about the interface and identifies it inside its table.
  std::string name;
  /// In configuration order, for an L3 interface the primary address first. Empty until read for
  /// IPv4.
  std::list<nettypes::IPv4AddrMask> ipv4_addr_list;
  /// In configuration order. Empty until read for IPv6.
  std::list<nettypes::IPv6AddrMask> ipv6_addr_list;
  /// "global" when the configuration names none.
  std::string vrf_name;
  /// The lower layer of an L3 interface; zero for the other kinds and for an L3 interface without
  /// VLAN.
  limid_t lim_id{};
};

/// Where in a table the interfaces stand, by name. Looks at the table when it is asked: entries may
/// have been appended since. Belongs to one user, and lives no longer than the table.
class InterfaceIndex {
 public:
  static constexpr size_t kNone = NameIndex::kNone;

  explicit InterfaceIndex(const std::vector<Interface>& interfaces) : interfaces_(interfaces) {}
  InterfaceIndex(const InterfaceIndex&) = delete;
  InterfaceIndex& operator=(const InterfaceIndex&) = delete;

  /// The position of the first interface of that name, or kNone.
  size_t Find(const std::string& name);

 private:
  size_t FindIndexed(const std::string& name) const;

  const std::vector<Interface>& interfaces_;
  NameIndex positions_;  // of the first `indexed_` entries
  size_t indexed_ = 0;
};

/// A table of interfaces of one kind.
class InterfaceConfig : public GenericConfig {
 public:
  explicit InterfaceConfig(InterfaceType type) : type_(type) {}

  /// Adds what was read of one interface for one address family. A new name is appended. Of a known
  /// one only a list of addresses that is still empty is filled, the IPv4 list before the IPv6
  /// list and never both; everything else stays as it was first read.
  void MergeConfigAndInsert(const Interface& intf);

  std::vector<Interface>
      interfaces_;  ///< in the order of first insertion; names are unique, nothing is removed
  const InterfaceType type_;

 private:
  InterfaceIndex index_{interfaces_};
};

/// The list /config/interface/l3.
class L3Config : public InterfaceConfig {
 public:
  L3Config() : InterfaceConfig(InterfaceType::L3) {}
  void ReadConfig(ConfigAddrFamily family) override;
};

/// The list /config/interface/loopback.
class LoConfig : public InterfaceConfig {
 public:
  LoConfig() : InterfaceConfig(InterfaceType::Lo) {}
  void ReadConfig(ConfigAddrFamily family) override;
};

/// The list /config/interface/mgmt.
class MgmtConfig : public InterfaceConfig {
 public:
  MgmtConfig() : InterfaceConfig(InterfaceType::Mgmt) {}
  void ReadConfig(ConfigAddrFamily family) override;
};

/// One interface that an OSPFv2 process uses. Held by shared pointer.
class OspfIf {
 public:
  virtual ~OspfIf() = default;

  uint32_t process_id = 0;  ///< number of the process as configured; 0 when unknown
  std::string vrf_name;     ///< of the process; empty when unknown
  nettypes::IPv4Addr area;
  std::string intf_name;                        ///< in the form of Interface::name
  std::list<nettypes::IPv4AddrMask> addresses;  ///< that the process uses, in the order met
};

/// The interfaces that OSPFv2 processes use.
class Ospfv2Config : public GenericConfig {
 public:
  /// Fills the table from the interface list; reads nothing for IPv6. Entries whose name key names
  /// no kind of interface, because it has no hyphen, are left out. What was merged before an
  /// exception stays; the next call reads all entries again and merges those that were not merged,
  /// or that read otherwise now.
  ///
  /// @throws std::invalid_argument  a compound id is no number
  /// @throws std::out_of_range  it is 2^64 or more; of a smaller one the low 32 bits count
  /// @throws boost::system::system_error  an area or address is no dotted quad
  /// Source: candidate, /internal/ospf-interface-l3 {compound-id area name address}.
  void ReadConfig(ConfigAddrFamily family) override;

  /// Prefix length of one address that an OSPFv2 process uses.
  ///
  /// @param compound_id  process index, the first key of the interface list
  /// @param intf_name    interface name as keyed, hyphen form ("l3-7")
  /// @returns  bits, 0 to 32; 0 when the leaf cannot be read, after one debug line
  /// Source: candidate, /internal/ospf-interface-l3{id area name address}/ospf-pm-ip-netmask.
  uint8_t GetIpv4Netmask(uint32_t compound_id, nettypes::IPv4Addr area,
                         const std::string& intf_name, nettypes::IPv4Addr addr) const;

  /// Number of the process behind a compound id; 0 when it cannot be read, after one debug line.
  /// Source: candidate, /internal/ospf-index-to-proc-id{id}/proc_id.
  uint32_t GetProcessIdFromCompoundId(uint32_t compound_id) const;

  /// VRF of the process behind a compound id, at most 255 bytes; empty when it cannot be read,
  /// after one debug line.
  /// Source: candidate, /internal/ospf-index-to-proc-id{id}/vrf_name.
  std::string GetVrfName(uint32_t compound_id) const;

  /// Adds a freshly read record. When a record of the same interface, process and VRF is there, its
  /// addresses get the first address of the new one, and its area stays.
  void MergeConfigAndInsert(OspfIf& record);

  std::list<std::shared_ptr<OspfIf>> table_;  ///< in the order of insertion
  const std::string interface_list_path_ = "/internal/ospf-interface-l3";
  const std::string index_list_path_ = "/internal/ospf-index-to-proc-id";

 private:
  OspfIf* FindRecord(const OspfIf& wanted);

  // Key texts of the entries that were merged by a read which an exception ended, and behind them
  // what was read of each.
  std::list<std::vector<std::string>> merged_keys_;

  // The first records of table_, and of these the first `indexed_` by interface, process and VRF;
  // the rest is added when a record is looked up.
  std::vector<OspfIf*> records_;
  NameIndex positions_;
  size_t indexed_ = 0;
};

/// The snapshot. Checks reach the tables directly as members. Tables are never cleared: a fresh
/// picture of the configuration takes a fresh Config.
class Config {
 public:
  Config();
  ~Config();
  Config(const Config&) = delete;
  Config& operator=(const Config&) = delete;

  /// Bind every table. What a table has read stays.
  void set_sock(int sock);
  void set_confd_trans(confd_trans_ctx* tctx);

  /// ReadConfigIfNeeded of the static route table.
  void ReadStaticRouteConfig(ConfigAddrFamily family);

  /// The interface table of that kind, owned by this Config; null for Invalid.
  InterfaceConfig* intf_by_type(InterfaceType type) const;

  /// The interface list at which a keypath ends.
  ///
  /// @param keypath  v[0][0] must be a C_XMLTAG, the tag of a list without keys; otherwise the
  ///                 process ends. Its namespace plays no part.
  /// @returns Invalid for an empty keypath and for any other tag.
  static InterfaceType intf_type_from_confd_path(confd_hkeypath_t* keypath);

  // In the order of construction.
  Ospfv2Config ospfv2_config_;
  std::unique_ptr<StaticRouteConfig> static_route_config_;  ///< never null
  L3Config l3_config_;
  LoConfig lo_config_;
  MgmtConfig mgmt_config_;
  std::vector<InterfaceConfig*> intf_configs_;  ///< management, L3, loopback: the order of searches

 private:
  std::array<GenericConfig*, 5> tables();
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_CONFIG_H_
