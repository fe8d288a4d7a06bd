#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Requests/AgentTime.h"

namespace ormel::simulator {

/// A thread's goal.
struct AgentGoal {
  std::string objective;
  std::string status = "active";
  std::optional<double> tokenBudget;
  double createdAt = secondsNow();
  double updatedAt = createdAt;

  JSONValue stateJSON() const;
  static AgentGoal fromStateJSON(const JSONValue& state);
};

}  // namespace ormel::simulator
