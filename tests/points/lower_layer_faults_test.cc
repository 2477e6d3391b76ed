// lower_layer_prot_cross_validation on what the store never gives: values of other types, a VLAN
// outside the data model, a text that is no area.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/system/system_error.hpp>
#include <cerrno>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "confd/watch_calls.h"
#include "confd_maapi.h"
#include "support/assertion.h"
#include "support/device.h"
#include "support/point_fixture.h"
#include "support/scripted_confd.h"

namespace {

// In force while set.
std::function<bool()> quad_parses;

}  // namespace

// Wins over that of the library, also for the module.
extern "C" int inet_pton(int family, const char* text, void* addr) noexcept {
  static const auto original =
      reinterpret_cast<decltype(&inet_pton)>(dlsym(RTLD_NEXT, "inet_pton"));
  if (quad_parses && !quad_parses()) return 0;
  return original(family, text, addr);
}

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kPoint[] = "lower_layer_prot_cross_validation";
constexpr char kPath[] = "/config/interface/l3{7}/lower-layer-if";
constexpr char kVlan[] = "/config/interface/l3{7}/lower-layer-if/vlan";
constexpr char kFunction[] = "int ip_application::config_valid::validate_lower_layer_cross_ospfv3";
constexpr char kRefused[] =
    "vlan 100 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)";

const ConfiguredIntf kVlan100 = {.name = "7", .vlan = 100};
const ConfiguredIntf kVlan200 = {.name = "7", .vlan = 200};

// From VLAN 100 to 200, with VLAN 100 in use.
class LowerLayerFaults : public PointTest {
 protected:
  LowerLayerFaults() { ConfigureTo(kVlan200, {{10, "0.0.0.1", "l3-7", 1000100}}); }
  ~LowerLayerFaults() override {
    quad_parses = nullptr;
    confd::WatchCalls(nullptr);
  }

  // From VLAN 100 of interface 7 to that interface and those OSPFv3 interfaces.
  void ConfigureTo(const ConfiguredIntf& l3, const std::vector<Ospfv3Entry>& ospfv3) {
    Configure(Device{.l3 = {kVlan100}}, Device{.l3 = {l3}, .ospfv3 = ospfv3});
  }

  // Makes the read of the committed VLAN succeed with that number.
  void CommitVlan(int32_t vlan) { scripted_.committed[kVlan] = {.value = Int32(vlan)}; }

  // Runs `action` before each call of that function.
  void BeforeCalls(std::string_view function, const std::function<void()>& action) {
    scripted_.on_call = [function, action](std::string_view made) {
      if (made == function) action();
    };
  }

  std::string Validate() { return PointTest::Validate(kPoint, kPath); }

  // Where a call ends the process.
  static auto EndsAt(int line, const std::string& text) {
    return AssertionFailure("src/lib/validate_ip_addr_cross_ospf:" + std::to_string(line),
                            kFunction, text);
  }

  ScriptedConfd scripted_;
};

TEST_F(LowerLayerFaults, RefusesWithOneTextOfThisFormat) {
  EXPECT_EQ(Validate(), kRefused);
  EXPECT_THAT(scripted_.error_formats,
              ElementsAre("vlan %d cannot be changed, it is assigned to router ospfv3 %d area %u "
                          "(%s)"));
}

// Only the answer 1 means that there is a list.
TEST_F(LowerLayerFaults, OfOtherAnswersTheListIsNotCounted) {
  for (const int exists : {2, 0, -1}) {
    scripted_.answers["/internal/ospfv3-interface-l3"] = {.exists = exists};
    EXPECT_EQ(Validate(), "accepted") << exists;
    EXPECT_THAT(calls(), IsEmpty()) << exists;
  }
}

// Whatever the failure, there was no VLAN.
TEST_F(LowerLayerFaults, UnreadableCommittedVlanIsNone) {
  for (const int result : {CONFD_ERR, CONFD_EOF, 1}) {
    scripted_.committed[kVlan] = {.read = result, .value = Int32(100)};
    EXPECT_EQ(Validate(), "accepted") << result;
    EXPECT_EQ(calls().back(), "cdb_end_session") << result;
  }
}

TEST_F(LowerLayerFaults, TakesTheCommittedVlanAsItIs) {
  EXPECT_EQ(Validate(), kRefused);
  CommitVlan(101);
  EXPECT_EQ(Validate(), "accepted");
  CommitVlan(200);
  EXPECT_EQ(Validate(), "accepted");
  EXPECT_EQ(calls().back(), "maapi_get_int32_elem /config/interface/l3{7}/lower-layer-if/vlan");
}

// The VLAN whose interface has index 0, which is also what an unreadable index counts as.
TEST_F(LowerLayerFaults, UnreadableIndexIsZero) {
  CommitVlan(-268435456);
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

TEST_F(LowerLayerFaults, IndexOfOneEntryDoesNotStayForTheNext) {
  ConfigureTo(kVlan200, {{10, "0.0.0.1", "l3-7", 1000008}, {11, "0.0.0.2", "l3-8"}});
  CommitVlan(-268435456);
  EXPECT_EQ(Validate(),
            "vlan -268435456 cannot be changed, it is assigned to router ospfv3 11 area 2 "
            "(0.0.0.2)");
}

// A VLAN that is taken away is no VLAN 0.
TEST_F(LowerLayerFaults, RemovedVlanIsNotVlanZero) {
  ConfigureTo({.name = "7"}, {{10, "0.0.0.1", "l3-7", 1000000}});
  CommitVlan(0);
  EXPECT_EQ(Validate(),
            "vlan 0 cannot be changed, it is assigned to router ospfv3 10 area 1 (0.0.0.1)");
}

// Nothing in the plug-in catches it. The fixture sees that the cursor is destroyed.
TEST_F(LowerLayerFaults, AreaThatIsNoQuadThrows) {
  int parsed = 0;
  quad_parses = [&parsed] { return ++parsed > 0; };
  EXPECT_EQ(Validate(), kRefused);
  ASSERT_GT(parsed, 0);
  scripted_.error_formats.clear();
  struct Row {
    int before;  // errno when the text is converted
    int set;     // by the conversion; 0: it leaves errno alone
    int code;
  };
  for (const Row& row :
       {Row{EDOM, 0, EDOM}, Row{0, EDOM, EDOM}, Row{ENOENT, EDOM, EDOM}, Row{0, 0, EINVAL}}) {
    // The last one is the text of the area; the others belong to paths.
    int left = parsed;
    quad_parses = [&left, &row] {
      if (--left > 0) return true;
      if (row.set != 0) errno = row.set;
      return false;
    };
    BeforeCalls("maapi_get_u_int32_elem", [&row] { errno = row.before; });
    try {
      Validate();
      FAIL() << "nothing was thrown";
    } catch (const boost::system::system_error& failure) {
      EXPECT_EQ(failure.code().value(), row.code);
      EXPECT_EQ(failure.code().category(), boost::system::system_category());
    }
  }
  EXPECT_THAT(scripted_.error_formats, IsEmpty());
}

// The area is parsed before the process is looked at again.
TEST_F(LowerLayerFaults, AreaThatIsNoQuadThrowsWhateverTheProcess) {
  maapi_cursor* entry = nullptr;
  scripted_.on_entry = [&entry](maapi_cursor& cursor) { entry = &cursor; };
  BeforeCalls("maapi_get_u_int32_elem", [&entry] {
    entry->keys[0].type = C_INT32;
    quad_parses = [] { return false; };
  });
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
  Configure(Device{.l3 = {{.name = "7"}}});
  EXPECT_EQ(PointTest::Validate(kPoint, "/config/interface/l3"), "accepted");
}

TEST_F(LowerLayerFaultsDeathTest, NameOfTheInterfaceIsStillAText) {
  confd::Keypath keypath(candidate(), kPath);
  BeforeCalls("cdb_get_int32", [&keypath] { keypath.get()->v[1][0].type = C_BINARY; });
  EXPECT_DEATH(PointTest::Validate(kPoint, keypath),
               EndsAt(60, "(&keypath->v[1][0])->type == C_BUF"));
}

// Area, then name, then process.
TEST_F(LowerLayerFaultsDeathTest, KeysHaveTheirTypes) {
  scripted_.on_entry = [](maapi_cursor& entry) { entry.keys[0].type = C_INT32; };
  EXPECT_DEATH(Validate(), EndsAt(84, "(&cursor.keys[0])->type == C_UINT32"));
  scripted_.on_entry = [](maapi_cursor& entry) {
    entry.keys[0].type = C_INT32;
    entry.keys[2].type = C_BINARY;
  };
  EXPECT_DEATH(Validate(), EndsAt(85, "(&cursor.keys[2])->type == C_BUF"));
  scripted_.on_entry = [](maapi_cursor& entry) {
    entry.keys[0].type = C_INT32;
    entry.keys[1].type = C_UINT32;
    entry.keys[2].type = C_BINARY;
  };
  EXPECT_DEATH(Validate(), EndsAt(79, "(&cursor.keys[1])->type == C_IPV4"));
}

TEST_F(LowerLayerFaultsDeathTest, ProcessIsStillANumber) {
  maapi_cursor* entry = nullptr;
  scripted_.on_entry = [&entry](maapi_cursor& cursor) { entry = &cursor; };
  // Called only once the types were tested.
  quad_parses = [&entry] {
    if (entry != nullptr) entry->keys[0].type = C_INT32;
    return true;
  };
  EXPECT_DEATH(Validate(), EndsAt(92, "(&cursor.keys[0])->type == C_UINT32"));
}

}  // namespace
}  // namespace tests
