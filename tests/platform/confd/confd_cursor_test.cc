// Walks with maapi_init_cursor, maapi_get_next and maapi_destroy_cursor.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::StoreTest;

class CursorTest : public StoreTest {
 protected:
  /// Keys of all entries in the order of the walk: keys of an entry joined by blanks, entries by ";
  /// ".
  std::string Walk(const char* list) {
    maapi_cursor cursor;
    if (maapi_init_cursor(sock_, thandle_, &cursor, "%s", list) != CONFD_OK) {
      return "error " + std::to_string(confd_errno);
    }
    std::string walk;
    bool first = true;
    while (maapi_get_next(&cursor) == CONFD_OK && cursor.n != 0) {
      if (!first) walk += "; ";
      first = false;
      for (int i = 0; i < cursor.n; ++i) walk += (i > 0 ? " " : "") + Print(cursor.keys[i]);
    }
    EXPECT_EQ(cursor.n, 0);
    maapi_destroy_cursor(&cursor);
    return walk;
  }
};

struct OrderCase {
  const char* name;
  const char* list;
  const char* keys;  // JSON values in configuration order
  const char* walk;
};

std::ostream& operator<<(std::ostream& out, const OrderCase& c) { return out << c.list; }

class KeyOrder : public CursorTest, public testing::WithParamInterface<OrderCase> {};

TEST_P(KeyOrder, IsByTypeOfTheKey) {
  std::string entries;
  const std::string keys = GetParam().keys;
  for (size_t i = 0; i < keys.size();) {
    const size_t end = std::min(keys.find(' ', i), keys.size());
    entries += (entries.empty() ? "" : ",") + ("{\"k\":" + keys.substr(i, end - i) + "}");
    i = end + 1;
  }
  Open(std::string(R"({"store-sample:keyed":{")") + GetParam().list + "\":[" + entries + "]}}");
  EXPECT_EQ(Walk((std::string("/keyed/") + GetParam().list).c_str()), GetParam().walk);
}

const OrderCase kOrderCases[] = {
    {"Int8", "by-int8", "9 -128 0 127 -1", "-128; -1; 0; 9; 127"},
    {"Int32", "by-int32", "10 9 -2147483648", "-2147483648; 9; 10"},
    {"Int64", "by-int64", "\"10\" \"-9\" \"9\"", "-9; 9; 10"},
    {"Uint32", "by-uint32", "4294967295 10 9", "9; 10; 4294967295"},
    {"Uint64", "by-uint64", "\"18446744073709551615\" \"9\"", "9; 18446744073709551615"},
    {"StringBytewise", "by-string", "\"b\" \"B\" \"10\" \"9\" \"\\u00e4\"",
     "10; 9; B; b; \303\244"},
    {"StringShorterFirst", "by-string", "\"ab\" \"a\" \"\" \"a!\"", "; a; a!; ab"},
    {"Boolean", "by-boolean", "true false", "false; true"},
    {"EnumByNumber", "by-enum", "\"high\" \"low\" \"below\"", "enum<-3>; enum<1>; enum<10>"},
    {"BinaryBytewise", "by-binary", "\"gA==\" \"fw==\" \"fwA=\" \"\"", "; 7f; 7f00; 80"},
    {"OctetsBytewise", "by-octets", "\"80\" \"7f:00\" \"7F\" \"\"", "; 7f; 7f00; 80"},
    {"Decimal", "by-ratio", "\"10.0\" \"9.5\" \"-1.0\"", "-1.0; 9.5; 10.0"},
    {"Ipv4AsNumbers", "by-ipv4", "\"128.0.0.0\" \"9.0.0.0\" \"10.0.0.0\"",
     "9.0.0.0; 10.0.0.0; 128.0.0.0"},
    {"Ipv6AsBytes", "by-ipv6", "\"ff02::1\" \"2001:db8::1\" \"::1\"", "::1; 2001:db8::1; ff02::1"},
    {"Ipv4PrefixThenLength", "by-ipv4-prefix", "\"10.0.0.0/16\" \"9.0.0.0/8\" \"10.0.0.0/8\"",
     "9.0.0.0/8; 10.0.0.0/8; 10.0.0.0/16"},
    {"Ipv6Prefix", "by-ipv6-prefix", "\"fd00::/8\" \"2001:db8::/32\"", "2001:db8::/32; fd00::/8"},
    {"Ipv4AndLength", "by-ipv4-plen", "\"10.0.0.1/9\" \"9.0.0.1/24\" \"10.0.0.1/8\"",
     "9.0.0.1/24; 10.0.0.1/8; 10.0.0.1/9"},
    {"Ipv6AndLength", "by-ipv6-plen", "\"fd00::1/64\" \"2001:db8::1/128\" \"2001:db8::1/64\"",
     "2001:db8::1/64; 2001:db8::1/128; fd00::1/64"},
    {"UnionMemberByMember", "by-union", "\"1a\" 10 \"95b\" 9", "1a; 95b; 9; 10"},
    {"UnionOfAddresses", "by-any-plen",
     "\"2001:db8::1/64\" \"10.0.0.1/8\" \"::1/128\" \"9.0.0.1/8\"",
     "9.0.0.1/8; 10.0.0.1/8; ::1/128; 2001:db8::1/64"},
    {"OneAddressInTwoZones", "by-ipv4-zone", "\"10.0.0.1%b\" \"10.0.0.1%a\" \"9.0.0.1%z\"",
     "9.0.0.1; 10.0.0.1; 10.0.0.1"},
};
INSTANTIATE_TEST_SUITE_P(Types, KeyOrder, testing::ValuesIn(kOrderCases), RowName<OrderCase>);

TEST_F(CursorTest, OrdersByTheFirstKeyFirst) {
  Open(R"({"store-sample:keyed":{"by-several":[
      {"number":2,"text":"a","level":"low"}, {"number":1,"text":"b","level":"low"},
      {"number":1,"text":"a","level":"high"}, {"number":1,"text":"a","level":"low"}]}})");
  EXPECT_EQ(Walk("/keyed/by-several"), "1 a enum<1>; 1 a enum<10>; 1 b enum<1>; 2 a enum<1>");
}

TEST_F(CursorTest, KeepsTheOrderOfTheUser) {
  Open(
      R"({"store-sample:room":{"shelf":[{"name":"s","note":[{"id":"z"},{"id":"a"},{"id":"m"}]}]}})");
  EXPECT_EQ(Walk("/room/shelf{s}/note"), "z; a; m");
}

TEST_F(CursorTest, WalksTopLevelLists) {
  Open(R"({"store-sample:gauge":[{"id":10},{"id":9}]})");
  EXPECT_EQ(Walk("/gauge"), "9; 10");
}

TEST_F(CursorTest, WalksOnlyTheEntryThatWasNamed) {
  Open(R"({"store-sample:room":{"shelf":[
      {"name":"a","note":[{"id":"in a"}]}, {"name":"b","note":[{"id":"in b"}]}]}})");
  EXPECT_EQ(Walk("/room/shelf{b}/note"), "in b");
}

struct ErrorCase {
  const char* name;
  const char* path;
  const char* walk;
};

std::ostream& operator<<(std::ostream& out, const ErrorCase& c) { return out << c.path; }

class CursorPath : public CursorTest, public testing::WithParamInterface<ErrorCase> {};

TEST_P(CursorPath, IsThatOfAList) {
  Open(R"({"store-sample:gauge":[{"id":7}]})");
  EXPECT_EQ(Walk(GetParam().path), GetParam().walk);
}

const ErrorCase kErrorCases[] = {
    {"EmptyList", "/room/shelf", ""},
    {"BelowAbsentEntry", "/room/shelf{gone}/note", "error 1"},
    {"BelowAbsentPresenceContainer", "/box/thing", "error 1"},
    {"Entry", "/gauge{7}", "error 8"},
    {"Leaf", "/gauge{7}/id", "error 8"},
    {"Container", "/room", "error 8"},
    {"Root", "/", "error 8"},
    {"Unknown", "/nowhere", "error 8"},
};
INSTANTIATE_TEST_SUITE_P(Paths, CursorPath, testing::ValuesIn(kErrorCases), RowName<ErrorCase>);

TEST_F(CursorTest, HoldsKeysWithTheirTypes) {
  Open(R"({"store-sample:keyed":{"by-several":[{"number":1,"text":"a","level":"low"}]}})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/keyed/by-several"), CONFD_OK);
  EXPECT_EQ(cursor.n, 0) << "no entry before the first step";
  EXPECT_EQ(cursor.secondary_index, nullptr);
  EXPECT_EQ(cursor.xpath_expr, nullptr);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  ASSERT_EQ(cursor.n, 3);
  EXPECT_EQ(CONFD_GET_UINT32(&cursor.keys[0]), 1u);
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&cursor.keys[1]), "a");
  EXPECT_EQ(CONFD_GET_ENUM_VALUE(&cursor.keys[2]), 1);
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, KeysAddressTheEntry) {
  Open(R"({"store-sample:room":{"shelf":[{"name":"s","slot":[
      {"row":1,"column":"a b","item":"found"}]}]}})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/room/shelf{s}/slot"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/room/shelf{s}/slot{%*x}/item", cursor.n, cursor.keys),
            1);
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, StaysAtTheEnd) {
  Open(R"({"store-sample:gauge":[{"id":7}]})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/gauge"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  EXPECT_EQ(cursor.n, 1);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
    EXPECT_EQ(cursor.n, 0);
  }
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, IsHarmlessAfterAFailedInit) {
  Open("{}");
  maapi_cursor cursor;
  cursor.n = 5;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/nowhere"), CONFD_ERR);
  EXPECT_EQ(cursor.n, 0);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADSTATE);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, MayBeDestroyedTwice) {
  Open(R"({"store-sample:gauge":[{"id":7}]})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/gauge"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  maapi_destroy_cursor(&cursor);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
}

TEST_F(CursorTest, CursorsDoNotDisturbEachOther) {
  Open(R"({"store-sample:gauge":[{"id":1},{"id":2}]})");
  maapi_cursor a;
  maapi_cursor b;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &a, "/gauge"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&a), CONFD_OK);
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &b, "/gauge"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&b), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&a), CONFD_OK);
  EXPECT_EQ(CONFD_GET_UINT32(&a.keys[0]), 2u);
  EXPECT_EQ(CONFD_GET_UINT32(&b.keys[0]), 1u);
  maapi_destroy_cursor(&a);
  maapi_destroy_cursor(&b);
}

TEST_F(CursorTest, LeftOpenIsReportedWhenTheTransactionEnds) {
  Open(R"({"store-sample:room":{"shelf":[{"name":"s"}]}})");
  const int other = store_->StartTransaction(candidate_);
  store_->Attach(sock_, other);
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, other, &cursor, "/room/shelf"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  EXPECT_EQ(store_->FinishTransaction(other), 1);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, OutlivesItsDatastoreWithoutHarm) {
  Open(R"({"store-sample:room":{"shelf":[{"name":"s"}]}})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/room/shelf"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
  store_.reset();
  running_.reset();
  candidate_.reset();
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&cursor.keys[0]), "s") << "keys live until the next step";
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  maapi_destroy_cursor(&cursor);
}

TEST_F(CursorTest, RefusesFilters) {
  Open(R"({"store-sample:gauge":[{"id":1}]})");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/gauge"), CONFD_OK);
  cursor.xpath_expr = "id = 1";
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOT_IMPLEMENTED);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

}  // namespace
