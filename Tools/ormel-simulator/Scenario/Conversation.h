#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Scenario/Message.h"
#include "ormel-simulator/Scenario/Scenario.h"
#include "ormel-simulator/Scenario/Variables.h"

namespace ormel::simulator {

/// How a message compares with what is expected.
struct Judgement {
  /// Whether the message is the one that the expectation speaks of, as by its method or id.
  bool concerned = false;
  /// The difference; nothing when the message meets the expectation.
  std::optional<std::string> difference;
};

/// The captures and requests so far, on both sides.
class Conversation {
 public:
  /// Compares; enters captures when the message meets the expectation. Fails with `UnsetVariable`.
  Judgement judge(const Expectation& expectation, const Message& message);

  /// Remembers a request of the client that waits for an answer, also under the name if it is not empty.
  void noteClientRequest(const std::string& name, const JSONValue& id);

  /// The id of the named request, or of the latest one that waits; empty if there is none. It waits no longer.
  std::optional<JSONValue> takeClientRequest(const std::string& name);

  /// Remembers a request of the server, and gives it an id if it has none.
  JSONValue noteServerRequest(const std::string& name, const std::optional<JSONValue>& id);

  Variables& variables() noexcept { return variables_; }
  const Variables& variables() const noexcept { return variables_; }

 private:
  Judgement judgeCall(const Expectation& expectation, const Message& message);
  Judgement judgeAnswer(const Expectation& expectation, const Message& message);
  std::optional<std::string> contentDifference(const Expectation& expectation, const Message& message,
                                               const std::string& path);

  Variables variables_;
  std::vector<JSONValue> waiting_;
  std::map<std::string, JSONValue> clientRequests_;
  std::map<std::string, JSONValue> serverRequests_;
  int lastServerID_ = 0;
};

}  // namespace ormel::simulator
