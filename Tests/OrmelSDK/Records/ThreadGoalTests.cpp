#include "OrmelSDK/Records/ThreadGoal.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

ThreadGoalStatus statusReadFrom(const char* word) {
  return decoded<ThreadGoal>(R"({"threadId":"t","objective":"o","tokensUsed":1,"timeUsedSeconds":2,"createdAt":3,
                                 "updatedAt":4,"status":")" +
                             std::string(word) + "\"}")
      .status;
}

TEST(ThreadGoal, FollowsItsTable) {
  tests::checkRecord<ThreadGoal>(R"({"thread_id":"t","objective":"o","status":"paused","tokenBudget":9,
                                     "tokensUsed":1,"timeUsedSeconds":2,"createdAt":3.5,"updatedAt":4.5})");
}

TEST(ThreadGoal, IsReadFromEitherSpelling) {
  const ThreadGoal goal{"t", "o", ThreadGoalStatus::active, 9, 1, 2, 3.5, 4.5};
  EXPECT_EQ(decoded<ThreadGoal>(R"({"thread_id":"t","objective":"o","status":"active","tokenBudget":9,
                                    "tokensUsed":1,"timeUsedSeconds":2,"createdAt":3.5,"updatedAt":4.5})"),
            goal);
  EXPECT_EQ(decoded<ThreadGoal>(R"({"threadId":"t","objective":"o","status":"active","token_budget":9,
                                    "tokens_used":1,"time_used_seconds":2,"created_at":3.5,"updated_at":4.5})"),
            goal);
}

TEST(ThreadGoal, PrefersTheFirstSpelling) {
  const auto goal = decoded<ThreadGoal>(R"({"threadId":"camel","thread_id":"snake","objective":"o","status":"active",
    "tokenBudget":1,"token_budget":-1,"tokensUsed":2,"tokens_used":-2,"timeUsedSeconds":3,"time_used_seconds":-3,
    "createdAt":4,"created_at":-4,"updatedAt":5,"updated_at":-5})");
  EXPECT_EQ(goal, (ThreadGoal{"snake", "o", ThreadGoalStatus::active, 1, 2, 3, 4, 5}));
}

TEST(ThreadGoal, IsWrittenUnderTheFirstSpelling) {
  tests::expectWritten(ThreadGoal{"t", "o", ThreadGoalStatus::usageLimited, 9, 1, 2, 3.5, 4.5},
                       R"({"thread_id":"t","objective":"o","status":"usageLimited","tokenBudget":9,
                           "tokensUsed":1,"timeUsedSeconds":2,"createdAt":3.5,"updatedAt":4.5})");
  tests::expectWritten(ThreadGoal{"t", "o", ThreadGoalStatus::active, std::nullopt, 1, 2, 3, 4},
                       R"({"thread_id":"t","objective":"o","status":"active",
                           "tokensUsed":1,"timeUsedSeconds":2,"createdAt":3,"updatedAt":4})");
}

TEST(ThreadGoalStatus, HasAWordForEachCase) {
  tests::checkWords<ThreadGoalStatus>({{ThreadGoalStatus::active, "active"},
                                       {ThreadGoalStatus::paused, "paused"},
                                       {ThreadGoalStatus::blocked, "blocked"},
                                       {ThreadGoalStatus::usageLimited, "usageLimited"},
                                       {ThreadGoalStatus::budgetLimited, "budgetLimited"},
                                       {ThreadGoalStatus::complete, "complete"},
                                       {ThreadGoalStatus::unknown, "unknown"}});
}

TEST(ThreadGoalStatus, IsReadInAnySpellingAndNeverFailsOnAText) {
  tests::checkTolerance<ThreadGoalStatus>({{"usage_limited", ThreadGoalStatus::usageLimited},
                                           {"usage-limited", ThreadGoalStatus::usageLimited},
                                           {"USAGELIMITED", ThreadGoalStatus::usageLimited},
                                           {"Budget-Limited ", ThreadGoalStatus::budgetLimited},
                                           {"\n\tPaused\r\n", ThreadGoalStatus::paused},
                                           {"_active_", ThreadGoalStatus::active},
                                           {"weird", ThreadGoalStatus::unknown},
                                           {"usage limited", ThreadGoalStatus::unknown},
                                           {"completed", ThreadGoalStatus::unknown},
                                           {"", ThreadGoalStatus::unknown}});
}

TEST(ThreadGoalStatus, OfAGoalThatNobodyKnowsIsWrittenAsUnknown) {
  EXPECT_EQ(statusReadFrom("Budget-Limited "), ThreadGoalStatus::budgetLimited);
  EXPECT_EQ(statusReadFrom("weird"), ThreadGoalStatus::unknown);
  EXPECT_EQ(encode(statusReadFrom("weird")), JSONValue("unknown"));
}

}  // namespace
