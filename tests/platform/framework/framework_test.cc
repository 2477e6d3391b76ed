#include <gtest/gtest.h>

#include <cstdarg>
#include <ostream>
#include <string>
#include <vector>

#include "framework/host.h"
#include "ztconfd.h"
#include "ztmw.h"

// The CDB calls that the framework makes, recorded. These definitions win over those of libconfd.

namespace {

std::vector<std::string> cdb_calls;
int cdb_start_result = CONFD_OK;

void RecordCdbCall(const std::string& call) { cdb_calls.push_back(call); }

}  // namespace

int cdb_start_session(int sock, cdb_db_type db) {
  RecordCdbCall("cdb_start_session " + std::to_string(sock) + " " + std::to_string(db));
  return cdb_start_result;
}

int cdb_start_session2(int sock, cdb_db_type db, int flags) {
  RecordCdbCall("cdb_start_session2 " + std::to_string(sock) + " " + std::to_string(db) +
                " flags " + std::to_string(flags));
  return cdb_start_result;
}

int cdb_end_session(int sock) {
  RecordCdbCall("cdb_end_session " + std::to_string(sock));
  return CONFD_OK;
}

namespace {

using Calls = std::vector<std::string>;
using Lines = std::vector<std::string>;

TEST(MaapiSocket, IsThatOfTheDaemonBehindTheHandle) {
  framework::Daemon daemon{.maapi_socket = 5, .cdb_socket = 6};
  EXPECT_EQ(ztconfd_maapi_socket_get(&daemon), 5);
}

TEST(MaapiSocket, ZeroIsASocket) {
  framework::Daemon daemon{.maapi_socket = 0, .cdb_socket = 6};
  EXPECT_EQ(ztconfd_maapi_socket_get(&daemon), 0);
}

TEST(MaapiSocket, IsNegativeWithoutConnection) {
  framework::Daemon daemon;
  EXPECT_EQ(ztconfd_maapi_socket_get(&daemon), -1);
}

TEST(MaapiSocket, IsNegativeWithoutDaemon) { EXPECT_LT(ztconfd_maapi_socket_get(nullptr), 0); }

TEST(LibContext, IsFoundUnderItsName) {
  framework::ContextRegistry registry;
  int first = 0;
  int second = 0;
  registry.Register("first", &first);
  registry.Register("second", &second);
  EXPECT_EQ(get_lib_context(&registry, "first"), &first);
  EXPECT_EQ(get_lib_context(&registry, "second"), &second);
}

TEST(LibContext, IsTheOneRegisteredLast) {
  framework::ContextRegistry registry;
  int old_context = 0;
  int new_context = 0;
  registry.Register("name", &old_context);
  registry.Register("name", &new_context);
  EXPECT_EQ(get_lib_context(&registry, "name"), &new_context);
}

TEST(LibContext, IsNullUnderAnotherName) {
  framework::ContextRegistry registry;
  int context = 0;
  registry.Register("name", &context);
  EXPECT_EQ(get_lib_context(&registry, "nam"), nullptr);
  EXPECT_EQ(get_lib_context(&registry, "names"), nullptr);
}

TEST(LibContext, IsNullWithoutRegistry) { EXPECT_EQ(get_lib_context(nullptr, "name"), nullptr); }

struct SessionCase {
  const char* name;
  bool has_daemon;
  int cdb_socket;
  cdb_db_type db;
  bool lock_free;
  int start_result;
  int socket;
  Calls calls;
};

std::ostream& operator<<(std::ostream& out, const SessionCase& c) { return out << c.name; }

const SessionCase kSessionCases[] = {
    {"LockFree",
     true,
     9,
     CDB_RUNNING,
     true,
     CONFD_OK,
     9,
     {"cdb_start_session2 9 1 flags 0", "inside", "cdb_end_session 9"}},
    {"WithReadLock",
     true,
     9,
     CDB_RUNNING,
     false,
     CONFD_OK,
     9,
     {"cdb_start_session 9 1", "inside", "cdb_end_session 9"}},
    {"OtherDatabase",
     true,
     9,
     CDB_STARTUP,
     true,
     CONFD_OK,
     9,
     {"cdb_start_session2 9 2 flags 0", "inside", "cdb_end_session 9"}},
    {"SocketZero",
     true,
     0,
     CDB_RUNNING,
     true,
     CONFD_OK,
     0,
     {"cdb_start_session2 0 1 flags 0", "inside", "cdb_end_session 0"}},
    {"RefusedSessionIsNotEnded",
     true,
     9,
     CDB_RUNNING,
     true,
     CONFD_ERR,
     -1,
     {"cdb_start_session2 9 1 flags 0", "inside"}},
    {"NoConnection", true, -1, CDB_RUNNING, true, CONFD_OK, -1, {"inside"}},
    {"NoDaemon", false, 9, CDB_RUNNING, true, CONFD_OK, -1, {"inside"}},
};

class CdbSession : public testing::TestWithParam<SessionCase> {};

TEST_P(CdbSession, LastsAsLongAsTheObject) {
  const SessionCase& c = GetParam();
  cdb_calls.clear();
  cdb_start_result = c.start_result;
  framework::Daemon daemon{.maapi_socket = 5, .cdb_socket = c.cdb_socket};
  {
    const ZtConfdCdbSession session(ztconfd_instance_get(c.has_daemon ? &daemon : nullptr), c.db,
                                    c.lock_free);
    RecordCdbCall("inside");
    EXPECT_EQ(session.Socket(), c.socket);
  }
  EXPECT_EQ(cdb_calls, c.calls);
}

INSTANTIATE_TEST_SUITE_P(Sessions, CdbSession, testing::ValuesIn(kSessionCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ConfdInstance, IsNullWithoutDaemon) { EXPECT_EQ(ztconfd_instance_get(nullptr), nullptr); }

void WriteDebug(void* handle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  ztmw_vlog_debug(handle, fmt, args);
  va_end(args);
}

class DebugLog : public testing::Test {
 protected:
  void SetUp() override {
    framework::SetLogEnabled(true);
    framework::TakeLogLines();
  }
  void TearDown() override { framework::SetLogEnabled(false); }
};

TEST_F(DebugLog, RecordsAreFormattedAndKeptInOrder) {
  void* const handle = get_config_vald_log_handle();
  WriteDebug(handle, "plain");
  WriteDebug(handle, "%s has %d of %u", "l3 7", -1, 2u);
  WriteDebug(handle, "%s", "100 %s");
  EXPECT_EQ(framework::TakeLogLines(), (Lines{"plain", "l3 7 has -1 of 2", "100 %s"}));
}

TEST_F(DebugLog, NothingIsAddedToARecord) {
  WriteDebug(get_config_vald_log_handle(), "%s", "");
  EXPECT_EQ(framework::TakeLogLines(), Lines{""});
}

TEST_F(DebugLog, RecordsOfAnyLengthStayWhole) {
  for (const size_t length : {255u, 256u, 1023u, 1024u, 100000u}) {
    const std::string text(length, 'x');
    WriteDebug(get_config_vald_log_handle(), "<%s>", text.c_str());
    EXPECT_EQ(framework::TakeLogLines(), Lines{"<" + text + ">"}) << length;
  }
}

TEST_F(DebugLog, TakingClears) {
  WriteDebug(get_config_vald_log_handle(), "once");
  EXPECT_EQ(framework::TakeLogLines(), Lines{"once"});
  EXPECT_EQ(framework::TakeLogLines(), Lines{});
}

TEST_F(DebugLog, NullHandleWritesNothing) {
  WriteDebug(nullptr, "lost %d", 1);
  EXPECT_EQ(framework::TakeLogLines(), Lines{});
}

TEST_F(DebugLog, ThereIsNoHandleWhileItIsOff) {
  EXPECT_NE(get_config_vald_log_handle(), nullptr);
  framework::SetLogEnabled(false);
  EXPECT_EQ(get_config_vald_log_handle(), nullptr);
}

TEST_F(DebugLog, AHandleGivenOutStaysGoodAfterItIsOff) {
  void* const handle = get_config_vald_log_handle();
  framework::SetLogEnabled(false);
  WriteDebug(handle, "late");
  EXPECT_EQ(framework::TakeLogLines(), Lines{"late"});
}

TEST(FaultReport, IsKeptAsGivenOldestFirst) {
  framework::TakeFaults();
  ztmw_gen_fault(0, "ReadConfig", "src/lib/config", 475, "first, 100%s");
  ztmw_gen_fault(3, "", "", 0, "");
  const std::vector<framework::Fault> expected = {
      {0, "ReadConfig", "src/lib/config", 475, "first, 100%s"},
      {3, "", "", 0, ""},
  };
  EXPECT_EQ(framework::TakeFaults(), expected);
  EXPECT_TRUE(framework::TakeFaults().empty());
}

}  // namespace
