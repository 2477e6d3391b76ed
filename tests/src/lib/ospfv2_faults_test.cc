// Every single call of a read of the OSPFv2 table made to fail: what then is in the table, and what
// was asked and logged, against a reader of a few lines that knows the configuration and asks
// nobody.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "config.h"
#include "support/device.h"
#include "support/ospf_records.h"
#include "support/table_fixture.h"

namespace ip_application::config_valid {
namespace {

using tests::Device;
using tests::OspfUse;

using Lines = std::vector<std::string>;

struct Configured {
  uint32_t id;
  std::string area;
  std::string keyed_name;
  std::string address;
  int length;
};

struct ConfiguredProcess {
  uint32_t id;
  uint32_t process;
  std::string vrf;
};

// In key order. Merged, skipped, with unknown process, of both kinds.
const std::vector<Configured> kEntries = {
    {1, "0.0.0.0", "l3-7", "10.0.0.1", 24},       {1, "0.0.0.0", "l3-7", "10.0.0.2", 32},
    {1, "0.0.0.5", "l3-7", "10.0.1.1", 0},        {2, "0.0.0.0", "l3-7", "10.0.0.1", 24},
    {2, "0.0.0.0", "loopback-0", "10.0.3.1", 32}, {2, "0.0.0.0", "mgmt", "10.0.2.1", 24},
    {3, "0.0.0.0", "loopback-0", "10.0.3.1", 32}, {9, "0.0.0.0", "l3-a-b", "10.0.4.1", 31},
};

const std::vector<ConfiguredProcess> kProcesses = {
    {1, 10, "red"}, {2, 10, "blue"}, {3, 11, "blue"}};

// The reader as it is described. The call at position `failing` fails.
class Model {
 public:
  explicit Model(size_t failing) : failing_(failing) { Read(); }

  std::vector<OspfUse> records;
  Lines calls;
  Lines lines;

 private:
  bool Call(const std::string& call) {
    calls.push_back(call);
    return calls.size() - 1 != failing_;
  }

  void Read() {
    if (!Call("maapi_exists /internal/ospf-interface-l3")) return;
    const bool open = Call("maapi_init_cursor /internal/ospf-interface-l3");
    size_t read = 0;
    while (Call("maapi_get_next") && open && read < kEntries.size()) ++read;
    Call("maapi_destroy_cursor");
    for (size_t i = 0; i < read; ++i) ReadEntry(kEntries[i]);
  }

  void ReadEntry(const Configured& entry) {
    if (entry.keyed_name.find('-') == std::string::npos) return;
    const std::string id = std::to_string(entry.id);
    const auto process =
        std::find_if(kProcesses.begin(), kProcesses.end(),
                     [&entry](const ConfiguredProcess& p) { return p.id == entry.id; });
    const bool known = process != kProcesses.end();
    OspfUse use{
        .name = entry.keyed_name, .addresses = {}, .process = 0, .vrf = "", .area = entry.area};
    use.name[use.name.find('-')] = ' ';

    int length = entry.length;
    if (!Call("maapi_get_u_int8_elem /internal/ospf-interface-l3{" + id + " " + entry.area + " " +
              entry.keyed_name + " " + entry.address + "}/ospf-pm-ip-netmask")) {
      length = 0;
      lines.push_back("Failed to get IPv4 netmask from process ID " + id + "!");
    }
    use.addresses = {entry.address + "/" + std::to_string(length)};
    if (Call("maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{" + id + "}/proc_id") &&
        known) {
      use.process = process->process;
    } else {
      lines.push_back("Failed to get process ID from compound ID " + id + "!");
    }
    if (Call("maapi_get_str_elem /internal/ospf-index-to-proc-id{" + id + "}/vrf_name") && known) {
      use.vrf = process->vrf;
    } else {
      lines.push_back("Failed to get VRF name from compound ID " + id + "!");
    }
    Merge(use);
  }

  void Merge(const OspfUse& use) {
    for (OspfUse& record : records) {
      if (record.name == use.name && record.process == use.process && record.vrf == use.vrf) {
        record.addresses.push_back(use.addresses.front());
        return;
      }
    }
    records.push_back(use);
  }

  const size_t failing_;
};

constexpr size_t kNone = static_cast<size_t>(-1);

class Ospfv2Faults : public tests::TableTest {
 protected:
  Ospfv2Faults() { framework::SetLogEnabled(true); }

  // One full read in a transaction of its own; when it is closed, nothing may be left.
  Lines ExpectReadAsModelled(size_t failing) {
    std::vector<tests::OspfEntry> entries;
    for (const Configured& c : kEntries) {
      entries.push_back({c.id, c.area, c.keyed_name, c.address, c.length});
    }
    std::vector<tests::OspfProcess> processes;
    for (const ConfiguredProcess& p : kProcesses) {
      processes.push_back({p.id, p.process, p.vrf});
    }
    Configure(Device{.ospf = entries, .ospf_processes = processes});
    framework::TakeLogLines();
    TakeCalls();
    FailCall(failing);
    Ospfv2Config table;
    Bind(table);
    table.ReadConfigIfNeeded(ConfigAddrFamily::IPv4);
    EXPECT_TRUE(table.ipv4_read_);

    const Model model(failing);
    Lines records;
    for (const OspfUse& use : model.records) records.push_back(tests::TextOf(use.Record()));
    const Lines calls = TakeCalls();
    EXPECT_EQ(calls, model.calls);
    EXPECT_EQ(tests::TextsOf(table), records);
    EXPECT_EQ(framework::TakeLogLines(), model.lines);
    EXPECT_TRUE(framework::TakeFaults().empty());
    return calls;
  }
};

TEST_F(Ospfv2Faults, OfEveryCallGiveTheDefault) {
  const Lines all_calls = ExpectReadAsModelled(kNone);
  // The walk, and three look-ups of every entry but the one without hyphen.
  ASSERT_EQ(all_calls.size(), 3 + (kEntries.size() + 1) + 3 * (kEntries.size() - 1));
  int faults = 0;
  for (size_t failing = 0; failing < all_calls.size(); ++failing) {
    if (all_calls[failing] == "maapi_destroy_cursor") continue;  // cannot fail
    ++faults;
    SCOPED_TRACE("call " + std::to_string(failing) + ", " + all_calls[failing]);
    ExpectReadAsModelled(failing);
    if (HasFailure()) break;
  }
  RecordProperty("injected_faults", faults);
  std::cout << "OSPFv2 table: " << faults << " faults injected\n";
}

}  // namespace
}  // namespace ip_application::config_valid
