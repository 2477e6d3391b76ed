// Whatever a plug-in does, the host says so and stays whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "configuration_file.h"
#include "report_json.h"
#include "support/data_model.h"
#include "support/run_program.h"
#include "transaction.h"

namespace ipvald {
namespace {

using testing::HasSubstr;

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();

const std::string kCandidate = IPAV_SOURCE_DIR "/examples/ra-running.json";

ProgramResult Misbehave(const std::string& order, const std::string& format = "text",
                        const std::string& trace = "--format") {
  std::vector<std::string> command = {IPAV_IPVALD, "check", "--plugin", IPAV_MISBEHAVING_PLUGIN,
                                      "--timeout", "1",     kCandidate, "--format",
                                      format};
  if (trace == "--trace") command.push_back(trace);
  return RunProgram(command, {"", {"MISBEHAVE=" + order}});
}

// The point that is called first for the candidate, and its path.
const char kFirstCall[] =
    "point:      intf_l3_name_validation\n"
    "path:       /config/interface/l3\n";

struct FailureCase {
  const char* name;
  const char* order;
  const char* where;  // point and path, or stage
  const char* diagnostic;
};

std::ostream& operator<<(std::ostream& out, const FailureCase& row) { return out << row.name; }

const FailureCase kFailures[] = {
    {"Abort", "validate:abort", kFirstCall, "killed by signal 6 (Aborted)"},
    {"Throw", "validate:throw", kFirstCall, "exception std::invalid_argument: stoul"},
    {"ThrowNoException", "validate:throw-int", kFirstCall, "exception of type int"},
    {"Kill", "validate:kill", kFirstCall, "killed by signal 9 (Killed)"},
    {"KillGroup", "validate:kill-group", kFirstCall, "killed by signal 9 (Killed)"},
    {"Hang", "validate:hang", kFirstCall, "no answer within 1 s"},
    {"Exit", "validate:exit", kFirstCall, "the process ended with status 0"},
    {"QuickExit", "validate:quick-exit", kFirstCall, "the process ended with status 0"},
    {"ExitWithStatus", "validate:exit-9", kFirstCall, "the process ended with status 9"},
    // With these the host's own part of the process says that it has too little of something.
    {"ExitAsWithTooFewDescriptors", "validate:exit-123", kFirstCall,
     "the process ended with status 123"},
    {"ExitAsWithoutMemory", "validate:exit-124", kFirstCall, "the process ended with status 124"},
    {"CloseDescriptors", "validate:close", kFirstCall, "the results could not be passed on"},
    {"Garbage", "validate:garbage", kFirstCall, "damaged results: a result record is too large"},
    {"Return7", "validate:return-7", kFirstCall, "validate returned 7"},
    {"AbortWhileLoading", "loading:abort", "stage:      loading\n", "killed by signal 6 (Aborted)"},
    {"ExitInName", "get_validation_point:exit", "stage:      get_validation_point\n",
     "the process ended with status 0"},
    {"NameReturns7", "get_validation_point:return-7", "stage:      get_validation_point\n",
     "get_validation_point returned 7"},
    {"ThrowInInit", "lib_init:throw", "stage:      lib_init\n",
     "exception std::invalid_argument: stoul"},
    {"InitReturns7", "lib_init:return-7", "stage:      lib_init\n", "lib_init returned 7"},
    {"HangInInit", "lib_init:hang", "stage:      lib_init\n", "no answer within 1 s"},
    {"AbortInFinish", "lib_finish:abort", "stage:      lib_finish\n",
     "killed by signal 6 (Aborted)"},
    {"FinishReturns7", "lib_finish:return-7", "stage:      lib_finish\n", "lib_finish returned 7"},
    // Results that the plug-in writes in the host's name.
    {"BeginOfACallThatThereIsNot", "validate:forge-begin-far", kFirstCall,
     "impossible result: begin of call 4000000000 in call 0"},
    {"EndOfACallThatThereIsNot", "validate:forge-end-far", kFirstCall,
     "impossible result: end of call 4000000000 in call 0"},
    {"BeginOfTheCallItIsIn", "validate:forge-begin-now", kFirstCall,
     "impossible result: begin of call 0 in call 0"},
    {"BeginInACall", "validate:forge-begin-next", kFirstCall,
     "impossible result: begin of call 1 in call 0"},
    {"EndOfALaterCall", "validate:forge-end-next", kFirstCall,
     "impossible result: end of call 1 in call 0"},
    {"CallThatThereIsNot", "validate:forge-begin-and-end-far", "stage:      \n",
     "impossible result: begin of call 4000000000 before call 1"},
    {"AnswersToMoreThanAllCalls", "validate:forge-all-and-more", "stage:      \n",
     "impossible result: begin of call 26 behind the last call"},
    {"BeginAfterARefusal", "validate:forge-begin-after-refusal-exit", "stage:      \n",
     "impossible result: begin of call 1 behind the last call"},
    {"AcceptedBeforeTheRefusal", "validate:forge-end-now-refuse", "stage:      \n",
     "impossible result: end of call 0 before call 1"},
    {"AcceptedAndExit", "validate:forge-end-now-exit", "stage:      \n",
     "the process ended with status 0"},
    {"DoneInACall", "validate:forge-done-exit", kFirstCall, "impossible result: done in call 0"},
    {"DoneBeforeAllAreAnswered", "validate:forge-done-after-answer-exit", "stage:      \n",
     "impossible result: done before call 1"},
    {"FinishBeforeAllAreAnswered", "validate:forge-finish-exit", "stage:      \n",
     "impossible result: stage lib_finish before call 1"},
    {"RestOfTheRunBeforeAllAreAnswered", "validate:forge-rest-of-the-run-exit", "stage:      \n",
     "impossible result: stage lib_finish before call 1"},
    {"UnusableInACall", "validate:forge-unusable-exit", kFirstCall,
     "impossible result: plug-in unusable in call 0"},
    {"StageInACall", "validate:forge-stage-again-exit", kFirstCall,
     "impossible result: stage lib_init in call 0"},
    {"FailedInACall", "validate:forge-failed-exit", kFirstCall, "forged"},
    {"FailedWithoutReason", "validate:forge-failed-without-reason-exit", kFirstCall,
     "the process ended with status 0"},
    {"PartOfARecord", "validate:forge-part-exit", kFirstCall, "the process ended with status 0"},
    {"FalseLength", "validate:forge-false-length", kFirstCall, "the process ended with status 0"},
    {"EndWithoutBegin", "lib_init:forge-end-now-exit", "stage:      lib_init\n",
     "impossible result: end of call 0 before call 0"},
    {"EndBeforeTheFirstEntryPoint", "loading:forge-end-now", "stage:      loading\n",
     "impossible result: end of call 0 in stage loading"},
    {"DoneWhileLoading", "loading:forge-done-exit", "stage:      loading\n",
     "impossible result: done in stage loading"},
    {"DoneInName", "get_validation_point:forge-done-exit", "stage:      get_validation_point\n",
     "impossible result: done in stage get_validation_point"},
    {"DoneInInit", "lib_init:forge-done-exit", "stage:      lib_init\n",
     "impossible result: done before call 0"},
    {"DoneInFinish", "lib_finish:forge-done-exit", "stage:      lib_finish\n",
     "impossible result: done in stage lib_finish"},
    {"BeginInFinish", "lib_finish:forge-begin-now", "stage:      lib_finish\n",
     "impossible result: begin of call 0 in stage lib_finish"},
    {"EndInFinish", "lib_finish:forge-end-far", "stage:      lib_finish\n",
     "impossible result: end of call 4000000000 in stage lib_finish"},
};

class PluginFailure : public testing::TestWithParam<FailureCase> {};

TEST_P(PluginFailure, IsAVerdictOfItsOwn) {
  const ProgramResult result = Misbehave(GetParam().order);
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, std::string("plugin-failure\n") + GetParam().where +
                            "diagnostic: " + GetParam().diagnostic + "\n");
}

INSTANTIATE_TEST_SUITE_P(Ways, PluginFailure, testing::ValuesIn(kFailures),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PluginAssertion, IsShownBesideTheSignal) {
  const ProgramResult result = Misbehave("validate:assert");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out,
              HasSubstr("\ndiagnostic: killed by signal 6 (Aborted)\noutput:     ipvald: "));
  EXPECT_THAT(result.out, HasSubstr("Assertion `how == \"good\"' failed.\n"));
}

TEST(PluginException, WhileLoadingIsAPluginFailure) {
  // Whether it comes through the loader or ends the process there depends on the compiler.
  const ProgramResult result = Misbehave("loading:throw-int");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out.find("plugin-failure\nstage:      loading\ndiagnostic: "), 0u);
}

TEST(PluginCrash, IsAPluginFailure) {
  // A sanitizer turns the signal into an exit status of its own.
  const ProgramResult result = Misbehave("validate:crash");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out.find(std::string("plugin-failure\n") + kFirstCall), 0u);
}

TEST(PluginOutput, DoesNotReachTheVerdict) {
  const ProgramResult result = Misbehave("validate:print");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "accepted\n");
  EXPECT_EQ(result.err, "");
}

TEST(PluginOutput, IsInTheTraceAndInJson) {
  const ProgramResult trace = Misbehave("lib_finish:print", "text", "--trace");
  EXPECT_THAT(
      trace.out,
      HasSubstr("\noutput:     said on standard error\noutput:     said on standard output\n"));
  const auto verdict = nlohmann::json::parse(Misbehave("lib_finish:print", "json").out);
  EXPECT_EQ(verdict["output"], "said on standard error\nsaid on standard output\n");
}

TEST(PluginOutput, OnlyTheEndOfMuchIsKept) {
  const ProgramResult result = Misbehave("validate:print-much", "json");
  EXPECT_EQ(result.status, 3);
  const std::string output = nlohmann::json::parse(result.out)["output"];
  EXPECT_EQ(output.size(), 65536u);
  EXPECT_EQ(output.substr(output.size() - 15), "...\nlast words\n");
}

// Sixty MiB for each of the calls, and for as many more as the host would take.
TEST(PluginResults, WithoutEndDoNotFillTheMemory) {
  const ProgramResult result =
      RunProgram({IPAV_IPVALD, "check", "--plugin", IPAV_MISBEHAVING_PLUGIN, kCandidate},
                 {"", {"MISBEHAVE=validate:forge-flood"}});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(
      result.out,
      HasSubstr("\ndiagnostic: damaged results: the result records are too large together\n"));
  if (!kSanitized) {
    EXPECT_LT(result.peak_memory_kib, 512 * 1024);
  }
}

TEST(PluginProcess, WhatItLeavesBehindIsEnded) {
  // The program's output would stay open, and this test wait, as long as a process of the plug-in
  // lives.
  const ProgramResult result = Misbehave("validate:leave-process");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "accepted\n");
}

TEST(PluginProcess, SignalToTheHostEndsBoth) {
  const ProgramResult result = Misbehave("validate:signal-host");
  EXPECT_EQ(result.status, 128 + SIGTERM);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
}

TEST(PluginRefusal, MessageIsShown) {
  const ProgramResult result = Misbehave("validate:refuse");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, std::string("rejected\n") + kFirstCall + "message:    refused on order\n");
}

TEST(PluginRefusal, WithoutAMessageIsShownAsSuch) {
  const ProgramResult text = Misbehave("validate:refuse-silently");
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.out,
            std::string("rejected\n") + kFirstCall + "message:    (refused without a message)\n");
  const ProgramResult json = Misbehave("validate:refuse-silently", "json");
  EXPECT_EQ(json.status, 1);
  EXPECT_TRUE(nlohmann::json::parse(json.out)["message"].is_null());
}

TEST(PluginRefusal, MessageThatIsNotUtf8) {
  const ProgramResult text = Misbehave("validate:refuse-not-utf8");
  EXPECT_THAT(text.out, HasSubstr("message:    not \xff UTF-8\n"));
  const ProgramResult json = Misbehave("validate:refuse-not-utf8", "json");
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(nlohmann::json::parse(json.out)["message"], "not \xef\xbf\xbd UTF-8");
}

TEST(PluginRefusal, EndsTheCalls) {
  const auto verdict = nlohmann::json::parse(Misbehave("validate:refuse", "json").out);
  EXPECT_EQ(verdict["verdict"], "rejected");
  EXPECT_EQ(verdict["calls"].size(), 1u);
}

TEST(PluginRefusal, FailureAfterwardsOutweighsIt) {
  const ProgramResult result = Misbehave("validate:refuse,lib_finish:abort");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out,
            "plugin-failure\nstage:      lib_finish\ndiagnostic: killed by signal 6 (Aborted)\n");
}

TEST(PluginCursor, LeftOpenIsCounted) {
  const auto verdict = nlohmann::json::parse(Misbehave("validate:leave-cursor", "json").out);
  EXPECT_EQ(verdict["verdict"], "accepted");
  EXPECT_EQ(verdict["open_cursors"], verdict["calls"].size());
}

TEST(PluginWarning, AcceptsAndIsShown) {
  const ProgramResult text = Misbehave("validate:warn");
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(
      text.out.find(
          "accepted\nwarning:    intf_l3_name_validation /config/interface/l3: think twice\n"),
      0u);
  const auto json = nlohmann::json::parse(Misbehave("validate:warn", "json").out);
  EXPECT_EQ(json["verdict"], "accepted");
  EXPECT_GT(json["calls"].size(), 1u);
  EXPECT_EQ(json["warnings"].size(), json["calls"].size());
  EXPECT_EQ(json["warnings"][0]["message"], "think twice");
}

TEST(PluginFaults, AreInJsonAndInTheTrace) {
  const auto json = nlohmann::json::parse(Misbehave("validate:fault", "json").out);
  EXPECT_EQ(json["verdict"], "accepted");
  ASSERT_EQ(json["faults"].size(), json["calls"].size());
  EXPECT_EQ(json["faults"][0],
            nlohmann::json::parse(
                R"({"call": 0, "level": 2, "function": "Function", "file": "file.cc",
                                       "line": 12, "message": "a fault on order"})"));
  EXPECT_EQ(Misbehave("validate:fault").out, "accepted\n");
  EXPECT_THAT(Misbehave("validate:fault", "text", "--trace").out,
              HasSubstr("\n   fault: level 2 Function file.cc:12 a fault on order\n"));
}

const std::string kExamples = IPAV_SOURCE_DIR "/examples/";
const std::string kRunning = kExamples + "ra-running.xml";

// One check: a candidate, and how the misbehaving plug-in shall take it; the real one judges when
// there is no order.
struct Check {
  const char* name;
  const char* candidate;  // a file of the examples, or the text of a configuration
  const char* order;
  int status;  // of the program
};

std::ostream& operator<<(std::ostream& out, const Check& row) { return out << row.name; }

// Their verdicts must be the same whatever came between.
const Check kJudged[] = {
    {"Accepted", "ra-accepted.json", "", 0},
    {"IntervalRefused", "ra-interval-refused.json", "", 1},
    {"LifetimeRefused", "ra-lifetime-refused.json", "", 1},
    {"PluginFailure", "ra-accepted.json", "validate:abort", 3},
};

const Check kBetween[] = {
    {"Accepted", "ra-accepted.json", "", 0},
    {"EmptyConfiguration", "{}", "", 0},
    {"IntervalRefused", "ra-interval-refused.json", "", 1},
    {"LifetimeRefused", "ra-lifetime-refused.json", "", 1},
    {"RefusedOnOrder", "ra-accepted.json", "validate:refuse", 1},
    {"SyntaxError", "{\"velmor-config:config\": {", "", 2},
    {"UnknownNode", "{\"velmor-config:config\": {\"colour\": 1}}", "", 2},
    {"DuplicateEntry",
     R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7"},{"name":"7"}]}}})",
     "", 2},
    {"Hang", "ra-accepted.json", "validate:hang", 3},
    {"Kill", "ra-accepted.json", "validate:kill", 3},
    {"KillGroup", "ra-accepted.json", "validate:kill-group", 3},
    {"Abort", "ra-accepted.json", "validate:abort", 3},
    {"Exception", "ra-accepted.json", "validate:throw", 3},
    {"ExceptionInInit", "ra-accepted.json", "lib_init:throw", 3},
    {"CursorLeftOpen", "ra-accepted.json", "validate:leave-cursor", 0},
    {"ProcessLeftBehind", "ra-accepted.json", "validate:leave-process", 0},
};

bool IsExample(const Check& check) { return std::string_view(check.candidate).starts_with("ra-"); }

const char* PluginFor(const Check& check) {
  return *check.order == '\0' ? IPAV_PLUGIN : IPAV_MISBEHAVING_PLUGIN;
}

Verdict VerdictOf(int status) {
  if (status == 0) return Verdict::kAccepted;
  return status == 1 ? Verdict::kRejected : Verdict::kPluginFailure;
}

// A JSON report without what differs from run to run.
std::string WithoutTimes(const std::string& report) {
  auto json = nlohmann::json::parse(report);
  for (auto& call : json["calls"]) call.erase("microseconds");
  return json.dump();
}

// No check knows of an earlier one.
class Checks : public testing::Test {
 protected:
  // By library calls in one process, with one running configuration.
  std::string InProcess(const Check& check) const {
    setenv("MISBEHAVE", check.order, 1);
    std::string outcome;
    try {
      const auto candidate =
          IsExample(check) ? ReadConfiguration(tests::DataModel(), kExamples + check.candidate)
                           : ParseConfiguration(tests::DataModel(), "text", check.candidate);
      const TransactionReport report = RunTransaction(
          running_, candidate.snapshot, {PluginFor(check), std::chrono::seconds(1), false});
      EXPECT_EQ(report.verdict, VerdictOf(check.status));
      outcome = WithoutTimes(JsonReport(report));
    } catch (const InputError& error) {
      EXPECT_EQ(check.status, 2) << error.what();
      outcome = error.what();
    }
    unsetenv("MISBEHAVE");
    return outcome;
  }

  // By runs of the program.
  static std::string ByProgram(const Check& check) {
    const std::string candidate = IsExample(check) ? kExamples + check.candidate : "-";
    const ProgramResult result =
        RunProgram({IPAV_IPVALD, "check", "--running", kRunning, "--format", "json", "--timeout",
                    "1", "--plugin", PluginFor(check), candidate},
                   {check.candidate, {std::string("MISBEHAVE=") + check.order}});
    EXPECT_EQ(result.status, check.status) << result.err;
    return check.status == 2 ? result.err : WithoutTimes(result.out);
  }

  std::shared_ptr<const store::Snapshot> running_ =
      ReadConfiguration(tests::DataModel(), kRunning).snapshot;
};

class Sequence : public Checks, public testing::WithParamInterface<Check> {};

TEST_P(Sequence, LeavesNoTraceInTheProcess) {
  for (const Check& judged : kJudged) {
    const std::string before = InProcess(judged);
    InProcess(GetParam());
    EXPECT_EQ(InProcess(judged), before) << judged;
  }
}

TEST_P(Sequence, LeavesNoTraceForTheProgram) {
  for (const Check& judged : kJudged) {
    const std::string before = ByProgram(judged);
    ByProgram(GetParam());
    EXPECT_EQ(ByProgram(judged), before) << judged;
  }
}

INSTANTIATE_TEST_SUITE_P(Between, Sequence, testing::ValuesIn(kBetween),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Checks, NotAPluginLeavesNoTrace) {
  const std::string before = InProcess(kJudged[0]);
  EXPECT_THROW(RunTransaction(running_, store::Snapshot::Empty(tests::DataModel()),
                              {IPAV_INCOMPLETE_PLUGIN, std::chrono::seconds(1), false}),
               InputError);
  EXPECT_EQ(InProcess(kJudged[0]), before);
}

}  // namespace
}  // namespace ipvald
