// The records that one session sends, in this process: of plug-ins that behave and of such that
// fail in a way that the session can see.
#include "plugin_session.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <string_view>

#include "host/sandbox/sample_task.h"

namespace ipvald {
namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();

struct Describe {
  std::string operator()(const StageRecord& record) const { return record.stage; }
  std::string operator()(const BeginRecord& record) const {
    return "begin " + std::to_string(record.call);
  }
  std::string operator()(const EndRecord& record) const {
    std::string text = "end " + std::to_string(record.call) + " " + std::to_string(record.result);
    if (record.text) text += " \"" + *record.text + "\"";
    if (record.datastore_calls > 0) text += " calls " + std::to_string(record.datastore_calls);
    for (const FaultRecord& fault : record.faults) text += " fault " + fault.message;
    return text;
  }
  std::string operator()(const UnusableRecord& record) const {
    return "unusable: " + record.reason;
  }
  std::string operator()(const FailedRecord& record) const { return "failed: " + record.reason; }
  std::string operator()(const DoneRecord& record) const {
    return "done " + std::to_string(record.open_cursors);
  }
};

// The records of a session, separated by "; ".
std::string RecordsOf(const PluginTask& task, const std::string& order) {
  setenv("MISBEHAVE", order.c_str(), 1);
  std::string records;
  RunPluginSession(task, [&records](const Record& record) {
    records += (records.empty() ? "" : "; ") + std::visit(Describe(), record);
  });
  return records;
}

const std::string kStart = "loading; get_validation_point; lib_init; ";
const std::string kEnd = "; lib_finish; unloading; done 0";

struct SessionCase {
  const char* name;
  const char* order;
  std::string records;
};

std::ostream& operator<<(std::ostream& out, const SessionCase& row) { return out << row.name; }

const SessionCase kSessions[] = {
    {"AllAccepted", "", kStart + "begin 0; end 0 0; begin 1; end 1 0" + kEnd},
    {"WarningsDoNotEndTheCalls", "validate:warn",
     kStart + "begin 0; end 0 -3 \"think twice\"; begin 1; end 1 -3 \"think twice\"" + kEnd},
    {"RefusalEndsTheCalls", "validate:refuse",
     kStart + "begin 0; end 0 -1 \"refused on order\"" + kEnd},
    {"RefusalWithoutAText", "validate:refuse-silently", kStart + "begin 0; end 0 -1" + kEnd},
    {"ResultWithoutMeaningEndsTheCalls", "validate:return-7", kStart + "begin 0; end 0 7" + kEnd},
    {"FaultsOfEachCall", "validate:fault",
     kStart + "begin 0; end 0 0 fault a fault on order; begin 1; end 1 0 fault a fault on order" +
         kEnd},
    {"ExceptionInACall", "validate:throw",
     kStart + "begin 0; failed: exception std::invalid_argument: stoul"},
    {"ExceptionOfNoClassInACall", "validate:throw-int",
     kStart + "begin 0; failed: exception of type int"},
    {"ExceptionInName", "get_validation_point:throw",
     "loading; get_validation_point; failed: exception std::invalid_argument: stoul"},
    {"ExceptionInInit", "lib_init:throw-int", kStart + "failed: exception of type int"},
    {"ExceptionInFinish", "lib_finish:throw",
     kStart + "begin 0; end 0 0; begin 1; end 1 0; lib_finish; failed: exception "
              "std::invalid_argument: stoul"},
    {"NameFails", "get_validation_point:return-7",
     "loading; get_validation_point; failed: get_validation_point returned 7"},
    {"InitFails", "lib_init:return-7", kStart + "failed: lib_init returned 7"},
    {"FinishFailsBehindARefusal", "validate:refuse,lib_finish:return-7",
     kStart + "begin 0; end 0 -1 \"refused on order\"; lib_finish; failed: lib_finish returned 7"},
};

class Session : public testing::TestWithParam<SessionCase> {};

TEST_P(Session, SendsItsRecords) {
  EXPECT_EQ(RecordsOf(TaskFor(IPAV_MISBEHAVING_PLUGIN), GetParam().order), GetParam().records);
}

INSTANTIATE_TEST_SUITE_P(Orders, Session, testing::ValuesIn(kSessions),
                         [](const auto& row) { return std::string(row.param.name); });

// The memory of such a cursor ends with the process, which otherwise is the child's.
TEST(SessionWithCursorsLeftOpen, CountsThem) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer sees what a cursor holds as lost";
  EXPECT_EQ(
      RecordsOf(TaskFor(IPAV_MISBEHAVING_PLUGIN), "validate:leave-cursor"),
      kStart + "begin 0; end 0 0 calls 1; begin 1; end 1 0 calls 1; lib_finish; unloading; done 2");
}

TEST(SessionWithoutCalls, StartsAndFinishes) {
  PluginTask task = TaskFor(IPAV_MISBEHAVING_PLUGIN);
  task.calls.clear();
  EXPECT_EQ(RecordsOf(task, "validate:throw"),
            "loading; get_validation_point; lib_init; lib_finish; unloading; done 0");
}

TEST(SessionWithAnotherFile, TellsWhyItIsNoPlugin) {
  EXPECT_EQ(RecordsOf(TaskFor(IPAV_INCOMPLETE_PLUGIN), ""),
            "loading; unusable: not a validation plug-in: no entry point \"validate\"");
  EXPECT_EQ(RecordsOf(TaskFor("/nonexistent.so"), ""),
            "loading; unusable: cannot open shared object file: No such file or directory");
}

TEST(SessionWithTheRealPlugin, ReadsThroughTheDatabase) {
  uint64_t datastore_calls = 0;
  size_t ended = 0;
  RunPluginSession(TaskFor(IPAV_PLUGIN), [&](const Record& record) {
    const auto* end = std::get_if<EndRecord>(&record);
    if (end == nullptr) return;
    ++ended;
    EXPECT_EQ(end->result, 0);
    datastore_calls += end->datastore_calls;
  });
  EXPECT_EQ(ended, 2u);
  EXPECT_GT(datastore_calls, 0u);
}

}  // namespace
}  // namespace ipvald
