// Key texts of the OSPF interface list that no data model with types would let through: how they
// are converted, which exception leaves the read, and what is in the table then.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/system/system_error.hpp>
#include <cerrno>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "config.h"
#include "dotted_quad.h"
#include "support/device.h"
#include "support/ospf_records.h"
#include "support/scripted_confd.h"
#include "support/table_fixture.h"

namespace {

// Texts that inet_pton was called with while this is set.
std::vector<std::string>* parsed_texts = nullptr;
int errno_of_failure = 0;  // that it sets when it refuses a text; 0: none

}  // namespace

extern "C" int inet_pton(int family, const char* text, void* addr) noexcept {
  static const auto original =
      reinterpret_cast<int (*)(int, const char*, void*)>(dlsym(RTLD_NEXT, "inet_pton"));
  if (parsed_texts != nullptr) {
    parsed_texts->push_back((family == AF_INET ? "" : "other family: ") + std::string(text));
  }
  const int result = original(family, text, addr);
  if (result != 1 && errno_of_failure != 0) errno = errno_of_failure;
  return result;
}

namespace ip_application::config_valid {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::Device;
using tests::ExpectedCalls;
using tests::TextsOf;

constexpr ConfigAddrFamily kIpv4 = ConfigAddrFamily::IPv4;
constexpr char kEntries[] = "/internal/ospf-interface-l3";
constexpr char kVrfOf1[] = "maapi_get_str_elem /internal/ospf-index-to-proc-id{1}/vrf_name";

// Three entries; a test gives keys of the second one another text.
class OspfKeys : public tests::TableTest {
 protected:
  OspfKeys() {
    framework::SetLogEnabled(true);
    framework::TakeLogLines();
    Configure(Device{.ospf = {{1, "0.0.0.1", "l3-1", "10.0.0.1", 24},
                              {2, "0.0.0.2", "l3-2", "10.0.0.2", 24},
                              {3, "0.0.0.3", "l3-3", "10.0.0.3", 24}},
                     .ospf_processes = {{0, 40, "zero"},
                                        {1, 10, "red"},
                                        {3, 30, "red"},
                                        {5, 50, "five"},
                                        {8, 80, "eight"},
                                        {10, 100, "ten"},
                                        {4294967295, 99, "last"}}});
    Bind(table);
  }

  // The calls up to the exception in the second entry.
  static ExpectedCalls UpToTheSecond() {
    ExpectedCalls calls;
    calls.Walk(kEntries, 3)
        .Add(
            "maapi_get_u_int8_elem /internal/ospf-interface-l3{1 0.0.0.1 l3-1 10.0.0.1}/ospf-pm-ip-netmask")
        .Add("maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{1}/proc_id")
        .Add(kVrfOf1);
    return calls;
  }

  void ExpectOnlyTheFirst() {
    EXPECT_THAT(TextsOf(table), ElementsAre("l3 1: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24"));
    EXPECT_EQ(TakeCalls(), UpToTheSecond());
    EXPECT_FALSE(table.ipv4_read_);
  }

  // A read that ends with an exception in the second entry. `left` is errno when its keys are
  // converted.
  void ExpectError(int left, int code) {
    on_call = [this, left](const std::string& call) {
      if (call != kVrfOf1) return;
      errno = left;
      parsed_texts = &quads;
    };
    bool thrown = false;
    try {
      table.ReadConfigIfNeeded(kIpv4);
    } catch (const boost::system::system_error& error) {
      thrown = true;
      EXPECT_EQ(error.code().value(), code);
      EXPECT_TRUE(error.code().category() == boost::system::system_category());
      // With an empty prefix the text is the one of the code.
      EXPECT_STREQ(error.what(), boost::system::system_error(error.code()).what());
    }
    parsed_texts = nullptr;
    EXPECT_TRUE(thrown);
    ExpectOnlyTheFirst();
  }

  std::vector<std::string> quads;  // that were parsed of the second entry, in order
  tests::ScriptedConfd scripted;
  Ospfv2Config table;
};

// Compound ids ---------------------------------------------------------------------------------

struct IdCase {
  const char* name;
  const char* text;
  const char* record;  // of the second entry
};

std::ostream& operator<<(std::ostream& out, const IdCase& c) { return out << c.name; }

const IdCase kIdCases[] = {
    {"Number", "5", "l3 2: ospf 50 vrf five area 0.0.0.2: 10.0.0.2/0"},
    {"Zero", "0", "l3 2: ospf 40 vrf zero area 0.0.0.2: 10.0.0.2/0"},
    {"LeadingZeroIsDecimal", "010", "l3 2: ospf 100 vrf ten area 0.0.0.2: 10.0.0.2/0"},
    {"TextBehind", "5x", "l3 2: ospf 50 vrf five area 0.0.0.2: 10.0.0.2/0"},
    {"BlankInFront", " 5", "l3 2: ospf 50 vrf five area 0.0.0.2: 10.0.0.2/0"},
    {"PlusSign", "+5", "l3 2: ospf 50 vrf five area 0.0.0.2: 10.0.0.2/0"},
    {"HexadecimalIsZero", "0x8", "l3 2: ospf 40 vrf zero area 0.0.0.2: 10.0.0.2/0"},
    {"Largest32Bits", "4294967295", "l3 2: ospf 99 vrf last area 0.0.0.2: 10.0.0.2/0"},
    // The number has 64 bits and the compound id the lower 32 of them.
    {"Bit32", "4294967296", "l3 2: ospf 40 vrf zero area 0.0.0.2: 10.0.0.2/0"},
    {"Above32Bits", "4294967301", "l3 2: ospf 50 vrf five area 0.0.0.2: 10.0.0.2/0"},
    {"Largest64Bits", "18446744073709551615", "l3 2: ospf 99 vrf last area 0.0.0.2: 10.0.0.2/0"},
    {"MinusOne", "-1", "l3 2: ospf 99 vrf last area 0.0.0.2: 10.0.0.2/0"},
};

class CompoundId : public OspfKeys, public testing::WithParamInterface<IdCase> {};

TEST_P(CompoundId, IsADecimalNumber) {
  scripted.printed_instead["2"] = GetParam().text;
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table),
              ElementsAre("l3 1: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24", GetParam().record,
                          "l3 3: ospf 30 vrf red area 0.0.0.3: 10.0.0.3/24"));
  EXPECT_EQ(framework::TakeLogLines().size(), 1u) << "the entry has another id in the list";
}

INSTANTIATE_TEST_SUITE_P(Numbers, CompoundId, testing::ValuesIn(kIdCases),
                         [](const auto& row) { return std::string(row.param.name); });

struct BadIdCase {
  const char* name;
  const char* text;
  bool is_number;  // but too large
};

std::ostream& operator<<(std::ostream& out, const BadIdCase& c) { return out << c.name; }

const BadIdCase kBadIdCases[] = {
    {"Empty", "", false},
    {"Blank", " ", false},
    {"Word", "two", false},
    {"Sign", "-", false},
    {"TextInFront", "x5", false},
    {"Dot", ".5", false},
    {"Above64Bits", "18446744073709551616", true},
    {"AboveNegative64Bits", "-18446744073709551616", true},
    {"ManyDigits", "99999999999999999999999999999999", true},
};

class BadCompoundId : public OspfKeys, public testing::WithParamInterface<BadIdCase> {};

TEST_P(BadCompoundId, LeavesTheRead) {
  scripted.printed_instead["2"] = GetParam().text;
  // The id is converted first.
  scripted.printed_instead["0.0.0.2"] = "no area";
  scripted.printed_instead["10.0.0.2"] = "no address";
  try {
    table.ReadConfigIfNeeded(kIpv4);
    FAIL() << "no exception";
  } catch (const std::invalid_argument& error) {
    EXPECT_FALSE(GetParam().is_number);
    EXPECT_STREQ(error.what(), "stoul");
  } catch (const std::out_of_range& error) {
    EXPECT_TRUE(GetParam().is_number);
    EXPECT_STREQ(error.what(), "stoul");
  }
  ExpectOnlyTheFirst();
}

INSTANTIATE_TEST_SUITE_P(Texts, BadCompoundId, testing::ValuesIn(kBadIdCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Areas and addresses --------------------------------------------------------------------------

struct BadQuadCase {
  const char* name;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const BadQuadCase& c) { return out << c.name; }

const BadQuadCase kBadQuadCases[] = {
    {"Empty", ""},
    {"Word", "backbone"},
    {"Number", "2"},
    {"ThreeBytes", "10.0.0"},
    {"FiveBytes", "10.0.0.0.2"},
    {"ByteAbove255", "10.0.0.256"},
    {"LeadingZero", "10.0.0.02"},
    {"Hexadecimal", "0xa.0.0.2"},
    {"Negative", "10.0.0.-2"},
    {"PrefixLength", "10.0.0.2/24"},
    {"BlankInFront", " 10.0.0.2"},
    {"BlankBehind", "10.0.0.2 "},
    {"DotBehind", "10.0.0.2."},
    {"Ipv6", "2001:db8::2"},
    {"MappedIpv6", "::ffff:10.0.0.2"},
};

class BadQuad : public OspfKeys, public testing::WithParamInterface<BadQuadCase> {};

TEST_P(BadQuad, AsAreaLeavesTheRead) {
  scripted.printed_instead["0.0.0.2"] = GetParam().text;
  ExpectError(0, EINVAL);
  EXPECT_THAT(quads, ElementsAre(GetParam().text));
}

TEST_P(BadQuad, AsAddressLeavesTheRead) {
  scripted.printed_instead["10.0.0.2"] = GetParam().text;
  ExpectError(0, EINVAL);
  EXPECT_THAT(quads, ElementsAre("0.0.0.2", GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts, BadQuad, testing::ValuesIn(kBadQuadCases),
                         [](const auto& row) { return std::string(row.param.name); });

class QuadErrorCode : public OspfKeys, public testing::WithParamInterface<int> {};

// The code is what an earlier call left in errno: the C library's conversion does not set it.
TEST_P(QuadErrorCode, IsErrnoAsItStood) {
  scripted.printed_instead["0.0.0.2"] = "backbone";
  ExpectError(GetParam(), GetParam());
}

TEST_P(QuadErrorCode, IsErrnoAsItStoodForAnAddress) {
  scripted.printed_instead["10.0.0.2"] = "no address";
  ExpectError(GetParam(), GetParam());
}

// Some C library's conversion may set it.
TEST_P(QuadErrorCode, IsErrnoOfTheConversion) {
  scripted.printed_instead["0.0.0.2"] = "backbone";
  errno_of_failure = GetParam();
  ExpectError(ENOTTY, GetParam());
  errno_of_failure = 0;
}

TEST_P(QuadErrorCode, StaysWhenTheTextIsAnAddress) {
  errno = GetParam();
  EXPECT_EQ(ParseIpv4Addr("192.0.2.1"), nettypes::IPv4Addr(0xc0000201));
  EXPECT_EQ(errno, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Errno, QuadErrorCode, testing::Values(ENOENT, EAGAIN, EINVAL, ERANGE));

TEST_F(OspfKeys, AreaIsParsedBeforeTheAddress) {
  scripted.printed_instead["0.0.0.2"] = "no area";
  scripted.printed_instead["10.0.0.2"] = "no address";
  ExpectError(0, EINVAL);
  EXPECT_THAT(quads, ElementsAre("no area"));
}

// A name without hyphen comes first: its other keys are not looked at.
TEST_F(OspfKeys, OfASkippedEntryAreNotConverted) {
  scripted.printed_instead = {
      {"2", "two"}, {"0.0.0.2", "area"}, {"l3-2", "l3 2"}, {"10.0.0.2", "quad"}};
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table), ElementsAre("l3 1: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24",
                                          "l3 3: ospf 30 vrf red area 0.0.0.3: 10.0.0.3/24"));
  EXPECT_THAT(framework::TakeLogLines(), IsEmpty());
}

// Reads that an exception ended ----------------------------------------------------------------

constexpr char kFirstRecord[] = "l3 1: ospf 10 vrf red area 0.0.0.1: 10.0.0.1/24";
constexpr char kSecondRecord[] = "l3 2: ospf 0 vrf  area 0.0.0.2: 10.0.0.2/24";
constexpr char kThirdRecord[] = "l3 3: ospf 30 vrf red area 0.0.0.3: 10.0.0.3/24";

// What was merged stays, a read that ended with an exception is no read, and the next one makes all
// calls again. An address that counted twice would hide one that was added to its interface.
TEST_F(OspfKeys, ReadAfterAnExceptionMergesWhatIsMissing) {
  scripted.printed_instead["2"] = "two";
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::invalid_argument);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord));
  scripted.printed_instead.clear();
  TakeCalls();
  table.ReadConfigIfNeeded(kIpv4);
  const std::vector<std::string> calls = TakeCalls();
  EXPECT_TRUE(table.ipv4_read_);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord, kSecondRecord, kThirdRecord));

  Ospfv2Config undisturbed;
  Bind(undisturbed);
  undisturbed.ReadConfigIfNeeded(kIpv4);
  EXPECT_EQ(calls, TakeCalls());
}

TEST_F(OspfKeys, ReadAfterTwoExceptionsMergesWhatIsMissing) {
  scripted.printed_instead = {{"2", "two"}};
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::invalid_argument);
  scripted.printed_instead = {{"3", "three"}};
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::invalid_argument);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord, kSecondRecord));
  scripted.printed_instead.clear();
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord, kSecondRecord, kThirdRecord));
}

// Key texts are cut, so two entries may have the same.
TEST_F(OspfKeys, ReadAfterAnExceptionTellsEntriesOfOneTextApart) {
  scripted.printed_instead = {
      {"2", "1"}, {"0.0.0.2", "0.0.0.1"}, {"l3-2", "l3-1"}, {"10.0.0.2", "10.0.0.1"}};
  int reads = 0;
  on_call = [&reads](const std::string& call) {
    if (call == kVrfOf1 && ++reads == 2) throw std::bad_alloc();
  };
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::bad_alloc);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord));
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table),
              ElementsAre(std::string(kFirstRecord) + " 10.0.0.1/24", kThirdRecord));
}

// The transaction after the one that could not be read has lost the first entry and has another
// one: what was merged stays.
TEST_F(OspfKeys, ReadAfterAnExceptionMayMeetOtherEntries) {
  scripted.printed_instead["2"] = "two";
  EXPECT_THROW(table.ReadConfigIfNeeded(kIpv4), std::invalid_argument);
  scripted.printed_instead.clear();
  Configure(
      Device{.ospf = {{3, "0.0.0.3", "l3-3", "10.0.0.3", 24}}, .ospf_processes = {{3, 30, "red"}}});
  Bind(table);
  table.ReadConfigIfNeeded(kIpv4);
  EXPECT_THAT(TextsOf(table), ElementsAre(kFirstRecord, kThirdRecord));
}

// An entry of the same keys that reads otherwise in a later transaction is another one.
TEST_F(OspfKeys, ReadAfterAnExceptionMergesWhatReadsOtherwise) {
  struct Change {
    int prefix_len;
    unsigned process_id;
    const char* vrf;
    std::vector<std::string> records;
  };
  const std::string first = kFirstRecord;
  const Change kChanges[] = {
      {24, 10, "red", {first}},
      {25, 10, "red", {first + " 10.0.0.1/25"}},
      {24, 11, "red", {first, "l3 1: ospf 11 vrf red area 0.0.0.1: 10.0.0.1/24"}},
      {24, 10, "blue", {first, "l3 1: ospf 10 vrf blue area 0.0.0.1: 10.0.0.1/24"}},
  };
  for (const Change& change : kChanges) {
    Configure(Device{
        .ospf = {{1, "0.0.0.1", "l3-1", "10.0.0.1", 24}, {2, "0.0.0.2", "l3-2", "10.0.0.2", 24}},
        .ospf_processes = {{1, 10, "red"}}});
    Ospfv2Config fresh;
    Bind(fresh);
    scripted.printed_instead["2"] = "two";
    EXPECT_THROW(fresh.ReadConfigIfNeeded(kIpv4), std::invalid_argument);
    scripted.printed_instead.clear();
    Configure(Device{.ospf = {{1, "0.0.0.1", "l3-1", "10.0.0.1", change.prefix_len}},
                     .ospf_processes = {{1, change.process_id, change.vrf}}});
    Bind(fresh);
    fresh.ReadConfigIfNeeded(kIpv4);
    EXPECT_THAT(TextsOf(fresh), testing::ElementsAreArray(change.records));
  }
}

}  // namespace
}  // namespace ip_application::config_valid
