#include "read.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>

#include "confd_cdb.h"
#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::StoreTest;

constexpr const char* kConfiguration = R"({
  "store-sample:values": {
    "int8": -8, "int16": -16, "int32": -32, "int64": "-64",
    "uint8": 8, "uint16": 16, "uint32": 32, "uint64": "64",
    "boolean": true, "level": "high", "text": "word", "bytes": "YWI=", "marker": [null],
    "ipv4": "192.0.2.1", "ipv6": "2001:db8::1",
    "ipv4-plen": "10.0.0.1/24", "ipv6-plen": "2001:db8::1/64", "ipv4-prefix": "10.0.0.0/8",
    "word": ["w"]
  },
  "store-sample:room": {"shelf": [{"name": "s", "cover": {}}, {"name": "t"}]},
  "store-sample:gauge": [{"id": 7}]
})";

// --- Existence and number of entries
// --------------------------------------------------------------------------------

struct ExistsCase {
  const char* name;
  const char* path;
  int exists;     // 1, 0 or CONFD_ERR with CONFD_ERR_BADPATH
  int instances;  // entries, or the negative confd_errno
};

std::ostream& operator<<(std::ostream& out, const ExistsCase& c) { return out << c.path; }

class ReadNode : public StoreTest, public testing::WithParamInterface<ExistsCase> {};

TEST_P(ReadNode, ExistsOrNot) {
  Open(kConfiguration);
  EXPECT_EQ(Exists(GetParam().path), GetParam().exists);
  if (GetParam().exists == CONFD_ERR) {
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  }
}

TEST_P(ReadNode, HasInstances) {
  Open(kConfiguration);
  const int count = maapi_num_instances(sock_, thandle_, "%s", GetParam().path);
  EXPECT_EQ(count == CONFD_ERR ? -confd_errno : count, GetParam().instances);
}

TEST_P(ReadNode, IsTheSameThroughCdb) {
  Open(kConfiguration, "{}");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  EXPECT_EQ(cdb_exists(sock_, "%s", GetParam().path), GetParam().exists);
  const int count = cdb_num_instances(sock_, "%s", GetParam().path);
  EXPECT_EQ(count == CONFD_ERR ? -confd_errno : count, GetParam().instances);
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
}

const ExistsCase kExistsCases[] = {
    {"Leaf", "/values/text", 1, -8},
    {"LeafAbsent", "/values/ratio", 0, -8},
    {"LeafWithOnlyItsDefault", "/values/answer", 1, -8},
    {"LeafEmpty", "/values/marker", 1, -8},
    {"Container", "/values", 1, -8},
    {"ContainerWithoutContent", "/udp", 0, -8},
    {"ContainerBelowEntry", "/room/shelf{t}/place", 1, -8},
    {"PresenceContainer", "/room/shelf{s}/cover", 1, -8},
    {"PresenceContainerAbsent", "/room/shelf{t}/cover", 0, -8},
    {"DefaultBelowAbsentPresenceContainer", "/box/size", 0, -8},
    {"Entry", "/room/shelf{s}", 1, -8},
    {"EntryAbsent", "/room/shelf{u}", 0, -8},
    {"ListWithoutKeys", "/room/shelf", 1, 2},
    {"TopLevelListWithoutKeys", "/gauge", 1, 1},
    {"EmptyListWithoutKeys", "/keyed/by-int8", 1, 0},
    {"NestedEmptyList", "/room/shelf{s}/note", 1, 0},
    {"ListBelowAbsentEntry", "/room/shelf{u}/note", 0, -1},
    {"ListBelowAbsentPresenceContainer", "/box/thing", 0, -1},
    {"LeafBelowAbsentEntry", "/room/shelf{u}/height", 0, -8},
    {"ContainerBelowAbsentEntry", "/room/shelf{u}/place", 0, -8},
    {"EntryBelowAbsentEntry", "/room/shelf{u}/note{n}", 0, -8},
    {"LeafListWithoutKeys", "/values/word", 1, 1},
    {"Root", "/", 1, -8},
    {"UnknownNode", "/nowhere", CONFD_ERR, -8},
    {"UnknownNodeBelowAbsentEntry", "/room/shelf{u}/nowhere", CONFD_ERR, -8},
    {"WrongNumberOfKeys", "/gauge{7 8}", CONFD_ERR, -8},
    {"KeyOfWrongType", "/gauge{x}", CONFD_ERR, -8},
};
INSTANTIATE_TEST_SUITE_P(Nodes, ReadNode, testing::ValuesIn(kExistsCases), RowName<ExistsCase>);

// --- Values
// ---------------------------------------------------------------------------------------------------------

struct ValueCase {
  const char* name;
  const char* path;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const ValueCase& c) { return out << c.path; }

class ReadValue : public StoreTest, public testing::WithParamInterface<ValueCase> {};

TEST_P(ReadValue, OrSaysWhyNot) {
  Open(kConfiguration);
  EXPECT_EQ(Get(GetParam().path), GetParam().text);
}

TEST_P(ReadValue, IsTheSameThroughCdb) {
  Open(kConfiguration, "{}");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  confd_value_t value;
  CONFD_SET_NOEXISTS(&value);
  const int result = cdb_get(sock_, &value, "%s", GetParam().path);
  EXPECT_EQ(result == CONFD_OK ? Print(value) : "error " + std::to_string(confd_errno),
            GetParam().text);
  if (result != CONFD_OK) {
    EXPECT_EQ(value.type, C_NOEXISTS);
  }
  confd_free_value(&value);
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
}

const ValueCase kValueCases[] = {
    {"Leaf", "/values/text", "word"},
    {"Default", "/values/answer", "42"},
    {"DefaultText", "/values/greeting", "hello"},
    {"DefaultBelowEntry", "/room/shelf{s}/height", "1"},
    {"Absent", "/values/ratio", "error 1"},
    {"BelowAbsentEntry", "/room/shelf{u}/height", "error 1"},
    {"DefaultBelowAbsentPresenceContainer", "/box/size", "error 1"},
    {"Container", "/values", "error 8"},
    {"Entry", "/room/shelf{s}", "error 8"},
    {"Unknown", "/values/nowhere", "error 8"},
};
INSTANTIATE_TEST_SUITE_P(Leaves, ReadValue, testing::ValuesIn(kValueCases), RowName<ValueCase>);

// --- Typed reads
// ----------------------------------------------------------------------------------------------------

// Calls one typed read and gives the value as text; a failed read must leave the output as it was.
using TypedRead = std::function<std::string(int sock, int thandle, const char* path)>;

std::string Error() { return "error " + std::to_string(confd_errno); }

template <typename T>
TypedRead NumberRead(int (*read)(int, int, T*, const char*, ...)) {
  return [read](int sock, int thandle, const char* path) -> std::string {
    T number = 99;
    if (read(sock, thandle, &number, "%s", path) == CONFD_OK) return std::to_string(number);
    EXPECT_EQ(number, T{99}) << "a failed read wrote its output";
    return Error();
  };
}

template <typename Struct>
TypedRead AddressRead(int (*read)(int, int, Struct*, const char*, ...), int family) {
  return [read, family](int sock, int thandle, const char* path) -> std::string {
    Struct address;
    std::memset(&address, 0x5a, sizeof(address));
    const Struct untouched = address;
    if (read(sock, thandle, &address, "%s", path) != CONFD_OK) {
      EXPECT_EQ(std::memcmp(&address, &untouched, sizeof(address)), 0);
      return Error();
    }
    char text[INET6_ADDRSTRLEN];
    std::string result = inet_ntop(family, &address, text, sizeof(text));
    if constexpr (std::is_same_v<Struct, confd_ipv4_prefix> ||
                  std::is_same_v<Struct, confd_ipv6_prefix>) {
      result += "/" + std::to_string(address.len);
    }
    return result;
  };
}

TypedRead BytesRead(int (*read)(int, int, unsigned char**, int*, const char*, ...)) {
  return [read](int sock, int thandle, const char* path) -> std::string {
    unsigned char* bytes = nullptr;
    int size = -1;
    if (read(sock, thandle, &bytes, &size, "%s", path) != CONFD_OK) {
      EXPECT_EQ(bytes, nullptr);
      EXPECT_EQ(size, -1);
      return Error();
    }
    EXPECT_EQ(bytes[size], 0);
    std::string text(reinterpret_cast<char*>(bytes), static_cast<size_t>(size));
    free(bytes);
    return text;
  };
}

std::string TextRead(int sock, int thandle, const char* path) {
  char buffer[16] = "untouched";
  if (maapi_get_str_elem(sock, thandle, buffer, sizeof(buffer), "%s", path) == CONFD_OK) {
    return buffer;
  }
  EXPECT_STREQ(buffer, "untouched");
  return Error();
}

struct TypedCase {
  const char* name;
  TypedRead read;
  const char* leaf;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const TypedCase& c) { return out << c.name; }

class TypedReadOf : public StoreTest, public testing::WithParamInterface<TypedCase> {};

TEST_P(TypedReadOf, GivesTheLeafOfItsTypeOnly) {
  Open(kConfiguration);
  const char* kLeaves[] = {"int8",   "int16",  "int32",     "int64",     "uint8",       "uint16",
                           "uint32", "uint64", "boolean",   "level",     "text",        "bytes",
                           "ipv4",   "ipv6",   "ipv4-plen", "ipv6-plen", "ipv4-prefix", "marker"};
  for (const char* leaf : kLeaves) {
    const std::string path = std::string("/values/") + leaf;
    const bool mine = std::strcmp(leaf, GetParam().leaf) == 0;
    EXPECT_EQ(GetParam().read(sock_, thandle_, path.c_str()), mine ? GetParam().text : "error 5")
        << path;
  }
  EXPECT_EQ(GetParam().read(sock_, thandle_, "/values/ratio"), "error 1");
  EXPECT_EQ(GetParam().read(sock_, thandle_, "/room/shelf{u}/height"), "error 1");
  EXPECT_EQ(GetParam().read(sock_, thandle_, "/values/nowhere"), "error 8");
  EXPECT_EQ(GetParam().read(sock_, thandle_, "/values"), "error 8");
  EXPECT_EQ(GetParam().read(sock_, thandle_ + 1000, "/values/text"), "error 61");
  EXPECT_EQ(GetParam().read(-1, thandle_, "/values/text"), "error 22");
}

const TypedCase kTypedCases[] = {
    {"Int8", NumberRead(maapi_get_int8_elem), "int8", "-8"},
    {"Int16", NumberRead(maapi_get_int16_elem), "int16", "-16"},
    {"Int32", NumberRead(maapi_get_int32_elem), "int32", "-32"},
    {"Int64", NumberRead(maapi_get_int64_elem), "int64", "-64"},
    {"Uint8", NumberRead(maapi_get_u_int8_elem), "uint8", "8"},
    {"Uint16", NumberRead(maapi_get_u_int16_elem), "uint16", "16"},
    {"Uint32", NumberRead(maapi_get_u_int32_elem), "uint32", "32"},
    {"Uint64", NumberRead(maapi_get_u_int64_elem), "uint64", "64"},
    {"Boolean", NumberRead(maapi_get_bool_elem), "boolean", "1"},
    {"Enum", NumberRead(maapi_get_enum_value_elem), "level", "10"},
    {"Ipv4", AddressRead(maapi_get_ipv4_elem, AF_INET), "ipv4", "192.0.2.1"},
    {"Ipv6", AddressRead(maapi_get_ipv6_elem, AF_INET6), "ipv6", "2001:db8::1"},
    {"Ipv4AndLength", AddressRead(maapi_get_ipv4_and_plen_elem, AF_INET), "ipv4-plen",
     "10.0.0.1/24"},
    {"Ipv6AndLength", AddressRead(maapi_get_ipv6_and_plen_elem, AF_INET6), "ipv6-plen",
     "2001:db8::1/64"},
    {"Text", TextRead, "text", "word"},
    {"Buffer", BytesRead(maapi_get_buf_elem), "text", "word"},
    {"Binary", BytesRead(maapi_get_binary_elem), "bytes", "ab"},
};
INSTANTIATE_TEST_SUITE_P(Types, TypedReadOf, testing::ValuesIn(kTypedCases), RowName<TypedCase>);

TEST_F(StoreTest, AddressesAreInNetworkByteOrder) {
  Open(kConfiguration);
  confd_ipv4_prefix prefix;
  ASSERT_EQ(maapi_get_ipv4_and_plen_elem(sock_, thandle_, &prefix, "/values/ipv4-plen"), CONFD_OK);
  EXPECT_EQ(ntohl(prefix.ip.s_addr), 0x0a000001u);
  EXPECT_EQ(prefix.len, 24);
}

// --- Texts and the buffer for them
// ----------------------------------------------------------------------------------

struct FitCase {
  const char* name;
  size_t characters;
  int buffer;
  bool fits;
};

std::ostream& operator<<(std::ostream& out, const FitCase& c) {
  return out << c.characters << " into " << c.buffer;
}

class TextInto : public StoreTest, public testing::WithParamInterface<FitCase> {};

TEST_P(TextInto, FitsWithItsNulOrIsRefused) {
  const std::string text(GetParam().characters, 'x');
  Open(R"({"store-sample:values":{"text":")" + text + "\"}}");
  char buffer[300] = "untouched";
  const int result = maapi_get_str_elem(sock_, thandle_, buffer, GetParam().buffer, "/values/text");
  if (GetParam().fits) {
    EXPECT_EQ(result, CONFD_OK);
    EXPECT_EQ(buffer, text);
  } else {
    EXPECT_EQ(result, CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_PROTOUSAGE);
    EXPECT_STREQ(buffer, "untouched");
  }
}

const FitCase kFitCases[] = {
    {"Below", 254, 256, true}, {"JustFits", 255, 256, true}, {"OneTooMany", 256, 256, false},
    {"Empty", 0, 1, true},     {"NoBuffer", 0, 0, false},    {"NegativeBuffer", 0, -1, false},
};
INSTANTIATE_TEST_SUITE_P(Lengths, TextInto, testing::ValuesIn(kFitCases), RowName<FitCase>);

// --- CDB
// ------------------------------------------------------------------------------------------------------------

class Cdb : public StoreTest {
 protected:
  std::string Int32(const char* path) {
    int32_t number = 99;
    if (cdb_get_int32(sock_, &number, "%s", path) == CONFD_OK) return std::to_string(number);
    EXPECT_EQ(number, 99);
    return Error();
  }
};

TEST_F(Cdb, ReadsRunningAsItWasBeforeTheTransaction) {
  Open(R"({"store-sample:values":{"int32":1}})", R"({"store-sample:values":{"int32":2}})");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  EXPECT_EQ(Int32("/values/int32"), "1");
  EXPECT_EQ(Get("/values/int32"), "2");
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
}

TEST_F(Cdb, IntegerReadSaysWhyNot) {
  Open(kConfiguration, "{}");
  ASSERT_EQ(cdb_start_session2(sock_, CDB_RUNNING, 0), CONFD_OK);
  EXPECT_EQ(Int32("/values/int32"), "-32");
  EXPECT_EQ(Int32("/gauge{7}/reading"), "error 1");
  EXPECT_EQ(Int32("/gauge{8}/reading"), "error 1");
  EXPECT_EQ(Int32("/values/uint32"), "error 5");
  EXPECT_EQ(Int32("/nowhere"), "error 8");
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
}

TEST_F(Cdb, NeedsASession) {
  Open(kConfiguration, "{}");
  EXPECT_EQ(Int32("/values/int32"), "error 22");
  EXPECT_EQ(cdb_exists(sock_, "/values"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
  EXPECT_EQ(cdb_end_session(sock_), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
  EXPECT_EQ(cdb_start_session(-1, CDB_RUNNING), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOSESSION);
}

TEST_F(Cdb, SessionsAreOpenedOnceAndReopened) {
  Open(kConfiguration, "{}");
  ASSERT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_OK);
  EXPECT_EQ(cdb_start_session(sock_, CDB_RUNNING), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_PROTOUSAGE);
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
  EXPECT_EQ(Int32("/values/int32"), "error 22");
  EXPECT_EQ(cdb_start_session2(sock_, CDB_RUNNING, CDB_LOCK_WAIT | CDB_LOCK_SESSION), CONFD_OK);
  EXPECT_EQ(Int32("/values/int32"), "-32");
  EXPECT_EQ(cdb_end_session(sock_), CONFD_OK);
}

TEST_F(Cdb, KeepsOnlyTheRunningConfiguration) {
  Open(kConfiguration, "{}");
  EXPECT_EQ(cdb_start_session(sock_, CDB_STARTUP), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOT_IMPLEMENTED);
}

}  // namespace
