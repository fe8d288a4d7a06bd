#pragma once

#include <map>
#include <optional>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// The client's choices for a thread.
struct ThreadChoices {
  std::string cwd;
  std::string model;
  std::string modelProvider;
  std::optional<std::string> developerInstructions;
  JSONValue approvalPolicy;
  JSONValue dynamicTools;
  /// Choices that the agent only repeats, by the key under which it does.
  std::map<std::string, JSONValue> others;

  static ThreadChoices ofNewThread();

  /// Takes over what the params of a request state. A null takes back what is only repeated, and changes nothing else.
  void apply(const JSONValue& params);

  JSONValue stateJSON() const;
  static ThreadChoices fromStateJSON(const JSONValue& state);

  friend bool operator==(const ThreadChoices&, const ThreadChoices&) = default;
};

}  // namespace ormel::simulator
