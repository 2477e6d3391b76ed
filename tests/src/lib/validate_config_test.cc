#include "validate_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "config.h"
#include "framework/host.h"
#include "ip_app_validation/ip_app_validation.h"
#include "static_route_config.h"
#include "support/config_tables.h"
#include "support/keypath_builder.h"
#include "support/scripted_confd.h"
#include "validation_points.h"
#include "velmor-ip-app.h"

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::KeypathBuilder;
using tests::ScriptedConfd;
using tests::Uint16;

constexpr char kContextName[] = "ip_app_validation";
constexpr char kIntervalSentence[] =
    "Minimum interval must be no greater than maximum interval * 0.75";
constexpr char kLifetimeSentence[] =
    "Lifetime must be greater than maximum router advertisement interval";

// A daemon that has loaded the plug-in and begun to validate a transaction.
class ValidateEntry : public testing::Test {
 protected:
  ValidateEntry() {
    EXPECT_EQ(lib_init(&context_), 0);
    registry_.Register(kContextName, context_);
    tctx_.v_opaque = &registry_;
    tctx_.vcb_opaque = &daemon_;
    tctx_.thandle = 42;
    // Fits every point at once: a list as the deepest element, an interface where timers have it.
    keypath_.Tag(ipapp_l3).Tag(2).Tag(3).Key("7").Tag(ipapp_l3);
    newval_.type = C_NOEXISTS;
  }
  ~ValidateEntry() override { EXPECT_EQ(lib_finish(&context_), 0); }

  int Validate(const std::string& opaque) {
    opaque_ = opaque;
    tctx_.validate_opaque = opaque_.data();
    return validate(&tctx_, keypath_.get(), &newval_);
  }

  // An interface that breaks both router-advertisement rules, so that the text tells which point
  // was reached.
  void BreakRouterAdvertisement() {
    const std::string ra = "/config/interface/l3{7}/ipv6/nd/ra/";
    scripted_.answers[ra + "max-interval"] = {.exists = 1, .value = Uint16(600)};
    scripted_.answers[ra + "min-interval"] = {.exists = 1, .value = Uint16(600)};
    scripted_.answers[ra + "lifetime"] = {.exists = 1, .value = Uint16(600)};
  }

  Config& config() { return *static_cast<Config*>(context_); }

  void ExpectBound(int sock, const confd_trans_ctx* tctx) {
    for (const GenericConfig* table : tests::AllTables(config())) {
      EXPECT_EQ(table->sock_, sock);
      EXPECT_EQ(table->trans_, tctx);
    }
  }

  ScriptedConfd scripted_{ScriptedConfd::Unscripted::kFails};
  void* context_ = nullptr;
  framework::Daemon daemon_{.maapi_socket = 7, .cdb_socket = -1};
  framework::ContextRegistry registry_;
  confd_trans_ctx tctx_{};
  KeypathBuilder keypath_;
  confd_value_t newval_{};
  std::string opaque_;
};

TEST_F(ValidateEntry, NullArgumentsAreRefusedWithoutText) {
  std::string name = "validate_ipv6_nd_ra_interval";
  tctx_.validate_opaque = name.data();
  BreakRouterAdvertisement();
  EXPECT_EQ(validate(&tctx_, nullptr, &newval_), -1);
  EXPECT_EQ(validate(&tctx_, keypath_.get(), nullptr), -1);
  EXPECT_EQ(validate(nullptr, keypath_.get(), &newval_), -1);
  EXPECT_EQ(validate(nullptr, nullptr, nullptr), -1);
  EXPECT_THAT(scripted_.TakeCalls(), IsEmpty());
  ExpectBound(-1, nullptr);
}

TEST_F(ValidateEntry, WithoutMaapiSocketIsRefusedWithoutText) {
  for (const int sock : {-1, -2}) {
    daemon_.maapi_socket = sock;
    EXPECT_EQ(Validate("intf_vrf_validation"), -1);
  }
  tctx_.vcb_opaque = nullptr;
  EXPECT_EQ(Validate("intf_vrf_validation"), -1);
  EXPECT_THAT(scripted_.TakeCalls(), IsEmpty());
  ExpectBound(-1, nullptr);
}

TEST_F(ValidateEntry, SocketZeroIsASocket) {
  daemon_.maapi_socket = 0;
  EXPECT_EQ(Validate("intf_vrf_validation"), 0);
  ExpectBound(0, &tctx_);
}

TEST_F(ValidateEntry, WithoutContextIsRefusedWithAFixedText) {
  framework::ContextRegistry registry;
  registry.Register("ip_app_validatio", context_);
  registry.Register("ip_app_validation2", context_);
  tctx_.v_opaque = &registry;
  EXPECT_EQ(Validate("intf_vrf_validation"), -1);
  EXPECT_EQ(scripted_.error, "Lib context is null!");
  EXPECT_EQ(scripted_.refused, &tctx_);
  EXPECT_THAT(scripted_.TakeCalls(), ElementsAre("confd_trans_seterr(\"Lib context is null!\")"));
  ExpectBound(-1, nullptr);
}

TEST_F(ValidateEntry, WithoutRegistryIsRefusedWithTheSameText) {
  tctx_.v_opaque = nullptr;
  EXPECT_EQ(Validate("unknown"), -1);
  EXPECT_THAT(scripted_.TakeCalls(), ElementsAre("confd_trans_seterr(\"Lib context is null!\")"));
}

TEST_F(ValidateEntry, TheSocketIsAskedForBeforeTheContext) {
  daemon_.maapi_socket = -1;
  tctx_.v_opaque = nullptr;
  EXPECT_EQ(Validate("intf_vrf_validation"), -1);
  EXPECT_THAT(scripted_.TakeCalls(), IsEmpty());
}

TEST_F(ValidateEntry, EveryCallBindsTheConfigAnew) {
  EXPECT_EQ(Validate("intf_vrf_validation"), 0);
  ExpectBound(7, &tctx_);

  config().l3_config_.ipv4_read_ = true;
  confd_trans_ctx second = tctx_;
  daemon_.maapi_socket = 8;
  EXPECT_EQ(validate(&second, keypath_.get(), &newval_), 0);
  ExpectBound(8, &second);
  EXPECT_TRUE(config().l3_config_.ipv4_read_);
}

TEST_F(ValidateEntry, AnAcceptedCallSetsNoText) {
  EXPECT_EQ(Validate("validate_ipv6_nd_ra_interval"), 0);
  EXPECT_EQ(scripted_.error, std::nullopt);
}

TEST_F(ValidateEntry, ThePointGetsSocketTransactionAndKeypath) {
  BreakRouterAdvertisement();
  EXPECT_EQ(Validate("validate_ipv6_nd_ra_interval"), -1);
  EXPECT_EQ(scripted_.refused, &tctx_);
  EXPECT_EQ(scripted_.TakeCalls().front(),
            "maapi_exists(7, 42, \"/config/interface/l3{7}/ipv6/nd/ra/max-interval\")");
}

TEST_F(ValidateEntry, ExceptionsPassThrough) {
  scripted_.on_call = [](std::string_view /*function*/) { throw std::invalid_argument("stoul"); };
  EXPECT_THROW(Validate("validate_ipv6_nd_ra_interval"), std::invalid_argument);
}

struct RowCase {
  const char* name;
  ValidationPointFn callback;
};

std::ostream& operator<<(std::ostream& out, const RowCase& c) { return out << c.name; }

const RowCase kRows[] = {
    {"intf_l3_name_validation", validate_intf_l3_name},
    {"intf_vrf_validation", validate_intf_vrf},
    {"ipv4_addr_validation", validate_ipv4_addr},
    {"ipv4_addr_prot_cross_validation", validate_ipv4_addr_cross_prot},
    {"ipv4_addr_route_validation", validate_ipv4_addr_route},
    {"ipv6_addr_validation", validate_ipv6_addr},
    {"ipv6_addr_route_validation", validate_ipv6_addr_route},
    {"validate_ipv6_nd_ra_interval", validate_ipv6_nd_ra_interval},
    {"validate_ipv6_nd_ra_lifetime", validate_ipv6_nd_ra_lifetime},
    {"static_route_l3_intf_validation", validate_route_l3_intf},
    {"lower_layer_prot_cross_validation", validate_lower_layer_cross_prot},
};

TEST(ValidationPointTable, HasTheseRowsInThisOrder) {
  ASSERT_EQ(validation_point_table.size(), std::size(kRows));
  for (size_t i = 0; i < std::size(kRows); ++i) {
    EXPECT_STREQ(validation_point_table[i].name, kRows[i].name) << "row " << i;
    EXPECT_EQ(validation_point_table[i].callback, kRows[i].callback) << "row " << i;
  }
}

// With two such names the order of the rows would decide.
TEST(ValidationPointTable, NoNameBeginsWithAnother) {
  for (const RowCase& a : kRows) {
    for (const RowCase& b : kRows) {
      EXPECT_TRUE(&a == &b || !std::string(a.name).starts_with(b.name)) << a.name;
    }
  }
}

class EveryRow : public ValidateEntry, public testing::WithParamInterface<RowCase> {
 protected:
  std::string name() const { return GetParam().name; }
};

TEST_P(EveryRow, AcceptsWhenNothingIsConfigured) {
  EXPECT_EQ(Validate(name()), 0);
  EXPECT_EQ(scripted_.error, std::nullopt);
}

TEST_P(EveryRow, IsReachedWithCharactersBehindItsName) {
  EXPECT_EQ(Validate(name() + "2"), 0);
  EXPECT_EQ(Validate(name() + " of an interface"), 0);
}

TEST_P(EveryRow, IsNotReachedByPartOfItsName) {
  EXPECT_EQ(Validate(name().substr(0, 9)), -1);
  EXPECT_EQ(Validate(name().substr(0, name().size() - 1)), -1);
  EXPECT_EQ(Validate(name().substr(1)), -1);
  EXPECT_EQ(Validate(" " + name()), -1);
  EXPECT_EQ(scripted_.error, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryRow, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

struct DispatchCase {
  const char* name;
  const char* opaque;
  int result;
  const char* error;  // null: none is set
};

std::ostream& operator<<(std::ostream& out, const DispatchCase& c) { return out << c.name; }

const DispatchCase kDispatchCases[] = {
    {"Interval", "validate_ipv6_nd_ra_interval", -1, kIntervalSentence},
    {"IntervalWithSuffix", "validate_ipv6_nd_ra_interval_l3", -1, kIntervalSentence},
    {"Lifetime", "validate_ipv6_nd_ra_lifetime", -1, kLifetimeSentence},
    {"LifetimeWithSuffix", "validate_ipv6_nd_ra_lifetime_l3", -1, kLifetimeSentence},
    {"NameThatHoldsAnother", "intf_vrf_validation validate_ipv6_nd_ra_interval", 0, nullptr},
    {"Unknown", "unknown_validation", -1, nullptr},
    {"Empty", "", -1, nullptr},
    {"FirstNineCharacters", "ipv4_addr", -1, nullptr},
    {"OtherCase", "Intf_vrf_validation", -1, nullptr},
};

class Dispatch : public ValidateEntry, public testing::WithParamInterface<DispatchCase> {};

TEST_P(Dispatch, ByTheBeginningOfTheOpaqueString) {
  BreakRouterAdvertisement();
  EXPECT_EQ(Validate(GetParam().opaque), GetParam().result);
  if (GetParam().error == nullptr) {
    EXPECT_EQ(scripted_.error, std::nullopt);
  } else {
    EXPECT_EQ(scripted_.error, GetParam().error);
  }
  if (GetParam().result != 0 && GetParam().error == nullptr) {
    EXPECT_THAT(scripted_.TakeCalls(), IsEmpty());  // no row was reached
  }
  // An unknown name, too, leaves the Config bound.
  ExpectBound(7, &tctx_);
}

INSTANTIATE_TEST_SUITE_P(Names, Dispatch, testing::ValuesIn(kDispatchCases),
                         [](const auto& row) { return std::string(row.param.name); });

// With every table as it is, read or filled by hand.
struct RefusalCase {
  const char* name;
  const char* point;
  uint32_t tag;  // of the deepest element
  void (*fill)(Config& config);
  const char* error;
};

std::ostream& operator<<(std::ostream& out, const RefusalCase& c) { return out << c.name; }

// An interface whose name would be a conversion if it were taken for a format.
Interface Odd(const char* name) {
  Interface intf;
  intf.name = name;
  intf.vrf_name = "global";
  return intf;
}

void AddNetworkAddress(Config& config) {
  Interface intf = Odd("l3 7%s");
  intf.ipv4_addr_list.emplace_back(0x0a000000, 24);
  config.l3_config_.interfaces_ = {intf};
}

void AddDuplicate(Config& config) {
  Interface intf = Odd("l3 7%s");
  intf.ipv6_addr_list.assign(2, nettypes::IPv6AddrMask(nettypes::IPv6Addr(), 64));
  config.l3_config_.interfaces_ = {intf};
}

void AddTooManyRoutes(Config& config) { config.static_route_config_->ipv4_route_count_ = 1001; }

void AddOspf(Config& config) {
  config.l3_config_.interfaces_ = {Odd("l3 7%s")};
  auto record = std::make_shared<OspfIf>();
  record->process_id = 10;
  record->vrf_name = "red%s";
  record->intf_name = "l3 7%s";
  record->addresses.emplace_back(0x0a000001, 24);
  config.ospfv2_config_.table_ = {record};
}

constexpr char kInvalidInterface[] = "invalid interface being handled by IP-App validation";
constexpr char kTooManyRoutes[] = "The maximum number of available static routes was exceeded.";

const RefusalCase kRefusals[] = {
    {"L3Name", "intf_l3_name_validation", ipapp_l3,
     [](Config& config) { config.l3_config_.interfaces_ = {Odd("l3 7%s")}; },
     "L3 interface name 7%s contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)"},
    {"VrfPointAddress", "intf_vrf_validation", ipapp_l3, AddNetworkAddress,
     "l3 7%s ipv4 address 10.0.0.0/24 cannot be configured as network address."},
    {"VrfPointVrf", "intf_vrf_validation", ipapp_l3, AddOspf,
     "l3 7%s vrf global and router ospf 10 vrf red%s cannot be associated with divergent VRF"},
    {"Ipv4OfNoInterface", "ipv4_addr_validation", ipapp_vrf, [](Config&) {}, kInvalidInterface},
    {"Ipv4Address", "ipv4_addr_validation", ipapp_l3, AddNetworkAddress,
     "l3 7%s ipv4 address 10.0.0.0/24 cannot be configured as network address."},
    {"Ipv6OfNoInterface", "ipv6_addr_validation", ipapp_vrf, [](Config&) {}, kInvalidInterface},
    {"Ipv6Address", "ipv6_addr_validation", ipapp_l3, AddDuplicate,
     "l3 7%s has duplicated IPv6 address ::"},
    {"OspfAddress", "ipv4_addr_prot_cross_validation", ipapp_l3, AddOspf,
     "10.0.0.1/24 cannot be modified nor deleted, it is assigned to router ospf 10 vrf red%s area "
     "0 (0.0.0.0)"},
    {"Ipv4Routes", "ipv4_addr_route_validation", ipapp_l3, AddTooManyRoutes, kTooManyRoutes},
    {"Ipv6Routes", "ipv6_addr_route_validation", ipapp_l3, AddTooManyRoutes, kTooManyRoutes},
    {"RouteOutput", "static_route_l3_intf_validation", ipapp_l3,
     [](Config& config) {
       config.l3_config_.interfaces_ = {Odd("l3 7%s")};
       config.static_route_config_->output_interfaces_ = {"l3 7%s"};
     },
     "l3 7%s is being used by a static route. Lower-layer-if cannot be removed from this "
     "interface"},
};

class Refusal : public ValidateEntry, public testing::WithParamInterface<RefusalCase> {};

TEST_P(Refusal, SetsItsTextOnceAsAnArgument) {
  for (GenericConfig* table : tests::AllTables(config())) {
    table->ipv4_read_ = true;
    table->ipv6_read_ = true;
  }
  GetParam().fill(config());
  CONFD_SET_XMLTAG(&keypath_.get()->v[0][0], GetParam().tag, 1);
  EXPECT_EQ(Validate(GetParam().point), -1);
  EXPECT_EQ(scripted_.error, GetParam().error);
  EXPECT_EQ(scripted_.refused, &tctx_);
  EXPECT_THAT(scripted_.TakeCalls(), ElementsAre("confd_trans_seterr(\"%s\")"));
}

INSTANTIATE_TEST_SUITE_P(Points, Refusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return std::string(row.param.name); });

struct NameBufferCase {
  const char* name;
  int size;
  std::string written;  // its terminating zero included
};

std::ostream& operator<<(std::ostream& out, const NameBufferCase& c) { return out << c.name; }

const NameBufferCase kNameBufferCases[] = {
    {"NoRoom", 0, ""},
    {"RoomForTheZero", 1, std::string("\0", 1)},
    {"FourBytes", 4, std::string("ip_\0", 4)},
    {"OneTooShort", 17, std::string("ip_app_validatio\0", 17)},
    {"JustEnough", 18, std::string("ip_app_validation\0", 18)},
    {"MoreThanEnough", 100, std::string("ip_app_validation\0", 18)},
};

class GetValidationPoint : public testing::TestWithParam<NameBufferCase> {};

TEST_P(GetValidationPoint, CutsTheContextNameToTheBuffer) {
  const std::string untouched(100, '#');
  std::string buffer = untouched;
  EXPECT_EQ(get_validation_point(buffer.data(), GetParam().size), 0);
  EXPECT_EQ(buffer, GetParam().written + untouched.substr(GetParam().written.size()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, GetValidationPoint, testing::ValuesIn(kNameBufferCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LibInit, MakesANewConfigEveryTime) {
  void* first = nullptr;
  void* second = nullptr;
  EXPECT_EQ(lib_init(&first), 0);
  EXPECT_EQ(lib_init(&second), 0);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(static_cast<Config*>(first)->l3_config_.sock_, -1);
  EXPECT_EQ(lib_finish(&first), 0);
  EXPECT_EQ(lib_finish(&second), 0);
}

TEST(LibFinish, DoesNothingWithoutContext) {
  void* context = nullptr;
  EXPECT_EQ(lib_finish(&context), 0);
  EXPECT_EQ(context, nullptr);
}

// A route table that tells when its Config is gone.
class DyingRoutes : public StaticRouteConfig {
 public:
  explicit DyingRoutes(bool* destroyed) : destroyed_(destroyed) {}
  ~DyingRoutes() override { *destroyed_ = true; }

 private:
  bool* destroyed_;
};

TEST(LibFinish, DestroysTheConfigAndDoesNotResetThePointer) {
  void* context = nullptr;
  EXPECT_EQ(lib_init(&context), 0);
  bool destroyed = false;
  static_cast<Config*>(context)->static_route_config_ = std::make_unique<DyingRoutes>(&destroyed);
  const void* const before = context;
  EXPECT_EQ(lib_finish(&context), 0);
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(context, before);
}

TEST(LibFinish, DoesNothingForAPointerThatWasReset) {
  void* context = nullptr;
  EXPECT_EQ(lib_init(&context), 0);
  EXPECT_EQ(lib_finish(&context), 0);
  context = nullptr;
  EXPECT_EQ(lib_finish(&context), 0);
  EXPECT_EQ(context, nullptr);
}

TEST(LibFinish, LeavesOtherContextsAlone) {
  void* first = nullptr;
  void* second = nullptr;
  EXPECT_EQ(lib_init(&first), 0);
  EXPECT_EQ(lib_init(&second), 0);
  bool destroyed = false;
  static_cast<Config*>(second)->static_route_config_ = std::make_unique<DyingRoutes>(&destroyed);
  EXPECT_EQ(lib_finish(&first), 0);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(lib_finish(&second), 0);
  EXPECT_TRUE(destroyed);
}

TEST(LibFinish, APointerTakesANewContextAfterwards) {
  void* context = nullptr;
  for (int life = 0; life < 2; ++life) {
    EXPECT_EQ(lib_init(&context), 0);
    bool destroyed = false;
    static_cast<Config*>(context)->static_route_config_ = std::make_unique<DyingRoutes>(&destroyed);
    EXPECT_EQ(lib_finish(&context), 0);
    EXPECT_TRUE(destroyed);
  }
}

TEST(Checker, HasNoErrorWhenItIsMade) {
  const ValidateConfig checker;
  EXPECT_EQ(checker.error_, "");
  static_assert(sizeof(ValidateConfig) == sizeof(std::string));
}

}  // namespace
}  // namespace ip_application::config_valid
