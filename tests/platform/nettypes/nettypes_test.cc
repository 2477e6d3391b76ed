#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <optional>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "nettypes/address.h"
#include "nettypes/ipv4.h"
#include "nettypes/ipv6.h"
#include "nettypes/parse.h"

namespace nettypes {
namespace {

using Bytes = std::array<uint8_t, 16>;

// Shorthands for texts that must be readable; a row with a typing error fails its test by an
// exception.
IPv4Addr V4(std::string_view text) { return ParseIPv4Addr(text).value(); }
IPv6Addr V6(std::string_view text) { return ParseIPv6Addr(text).value(); }
IPv4AddrMask Mask4(std::string_view text) { return ParseIPv4AddrMask(text).value(); }
IPv6AddrMask Mask6(std::string_view text) { return ParseIPv6AddrMask(text).value(); }

template <typename T>
std::string Streamed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

template <typename Row>
std::string RowName(const testing::TestParamInfo<Row>& row) {
  return row.param.name;
}

// Values that live on the stack and in tables that the compiler builds.
static_assert(IPv4Addr(0x0a000001).to_uint32() == 0x0a000001);
static_assert(IPv4Addr().is_unspecified() && IPv6Addr().is_unspecified());
static_assert(IPv4AddrMask().IsUnspecified() && IPv6AddrMask().IsUnspecified());
static_assert(IPv4AddrMask(0x0a000001, 8).Overlap(IPv4AddrMask(0x0a010203, 24)));
static_assert(IPv6Addr(Bytes{0x20, 0x01}).bytes() == Bytes{0x20, 0x01});
static_assert(IPv4Addr(1) < IPv4Addr(2) && IPv6AddrMask(IPv6Addr(), 1) > IPv6AddrMask());
static_assert(!std::is_convertible_v<uint32_t, IPv4Addr>);
static_assert(!std::is_convertible_v<Bytes, IPv6Addr>);
static_assert(std::is_trivially_destructible_v<IPv4AddrMask>);
static_assert(std::is_trivially_destructible_v<IPv6AddrMask>);

// ----------------------------------------------------------------------------------------------
// text of an address

struct Ipv4TextCase {
  const char* name;
  uint32_t host_order;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Ipv4TextCase& c) { return out << c.text; }

const Ipv4TextCase kIpv4TextCases[] = {
    {"Unspecified", 0x00000000, "0.0.0.0"},
    {"One", 0x00000001, "0.0.0.1"},
    {"HostByteOrder", 0x0a000001, "10.0.0.1"},
    {"EveryOctetDifferent", 0x01020304, "1.2.3.4"},
    {"ThreeDigitOctets", 0xc0a864c8, "192.168.100.200"},
    {"OnlyFirstOctet", 0xff000000, "255.0.0.0"},
    {"BelowSignBit", 0x7fffffff, "127.255.255.255"},
    {"SignBit", 0x80000000, "128.0.0.0"},
    {"Largest", 0xffffffff, "255.255.255.255"},
};

class Ipv4Text : public testing::TestWithParam<Ipv4TextCase> {};

TEST_P(Ipv4Text, IsADottedQuad) {
  const IPv4Addr addr(GetParam().host_order);
  EXPECT_EQ(addr.to_string(), GetParam().text);
  EXPECT_EQ(Streamed(addr), GetParam().text);
  EXPECT_EQ(addr.to_uint32(), GetParam().host_order);
  EXPECT_EQ(addr.is_unspecified(), GetParam().host_order == 0);
  EXPECT_EQ(ParseIPv4Addr(GetParam().text), addr);
}

INSTANTIATE_TEST_SUITE_P(Addresses, Ipv4Text, testing::ValuesIn(kIpv4TextCases),
                         RowName<Ipv4TextCase>);

struct Ipv6TextCase {
  const char* name;
  Bytes bytes;
  const char* text;
  bool differs_from_inet_ntop = false;
};

std::ostream& operator<<(std::ostream& out, const Ipv6TextCase& c) { return out << c.text; }

const Ipv6TextCase kIpv6TextCases[] = {
    {"Unspecified", {}, "::"},
    {"Loopback", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "::1"},
    {"LastGroupOnlyHighByte", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0}, "::100"},
    {"OnlyFirstGroup", {0x20, 0x01}, "2001::"},
    {"OnlyFirstByte", {0xff}, "ff00::"},
    {"LeadingZerosOfGroupsDropped",
     {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x02, 0, 0x01},
     "2001:db8::2:1"},
    {"ZeroInsideAGroupKept",
     {0x20, 0x01, 0x0d, 0xb8, 0xa0, 0x0b, 0x10, 0x00, 0, 0x10, 1, 0, 0x0a, 0xbc, 0x0d, 0x0e},
     "2001:db8:a00b:1000:10:100:abc:d0e"},
    {"LowerCase",
     {0xab, 0xcd, 0xef, 0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef, 0x01, 0x23, 0x45, 0x67,
      0x89},
     "abcd:ef01:2345:6789:abcd:ef01:2345:6789"},
    {"SingleZeroGroupNotShortened",
     {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1},
     "2001:db8:0:1:1:1:1:1"},
    {"SingleZeroGroupAtFrontNotShortened",
     {0, 0, 0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7},
     "0:1:2:3:4:5:6:7"},
    {"SingleZeroGroupAtEndNotShortened",
     {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 0},
     "1:2:3:4:5:6:7:0"},
    {"SeveralSingleZeroGroups",
     {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1},
     "0:1:0:1:0:1:0:1"},
    {"TwoZeroGroupsShortened",
     {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 1},
     "2001:db8::1:1:1:1"},
    {"TwoZeroGroupsAtFront", {0, 0, 0, 0, 0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6}, "::1:2:3:4:5:6"},
    {"TwoZeroGroupsAtEnd", {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 0, 0, 0}, "1:2:3:4:5:6::"},
    {"LongerRunSecond", {0x20, 0x01, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1}, "2001:0:0:1::1"},
    {"LongerRunFirst", {0x20, 0x01, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}, "2001::1:0:0:1"},
    {"LongerRunAtEnd", {0, 0, 0, 0, 0, 1, 0, 0, 0, 1}, "0:0:1:0:1::"},
    {"EqualRunsFirstShortened",
     {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1},
     "2001:db8::1:0:0:1"},
    {"EqualRunsAtBothEnds", {0, 0, 0, 0, 0, 1, 0, 2, 0, 3, 0, 4, 0, 0, 0, 0}, "::1:2:3:4:0:0"},
    {"RunAcrossTheMiddle",
     {0x20, 0x01, 0, 1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1},
     "2001:1:1::1:1:1"},
    {"LinkLocal", {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "fe80::1"},
    {"Largest",
     {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
      0xff},
     "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
    {"Ipv4Mapped", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 192, 0, 2, 1}, "::ffff:192.0.2.1"},
    {"Ipv4MappedUnspecified", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff}, "::ffff:0.0.0.0"},
    {"Ipv4MappedLargest",
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 255, 255, 255, 255},
     "::ffff:255.255.255.255"},
    {"NextToIpv4Mapped",
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xfe, 192, 0, 2, 1},
     "::fffe:c000:201"},
    {"MappedGroupOneTooEarly",
     {0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0, 0, 192, 0, 2, 1},
     "::ffff:0:c000:201"},
    {"MappedWithNonZeroFront",
     {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 192, 0, 2, 1},
     "1::ffff:c000:201"},
    {"Ipv4CompatibleIsNoDottedQuad",
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4},
     "::102:304",
     true},
    {"TranslationPrefixIsNoDottedQuad",
     {0, 0x64, 0xff, 0x9b, 0, 0, 0, 0, 0, 0, 0, 0, 192, 0, 2, 33},
     "64:ff9b::c000:221"},
};

class Ipv6Text : public testing::TestWithParam<Ipv6TextCase> {};

TEST_P(Ipv6Text, IsCanonical) {
  const IPv6Addr addr(GetParam().bytes);
  EXPECT_EQ(addr.to_string(), GetParam().text);
  EXPECT_EQ(Streamed(addr), GetParam().text);
  EXPECT_EQ(addr.bytes(), GetParam().bytes);
  EXPECT_EQ(addr.is_unspecified(), GetParam().bytes == Bytes{});
  EXPECT_EQ(ParseIPv6Addr(GetParam().text), addr);
}

TEST_P(Ipv6Text, AgreesWithTheSystem) {
  char system_text[INET6_ADDRSTRLEN];
  ASSERT_NE(inet_ntop(AF_INET6, GetParam().bytes.data(), system_text, sizeof(system_text)),
            nullptr);
  if (GetParam().differs_from_inet_ntop) {
    EXPECT_STRNE(system_text, GetParam().text);
  } else {
    EXPECT_STREQ(system_text, GetParam().text);
  }
}

INSTANTIATE_TEST_SUITE_P(Addresses, Ipv6Text, testing::ValuesIn(kIpv6TextCases),
                         RowName<Ipv6TextCase>);

// Every pattern of zero and non-zero groups, so every place, length and tie of a run. The one form
// that the system writes differently, an embedded IPv4-compatible address, is left out.
TEST(Ipv6TextOfEveryZeroPattern, AgreesWithTheSystemAndReadsBack) {
  for (unsigned pattern = 0; pattern < 256; ++pattern) {
    Bytes bytes{};
    for (size_t group = 0; group < 8; ++group) {
      if ((pattern >> group & 1) != 0) bytes[2 * group + 1] = static_cast<uint8_t>(0xa0 + group);
    }
    const IPv6Addr addr(bytes);
    EXPECT_EQ(ParseIPv6Addr(addr.to_string()), addr);
    const bool is_ipv4_compatible =
        std::all_of(bytes.begin(), bytes.begin() + 12, [](uint8_t byte) { return byte == 0; }) &&
        bytes[13] != 0;
    if (is_ipv4_compatible) continue;
    char system_text[INET6_ADDRSTRLEN];
    ASSERT_NE(inet_ntop(AF_INET6, bytes.data(), system_text, sizeof(system_text)), nullptr);
    EXPECT_EQ(addr.to_string(), system_text);
  }
}

// -------------------------------------------------------------------------------------------------
// text of a prefix

struct MaskTextCase {
  const char* name;
  IPv4AddrMask ipv4;
  const char* ipv4_text;
  IPv6AddrMask ipv6;
  const char* ipv6_text;
};

std::ostream& operator<<(std::ostream& out, const MaskTextCase& c) {
  return out << c.ipv4_text << " and " << c.ipv6_text;
}

const MaskTextCase kMaskTextCases[] = {
    {"Unspecified", {}, "0.0.0.0/0", {}, "::/0"},
    {"HostBitsKept",
     {IPv4Addr(0xc0000201), 24},
     "192.0.2.1/24",
     {IPv6Addr(Bytes{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}), 64},
     "2001:db8::1/64"},
    {"FullLength",
     {IPv4Addr(0xffffffff), 32},
     "255.255.255.255/32",
     {IPv6Addr(Bytes{0xff, 2}), 128},
     "ff02::/128"},
    {"LengthOutOfRangePrintedAsGiven",
     {IPv4Addr(0x0a000001), 33},
     "10.0.0.1/33",
     {IPv6Addr(Bytes{0x20}), 129},
     "2000::/129"},
    {"LargestNumberAsLength", {IPv4Addr(), 255}, "0.0.0.0/255", {IPv6Addr(), 255}, "::/255"},
};

class MaskText : public testing::TestWithParam<MaskTextCase> {};

TEST_P(MaskText, IsAddressSlashLength) {
  EXPECT_EQ(GetParam().ipv4.to_string(), GetParam().ipv4_text);
  EXPECT_EQ(Streamed(GetParam().ipv4), GetParam().ipv4_text);
  EXPECT_EQ(GetParam().ipv6.to_string(), GetParam().ipv6_text);
  EXPECT_EQ(Streamed(GetParam().ipv6), GetParam().ipv6_text);
}

INSTANTIATE_TEST_SUITE_P(Prefixes, MaskText, testing::ValuesIn(kMaskTextCases),
                         RowName<MaskTextCase>);

TEST(AddressOfEitherFamily, PrintsThroughTheBase) {
  const IPv4Addr ipv4(0x0a000001);
  const IPv6Addr ipv6(Bytes{0x20, 0x01});
  const std::vector<const IPAddr*> addrs = {&ipv4, &ipv6};
  EXPECT_EQ(addrs[0]->to_string(), "10.0.0.1");
  EXPECT_EQ(addrs[1]->to_string(), "2001::");
  EXPECT_EQ(Streamed(*addrs[0]), "10.0.0.1");
  EXPECT_EQ(Streamed(*addrs[1]), "2001::");

  const IPv4AddrMask mask4(ipv4, 8);
  const IPv6AddrMask mask6(ipv6, 16);
  const std::vector<const IPAddrMask*> masks = {&mask4, &mask6};
  EXPECT_EQ(masks[0]->to_string(), "10.0.0.1/8");
  EXPECT_EQ(masks[1]->to_string(), "2001::/16");
  EXPECT_EQ(Streamed(*masks[0]), "10.0.0.1/8");
  EXPECT_EQ(Streamed(*masks[1]), "2001::/16");
}

// From the first to the last of both families; a value is no less than itself.
TEST(AddressOfEitherFamily, ComparesThroughTheBase) {
  const IPv4Addr low4 = V4("9.255.255.255");
  const IPv4Addr high4 = V4("10.0.0.0");
  const IPv6Addr low6 = V6("::");
  const IPv6Addr high6 = V6("2001:db8::1");
  const std::vector<const IPAddr*> addrs = {&low4, &high4, &low6, &high6};
  const IPv4AddrMask short4 = Mask4("10.0.0.0/8");
  const IPv4AddrMask long4 = Mask4("10.0.0.0/9");
  const IPv6AddrMask short6 = Mask6("::/0");
  const IPv6AddrMask long6 = Mask6("::/128");
  const std::vector<const IPAddrMask*> masks = {&short4, &long4, &short6, &long6};
  for (size_t i = 0; i < addrs.size(); ++i) {
    for (size_t j = 0; j < addrs.size(); ++j) {
      EXPECT_EQ(*addrs[i] == *addrs[j], i == j) << *addrs[i] << " " << *addrs[j];
      EXPECT_EQ(*addrs[i] < *addrs[j], i < j) << *addrs[i] << " " << *addrs[j];
      EXPECT_EQ(*masks[i] == *masks[j], i == j) << *masks[i] << " " << *masks[j];
      EXPECT_EQ(*masks[i] < *masks[j], i < j) << *masks[i] << " " << *masks[j];
    }
  }
  const IPv4Addr copy = high4;
  EXPECT_TRUE(static_cast<const IPAddr&>(copy) == *addrs[1]);
  EXPECT_TRUE(*addrs[1] == high4) << "a base and its family";
}

TEST(StreamOutput, FillsTheFieldAsAString) {
  std::ostringstream out;
  out << std::left << std::setw(12) << std::setfill('.') << Mask4("10.0.0.1/8") << "|";
  EXPECT_EQ(out.str(), "10.0.0.1/8..|");
}

// ----------------------------------------------------------------------------------------------------------
// readers

struct ReadCase {
  const char* name;
  std::string text;
  std::optional<std::string> canonical;  // nothing: the text is refused
};

std::ostream& operator<<(std::ostream& out, const ReadCase& c) {
  return out << std::quoted(c.text) << " -> " << c.canonical.value_or("refused");
}

constexpr std::nullopt_t kRefused = std::nullopt;

template <typename T>
std::optional<std::string> Canonical(const std::optional<T>& value) {
  if (!value) return std::nullopt;
  return value->to_string();
}

const ReadCase kIpv4ReadCases[] = {
    {"Plain", "192.0.2.1", "192.0.2.1"},
    {"AllZero", "0.0.0.0", "0.0.0.0"},
    {"AllOnes", "255.255.255.255", "255.255.255.255"},
    {"Empty", "", kRefused},
    {"Blank", " ", kRefused},
    {"LeadingBlank", " 10.0.0.1", kRefused},
    {"TrailingBlank", "10.0.0.1 ", kRefused},
    {"InnerBlank", "10. 0.0.1", kRefused},
    {"TrailingLineFeed", "10.0.0.1\n", kRefused},
    {"TrailingZeroByte", std::string("10.0.0.1\0", 9), kRefused},
    {"LeadingZero", "10.0.0.01", kRefused},
    {"LeadingZeroFirstOctet", "010.0.0.1", kRefused},
    {"DoubleZero", "10.00.0.1", kRefused},
    {"Octet256", "10.0.0.256", kRefused},
    {"FirstOctet256", "256.0.0.1", kRefused},
    {"FourDigits", "10.0.0.1000", kRefused},
    {"HugeOctet", "10.0.0.4294967297", kRefused},
    {"OneNumber", "167772161", kRefused},
    {"TwoOctets", "10.1", kRefused},
    {"ThreeOctets", "10.0.0", kRefused},
    {"FiveOctets", "10.0.0.1.2", kRefused},
    {"TrailingDot", "10.0.0.1.", kRefused},
    {"LeadingDot", ".10.0.0.1", kRefused},
    {"EmptyOctet", "10..0.1", kRefused},
    {"EmptyLastOctet", "10.0.0.", kRefused},
    {"OnlyDots", "...", kRefused},
    {"Negative", "10.0.0.-1", kRefused},
    {"PlusSign", "10.0.0.+1", kRefused},
    {"Hexadecimal", "0x0a.0.0.1", kRefused},
    {"Letters", "a.b.c.d", kRefused},
    {"WithLength", "10.0.0.1/8", kRefused},
    {"OtherFamily", "::1", kRefused},
};

class ReadIpv4 : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadIpv4, TakesTheWholeTextOrNothing) {
  EXPECT_EQ(Canonical(ParseIPv4Addr(GetParam().text)), GetParam().canonical);
}

INSTANTIATE_TEST_SUITE_P(Texts, ReadIpv4, testing::ValuesIn(kIpv4ReadCases), RowName<ReadCase>);

const ReadCase kIpv6ReadCases[] = {
    {"AllGroups", "2001:db8:1:2:3:4:5:6", "2001:db8:1:2:3:4:5:6"},
    {"UpperCase", "2001:DB8::ABCD", "2001:db8::abcd"},
    {"LeadingZerosInGroups", "2001:0db8:0000:0000:0000:0000:0002:0001", "2001:db8::2:1"},
    {"AllZero", "::", "::"},
    {"AllZeroWrittenOut", "0:0:0:0:0:0:0:0", "::"},
    {"Loopback", "::1", "::1"},
    {"RunAtEnd", "1::", "1::"},
    {"RunInside", "1::8", "1::8"},
    {"RunOfOneAtFront", "::2:3:4:5:6:7:8", "0:2:3:4:5:6:7:8"},
    {"RunOfOneInside", "1:2:3::5:6:7:8", "1:2:3:0:5:6:7:8"},
    {"RunOfOneAtEnd", "1:2:3:4:5:6:7::", "1:2:3:4:5:6:7:0"},
    {"NotTheCanonicalRun", "1:0:0:2::", "1:0:0:2::"},
    {"ZeroGroupBesideRun", "0::0", "::"},
    {"Ipv4Mapped", "::ffff:192.0.2.1", "::ffff:192.0.2.1"},
    {"Ipv4MappedInHexadecimal", "::ffff:c000:201", "::ffff:192.0.2.1"},
    {"Ipv4Compatible", "::1.2.3.4", "::102:304"},
    {"DottedQuadAfterSixGroups", "1:2:3:4:5:6:7.8.9.10", "1:2:3:4:5:6:708:90a"},
    {"DottedQuadAfterRunOfOne", "1:2:3:4:5::7.8.9.10", "1:2:3:4:5:0:708:90a"},
    {"DottedQuadAfterRunAndGroup", "64:ff9b::1:192.0.2.33", "64:ff9b::1:c000:221"},
    {"Empty", "", kRefused},
    {"Blank", " ", kRefused},
    {"LeadingBlank", " ::1", kRefused},
    {"TrailingBlank", "::1 ", kRefused},
    {"InnerBlank", "1: :2", kRefused},
    {"TrailingZeroByte", std::string("::1\0", 4), kRefused},
    {"OneColon", ":", kRefused},
    {"ThreeColons", ":::", kRefused},
    {"ThreeColonsInside", "1:::2", kRefused},
    {"FourColons", "::::", kRefused},
    {"TwoRuns", "1::2::3", kRefused},
    {"TwoRunsAtTheEnds", "::1::", kRefused},
    {"SingleColonAtFront", ":1:2:3:4:5:6:7:8", kRefused},
    {"SingleColonAtEnd", "1:2:3:4:5:6:7:8:", kRefused},
    {"SingleColonAtFrontBeforeRun", ":1::2", kRefused},
    {"SingleColonAtEndAfterRun", "1::2:", kRefused},
    {"OneGroup", "1", kRefused},
    {"SevenGroups", "1:2:3:4:5:6:7", kRefused},
    {"NineGroups", "1:2:3:4:5:6:7:8:9", kRefused},
    {"RunOfNoneInside", "1:2:3:4::5:6:7:8", kRefused},
    {"RunOfNoneAtFront", "::1:2:3:4:5:6:7:8", kRefused},
    {"RunOfNoneAtEnd", "1:2:3:4:5:6:7:8::", kRefused},
    {"NineGroupsAroundRun", "1:2:3:4:5::6:7:8:9", kRefused},
    {"ManyGroups", "1:1:1:1:1:1:1:1:1:1:1:1:1:1:1:1:1:1::", kRefused},
    {"FiveDigits", "12345::", kRefused},
    {"FiveDigitsWithLeadingZero", "01234::", kRefused},
    {"NotHexadecimal", "2001:db8::g", kRefused},
    {"HexadecimalPrefix", "0x1::", kRefused},
    {"Negative", "::-1", kRefused},
    {"Zone", "fe80::1%eth0", kRefused},
    {"EmptyZone", "fe80::1%", kRefused},
    {"Brackets", "[::1]", kRefused},
    {"WithLength", "::1/64", kRefused},
    {"OtherFamily", "10.0.0.1", kRefused},
    {"DottedQuadAtFront", "1.2.3.4::", kRefused},
    {"DottedQuadInside", "::1.2.3.4:5", kRefused},
    {"DottedQuadBeforeRun", "1:2.3.4.5::6", kRefused},
    {"DottedQuadAfterFiveGroups", "1:2:3:4:5:6.7.8.9", kRefused},
    {"DottedQuadAfterSevenGroups", "1:2:3:4:5:6:7:8.9.10.11", kRefused},
    {"DottedQuadAfterRunOfNone", "1:2:3:4:5:6::7.8.9.10", kRefused},
    {"DottedQuadLeadingZero", "::ffff:192.0.2.01", kRefused},
    {"DottedQuadOctet256", "::ffff:192.0.2.256", kRefused},
    {"DottedQuadThreeOctets", "::ffff:192.0.2", kRefused},
    {"DottedQuadFiveOctets", "::ffff:192.0.2.1.1", kRefused},
    {"TwoDottedQuads", "::1.2.3.4:1.2.3.4", kRefused},
};

class ReadIpv6 : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadIpv6, TakesTheWholeTextOrNothing) {
  EXPECT_EQ(Canonical(ParseIPv6Addr(GetParam().text)), GetParam().canonical);
}

INSTANTIATE_TEST_SUITE_P(Texts, ReadIpv6, testing::ValuesIn(kIpv6ReadCases), RowName<ReadCase>);

const ReadCase kIpv4MaskReadCases[] = {
    {"Plain", "192.0.2.1/24", "192.0.2.1/24"},
    {"ShortestLength", "0.0.0.0/0", "0.0.0.0/0"},
    {"OneDigit", "10.0.0.1/8", "10.0.0.1/8"},
    {"LongestLength", "10.0.0.1/32", "10.0.0.1/32"},
    {"LengthTooLong", "10.0.0.1/33", kRefused},
    {"LengthOfTheOtherFamily", "10.0.0.1/64", kRefused},
    {"LengthAboveOneByte", "10.0.0.1/256", kRefused},
    {"FourDigits", "10.0.0.1/1000", kRefused},
    {"LeadingZero", "10.0.0.1/08", kRefused},
    {"DoubleZero", "10.0.0.1/00", kRefused},
    {"BlankBeforeLength", "10.0.0.1/ 8", kRefused},
    {"BlankAfterLength", "10.0.0.1/8 ", kRefused},
    {"BlankBeforeSlash", "10.0.0.1 /8", kRefused},
    {"Negative", "10.0.0.1/-1", kRefused},
    {"PlusSign", "10.0.0.1/+8", kRefused},
    {"NoLength", "10.0.0.1/", kRefused},
    {"NoSlash", "10.0.0.1", kRefused},
    {"NoAddress", "/8", kRefused},
    {"OnlySlash", "/", kRefused},
    {"Empty", "", kRefused},
    {"TwoSlashes", "10.0.0.1//8", kRefused},
    {"TwoLengths", "10.0.0.1/8/8", kRefused},
    {"DottedMask", "10.0.0.1/255.0.0.0", kRefused},
    {"BadAddress", "10.0.0.256/8", kRefused},
    {"OtherFamily", "::1/8", kRefused},
};

class ReadIpv4Mask : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadIpv4Mask, TakesTheWholeTextOrNothing) {
  EXPECT_EQ(Canonical(ParseIPv4AddrMask(GetParam().text)), GetParam().canonical);
}

INSTANTIATE_TEST_SUITE_P(Texts, ReadIpv4Mask, testing::ValuesIn(kIpv4MaskReadCases),
                         RowName<ReadCase>);

const ReadCase kIpv6MaskReadCases[] = {
    {"Plain", "2001:db8::1/64", "2001:db8::1/64"},
    {"CanonicalWhenPrinted", "2001:DB8:0::1/64", "2001:db8::1/64"},
    {"ShortestLength", "::/0", "::/0"},
    {"OneDigit", "::/8", "::/8"},
    {"LongestLength", "::1/128", "::1/128"},
    {"DottedQuad", "::ffff:192.0.2.1/120", "::ffff:192.0.2.1/120"},
    {"LengthTooLong", "::1/129", kRefused},
    {"LengthAboveOneByte", "::1/256", kRefused},
    {"LeadingZero", "::1/08", kRefused},
    {"LeadingZeroThreeDigits", "::1/064", kRefused},
    {"BlankBeforeLength", "::1/ 8", kRefused},
    {"Hexadecimal", "::1/a", kRefused},
    {"NoLength", "::1/", kRefused},
    {"NoSlash", "::1", kRefused},
    {"NoAddress", "/64", kRefused},
    {"Empty", "", kRefused},
    {"TwoSlashes", "::1//64", kRefused},
    {"TwoLengths", "::1/64/64", kRefused},
    {"Zone", "fe80::1%eth0/64", kRefused},
    {"BadAddress", "1::2::3/64", kRefused},
    {"OtherFamily", "10.0.0.1/8", kRefused},
};

class ReadIpv6Mask : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadIpv6Mask, TakesTheWholeTextOrNothing) {
  EXPECT_EQ(Canonical(ParseIPv6AddrMask(GetParam().text)), GetParam().canonical);
}

INSTANTIATE_TEST_SUITE_P(Texts, ReadIpv6Mask, testing::ValuesIn(kIpv6MaskReadCases),
                         RowName<ReadCase>);

// Texts of one to three small faults in good ones: the readers take exactly what the system's
// strict reader takes.
TEST(ReadersOnDamagedTexts, AgreeWithTheSystem) {
  std::vector<std::string> seeds;
  for (const ReadCase& c : kIpv4ReadCases) seeds.push_back(c.text);
  for (const ReadCase& c : kIpv6ReadCases) seeds.push_back(c.text);
  constexpr std::string_view kAlphabet = "0123456789afAFg.:/% x";
  std::mt19937 random(20240501);
  const auto below = [&random](size_t bound) { return random() % bound; };

  int accepted_ipv4 = 0;
  int accepted_ipv6 = 0;
  for (int round = 0; round < 200000; ++round) {
    std::string text = seeds[below(seeds.size())];
    for (size_t faults = 1 + below(3); faults > 0; --faults) {
      const size_t at = below(text.size() + 1);
      const char c = kAlphabet[below(kAlphabet.size())];
      switch (below(3)) {
        case 0:
          text.insert(at, 1, c);
          break;
        case 1:
          if (at < text.size()) text[at] = c;
          break;
        default:
          if (at < text.size()) text.erase(at, 1);
      }
    }
    if (text.find('\0') != text.npos) continue;  // the system stops reading there

    in_addr system_ipv4{};
    const bool is_ipv4 = inet_pton(AF_INET, text.c_str(), &system_ipv4) == 1;
    const std::optional<IPv4Addr> ipv4 = ParseIPv4Addr(text);
    ASSERT_EQ(ipv4.has_value(), is_ipv4) << std::quoted(text);
    ASSERT_EQ(ipv4.value_or(IPv4Addr()).to_uint32(), is_ipv4 ? ntohl(system_ipv4.s_addr) : 0)
        << text;
    accepted_ipv4 += is_ipv4;

    Bytes system_ipv6{};
    const bool is_ipv6 = inet_pton(AF_INET6, text.c_str(), system_ipv6.data()) == 1;
    const std::optional<IPv6Addr> ipv6 = ParseIPv6Addr(text);
    ASSERT_EQ(ipv6.has_value(), is_ipv6) << std::quoted(text);
    ASSERT_EQ(ipv6.value_or(IPv6Addr()).bytes(), is_ipv6 ? system_ipv6 : Bytes{}) << text;
    accepted_ipv6 += is_ipv6;
  }
  EXPECT_GT(accepted_ipv4, 1000);
  EXPECT_GT(accepted_ipv6, 1000);
}

TEST(RoundTrip, WhatIsPrintedReadsBackEqual) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    const IPv4AddrMask ipv4(static_cast<uint32_t>(random()), static_cast<uint8_t>(random() % 33));
    EXPECT_EQ(ParseIPv4AddrMask(ipv4.to_string()), ipv4);

    Bytes bytes{};
    for (uint8_t& byte : bytes) {
      if (random() % 2 == 0) byte = static_cast<uint8_t>(random());
    }
    const IPv6AddrMask ipv6(IPv6Addr(bytes), static_cast<uint8_t>(random() % 129));
    EXPECT_EQ(ParseIPv6AddrMask(ipv6.to_string()), ipv6);
  }
}

// ------------------------------------------------------------------------------------------------
// order and equality

// Strictly ascending lists: every element is compared with every other, so that all operators are
// seen on all sides.
template <typename T>
void ExpectStrictlyAscending(const std::vector<T>& values) {
  for (size_t i = 0; i < values.size(); ++i) {
    for (size_t j = 0; j < values.size(); ++j) {
      SCOPED_TRACE(values[i].to_string() + " and " + values[j].to_string());
      EXPECT_EQ(values[i] < values[j], i < j);
      EXPECT_EQ(values[i] <= values[j], i <= j);
      EXPECT_EQ(values[i] > values[j], i > j);
      EXPECT_EQ(values[i] >= values[j], i >= j);
      EXPECT_EQ(values[i] == values[j], i == j);
      EXPECT_EQ(values[i] != values[j], i != j);
    }
  }
}

TEST(Order, Ipv4AddressesNumerically) {
  ExpectStrictlyAscending<IPv4Addr>({V4("0.0.0.0"), V4("0.0.0.1"), V4("0.0.1.0"),
                                     V4("9.255.255.255"), V4("10.0.0.0"), V4("127.255.255.255"),
                                     V4("128.0.0.0"), V4("255.255.255.255")});
}

TEST(Order, Ipv6AddressesAsBytes) {
  ExpectStrictlyAscending<IPv6Addr>(
      {V6("::"), V6("::1"), V6("::100"), V6("::8000:0:0:0"), V6("0:0:0:1::"), V6("0:0:0:1:ffff::"),
       V6("1::"), V6("2001:db8::"), V6("8000::"), V6("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff")});
}

TEST(Order, Ipv4PrefixesByAddressThenLength) {
  ExpectStrictlyAscending<IPv4AddrMask>({Mask4("0.0.0.0/0"), Mask4("0.0.0.0/32"),
                                         Mask4("10.0.0.0/8"), Mask4("10.0.0.0/9"),
                                         Mask4("10.0.0.1/0"), Mask4("10.0.0.1/32"),
                                         IPv4AddrMask(0x0a000001, 33), Mask4("255.0.0.0/0")});
}

TEST(Order, Ipv6PrefixesByAddressThenLength) {
  ExpectStrictlyAscending<IPv6AddrMask>({Mask6("::/0"), Mask6("::/128"), Mask6("::1/0"),
                                         Mask6("2001:db8::/32"), Mask6("2001:db8::/64"),
                                         Mask6("2001:db8::1/0"), Mask6("2001:db8::1/128"),
                                         IPv6AddrMask(V6("2001:db8::1"), 129), Mask6("ff00::/0")});
}

// ------------------------------------------------------------------------------------------- parts
// and "unspecified"

TEST(Setters, ReplaceOnePartAndKeepTheOther) {
  IPv4AddrMask ipv4;
  ipv4.set_addr(V4("10.0.0.1"));
  EXPECT_EQ(ipv4, Mask4("10.0.0.1/0"));
  ipv4.set_prefix_len(24);
  EXPECT_EQ(ipv4, Mask4("10.0.0.1/24"));
  ipv4.set_addr(V4("10.0.0.2"));
  EXPECT_EQ(ipv4.addr(), V4("10.0.0.2"));
  EXPECT_EQ(ipv4.prefix_len(), 24);

  IPv6AddrMask ipv6;
  ipv6.set_addr(V6("2001:db8::1"));
  EXPECT_EQ(ipv6, Mask6("2001:db8::1/0"));
  ipv6.set_prefix_len(64);
  EXPECT_EQ(ipv6, Mask6("2001:db8::1/64"));
  ipv6.set_addr(V6("2001:db8::2"));
  EXPECT_EQ(ipv6.addr(), V6("2001:db8::2"));
  EXPECT_EQ(ipv6.prefix_len(), 64);
}

TEST(Constructors, NumberAndAddressGiveTheSamePrefix) {
  EXPECT_EQ(IPv4AddrMask(0x0a000001, 24), IPv4AddrMask(IPv4Addr(0x0a000001), 24));
}

struct UnspecifiedCase {
  const char* name;
  IPv4AddrMask ipv4;
  IPv6AddrMask ipv6;
  bool is_unspecified;
};

std::ostream& operator<<(std::ostream& out, const UnspecifiedCase& c) {
  return out << c.ipv4 << " and " << c.ipv6;
}

const UnspecifiedCase kUnspecifiedCases[] = {
    {"NeverSet", {}, {}, true},
    {"ConfiguredAsAllZero", Mask4("0.0.0.0/0"), Mask6("::/0"), true},
    {"ZeroAddressWithLength", Mask4("0.0.0.0/1"), Mask6("::/1"), false},
    {"ZeroAddressWithFullLength", Mask4("0.0.0.0/32"), Mask6("::/128"), false},
    {"AddressWithLengthZero", Mask4("0.0.0.1/0"), Mask6("::1/0"), false},
    {"AddressInTheFirstByte", Mask4("128.0.0.0/0"), Mask6("8000::/0"), false},
    {"Ordinary", Mask4("10.0.0.1/8"), Mask6("2001:db8::1/64"), false},
};

class Unspecified : public testing::TestWithParam<UnspecifiedCase> {};

TEST_P(Unspecified, IsEqualToTheDefault) {
  EXPECT_EQ(GetParam().ipv4.IsUnspecified(), GetParam().is_unspecified);
  EXPECT_EQ(GetParam().ipv6.IsUnspecified(), GetParam().is_unspecified);
}

INSTANTIATE_TEST_SUITE_P(Prefixes, Unspecified, testing::ValuesIn(kUnspecifiedCases),
                         RowName<UnspecifiedCase>);

// ----------------------------------------------------------------------------------------------------------
// overlap

struct Ipv4OverlapCase {
  const char* name;
  IPv4AddrMask a;
  IPv4AddrMask b;
  bool overlap;
};

std::ostream& operator<<(std::ostream& out, const Ipv4OverlapCase& c) {
  return out << c.a << " and " << c.b;
}

const Ipv4OverlapCase kIpv4OverlapCases[] = {
    {"BothUnspecified", {}, {}, true},
    {"Length0ContainsAll", Mask4("10.0.0.1/0"), Mask4("200.1.2.3/32"), true},
    {"Length0BothOtherAddress", Mask4("10.0.0.1/0"), Mask4("200.1.2.3/0"), true},
    {"Length1SameHalf", Mask4("0.0.0.1/1"), Mask4("127.255.255.255/32"), true},
    {"Length1OtherHalf", Mask4("0.0.0.1/1"), Mask4("128.0.0.0/32"), false},
    {"Length1BothOtherHalf", Mask4("127.255.255.255/1"), Mask4("128.0.0.0/1"), false},
    {"Length8ContainsLonger", Mask4("10.0.0.1/8"), Mask4("10.1.2.3/24"), true},
    {"Length8LastAddress", Mask4("10.0.0.1/8"), Mask4("10.255.255.255/32"), true},
    {"Length8NextAddress", Mask4("10.0.0.1/8"), Mask4("11.0.0.0/32"), false},
    {"Length8PreviousAddress", Mask4("10.0.0.1/8"), Mask4("9.255.255.255/32"), false},
    {"SameSubnetOtherHosts", Mask4("10.0.0.1/24"), Mask4("10.0.0.2/24"), true},
    {"NeighbourSubnets", Mask4("10.0.0.1/24"), Mask4("10.0.1.1/24"), false},
    {"NeighbourSubnetsUnderOneShorter", Mask4("10.0.2.0/23"), Mask4("10.0.4.0/23"), false},
    {"SameAddressOtherLength", Mask4("10.0.0.1/24"), Mask4("10.0.0.1/16"), true},
    {"Length31Pair", Mask4("10.0.0.2/31"), Mask4("10.0.0.3/31"), true},
    {"Length31NextPair", Mask4("10.0.0.2/31"), Mask4("10.0.0.4/31"), false},
    {"Length31SameBitsButNotAPair", Mask4("10.0.0.1/31"), Mask4("10.0.0.2/31"), false},
    {"Length32InsideLength31", Mask4("10.0.0.2/31"), Mask4("10.0.0.3/32"), true},
    {"Length32Same", Mask4("10.0.0.1/32"), Mask4("10.0.0.1/32"), true},
    {"Length32Next", Mask4("10.0.0.1/32"), Mask4("10.0.0.0/32"), false},
    {"Length32OtherFirstBit", Mask4("10.0.0.1/32"), Mask4("138.0.0.1/32"), false},
    {"Length33IsFullLength", IPv4AddrMask(0x0a000001, 33), Mask4("10.0.0.1/32"), true},
    {"Length255IsFullLength", IPv4AddrMask(0x0a000001, 255), IPv4AddrMask(0x0a000001, 33), true},
    {"Length255DoesNotReachTheNext", IPv4AddrMask(0x0a000001, 255), IPv4AddrMask(0x0a000000, 255),
     false},
    {"Length255InsideShorter", IPv4AddrMask(0x0a000001, 255), Mask4("10.0.0.0/8"), true},
};

class Ipv4Overlap : public testing::TestWithParam<Ipv4OverlapCase> {};

TEST_P(Ipv4Overlap, BothWays) {
  EXPECT_EQ(GetParam().a.Overlap(GetParam().b), GetParam().overlap);
  EXPECT_EQ(GetParam().b.Overlap(GetParam().a), GetParam().overlap);
  EXPECT_TRUE(GetParam().a.Overlap(GetParam().a));
}

INSTANTIATE_TEST_SUITE_P(Prefixes, Ipv4Overlap, testing::ValuesIn(kIpv4OverlapCases),
                         RowName<Ipv4OverlapCase>);

struct Ipv6OverlapCase {
  const char* name;
  IPv6AddrMask a;
  IPv6AddrMask b;
  bool overlap;
};

std::ostream& operator<<(std::ostream& out, const Ipv6OverlapCase& c) {
  return out << c.a << " and " << c.b;
}

const Ipv6OverlapCase kIpv6OverlapCases[] = {
    {"BothUnspecified", {}, {}, true},
    {"Length0ContainsAll", Mask6("::1/0"), Mask6("ffff::1/128"), true},
    {"Length1SameHalf", Mask6("::1/1"), Mask6("7fff::/128"), true},
    {"Length1OtherHalf", Mask6("::1/1"), Mask6("8000::/128"), false},
    {"Length63Pair", Mask6("2001:db8:0:2::/63"), Mask6("2001:db8:0:3::1/64"), true},
    {"Length63NextPair", Mask6("2001:db8:0:2::/63"), Mask6("2001:db8:0:4::1/64"), false},
    {"Length64SameSubnet", Mask6("2001:db8::1/64"), Mask6("2001:db8::ffff:0:0:1/64"), true},
    {"Length64NextSubnet", Mask6("2001:db8::1/64"), Mask6("2001:db8:0:1::1/64"), false},
    {"Length64OtherFirstBit", Mask6("::1/64"), Mask6("8000::1/64"), false},
    {"Length64ContainsLonger", Mask6("2001:db8::1/64"), Mask6("2001:db8::ffff:0:0:1/128"), true},
    {"Length65SameHalf", Mask6("2001:db8::/65"), Mask6("2001:db8::7fff:0:0:1/128"), true},
    {"Length65OtherHalf", Mask6("2001:db8::/65"), Mask6("2001:db8::8000:0:0:0/65"), false},
    {"Length65SameLowBitsOtherSubnet", Mask6("2001:db8::/65"), Mask6("2001:db8:0:1::/65"), false},
    {"SameAddressOtherLength", Mask6("2001:db8::1/64"), Mask6("2001:db8::1/32"), true},
    {"Length127Pair", Mask6("2001:db8::2/127"), Mask6("2001:db8::3/127"), true},
    {"Length127NextPair", Mask6("2001:db8::2/127"), Mask6("2001:db8::4/127"), false},
    {"Length128Same", Mask6("2001:db8::1/128"), Mask6("2001:db8::1/128"), true},
    {"Length128Next", Mask6("2001:db8::1/128"), Mask6("2001:db8::/128"), false},
    {"Length128SameLowBits", Mask6("2001:db8::1/128"), Mask6("::1/128"), false},
    {"Length129IsFullLength", IPv6AddrMask(V6("::1"), 129), Mask6("::1/128"), true},
    {"Length255DoesNotReachTheNext", IPv6AddrMask(V6("::1"), 255), IPv6AddrMask(V6("::"), 255),
     false},
    {"Length255InsideShorter", IPv6AddrMask(V6("::1"), 255), Mask6("::/64"), true},
};

class Ipv6Overlap : public testing::TestWithParam<Ipv6OverlapCase> {};

TEST_P(Ipv6Overlap, BothWays) {
  EXPECT_EQ(GetParam().a.Overlap(GetParam().b), GetParam().overlap);
  EXPECT_EQ(GetParam().b.Overlap(GetParam().a), GetParam().overlap);
  EXPECT_TRUE(GetParam().a.Overlap(GetParam().a));
}

INSTANTIATE_TEST_SUITE_P(Prefixes, Ipv6Overlap, testing::ValuesIn(kIpv6OverlapCases),
                         RowName<Ipv6OverlapCase>);

// The definition, bit by bit: the bits that both prefixes fix are the same, so one address fits
// both.
bool ShareAnAddress(const std::vector<uint8_t>& a, unsigned a_len, const std::vector<uint8_t>& b,
                    unsigned b_len) {
  for (unsigned bit = 0; bit < 8 * a.size(); ++bit) {
    if (bit >= a_len || bit >= b_len) continue;
    const unsigned shift = 7 - bit % 8;
    if ((a[bit / 8] >> shift & 1) != (b[bit / 8] >> shift & 1)) return false;
  }
  return true;
}

std::vector<uint8_t> BytesOf(const IPv4Addr& addr) {
  const uint32_t value = addr.to_uint32();
  return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

std::vector<uint8_t> BytesOf(const IPv6Addr& addr) {
  const Bytes bytes = addr.bytes();
  return {bytes.begin(), bytes.end()};
}

// Two addresses that first differ in a random bit, and lengths around that bit or anywhere, out of
// range too.
template <typename AddrMask, typename MakeAddr>
void CompareOverlapWithDefinition(MakeAddr make_addr, unsigned full_length) {
  std::mt19937 random(static_cast<unsigned>(full_length));
  int overlaps = 0;
  constexpr int kRounds = 200000;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<uint8_t> a(full_length / 8);
    for (uint8_t& byte : a) byte = static_cast<uint8_t>(random());
    std::vector<uint8_t> b = a;
    const unsigned first_difference = static_cast<unsigned>(random() % (full_length + 1));
    if (first_difference < full_length) {
      b[first_difference / 8] ^= static_cast<uint8_t>(0x80 >> first_difference % 8);
      for (unsigned byte = first_difference / 8 + 1; byte < b.size(); ++byte) {
        b[byte] = static_cast<uint8_t>(random());
      }
    }
    const auto length = [&]() -> uint8_t {
      const unsigned near = first_difference + static_cast<unsigned>(random() % 3);
      const unsigned anywhere = static_cast<unsigned>(random() % 256);
      return static_cast<uint8_t>(random() % 2 == 0 ? near : anywhere);
    };
    const AddrMask mask_a(make_addr(a), length());
    const AddrMask mask_b(make_addr(b), length());
    ASSERT_EQ(BytesOf(mask_a.addr()), a);
    const bool expected = ShareAnAddress(a, mask_a.prefix_len(), b, mask_b.prefix_len());
    ASSERT_EQ(mask_a.Overlap(mask_b), expected) << mask_a << " and " << mask_b;
    ASSERT_EQ(mask_b.Overlap(mask_a), expected) << mask_b << " and " << mask_a;
    overlaps += expected;
  }
  EXPECT_GT(overlaps, kRounds / 10);
  EXPECT_LT(overlaps, kRounds - kRounds / 10);
}

TEST(RandomOverlap, Ipv4IsTheDefinition) {
  const auto make_addr = [](const std::vector<uint8_t>& bytes) {
    uint32_t value = 0;
    for (const uint8_t byte : bytes) value = value << 8 | byte;
    return IPv4Addr(value);
  };
  CompareOverlapWithDefinition<IPv4AddrMask>(make_addr, 32);
}

TEST(RandomOverlap, Ipv6IsTheDefinition) {
  const auto make_addr = [](const std::vector<uint8_t>& bytes) {
    Bytes network_order;
    std::copy(bytes.begin(), bytes.end(), network_order.begin());
    return IPv6Addr(network_order);
  };
  CompareOverlapWithDefinition<IPv6AddrMask>(make_addr, 128);
}

// ------------------------------------------------------------------------------------- network and
// broadcast address

struct HostBitsCase {
  const char* name;
  IPv4AddrMask mask;
  bool is_network;
  bool is_broadcast;
};

std::ostream& operator<<(std::ostream& out, const HostBitsCase& c) { return out << c.mask; }

const HostBitsCase kHostBitsCases[] = {
    {"Length0Network", Mask4("0.0.0.0/0"), true, false},
    {"Length0Host", Mask4("10.0.0.1/0"), false, false},
    {"Length0Broadcast", Mask4("255.255.255.255/0"), false, true},
    {"Length1Network", Mask4("128.0.0.0/1"), true, false},
    {"Length1Host", Mask4("128.0.0.1/1"), false, false},
    {"Length1BroadcastLowerHalf", Mask4("127.255.255.255/1"), false, true},
    {"Length1BroadcastUpperHalf", Mask4("255.255.255.255/1"), false, true},
    {"Length8Network", Mask4("10.0.0.0/8"), true, false},
    {"Length8Broadcast", Mask4("10.255.255.255/8"), false, true},
    {"Length23Network", Mask4("10.42.0.0/23"), true, false},
    {"Length23LastOctetOnesInside", Mask4("10.42.0.255/23"), false, false},
    {"Length23LastOctetZeroInside", Mask4("10.42.1.0/23"), false, false},
    {"Length23Broadcast", Mask4("10.42.1.255/23"), false, true},
    {"Length24Network", Mask4("192.168.1.0/24"), true, false},
    {"Length24Host", Mask4("192.168.1.1/24"), false, false},
    {"Length24Broadcast", Mask4("192.168.1.255/24"), false, true},
    {"Length30Network", Mask4("192.168.1.0/30"), true, false},
    {"Length30FirstHost", Mask4("192.168.1.1/30"), false, false},
    {"Length30LastHost", Mask4("192.168.1.2/30"), false, false},
    {"Length30Broadcast", Mask4("192.168.1.3/30"), false, true},
    {"Length31LowerOfThePair", Mask4("192.168.1.0/31"), true, false},
    {"Length31UpperOfThePair", Mask4("192.168.1.1/31"), false, true},
    {"Length32HasNoHostBits", Mask4("192.168.1.1/32"), true, true},
    {"Length32AllZero", Mask4("0.0.0.0/32"), true, true},
    {"Length32AllOnes", Mask4("255.255.255.255/32"), true, true},
    {"Length33IsFullLength", IPv4AddrMask(0xc0a80101, 33), true, true},
    {"Length255IsFullLength", IPv4AddrMask(0xc0a80101, 255), true, true},
};

class HostBits : public testing::TestWithParam<HostBitsCase> {};

TEST_P(HostBits, TellNetworkAndBroadcastAddress) {
  EXPECT_EQ(GetParam().mask.IsNetworkAddr(), GetParam().is_network);
  EXPECT_EQ(GetParam().mask.IsBroadcastAddr(), GetParam().is_broadcast);
}

INSTANTIATE_TEST_SUITE_P(Prefixes, HostBits, testing::ValuesIn(kHostBitsCases),
                         RowName<HostBitsCase>);

}  // namespace
}  // namespace nettypes
