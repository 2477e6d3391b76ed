// intf_l3_name_validation on configurations in the store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/device.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::IsEmpty;

constexpr char kPoint[] = "intf_l3_name_validation";
constexpr char kList[] = "/config/interface/l3";

class L3Name : public PointTest {
 protected:
  // L3 interfaces of these names.
  void ConfigureNames(const std::vector<std::string>& names) {
    Device device;
    for (const std::string& name : names) device.l3.push_back({.name = name});
    Configure(device);
  }

  // The list as a whole, as ConfD calls the point.
  std::string Validate() { return PointTest::Validate(kPoint, kList); }

  std::string VerdictOn(const std::vector<std::string>& names) {
    RenewConfig();
    ConfigureNames(names);
    return Validate();
  }
};

std::string TooLong(const std::string& name) {
  return "L3 interface name " + name + " is too long (maximum length: 60 characters)";
}

std::string Invalid(const std::string& name) {
  return "L3 interface name " + name +
         " contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, -)";
}

// `count` times `text`.
std::string Times(int count, std::string_view text) {
  std::string whole;
  for (int i = 0; i < count; ++i) whole += text;
  return whole;
}

struct NameCase {
  const char* name;
  std::vector<std::string> names;
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const NameCase& c) { return out << c.name; }

const NameCase kNameCases[] = {
    {"NoInterface", {}, "accepted"},
    {"OneCharacter", {"7"}, "accepted"},
    {"EveryKindOfCharacter", {"Wan_1-a"}, "accepted"},
    {"AllAllowedLetters", {"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"}, "accepted"},
    {"AllAllowedOthers", {"0123456789-_"}, "accepted"},
    {"Dot",
     {"wan.1"},
     "L3 interface name wan.1 contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, "
     "-)"},
    {"Bytes59", {Times(59, "x")}, "accepted"},
    {"Bytes60", {Times(60, "x")}, "accepted"},
    {"Bytes61",
     {"abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghi"},
     "L3 interface name abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghi is too long "
     "(maximum length: 60 characters)"},
    {"Bytes255", {Times(255, "x")}, TooLong(Times(255, "x"))},
    {"Bytes300AreReadTo255", {Times(300, "x")}, TooLong(Times(255, "x"))},
    // Two blanks: between them stands the empty name.
    {"Empty", {""}, "L3 interface name  is too short (minimum length: 1 character)"},
    {"OnlyABlank", {" "}, Invalid(" ")},
    {"BlankInside",
     {"wan 1"},
     "L3 interface name wan 1 contains invalid characters (allowed characters: 0-9, a-z, A-Z, _, "
     "-)"},
    {"BlankInFront", {" wan"}, Invalid(" wan")},
    {"BlankBehind", {"wan "}, Invalid("wan ")},
    {"BlanksInside", {"a b c"}, Invalid("a b c")},
    {"InvalidAtTheEnd", {Times(59, "x") + "."}, Invalid(Times(59, "x") + ".")},
    // Bytes are counted and not characters.
    {"ThirtyTwoByteCharactersFit", {Times(30, "ü")}, Invalid(Times(30, "ü"))},
    {"ThirtyOneTwoByteCharacters", {Times(31, "ü")}, TooLong(Times(31, "ü"))},
    {"FifteenFourByteCharactersFit",
     {Times(15, "\xf0\x9f\x94\x8c")},
     Invalid(Times(15, "\xf0\x9f\x94\x8c"))},
    {"SixteenFourByteCharacters",
     {Times(16, "\xf0\x9f\x94\x8c")},
     TooLong(Times(16, "\xf0\x9f\x94\x8c"))},
    // Length goes before characters.
    {"TooLongAndInvalid", {Times(61, ".")}, TooLong(Times(61, "."))},
    // A message is no format.
    {"Conversions", {"%s%n%d"}, Invalid("%s%n%d")},
    {"PercentTooLong", {Times(61, "%")}, TooLong(Times(61, "%"))},
    {"BraceAndSlash", {"a}/b"}, Invalid("a}/b")},
    {"InDoubleQuotes", {"\"a\""}, Invalid("\"a\"")},
    // The first in the order of the keys, whatever is wrong with it.
    {"FirstOfTwoInvalid", {"b.", "a."}, Invalid("a.")},
    {"EmptyStandsFirst",
     {"a.", Times(61, "x"), ""},
     "L3 interface name  is too short (minimum length: 1 character)"},
    {"InvalidBeforeTooLong", {Times(61, "x"), "a."}, Invalid("a.")},
    {"TooLongBeforeInvalid", {"b.", Times(61, "a")}, TooLong(Times(61, "a"))},
    {"ShorterStandsFirst", {"a.b", "a."}, Invalid("a.")},
    {"UpperCaseStandsFirst", {"a.", "B."}, Invalid("B.")},
    {"ValidOnesAreSkipped", {"a", "b", "c.", "d."}, Invalid("c.")},
    {"LastIsInvalid", {"a", "b", "c."}, Invalid("c.")},
};

class NameVerdict : public L3Name, public testing::WithParamInterface<NameCase> {};

TEST_P(NameVerdict, IsAsListed) {
  ConfigureNames(GetParam().names);
  EXPECT_EQ(Validate(), GetParam().verdict);
  EXPECT_THAT(TakeFaults(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, NameVerdict, testing::ValuesIn(kNameCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Number of interfaces -------------------------------------------------------------------------

std::vector<std::string> Names(int count) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) names.push_back(std::to_string(i));
  return names;
}

TEST_F(L3Name, AtMost256Interfaces) {
  EXPECT_EQ(VerdictOn(Names(255)), "accepted");
  EXPECT_EQ(VerdictOn(Names(256)), "accepted");
  EXPECT_EQ(VerdictOn(Names(257)),
            "too many 'interface l3', 257 configured, at most 256 must be configured");
  EXPECT_EQ(VerdictOn(Names(1000)),
            "too many 'interface l3', 1000 configured, at most 256 must be configured");
}

TEST_F(L3Name, NumberIsCheckedBeforeNames) {
  std::vector<std::string> names = Names(256);
  names.push_back("a.");
  EXPECT_EQ(VerdictOn(names),
            "too many 'interface l3', 257 configured, at most 256 must be configured");
  names.erase(names.begin());
  EXPECT_EQ(VerdictOn(names), Invalid("a."));
}

// The key texts are cut when they are read, so the two are one interface.
TEST_F(L3Name, NamesThatDifferBehind255BytesCountOnce) {
  std::vector<std::string> names = Names(255);
  names.push_back(Times(255, "x") + "1");
  names.push_back(Times(255, "x") + "2");
  EXPECT_EQ(VerdictOn(names), TooLong(Times(255, "x")));
}

TEST_F(L3Name, OtherKindsOfInterfacesAreNotChecked) {
  std::vector<ConfiguredIntf> entries;
  for (int i = 0; i < 257; ++i) entries.push_back({.name = "lo." + std::to_string(i)});
  Configure(Device{.loopback = entries, .mgmt = entries});
  EXPECT_EQ(Validate(), "accepted");
}

// Characters -----------------------------------------------------------------------------------

std::string Utf8(uint32_t code_point) {
  const auto byte = [](uint32_t bits) { return static_cast<char>(static_cast<uint8_t>(bits)); };
  if (code_point < 0x80) return {byte(code_point)};
  if (code_point < 0x800) return {byte(0xc0 | code_point >> 6), byte(0x80 | (code_point & 0x3f))};
  if (code_point < 0x10000) {
    return {byte(0xe0 | code_point >> 12), byte(0x80 | (code_point >> 6 & 0x3f)),
            byte(0x80 | (code_point & 0x3f))};
  }
  return {byte(0xf0 | code_point >> 18), byte(0x80 | (code_point >> 12 & 0x3f)),
          byte(0x80 | (code_point >> 6 & 0x3f)), byte(0x80 | (code_point & 0x3f))};
}

TEST_F(L3Name, EveryAsciiCharacterThatAStringCanHold) {
  const std::string allowed = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";
  ASSERT_EQ(allowed.size(), 64u);
  int accepted = 0;
  for (uint32_t c = 1; c < 0x80; ++c) {
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') continue;  // in no YANG string
    const std::string character = Utf8(c);
    const bool is_allowed = allowed.find(character) != std::string::npos;
    for (const std::string& name : {character, "a" + character + "b"}) {
      EXPECT_EQ(VerdictOn({name}), is_allowed ? "accepted" : Invalid(name)) << c;
    }
    accepted += is_allowed ? 1 : 0;
  }
  EXPECT_EQ(accepted, 64);
}

// Characters in which every byte above 0x7f occurs that UTF-8 has: C0, C1 and F5 to FF it has not.
TEST_F(L3Name, EveryOtherByteThatAStringCanHold) {
  std::vector<uint32_t> code_points;
  for (uint32_t c = 0x80; c < 0x800; c += 0x3f) code_points.push_back(c);
  for (uint32_t c = 0x80; c < 0xc0; ++c) code_points.push_back(c);
  for (uint32_t lead = 0xe0; lead < 0xf0; ++lead) {
    code_points.push_back(lead == 0xe0 ? 0x0800 : (lead & 0xf) << 12);
  }
  for (const uint32_t c : {0x10000u, 0x40000u, 0x80000u, 0xc0000u, 0x100000u}) {
    code_points.push_back(c);
  }
  std::string seen;
  for (const uint32_t c : code_points) {
    EXPECT_EQ(VerdictOn({Utf8(c)}), Invalid(Utf8(c))) << c;
    seen += Utf8(c);
  }
  for (unsigned byte = 0x80; byte < 0xf5; ++byte) {
    if (byte == 0xc0 || byte == 0xc1) continue;
    EXPECT_NE(seen.find(static_cast<char>(byte)), std::string::npos) << byte;
  }
}

// What it reads --------------------------------------------------------------------------------

TEST_F(L3Name, ReadsWhatTheL3TableReadsForIpv4) {
  Configure(Device{.l3 = {{.name = "7",
                           .vrf = "red",
                           .vlan = 100,
                           .primary = "192.0.2.1/24",
                           .ipv4 = {"10.0.0.1/8"},
                           .ipv6 = {"2001:db8::1/64"}},
                          {.name = "8"}}});
  EXPECT_EQ(Validate(), "accepted");
  const std::vector<std::string> expected = {
      "maapi_exists /config/interface/ipapp:l3",
      "maapi_init_cursor /config/interface/ipapp:l3",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/ip",
      "maapi_get_ipv4_and_plen_elem /config/interface/ipapp:l3{7}/ipv4/address/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary",
      "maapi_init_cursor /config/interface/ipapp:l3{7}/ipv4/address/secondary",
      "maapi_get_next",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{7}/ipv4/address/secondary{10.0.0.1/8}/ip",
      "maapi_get_ipv4_and_plen_elem "
      "/config/interface/ipapp:l3{7}/ipv4/address/secondary{10.0.0.1/8}/ip",
      "maapi_exists /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_get_elem /config/interface/ipapp:l3{7}/lower-layer-if/vlan",
      "maapi_exists /config/interface/ipapp:l3{7}/vrf",
      "maapi_get_elem /config/interface/ipapp:l3{7}/vrf",
      "confd_free_value",
      "maapi_exists /config/interface/ipapp:l3{8}/ipv4/address/ip",
      "maapi_exists /config/interface/ipapp:l3{8}/ipv4/address/secondary",
      "maapi_init_cursor /config/interface/ipapp:l3{8}/ipv4/address/secondary",
      "maapi_get_next",
      "maapi_destroy_cursor",
      "maapi_exists /config/interface/ipapp:l3{8}/lower-layer-if/vlan",
      "maapi_exists /config/interface/ipapp:l3{8}/vrf",
  };
  EXPECT_EQ(calls(), expected);
}

TEST_F(L3Name, ReadsNothingTheSecondTime) {
  ConfigureNames({"a."});
  EXPECT_EQ(Validate(), Invalid("a."));
  EXPECT_EQ(Validate(), Invalid("a."));
  EXPECT_THAT(calls(), IsEmpty());
}

// A Config that stays answers for the interfaces that it read first.
TEST_F(L3Name, KeepsWhatItReadInAnEarlierTransaction) {
  ConfigureNames({"a."});
  EXPECT_EQ(Validate(), Invalid("a."));
  ConfigureNames({"a"});
  EXPECT_EQ(Validate(), Invalid("a."));
  RenewConfig();
  EXPECT_EQ(Validate(), "accepted");
}

TEST_F(L3Name, UnreadableListIsNoInterface) {
  ConfigureNames({"a."});
  FailCall(0);
  EXPECT_EQ(Validate(), "accepted");
  EXPECT_EQ(calls(), std::vector<std::string>{"maapi_exists /config/interface/ipapp:l3"});
}

// The keypath plays no part.
TEST_F(L3Name, IsTheSameForEveryKeypath) {
  Configure(Device{.l3 = {{.name = "a."}}, .loopback = {{.name = "0"}}});
  for (const char* path : {"/config/interface/loopback", "/config/interface/l3{a.}", "/config"}) {
    EXPECT_EQ(PointTest::Validate(kPoint, path), Invalid("a.")) << path;
  }
}

}  // namespace
}  // namespace tests
