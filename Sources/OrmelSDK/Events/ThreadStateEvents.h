#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadSettings.h"

namespace ormel {

/// A thread is there, new or resumed.
struct ThreadStartedEvent {
  std::string threadID;
  /// The thread that this one continues a copy of.
  std::optional<std::string> forkedFromID;
  /// The files that the thread's instructions were read from.
  std::vector<std::string> instructionSources;
  friend bool operator==(const ThreadStartedEvent&, const ThreadStartedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadStartedEvent& value);
};

/// A thread has a new goal, or has come further with the one it has.
struct ThreadGoalUpdatedEvent {
  std::string threadID;
  std::optional<std::string> turnID;
  ThreadGoal goal;
  friend bool operator==(const ThreadGoalUpdatedEvent&, const ThreadGoalUpdatedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoalUpdatedEvent& value);
};

/// A thread has no goal any more.
struct ThreadGoalClearedEvent {
  std::string threadID;
  friend bool operator==(const ThreadGoalClearedEvent&, const ThreadGoalClearedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadGoalClearedEvent& value);
};

/// A thread has other settings than before.
struct ThreadSettingsUpdatedEvent {
  std::string threadID;
  ThreadSettings threadSettings;
  friend bool operator==(const ThreadSettingsUpdatedEvent&, const ThreadSettingsUpdatedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadSettingsUpdatedEvent& value);
};

}  // namespace ormel
