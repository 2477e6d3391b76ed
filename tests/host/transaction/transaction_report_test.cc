// The words for a verdict, which programs read, and a report that nothing was put into.
#include "transaction_report.h"

#include <gtest/gtest.h>

namespace ipvald {
namespace {

TEST(Verdict, HasItsName) {
  EXPECT_STREQ(NameOf(Verdict::kAccepted), "accepted");
  EXPECT_STREQ(NameOf(Verdict::kRejected), "rejected");
  EXPECT_STREQ(NameOf(Verdict::kPluginFailure), "plugin-failure");
}

TEST(NewReport, IsThatOfATransactionThatConcernedNothing) {
  const TransactionReport report;
  EXPECT_EQ(report.verdict, Verdict::kAccepted);
  EXPECT_TRUE(report.calls.empty());
  EXPECT_FALSE(report.decisive);
  EXPECT_EQ(report.diagnostic + report.stage + report.output, "");
  EXPECT_EQ(report.open_cursors, 0u);
}

TEST(NewCall, HasNoAnswer) {
  const CallReport call;
  EXPECT_EQ(call.answer, Answer::kNone);
  EXPECT_FALSE(call.message);
}

}  // namespace
}  // namespace ipvald
