#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Agent/TokenCount.h"
#include "ormel-simulator/Requests/AgentTime.h"

namespace ormel::simulator {

/// How much of a turn's items is told with it.
enum class ItemsView { notLoaded, summary, full };

/// A turn as it is remembered.
struct AgentTurnRecord {
  std::string id;
  std::string status = "inProgress";
  std::optional<std::string> errorMessage;
  std::vector<JSONValue> items;
  TokenCount tokens;
  double startedAt = secondsNow();
  std::optional<double> completedAt;

  bool isUnderWay() const { return status == "inProgress"; }

  /// The user's words; absent for a turn that did not begin by any.
  std::optional<std::string> prompt() const;

  bool hasItem(std::string_view type) const;

  /// The form in which the client is told of it.
  JSONValue json(ItemsView view) const;

  /// All that a restarted agent needs to know of it.
  JSONValue stateJSON() const;
  static AgentTurnRecord fromStateJSON(const JSONValue& state);

 private:
  JSONObjectBuilder members(ItemsView view) const;
  /// The user's first message and the agent's last one.
  std::vector<JSONValue> summary() const;
};

}  // namespace ormel::simulator
