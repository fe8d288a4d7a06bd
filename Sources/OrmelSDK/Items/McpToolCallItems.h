#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The status of a tool call. Read without regard to case, "_" and "-"; a word that is not known is `failed`.
enum class McpToolCallStatus { inProgress, completed, failed };
std::ostream& operator<<(std::ostream& stream, const McpToolCallStatus& value);

/// The result of a tool call.
struct McpToolCallResult {
  std::vector<JSONValue> content;
  std::optional<JSONValue> structuredContent;
  std::optional<JSONValue> meta;
  friend bool operator==(const McpToolCallResult&, const McpToolCallResult&);
  friend std::ostream& operator<<(std::ostream& stream, const McpToolCallResult& value);
};

/// Why a tool call failed.
struct McpToolCallError {
  std::string message;
  friend bool operator==(const McpToolCallError&, const McpToolCallError&);
  friend std::ostream& operator<<(std::ostream& stream, const McpToolCallError& value);
};

/// The app that a tool belongs to.
struct McpToolCallAppContext {
  std::string connectorID;
  std::optional<std::string> linkID;
  std::optional<std::string> resourceURI;
  std::optional<std::string> appName;
  std::optional<std::string> templateID;
  std::optional<std::string> actionName;
  friend bool operator==(const McpToolCallAppContext&, const McpToolCallAppContext&);
  friend std::ostream& operator<<(std::ostream& stream, const McpToolCallAppContext& value);
};

/// A call of a tool of an MCP server. Its JSON form does not tell its type.
struct McpToolCallItem {
  std::string id;
  std::string server;
  std::string tool;
  JSONValue arguments;
  std::optional<std::string> mcpAppResourceURI;
  std::optional<McpToolCallAppContext> appContext;
  std::optional<std::string> pluginID;
  std::optional<McpToolCallResult> result;
  std::optional<McpToolCallError> error;
  McpToolCallStatus status = McpToolCallStatus::failed;
  std::optional<std::int64_t> durationMilliseconds;
  /// How far the call is, in the tool's words.
  std::optional<std::string> progressMessage;
  friend bool operator==(const McpToolCallItem&, const McpToolCallItem&);
  friend std::ostream& operator<<(std::ostream& stream, const McpToolCallItem& value);
};

}  // namespace ormel
