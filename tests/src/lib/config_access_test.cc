// The reads of single values and key lists that every table has, on configurations in the store.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <list>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "confd_lib.h"
#include "config.h"
#include "support/device.h"
#include "support/scripted_confd.h"
#include "support/table_fixture.h"
#include "vrfid/vrfid.h"

namespace {

// What the VRF identifier library was asked for, and by how much a VRF differs from its component.
std::vector<uint32_t> components;
uint32_t vrf_offset = 0;

}  // namespace

// Wins over that of the library.
uint32_t IdVrfFromComponent(uint32_t component) {
  components.push_back(component);
  return component + vrf_offset;
}

namespace ip_application::config_valid {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tests::Answer;
using tests::Device;
using tests::ExpectedCalls;
using tests::Int32;
using tests::ScriptedConfd;
using tests::Uint32;

using Calls = std::vector<std::string>;

constexpr char kL3[] = "/config/interface/ipapp:l3";
constexpr char kAddress[] = "/config/interface/ipapp:l3{7}/ipv4/address/ip";
constexpr char kAddress6[] = "/config/interface/ipapp:l3{7}/ipv6/address{2001:db8::1/64}/ip";
constexpr char kVlan[] = "/config/interface/ipapp:l3{7}/lower-layer-if/vlan";
constexpr char kVrf[] = "/config/interface/ipapp:l3{7}/vrf";
constexpr char kIndex5[] =
    "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{5}/vname";
constexpr char kProcesses[] = "/internal/ospf-index-to-proc-id";
constexpr char kOspf[] = "/internal/ospf-interface-l3";

// A table that reads nothing by itself.
class Reader : public GenericConfig {
 public:
  void ReadConfig(ConfigAddrFamily /*family*/) override {}
};

class DataAccess : public tests::TableTest {
 protected:
  // Interface 7 has everything; interface 8 and VRF index 6 have nothing.
  DataAccess() {
    Configure(Device{.l3 = {{.name = "7",
                             .vrf = "red",
                             .vlan = 100,
                             .primary = "192.0.2.1/24",
                             .ipv6 = {"2001:db8::1/64"}},
                            {.name = "8"}},
                     .vrfs = {{5, "blue"}, {6, {}}, {1005, "violet"}, {4294967295, "last"}}});
    Bind(reader);
    components.clear();
    vrf_offset = 0;
  }

  Reader reader;
  ScriptedConfd scripted;
};

confd_value_t NoValue() {
  confd_value_t value{};
  CONFD_SET_NOEXISTS(&value);
  return value;
}

// A value of `type` that refers to `bytes`.
confd_value_t Bytes(confd_vtype type, const std::string& bytes) {
  confd_value_t value{};
  value.type = type;
  value.val.buf.ptr = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
  value.val.buf.size = static_cast<unsigned>(bytes.size());
  return value;
}

confd_value_t Ipv4Prefix(const char* address, uint8_t length) {
  confd_value_t value{};
  value.type = C_IPV4_AND_PLEN;
  inet_pton(AF_INET, address, &value.val.ipv4prefix.ip);
  value.val.ipv4prefix.len = length;
  return value;
}

confd_value_t Ipv6Prefix(const char* address, uint8_t length) {
  confd_value_t value{};
  value.type = C_IPV6_AND_PLEN;
  inet_pton(AF_INET6, address, &value.val.ipv6prefix.ip6);
  value.val.ipv6prefix.len = length;
  return value;
}

// The message of a type test in a const member function of GenericConfig.
auto AssertionIn(const std::string& where, const std::string& function, const std::string& text) {
  return AllOf(HasSubstr(": " + where + ": "), HasSubstr("::GenericConfig::" + function + "("),
               HasSubstr(") const: Assertion `" + text + "' failed.\n"));
}

// Address with prefix length at a path ---------------------------------------------------------

struct AddressCase {
  const char* name;
  std::string path;
  const char* failing;  // this call fails, with the path behind it
  Answer answer;
  const char* mask;
  std::vector<const char*> calls;  // what reaches the store, with the path behind it
};

std::ostream& operator<<(std::ostream& out, const AddressCase& c) { return out << c.name; }

Calls WithPath(const std::vector<const char*>& functions, const std::string& path) {
  Calls calls;
  for (const std::string function : functions) {
    calls.push_back(function == "confd_free_value" ? function : function + " " + path);
  }
  return calls;
}

constexpr char kExists[] = "maapi_exists";
constexpr char kGet4[] = "maapi_get_ipv4_and_plen_elem";
constexpr char kGet6[] = "maapi_get_ipv6_and_plen_elem";
constexpr char kGet[] = "maapi_get_elem";
constexpr char kFree[] = "confd_free_value";

const AddressCase kIpv4Cases[] = {
    {"Present", kAddress, "", {}, "192.0.2.1/24", {kExists, kGet4}},
    {"Absent", "/config/interface/ipapp:l3{8}/ipv4/address/ip", "", {}, "0.0.0.0/0", {kExists}},
    {"EntryAbsent",
     "/config/interface/ipapp:l3{9}/ipv4/address/ip",
     "",
     {},
     "0.0.0.0/0",
     {kExists}},
    {"UnknownNode", "/config/interface/ipapp:l3{7}/colour", "", {}, "0.0.0.0/0", {kExists}},
    {"ExistsFails", kAddress, kExists, {}, "0.0.0.0/0", {kExists}},
    {"ExistsIsTwo", kAddress, "", {.exists = 2}, "0.0.0.0/0", {}},
    {"ReadFails", kAddress, kGet4, {}, "0.0.0.0/0", {kExists, kGet4}},
    {"ReadFailsAfterStoring",
     kAddress,
     "",
     {.read = CONFD_ERR, .value = Ipv4Prefix("10.0.0.1", 8)},
     "0.0.0.0/0",
     {kExists}},
    {"ReadGivesOne",
     kAddress,
     "",
     {.read = 1, .value = Ipv4Prefix("10.0.0.1", 8)},
     "0.0.0.0/0",
     {kExists}},
    {"OtherType", kVrf, "", {}, "0.0.0.0/0", {kExists, kGet4}},
    {"AllBits",
     kAddress,
     "",
     {.read = 0, .value = Ipv4Prefix("255.255.255.255", 32)},
     "255.255.255.255/32",
     {kExists}},
    {"ByteOrder",
     kAddress,
     "",
     {.read = 0, .value = Ipv4Prefix("1.2.3.4", 0)},
     "1.2.3.4/0",
     {kExists}},
    {"OneAboveTheLongestPrefix",
     kAddress,
     "",
     {.read = 0, .value = Ipv4Prefix("10.0.0.1", 33)},
     "10.0.0.1/33",
     {kExists}},
    {"LargestEightBitLength",
     kAddress,
     "",
     {.read = 0, .value = Ipv4Prefix("10.0.0.1", 255)},
     "10.0.0.1/255",
     {kExists}},
};

class Ipv4AtPath : public DataAccess, public testing::WithParamInterface<AddressCase> {};

TEST_P(Ipv4AtPath, GivesMask) {
  const AddressCase& c = GetParam();
  if (*c.failing != '\0') FailCall(c.failing + (" " + c.path));
  scripted.answers[c.path] = c.answer;
  EXPECT_EQ(reader.get_ipv4_addr_mask(c.path).to_string(), c.mask);
  EXPECT_EQ(TakeCalls(), WithPath(c.calls, c.path));
}

INSTANTIATE_TEST_SUITE_P(Reads, Ipv4AtPath, testing::ValuesIn(kIpv4Cases),
                         [](const auto& row) { return std::string(row.param.name); });

const AddressCase kIpv6Cases[] = {
    {"Present", kAddress6, "", {}, "2001:db8::1/64", {kExists, kGet6}},
    {"Absent",
     "/config/interface/ipapp:l3{7}/ipv6/address{2001:db8::2/64}/ip",
     "",
     {},
     "::/0",
     {kExists}},
    {"UnknownNode", "/config/interface/ipapp:l3{7}/colour", "", {}, "::/0", {kExists}},
    {"ExistsFails", kAddress6, kExists, {}, "::/0", {kExists}},
    {"ExistsIsTwo", kAddress6, "", {.exists = 2}, "::/0", {}},
    {"ReadFails", kAddress6, kGet6, {}, "::/0", {kExists, kGet6}},
    {"ReadFailsAfterStoring",
     kAddress6,
     "",
     {.read = CONFD_ERR, .value = Ipv6Prefix("2001:db8::9", 8)},
     "::/0",
     {kExists}},
    {"ReadGivesOne",
     kAddress6,
     "",
     {.read = 1, .value = Ipv6Prefix("2001:db8::9", 8)},
     "::/0",
     {kExists}},
    {"OtherType", kAddress, "", {}, "::/0", {kExists, kGet6}},
    {"AllBits",
     kAddress6,
     "",
     {.read = 0, .value = Ipv6Prefix("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 128)},
     "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/128",
     {kExists}},
    {"ByteOrder",
     kAddress6,
     "",
     {.read = 0, .value = Ipv6Prefix("102:304:506:708:90a:b0c:d0e:f10", 0)},
     "102:304:506:708:90a:b0c:d0e:f10/0",
     {kExists}},
    {"OneAboveTheLongestPrefix",
     kAddress6,
     "",
     {.read = 0, .value = Ipv6Prefix("2001:db8::1", 129)},
     "2001:db8::1/129",
     {kExists}},
    {"LargestEightBitLength",
     kAddress6,
     "",
     {.read = 0, .value = Ipv6Prefix("2001:db8::1", 255)},
     "2001:db8::1/255",
     {kExists}},
};

class Ipv6AtPath : public DataAccess, public testing::WithParamInterface<AddressCase> {};

TEST_P(Ipv6AtPath, GivesMask) {
  const AddressCase& c = GetParam();
  if (*c.failing != '\0') FailCall(c.failing + (" " + c.path));
  scripted.answers[c.path] = c.answer;
  EXPECT_EQ(reader.get_ipv6_addr_mask(c.path).to_string(), c.mask);
  EXPECT_EQ(TakeCalls(), WithPath(c.calls, c.path));
}

INSTANTIATE_TEST_SUITE_P(Reads, Ipv6AtPath, testing::ValuesIn(kIpv6Cases),
                         [](const auto& row) { return std::string(row.param.name); });

// Conversions ----------------------------------------------------------------------------------

struct BinaryCase {
  const char* name;
  confd_vtype type;
  std::string bytes;
  const char* ipv4;
  const char* ipv6;
};

std::ostream& operator<<(std::ostream& out, const BinaryCase& c) { return out << c.name; }

const std::string kNumbered =
    "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c\x0d\x0e\x0f\x10\x11";

const BinaryCase kBinaryCases[] = {
    {"NoBytes", C_BINARY, "", "0.0.0.0", "::"},
    {"ThreeBytes", C_BINARY, kNumbered.substr(0, 3), "1.2.3.0", "102:300::"},
    {"FourBytes", C_BINARY, kNumbered.substr(0, 4), "1.2.3.4", "102:304::"},
    {"FiveBytes", C_BINARY, kNumbered.substr(0, 5), "1.2.3.4", "102:304:500::"},
    {"FifteenBytes", C_BINARY, kNumbered.substr(0, 15), "1.2.3.4",
     "102:304:506:708:90a:b0c:d0e:f00"},
    {"SixteenBytes", C_BINARY, kNumbered.substr(0, 16), "1.2.3.4",
     "102:304:506:708:90a:b0c:d0e:f10"},
    {"SeventeenBytes", C_BINARY, kNumbered, "1.2.3.4", "102:304:506:708:90a:b0c:d0e:f10"},
    {"HighBits", C_BINARY, std::string(16, '\xff'), "255.255.255.255",
     "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
    {"String", C_BUF, kNumbered.substr(0, 16), "0.0.0.0", "::"},
    {"HexString", C_HEXSTR, kNumbered.substr(0, 16), "0.0.0.0", "::"},
};

class AddressFromBinary : public testing::TestWithParam<BinaryCase> {};

TEST_P(AddressFromBinary, OfBothFamilies) {
  const Reader reader;  // bound to nothing: no call can be made
  const confd_value_t value = Bytes(GetParam().type, GetParam().bytes);
  EXPECT_EQ(reader.get_ipv4_addr(value).to_string(), GetParam().ipv4);
  EXPECT_EQ(reader.get_ipv6_addr(value).to_string(), GetParam().ipv6);
}

INSTANTIATE_TEST_SUITE_P(Conversions, AddressFromBinary, testing::ValuesIn(kBinaryCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(AddressFromOtherTypes, IsUnspecified) {
  const Reader reader;
  for (const confd_value_t& value : {NoValue(), Int32(1), Uint32(0x0a000001),
                                     Ipv4Prefix("10.0.0.1", 8), Ipv6Prefix("2001:db8::1", 8)}) {
    EXPECT_TRUE(reader.get_ipv4_addr(value).is_unspecified()) << value.type;
    EXPECT_TRUE(reader.get_ipv6_addr(value).is_unspecified()) << value.type;
  }
}

struct MaskCase {
  const char* name;
  confd_vtype type;
  std::string bytes;
  confd_value_t prefix;
  const char* ipv4;
  const char* ipv6;
};

std::ostream& operator<<(std::ostream& out, const MaskCase& c) { return out << c.name; }

const std::string kFour = "\x0a\x01\x02\x03";

const MaskCase kMaskCases[] = {
    {"Zero", C_BINARY, kFour, Int32(0), "10.1.2.3/0", "a01:203::/0"},
    {"One", C_BINARY, kFour, Int32(1), "10.1.2.3/1", "a01:203::/1"},
    {"LongestOfIpv4", C_BINARY, kFour, Int32(32), "10.1.2.3/32", "a01:203::/32"},
    {"OneAboveIpv4", C_BINARY, kFour, Int32(33), "10.1.2.3/33", "a01:203::/33"},
    {"LongestOfIpv6", C_BINARY, kFour, Int32(128), "10.1.2.3/128", "a01:203::/128"},
    {"OneAboveIpv6", C_BINARY, kFour, Int32(129), "10.1.2.3/129", "a01:203::/129"},
    // A length is kept in eight bits.
    {"LargestKept", C_BINARY, kFour, Int32(255), "10.1.2.3/255", "a01:203::/255"},
    {"MinusOne", C_BINARY, kFour, Int32(-1), "10.1.2.3/255", "a01:203::/255"},
    {"NinthBit", C_BINARY, kFour, Int32(256 + 24), "10.1.2.3/24", "a01:203::/24"},
    {"Largest", C_BINARY, kFour, Int32(0x7fffffff), "10.1.2.3/255", "a01:203::/255"},
    {"NoBytes", C_BINARY, "", Int32(24), "0.0.0.0/24", "::/24"},
    {"ThreeBytes", C_BINARY, "\x0a\x01\x02", Int32(24), "10.1.2.0/24", "a01:200::/24"},
    {"AddressOfOtherType", C_BUF, kFour, Int32(24), "0.0.0.0/0", "::/0"},
    {"PrefixUnsigned", C_BINARY, kFour, Uint32(24), "0.0.0.0/0", "::/0"},
    {"PrefixNoValue", C_BINARY, kFour, NoValue(), "0.0.0.0/0", "::/0"},
    {"BothOfOtherType", C_BUF, kFour, Uint32(24), "0.0.0.0/0", "::/0"},
};

class MaskFromValues : public testing::TestWithParam<MaskCase> {};

TEST_P(MaskFromValues, OfBothFamilies) {
  const Reader reader;
  const confd_value_t address = Bytes(GetParam().type, GetParam().bytes);
  EXPECT_EQ(reader.get_ipv4_addr_mask(address, GetParam().prefix).to_string(), GetParam().ipv4);
  EXPECT_EQ(reader.get_ipv6_addr_mask(address, GetParam().prefix).to_string(), GetParam().ipv6);
}

INSTANTIATE_TEST_SUITE_P(Conversions, MaskFromValues, testing::ValuesIn(kMaskCases),
                         [](const auto& row) { return std::string(row.param.name); });

// No value gets past the test of the types to the one of the assertion, so no call can show it. It
// has to stand in the source: the one in the macro of a device's header may be empty.
TEST(MaskFromTypedValues, AssertsTheTypeOfThePrefixItself) {
  std::ifstream file(IPAV_SOURCE_DIR "/src/lib/config.cc");
  const std::string source{std::istreambuf_iterator<char>(file), {}};
  const std::string assertion =
      R"(IPAV_REQUIRE_TYPE(prefix, C_INT32, "(&prefix)->type == C_INT32", "src/lib/config",)";
  const std::string read = "CONFD_GET_INT32(&prefix)";
  size_t reads = 0;
  for (size_t at = source.find(read); at != std::string::npos; at = source.find(read, at + 1)) {
    ++reads;
    const size_t function = source.rfind("\n}\n", at);
    EXPECT_NE(source.substr(function, at - function).find(assertion), std::string::npos)
        << "read " << reads;
  }
  EXPECT_EQ(reads, 2u);
}

struct HexCase {
  const char* name;
  confd_vtype type;
  std::string bytes;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const HexCase& c) { return out << c.name; }

const HexCase kHexCases[] = {
    {"TwoBytes", C_BINARY, "\x0a\xff", "0a:ff"},
    {"ZeroByte", C_BINARY, std::string("\x0a\xff\x00", 3), "0a:ff:00"},
    {"OneByte", C_BINARY, "\x0f", "0f"},
    {"HighNibble", C_BINARY, "\xf0", "f0"},
    {"SixteenBytes", C_BINARY, kNumbered.substr(0, 16),
     "01:02:03:04:05:06:07:08:09:0a:0b:0c:0d:0e:0f:10"},
    // The first byte is written whatever the size: the zero behind the data.
    {"NoBytes", C_BINARY, "", "00"},
    {"String", C_BUF, "\x0a\xff", ""},
    {"HexString", C_HEXSTR, "\x0a\xff", ""},
};

class HexFromBinary : public testing::TestWithParam<HexCase> {};

TEST_P(HexFromBinary, TwoDigitsEach) {
  const Reader reader;
  EXPECT_EQ(reader.get_hex_from_bin(Bytes(GetParam().type, GetParam().bytes)), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Conversions, HexFromBinary, testing::ValuesIn(kHexCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(HexFromOtherTypes, IsEmpty) {
  const Reader reader;
  for (const confd_value_t& value : {NoValue(), Int32(10), Ipv4Prefix("10.0.0.1", 8)}) {
    EXPECT_EQ(reader.get_hex_from_bin(value), "") << value.type;
  }
}

// Lower layer ----------------------------------------------------------------------------------

struct LimIdCase {
  const char* name;
  std::string path;
  const char* failing;
  Answer answer;
  uint32_t ifindex;  // 0: the zero identifier
  std::vector<const char*> calls;
};

std::ostream& operator<<(std::ostream& out, const LimIdCase& c) { return out << c.name; }

const LimIdCase kLimIdCases[] = {
    {"Present", kVlan, "", {}, 1000100, {kExists, kGet}},
    {"Absent", "/config/interface/ipapp:l3{8}/lower-layer-if/vlan", "", {}, 0, {kExists}},
    {"ExistsFails", kVlan, kExists, {}, 0, {kExists}},
    {"ExistsIsTwo", kVlan, "", {.exists = 2}, 0, {}},
    {"ReadFails", kVlan, kGet, {}, 0, {kExists, kGet}},
    {"ReadFailsAfterStoring", kVlan, "", {.read = CONFD_ERR, .value = Int32(5)}, 0, {kExists}},
    {"ReadFailsAfterStoringOtherType",
     kVlan,
     "",
     {.read = CONFD_ERR, .value = Uint32(5)},
     0,
     {kExists}},
    {"ReadGivesOne", kVlan, "", {.read = 1, .value = Int32(5)}, 0, {kExists}},
    {"VlanZero", kVlan, "", {.read = 0, .value = Int32(0)}, 1000000, {kExists}},
    {"LargestVlan", kVlan, "", {.read = 0, .value = Int32(4094)}, 1004094, {kExists}},
    {"NegativeVlan", kVlan, "", {.read = 0, .value = Int32(-1)}, 999999, {kExists}},
    {"VlanWithZeroIdentifier", kVlan, "", {.read = 0, .value = Int32(-0x10000000)}, 0, {kExists}},
};

class LimIdAtPath : public DataAccess, public testing::WithParamInterface<LimIdCase> {};

TEST_P(LimIdAtPath, IsOfTheVlan) {
  const LimIdCase& c = GetParam();
  if (*c.failing != '\0') FailCall(c.failing + (" " + c.path));
  scripted.answers[c.path] = c.answer;
  const limid_t lim_id = reader.get_intf_lim_id(c.path);
  EXPECT_EQ(limid_to_ifindex(lim_id), c.ifindex);
  EXPECT_EQ(lim_id == limid_t{}, c.ifindex == 0);
  EXPECT_EQ(TakeCalls(), WithPath(c.calls, c.path));
}

INSTANTIATE_TEST_SUITE_P(Reads, LimIdAtPath, testing::ValuesIn(kLimIdCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(DataAccess, LimIdIsTheOneOfTheLibrary) {
  EXPECT_EQ(reader.get_intf_lim_id(kVlan), limid_l3_vlan_from_components(100));
}

using DataAccessDeathTest = DataAccess;

TEST_F(DataAccessDeathTest, VlanOfOtherTypeEndsTheProcess) {
  const auto failure =
      AssertionIn("src/lib/config:196", "get_intf_lim_id", "(&confd_if_index)->type == C_INT32");
  EXPECT_DEATH(reader.get_intf_lim_id(kVrf), failure);
  scripted.answers[kVlan] = {.read = 0, .value = Uint32(100)};
  EXPECT_DEATH(reader.get_intf_lim_id(kVlan), failure);
}

// VRF ------------------------------------------------------------------------------------------

struct TextCase {
  const char* name;
  std::string path;
  const char* failing;
  Answer answer;
  const char* text;
  std::vector<const char*> calls;
};

std::ostream& operator<<(std::ostream& out, const TextCase& c) { return out << c.name; }

const std::string kTextWithZero("gr\0een", 6);
const std::string kEmptyText;
const std::string kGreen = "green";

const TextCase kVrfCases[] = {
    {"Present", kVrf, "", {}, "red", {kExists, kGet, kFree}},
    {"Absent", "/config/interface/ipapp:l3{8}/vrf", "", {}, "global", {kExists}},
    {"ExistsFails", kVrf, kExists, {}, "global", {kExists}},
    {"ExistsIsTwo", kVrf, "", {.exists = 2}, "global", {}},
    {"ReadFails", kVrf, kGet, {}, "", {kExists, kGet, kFree}},
    // What a failed read stored is released all the same.
    {"ReadFailsAfterStoring",
     kVrf,
     "",
     {.read = CONFD_ERR, .value = Bytes(C_BUF, kGreen)},
     "",
     {kExists, kFree}},
    {"ReadGivesOne", kVrf, "", {.read = 1, .value = Bytes(C_BUF, kGreen)}, "", {kExists, kFree}},
    {"EndsAtZeroByte",
     kVrf,
     "",
     {.read = 0, .value = Bytes(C_BUF, kTextWithZero)},
     "gr",
     {kExists, kFree}},
    {"EmptyText", kVrf, "", {.read = 0, .value = Bytes(C_BUF, kEmptyText)}, "", {kExists, kFree}},
};

class VrfAtPath : public DataAccess, public testing::WithParamInterface<TextCase> {};

TEST_P(VrfAtPath, GivesName) {
  const TextCase& c = GetParam();
  if (*c.failing != '\0') FailCall(c.failing + (" " + c.path));
  scripted.answers[c.path] = c.answer;
  EXPECT_EQ(reader.get_vrf_name(c.path), c.text);
  EXPECT_EQ(TakeCalls(), WithPath(c.calls, c.path));
}

INSTANTIATE_TEST_SUITE_P(Reads, VrfAtPath, testing::ValuesIn(kVrfCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(DataAccessDeathTest, VrfOfOtherTypeEndsTheProcess) {
  const auto failure =
      AssertionIn("src/lib/config:214", "get_vrf_name", "(&l3_vrf_name)->type == C_BUF");
  EXPECT_DEATH(reader.get_vrf_name(kVlan), failure);
  scripted.answers[kVrf] = {.read = 0, .value = Bytes(C_BINARY, kGreen)};
  EXPECT_DEATH(reader.get_vrf_name(kVrf), failure);
}

const TextCase kVrfOfIndexCases[] = {
    {"Present", kIndex5, "", {}, "blue", {kExists, kGet, kFree}},
    {"ExistsFails", kIndex5, kExists, {}, "global", {kExists}},
    {"ExistsIsTwo", kIndex5, "", {.exists = 2}, "global", {}},
    {"ReadFails", kIndex5, kGet, {}, "global", {kExists, kGet, kFree}},
    {"ReadFailsAfterStoring",
     kIndex5,
     "",
     {.read = CONFD_ERR, .value = Bytes(C_BUF, kGreen)},
     "global",
     {kExists, kFree}},
    {"ReadFailsAfterStoringOtherType",
     kIndex5,
     "",
     {.read = CONFD_ERR, .value = Int32(5)},
     "global",
     {kExists, kFree}},
    // Only -1 is a failure here.
    {"ReadGivesOne",
     kIndex5,
     "",
     {.read = 1, .value = Bytes(C_BUF, kGreen)},
     "green",
     {kExists, kFree}},
    {"ReadGivesMinusTwo",
     kIndex5,
     "",
     {.read = -2, .value = Bytes(C_BUF, kGreen)},
     "green",
     {kExists, kFree}},
    {"EndsAtZeroByte",
     kIndex5,
     "",
     {.read = 0, .value = Bytes(C_BUF, kTextWithZero)},
     "gr",
     {kExists, kFree}},
    {"EmptyText",
     kIndex5,
     "",
     {.read = 0, .value = Bytes(C_BUF, kEmptyText)},
     "",
     {kExists, kFree}},
};

class VrfOfIndex : public DataAccess, public testing::WithParamInterface<TextCase> {};

TEST_P(VrfOfIndex, GivesName) {
  const TextCase& c = GetParam();
  if (*c.failing != '\0') FailCall(c.failing + (" " + c.path));
  scripted.answers[c.path] = c.answer;
  EXPECT_EQ(reader.get_vrf_name_from_id(Uint32(5)), c.text);
  EXPECT_EQ(TakeCalls(), WithPath(c.calls, c.path));
}

INSTANTIATE_TEST_SUITE_P(Reads, VrfOfIndex, testing::ValuesIn(kVrfOfIndexCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(DataAccess, VrfOfIndexWithoutName) {
  const std::string list = "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring";
  EXPECT_EQ(reader.get_vrf_name_from_id(Uint32(6)), "global");
  EXPECT_EQ(reader.get_vrf_name_from_id(Uint32(0)), "global");
  EXPECT_THAT(TakeCalls(), ElementsAre("maapi_exists " + list + "{6}/vname",
                                       "maapi_exists " + list + "{0}/vname"));
}

TEST_F(DataAccess, VrfIndexIsUnsignedDecimal) {
  EXPECT_EQ(reader.get_vrf_name_from_id(Uint32(4294967295)), "last");
}

TEST_F(DataAccess, VrfOfIndexIsTheVrfOfThatComponent) {
  vrf_offset = 1000;
  EXPECT_EQ(reader.get_vrf_name_from_id(Uint32(5)), "violet");
  EXPECT_THAT(components, ElementsAre(5u));
  const std::string name =
      "/velmor-internal:internal/velmor-internal:vrf-config/indexTOstring{1005}/vname";
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Text(name));
}

TEST_F(DataAccess, VrfOfIndexOfOtherTypeMakesNoCall) {
  const std::string text = "5";
  for (const confd_value_t& id : {NoValue(), Int32(5), Bytes(C_BUF, text)}) {
    EXPECT_EQ(reader.get_vrf_name_from_id(id), "global") << id.type;
  }
  EXPECT_THAT(TakeCalls(), IsEmpty());
  EXPECT_THAT(components, IsEmpty());
}

TEST_F(DataAccessDeathTest, VrfOfIndexOfOtherTypeOfNameEndsTheProcess) {
  const auto failure =
      AssertionIn("src/lib/config:236", "get_vrf_name_from_id", "(&vrf)->type == C_BUF");
  scripted.answers[kIndex5] = {.read = 0, .value = Int32(5)};
  EXPECT_DEATH(reader.get_vrf_name_from_id(Uint32(5)), failure);
  // Only -1 is a failure: after -2 nothing is there that would be a text.
  scripted.answers[kIndex5] = {.read = CONFD_EOF};
  EXPECT_DEATH(reader.get_vrf_name_from_id(Uint32(5)), failure);
}

TEST_F(DataAccess, PathIsAnArgumentOfTheFormatExceptForTheVrfOfAnIndex) {
  reader.get_ipv4_addr_mask(kAddress);
  reader.get_ipv6_addr_mask(kAddress6);
  reader.get_intf_lim_id(kVlan);
  reader.get_vrf_name(kVrf);
  reader.get_key_list(kL3);
  reader.get_key_list(kL3, 1);
  EXPECT_THAT(scripted.formats,
              ElementsAre("maapi_exists %s", "maapi_get_ipv4_and_plen_elem %s", "maapi_exists %s",
                          "maapi_get_ipv6_and_plen_elem %s", "maapi_exists %s", "maapi_get_elem %s",
                          "maapi_exists %s", "maapi_get_elem %s", "maapi_exists %s",
                          "maapi_init_cursor %s", "maapi_exists %s", "maapi_init_cursor %s"));

  scripted.formats.clear();
  reader.get_vrf_name_from_id(Uint32(5));
  EXPECT_THAT(scripted.formats, ElementsAre(std::string("maapi_exists ") + kIndex5,
                                            std::string("maapi_get_elem ") + kIndex5));
}

// Key lists ------------------------------------------------------------------------------------

class KeyList : public tests::TableTest {
 protected:
  void Configure(const Device& device) {
    TableTest::Configure(device);
    Bind(reader);
  }

  // L3 interfaces of these names and nothing else.
  void ConfigureL3(const std::vector<std::string>& names) {
    Device device;
    for (const std::string& name : names) device.l3.push_back({.name = name});
    Configure(device);
  }

  Reader reader;
};

TEST_F(KeyList, OfNoEntryWalksOnce) {
  ConfigureL3({});
  EXPECT_THAT(reader.get_key_list(kL3), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kL3, 0));
}

TEST_F(KeyList, OfAbsentListIsNotWalked) {
  const std::string list = "/config/interface/ipapp:l3{9}/ipv4/address/secondary";
  ConfigureL3({"7"});
  EXPECT_THAT(reader.get_key_list(list), IsEmpty());
  EXPECT_THAT(reader.get_key_list(list, 1), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Exists(list).Exists(list));
}

TEST_F(KeyList, IsInTheOrderOfTheList) {
  ConfigureL3({"b", "a", "ab", "B"});
  EXPECT_THAT(reader.get_key_list(kL3), ElementsAre("B", "a", "ab", "b"));
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kL3, 4));
}

TEST_F(KeyList, OfAListThatTheUserOrders) {
  Configure(Device{.loopback = {{.name = "0", .ipv4 = {"10.0.0.2/24", "10.0.0.1/24"}}}});
  EXPECT_THAT(reader.get_key_list("/config/interface/ipapp:loopback{0}/ipv4/address"),
              ElementsAre("10.0.0.2/24", "10.0.0.1/24"));
}

TEST_F(KeyList, GivesNumbersAsDecimals) {
  Configure(Device{.ospf_processes = {{10}, {9}}});
  EXPECT_THAT(reader.get_key_list(kProcesses), ElementsAre("9", "10"));
}

TEST_F(KeyList, CutsTextsAt255Bytes) {
  const std::string text = "a" + std::string(299, 'x');
  for (const size_t length : {254u, 255u, 256u, 300u}) {
    ConfigureL3({text.substr(0, length)});
    const std::string cut = text.substr(0, std::min<size_t>(length, 255));
    EXPECT_THAT(reader.get_key_list(kL3), ElementsAre(cut));
    EXPECT_THAT(reader.get_key_list(kL3, 1), ElementsAre(ElementsAre(cut)));
  }
}

TEST_F(KeyList, CutsInsideACharacter) {
  ConfigureL3({std::string(254, 'x') + "ü"});
  EXPECT_THAT(reader.get_key_list(kL3), ElementsAre(std::string(254, 'x') + "\xc3"));
}

const std::vector<tests::OspfEntry> kOspfEntries = {{1, "0.0.0.0", "l3-7", "192.0.2.1", -1},
                                                    {2, "0.0.0.9", "loopback-0", "192.0.2.2", -1}};

TEST_F(KeyList, OfSeveralKeysGivesTheFirst) {
  Configure(Device{.ospf = kOspfEntries});
  EXPECT_THAT(reader.get_key_list(kOspf), ElementsAre("1", "2"));
}

TEST_F(KeyList, GivesAsManyKeysAsAsked) {
  Configure(Device{.ospf = kOspfEntries});
  const ExpectedCalls walk = ExpectedCalls().Walk(kOspf, 2);
  EXPECT_THAT(reader.get_key_list(kOspf, 0), ElementsAre(IsEmpty(), IsEmpty()));
  EXPECT_EQ(TakeCalls(), walk);
  EXPECT_THAT(reader.get_key_list(kOspf, 1), ElementsAre(ElementsAre("1"), ElementsAre("2")));
  EXPECT_EQ(TakeCalls(), walk);
  EXPECT_THAT(
      reader.get_key_list(kOspf, 3),
      ElementsAre(ElementsAre("1", "0.0.0.0", "l3-7"), ElementsAre("2", "0.0.0.9", "loopback-0")));
  EXPECT_EQ(TakeCalls(), walk);
  EXPECT_THAT(reader.get_key_list(kOspf, 4),
              ElementsAre(ElementsAre("1", "0.0.0.0", "l3-7", "192.0.2.1"),
                          ElementsAre("2", "0.0.0.9", "loopback-0", "192.0.2.2")));
  EXPECT_EQ(TakeCalls(), walk);
}

// An entry has no key there; what is printed is the value without a type.
TEST_F(KeyList, BehindTheLastKeyGivesEmptyTexts) {
  Configure(Device{.ospf = kOspfEntries});
  EXPECT_THAT(reader.get_key_list(kOspf, 5),
              ElementsAre(ElementsAre("1", "0.0.0.0", "l3-7", "192.0.2.1", ""),
                          ElementsAre("2", "0.0.0.9", "loopback-0", "192.0.2.2", "")));
}

struct WalkFault {
  const char* name;
  size_t failing;  // position of the call
  std::vector<std::string> keys;
  std::vector<std::string> calls;
};

std::ostream& operator<<(std::ostream& out, const WalkFault& c) { return out << c.name; }

const std::string kExistsL3 = "maapi_exists /config/interface/ipapp:l3";
const std::string kInitL3 = "maapi_init_cursor /config/interface/ipapp:l3";
const std::string kNext = "maapi_get_next";
const std::string kDestroy = "maapi_destroy_cursor";

const WalkFault kWalkFaults[] = {
    {"Exists", 0, {}, {kExistsL3}},
    {"InitCursor", 1, {}, {kExistsL3, kInitL3, kNext, kDestroy}},
    {"FirstStep", 2, {}, {kExistsL3, kInitL3, kNext, kDestroy}},
    {"SecondStep", 3, {"a"}, {kExistsL3, kInitL3, kNext, kNext, kDestroy}},
    {"LastStep", 4, {"a", "b"}, {kExistsL3, kInitL3, kNext, kNext, kNext, kDestroy}},
    {"DestroyCursor", 5, {"a", "b"}, {kExistsL3, kInitL3, kNext, kNext, kNext, kDestroy}},
};

class KeyListFault : public KeyList, public testing::WithParamInterface<WalkFault> {};

TEST_P(KeyListFault, EndsTheWalkAndTheCursor) {
  ConfigureL3({"a", "b"});
  FailCall(GetParam().failing);
  const std::list<std::string> keys = reader.get_key_list(kL3);
  EXPECT_EQ(std::vector(keys.begin(), keys.end()), GetParam().keys);
  EXPECT_EQ(TakeCalls(), GetParam().calls);
  EXPECT_EQ(reader.get_key_list(kL3, 1).size(), GetParam().keys.size());
  EXPECT_EQ(TakeCalls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Walks, KeyListFault, testing::ValuesIn(kWalkFaults),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(KeyList, ExceptionPassesThroughAndTheCursorIsDestroyed) {
  ConfigureL3({"a", "b"});
  int steps = 0;
  on_call = [&steps](const std::string& call) {
    if (call == kNext && ++steps % 2 == 0) throw std::bad_alloc();
  };
  EXPECT_THROW(reader.get_key_list(kL3), std::bad_alloc);
  EXPECT_THAT(TakeCalls(), ElementsAre(kExistsL3, kInitL3, kNext, kNext, kDestroy));
  EXPECT_THROW(reader.get_key_list(kL3, 1), std::bad_alloc);
  EXPECT_THAT(TakeCalls(), ElementsAre(kExistsL3, kInitL3, kNext, kNext, kDestroy));
}

// Address lists --------------------------------------------------------------------------------

constexpr char kSecondaries[] = "/config/interface/ipapp:l3{7}/ipv4/address/secondary";
constexpr char kAddresses6[] = "/config/interface/ipapp:l3{7}/ipv6/address";

template <typename Mask>
std::vector<std::string> Texts(const std::list<Mask>& masks) {
  std::vector<std::string> texts;
  for (const Mask& mask : masks) texts.push_back(mask.to_string());
  return texts;
}

class AddressList : public KeyList {
 protected:
  AddressList() {
    Configure(Device{.l3 = {{.name = "7",
                             .ipv4 = {"10.0.2.1/24", "10.0.0.1/24", "10.0.1.1/24"},
                             .ipv6 = {"2001:db8:2::1/64", "2001:DB8:1::1/64"}}}});
  }

  ScriptedConfd scripted;
};

std::string Secondary(const std::string& key) { return kSecondaries + ("{" + key + "}/ip"); }

std::string Address6(const std::string& key) { return kAddresses6 + ("{" + key + "}/ip"); }

framework::Fault UnspecifiedFault4(const std::string& message) {
  return {0, "get_intf_ipv4_addr_mask_list", "src/lib/config", 301, message};
}

framework::Fault UnspecifiedFault6(const std::string& message) {
  return {0, "get_intf_ipv6_addr_mask_list", "src/lib/config", 327, message};
}

TEST_F(AddressList, IsInTheOrderOfTheConfiguration) {
  EXPECT_THAT(Texts(reader.get_intf_ipv4_addr_mask_list(kSecondaries)),
              ElementsAre("10.0.2.1/24", "10.0.0.1/24", "10.0.1.1/24"));
  EXPECT_EQ(TakeCalls(), ExpectedCalls()
                             .Walk(kSecondaries, 3)
                             .Ipv4(Secondary("10.0.2.1/24"))
                             .Ipv4(Secondary("10.0.0.1/24"))
                             .Ipv4(Secondary("10.0.1.1/24")));
  EXPECT_THAT(Texts(reader.get_intf_ipv6_addr_mask_list(kAddresses6)),
              ElementsAre("2001:db8:2::1/64", "2001:db8:1::1/64"));
  EXPECT_EQ(TakeCalls(), ExpectedCalls()
                             .Walk(kAddresses6, 2)
                             .Ipv6(Address6("2001:db8:2::1/64"))
                             .Ipv6(Address6("2001:db8:1::1/64")));
  EXPECT_THAT(framework::TakeFaults(), IsEmpty());
}

TEST_F(AddressList, OfNoEntryMakesNoReadOfAnAddress) {
  Configure(Device{.l3 = {{.name = "7"}}});
  EXPECT_THAT(reader.get_intf_ipv4_addr_mask_list(kSecondaries), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kSecondaries, 0));
  EXPECT_THAT(reader.get_intf_ipv6_addr_mask_list(kAddresses6), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kAddresses6, 0));
  EXPECT_THAT(framework::TakeFaults(), IsEmpty());
}

// Only the answer 1 means that the list exists.
TEST_F(AddressList, OfOtherAnswersIsNotWalked) {
  for (const int exists : {2, 0, -1}) {
    scripted.answers[kSecondaries] = {.exists = exists};
    scripted.answers[kAddresses6] = {.exists = exists};
    scripted.formats.clear();
    EXPECT_THAT(reader.get_key_list(kSecondaries), IsEmpty()) << exists;
    EXPECT_THAT(reader.get_key_list(kSecondaries, 1), IsEmpty()) << exists;
    EXPECT_THAT(reader.get_intf_ipv4_addr_mask_list(kSecondaries), IsEmpty()) << exists;
    EXPECT_THAT(reader.get_intf_ipv6_addr_mask_list(kAddresses6), IsEmpty()) << exists;
    EXPECT_EQ(scripted.formats, Calls(4, "maapi_exists %s")) << exists;
    EXPECT_THAT(TakeCalls(), IsEmpty()) << exists;
  }
  EXPECT_THAT(framework::TakeFaults(), IsEmpty());
}

// Before the next entry is read.
TEST_F(AddressList, ReportsAtOnce) {
  std::map<std::string, size_t> faults_at;
  on_call = [&faults_at](const std::string& call) {
    faults_at[call] = framework::TakeFaults().size();
  };
  scripted.answers[Secondary("10.0.2.1/24")] = {.exists = 0};
  reader.get_intf_ipv4_addr_mask_list(kSecondaries);
  EXPECT_EQ(faults_at["maapi_exists " + Secondary("10.0.0.1/24")], 1u);
  scripted.answers[Address6("2001:db8:2::1/64")] = {.exists = 0};
  reader.get_intf_ipv6_addr_mask_list(kAddresses6);
  EXPECT_EQ(faults_at["maapi_exists " + Address6("2001:db8:1::1/64")], 1u);
}

// The key of an entry is the address itself, so it is never missing in the store.
TEST_F(AddressList, MissingAddressIsLeftOutAndReported) {
  scripted.answers[Secondary("10.0.0.1/24")] = {.exists = 0};
  EXPECT_THAT(Texts(reader.get_intf_ipv4_addr_mask_list(kSecondaries)),
              ElementsAre("10.0.2.1/24", "10.0.1.1/24"));
  EXPECT_THAT(framework::TakeFaults(),
              ElementsAre(UnspecifiedFault4("Unspecified IPv4 address for key '10.0.0.1/24'")));
  EXPECT_EQ(TakeCalls(), ExpectedCalls()
                             .Walk(kSecondaries, 3)
                             .Ipv4(Secondary("10.0.2.1/24"))
                             .Ipv4(Secondary("10.0.1.1/24")));

  scripted.answers[Address6("2001:db8:2::1/64")] = {.exists = 0};
  EXPECT_THAT(Texts(reader.get_intf_ipv6_addr_mask_list(kAddresses6)),
              ElementsAre("2001:db8:1::1/64"));
  EXPECT_THAT(
      framework::TakeFaults(),
      ElementsAre(UnspecifiedFault6("Unspecified IPv6 address for key '2001:db8:2::1/64'")));
}

TEST_F(AddressList, UnreadableAddressIsLeftOutAndReported) {
  FailCall("maapi_get_ipv4_and_plen_elem " + Secondary("10.0.2.1/24"));
  EXPECT_THAT(Texts(reader.get_intf_ipv4_addr_mask_list(kSecondaries)),
              ElementsAre("10.0.0.1/24", "10.0.1.1/24"));
  EXPECT_THAT(framework::TakeFaults(),
              ElementsAre(UnspecifiedFault4("Unspecified IPv4 address for key '10.0.2.1/24'")));

  FailCall("maapi_get_ipv6_and_plen_elem " + Address6("2001:db8:1::1/64"));
  EXPECT_THAT(Texts(reader.get_intf_ipv6_addr_mask_list(kAddresses6)),
              ElementsAre("2001:db8:2::1/64"));
  EXPECT_THAT(
      framework::TakeFaults(),
      ElementsAre(UnspecifiedFault6("Unspecified IPv6 address for key '2001:db8:1::1/64'")));
}

// "Nothing" and the unspecified address are one value.
TEST_F(AddressList, ConfiguredUnspecifiedAddressIsLeftOutAndReported) {
  Configure(Device{
      .loopback = {{.name = "0", .ipv4 = {"0.0.0.0/0", "0.0.0.0/8"}, .ipv6 = {"::/0", "::/8"}}}});
  EXPECT_THAT(Texts(reader.get_intf_ipv4_addr_mask_list(
                  "/config/interface/ipapp:loopback{0}/ipv4/address")),
              ElementsAre("0.0.0.0/8"));
  EXPECT_THAT(Texts(reader.get_intf_ipv6_addr_mask_list(
                  "/config/interface/ipapp:loopback{0}/ipv6/address")),
              ElementsAre("::/8"));
  EXPECT_THAT(framework::TakeFaults(),
              ElementsAre(UnspecifiedFault4("Unspecified IPv4 address for key '0.0.0.0/0'"),
                          UnspecifiedFault6("Unspecified IPv6 address for key '::/0'")));
}

// Read as an address list, a list of interfaces has no leaf ip, and its keys may be long.
TEST_F(AddressList, ReportsTheKeyAsFarAsItWasRead) {
  const std::string cut(255, 'x');
  const std::string path = kL3 + ("{" + cut + "}/ip");
  ConfigureL3({std::string(300, 'x')});
  EXPECT_THAT(reader.get_intf_ipv4_addr_mask_list(kL3), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kL3, 1).Exists(path));
  EXPECT_THAT(reader.get_intf_ipv6_addr_mask_list(kL3), IsEmpty());
  EXPECT_EQ(TakeCalls(), ExpectedCalls().Walk(kL3, 1).Exists(path));
  EXPECT_THAT(framework::TakeFaults(),
              ElementsAre(UnspecifiedFault4("Unspecified IPv4 address for key '" + cut + "'"),
                          UnspecifiedFault6("Unspecified IPv6 address for key '" + cut + "'")));
}

TEST_F(AddressList, KeyIsNoFormatOfTheReport) {
  ConfigureL3({"100%s%n"});
  EXPECT_THAT(reader.get_intf_ipv4_addr_mask_list(kL3), IsEmpty());
  EXPECT_THAT(framework::TakeFaults(),
              ElementsAre(UnspecifiedFault4("Unspecified IPv4 address for key '100%s%n'")));
}

}  // namespace
}  // namespace ip_application::config_valid
