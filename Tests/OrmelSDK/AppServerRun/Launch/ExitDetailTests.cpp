#include "OrmelSDK/AppServerRun/Launch/ExitDetail.h"

#include <gtest/gtest.h>

namespace ormel::detail {
namespace {

TEST(ExitDetail, FollowsTheReasonOfTheEnd) {
  EXPECT_EQ(exitDetail({TerminationReason::exit, 0}), "exit status 0");
  EXPECT_EQ(exitDetail({TerminationReason::exit, 255}), "exit status 255");
  EXPECT_EQ(exitDetail({TerminationReason::uncaughtSignal, 9}), "signal 9");
  EXPECT_EQ(exitDetail(Termination()), "status 0 (unknown: reaped by another part of this process)");
}

}  // namespace
}  // namespace ormel::detail
