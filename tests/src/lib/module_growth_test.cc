// The module loaded, used and unloaded over and over in one process: nothing is left of it.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "confd/call_count.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "framework/host.h"
#include "store/snapshot.h"
#include "support/data_model.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();
constexpr int kWarmUp = 100;
constexpr int kRounds = 1000;  // of two lives, one with an acceptance and one with a refusal

// What a process holds.
struct Holdings {
  long resident_pages = 0;
  long mappings = 0;
  long descriptors = 0;
  int64_t values = 0;  // confd values that are not released
};

Holdings Now() {
  Holdings now;
  long total_pages = 0;
  std::ifstream("/proc/self/statm") >> total_pages >> now.resident_pages;
  std::ifstream maps("/proc/self/maps");
  now.mappings = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
  const std::filesystem::directory_iterator open("/proc/self/fd");
  now.descriptors = std::distance(begin(open), end(open));
  now.values = confd::OutstandingValues();
  return now;
}

// One life of the module: what ipvald does for each check, in a process of its own there.
class ModuleLife {
 public:
  ModuleLife() : module_(OpenModule()) {
    EXPECT_EQ(module_.lib_init(&config_), 0);
    registry_.Register("ip_app_validation", config_);
  }
  ~ModuleLife() {
    EXPECT_EQ(module_.lib_finish(&config_), 0);
    EXPECT_EQ(dlclose(module_.handle), 0);
    framework::TakeLogLines();
  }
  ModuleLife(const ModuleLife&) = delete;
  ModuleLife& operator=(const ModuleLife&) = delete;

  // The verdict of the point on IPv4 addresses.
  std::string Validate(const std::shared_ptr<const store::Snapshot>& candidate) {
    confd::Database datastore(store::Snapshot::Empty(DataModel()));
    framework::Daemon daemon{datastore.OpenSocket(), datastore.OpenSocket()};
    const int thandle = datastore.StartTransaction(candidate);
    datastore.Attach(daemon.maapi_socket, thandle);
    confd::Keypath keypath(*candidate, "/config/interface/l3");
    confd_value_t value{};
    CONFD_SET_XMLTAG(&value, 0, 0);
    std::string opaque = "ipv4_addr_validation";
    confd::TransactionContext context;
    context.get()->thandle = thandle;
    context.get()->vcb_opaque = &daemon;
    context.get()->v_opaque = &registry_;
    context.get()->validate_opaque = opaque.data();
    const int result = module_.validate(context.get(), keypath.get(), &value);
    EXPECT_EQ(datastore.FinishTransaction(thandle), 0);
    return result == 0 ? "accepted" : context.error();
  }

 private:
  Module module_;
  framework::ContextRegistry registry_;
  void* config_ = nullptr;
};

TEST(ModuleGrowth, IsNoneInTwoThousandLives) {
  const auto good = store::Snapshot::FromText(
      DataModel(), Device{.l3 = {{.name = "a", .primary = "192.0.2.1/25"},
                                 {.name = "b", .primary = "192.0.2.129/25"}}}
                       .Json());
  const auto bad = store::Snapshot::FromText(
      DataModel(), Device{.l3 = {{.name = "a", .primary = "192.0.2.1/24"},
                                 {.name = "b", .primary = "192.0.2.129/25"}}}
                       .Json());
  const auto live = [&] {
    EXPECT_EQ(ModuleLife().Validate(good), "accepted");
    EXPECT_EQ(ModuleLife().Validate(bad),
              "l3 a vrf global ipv4 address 192.0.2.1/24 overlaps with l3 b vrf global ipv4 "
              "address 192.0.2.129/25.");
  };
  for (int i = 0; i < kWarmUp; ++i) live();
  ASSERT_EQ(dlopen(IPAV_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is never unloaded";
  const Holdings before = Now();
  for (int i = 0; i < kRounds; ++i) live();
  const Holdings after = Now();

  // A few pages for what the allocator rearranges. One byte lost in each life would be 16 pages.
  // A sanitizer keeps released memory for a while.
  if (!kSanitized) {
    EXPECT_LE(after.resident_pages, before.resident_pages + 8);
  }
  EXPECT_EQ(after.mappings, before.mappings);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_EQ(after.values, before.values);
  const long page = sysconf(_SC_PAGESIZE);
  std::printf("resident %ld to %ld KiB, %ld to %ld mappings, %ld to %ld descriptors\n",
              before.resident_pages * page / 1024, after.resident_pages * page / 1024,
              before.mappings, after.mappings, before.descriptors, after.descriptors);
}

}  // namespace
}  // namespace tests
