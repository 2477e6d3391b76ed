// The entry points of the real module: what reaches which validation point, with which arguments,
// and what is refused before.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/point_fixture.h"

namespace ip_application::config_valid {
class Config;
}

using ip_application::config_valid::Config;

namespace tests {
namespace {

// One call of a validation-point function.
struct PointCall {
  std::string function;
  int sock;
  confd_trans_ctx* tctx;
  confd_hkeypath_t* keypath;
  confd_value_t* newval;
  Config* config;

  friend bool operator==(const PointCall&, const PointCall&) = default;
};

void PrintTo(const PointCall& call, std::ostream* out) { *out << call.function; }

std::vector<PointCall> point_calls;
std::optional<int> result_to_give;  // without one, the point throws

int Record(const PointCall& call) {
  point_calls.push_back(call);
  if (!result_to_give) throw std::invalid_argument("stoul");
  return *result_to_give;
}

}  // namespace
}  // namespace tests

// The module's table names its functions as the dynamic linker resolves them, so that these stand
// in for them. A macro, because the eleven differ in nothing but the name.
#define IPAV_RECORD_POINT(function)                                                   \
  extern "C" int function(int sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath, \
                          confd_value_t* newval, Config& config) {                    \
    return tests::Record({#function, sock, tctx, keypath, newval, &config});          \
  }

IPAV_RECORD_POINT(validate_intf_l3_name)
IPAV_RECORD_POINT(validate_intf_vrf)
IPAV_RECORD_POINT(validate_ipv4_addr)
IPAV_RECORD_POINT(validate_ipv4_addr_cross_prot)
IPAV_RECORD_POINT(validate_ipv4_addr_route)
IPAV_RECORD_POINT(validate_ipv6_addr)
IPAV_RECORD_POINT(validate_ipv6_addr_route)
IPAV_RECORD_POINT(validate_ipv6_nd_ra_interval)
IPAV_RECORD_POINT(validate_ipv6_nd_ra_lifetime)
IPAV_RECORD_POINT(validate_route_l3_intf)
IPAV_RECORD_POINT(validate_lower_layer_cross_prot)

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kContextName[] = "ip_app_validation";

// Calls `validate` with arguments that a test may bend before.
class DispatchTest : public PointTest {
 protected:
  DispatchTest() {
    Device device;
    device.l3 = {{.name = "a.b"}};
    Configure(device);
    keypath_.emplace(candidate(), "/config/interface/l3{a.b}");
    Fill(context_.get());
    daemon_ = *static_cast<framework::Daemon*>(context_.get()->vcb_opaque);
    registry_ = static_cast<framework::ContextRegistry*>(context_.get()->v_opaque);
    context_.get()->vcb_opaque = &daemon_;
    CONFD_SET_XMLTAG(&newval_, 1, 2);
    point_calls.clear();
    result_to_give = 0;
  }

  int Call(const std::string& opaque) {
    opaque_ = opaque;
    context_.get()->validate_opaque = opaque_.data();
    return LoadedModule().validate(context_.get(), keypath_->get(), &newval_);
  }

  Config* config() const { return static_cast<Config*>(registry_->Find(kContextName)); }

  framework::Daemon daemon_;
  framework::ContextRegistry* registry_;
  confd::TransactionContext context_;
  std::optional<confd::Keypath> keypath_;
  confd_value_t newval_{};
  std::string opaque_;
};

struct Row {
  const char* name;
  const char* function;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

const Row kRows[] = {
    {"intf_l3_name_validation", "validate_intf_l3_name"},
    {"intf_vrf_validation", "validate_intf_vrf"},
    {"ipv4_addr_validation", "validate_ipv4_addr"},
    {"ipv4_addr_prot_cross_validation", "validate_ipv4_addr_cross_prot"},
    {"ipv4_addr_route_validation", "validate_ipv4_addr_route"},
    {"ipv6_addr_validation", "validate_ipv6_addr"},
    {"ipv6_addr_route_validation", "validate_ipv6_addr_route"},
    {"validate_ipv6_nd_ra_interval", "validate_ipv6_nd_ra_interval"},
    {"validate_ipv6_nd_ra_lifetime", "validate_ipv6_nd_ra_lifetime"},
    {"static_route_l3_intf_validation", "validate_route_l3_intf"},
    {"lower_layer_prot_cross_validation", "validate_lower_layer_cross_prot"},
};

class EveryName : public DispatchTest, public testing::WithParamInterface<Row> {
 protected:
  std::string name() const { return GetParam().name; }

  PointCall ExpectedCall() {
    return {GetParam().function,
            daemon_.maapi_socket,
            context_.get(),
            keypath_->get(),
            &newval_,
            config()};
  }
};

TEST_P(EveryName, ReachesItsFunctionWithTheDaemonsArguments) {
  EXPECT_EQ(Call(name()), 0);
  EXPECT_THAT(point_calls, ElementsAre(ExpectedCall()));
}

TEST_P(EveryName, MayHaveCharactersBehind) {
  EXPECT_EQ(Call(name() + "2"), 0);
  EXPECT_EQ(Call(name() + " of an interface"), 0);
  EXPECT_THAT(point_calls, ElementsAre(ExpectedCall(), ExpectedCall()));
}

TEST_P(EveryName, MustBeWhole) {
  for (const std::string& part :
       {name().substr(0, 9), name().substr(0, name().size() - 1), name().substr(1), " " + name()}) {
    EXPECT_EQ(Call(part), -1) << part;
  }
  EXPECT_FALSE(context_.has_error());
  EXPECT_THAT(point_calls, IsEmpty());
}

TEST_P(EveryName, PassesTheResultOn) {
  for (const int result : {0, -1, 1, 7, INT_MIN}) {
    result_to_give = result;
    EXPECT_EQ(Call(name()), result);
  }
  EXPECT_FALSE(context_.has_error());
}

TEST_P(EveryName, LetsExceptionsPass) {
  result_to_give.reset();
  EXPECT_THROW(Call(name()), std::invalid_argument);
  EXPECT_FALSE(context_.has_error());
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryName, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

struct NullCase {
  const char* name;
  bool tctx;
  bool keypath;
  bool newval;
};

void PrintTo(const NullCase& c, std::ostream* out) { *out << c.name; }

const NullCase kNullCases[] = {
    {"Context", true, false, false},
    {"Keypath", false, true, false},
    {"Value", false, false, true},
    {"ContextAndKeypath", true, true, false},
    {"ContextAndValue", true, false, true},
    {"KeypathAndValue", false, true, true},
    {"All", true, true, true},
};

class NullArgument : public DispatchTest, public testing::WithParamInterface<NullCase> {};

TEST_P(NullArgument, IsRefusedWithoutText) {
  const NullCase& c = GetParam();
  std::string opaque = "intf_vrf_validation";
  context_.get()->validate_opaque = opaque.data();
  EXPECT_EQ(
      LoadedModule().validate(c.tctx ? nullptr : context_.get(),
                              c.keypath ? nullptr : keypath_->get(), c.newval ? nullptr : &newval_),
      -1);
  EXPECT_FALSE(context_.has_error());
  EXPECT_THAT(point_calls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Nulls, NullArgument, testing::ValuesIn(kNullCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(DispatchTest, NegativeSocketIsRefusedWithoutText) {
  for (const int sock : {-1, -2, INT_MIN}) {
    daemon_.maapi_socket = sock;
    EXPECT_EQ(Call("intf_vrf_validation"), -1) << sock;
  }
  context_.get()->vcb_opaque = nullptr;
  EXPECT_EQ(Call("intf_vrf_validation"), -1);
  EXPECT_FALSE(context_.has_error());
  EXPECT_THAT(point_calls, IsEmpty());
}

TEST_F(DispatchTest, SocketZeroIsASocket) {
  daemon_.maapi_socket = 0;
  EXPECT_EQ(Call("intf_vrf_validation"), 0);
  ASSERT_EQ(point_calls.size(), 1u);
  EXPECT_EQ(point_calls[0].sock, 0);
}

TEST_F(DispatchTest, MissingContextIsRefusedWithAFixedText) {
  framework::ContextRegistry registry;
  registry.Register("ip_app_validatio", config());
  registry.Register("ip_app_validation2", config());
  registry.Register(kContextName, nullptr);
  context_.get()->v_opaque = &registry;
  EXPECT_EQ(Call("intf_vrf_validation"), -1);
  EXPECT_EQ(context_.error(), "Lib context is null!");

  // Before the name is looked up.
  context_.ClearError();
  EXPECT_EQ(Call("unknown"), -1);
  EXPECT_EQ(context_.error(), "Lib context is null!");
  EXPECT_THAT(point_calls, IsEmpty());
}

TEST_F(DispatchTest, SocketIsAskedForBeforeTheContext) {
  daemon_.maapi_socket = -1;
  context_.get()->v_opaque = nullptr;
  EXPECT_EQ(Call("intf_vrf_validation"), -1);
  EXPECT_FALSE(context_.has_error());
}

TEST_F(DispatchTest, UnknownNameIsRefusedWithoutText) {
  for (const char* opaque : {"unknown_validation", "", "Intf_vrf_validation", "intf_vrf"}) {
    EXPECT_EQ(Call(opaque), -1) << opaque;
  }
  EXPECT_FALSE(context_.has_error());
  EXPECT_THAT(point_calls, IsEmpty());
}

TEST_F(DispatchTest, ErrorTextStaysWhenNoneIsSet) {
  confd_trans_seterr(context_.get(), "of an earlier call");
  EXPECT_EQ(Call("unknown_validation"), -1);
  EXPECT_EQ(Call("intf_vrf_validation"), 0);
  EXPECT_EQ(context_.error(), "of an earlier call");
}

// Deliberate: an unknown name binds the Config to the transaction like any other. A point that is
// then called past `validate` reads its table there.
TEST_F(DispatchTest, UnknownNameBindsTheConfig) {
  using PointFunction = int (*)(int, confd_trans_ctx*, confd_hkeypath_t*, confd_value_t*, Config&);
  const auto own_l3_name =
      reinterpret_cast<PointFunction>(dlsym(LoadedModule().handle, "validate_intf_l3_name"));
  ASSERT_NE(own_l3_name, nullptr);

  EXPECT_EQ(Call("unknown_validation"), -1);
  EXPECT_EQ(own_l3_name(-1, context_.get(), keypath_->get(), &newval_, *config()), -1);
  EXPECT_EQ(context_.error(),
            "L3 interface name a.b contains invalid characters (allowed characters: 0-9, a-z, A-Z, "
            "_, -)");
  EXPECT_THAT(point_calls, IsEmpty());
}

struct NameBufferCase {
  const char* name;
  int size;
  std::string written;  // its terminating zero included
};

void PrintTo(const NameBufferCase& c, std::ostream* out) { *out << c.name; }

const NameBufferCase kNameBufferCases[] = {
    {"NoRoom", 0, ""},
    {"RoomForTheZero", 1, std::string("\0", 1)},
    {"FourBytes", 4, std::string("ip_\0", 4)},
    {"OneTooShort", 17, std::string("ip_app_validatio\0", 17)},
    {"JustEnough", 18, std::string("ip_app_validation\0", 18)},
    {"MoreThanEnough", 100, std::string("ip_app_validation\0", 18)},
};

class ContextName : public testing::TestWithParam<NameBufferCase> {};

TEST_P(ContextName, IsCutToTheBuffer) {
  const std::string& written = GetParam().written;
  const std::string untouched(100, '#');
  std::string buffer = untouched;
  EXPECT_EQ(LoadedModule().get_validation_point(buffer.data(), GetParam().size), 0);
  EXPECT_EQ(buffer, written + untouched.substr(written.size()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, ContextName, testing::ValuesIn(kNameBufferCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Context, IsNewEveryTimeAndNotResetAtTheEnd) {
  void* first = nullptr;
  void* second = nullptr;
  EXPECT_EQ(LoadedModule().lib_init(&first), 0);
  EXPECT_EQ(LoadedModule().lib_init(&second), 0);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_NE(first, second);

  const void* const before = first;
  EXPECT_EQ(LoadedModule().lib_finish(&first), 0);
  EXPECT_EQ(LoadedModule().lib_finish(&second), 0);
  EXPECT_EQ(first, before);
}

TEST(Context, NeedNotBeThereAtTheEnd) {
  void* context = nullptr;
  EXPECT_EQ(LoadedModule().lib_finish(&context), 0);
  EXPECT_EQ(context, nullptr);
}

}  // namespace
}  // namespace tests
