#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// The progress of a thread towards its goal. Read without regard to case, "_" and "-"; a word that is not known is
/// `unknown`.
enum class ThreadGoalStatus { active, paused, blocked, usageLimited, budgetLimited, complete, unknown };
std::ostream& operator<<(std::ostream& stream, const ThreadGoalStatus& value);

/// The objective that a thread works towards, and its cost so far.
struct ThreadGoal {
  std::string threadID;
  std::string objective;
  ThreadGoalStatus status = ThreadGoalStatus::unknown;
  /// Absent when the goal may use any number of tokens.
  std::optional<std::int64_t> tokenBudget;
  std::int64_t tokensUsed = 0;
  std::int64_t timeUsedSeconds = 0;
  /// Seconds since the Unix epoch.
  double createdAt = 0;
  /// Seconds since the Unix epoch.
  double updatedAt = 0;
  friend bool operator==(const ThreadGoal&, const ThreadGoal&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoal& value);
};

}  // namespace ormel
