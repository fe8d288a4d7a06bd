#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Seconds since the epoch.
double secondsNow();

struct TokenCount {
  double input = 0;
  double cachedInput = 0;
  double output = 0;

  TokenCount& operator+=(const TokenCount& more);
  JSONValue json() const;
  static TokenCount fromJSON(const JSONValue& value);
};

/// A turn as it is remembered.
struct AgentTurnRecord {
  std::string id;
  std::string status = "inProgress";
  std::optional<std::string> errorMessage;
  std::vector<JSONValue> items;
  double startedAt = secondsNow();
  std::optional<double> completedAt;

  /// What the user said; absent for a turn that the user did not begin by words.
  std::optional<std::string> prompt() const;

  bool hasItem(std::string_view type) const;
  JSONValue json(bool withItems) const;
  static AgentTurnRecord fromJSON(const JSONValue& value);
};

/// A conversation.
struct AgentThread {
  std::string id;
  std::optional<std::string> forkedFromID;
  bool ephemeral = false;
  std::string cwd;
  std::string model;
  std::string modelProvider;
  std::optional<std::string> developerInstructions;
  JSONValue approvalPolicy;
  JSONValue dynamicTools;
  double createdAt = secondsNow();
  double updatedAt = secondsNow();
  TokenCount tokens;
  std::vector<AgentTurnRecord> turns;
  /// What the user has approved once and for all, as long as this process lives.
  std::set<std::string> sessionApprovals;

  /// Takes over what the client states for the thread or for a turn.
  void applySettings(const JSONValue& params);

  /// What the client is told of it.
  JSONValue json(bool withTurns) const;

  /// The answer to a request that begins or continues the thread.
  JSONValue responseJSON(bool withTurns) const;

  /// What a restarted agent needs to continue.
  JSONValue stateJSON() const;
  static AgentThread fromStateJSON(const JSONValue& state);
};

}  // namespace ormel::simulator
