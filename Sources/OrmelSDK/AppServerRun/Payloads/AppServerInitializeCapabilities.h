#pragma once

#include <array>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel {

/// The notifications that a client which only manages tells the server not to send: the stream of running turns.
inline constexpr std::array<std::string_view, 9> controlOptOutNotificationMethods = {
    "thread/started",
    "turn/started",
    "item/started",
    "item/updated",
    "item/completed",
    "item/agentMessage/delta",
    "item/commandExecution/outputDelta",
    "thread/tokenUsage/updated",
    "turn/completed",
};

/// The capabilities that a client announces to the server.
struct AppServerInitializeCapabilities {
  AppServerInitializeCapabilities() {}

  bool experimentalAPI = false;
  /// The client answers requests for attestation tokens.
  bool requestAttestation = false;
  /// The client takes elicitation forms in Velnor's dialect.
  bool mcpServerVelnorFormElicitation = false;
  /// Notifications that the server need not send. An empty list is sent, unlike an absent one.
  std::optional<std::vector<std::string>> optOutNotificationMethods;

  /// The capabilities of a client that only manages, and would throw away the stream of a turn.
  static AppServerInitializeCapabilities forManagement();

  /// The capabilities of a client that runs turns with these options.
  static AppServerInitializeCapabilities forTurns(const ThreadOptions& threadOptions);

  /// The object that is sent.
  JSONValue jsonObject() const;

  friend bool operator==(const AppServerInitializeCapabilities&, const AppServerInitializeCapabilities&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const AppServerInitializeCapabilities& value);
};

namespace detail {

/// The params of "initialize".
JSONValue appServerInitializeParams(const AppServerInitializeCapabilities& capabilities);

}  // namespace detail

}  // namespace ormel
