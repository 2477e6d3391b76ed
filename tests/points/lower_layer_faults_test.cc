// lower_layer_prot_cross_validation on what the store never gives: values of other types, a VLAN
// outside the data model, a text that is no area.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/system/system_error.hpp>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/assertion.h"
#include "support/ospf_json.h"
#include "support/point_fixture.h"

namespace {

// In force while set. The functions below win over those of the libraries, also for the module.
std::function<void(maapi_cursor&)> on_entry;
std::function<void()> on_committed_read;
std::optional<int32_t> committed_vlan;
std::function<bool()> quad_parses;

template <typename Function>
Function* Original(const char* name, Function* /*type*/) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

int maapi_get_next(maapi_cursor* mc) {
  const int result = Original("maapi_get_next", maapi_get_next)(mc);
  if (on_entry && mc->n != 0) on_entry(*mc);
  return result;
}

int cdb_get_int32(int sock, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  char path[200];
  vsnprintf(path, sizeof(path), fmt, args);
  va_end(args);
  const int result = Original("cdb_get_int32", cdb_get_int32)(sock, rval, "%s", path);
  if (on_committed_read) on_committed_read();
  if (committed_vlan) *rval = *committed_vlan;
  return result;
}

extern "C" int inet_pton(int family, const char* text, void* addr) noexcept {
  if (quad_parses && !quad_parses()) return 0;
  return Original("inet_pton", inet_pton)(family, text, addr);
}

namespace tests {
namespace {

constexpr char kPoint[] = "lower_layer_prot_cross_validation";
constexpr char kPath[] = "/config/interface/l3{7}/lower-layer-if";
constexpr char kFunction[] = "int ip_application::config_valid::validate_lower_layer_cross_ospfv3";
constexpr char kRefused[] =
    "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)";

// From VLAN 100 to 200, with VLAN 100 in use.
class LowerLayerFaults : public PointTest {
 protected:
  LowerLayerFaults() {
    const std::string interface = R"({"name":"7","lower-layer-if":{"vlan":)";
    Configure(
        Device{.l3 = interface + "100}}"},
        Device{.l3 = interface + "200}}", .ospfv3 = Ospfv3Entry(10, "0.0.0.1", "l3-7", 1000100)});
  }
  ~LowerLayerFaults() override {
    on_entry = nullptr;
    on_committed_read = nullptr;
    committed_vlan.reset();
    quad_parses = nullptr;
    confd::WatchCalls(nullptr);
  }

  std::string Validate() { return PointTest::Validate(kPoint, kPath); }

  // Where a call ends the process.
  static auto EndsAt(int line, const std::string& text) {
    return AssertionFailure("src/lib/validate_ip_addr_cross_ospf:" + std::to_string(line),
                            kFunction, text);
  }
};

TEST_F(LowerLayerFaults, TakesTheCommittedVlanAsItIs) {
  EXPECT_EQ(Validate(), kRefused);
  committed_vlan = 101;
  EXPECT_EQ(Validate(), "accepted");
  committed_vlan = 200;
  EXPECT_EQ(Validate(), "accepted");
  EXPECT_EQ(calls().back(), "maapi_get_int32_elem /config/interface/l3{7}/lower-layer-if/vlan");
}

// The VLAN whose interface has index 0, which is also what an unreadable index counts as.
TEST_F(LowerLayerFaults, UnreadableIndexIsZero) {
  committed_vlan = -268435456;
  EXPECT_EQ(Validate(), "accepted");
  const std::string read =
      "maapi_get_u_int32_elem /internal/ospfv3-interface-l3{ 10 0.0.0.1 l3-7 }/ospfv3-pm-if-index";
  for (size_t position = 0; position < calls().size(); ++position) {
    if (calls()[position] == read) FailCall(static_cast<int>(position));
  }
  EXPECT_EQ(Validate(),
            "vlan -268435456 cannot be changed, it is assigned to router ospfv3 10 area 1 "
            "(0.0.0.1)");
}

// Nothing in the plug-in catches it. The fixture sees that the cursor is destroyed.
TEST_F(LowerLayerFaults, AreaThatIsNoQuadThrows) {
  int parsed = 0;
  quad_parses = [&parsed] { return ++parsed > 0; };
  EXPECT_EQ(Validate(), kRefused);
  ASSERT_GT(parsed, 0);
  // The last one is the text of the area; the others belong to paths.
  quad_parses = [&parsed] { return --parsed > 0; };
  EXPECT_THROW(Validate(), boost::system::system_error);
}

TEST_F(LowerLayerFaults, NoCdbConnectionAccepts) {
  confd::TransactionContext context;
  Fill(context.get());
  framework::Daemon daemon = *static_cast<framework::Daemon*>(context.get()->vcb_opaque);
  daemon.cdb_socket = -1;
  context.get()->vcb_opaque = &daemon;
  std::string opaque = kPoint;
  context.get()->validate_opaque = opaque.data();
  confd::Keypath keypath(candidate(), kPath);
  confd_value_t value{};
  EXPECT_EQ(LoadedModule().validate(context.get(), keypath.get(), &value), 0);
  EXPECT_FALSE(context.has_error());
}

using LowerLayerFaultsDeathTest = LowerLayerFaults;

TEST_F(LowerLayerFaultsDeathTest, NameOfTheInterfaceIsAText) {
  EXPECT_DEATH(PointTest::Validate(kPoint, "/config/interface/l3"),
               EndsAt(53, "(&keypath->v[1][0])->type == C_BUF"));
}

// It is not looked at without OSPFv3 interfaces.
TEST_F(LowerLayerFaults, NameOfTheInterfaceDoesNotMatterWithoutOspfv3) {
  Configure(Device{.l3 = R"({"name":"7"})"});
  EXPECT_EQ(PointTest::Validate(kPoint, "/config/interface/l3"), "accepted");
}

TEST_F(LowerLayerFaultsDeathTest, NameOfTheInterfaceIsStillAText) {
  confd::Keypath keypath(candidate(), kPath);
  on_committed_read = [&keypath] { keypath.get()->v[1][0].type = C_BINARY; };
  EXPECT_DEATH(PointTest::Validate(kPoint, keypath),
               EndsAt(60, "(&keypath->v[1][0])->type == C_BUF"));
}

// Area, then name, then process.
TEST_F(LowerLayerFaultsDeathTest, KeysHaveTheirTypes) {
  on_entry = [](maapi_cursor& entry) { entry.keys[0].type = C_INT32; };
  EXPECT_DEATH(Validate(), EndsAt(84, "(&cursor.keys[0])->type == C_UINT32"));
  on_entry = [](maapi_cursor& entry) {
    entry.keys[0].type = C_INT32;
    entry.keys[2].type = C_BINARY;
  };
  EXPECT_DEATH(Validate(), EndsAt(85, "(&cursor.keys[2])->type == C_BUF"));
  on_entry = [](maapi_cursor& entry) {
    entry.keys[0].type = C_INT32;
    entry.keys[1].type = C_UINT32;
    entry.keys[2].type = C_BINARY;
  };
  EXPECT_DEATH(Validate(), EndsAt(79, "(&cursor.keys[1])->type == C_IPV4"));
}

TEST_F(LowerLayerFaultsDeathTest, ProcessIsStillANumber) {
  maapi_cursor* entry = nullptr;
  on_entry = [&entry](maapi_cursor& cursor) { entry = &cursor; };
  // Called only once the types were tested.
  quad_parses = [&entry] {
    if (entry != nullptr) entry->keys[0].type = C_INT32;
    return true;
  };
  EXPECT_DEATH(Validate(), EndsAt(92, "(&cursor.keys[0])->type == C_UINT32"));
}

}  // namespace
}  // namespace tests
