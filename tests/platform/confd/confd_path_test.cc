#include "path.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "confd/keypath.h"
#include "confd/watch_calls.h"
#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::StoreTest;

constexpr const char* kConfiguration = R"({
  "store-sample:values": {"text": "here"},
  "store-sample:panel": {"lamp": "sample"},
  "store-other:panel": {"lamp": "other"},
  "store-sample:room": {
    "width": 4, "store-other:width": 5, "store-other:depth": 6,
    "shelf": [
      {"name": "", "material": "empty"},
      {"name": "plain", "material": "plain", "slot": [
        {"row": 1, "column": "x", "item": "1x"},
        {"row": 1, "column": "a b", "item": "blank"},
        {"row": 1, "column": "a}/b", "item": "brace"},
        {"row": 1, "column": "19\"rack", "item": "quote"},
        {"row": 1, "column": "", "item": "empty"}]},
      {"name": "a b", "material": "blank"},
      {"name": "a}b", "material": "brace"},
      {"name": "a}/b", "material": "brace and slash"},
      {"name": "a/b", "material": "slash"},
      {"name": "it's", "material": "apostrophe"},
      {"name": "19\"rack", "material": "quote"},
      {"name": "\"", "material": "quote alone"},
      {"name": "a\\b", "material": "backslash"},
      {"name": "a:b", "material": "colon"},
      {"name": "100%", "material": "percent"},
      {"name": "%s", "material": "string conversion"},
      {"name": "%n", "material": "write conversion"},
      {"name": "b\u00e4r", "material": "umlaut"},
      {"name": "  x ", "material": "blanks at both ends"}
    ]},
  "store-sample:gauge": [{"id": 7, "reading": -7}, {"id": 10, "reading": -10}],
  "store-sample:keyed": {
    "by-int8": [{"k": -5, "v": "number"}],
    "by-uint64": [{"k": "18446744073709551615", "v": "largest"}],
    "by-boolean": [{"k": true, "v": "yes"}],
    "by-enum": [{"k": "low", "v": "label"}],
    "by-binary": [{"k": "CgD/", "v": "base64"}, {"k": "", "v": "no bytes"}],
    "by-octets": [{"k": "0a:00:ff", "v": "octets"}, {"k": "", "v": "no octets"}],
    "by-ipv4": [{"k": "192.0.2.1", "v": "v4"}],
    "by-ipv6": [{"k": "2001:db8::1", "v": "v6"}],
    "by-ipv4-prefix": [{"k": "10.0.0.0/8", "v": "v4 prefix"}],
    "by-ipv4-plen": [{"k": "172.16.1.2/16", "v": "v4 length"}],
    "by-ipv6-plen": [{"k": "2001:db8::1/64", "v": "v6 length"}],
    "by-ratio": [{"k": "1.5", "v": "decimal"}],
    "by-identity": [{"k": "red", "v": "identity"}],
    "by-union": [{"k": 5, "v": "five"}, {"k": "word", "v": "word"}],
    "by-percent": [{"k": 9, "v": "nine"}, {"k": 20, "v": "twenty"}],
    "by-reference": [{"k": 7, "v": "refers"}],
    "by-several": [{"number": 5, "text": "t", "level": "high", "v": "three keys"}]
  }
})";

struct PathCase {
  const char* name;
  const char* path;
  const char* result;  // the leaf's text, or "error N" with confd_errno
};

std::ostream& operator<<(std::ostream& out, const PathCase& c) { return out << c.path; }

class PathText : public StoreTest, public testing::WithParamInterface<PathCase> {
 protected:
  PathText() { Open(kConfiguration); }
};

TEST_P(PathText, LeadsTo) { EXPECT_EQ(Get(GetParam().path), GetParam().result); }

constexpr const char* kNoExists = "error 1";
constexpr const char* kBadPath = "error 8";

const PathCase kStepCases[] = {
    {"NoPrefix", "/values/text", "here"},
    {"Prefix", "/sample:values/text", "here"},
    {"PrefixOnEveryStep", "/sample:values/sample:text", "here"},
    {"ModuleName", "/store-sample:values/store-sample:text", "here"},
    {"PrefixBelowTheTopOnly", "/values/sample:text", "here"},
    {"RelativeToTheRoot", "values/text", "here"},
    {"WrongPrefix", "/other:values/text", kBadPath},
    {"UnknownPrefix", "/nobody:values/text", kBadPath},
    {"PrefixWithoutName", "/sample:/text", kBadPath},
    {"NameWithoutPrefix", "/:values/text", "here"},
    {"AmbiguousAtTheTop", "/panel/lamp", kBadPath},
    {"AmbiguousAtTheTopWithPrefix", "/other:panel/lamp", "other"},
    {"AmbiguousAtTheTopWithModuleName", "/store-sample:panel/lamp", "sample"},
    {"AmbiguousBelow", "/room/width", kBadPath},
    {"AmbiguousBelowWithPrefix", "/room/sample:width", "4"},
    {"AmbiguousBelowWithOtherPrefix", "/room/other:width", "5"},
    {"AugmentedWithoutPrefix", "/room/depth", "6"},
    {"UnknownNodeAtTheTop", "/nowhere", kBadPath},
    {"UnknownNodeBelow", "/values/nowhere", kBadPath},
    {"BelowLeaf", "/values/text/more", kBadPath},
    {"OtherCase", "/Values/text", kBadPath},
    {"TrailingSlash", "/values/text/", kBadPath},
    {"DoubleSlash", "/values//text", kBadPath},
    {"DoubleSlashAtTheTop", "//values/text", kBadPath},
    {"Blank", "/values/ text", kBadPath},
    {"Empty", "", kBadPath},
    {"Root", "/", kBadPath},
    {"Container", "/values", kBadPath},
    {"ListWithoutKeys", "/gauge", kBadPath},
    {"StepBelowListWithoutKeys", "/gauge/reading", kBadPath},
    {"LeafList", "/values/word", kBadPath},
    {"KeysOnContainer", "/values{1}/text", kBadPath},
    {"KeysOnLeaf", "/values/text{1}", kBadPath},
    {"KeysOnLeafList", "/values/word{a}", kBadPath},
    {"Position", "/gauge[1]/reading", kBadPath},
    {"ChoiceIsNoStep", "/transport/tcp-port", kBadPath},
    {"CaseNodeIsThere", "/tcp-port", kNoExists},
};
INSTANTIATE_TEST_SUITE_P(Steps, PathText, testing::ValuesIn(kStepCases), RowName<PathCase>);

const PathCase kKeyCases[] = {
    {"TopLevelList", "/gauge{7}/reading", "-7"},
    {"KeyLeaf", "/gauge{7}/id", "7"},
    {"BlanksInsideTheBraces", "/gauge{ 7 }/reading", "-7"},
    {"LineEndInsideTheBraces", "/gauge{\n7\t}/reading", "-7"},
    {"AbsentEntry", "/gauge{8}/reading", kNoExists},
    {"NoKey", "/gauge{}/reading", kBadPath},
    {"TwoKeysForOne", "/gauge{7 7}/reading", kBadPath},
    {"NotANumber", "/gauge{x}/reading", kBadPath},
    {"NumberTooLarge", "/gauge{4294967296}/reading", kBadPath},
    {"NegativeForUnsigned", "/gauge{-7}/reading", kBadPath},
    {"QuotedNumber", "/gauge{\"7\"}/reading", "-7"},
    {"LeadingZerosAreDecimal", "/gauge{010}/reading", "-10"},
    {"HexadecimalNumber", "/gauge{0x7}/reading", kBadPath},
    {"FractionForInteger", "/gauge{7.0}/reading", kBadPath},
    {"BraceMissing", "/gauge{7/reading", kBadPath},
    {"BraceDoubled", "/gauge{7}}/reading", kBadPath},
    {"TextBehindBrace", "/gauge{7}x/reading", kBadPath},
    {"TrailingSlashBehindKeys", "/gauge{7}/", kBadPath},
    {"EntryIsNoLeaf", "/gauge{7}", kBadPath},
    {"PlainText", "/room/shelf{plain}/material", "plain"},
    {"PrefixOnList", "/sample:room/sample:shelf{plain}/sample:material", "plain"},
    {"EmptyText", "/room/shelf{}/material", "empty"},
    {"EmptyTextQuoted", "/room/shelf{\"\"}/material", "empty"},
    {"BlankInText", "/room/shelf{a b}/material", "blank"},
    {"BlankInQuotes", "/room/shelf{\"a b\"}/material", "blank"},
    {"BraceInText", "/room/shelf{a}b}/material", "brace"},
    {"BraceInQuotes", "/room/shelf{\"a}b\"}/material", "brace"},
    {"BraceAndSlashInQuotes", "/room/shelf{\"a}/b\"}/material", "brace and slash"},
    {"BraceAndSlashUnquotedEndTheKey", "/room/shelf{a}/b}/material", kBadPath},
    {"SlashInText", "/room/shelf{a/b}/material", "slash"},
    {"ColonInText", "/room/shelf{a:b}/material", "colon"},
    {"ApostropheInText", "/room/shelf{it's}/material", "apostrophe"},
    {"QuoteInText", "/room/shelf{19\"rack}/material", "quote"},
    {"QuoteEscaped", "/room/shelf{\"19\\\"rack\"}/material", "quote"},
    {"QuoteAlone", "/room/shelf{\"}/material", "quote alone"},
    {"QuoteAloneEscaped", "/room/shelf{\"\\\"\"}/material", "quote alone"},
    {"BackslashInText", "/room/shelf{a\\b}/material", "backslash"},
    {"BackslashEscaped", "/room/shelf{\"a\\\\b\"}/material", "backslash"},
    {"PercentInText", "/room/shelf{100%}/material", "percent"},
    {"ConversionInText", "/room/shelf{%s}/material", "string conversion"},
    {"UmlautInText", "/room/shelf{b\303\244r}/material", "umlaut"},
    {"BlanksAtTheEndsDoNotCount", "/room/shelf{  x }/material", kNoExists},
    {"BlanksAtTheEndsInQuotes", "/room/shelf{\"  x \"}/material", "blanks at both ends"},
    {"AbsentText", "/room/shelf{nobody}/material", kNoExists},
};
INSTANTIATE_TEST_SUITE_P(Keys, PathText, testing::ValuesIn(kKeyCases), RowName<PathCase>);

const PathCase kSeveralKeyCases[] = {
    {"KeyStatementOrder", "/keyed/by-several{5 t high}/v", "three keys"},
    {"ManyBlanks", "/keyed/by-several{  5   t  high  }/v", "three keys"},
    {"Quoted", "/keyed/by-several{\"5\" \"t\" \"high\"}/v", "three keys"},
    {"LeafOrder", "/keyed/by-several{t high 5}/v", kBadPath},
    {"TooFew", "/keyed/by-several{5 t}/v", kBadPath},
    {"TooMany", "/keyed/by-several{5 t high x}/v", kBadPath},
    {"None", "/keyed/by-several{}/v", kBadPath},
    {"EnumByNumber", "/keyed/by-several{5 t 10}/v", kBadPath},
    {"Absent", "/keyed/by-several{5 t low}/v", kNoExists},
    {"NestedList", "/room/shelf{plain}/slot{1 x}/item", "1x"},
    {"NestedBelowAbsentEntry", "/room/shelf{nobody}/slot{1 x}/item", kNoExists},
    {"NestedBadKeyBelowAbsentEntry", "/room/shelf{nobody}/slot{x 1}/item", kBadPath},
    {"BlankUnquotedSplits", "/room/shelf{plain}/slot{1 a b}/item", kBadPath},
    {"BlankQuoted", "/room/shelf{plain}/slot{1 \"a b\"}/item", "blank"},
    {"BraceAndSlashQuoted", "/room/shelf{plain}/slot{1 \"a}/b\"}/item", "brace"},
    {"QuoteInsideUnquoted", "/room/shelf{plain}/slot{1 19\"rack}/item", "quote"},
    {"EmptyQuoted", "/room/shelf{plain}/slot{1 \"\"}/item", "empty"},
    {"EmptyUnquotedIsMissing", "/room/shelf{plain}/slot{1 }/item", kBadPath},
};
INSTANTIATE_TEST_SUITE_P(SeveralKeys, PathText, testing::ValuesIn(kSeveralKeyCases),
                         RowName<PathCase>);

const PathCase kTypeCases[] = {
    {"Int8", "/keyed/by-int8{-5}/v", "number"},
    {"Int8TooSmall", "/keyed/by-int8{-129}/v", kBadPath},
    {"Uint64", "/keyed/by-uint64{18446744073709551615}/v", "largest"},
    {"Uint64TooLarge", "/keyed/by-uint64{18446744073709551616}/v", kBadPath},
    {"InRange", "/keyed/by-percent{9}/v", "nine"},
    {"BetweenRanges", "/keyed/by-percent{10}/v", kBadPath},
    {"InSecondRange", "/keyed/by-percent{20}/v", "twenty"},
    {"AboveRange", "/keyed/by-percent{101}/v", kBadPath},
    {"Boolean", "/keyed/by-boolean{true}/v", "yes"},
    {"BooleanNumber", "/keyed/by-boolean{1}/v", kBadPath},
    {"EnumByName", "/keyed/by-enum{low}/v", "label"},
    {"EnumByNumber", "/keyed/by-enum{1}/v", kBadPath},
    {"BinaryInBase64", "/keyed/by-binary{CgD/}/v", "base64"},
    {"BinaryEmpty", "/keyed/by-binary{}/v", "no bytes"},
    {"BinaryNotBase64", "/keyed/by-binary{!}/v", kBadPath},
    {"Octets", "/keyed/by-octets{0a:00:ff}/v", "octets"},
    {"OctetsInUpperCase", "/keyed/by-octets{0A:00:FF}/v", "octets"},
    {"OctetsEmpty", "/keyed/by-octets{}/v", "no octets"},
    {"OctetsWithoutColons", "/keyed/by-octets{0a00ff}/v", kBadPath},
    {"Ipv4", "/keyed/by-ipv4{192.0.2.1}/v", "v4"},
    {"Ipv4TooManyParts", "/keyed/by-ipv4{192.0.2.1.1}/v", kBadPath},
    {"Ipv6", "/keyed/by-ipv6{2001:db8::1}/v", "v6"},
    {"Ipv6AnyLegalText", "/keyed/by-ipv6{2001:0DB8:0:0::0001}/v", "v6"},
    {"Ipv4Prefix", "/keyed/by-ipv4-prefix{10.0.0.0/8}/v", "v4 prefix"},
    {"Ipv4PrefixWithHostBits", "/keyed/by-ipv4-prefix{10.1.2.3/8}/v", "v4 prefix"},
    {"Ipv4AndLength", "/keyed/by-ipv4-plen{172.16.1.2/16}/v", "v4 length"},
    {"Ipv4AndLengthHostBitsCount", "/keyed/by-ipv4-plen{172.16.1.3/16}/v", kNoExists},
    {"Ipv4AndLengthTooLong", "/keyed/by-ipv4-plen{172.16.1.2/33}/v", kBadPath},
    {"Ipv4WithoutLength", "/keyed/by-ipv4-plen{172.16.1.2}/v", kBadPath},
    {"Ipv6AndLength", "/keyed/by-ipv6-plen{2001:db8::1/64}/v", "v6 length"},
    {"Ipv6AndLengthAnyLegalText", "/keyed/by-ipv6-plen{2001:DB8:0::1/64}/v", "v6 length"},
    {"Ipv6AndLengthTooLong", "/keyed/by-ipv6-plen{2001:db8::1/129}/v", kBadPath},
    {"Decimal", "/keyed/by-ratio{1.500}/v", "decimal"},
    {"Identity", "/keyed/by-identity{store-sample:red}/v", "identity"},
    {"UnionNumber", "/keyed/by-union{5}/v", "five"},
    {"UnionWord", "/keyed/by-union{word}/v", "word"},
    {"Reference", "/keyed/by-reference{7}/v", "refers"},
    {"ReferenceToNothing", "/keyed/by-reference{8}/v", kNoExists},
    {"ReferenceOfWrongType", "/keyed/by-reference{x}/v", kBadPath},
};
INSTANTIATE_TEST_SUITE_P(KeyTypes, PathText, testing::ValuesIn(kTypeCases), RowName<PathCase>);

// A path that has its first steps in common with the one before it is not read anew from the front.
class PathAfterAnother : public StoreTest {};

TEST_F(PathAfterAnother, LeadsWhereItAlwaysLeads) {
  Open(kConfiguration);
  std::vector<PathCase> cases;
  cases.insert(cases.end(), std::begin(kStepCases), std::end(kStepCases));
  cases.insert(cases.end(), std::begin(kKeyCases), std::end(kKeyCases));
  cases.insert(cases.end(), std::begin(kSeveralKeyCases), std::end(kSeveralKeyCases));
  cases.insert(cases.end(), std::begin(kTypeCases), std::end(kTypeCases));
  for (const PathCase& before : cases) {
    for (const PathCase& path : cases) {
      Get(before.path);
      ASSERT_EQ(Get(path.path), path.result) << path.path << " after " << before.path;
    }
  }
}

// Every text that begins another one, so that the second continues the first at any character.
TEST_F(PathAfterAnother, LeadsWhereItLeadsAloneWhereverTheyPart) {
  const std::string path = R"(/room/shelf{plain}/slot{1 "a}/b"}/item)";
  std::vector<std::string> alone;
  for (size_t size = 0; size <= path.size(); ++size) {
    Open(kConfiguration);  // a fresh one, which remembers nothing
    alone.push_back(Get(path.substr(0, size).c_str()));
  }
  ASSERT_EQ(alone.back(), "brace");
  Open(kConfiguration);
  for (size_t before = 0; before <= path.size(); ++before) {
    for (size_t size = 0; size <= path.size(); ++size) {
      Get(path.substr(0, before).c_str());
      EXPECT_EQ(Get(path.substr(0, size).c_str()), alone[size]) << before << ", then " << size;
    }
  }
}

// --- Formats
// --------------------------------------------------------------------------------------------------------

class PathFormat : public StoreTest {
 protected:
  PathFormat() {
    Open(kConfiguration);
    confd::WatchCalls([this](const confd::Call& call) {
      path_ = call.path;
      return confd::CallAction::kProceed;
    });
  }

  template <typename... Args>
  std::string Formatted(const char* format, Args... args) {
    const int result = maapi_exists(sock_, thandle_, format, args...);
    if (result == CONFD_ERR) return "error " + std::to_string(confd_errno);
    return path_;
  }

  std::string path_;
};

confd_value_t Buffer(const char* text) {
  confd_value_t value{};
  CONFD_SET_CBUF(&value, text, static_cast<unsigned>(std::strlen(text)));
  return value;
}

TEST_F(PathFormat, InsertsNumbers) {
  EXPECT_EQ(Formatted("/gauge{%d}", 7), "/gauge{7}");
  EXPECT_EQ(Formatted("/keyed/by-int8{%d}", -128), "/keyed/by-int8{-128}");
  EXPECT_EQ(Formatted("/gauge{%u}", 4294967295u), "/gauge{4294967295}");
}

TEST_F(PathFormat, InsertsTextAsItIs) {
  EXPECT_EQ(Formatted("%s", "/gauge{7}/reading"), "/gauge{7}/reading");
  EXPECT_EQ(Formatted("/%s/reading", "gauge{7}"), "/gauge{7}/reading");
  EXPECT_EQ(Formatted("/keyed/by-several{ %u %s %s }", 5u, "t", "high"),
            "/keyed/by-several{ 5 t high }");
  EXPECT_EQ(Formatted("/values%s", ""), "/values");
  EXPECT_EQ(Formatted("%s", "/room/shelf{%n}"), "/room/shelf{%n}") << "arguments are no formats";
}

TEST_F(PathFormat, InsertsAddresses) {
  in_addr v4;
  inet_pton(AF_INET, "192.0.2.1", &v4);
  in6_addr v6;
  inet_pton(AF_INET6, "2001:db8::1", &v6);
  EXPECT_EQ(Formatted("/keyed/by-ipv4{%ip4}/v", &v4), "/keyed/by-ipv4{192.0.2.1}/v");
  EXPECT_EQ(Formatted("/keyed/by-ipv6{%ip6}/v", &v6), "/keyed/by-ipv6{2001:db8::1}/v");
  EXPECT_EQ(Formatted("/keyed/by-ipv4-plen{%ip4/%d}", &v4, 24),
            "/keyed/by-ipv4-plen{192.0.2.1/24}");
}

TEST_F(PathFormat, InsertsValues) {
  confd_value_t tag{};
  CONFD_SET_XMLTAG(&tag, confd_str2hash("gauge"), 0);
  confd_value_t number{};
  CONFD_SET_UINT32(&number, 7);
  EXPECT_EQ(Formatted("/%x{%x}/reading", &tag, &number), "/gauge{7}/reading");
  const confd_value_t blank = Buffer("a b");
  EXPECT_EQ(Formatted("/room/shelf{%x}", &blank), "/room/shelf{\"a b\"}");
  const confd_value_t empty = Buffer("");
  EXPECT_EQ(Formatted("/room/shelf{%x}", &empty), "/room/shelf{\"\"}");
}

TEST_F(PathFormat, InsertsSeveralKeys) {
  confd_value_t keys[2];
  CONFD_SET_UINT8(&keys[0], 1);
  keys[1] = Buffer("a}/b");
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/room/shelf{plain}/slot{%*x}", 2, keys), 1);
  EXPECT_EQ(path_, "/room/shelf{plain}/slot{1 \"a}/b\"}");
  EXPECT_EQ(Formatted("/room/shelf{plain}/slot{%*x}", 1, keys), "error 8") << "one key too few";
  EXPECT_EQ(Formatted("/gauge{%*x}", 0, keys), "error 8") << "no key at all";
}

TEST_F(PathFormat, InsertsKeypaths) {
  const lyd_node* slot = Find("/store-sample:room/shelf[name='plain']/slot[row='1'][column='x']");
  ASSERT_NE(slot, nullptr);
  confd::Keypath keypath(*tests::SampleSchema(), slot);
  EXPECT_EQ(Formatted("%h/item", keypath.get()), "/room/shelf{plain}/slot{1 x}/item");
  EXPECT_EQ(Formatted("%*h/material", 3, keypath.get()), "/room/shelf{plain}/material");
  EXPECT_EQ(Formatted("%*h", 1, keypath.get()), "/room");
}

TEST_F(PathFormat, PercentTwiceIsOnePercent) {
  EXPECT_EQ(Formatted("/room/shelf{100%%}/material"), "/room/shelf{100%}/material");
}

struct FormatCase {
  const char* name;
  const char* format;
};

std::ostream& operator<<(std::ostream& out, const FormatCase& c) { return out << c.format; }

class BadFormat : public StoreTest, public testing::WithParamInterface<FormatCase> {};

TEST_P(BadFormat, IsABadPath) {
  Open(kConfiguration);
  EXPECT_EQ(maapi_exists(sock_, thandle_, GetParam().format, 0, 0, 0), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

const FormatCase kBadFormats[] = {
    {"UnknownConversion", "/gauge{%f}"},
    {"Character", "/gauge{%c}"},
    {"Width", "/gauge{%5d}"},
    {"Long", "/gauge{%ld}"},
    {"WriteConversion", "/gauge{%n}"},
    {"PercentAtTheEnd", "/gauge%"},
    {"AddressOfNoFamily", "/gauge{%ip}"},
    {"AddressOfUnknownFamily", "/gauge{%ip5}"},
    {"CountedNumber", "/gauge{%*d}"},
    {"CountAlone", "/gauge{%*"},
};
INSTANTIATE_TEST_SUITE_P(Formats, BadFormat, testing::ValuesIn(kBadFormats), RowName<FormatCase>);

// A path that was assembled and is then passed as the format itself. Nobody passes arguments for
// what looks like a conversion in one of its keys, so none may be read.
struct AssembledCase {
  const char* name;
  const char* key;
};

std::ostream& operator<<(std::ostream& out, const AssembledCase& c) { return out << c.key; }

class AssembledPath : public StoreTest, public testing::WithParamInterface<AssembledCase> {
 protected:
  // A configuration with one shelf, and one with that shelf and all the keys of the table.
  void OpenWithoutKeys() { Open(R"({"store-sample:room":{"shelf":[{"name":"plain"}]}})"); }
  void OpenWithKeys();

  int ExistsAsFormat(const std::string& path) const {
    return maapi_exists(sock_, thandle_, path.c_str());
  }
};

const AssembledCase kConversions[] = {
    {"String", "%s"},
    {"StringInText", "a%sb"},
    {"Number", "%d"},
    {"Unsigned", "%u"},
    {"Value", "%x"},
    {"Values", "%*x"},
    {"Keypath", "%h"},
    {"KeypathInPart", "%*h"},
    {"Ipv4", "%ip4"},
    {"Ipv6", "%ip6"},
    {"Write", "%n"},
    {"Percent", "%"},
    {"PercentBehindText", "100%"},
    {"PercentThreeTimes", "%%%"},
    {"ConversionBehindPercentTwice", "%%%s"},
};

void AssembledPath::OpenWithKeys() {
  std::string shelves = R"({"name":"plain"})";
  for (const AssembledCase& row : kConversions) {
    shelves += std::string(R"(,{"name":")") + row.key + "\"}";
  }
  Open(R"({"store-sample:room":{"shelf":[)" + shelves + "]}}");
}

TEST_P(AssembledPath, WithAConversionInAKeyIsABadPath) {
  const std::string path = std::string("/room/shelf{") + GetParam().key + "}/height";
  for (const bool with_keys : {false, true}) {
    with_keys ? OpenWithKeys() : OpenWithoutKeys();
    EXPECT_EQ(ExistsAsFormat(path), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    uint8_t height = 7;
    EXPECT_EQ(maapi_get_u_int8_elem(sock_, thandle_, &height, path.c_str()), CONFD_ERR);
    EXPECT_EQ(height, 7);
    const int cdb = store_->OpenSocket();
    ASSERT_EQ(cdb_start_session(cdb, CDB_RUNNING), CONFD_OK);
    EXPECT_EQ(cdb_exists(cdb, path.c_str()), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    EXPECT_EQ(cdb_end_session(cdb), CONFD_OK);
  }
}

// No key changes what a format with arguments reads.
TEST_P(AssembledPath, KeyWithAConversionIsReadWithAFormat) {
  OpenWithKeys();
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/room/shelf{%s}/height", "plain"), 1);
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/room/shelf{%s}/height", GetParam().key), 1);
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/room/shelf{%s}/height", "absent"), 0);
  EXPECT_EQ(maapi_exists(sock_, thandle_, "%s{%s}/height", "/room/shelf", GetParam().key), 1);
}

INSTANTIATE_TEST_SUITE_P(Keys, AssembledPath, testing::ValuesIn(kConversions),
                         RowName<AssembledCase>);

// As the real library formats it: the key "%%" is looked up as "%".
TEST_F(AssembledPath, PercentTwiceIsOnePercent) {
  OpenWithoutKeys();
  EXPECT_EQ(ExistsAsFormat("/room/shelf{%%}/height"), 0);
  Open(R"({"store-sample:room":{"shelf":[{"name":"%%"}]}})");
  EXPECT_EQ(ExistsAsFormat("/room/shelf{%%}/height"), 0);
  Open(R"({"store-sample:room":{"shelf":[{"name":"%"}]}})");
  EXPECT_EQ(ExistsAsFormat("/room/shelf{%%}/height"), 1);
}

// Where a format is kept tells whether a program wrote it or made it.
TEST_F(AssembledPath, OnlyConstantsOfTheProgramTakeArguments) {
  Open(kConfiguration);
  static constexpr char kConstant[] = "/room/shelf{%s}/material";
  static char variable[] = "/room/shelf{%s}/material";
  char local[] = "/room/shelf{%s}/material";
  const std::string heap = "/room/shelf{%s}/material";
  const std::string small = "/room{%s}";
  EXPECT_EQ(maapi_exists(sock_, thandle_, kConstant, "plain"), 1);
  for (const char* format : {static_cast<const char*>(variable), static_cast<const char*>(local),
                             heap.c_str(), small.c_str()}) {
    EXPECT_EQ(maapi_exists(sock_, thandle_, format, "plain"), CONFD_ERR) << format;
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  }
  const std::string begins_with_conversion = "%s/shelf{%s}/material";
  EXPECT_EQ(maapi_exists(sock_, thandle_, begins_with_conversion.c_str(), "/room", "plain"), 1)
      << "no path begins like this";
}

}  // namespace
