#include "OrmelSDK/Records/ThreadGoal.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadGoalStatus> {
  static constexpr auto rule = tolerant(ThreadGoalStatus::unknown);
  static constexpr Word<ThreadGoalStatus> words[] = {
      {ThreadGoalStatus::active, "active"},
      {ThreadGoalStatus::paused, "paused"},
      {ThreadGoalStatus::blocked, "blocked"},
      {ThreadGoalStatus::usageLimited, "usageLimited"},
      {ThreadGoalStatus::budgetLimited, "budgetLimited"},
      {ThreadGoalStatus::complete, "complete"},
      {ThreadGoalStatus::unknown, "unknown"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoal> {
  static constexpr Field fields[] = {
      required<&ThreadGoal::threadID>("thread_id", "threadId"),
      required<&ThreadGoal::objective>("objective"),
      required<&ThreadGoal::status>("status"),
      optional<&ThreadGoal::tokenBudget>("tokenBudget", "token_budget"),
      required<&ThreadGoal::tokensUsed>("tokensUsed", "tokens_used"),
      required<&ThreadGoal::timeUsedSeconds>("timeUsedSeconds", "time_used_seconds"),
      required<&ThreadGoal::createdAt>("createdAt", "created_at"),
      required<&ThreadGoal::updatedAt>("updatedAt", "updated_at"),
  };
};

ORMEL_DEFINE_ENUMERATION(ThreadGoalStatus)
ORMEL_DEFINE_RECORD(ThreadGoal)
