// Values of another type than the data model promises, where the watcher of calls asks for them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "confd/watch_calls.h"
#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using confd::Call;
using confd::CallAction;
using confd::CallRequest;
using tests::RowName;
using tests::StoreTest;

constexpr char kConfiguration[] = R"({
  "store-sample:values": {
    "int8": 1, "int16": 1, "int32": 1, "int64": "1", "uint8": 1, "uint16": 1, "uint32": 1,
    "uint64": "1", "boolean": true, "level": "low", "text": "t", "bytes": "YQ==",
    "ipv4": "192.0.2.1", "ipv6": "::1", "ipv4-plen": "10.0.0.1/8", "ipv6-plen": "::1/64"},
  "store-sample:room": {"shelf": [{"name": "s"}]}})";

// Asks every call of `function` for a wrong type.
void WatchFor(const std::string& function, size_t position = 0) {
  confd::WatchCalls([function, position](const Call& call) {
    return call.function == function ? CallRequest(CallAction::kWrongType, position)
                                     : CallRequest(CallAction::kProceed);
  });
}

class WrongType : public StoreTest {
 protected:
  WrongType() { Open("{}", kConfiguration); }
};

// Typed reads -------------------------------------------------------------------------------------

struct TypedCase {
  const char* name;
  /// Reads over zero bytes. @returns the result, -2 when the output was written all the same
  std::function<int(int sock, int thandle)> read;
};

std::ostream& operator<<(std::ostream& out, const TypedCase& c) { return out << c.name; }

template <typename T>
std::function<int(int, int)> Typed(int (*read)(int, int, T*, const char*, ...), const char* leaf) {
  return [read, leaf](int sock, int thandle) {
    const T before{};
    T value = before;
    const int result = read(sock, thandle, &value, "/values/%s", leaf);
    return memcmp(&value, &before, sizeof(T)) == 0 ? result : -2;
  };
}

const TypedCase kTypedCases[] = {
    {"maapi_get_int8_elem", Typed(maapi_get_int8_elem, "int8")},
    {"maapi_get_int16_elem", Typed(maapi_get_int16_elem, "int16")},
    {"maapi_get_int32_elem", Typed(maapi_get_int32_elem, "int32")},
    {"maapi_get_int64_elem", Typed(maapi_get_int64_elem, "int64")},
    {"maapi_get_u_int8_elem", Typed(maapi_get_u_int8_elem, "uint8")},
    {"maapi_get_u_int16_elem", Typed(maapi_get_u_int16_elem, "uint16")},
    {"maapi_get_u_int32_elem", Typed(maapi_get_u_int32_elem, "uint32")},
    {"maapi_get_u_int64_elem", Typed(maapi_get_u_int64_elem, "uint64")},
    {"maapi_get_bool_elem", Typed(maapi_get_bool_elem, "boolean")},
    {"maapi_get_enum_value_elem", Typed(maapi_get_enum_value_elem, "level")},
    {"maapi_get_ipv4_elem", Typed(maapi_get_ipv4_elem, "ipv4")},
    {"maapi_get_ipv6_elem", Typed(maapi_get_ipv6_elem, "ipv6")},
    {"maapi_get_ipv4_and_plen_elem", Typed(maapi_get_ipv4_and_plen_elem, "ipv4-plen")},
    {"maapi_get_ipv6_and_plen_elem", Typed(maapi_get_ipv6_and_plen_elem, "ipv6-plen")},
    {"maapi_get_str_elem",
     [](int s, int t) {
       char text[8] = {};
       const int result = maapi_get_str_elem(s, t, text, sizeof(text), "/values/text");
       return text[0] == 0 ? result : -2;
     }},
    {"maapi_get_buf_elem",
     [](int s, int t) {
       unsigned char* bytes = nullptr;
       int size = 0;
       const int result = maapi_get_buf_elem(s, t, &bytes, &size, "/values/text");
       return bytes == nullptr ? result : -2;
     }},
    {"maapi_get_binary_elem",
     [](int s, int t) {
       unsigned char* bytes = nullptr;
       int size = 0;
       const int result = maapi_get_binary_elem(s, t, &bytes, &size, "/values/bytes");
       return bytes == nullptr ? result : -2;
     }},
};

class WrongTypeOfRead : public WrongType, public testing::WithParamInterface<TypedCase> {};

TEST_P(WrongTypeOfRead, IsBadTypeAndLeavesTheOutput) {
  WatchFor(GetParam().name);
  EXPECT_EQ(GetParam().read(sock_, thandle_), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);
}

INSTANTIATE_TEST_SUITE_P(Functions, WrongTypeOfRead, testing::ValuesIn(kTypedCases),
                         RowName<TypedCase>);

TEST_F(WrongType, CdbReadIsBadTypeToo) {
  Open(kConfiguration, "{}");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  WatchFor("cdb_get_int32");
  int32_t number = 7;
  EXPECT_EQ(cdb_get_int32(sock_, &number, "/values/int32"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADTYPE);
  EXPECT_EQ(number, 7);
  WatchFor("cdb_get");
  confd_value_t value;
  ASSERT_EQ(cdb_get(sock_, &value, "/values/int32"), CONFD_OK);
  EXPECT_EQ(value.type, C_BUF);
  confd_free_value(&value);
  cdb_end_session(sock_);
}

// Reads of any type -------------------------------------------------------------------------------

TEST_F(WrongType, TextBecomesANumber) {
  WatchFor("maapi_get_elem");
  EXPECT_EQ(Get("/values/text"), "424242");
  confd::WatchCalls(nullptr);
  EXPECT_EQ(Get("/values/text"), "t");
}

TEST_F(WrongType, AnythingElseBecomesAText) {
  WatchFor("maapi_get_elem");
  for (const char* leaf :
       {"int8", "int32", "uint64", "boolean", "level", "bytes", "ipv4", "ipv6-plen"}) {
    EXPECT_EQ(Get(("/values/" + std::string(leaf)).c_str()), "of another type") << leaf;
  }
}

TEST_F(WrongType, ValueThatIsNotThereStaysAway) {
  WatchFor("maapi_get_elem");
  EXPECT_EQ(Get("/values/absent"), "error " + std::to_string(CONFD_ERR_BADPATH));
  Open("{}");
  EXPECT_EQ(Get("/values/text"), "error " + std::to_string(CONFD_ERR_NOEXISTS));
}

TEST_F(WrongType, CallsWithoutTypesProceed) {
  confd::WatchCalls([](const Call&) { return CallAction::kWrongType; });
  EXPECT_EQ(Exists("/values/text"), 1);
  EXPECT_EQ(maapi_num_instances(sock_, thandle_, "/room/shelf"), 1);
  char* found = nullptr;
  EXPECT_EQ(maapi_xpath_eval_expr(sock_, thandle_, "/values/text", &found, nullptr, nullptr),
            CONFD_OK);
  EXPECT_STREQ(found, "t");
  free(found);
}

// Keys --------------------------------------------------------------------------------------------

TEST_F(WrongType, OneKeyOfAnEntry) {
  const std::vector<std::string> changed = {"424242", "s"};
  for (size_t position = 0; position < changed.size(); ++position) {
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/room/shelf"), CONFD_OK);
    WatchFor("maapi_get_next", position);
    ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
    ASSERT_EQ(cursor.n, 1);
    EXPECT_EQ(Print(cursor.keys[0]), changed[position]);
    // Behind the last entry there is none to change.
    ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
    EXPECT_EQ(cursor.n, 0);
    maapi_destroy_cursor(&cursor);
  }
}

// Changes -----------------------------------------------------------------------------------------

struct Seen {
  confd_vtype value = C_NOEXISTS;
  std::vector<confd_vtype> elements;
};

confd_iter_ret Note(confd_hkeypath_t* path, confd_iter_op op, confd_value_t*, confd_value_t* newval,
                    void* state) {
  if (op != MOP_VALUE_SET) return ITER_RECURSE;
  auto* seen = static_cast<Seen*>(state);
  seen->value = newval->type;
  seen->elements.clear();
  for (int i = 0; i < path->len; ++i) seen->elements.push_back(path->v[i][0].type);
  return ITER_STOP;
}

struct ChangeCase {
  const char* name;
  size_t position;
  confd_vtype value;
  std::vector<confd_vtype> elements;
};

std::ostream& operator<<(std::ostream& out, const ChangeCase& c) { return out << c.name; }

const ChangeCase kChangeCases[] = {
    {"NewValue", 0, C_INT32, {C_XMLTAG, C_XMLTAG}},
    {"DeepestElement", 1, C_BUF, {C_BUF, C_XMLTAG}},
    {"TopElement", 2, C_BUF, {C_XMLTAG, C_BUF}},
    {"AboveTheTop", 3, C_BUF, {C_XMLTAG, C_XMLTAG}},
};

class WrongTypeOfChange : public WrongType, public testing::WithParamInterface<ChangeCase> {};

TEST_P(WrongTypeOfChange, IsOneValueOfTheReport) {
  Open("{}", R"({"store-sample:values":{"text":"t"}})");
  WatchFor("maapi_keypath_diff_iterate", GetParam().position);
  Seen seen;
  EXPECT_EQ(maapi_keypath_diff_iterate(sock_, thandle_, Note, 0, &seen, "/values"), CONFD_OK);
  EXPECT_EQ(seen.value, GetParam().value);
  EXPECT_EQ(seen.elements, GetParam().elements);
  WatchFor("maapi_diff_iterate", GetParam().position);
  EXPECT_EQ(maapi_diff_iterate(sock_, thandle_, Note, 0, &seen), CONFD_OK);
  EXPECT_EQ(seen.value, GetParam().value);
  EXPECT_EQ(seen.elements, GetParam().elements);
}

INSTANTIATE_TEST_SUITE_P(Positions, WrongTypeOfChange, testing::ValuesIn(kChangeCases),
                         RowName<ChangeCase>);

}  // namespace
