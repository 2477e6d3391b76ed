#include "value.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>

#include "confd_lib.h"
#include "support/store_fixture.h"
#include "value_text.h"

namespace {

using tests::RowName;
using tests::StoreTest;

// --- Values of every type
// -------------------------------------------------------------------------------------------

struct TypeCase {
  const char* name;
  const char* leaf;
  const char* json;
  confd_vtype type;
  const char* text;  // as confd_pp_value prints it
};

std::ostream& operator<<(std::ostream& out, const TypeCase& c) {
  return out << c.leaf << " = " << c.json;
}

const TypeCase kTypeCases[] = {
    {"Int8Smallest", "int8", "-128", C_INT8, "-128"},
    {"Int8Largest", "int8", "127", C_INT8, "127"},
    {"Int16Smallest", "int16", "-32768", C_INT16, "-32768"},
    {"Int32Smallest", "int32", "-2147483648", C_INT32, "-2147483648"},
    {"Int32Largest", "int32", "2147483647", C_INT32, "2147483647"},
    {"Int64Smallest", "int64", "\"-9223372036854775808\"", C_INT64, "-9223372036854775808"},
    {"Uint8Largest", "uint8", "255", C_UINT8, "255"},
    {"Uint16Largest", "uint16", "65535", C_UINT16, "65535"},
    {"Uint32Largest", "uint32", "4294967295", C_UINT32, "4294967295"},
    {"Uint64Largest", "uint64", "\"18446744073709551615\"", C_UINT64, "18446744073709551615"},
    {"Zero", "uint32", "0", C_UINT32, "0"},
    {"BooleanTrue", "boolean", "true", C_BOOL, "true"},
    {"BooleanFalse", "boolean", "false", C_BOOL, "false"},
    {"EnumPrintsItsNumber", "level", "\"high\"", C_ENUM_VALUE, "enum<10>"},
    {"EnumNegative", "level", "\"below\"", C_ENUM_VALUE, "enum<-3>"},
    {"BinaryPrintsPlainHex", "bytes", "\"CgD/\"", C_BINARY, "0a00ff"},
    {"BinaryEmpty", "bytes", "\"\"", C_BINARY, ""},
    {"String", "text", "\"a b}\"", C_BUF, "a b}"},
    {"StringEmpty", "text", "\"\"", C_BUF, ""},
    {"StringNotAscii", "text", "\"b\\u00e4r\"", C_BUF, "b\303\244r"},
    {"StringWithPercent", "text", "\"%s\"", C_BUF, "%s"},
    {"Decimal", "ratio", "\"2.5\"", C_DECIMAL64, "2.5"},
    {"DecimalWhole", "ratio", "\"-3\"", C_DECIMAL64, "-3.0"},
    {"DecimalBelowOne", "ratio", "\"-0.007\"", C_DECIMAL64, "-0.007"},
    {"Identity", "color", "\"red\"", C_IDENTITYREF, "red"},
    {"EmptyIsItsOwnTag", "marker", "[null]", C_XMLTAG, "marker"},
    {"Ipv4", "ipv4", "\"192.0.2.1\"", C_IPV4, "192.0.2.1"},
    {"Ipv4ZoneIsDropped", "ipv4", "\"192.0.2.1%eth0\"", C_IPV4, "192.0.2.1"},
    {"Ipv6", "ipv6", "\"2001:DB8:0:0::1\"", C_IPV6, "2001:db8::1"},
    {"Ipv6ZoneIsDropped", "ipv6", "\"fe80::1%eth0\"", C_IPV6, "fe80::1"},
    {"Ipv4WithoutZone", "ipv4-bare", "\"255.255.255.255\"", C_IPV4, "255.255.255.255"},
    {"Ipv6WithoutZone", "ipv6-bare", "\"::\"", C_IPV6, "::"},
    {"Ipv4PrefixLosesHostBits", "ipv4-prefix", "\"10.1.2.3/8\"", C_IPV4PREFIX, "10.0.0.0/8"},
    {"Ipv6PrefixLosesHostBits", "ipv6-prefix", "\"2001:db8::1/32\"", C_IPV6PREFIX, "2001:db8::/32"},
    {"Ipv4AndLengthKeepsHostBits", "ipv4-plen", "\"10.1.2.3/8\"", C_IPV4_AND_PLEN, "10.1.2.3/8"},
    {"Ipv4AndLengthZero", "ipv4-plen", "\"0.0.0.0/0\"", C_IPV4_AND_PLEN, "0.0.0.0/0"},
    {"Ipv4AndLengthFull", "ipv4-plen", "\"10.1.2.3/32\"", C_IPV4_AND_PLEN, "10.1.2.3/32"},
    {"Ipv6AndLengthKeepsHostBits", "ipv6-plen", "\"2001:DB8:0::1/64\"", C_IPV6_AND_PLEN,
     "2001:db8::1/64"},
    {"Ipv6AndLengthFull", "ipv6-plen", "\"::1/128\"", C_IPV6_AND_PLEN, "::1/128"},
    {"HexListIsBinary", "octets", "\"0A:ff:00\"", C_BINARY, "0aff00"},
    {"HexListEmpty", "octets", "\"\"", C_BINARY, ""},
    {"UnionNumber", "number-or-word", "7", C_INT32, "7"},
    {"UnionWord", "number-or-word", "\"seven\"", C_BUF, "seven"},
    {"UnionIpv4", "any-plen", "\"10.0.0.1/24\"", C_IPV4_AND_PLEN, "10.0.0.1/24"},
    {"UnionIpv6", "any-plen", "\"2001:db8::1/64\"", C_IPV6_AND_PLEN, "2001:db8::1/64"},
    {"UnionEmpty", "nothing-or-number", "[null]", C_EMPTY, ""},
};

class LeafOfType : public StoreTest, public testing::WithParamInterface<TypeCase> {};

TEST_P(LeafOfType, HasConfdTypeAndText) {
  const TypeCase& c = GetParam();
  Open(std::string(R"({"store-sample:values":{")") + c.leaf + "\":" + c.json + "}}");
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(sock_, thandle_, &value, "/values/%s", c.leaf), CONFD_OK)
      << confd_lasterr();
  EXPECT_EQ(value.type, c.type);
  EXPECT_EQ(Print(value), c.text);
  EXPECT_GT(confd_val_eq(&value, &value), 0);
  confd_value_t* copy = confd_value_dup(&value);
  confd_free_value(&value);
  EXPECT_EQ(Print(*copy), c.text) << "the copy has memory of its own";
  confd_free_dup_value(copy);
}

INSTANTIATE_TEST_SUITE_P(Types, LeafOfType, testing::ValuesIn(kTypeCases), RowName<TypeCase>);

class LeafOfUncarriedType : public StoreTest, public testing::WithParamInterface<TypeCase> {};

TEST_P(LeafOfUncarriedType, IsNotImplementedButExists) {
  Open(std::string(R"({"store-sample:values":{")") + GetParam().leaf + "\":" + GetParam().json +
       "}}");
  const std::string path = std::string("/values/") + GetParam().leaf;
  EXPECT_EQ(Exists(path.c_str()), 1);
  EXPECT_EQ(Get(path.c_str()), "error 51");
}

const TypeCase kUncarriedCases[] = {
    {"Bits", "options", "\"one two\"", C_BIT32, ""},
    {"DateAndTime", "time", "\"2024-01-01T00:00:00Z\"", C_DATETIME, ""},
};
INSTANTIATE_TEST_SUITE_P(Types, LeafOfUncarriedType, testing::ValuesIn(kUncarriedCases),
                         RowName<TypeCase>);

// --- Memory
// ---------------------------------------------------------------------------------------------------------

class ReceivedBytes : public StoreTest, public testing::WithParamInterface<TypeCase> {};

TEST_P(ReceivedBytes, AreFollowedByNul) {
  const TypeCase& c = GetParam();
  Open(std::string(R"({"store-sample:values":{")") + c.leaf + "\":" + c.json + "}}");
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(sock_, thandle_, &value, "/values/%s", c.leaf), CONFD_OK);
  ASSERT_NE(value.val.buf.ptr, nullptr);
  EXPECT_EQ(value.val.buf.size, std::strlen(c.text));
  EXPECT_EQ(value.val.buf.ptr[value.val.buf.size], 0);
  confd_free_value(&value);
}

const TypeCase kByteCases[] = {
    {"String", "text", "\"abc\"", C_BUF, "abc"},
    {"StringEmpty", "text", "\"\"", C_BUF, ""},
    {"Binary", "bytes", "\"YWJj\"", C_BINARY, "abc"},
    {"BinaryEmpty", "bytes", "\"\"", C_BINARY, ""},
    {"HexList", "octets", "\"61:62\"", C_BINARY, "ab"},
    {"HexListEmpty", "octets", "\"\"", C_BINARY, ""},
};
INSTANTIATE_TEST_SUITE_P(Types, ReceivedBytes, testing::ValuesIn(kByteCases), RowName<TypeCase>);

class Values : public StoreTest {};

TEST_F(Values, AreFreedOnceHoweverOftenAsked) {
  Open(R"({"store-sample:values":{"text":"abc"}})");
  const int64_t before = confd::OutstandingValues();
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(sock_, thandle_, &value, "/values/text"), CONFD_OK);
  EXPECT_EQ(confd::OutstandingValues(), before + 1);
  confd_free_value(&value);
  EXPECT_EQ(value.type, C_NOEXISTS);
  EXPECT_EQ(confd::OutstandingValues(), before);
  confd_free_value(&value);
  EXPECT_EQ(value.type, C_NOEXISTS);
  EXPECT_EQ(confd::OutstandingValues(), before);
}

TEST_F(Values, OfFixedSizeOwnNothing) {
  confd_value_t value;
  CONFD_SET_INT32(&value, 7);
  confd_free_value(&value);
  EXPECT_EQ(CONFD_GET_INT32(&value), 7);
  confd_value_t text;
  CONFD_SET_STR(&text, "not on the heap");
  confd_free_value(&text);
  EXPECT_EQ(text.type, C_STR);
}

TEST_F(Values, CopyTextsOfTheApplication) {
  char text[] = "word";
  confd_value_t value;
  CONFD_SET_STR(&value, text);
  confd_value_t copy;
  ASSERT_EQ(confd_value_dup_to(&value, &copy), &copy);
  text[0] = 'W';
  EXPECT_EQ(copy.type, C_STR);
  EXPECT_STREQ(copy.val.c_s, "word");
  confd_free_dup_to_value(&copy);
  EXPECT_EQ(copy.type, C_NOEXISTS);
}

TEST_F(Values, OfListsAreNotCopied) {
  confd_value_t value{};
  value.type = C_LIST;
  confd_value_t copy;
  EXPECT_EQ(confd_value_dup_to(&value, &copy), nullptr);
  EXPECT_EQ(confd_value_dup(&value), nullptr);
}

// --- Equality
// -------------------------------------------------------------------------------------------------------

confd_value_t Int32(int32_t number) {
  confd_value_t value{};
  CONFD_SET_INT32(&value, number);
  return value;
}
confd_value_t Uint32(uint32_t number) {
  confd_value_t value{};
  CONFD_SET_UINT32(&value, number);
  return value;
}
confd_value_t Text(const char* text) {
  confd_value_t value{};
  CONFD_SET_STR(&value, text);
  return value;
}
confd_value_t Buffer(const char* text) {
  confd_value_t value{};
  CONFD_SET_CBUF(&value, text, static_cast<unsigned>(std::strlen(text)));
  return value;
}
confd_value_t Bytes(const char* text) {
  confd_value_t value = Buffer(text);
  value.type = C_BINARY;
  return value;
}
confd_value_t Tag(uint32_t tag, uint32_t ns) {
  confd_value_t value{};
  CONFD_SET_XMLTAG(&value, tag, ns);
  return value;
}
confd_value_t Identity(uint32_t ns, uint32_t id) {
  confd_value_t value{};
  value.type = C_IDENTITYREF;
  value.val.idref = {ns, id};
  return value;
}
confd_value_t Bits(uint32_t bits) {
  confd_value_t value{};
  value.type = C_BIT32;
  value.val.b32 = bits;
  return value;
}
confd_value_t Bare(confd_vtype type) {
  confd_value_t value{};
  value.type = type;
  return value;
}
confd_value_t AndLength(const char* address, uint8_t length) {
  confd_value_t value{};
  value.type = C_IPV4_AND_PLEN;
  inet_pton(AF_INET, address, &value.val.ipv4prefix.ip);
  value.val.ipv4prefix.len = length;
  return value;
}

struct EqualCase {
  const char* name;
  confd_value_t a;
  confd_value_t b;
  bool equal;
};

std::ostream& operator<<(std::ostream& out, const EqualCase& c) { return out << c.name; }

const EqualCase kEqualCases[] = {
    {"SameNumber", Int32(7), Int32(7), true},
    {"OtherNumber", Int32(7), Int32(8), false},
    {"SameNumberOtherType", Int32(7), Uint32(7), false},
    {"SameText", Buffer("ab"), Buffer("ab"), true},
    {"PrefixOfText", Buffer("ab"), Buffer("abc"), false},
    {"BothTextTypes", Text("ab"), Buffer("ab"), true},
    {"EmptyTexts", Text(""), Buffer(""), true},
    {"TextAndBytes", Buffer("ab"), Bytes("ab"), false},
    {"EmptyBytes", Bytes(""), Bytes(""), true},
    {"OtherBytes", Bytes("a"), Bytes("b"), false},
    {"SameTag", Tag(1, 2), Tag(1, 2), true},
    {"TagOfOtherNamespace", Tag(1, 2), Tag(1, 3), false},
    {"SameIdentity", Identity(1, 2), Identity(1, 2), true},
    {"IdentityOfOtherNamespace", Identity(1, 2), Identity(3, 2), false},
    {"OtherBits", Bits(1), Bits(2), false},
    {"SameAddressOtherLength", AndLength("10.0.0.1", 24), AndLength("10.0.0.1", 16), false},
    {"SameAddressAndLength", AndLength("10.0.0.1", 24), AndLength("10.0.0.1", 24), true},
    {"NoValues", Bare(C_NOEXISTS), Bare(C_NOEXISTS), true},
    {"EmptyValues", Bare(C_EMPTY), Bare(C_EMPTY), true},
    {"NoValueAndEmpty", Bare(C_NOEXISTS), Bare(C_EMPTY), false},
};

class Equality : public testing::TestWithParam<EqualCase> {};

TEST_P(Equality, IsPositiveForEqualValues) {
  EXPECT_EQ(confd_val_eq(&GetParam().a, &GetParam().b) > 0, GetParam().equal);
  EXPECT_EQ(confd_val_eq(&GetParam().b, &GetParam().a) > 0, GetParam().equal);
  if (!GetParam().equal) {
    EXPECT_EQ(confd_val_eq(&GetParam().a, &GetParam().b), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Pairs, Equality, testing::ValuesIn(kEqualCases), RowName<EqualCase>);

// --- Texts of values that no leaf of the data model gives
// -----------------------------------------------------------

struct PrintCase {
  const char* name;
  confd_value_t value;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const PrintCase& c) { return out << c.name; }

confd_value_t Decimal(int64_t number, uint8_t digits) {
  confd_value_t value{};
  value.type = C_DECIMAL64;
  value.val.d64 = {number, digits};
  return value;
}
confd_value_t HexString(const char* text) {
  confd_value_t value = Buffer(text);
  value.type = C_HEXSTR;
  return value;
}
confd_value_t Quad() {
  confd_value_t value{};
  value.type = C_DQUAD;
  const unsigned char quad[] = {1, 2, 3, 255};
  std::memcpy(value.val.dquad.quad, quad, sizeof(quad));
  return value;
}

const PrintCase kPrintCases[] = {
    {"ApplicationText", Text("a\"b"), "a\"b"},
    {"UnknownTag", Tag(1, 2), "tag<1>"},
    {"UnknownIdentity", Identity(1, 2), "idref<2>"},
    {"DecimalWithoutDigits", Decimal(5, 0), "invalid64<5>"},
    {"DecimalWithTooManyDigits", Decimal(-5, 19), "invalid64<-5>"},
    {"DecimalMostDigits", Decimal(5, 18), "0.000000000000000005"},
    {"DecimalSmallest", Decimal(INT64_MIN, 1), "-922337203685477580.8"},
    {"DecimalTrailingZeros", Decimal(12300, 4), "1.23"},
    {"HexStringHasColons", HexString("a\377"), "61:ff"},
    {"DottedQuad", Quad(), "1.2.3.255"},
    {"BitsInHex", Bits(0x1f), "bits<1f>"},
};

class PrintedValue : public testing::TestWithParam<PrintCase> {};

TEST_P(PrintedValue, HasText) {
  char text[64];
  const int length = confd_pp_value(text, sizeof(text), &GetParam().value);
  EXPECT_STREQ(text, GetParam().text);
  EXPECT_EQ(length, static_cast<int>(std::strlen(GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(Values, PrintedValue, testing::ValuesIn(kPrintCases), RowName<PrintCase>);

struct RoomCase {
  const char* name;
  int room;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const RoomCase& c) { return out << c.room << " bytes"; }

const RoomCase kRoomCases[] = {
    {"Plenty", 8, "12345"}, {"JustEnough", 6, "12345"}, {"OneShort", 5, "1234"},
    {"OnlyTheNul", 1, ""},  {"None", 0, "untouched"},   {"Negative", -1, "untouched"},
};

class PrintedInto : public testing::TestWithParam<RoomCase> {};

TEST_P(PrintedInto, IsCutAndFullLengthReturned) {
  char text[16] = "untouched";
  const confd_value_t value = Int32(12345);
  EXPECT_EQ(confd_pp_value(text, GetParam().room, &value), 5);
  EXPECT_STREQ(text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rooms, PrintedInto, testing::ValuesIn(kRoomCases), RowName<RoomCase>);

// --- The macros
// -----------------------------------------------------------------------------------------------------

TEST(TypeTestDeathTest, NamesTheTypeThatWasAskedFor) {
  const confd_value_t number = Int32(7);
  EXPECT_DEBUG_DEATH(static_cast<void>(CONFD_GET_XMLTAG(&number)),
                     R"(\(&number\)->type == C_XMLTAG)");
  EXPECT_DEBUG_DEATH(static_cast<void>(CONFD_GET_CBUFPTR(&number)),
                     R"(\(&number\)->type == C_BUF)");
}

TEST(HeaderNumbers, AreThoseOfThePublicManual) {
  EXPECT_EQ(C_NOEXISTS, 1);
  EXPECT_EQ(C_BUF, 5);
  EXPECT_EQ(C_UINT64, 13);
  EXPECT_EQ(C_IPV4, 15);
  EXPECT_EQ(C_TIME, 23);
  EXPECT_EQ(C_DURATION, 27);
  EXPECT_EQ(C_ENUM_VALUE, 28);
  EXPECT_EQ(C_BINARY, 39);
  EXPECT_EQ(C_IPV4_AND_PLEN, 48);
  EXPECT_EQ(C_MAXTYPE, 54);
  EXPECT_EQ(sizeof(confd_value_t), 40u);
  EXPECT_EQ(offsetof(confd_value_t, val), 8u);
  EXPECT_EQ(sizeof(confd_ipv4_prefix), 8u);
  EXPECT_EQ(sizeof(confd_ipv6_prefix), 20u);
  EXPECT_EQ(sizeof(confd_hkeypath_t), 7208u);
  EXPECT_EQ(MOP_CREATED, 1);
  EXPECT_EQ(MOP_MOVED_AFTER, 5);
  EXPECT_EQ(ITER_STOP, 1);
  EXPECT_EQ(ITER_CONTINUE, 3);
}

// --- Keys as texts
// --------------------------------------------------------------------------------------------------

struct KeyTextCase {
  const char* name;
  const char* text;
  const char* key;
};

std::ostream& operator<<(std::ostream& out, const KeyTextCase& c) { return out << c.text; }

const KeyTextCase kKeyTextCases[] = {
    {"Plain", "www", "www"},
    {"Empty", "", "\"\""},
    {"Blank", "a b", "\"a b\""},
    {"Brace", "a}b", "\"a}b\""},
    {"Quote", "a\"b", "\"a\\\"b\""},
    {"QuoteAndBackslash", "a\"\\", "\"a\\\"\\\\\""},
    {"BackslashAlone", "a\\b", "a\\b"},
    {"Slash", "a/b", "a/b"},
    {"Apostrophe", "it's", "it's"},
    {"Percent", "%n", "%n"},
};

class KeyText : public testing::TestWithParam<KeyTextCase> {};

TEST_P(KeyText, IsQuotedWhenNeeded) {
  EXPECT_EQ(confd::PrintKey(Buffer(GetParam().text)), GetParam().key);
}

INSTANTIATE_TEST_SUITE_P(Keys, KeyText, testing::ValuesIn(kKeyTextCases), RowName<KeyTextCase>);

TEST(KeyText, OfOctetsReadsBackAsHexList) { EXPECT_EQ(confd::PrintKey(Bytes("a\377")), "61:ff"); }

}  // namespace
