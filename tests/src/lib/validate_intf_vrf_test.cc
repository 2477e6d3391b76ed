// The walkers over changes on their own: what they pass to ConfD, what they make of unusual
// answers, the type tests, and the two reads that no walker uses.
#include "validate_intf_vrf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "confd_maapi.h"
#include "support/assertion.h"
#include "support/config_tables.h"
#include "support/device.h"
#include "support/keypath_builder.h"
#include "support/process_memory.h"
#include "support/scripted_confd.h"
#include "support/table_fixture.h"
#include "validation_points.h"
#include "velmor-internal.h"
#include "velmor-ip-app.h"

namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::L3Config;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::AssertionFailure;
using tests::KeypathBuilder;

// A walker has the four fields of the base: socket, transaction, path, text. Its virtual functions
// are the destructor and one more.
struct Fields {
  virtual ~Fields() = default;
  virtual void Judge() {}
  int sock;
  confd_trans_ctx* trans;
  std::string path;
  std::string error;
};
static_assert(sizeof(ValidateIntfVrf) == sizeof(Fields));
static_assert(sizeof(ValidateIntfLoVrf) == sizeof(ValidateIntfVrf));
static_assert(sizeof(ValidateIntfL3Vrf) == sizeof(ValidateIntfVrf));
static_assert(sizeof(ValidateIntfVrfOspf) == sizeof(ValidateIntfVrf));
static_assert(sizeof(ValidateIntfVrfOspfv3) == sizeof(ValidateIntfVrf));
static_assert(std::is_abstract_v<ValidateIntfVrf>);
static_assert(std::has_virtual_destructor_v<ValidateIntfVrf>);

// Beside RunValidation the base has the two reads that no walker uses, and no third helper.
struct Heir : ValidateIntfVrf {
  template <typename Walker>
  static constexpr bool kAsksForOspfv3 = requires(const Walker& walker) {
    walker.IsInOspfv3("l3", "7");
  };
};
static_assert(!Heir::kAsksForOspfv3<Heir>);

// Without changes, and with an expression that finds nothing.
struct Unchanged : tests::ScriptedConfd {
  Unchanged() {
    xpath.emplace();
    on_iterate = [](maapi_iterate_fn /*iter*/, void* /*state*/) { return CONFD_OK; };
  }
};

class Walkers : public testing::Test {
 protected:
  Walkers() {
    tctx_.thandle = 42;
    CONFD_SET_STR(&value_, "red");
  }
  ~Walkers() override { free(tctx_.error.str); }

  std::string ErrorText() const { return tctx_.error.str == nullptr ? "" : tctx_.error.str; }

  Unchanged scripted_;
  confd_trans_ctx tctx_{};
  confd_value_t value_{};
  ValidateIntfLoVrf lo_{7, &tctx_, "/config/interface/loopback"};
  ValidateIntfL3Vrf l3_{7, &tctx_, "/config/interface/l3"};
  ValidateIntfVrfOspf ospf_{7, &tctx_, "/internal/ospf-interface-l3"};
  ValidateIntfVrfOspfv3 ospfv3_{7, &tctx_, "/internal/ospfv3-interface-l3"};
};

TEST_F(Walkers, WalkTheirPathWithThemselvesAsState) {
  for (ValidateIntfVrf* walker : std::vector<ValidateIntfVrf*>{&lo_, &l3_, &ospf_, &ospfv3_}) {
    EXPECT_EQ(walker->RunValidation(), 0);
    ASSERT_FALSE(scripted_.iterations.empty());
    const tests::ScriptedConfd::Iteration& made = scripted_.iterations.back();
    EXPECT_EQ(made.sock, 7);
    EXPECT_EQ(made.thandle, 42);
    EXPECT_EQ(made.flags, 0);
    EXPECT_EQ(made.state, walker);
  }
  std::vector<std::string> paths;
  for (const auto& made : scripted_.iterations) paths.push_back(made.path);
  EXPECT_THAT(paths, ElementsAre("/config/interface/loopback", "/config/interface/l3",
                                 "/internal/ospf-interface-l3", "/internal/ospfv3-interface-l3"));
  EXPECT_EQ(ErrorText(), "");
}

// A walker that notes what it gets.
class Noting : public ValidateIntfVrf {
 public:
  using ValidateIntfVrf::ValidateIntfVrf;
  confd_iter_ret IterValidate(confd_hkeypath_t* keypath, confd_iter_op op, confd_value_t* oldval,
                              confd_value_t* newval) override {
    keypath_ = keypath;
    op_ = op;
    oldval_ = oldval;
    newval_ = newval;
    error_ = text_;
    return answer_;
  }

  confd_hkeypath_t* keypath_ = nullptr;
  confd_iter_op op_{};
  confd_value_t* oldval_ = nullptr;
  confd_value_t* newval_ = nullptr;
  std::string text_;
  confd_iter_ret answer_ = ITER_RECURSE;
};

template <typename Object, typename Field>
ptrdiff_t OffsetIn(const Object& object, const Field& field) {
  return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&object);
}

class Layout : public ValidateIntfVrfOspf {
 public:
  using ValidateIntfVrfOspf::ValidateIntfVrfOspf;
  std::vector<ptrdiff_t> Offsets() const {
    return {OffsetIn(*this, sock_), OffsetIn(*this, trans_), OffsetIn(*this, path_),
            OffsetIn(*this, error_)};
  }
};

TEST_F(Walkers, HaveTheirFieldsAndVirtualFunctionsInOrder) {
  const Fields fields{};
  EXPECT_EQ(
      Layout(7, &tctx_, "/x").Offsets(),
      (std::vector<ptrdiff_t>{OffsetIn(fields, fields.sock), OffsetIn(fields, fields.trans),
                              OffsetIn(fields, fields.path), OffsetIn(fields, fields.error)}));
  // A pointer to a virtual member function says which one it is, counted from the first.
  using Slot = std::array<ptrdiff_t, 2>;
  EXPECT_EQ(std::bit_cast<Slot>(&ValidateIntfVrf::IterValidate),
            std::bit_cast<Slot>(&Fields::Judge));
}

TEST_F(Walkers, GetEveryChangeAsItIs) {
  Noting walker(7, &tctx_, "/x");
  confd_hkeypath_t keypath{};
  confd_value_t oldval{};
  confd_value_t newval{};
  for (const confd_iter_ret answer : {ITER_STOP, ITER_RECURSE, ITER_CONTINUE}) {
    walker.answer_ = answer;
    scripted_.on_iterate = [&](maapi_iterate_fn iter, void* state) {
      EXPECT_EQ(iter(&keypath, MOP_DELETED, &oldval, &newval, state), answer);
      return CONFD_OK;
    };
    EXPECT_EQ(walker.RunValidation(), 0);
    EXPECT_EQ(walker.keypath_, &keypath);
    EXPECT_EQ(walker.op_, MOP_DELETED);
    EXPECT_EQ(walker.oldval_, &oldval);
    EXPECT_EQ(walker.newval_, &newval);
  }
}

// The text decides, and neither the walk's result nor the last answer.
TEST_F(Walkers, RefuseWhenThereIsAText) {
  for (const int result : {CONFD_OK, CONFD_ERR}) {
    for (const std::string text : {"", "100%s"}) {
      Noting walker(7, &tctx_, "/x");
      walker.text_ = text;
      scripted_.on_iterate = [result](maapi_iterate_fn iter, void* state) {
        iter(nullptr, MOP_CREATED, nullptr, nullptr, state);
        return result;
      };
      scripted_.error_formats.clear();
      EXPECT_EQ(walker.RunValidation(), text.empty() ? 0 : -1);
      EXPECT_EQ(ErrorText(), text);
      EXPECT_EQ(scripted_.error_formats, std::vector<std::string>(text.empty() ? 0 : 1, "%s"));
      free(tctx_.error.str);
      tctx_.error.str = nullptr;
    }
  }
}

TEST_F(Walkers, AskForOneNameBelowInternal) {
  scripted_.xpath->text = "";
  KeypathBuilder path;
  path.Tag(ipapp_vrf).Key("wan-1");
  EXPECT_EQ(l3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  EXPECT_EQ(lo_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  ASSERT_EQ(scripted_.expressions.size(), 2u);
  EXPECT_EQ(scripted_.expressions[0].text,
            "ospfv3-interface-l3[ospfv3-pm-if-name='l3-wan-1']/ospfv3-pm-if-name");
  EXPECT_EQ(scripted_.expressions[1].text,
            "ospfv3-interface-l3[ospfv3-pm-if-name='loopback-wan-1']/ospfv3-pm-if-name");
  for (const auto& made : scripted_.expressions) {
    EXPECT_EQ(made.sock, 7);
    EXPECT_EQ(made.thandle, 42);
    EXPECT_FALSE(made.traced);
    EXPECT_EQ(made.context, "/internal");
  }
}

TEST_F(Walkers, CutTheExpressionAt1023Bytes) {
  KeypathBuilder path;
  path.Tag(ipapp_vrf).Key(std::string(1100, 'n'));
  EXPECT_EQ(l3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  ASSERT_EQ(scripted_.expressions.size(), 1u);
  const std::string begin = "ospfv3-interface-l3[ospfv3-pm-if-name='l3-";
  EXPECT_EQ(scripted_.expressions[0].text, begin + std::string(1023 - begin.size(), 'n'));
}

struct AnswerCase {
  const char* name;
  int result;
  std::optional<std::string> answer;
  confd_iter_ret verdict;
};

std::ostream& operator<<(std::ostream& out, const AnswerCase& c) { return out << c.name; }

class XPathAnswer : public Walkers, public testing::WithParamInterface<AnswerCase> {};

TEST_P(XPathAnswer, Decides) {
  scripted_.xpath->result = GetParam().result;
  scripted_.xpath->text = GetParam().answer;
  KeypathBuilder path;
  path.Tag(ipapp_vrf).Key("7");
  EXPECT_EQ(l3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), GetParam().verdict);
  EXPECT_EQ(lo_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), GetParam().verdict);
}

INSTANTIATE_TEST_SUITE_P(Answers, XPathAnswer,
                         testing::Values(AnswerCase{"Name", CONFD_OK, "l3-7", ITER_STOP},
                                         AnswerCase{"OtherText", CONFD_OK, "x", ITER_STOP},
                                         AnswerCase{"EmptyText", CONFD_OK, "", ITER_RECURSE},
                                         AnswerCase{"NoText", CONFD_OK, {}, ITER_RECURSE},
                                         AnswerCase{"Failure", CONFD_ERR, {}, ITER_RECURSE},
                                         AnswerCase{"FailureWithText", CONFD_ERR, "x",
                                                    ITER_RECURSE},
                                         AnswerCase{"EndWithText", CONFD_EOF, "x", ITER_RECURSE}),
                         [](const auto& row) { return std::string(row.param.name); });

size_t HeapBytes() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

// An answer so large that it shows in the size of the heap. Under the address sanitizer the heap
// has no size, and its report of leaks speaks instead.
TEST_F(Walkers, FreeTheAnswer) {
  constexpr size_t kSize = 1 << 20;
  scripted_.xpath->text = std::string(kSize, 'x');
  KeypathBuilder path;
  path.Tag(ipapp_vrf).Key("7");
  for (const int result : {CONFD_OK, CONFD_ERR}) {
    scripted_.xpath->result = result;
    for (ValidateIntfVrf* walker : std::vector<ValidateIntfVrf*>{&lo_, &l3_}) {
      const size_t before = HeapBytes();
      walker->IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_);
      EXPECT_LT(HeapBytes(), before + kSize);
    }
  }
}

// Whatever the keypath: other operations are not looked at.
TEST_F(Walkers, PassEveryOtherOperation) {
  scripted_.xpath->text = "l3-7";
  KeypathBuilder path;
  path.Key("no tag").Tag(1);
  for (const confd_iter_op op :
       {MOP_CREATED, MOP_DELETED, MOP_MODIFIED, MOP_MOVED_AFTER, MOP_ATTR_SET}) {
    for (ValidateIntfVrf* walker : std::vector<ValidateIntfVrf*>{&lo_, &l3_, &ospf_, &ospfv3_}) {
      EXPECT_EQ(walker->IterValidate(path.get(), op, nullptr, &value_), ITER_RECURSE);
    }
  }
  EXPECT_EQ(ospf_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  EXPECT_THAT(scripted_.expressions, IsEmpty());
}

// The type of what is behind another leaf, or behind no value, does not matter.
TEST_F(Walkers, PassOtherLeavesAndMissingValues) {
  scripted_.xpath->text = "l3-7";
  KeypathBuilder vrf;
  vrf.Tag(ipapp_vrf).Tag(1);
  KeypathBuilder name;
  name.Tag(velmor_internal_ospfv3_pm_if_name).Key("7");
  for (ValidateIntfVrf* walker : std::vector<ValidateIntfVrf*>{&lo_, &l3_}) {
    EXPECT_EQ(walker->IterValidate(vrf.get(), MOP_VALUE_SET, nullptr, nullptr), ITER_RECURSE);
    EXPECT_EQ(walker->IterValidate(name.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  }
  EXPECT_EQ(ospfv3_.IterValidate(name.get(), MOP_VALUE_SET, nullptr, nullptr), ITER_RECURSE);
  EXPECT_EQ(ospfv3_.IterValidate(vrf.get(), MOP_VALUE_SET, nullptr, &value_), ITER_RECURSE);
  EXPECT_THAT(scripted_.expressions, IsEmpty());
}

using WalkersDeathTest = Walkers;

TEST_F(WalkersDeathTest, EndTheProcessWhenElementZeroIsNoTag) {
  KeypathBuilder path;
  path.Key("7").Key("7");
  const char kText[] = "(&keypath->v[0][0])->type == C_XMLTAG";
  EXPECT_DEATH(lo_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, nullptr),
               AssertionFailure("src/lib/validate_intf_vrf:98",
                                "virtual confd_iter_ret ValidateIntfLoVrf::IterValidate", kText));
  EXPECT_DEATH(l3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, nullptr),
               AssertionFailure("src/lib/validate_intf_vrf:126",
                                "virtual confd_iter_ret ValidateIntfL3Vrf::IterValidate", kText));
  EXPECT_DEATH(
      ospfv3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, nullptr),
      AssertionFailure("src/lib/validate_intf_vrf:159",
                       "virtual confd_iter_ret ValidateIntfVrfOspfv3::IterValidate", kText));
}

TEST_F(WalkersDeathTest, EndTheProcessWhenElementOneIsNoName) {
  KeypathBuilder path;
  path.Tag(ipapp_vrf).Tag(1);
  const char kText[] = "(&keypath->v[1][0])->type == C_BUF";
  EXPECT_DEATH(lo_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_),
               AssertionFailure("src/lib/validate_intf_vrf:102",
                                "virtual confd_iter_ret ValidateIntfLoVrf::IterValidate", kText));
  EXPECT_DEATH(l3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_),
               AssertionFailure("src/lib/validate_intf_vrf:128",
                                "virtual confd_iter_ret ValidateIntfL3Vrf::IterValidate", kText));
}

TEST_F(WalkersDeathTest, EndTheProcessWhenTheNewNameIsNoText) {
  KeypathBuilder path;
  path.Tag(velmor_internal_ospfv3_pm_if_name).Key("7");
  EXPECT_DEATH(ospfv3_.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value_),  // a C_STR
               AssertionFailure("src/lib/validate_intf_vrf:160",
                                "virtual confd_iter_ret ValidateIntfVrfOspfv3::IterValidate",
                                "(newval)->type == C_BUF"));
}

// On a configuration in the store -----------------------------------------------------------------

class WalkerReads : public tests::TableTest {
 protected:
  void ConfigureAndBind(const tests::Device& device) {
    Configure(device);
    for (auto* table : tests::AllTables(config_)) Bind(*table);
    walker_ = std::make_unique<ValidateIntfVrfOspf>(config_.l3_config_.sock_,
                                                    config_.l3_config_.trans_, "/x");
  }

  int Validate(confd_hkeypath_t* keypath) {
    return validate_intf_vrf(config_.l3_config_.sock_, config_.l3_config_.trans_, keypath, nullptr,
                             config_);
  }

  Config config_;
  std::unique_ptr<ValidateIntfVrf> walker_;
  Unchanged scripted_;
};

constexpr char kL3[] = "/config/interface/l3";
constexpr char kIp[] = "/config/interface/l3{7}/ipv4/address/ip";

TEST_F(WalkerReads, OfAnAddress) {
  ConfigureAndBind(tests::Device{.l3 = {{.name = "7", .primary = "192.0.2.1/24"}}});
  EXPECT_EQ(walker_->get_ipv4_addr_mask(kIp).to_string(), "192.0.2.1/24");
  EXPECT_EQ(TakeCalls(), tests::ExpectedCalls().Ipv4(kIp));
  EXPECT_TRUE(
      walker_->get_ipv4_addr_mask("/config/interface/l3{8}/ipv4/address/ip").IsUnspecified());
  EXPECT_EQ(TakeCalls(), tests::ExpectedCalls().Exists("/config/interface/l3{8}/ipv4/address/ip"));
  for (const size_t failing : {0u, 1u}) {
    FailCall(failing);
    EXPECT_TRUE(walker_->get_ipv4_addr_mask(kIp).IsUnspecified());
    EXPECT_EQ(TakeCalls().size(), failing + 1);
  }
  FailCalls({});
  scripted_.answers[kIp].exists = 2;
  EXPECT_TRUE(walker_->get_ipv4_addr_mask(kIp).IsUnspecified());
}

TEST_F(WalkerReads, OfFirstKeys) {
  const std::string longest(8191, 'k');
  ConfigureAndBind(tests::Device{
      .l3 = {{.name = "b"}, {.name = "a b"}, {.name = longest}, {.name = "k" + longest}},
      .ospf = {{2, "0.0.0.1", "l3-7", "192.0.2.1"}, {1, "0.0.0.1", "l3-7", "192.0.2.1"}}});
  // Cut at 8191 bytes.
  EXPECT_THAT(walker_->get_key_list(kL3), ElementsAre("a b", "b", longest, longest));
  EXPECT_EQ(TakeCalls(), tests::ExpectedCalls().Walk(kL3, 4));
  EXPECT_THAT(walker_->get_key_list("/internal/ospf-interface-l3"), ElementsAre("1", "2"));
  TakeCalls();

  EXPECT_THAT(walker_->get_key_list("/config/interface/l3{8}/ipv4/address/secondary"), IsEmpty());
  EXPECT_EQ(TakeCalls(),
            tests::ExpectedCalls().Exists("/config/interface/l3{8}/ipv4/address/secondary"));
  const std::vector<std::vector<std::string>> keys_with_failing_call = {{}, {}, {}, {"a b"}};
  for (size_t failing = 0; failing < keys_with_failing_call.size(); ++failing) {
    FailCall(failing);
    const std::list<std::string> keys = walker_->get_key_list(kL3);
    EXPECT_EQ(std::vector<std::string>(keys.begin(), keys.end()), keys_with_failing_call[failing]);
    TakeCalls();
  }
  FailCalls({});
  scripted_.answers[kL3].exists = 2;
  EXPECT_THAT(walker_->get_key_list(kL3), IsEmpty());
}

TEST_F(WalkerReads, OfPathsThatHoldAPercentSign) {
  const std::string list = "/config/interface/l3{100%%}/ipv4/address/secondary";
  const std::string primary = "/config/interface/l3{100%%}/ipv4/address/ip";
  ConfigureAndBind(
      tests::Device{.l3 = {{.name = "100%%", .primary = "192.0.2.1/24", .ipv4 = {"10.0.0.1/8"}}}});
  EXPECT_EQ(walker_->get_ipv4_addr_mask(primary).to_string(), "192.0.2.1/24");
  EXPECT_THAT(walker_->get_key_list(list), ElementsAre("10.0.0.1/8"));
  EXPECT_THAT(scripted_.formats, ElementsAre("maapi_exists %s", "maapi_get_ipv4_and_plen_elem %s",
                                             "maapi_exists %s", "maapi_init_cursor %s"));
}

// Only the answer 1 means that there is a VRF.
TEST_F(WalkerReads, OfTheVrfOfAnOspfv3Interface) {
  ConfigureAndBind({});
  ValidateIntfVrfOspfv3 walker(config_.l3_config_.sock_, config_.l3_config_.trans_, "/x");
  KeypathBuilder path;
  path.Tag(velmor_internal_ospfv3_pm_if_name);
  std::string name = "l3-7";
  confd_value_t value;
  CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(name.data()),
                static_cast<unsigned int>(name.size()));
  for (const int exists : {-1, 0, 1, 2}) {
    scripted_.answers["/config/interface/l3{7}/vrf"].exists = exists;
    EXPECT_EQ(walker.IterValidate(path.get(), MOP_VALUE_SET, nullptr, &value),
              exists == 1 ? ITER_STOP : ITER_RECURSE);
  }
  EXPECT_THAT(scripted_.formats, testing::Each("maapi_exists /config/interface/l3{%s}/vrf"));
}

// What the point walks ----------------------------------------------------------------------------

using Point = WalkerReads;

struct ShapeCase {
  const char* name;
  int length;
  int element;  // that has the tag; all others have one of no list
  uint32_t tag;
};

std::ostream& operator<<(std::ostream& out, const ShapeCase& c) { return out << c.name; }

const ShapeCase kShapesWithoutAWalk[] = {
    {"L3OneShorter", 2, 0, ipapp_l3},
    {"L3OneLonger", 4, 0, ipapp_l3},
    {"LoopbackOneShorter", 2, 0, ipapp_loopback},
    {"LoopbackOneLonger", 4, 0, ipapp_loopback},
    {"Ospfv2OneShorter", 5, 4, velmor_internal_ospf_interface_l3},
    {"Ospfv2OneLonger", 7, 4, velmor_internal_ospf_interface_l3},
    {"Ospfv3OneShorter", 5, 4, velmor_internal_ospfv3_interface_l3},
    {"Ospfv3OneLonger", 7, 4, velmor_internal_ospfv3_interface_l3},
};

class ShapeWithoutAWalk : public Point, public testing::WithParamInterface<ShapeCase> {};

TEST_P(ShapeWithoutAWalk, IsAccepted) {
  ConfigureAndBind({});
  scripted_.iterations.clear();
  KeypathBuilder path;
  for (int i = 0; i < GetParam().length; ++i) {
    path.Tag(i == GetParam().element ? GetParam().tag : 1);
  }
  EXPECT_EQ(Validate(path.get()), 0);
  EXPECT_THAT(scripted_.iterations, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Shapes, ShapeWithoutAWalk, testing::ValuesIn(kShapesWithoutAWalk),
                         [](const auto& row) { return std::string(row.param.name); });

const void* walker_at_work = nullptr;
int walkers_destroyed = 0;

TEST_F(Point, DestroysTheWalker) {
  ConfigureAndBind({});
  scripted_.on_iterate = [](maapi_iterate_fn /*iter*/, void* state) {
    walker_at_work = state;
    return CONFD_OK;
  };
  for (const uint32_t list : std::vector<uint32_t>{ipapp_l3, ipapp_loopback}) {
    KeypathBuilder path;
    path.Tag(list).Tag(1).Tag(2);
    walkers_destroyed = 0;
    tests::on_free = [](const void* block) { walkers_destroyed += block == walker_at_work; };
    EXPECT_EQ(Validate(path.get()), 0);
    tests::on_free = nullptr;
    EXPECT_EQ(walkers_destroyed, 1);
    walker_at_work = nullptr;
  }
}

using PointDeathTest = WalkerReads;

TEST_F(PointDeathTest, EndsTheProcessWhenElementFourIsNoTag) {
  ConfigureAndBind({});
  KeypathBuilder path;
  path.Tag(1).Tag(2).Tag(3).Key("7").Key("8").Tag(4);
  EXPECT_DEATH(Validate(path.get()),
               AssertionFailure("src/lib/validate_intf_vrf:237", "int validate_intf_vrf",
                                "(&keypath->v[4][0])->type == C_XMLTAG"));
}

// The kind of interface is asked for first, so its type test speaks for a wrong element 0.
TEST_F(PointDeathTest, EndsTheProcessWhenElementZeroIsNoTag) {
  ConfigureAndBind({});
  KeypathBuilder path;
  path.Key("7").Tag(ipapp_l3).Tag(1);
  EXPECT_DEATH(Validate(path.get()),
               AssertionFailure("src/lib/config:52",
                                "static ip_application::config_valid::InterfaceType "
                                "ip_application::config_valid::Config::intf_type_from_confd_path",
                                "(&keypath->v[0][0])->type == C_XMLTAG"));
}

TEST_F(PointDeathTest, EndsTheProcessWhenElementZeroIsNoTagAnyMore) {
  ConfigureAndBind({});
  KeypathBuilder path;
  path.Tag(ipapp_l3).Tag(1).Tag(2);
  on_call = [&path](const std::string& /*call*/) { path.get()->v[0][0].type = C_BUF; };
  EXPECT_DEATH(Validate(path.get()),
               AssertionFailure("src/lib/validate_intf_vrf:225", "int validate_intf_vrf",
                                "(&keypath->v[0][0])->type == C_XMLTAG"));
}

}  // namespace
