// Scripts decide by these numbers.
#include "exit_status.h"

#include <gtest/gtest.h>

#include <csignal>

namespace ipvald {
namespace {

TEST(ExitStatus, FollowsFromTheVerdict) {
  EXPECT_EQ(StatusOf(Verdict::kAccepted), 0);
  EXPECT_EQ(StatusOf(Verdict::kRejected), 1);
  EXPECT_EQ(StatusOf(Verdict::kPluginFailure), 3);
}

TEST(ExitStatus, WithoutAVerdictIsTwo) { EXPECT_EQ(kNoVerdict, 2); }

TEST(ExitStatus, OfASignalIsThatOfShells) {
  EXPECT_EQ(StatusOfSignal(SIGINT), 130);
  EXPECT_EQ(StatusOfSignal(SIGTERM), 143);
}

}  // namespace
}  // namespace ipvald
