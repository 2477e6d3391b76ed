// The check of names and number of L3 interfaces on hand-built tables.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config.h"
#include "validate_config.h"

namespace ip_application::config_valid {
namespace {

// "accepted", or the text of the refusal.
std::string Check(ValidateConfig& checker, const std::vector<std::string>& display_names) {
  Config config;
  for (const std::string& name : display_names) {
    config.l3_config_.interfaces_.emplace_back().name = name;
  }
  const int result = checker.ValidateInterfaceL3(config);
  EXPECT_TRUE(result == 0 || result == -1) << result;
  return result == 0 ? "accepted" : checker.error_;
}

std::string Check(const std::vector<std::string>& display_names) {
  ValidateConfig checker;
  return Check(checker, display_names);
}

std::string Invalid(const std::string& key) {
  return "L3 interface name " + key +
         " contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)";
}

TEST(ValidateInterfaceL3, JudgesEveryByte) {
  const std::string allowed = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";
  int accepted = 0;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string key(1, static_cast<char>(byte));
    const bool is_allowed = allowed.find(key) != std::string::npos;
    for (const std::string& whole : {key, "a" + key, key + "a"}) {
      EXPECT_EQ(Check({"l3 " + whole}), is_allowed ? "accepted" : Invalid(whole)) << byte;
    }
    accepted += is_allowed ? 1 : 0;
  }
  EXPECT_EQ(accepted, 64);
}

TEST(ValidateInterfaceL3, KeyStandsBehindTheFirstBlank) {
  EXPECT_EQ(Check({"l3 a b"}), Invalid("a b"));
  EXPECT_EQ(Check({"l3  a"}), Invalid(" a"));
  EXPECT_EQ(Check({"anything 7"}), "accepted");
  EXPECT_EQ(Check({"l3 "}), "L3 interface name  is too short (minimum length: 1 character)");
  EXPECT_EQ(Check({" "}), "L3 interface name  is too short (minimum length: 1 character)");
}

TEST(ValidateInterfaceL3, NameWithoutBlankIsAllKey) {
  EXPECT_EQ(Check({"wan"}), "accepted");
  EXPECT_EQ(Check({"wan.1"}), Invalid("wan.1"));
  EXPECT_EQ(Check({""}), "L3 interface name  is too short (minimum length: 1 character)");
  EXPECT_EQ(Check({std::string(60, 'x')}), "accepted");
  EXPECT_EQ(Check({std::string(61, 'x')}), "L3 interface name " + std::string(61, 'x') +
                                               " is too long (maximum length: 60 characters)");
}

TEST(ValidateInterfaceL3, ReportsTheFirstInTheOrderOfTheTable) {
  EXPECT_EQ(Check({"l3 a", "l3 z.", "l3 b."}), Invalid("z."));
}

TEST(ValidateInterfaceL3, CountsEntriesWhateverTheirNames) {
  std::vector<std::string> names(256, "l3 7");
  EXPECT_EQ(Check(names), "accepted");
  names.emplace_back("l3 .");
  EXPECT_EQ(Check(names),
            "too many 'interface l3', 257 configured, at most 256 must be configured");
}

TEST(ValidateInterfaceL3, ReplacesTheTextAndClearsNone) {
  ValidateConfig checker;
  checker.error_ = "an earlier text";
  EXPECT_EQ(Check(checker, {"l3 7"}), "accepted");
  EXPECT_EQ(checker.error_, "an earlier text");
  EXPECT_EQ(Check(checker, {"l3 ."}), Invalid("."));
  EXPECT_EQ(checker.error_, Invalid("."));
}

TEST(ValidateInterfaceL3, LooksAtNoOtherTable) {
  Config config;
  config.lo_config_.interfaces_.emplace_back().name = "loopback .";
  config.mgmt_config_.interfaces_.resize(257);
  ValidateConfig checker;
  EXPECT_EQ(checker.ValidateInterfaceL3(config), 0);
  EXPECT_EQ(checker.error_, "");
}

}  // namespace
}  // namespace ip_application::config_valid
