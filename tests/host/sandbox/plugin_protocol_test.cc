// Every record in every state of a plug-in's run: what is possible, and what is said about the
// rest.
#include "plugin_protocol.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "confd_lib.h"

namespace ipvald {
namespace {

using Records = std::vector<Record>;

EndRecord End(uint32_t call, int32_t result = CONFD_OK) {
  EndRecord end;
  end.call = call;
  end.result = result;
  return end;
}

EndRecord EndWithText(uint32_t call, int32_t result, const char* text) {
  EndRecord end = End(call, result);
  end.text = text;
  return end;
}

const Record kLoading = StageRecord{"loading"};
const Record kNaming = StageRecord{"get_validation_point"};
const Record kInit = StageRecord{"lib_init"};
const Record kFinish = StageRecord{"lib_finish"};
const Record kUnloading = StageRecord{"unloading"};
const Record kUnusable = UnusableRecord{"no entry point"};
const Record kFailed = FailedRecord{"exception\nhere"};
const Record kDone = DoneRecord{2};

PluginRun RunOf(uint32_t calls, const Records& records) {
  PluginProtocol protocol(calls);
  for (const Record& record : records) protocol.Take(record);
  return protocol.run();
}

// A task of two calls up to some state, the name of which is what a diagnostic says.
struct StateCase {
  const char* name;
  const char* text;
  Records before;
  std::set<std::string> possible;  // names of kRecords
};

std::ostream& operator<<(std::ostream& out, const StateCase& row) { return out << row.name; }

// Names are as a diagnostic says them.
const std::map<std::string, Record> kRecords = {
    {"stage loading", kLoading},
    {"stage get_validation_point", kNaming},
    {"stage lib_init", kInit},
    {"stage lib_finish", kFinish},
    {"stage unloading", kUnloading},
    {"stage ", StageRecord{""}},
    {"stage elsewhere now", StageRecord{"elsewhere\nnow"}},
    {"begin of call 0", BeginRecord{0}},
    {"begin of call 1", BeginRecord{1}},
    {"begin of call 2", BeginRecord{2}},
    {"begin of call 4294967295", BeginRecord{4294967295}},
    {"end of call 0", End(0)},
    {"end of call 1", End(1)},
    {"end of call 2", End(2)},
    {"end of call 4294967295", End(4294967295)},
    {"plug-in unusable", kUnusable},
    {"failure", kFailed},
    {"done", kDone},
};

Records Joined(Records records, const Records& more) {
  records.insert(records.end(), more.begin(), more.end());
  return records;
}

const Records kLoaded = {kLoading, kNaming, kInit};
const Records kAllAnswered = Joined(kLoaded, {BeginRecord{0}, End(0), BeginRecord{1}, End(1)});
const Records kRefused = Joined(kLoaded, {BeginRecord{0}, End(0, CONFD_ERR)});

const StateCase kStates[] = {
    {"Start", "before the first stage", {}, {"stage loading"}},
    {"Loading",
     "in stage loading",
     {kLoading},
     {"stage get_validation_point", "plug-in unusable", "failure"}},
    {"Naming", "in stage get_validation_point", {kLoading, kNaming}, {"stage lib_init", "failure"}},
    {"Init", "before call 0", kLoaded, {"begin of call 0", "failure"}},
    {"FirstCall", "in call 0", Joined(kLoaded, {BeginRecord{0}}), {"end of call 0", "failure"}},
    {"FirstAccepted",
     "before call 1",
     Joined(kLoaded, {BeginRecord{0}, End(0)}),
     {"begin of call 1", "failure"}},
    {"FirstAcceptedWithWarning",
     "before call 1",
     Joined(kLoaded, {BeginRecord{0}, End(0, CONFD_VALIDATION_WARN)}),
     {"begin of call 1", "failure"}},
    {"FirstRefused", "behind the last call", kRefused, {"stage lib_finish", "failure"}},
    {"FirstOfUnknownResult",
     "behind the last call",
     Joined(kLoaded, {BeginRecord{0}, End(0, 7)}),
     {"stage lib_finish", "failure"}},
    {"LastCall",
     "in call 1",
     Joined(kLoaded, {BeginRecord{0}, End(0), BeginRecord{1}}),
     {"end of call 1", "failure"}},
    {"AllAnswered", "behind the last call", kAllAnswered, {"stage lib_finish", "failure"}},
    {"LastRefused",
     "behind the last call",
     Joined(kLoaded, {BeginRecord{0}, End(0), BeginRecord{1}, End(1, CONFD_ERR)}),
     {"stage lib_finish", "failure"}},
    {"Finishing",
     "in stage lib_finish",
     Joined(kAllAnswered, {kFinish}),
     {"stage unloading", "failure"}},
    {"Unloading",
     "in stage unloading",
     Joined(kAllAnswered, {kFinish, kUnloading}),
     {"done", "failure"}},
    {"Done", "behind the end", Joined(kAllAnswered, {kFinish, kUnloading, kDone}), {}},
    {"Unusable", "behind the end", {kLoading, kUnusable}, {}},
};

class ProtocolState : public testing::TestWithParam<StateCase> {};

TEST_P(ProtocolState, TakesWhatIsPossibleAndNothingElse) {
  const StateCase& row = GetParam();
  const PluginRun before = RunOf(2, row.before);
  ASSERT_EQ(before.failure, "");
  for (const auto& [name, record] : kRecords) {
    PluginProtocol protocol(2);
    for (const Record& earlier : row.before) protocol.Take(earlier);
    protocol.Take(record);
    const bool is_possible = row.possible.contains(name);
    if (name == "failure" && is_possible) {
      EXPECT_EQ(protocol.run().failure, "exception here");
    } else {
      EXPECT_EQ(protocol.run().failure,
                is_possible ? "" : "impossible result: " + name + " " + row.text)
          << name;
    }
    if (is_possible) continue;
    // What was known stays as it was.
    EXPECT_FALSE(protocol.is_done()) << name;
    EXPECT_EQ(protocol.run().ended.size(), before.ended.size()) << name;
    EXPECT_EQ(protocol.run().in_call, before.in_call) << name;
    EXPECT_EQ(protocol.run().stage, before.stage) << name;
    EXPECT_EQ(protocol.run().open_cursors, before.open_cursors) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(States, ProtocolState, testing::ValuesIn(kStates),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PluginProtocol, EveryPossibleRecordIsPossibleSomewhere) {
  std::set<std::string> possible;
  for (const StateCase& state : kStates)
    possible.insert(state.possible.begin(), state.possible.end());
  const std::set<std::string> expected = {"stage loading",   "stage get_validation_point",
                                          "stage lib_init",  "stage lib_finish",
                                          "stage unloading", "begin of call 0",
                                          "begin of call 1", "end of call 0",
                                          "end of call 1",   "plug-in unusable",
                                          "failure",         "done"};
  EXPECT_EQ(possible, expected);
}

TEST(PluginProtocol, KeepsWhatTheCallsAnswered) {
  const PluginRun run =
      RunOf(2, Joined(kLoaded, {BeginRecord{0}, EndWithText(0, CONFD_OK, "text with an acceptance"),
                                BeginRecord{1}, EndWithText(1, CONFD_ERR, "refused"), kFinish,
                                kUnloading, kDone}));
  EXPECT_EQ(run.failure, "");
  ASSERT_EQ(run.ended.size(), 2u);
  EXPECT_EQ(run.ended[0].text, "text with an acceptance");
  EXPECT_EQ(run.ended[1].result, CONFD_ERR);
  EXPECT_EQ(run.ended[1].text, "refused");
  EXPECT_FALSE(run.in_call);
  EXPECT_EQ(run.stage, "unloading");
  EXPECT_EQ(run.open_cursors, 2u);
}

TEST(PluginProtocol, TellsWhereThePluginIs) {
  EXPECT_EQ(RunOf(2, {kLoading, kNaming}).stage, "get_validation_point");
  const PluginRun run = RunOf(2, Joined(kLoaded, {BeginRecord{0}, End(0), BeginRecord{1}}));
  EXPECT_EQ(run.in_call, 1u);
  EXPECT_EQ(run.stage, "");
}

TEST(PluginProtocol, IsDoneOnlyAtTheEnd) {
  PluginProtocol protocol(2);
  EXPECT_FALSE(protocol.has_begun());
  for (const Record& record : Joined(kAllAnswered, {kFinish, kUnloading})) {
    protocol.Take(record);
    EXPECT_TRUE(protocol.has_begun());
    EXPECT_FALSE(protocol.is_done());
  }
  protocol.Take(kDone);
  EXPECT_TRUE(protocol.is_done());
  protocol.Take(BeginRecord{2});
  EXPECT_FALSE(protocol.is_done()) << "nothing comes behind the end";
}

TEST(PluginProtocol, WithoutCallsNoneIsPossible) {
  EXPECT_EQ(RunOf(0, Joined(kLoaded, {BeginRecord{0}})).failure,
            "impossible result: begin of call 0 behind the last call");
  EXPECT_EQ(RunOf(0, Joined(kLoaded, {kFinish, kUnloading, kDone})).failure, "");
}

TEST(PluginProtocol, UnusableKeepsItsReason) {
  PluginProtocol protocol(2);
  protocol.Take(kLoading);
  EXPECT_FALSE(protocol.unusable());
  protocol.Take(kUnusable);
  EXPECT_EQ(protocol.unusable(), "no entry point");
}

TEST(PluginProtocol, TheFirstFailureStays) {
  EXPECT_EQ(RunOf(2, {kLoading, kFailed, kDone}).failure, "exception here");
  EXPECT_EQ(RunOf(2, {kDone, kLoading}).failure, "impossible result: done before the first stage");
}

TEST(PluginProtocol, AFirstRecordThatIsImpossibleIsABegin) {
  PluginProtocol protocol(2);
  protocol.Take(kDone);
  EXPECT_TRUE(protocol.has_begun());
}

}  // namespace
}  // namespace ipvald
