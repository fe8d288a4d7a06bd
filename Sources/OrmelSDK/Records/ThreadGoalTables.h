#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Records/ThreadGoal.h"

template <>
struct ormel::coding::EnumerationTable<ormel::ThreadGoalStatus> {
  static constexpr auto words = tolerant(
      ThreadGoalStatus::unknown,
      std::array{Word{ThreadGoalStatus::active, "active"}, Word{ThreadGoalStatus::paused, "paused"},
                 Word{ThreadGoalStatus::blocked, "blocked"}, Word{ThreadGoalStatus::usageLimited, "usageLimited"},
                 Word{ThreadGoalStatus::budgetLimited, "budgetLimited"}, Word{ThreadGoalStatus::complete, "complete"},
                 Word{ThreadGoalStatus::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(ThreadGoalStatus)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoal> {
  static constexpr auto fields = std::tuple(
      required<&ThreadGoal::threadID>("thread_id", "threadId"), required<&ThreadGoal::objective>("objective"),
      required<&ThreadGoal::status>("status"), optional<&ThreadGoal::tokenBudget>("tokenBudget", "token_budget"),
      required<&ThreadGoal::tokensUsed>("tokensUsed", "tokens_used"),
      required<&ThreadGoal::timeUsedSeconds>("timeUsedSeconds", "time_used_seconds"),
      required<&ThreadGoal::createdAt>("createdAt", "created_at"),
      required<&ThreadGoal::updatedAt>("updatedAt", "updated_at"));
};
ORMEL_DECLARE_CODEC(ThreadGoal)
