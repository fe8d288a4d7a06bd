#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Questions of an MCP server to the user, by way of the agent server. The request and the response have no JSON form.
namespace ormel {

/// A form to fill in.
struct McpServerElicitationForm {
  /// The text for the user.
  std::string message;
  /// The JSON schema of the answer.
  JSONValue requestedSchema;
  std::optional<JSONValue> metadata;
  friend bool operator==(const McpServerElicitationForm&, const McpServerElicitationForm&);
};

/// A form of the MCP standard.
struct McpServerFormElicitation : McpServerElicitationForm {
  friend bool operator==(const McpServerFormElicitation&, const McpServerFormElicitation&);
};

/// A form in Velnor's dialect, sent only to applications that support it.
struct McpServerVelnorFormElicitation : McpServerElicitationForm {
  friend bool operator==(const McpServerVelnorFormElicitation&, const McpServerVelnorFormElicitation&);
};

/// A page to visit.
struct McpServerURLElicitation {
  /// The text for the user.
  std::string message;
  std::string url;
  std::string elicitationID;
  std::optional<JSONValue> metadata;
  friend bool operator==(const McpServerURLElicitation&, const McpServerURLElicitation&);
};

/// How the user is asked. Use `visit` to tell the cases apart; a function of `McpServerElicitationForm` takes both
/// kinds of form.
struct McpServerElicitationMode {
  std::variant<McpServerFormElicitation, McpServerVelnorFormElicitation, McpServerURLElicitation> value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  McpServerElicitationMode();
  McpServerElicitationMode(const McpServerElicitationMode& other);
  McpServerElicitationMode(McpServerElicitationMode&& other) noexcept;
  McpServerElicitationMode& operator=(const McpServerElicitationMode& other);
  McpServerElicitationMode& operator=(McpServerElicitationMode&& other) noexcept;
  ~McpServerElicitationMode();

  McpServerElicitationMode(McpServerFormElicitation mode);
  McpServerElicitationMode(McpServerVelnorFormElicitation mode);
  McpServerElicitationMode(McpServerURLElicitation mode);

  static McpServerElicitationMode form(std::string message, JSONValue requestedSchema,
                                       std::optional<JSONValue> metadata = std::nullopt);
  static McpServerElicitationMode velnorForm(std::string message, JSONValue requestedSchema,
                                             std::optional<JSONValue> metadata = std::nullopt);
  static McpServerElicitationMode url(std::string message, std::string url, std::string elicitationID,
                                      std::optional<JSONValue> metadata = std::nullopt);

  friend bool operator==(const McpServerElicitationMode&, const McpServerElicitationMode&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerElicitationMode& value);
};

/// A question of an MCP server.
struct McpServerElicitationRequest {
  std::string threadID;
  /// Absent when the question belongs to no turn.
  std::optional<std::string> turnID;
  std::string serverName;
  McpServerElicitationMode mode;
  friend bool operator==(const McpServerElicitationRequest&, const McpServerElicitationRequest&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerElicitationRequest& value);
};

/// The user's reaction to the question.
enum class McpServerElicitationAction { accept, decline, cancel };
std::ostream& operator<<(std::ostream& stream, const McpServerElicitationAction& value);

/// The user's answer.
struct McpServerElicitationResponse {
  McpServerElicitationAction action = McpServerElicitationAction::cancel;
  /// The filled-in form.
  std::optional<JSONValue> content;
  std::optional<JSONValue> metadata;
  friend bool operator==(const McpServerElicitationResponse&, const McpServerElicitationResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerElicitationResponse& value);
};

}  // namespace ormel
