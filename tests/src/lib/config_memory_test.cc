// What the snapshot does with memory: in which order it gives it back, and what it keeps of ConfD's
// when there is none left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "confd_lib.h"
#include "confd_maapi.h"
#include "config.h"
#include "ip_app_validation/ip_app_validation.h"
#include "static_route_config.h"
#include "support/ospf_records.h"
#include "support/process_memory.h"

// A ConfD in which every path exists and holds one text. These definitions win over those of
// libconfd.

namespace {

constexpr char kLongName[] = "a name that is too long to be kept inside a std::string";

int values_given = 0;
int values_released = 0;

}  // namespace

int maapi_exists(int /*sock*/, int /*thandle*/, const char* /*fmt*/, ...) { return 1; }

int maapi_get_elem(int /*sock*/, int /*thandle*/, confd_value_t* v, const char* /*fmt*/, ...) {
  ++values_given;
  CONFD_SET_BUF(v, reinterpret_cast<unsigned char*>(strdup(kLongName)), sizeof(kLongName) - 1);
  return CONFD_OK;
}

void confd_free_value(confd_value_t* v) {
  if (v->type != C_BUF) return;
  ++values_released;
  free(CONFD_GET_BUFPTR(v));
}

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;

// Blocks that are waited for, and the names of those that were given back, in that order.
struct Watched {
  const void* block;
  const char* name;
};
std::array<Watched, 7> watched;
std::vector<const char*> given_back;

void NoteBlock(const void* block) {
  for (const Watched& candidate : watched) {
    if (candidate.block == block) given_back.push_back(candidate.name);
  }
}

// The route table goes first, then the list of tables, then the tables in reverse order of
// construction.
TEST(ConfigMemory, IsGivenBackInThisOrder) {
  void* context = nullptr;
  ASSERT_EQ(lib_init(&context), 0);
  Config& config = *static_cast<Config*>(context);
  for (InterfaceConfig* table : config.intf_configs_) table->interfaces_.emplace_back();
  config.ospfv2_config_.table_.emplace_back(new OspfIf);
  watched = {{{config.static_route_config_.get(), "routes"},
              {config.intf_configs_.data(), "list of tables"},
              {config.mgmt_config_.interfaces_.data(), "mgmt"},
              {config.lo_config_.interfaces_.data(), "loopback"},
              {config.l3_config_.interfaces_.data(), "l3"},
              {config.ospfv2_config_.table_.front().get(), "ospf"},
              {context, "config"}}};
  given_back.reserve(2 * watched.size());
  tests::on_free = NoteBlock;
  EXPECT_EQ(lib_finish(&context), 0);
  tests::on_free = nullptr;
  EXPECT_THAT(given_back,
              ElementsAre(testing::StrEq("routes"), testing::StrEq("list of tables"),
                          testing::StrEq("mgmt"), testing::StrEq("loopback"), testing::StrEq("l3"),
                          testing::StrEq("ospf"), testing::StrEq("config")));
}

struct NameCase {
  const char* name;
  std::string (*read)(const StaticRouteConfig& table);
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const NameCase& c) { return out << c.name; }

const NameCase kNameCases[] = {
    {"VrfAtPath", [](const StaticRouteConfig& table) { return table.get_vrf_name("/vrf"); },
     kLongName},
    {"VrfOfIndex",
     [](const StaticRouteConfig& table) {
       confd_value_t index;
       CONFD_SET_UINT32(&index, 5);
       return table.get_vrf_name_from_id(index);
     },
     kLongName},
    {"OutputInterface",
     [](const StaticRouteConfig& table) {
       maapi_cursor cursor{};
       CONFD_SET_UINT32(&cursor.keys[0], 5);
       CONFD_SET_INT32(&cursor.keys[3], 8);
       return table.GetIntfNameFromRoute(cursor);
     },
     "a  ame that is too long to be kept inside a std::string"},
};

class NameMemory : public testing::TestWithParam<NameCase> {};

TEST_P(NameMemory, ReleasesTheValueWhicheverAllocationFails) {
  StaticRouteConfig table;
  confd_trans_ctx tctx{};
  table.trans_ = &tctx;
  int thrown_after_the_read = 0;
  for (int allocations = 0;; ++allocations) {
    ASSERT_LT(allocations, 100);
    values_given = 0;
    values_released = 0;
    bool thrown = false;
    tests::allocations_left = allocations;
    try {
      const std::string name = GetParam().read(table);
      tests::allocations_left = tests::kUnlimited;
      EXPECT_EQ(name, GetParam().text);
    } catch (const std::bad_alloc&) {
      tests::allocations_left = tests::kUnlimited;
      thrown = true;
    }
    EXPECT_EQ(values_released, values_given) << "after " << allocations << " allocations";
    if (!thrown) break;
    thrown_after_the_read += values_given;
  }
  EXPECT_EQ(thrown_after_the_read, 1);
}

INSTANTIATE_TEST_SUITE_P(Reads, NameMemory, testing::ValuesIn(kNameCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Tables that have to grow, and their indexes with them.
constexpr int kEntries = 200;
constexpr char kAddress[] = "192.0.2.1/24";
constexpr char kOtherAddress[] = "192.0.2.2/24";

std::string EntryName(int i) {
  return "l3 an interface with a long name, number " + std::to_string(i);
}

// Merges `entries` one after the other, each of them as often as an allocation of it fails: every
// one in turn does, once.
template <typename Table, typename Entry>
void MergeWithFailures(Table& table, std::vector<Entry>& entries) {
  int failures = 0;
  for (Entry& entry : entries) {
    for (int allocations = 0;; ++allocations) {
      bool merged = true;
      tests::FailOneAllocationAfter(allocations);
      try {
        table.MergeConfigAndInsert(entry);
      } catch (const std::bad_alloc&) {
        merged = false;
      }
      tests::allocations_left = tests::kUnlimited;
      if (merged) break;
      ++failures;
    }
  }
  EXPECT_GE(failures, kEntries);
}

TEST(TableMemory, InterfacesAreFoundAgainAfterFailedAllocations) {
  std::vector<Interface> entries;
  for (const std::vector<std::string>& addresses : {{}, std::vector<std::string>{kAddress}}) {
    for (int i = 0; i < kEntries; ++i) {
      entries.push_back({EntryName(i), tests::Masks(addresses), {}, "global", {}});
    }
  }
  L3Config table;
  MergeWithFailures(table, entries);
  ASSERT_EQ(table.interfaces_.size(), size_t{kEntries});
  for (int i = 0; i < kEntries; ++i) {
    const Interface& intf = table.interfaces_[static_cast<size_t>(i)];
    EXPECT_EQ(intf.name, EntryName(i));
    EXPECT_EQ(intf.ipv4_addr_list, tests::Masks({kAddress}));
  }
}

TEST(TableMemory, OspfRecordsAreFoundAgainAfterFailedAllocations) {
  std::vector<OspfIf> entries;
  for (const char* address : {kAddress, kOtherAddress}) {
    for (int i = 0; i < kEntries; ++i) {
      entries.push_back(tests::OspfUse{EntryName(i), {address}}.Record());
    }
  }
  Ospfv2Config table;
  MergeWithFailures(table, entries);
  ASSERT_EQ(table.table_.size(), size_t{kEntries});
  int i = 0;
  for (const auto& record : table.table_) {
    EXPECT_EQ(record->intf_name, EntryName(i++));
    EXPECT_EQ(record->addresses, tests::Masks({kAddress, kOtherAddress}));
  }
}

}  // namespace
}  // namespace ip_application::config_valid
