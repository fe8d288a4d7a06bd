#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Agent/AgentGoal.h"
#include "ormel-simulator/Agent/AgentTurnRecord.h"
#include "ormel-simulator/Agent/ThreadChoices.h"
#include "ormel-simulator/Agent/TokenCount.h"
#include "ormel-simulator/Requests/AgentTime.h"

namespace ormel::simulator {

/// A conversation.
struct AgentThread {
  /// The kind of program that made the thread: the same for all.
  static constexpr const char* source = "appServer";

  std::string id;
  std::optional<std::string> forkedFromID;
  std::optional<std::string> name;
  /// The party that the thread was made for, as the client says.
  std::optional<std::string> threadSource;
  bool ephemeral = false;
  bool archived = false;
  ThreadChoices choices;
  /// The repository that it is noted with, or null.
  JSONValue gitInfo;
  std::optional<AgentGoal> goal;
  /// Items that clients have added to the history, in the form of a model's interface.
  std::vector<JSONValue> injectedItems;
  double createdAt = secondsNow();
  double updatedAt = createdAt;
  std::vector<AgentTurnRecord> turns;

  /// Actions that the user has approved once and for all, as long as this process lives.
  std::set<std::string> sessionApprovals;
  /// The file it is kept in.
  std::optional<std::string> path;

  /// Whether this process is at a turn of it.
  bool isActive() const { return !turns.empty() && turns.back().isUnderWay(); }

  AgentTurnRecord* findTurn(const std::string& turnID);

  /// The user's first words.
  std::string preview() const;

  /// When it was last turned to.
  double recencyAt() const { return turns.empty() ? createdAt : turns.back().startedAt; }

  TokenCount tokens() const;

  /// The form in which the client is told of it.
  JSONValue json(ItemsView view) const;

  /// The answer to a request that begins or continues it.
  JSONValue responseJSON(ItemsView view) const;

  /// All that a restarted agent needs to continue: everything but a turn that is under way.
  JSONValue stateJSON() const;
  static AgentThread fromStateJSON(const JSONValue& state);
};

}  // namespace ormel::simulator
