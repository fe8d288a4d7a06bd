#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Handlers/AsyncHandler.h"
#include "OrmelSDK/Items/DynamicToolCallItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The description of a tool for the model. Has no JSON form.
struct DynamicToolSpec {
  /// Tools of one namespace are offered as a group. A tool of the empty one is offered like a tool without one, and so
  /// also answers a call that names no namespace, unless a tool of this name without a namespace is there for it.
  std::optional<std::string> namespace_;
  std::string name;
  std::string description;
  /// The JSON schema of the arguments.
  JSONValue inputSchema;
  /// Whether the model is told of the tool only when it looks for one.
  bool deferLoading = false;
  friend bool operator==(const DynamicToolSpec&, const DynamicToolSpec&);
  friend std::ostream& operator<<(std::ostream& stream, const DynamicToolSpec& value);
};

/// One call of a tool. Has no JSON form.
struct DynamicToolCallContext {
  std::string threadID;
  std::string turnID;
  std::string callID;
  std::optional<std::string> namespace_;
  std::string tool;
  JSONValue arguments;
  friend bool operator==(const DynamicToolCallContext&, const DynamicToolCallContext&);
  friend std::ostream& operator<<(std::ostream& stream, const DynamicToolCallContext& value);
};

/// The result of a call. Has no JSON form.
struct DynamicToolResult {
  std::vector<DynamicToolCallOutputContentItem> contentItems;
  bool success = false;
  friend bool operator==(const DynamicToolResult&, const DynamicToolResult&);
  friend std::ostream& operator<<(std::ostream& stream, const DynamicToolResult& value);
};

/// A tool that the application lends to the model.
struct DynamicTool {
  DynamicToolSpec spec;

  /// Carries a call out. A failure is told to the model by the text of the error, and does not end the turn.
  AsyncHandler<DynamicToolResult(DynamicToolCallContext)> execute;
};

}  // namespace ormel
