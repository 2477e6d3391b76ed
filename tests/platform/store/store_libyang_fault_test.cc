// What libyang says of a fault, taken apart.
#include "store/libyang_fault.h"

#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <ostream>
#include <string>

namespace store {
namespace {

constexpr const char* kModule =
    "module small { namespace \"urn:small\"; prefix s;"
    "  container box { leaf number { type int8; } leaf name { type string; } must \"name\"; } }";

class LibyangFaultTest : public testing::Test {
 protected:
  LibyangFaultTest() : options_(ly_log_options(LY_LOSTORE_LAST)) {
    EXPECT_EQ(ly_ctx_new(nullptr, 0, &context_), LY_SUCCESS);
    EXPECT_EQ(lys_parse_mem(context_, kModule, LYS_IN_YANG, nullptr), LY_SUCCESS);
    ly_err_clean(context_, nullptr);
  }
  ~LibyangFaultTest() override {
    ly_ctx_destroy(context_);
    ly_log_options(options_);
  }

  uint32_t options_;
  ly_ctx* context_ = nullptr;
};

struct FaultCase {
  const char* name;
  const char* text;
  const char* path;
  uint64_t line;
};

std::ostream& operator<<(std::ostream& out, const FaultCase& c) { return out << c.name; }

class FaultOfText : public LibyangFaultTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(FaultOfText, HasItsPlace) {
  lyd_node* tree = nullptr;
  ASSERT_NE(lyd_parse_data_mem(context_, GetParam().text, LYD_JSON, LYD_PARSE_STRICT,
                               LYD_VALIDATE_NO_STATE, &tree),
            LY_SUCCESS);
  const LibyangFault fault = LastFault(context_);
  EXPECT_NE(fault.message, "");
  EXPECT_NE(fault.location, "");
  EXPECT_EQ(fault.path, GetParam().path);
  EXPECT_EQ(fault.line, GetParam().line);
}

constexpr FaultCase kFaultCases[] = {
    {"Value", "{\"small:box\": {\n\"number\": 200}}", "/small:box/number", 2},
    {"Syntax", "{\n\n\"small:box\": ?}", "", 3},
    {"WholeTree", "{\"small:box\": {\n\"number\": 1}}", "/small:box", 0},
};

INSTANTIATE_TEST_SUITE_P(Places, FaultOfText, testing::ValuesIn(kFaultCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(LibyangFaultTest, IsEmptyWhenNothingIsWrong) {
  const LibyangFault fault = LastFault(context_);
  EXPECT_EQ(fault.message, "");
  EXPECT_EQ(fault.location, "");
  EXPECT_EQ(fault.path, "");
  EXPECT_EQ(fault.line, 0u);
}

}  // namespace
}  // namespace store
