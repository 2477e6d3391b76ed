#include "calls.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>

#include "confd/watch_calls.h"
#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using confd::Call;
using confd::CallAction;
using tests::RowName;
using tests::StoreTest;

confd_iter_ret Ignore(confd_hkeypath_t*, confd_iter_op, confd_value_t*, confd_value_t*, void*) {
  return ITER_RECURSE;
}

struct CallCase {
  const char* name;  // of the function
  const char* path;  // that the watcher sees
  std::function<int(int sock, int thandle)> call;
};

std::ostream& operator<<(std::ostream& out, const CallCase& c) { return out << c.name; }

template <typename T>
std::function<int(int, int)> Typed(int (*read)(int, int, T*, const char*, ...), const char* leaf) {
  return [read, leaf](int sock, int thandle) {
    T value;
    return read(sock, thandle, &value, "/values/%s", leaf);
  };
}

int GetBytes(int (*read)(int, int, unsigned char**, int*, const char*, ...), int sock, int thandle,
             const char* path) {
  unsigned char* bytes = nullptr;
  int size = 0;
  const int result = read(sock, thandle, &bytes, &size, "%s", path);
  free(bytes);
  return result;
}

template <typename Read>
int InSession(int sock, Read read) {
  cdb_start_session(sock, CDB_RUNNING);
  const int result = read();
  cdb_end_session(sock);
  return result;
}

const CallCase kCalls[] = {
    {"maapi_exists", "/values",
     [](int s, int t) { return maapi_exists(s, t, "/%s", "values") - 1; }},
    {"maapi_num_instances", "/gauge",
     [](int s, int t) { return maapi_num_instances(s, t, "/gauge"); }},
    {"maapi_get_elem", "/values/text",
     [](int s, int t) {
       confd_value_t value;
       CONFD_SET_NOEXISTS(&value);
       const int result = maapi_get_elem(s, t, &value, "/values/text");
       confd_free_value(&value);
       return result;
     }},
    {"maapi_get_int8_elem", "/values/int8", Typed(maapi_get_int8_elem, "int8")},
    {"maapi_get_int16_elem", "/values/int16", Typed(maapi_get_int16_elem, "int16")},
    {"maapi_get_int32_elem", "/values/int32", Typed(maapi_get_int32_elem, "int32")},
    {"maapi_get_int64_elem", "/values/int64", Typed(maapi_get_int64_elem, "int64")},
    {"maapi_get_u_int8_elem", "/values/uint8", Typed(maapi_get_u_int8_elem, "uint8")},
    {"maapi_get_u_int16_elem", "/values/uint16", Typed(maapi_get_u_int16_elem, "uint16")},
    {"maapi_get_u_int32_elem", "/values/uint32", Typed(maapi_get_u_int32_elem, "uint32")},
    {"maapi_get_u_int64_elem", "/values/uint64", Typed(maapi_get_u_int64_elem, "uint64")},
    {"maapi_get_bool_elem", "/values/boolean", Typed(maapi_get_bool_elem, "boolean")},
    {"maapi_get_enum_value_elem", "/values/level", Typed(maapi_get_enum_value_elem, "level")},
    {"maapi_get_ipv4_elem", "/values/ipv4", Typed(maapi_get_ipv4_elem, "ipv4")},
    {"maapi_get_ipv6_elem", "/values/ipv6", Typed(maapi_get_ipv6_elem, "ipv6")},
    {"maapi_get_ipv4_and_plen_elem", "/values/ipv4-plen",
     Typed(maapi_get_ipv4_and_plen_elem, "ipv4-plen")},
    {"maapi_get_ipv6_and_plen_elem", "/values/ipv6-plen",
     Typed(maapi_get_ipv6_and_plen_elem, "ipv6-plen")},
    {"maapi_get_str_elem", "/values/text",
     [](int s, int t) {
       char text[16];
       return maapi_get_str_elem(s, t, text, sizeof(text), "/values/text");
     }},
    {"maapi_get_buf_elem", "/values/text",
     [](int s, int t) { return GetBytes(maapi_get_buf_elem, s, t, "/values/text"); }},
    {"maapi_get_binary_elem", "/values/bytes",
     [](int s, int t) { return GetBytes(maapi_get_binary_elem, s, t, "/values/bytes"); }},
    {"maapi_init_cursor", "/gauge",
     [](int s, int t) {
       maapi_cursor cursor;
       const int result = maapi_init_cursor(s, t, &cursor, "/gauge");
       maapi_destroy_cursor(&cursor);
       return result;
     }},
    {"maapi_get_next", "",
     [](int s, int t) {
       maapi_cursor cursor;
       maapi_init_cursor(s, t, &cursor, "/room/shelf");
       const int result = maapi_get_next(&cursor);
       EXPECT_EQ(cursor.n, result == CONFD_OK ? 1 : 0);
       maapi_destroy_cursor(&cursor);
       return result;
     }},
    {"maapi_xpath_eval_expr", "/values",
     [](int s, int t) {
       char* result = nullptr;
       const int status = maapi_xpath_eval_expr(s, t, "text", &result, nullptr, "/values");
       free(result);
       return status;
     }},
    {"maapi_diff_iterate", "/",
     [](int s, int t) { return maapi_diff_iterate(s, t, Ignore, 0, nullptr); }},
    {"maapi_keypath_diff_iterate", "/values",
     [](int s, int t) { return maapi_keypath_diff_iterate(s, t, Ignore, 0, nullptr, "/values"); }},
    {"cdb_start_session", "",
     [](int s, int) {
       const int result = cdb_start_session(s, CDB_RUNNING);
       if (result == CONFD_OK) cdb_end_session(s);
       return result;
     }},
    {"cdb_start_session2", "",
     [](int s, int) {
       const int result = cdb_start_session2(s, CDB_RUNNING, 0);
       if (result == CONFD_OK) cdb_end_session(s);
       return result;
     }},
    {"cdb_end_session", "",
     [](int s, int) {
       cdb_start_session(s, CDB_RUNNING);
       return cdb_end_session(s);
     }},
    {"cdb_exists", "/values",
     [](int s, int) { return InSession(s, [s] { return cdb_exists(s, "/values") - 1; }); }},
    {"cdb_num_instances", "/gauge",
     [](int s, int) { return InSession(s, [s] { return cdb_num_instances(s, "/gauge"); }); }},
    {"cdb_get", "/values/int32",
     [](int s, int) {
       return InSession(s, [s] {
         confd_value_t value;
         return cdb_get(s, &value, "/values/int32");
       });
     }},
    {"cdb_get_int32", "/values/int32",
     [](int s, int) {
       return InSession(s, [s] {
         int32_t number = 0;
         return cdb_get_int32(s, &number, "/values/int32");
       });
     }},
};

class WatchedCall : public StoreTest, public testing::WithParamInterface<CallCase> {
 protected:
  WatchedCall() {
    const char* text = R"({
      "store-sample:values": {
        "int8": 1, "int16": 1, "int32": 1, "int64": "1", "uint8": 1, "uint16": 1, "uint32": 1,
        "uint64": "1", "boolean": true, "level": "low", "text": "t", "bytes": "YQ==",
        "ipv4": "192.0.2.1", "ipv6": "::1", "ipv4-plen": "10.0.0.1/8", "ipv6-plen": "::1/64"},
      "store-sample:room": {"shelf": [{"name": "s"}]}})";
    Open(text, text);
  }
};

TEST_P(WatchedCall, IsSeenOnceWithItsPathAndCounted) {
  int seen = 0;
  uint64_t announced = 0;
  confd::WatchCalls([&](const Call& call) {
    ++announced;
    if (std::string(call.function) == "confd_free_value") --announced;
    if (std::string(call.function) == GetParam().name) {
      ++seen;
      EXPECT_EQ(call.path, GetParam().path);
    }
    return CallAction::kProceed;
  });
  const uint64_t before = confd::CallCount();
  EXPECT_EQ(GetParam().call(sock_, thandle_), CONFD_OK) << confd_lasterr();
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(confd::CallCount() - before, announced);
}

TEST_P(WatchedCall, FailsWhenTheWatcherWantsIt) {
  confd::WatchCalls([](const Call& call) {
    return std::string(call.function) == GetParam().name ? CallAction::kFail : CallAction::kProceed;
  });
  const int result = GetParam().call(sock_, thandle_);
  EXPECT_LT(result, 0);
  confd::WatchCalls(nullptr);
  cdb_end_session(sock_);  // one that was made to stay open
}

INSTANTIATE_TEST_SUITE_P(Functions, WatchedCall, testing::ValuesIn(kCalls), RowName<CallCase>);

TEST_F(StoreTest, CallMadeToFailSetsTheInternalError) {
  Open("{}");
  confd::WatchCalls([](const Call&) { return CallAction::kFail; });
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/values"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_INTERNAL);
  EXPECT_STREQ(confd_lasterr(), "maapi_exists made to fail");
}

TEST_F(StoreTest, FunctionsWithoutResultProceedWhateverTheWatcherWants) {
  Open(R"({"store-sample:values":{"text":"t"},"store-sample:gauge":[{"id":1}]})");
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(sock_, thandle_, &value, "/values/text"), CONFD_OK);
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock_, thandle_, &cursor, "/gauge"), CONFD_OK);
  confd::WatchCalls([](const Call&) { return CallAction::kFail; });
  confd_free_value(&value);
  EXPECT_EQ(value.type, C_NOEXISTS);
  maapi_destroy_cursor(&cursor);
}

TEST_F(StoreTest, ReleasesAreSeenButNotCounted) {
  Open("{}");
  int seen = 0;
  confd::WatchCalls([&seen](const Call& call) {
    seen += std::string(call.function) == "confd_free_value" ? 1 : 0;
    return CallAction::kProceed;
  });
  const uint64_t before = confd::CallCount();
  confd_value_t value;
  CONFD_SET_INT32(&value, 1);
  confd_free_value(&value);
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(confd::CallCount(), before);
}

TEST_F(StoreTest, CallWithABadFormatIsSeenWithoutItsPath) {
  Open("{}");
  std::string path = "not seen";
  confd::WatchCalls([&path](const Call& call) {
    path = call.path;
    return CallAction::kProceed;
  });
  EXPECT_EQ(maapi_exists(sock_, thandle_, "/values%f"), CONFD_ERR);
  EXPECT_EQ(path, "");
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

}  // namespace
