// Whatever a plug-in does, the host says so and stays whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "configuration_file.h"
#include "data_model.h"
#include "report_json.h"
#include "report_text.h"
#include "support/run_program.h"
#include "transaction.h"

namespace ipvald {
namespace {

using testing::HasSubstr;

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

// One library call after the other in one process: no transaction knows of an earlier one.
class Sequence : public testing::Test {
 protected:
  std::string VerdictOn(const std::string& file) {
    const TransactionReport report = RunTransaction(
        running_, ReadConfiguration(DataModel(), IPAV_SOURCE_DIR "/examples/" + file),
        {IPAV_PLUGIN, std::chrono::seconds(30), false});
    return TextReport(report, {});
  }

  std::shared_ptr<const confd::Snapshot> running_ =
      ReadConfiguration(DataModel(), IPAV_SOURCE_DIR "/examples/ra-running.xml");
};

TEST_F(Sequence, RejectedCandidatesLeaveNoTrace) {
  const std::string accepted = VerdictOn("ra-accepted.json");
  const std::string refused = VerdictOn("ra-interval-refused.json");
  EXPECT_EQ(accepted, "accepted\n");
  EXPECT_EQ(refused.substr(0, 9), "rejected\n");
  for (const char* between : {"ra-interval-refused.json", "ra-lifetime-refused.json"}) {
    EXPECT_EQ(VerdictOn(between).substr(0, 9), "rejected\n");
    EXPECT_EQ(VerdictOn("ra-accepted.json"), accepted) << between;
    EXPECT_EQ(VerdictOn("ra-interval-refused.json"), refused) << between;
  }
}

TEST_F(Sequence, FailedPluginLeavesNoTrace) {
  const std::string accepted = VerdictOn("ra-accepted.json");
  setenv("MISBEHAVE", "validate:abort", 1);
  const TransactionReport failed =
      RunTransaction(running_, confd::Snapshot::Empty(DataModel()),
                     {IPAV_MISBEHAVING_PLUGIN, std::chrono::seconds(30), false});
  unsetenv("MISBEHAVE");
  EXPECT_EQ(failed.verdict, Verdict::kPluginFailure);
  EXPECT_EQ(VerdictOn("ra-accepted.json"), accepted);
}

TEST_F(Sequence, NotAPluginLeavesNoTrace) {
  const auto candidate = confd::Snapshot::Empty(DataModel());
  EXPECT_THROW(RunTransaction(running_, candidate,
                              {IPAV_INCOMPLETE_PLUGIN, std::chrono::seconds(30), false}),
               InputError);
  EXPECT_EQ(VerdictOn("ra-accepted.json"), "accepted\n");
}

}  // namespace
}  // namespace ipvald
