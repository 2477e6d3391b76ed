// One transaction with a plug-in that does what it is told: the report on it.
#include "transaction.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ostream>
#include <string>

#include "input_error.h"
#include "store/snapshot.h"
#include "support/data_model.h"

namespace ipvald {
namespace {

using SnapshotPtr = std::shared_ptr<const store::Snapshot>;

// A configuration with the L3 interfaces 7 and 8; `members` are further ones of 8.
SnapshotPtr WithL3(const std::string& members) {
  return store::Snapshot::FromText(
      tests::DataModel(),
      R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7"},)"
      R"({"name":"8")" +
          members + "}]}}}");
}

const char kRa[] = R"(,"ipv6":{"nd":{"ra":{"max-interval":4}}})";

// A change that concerns three points, with the misbehaving plug-in, which does `order`.
TransactionReport RunOrdered(const std::string& order) {
  setenv("MISBEHAVE", order.c_str(), 1);
  return RunTransaction(WithL3(""), WithL3(kRa), {IPAV_MISBEHAVING_PLUGIN});
}

const char* NameOf(Answer answer) {
  const char* const kNames[] = {"none", "accepted", "warning", "rejected", "other"};
  return kNames[static_cast<size_t>(answer)];
}

// What came of the transaction and of each call, without times and paths.
std::string Outcome(const TransactionReport& report) {
  std::string text = NameOf(report.verdict);
  if (report.decisive) text += " by " + std::to_string(*report.decisive);
  const bool failed = report.verdict == Verdict::kPluginFailure;
  if (failed && !report.decisive) text += " in " + report.stage;
  if (!report.diagnostic.empty()) text += ": " + report.diagnostic;
  for (const CallReport& call : report.calls) {
    text += std::string("; ") + NameOf(call.answer) + " " + std::to_string(call.result);
    if (call.message) text += " " + *call.message;
  }
  return text;
}

struct OutcomeCase {
  const char* name;
  const char* order;
  const char* outcome;
};

std::ostream& operator<<(std::ostream& out, const OutcomeCase& row) { return out << row.name; }

const OutcomeCase kOutcomes[] = {
    {"Accepted", "", "accepted; accepted 0; accepted 0; accepted 0"},
    {"Warnings", "validate:warn",
     "accepted; warning -3 think twice; warning -3 think twice; warning -3 "
     "think twice"},
    {"Rejected", "validate:refuse", "rejected by 0; rejected -1 refused on order"},
    {"RejectedWithoutAMessage", "validate:refuse-silently", "rejected by 0; rejected -1"},
    {"ResultWithoutMeaning", "validate:return-7",
     "plugin-failure by 0: validate returned 7; other 7"},
    {"FailureInACall", "validate:throw",
     "plugin-failure by 0: exception std::invalid_argument: stoul; none 0"},
    {"FailureBeforeTheCalls", "lib_init:return-7",
     "plugin-failure in lib_init: lib_init returned 7"},
    {"FailureBehindTheCalls", "lib_finish:return-7",
     "plugin-failure in lib_finish: lib_finish returned 7; accepted 0; accepted 0; accepted "
     "0"},
    {"FailureBehindARefusal", "validate:refuse,lib_finish:return-7",
     "plugin-failure in lib_finish: lib_finish returned 7; rejected -1 refused on order"},
    {"FailureBehindAResultWithoutMeaning", "validate:return-7,lib_finish:return-7",
     "plugin-failure in lib_finish: lib_finish returned 7; other 7"},
};

class Transaction : public testing::TestWithParam<OutcomeCase> {};

TEST_P(Transaction, HasItsVerdict) {
  EXPECT_EQ(Outcome(RunOrdered(GetParam().order)), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(Orders, Transaction, testing::ValuesIn(kOutcomes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Report, DescribesTheCalls) {
  const TransactionReport report = RunOrdered("");
  ASSERT_EQ(report.calls.size(), 3u);
  EXPECT_EQ(report.calls[0].point, "intf_l3_name_validation");
  EXPECT_EQ(report.calls[0].id, "vp-intf-l3-name");
  EXPECT_EQ(report.calls[0].path, "/config/interface/l3");
  EXPECT_EQ(report.calls[1].point, "validate_ipv6_nd_ra_interval");
  EXPECT_EQ(report.calls[1].id, "vp-ipv6-nd-ra-interval");
  EXPECT_EQ(report.calls[1].path, "/config/interface/l3{8}/ipv6/nd/ra");
  EXPECT_EQ(report.calls[2].point, "validate_ipv6_nd_ra_lifetime");
  for (const CallReport& call : report.calls) {
    EXPECT_EQ(call.reason, "changed /config/interface/l3{8}/ipv6/nd/ra/max-interval");
  }
}

TEST(Report, DescribesTheCallThatFailed) {
  const TransactionReport report = RunOrdered("validate:throw");
  ASSERT_EQ(report.calls.size(), 1u);
  EXPECT_EQ(report.calls[0].point, "intf_l3_name_validation");
  EXPECT_EQ(report.calls[0].path, "/config/interface/l3");
}

TEST(Report, HoldsFaultsCursorsAndOutput) {
  const TransactionReport faults = RunOrdered("validate:fault,lib_init:print");
  ASSERT_EQ(faults.calls.size(), 3u);
  for (const CallReport& call : faults.calls) {
    ASSERT_EQ(call.faults.size(), 1u);
    const FaultReport& fault = call.faults[0];
    EXPECT_EQ(fault.level, 2);
    EXPECT_EQ(fault.function, "Function");
    EXPECT_EQ(fault.file, "file.cc");
    EXPECT_EQ(fault.line, 12);
    EXPECT_EQ(fault.message, "a fault on order");
  }
  EXPECT_NE(faults.output.find("said on standard output\n"), std::string::npos);
  EXPECT_EQ(faults.open_cursors, 0u);
  const TransactionReport cursors = RunOrdered("validate:leave-cursor");
  EXPECT_EQ(cursors.open_cursors, 3u);
  EXPECT_EQ(cursors.calls[1].datastore_calls, 1u);
}

TEST(NoChange, ConcernsNoPoint) {
  setenv("MISBEHAVE", "validate:abort", 1);
  const TransactionReport report =
      RunTransaction(WithL3(kRa), WithL3(kRa), {IPAV_MISBEHAVING_PLUGIN});
  EXPECT_EQ(Outcome(report), "accepted");
}

TEST(Log, IsKeptWhenAskedFor) {
  const SnapshotPtr candidate = WithL3("");
  const SnapshotPtr running = store::Snapshot::FromText(tests::DataModel(), "{}");
  const auto log_of = [&](bool log) {
    const TransactionReport report =
        RunTransaction(running, candidate, {.plugin = IPAV_PLUGIN, .log = log});
    EXPECT_EQ(report.verdict, Verdict::kAccepted);
    std::string lines;
    for (const CallReport& call : report.calls) {
      for (const std::string& line : call.log) lines += line + "\n";
    }
    return lines;
  };
  EXPECT_NE(log_of(true).find("There is no path for '/config/interface/l3{7}/ipv6/nd/ra/"),
            std::string::npos);
  EXPECT_EQ(log_of(false), "");
}

TEST(Timeout, IsForAllCallsTogether) {
  setenv("MISBEHAVE", "validate:hang", 1);
  const TransactionReport report =
      RunTransaction(WithL3(""), WithL3(kRa),
                     {.plugin = IPAV_MISBEHAVING_PLUGIN, .timeout = std::chrono::seconds(1)});
  EXPECT_EQ(Outcome(report), "plugin-failure by 0: no answer within 1 s; none 0");
}

TEST(FileThatIsNoPlugin, IsAnInputError) {
  const std::string file = IPAV_INCOMPLETE_PLUGIN;
  try {
    RunTransaction(WithL3(""), WithL3(kRa), {file});
    ADD_FAILURE() << "loaded";
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), file + ": not a validation plug-in: no entry point \"validate\"");
  }
}

}  // namespace
}  // namespace ipvald
