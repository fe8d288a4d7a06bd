#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Every type here has a JSON form.
namespace ormel {

/// How the user is logged in to an MCP server.
struct McpAuthStatus : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const McpAuthStatus& unsupported;
  static const McpAuthStatus& notLoggedIn;
  static const McpAuthStatus& bearerToken;
  static const McpAuthStatus& oAuth;
};
std::ostream& operator<<(std::ostream& stream, const McpAuthStatus& value);

inline const McpAuthStatus& McpAuthStatus::unsupported = detail::neverDestroyed<McpAuthStatus>("unsupported");
inline const McpAuthStatus& McpAuthStatus::notLoggedIn = detail::neverDestroyed<McpAuthStatus>("notLoggedIn");
inline const McpAuthStatus& McpAuthStatus::bearerToken = detail::neverDestroyed<McpAuthStatus>("bearerToken");
inline const McpAuthStatus& McpAuthStatus::oAuth = detail::neverDestroyed<McpAuthStatus>("oAuth");

/// State of an MCP server as the server runs it.
struct McpServerRuntimeStatus : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const McpServerRuntimeStatus& notStarted;
  static const McpServerRuntimeStatus& starting;
  static const McpServerRuntimeStatus& connected;
  static const McpServerRuntimeStatus& authenticationRequired;
  static const McpServerRuntimeStatus& failed;
  static const McpServerRuntimeStatus& cancelled;
  static const McpServerRuntimeStatus& disabled;
};
std::ostream& operator<<(std::ostream& stream, const McpServerRuntimeStatus& value);

inline const McpServerRuntimeStatus& McpServerRuntimeStatus::notStarted =
    detail::neverDestroyed<McpServerRuntimeStatus>("notStarted");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::starting =
    detail::neverDestroyed<McpServerRuntimeStatus>("starting");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::connected =
    detail::neverDestroyed<McpServerRuntimeStatus>("connected");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::authenticationRequired =
    detail::neverDestroyed<McpServerRuntimeStatus>("authenticationRequired");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::failed =
    detail::neverDestroyed<McpServerRuntimeStatus>("failed");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::cancelled =
    detail::neverDestroyed<McpServerRuntimeStatus>("cancelled");
inline const McpServerRuntimeStatus& McpServerRuntimeStatus::disabled =
    detail::neverDestroyed<McpServerRuntimeStatus>("disabled");

/// The state of an MCP server and what it offers. Its own descriptions are passed through unchanged.
struct McpServerStatusSummary {
  std::string name;
  /// Absent if the server does not tell it.
  std::optional<McpServerRuntimeStatus> runtimeStatus;
  /// The plugin that brought the MCP server, if one did.
  std::optional<std::string> pluginID;
  /// The name and version that the MCP server gave.
  std::optional<JSONValue> serverInfo;
  /// Definitions of tools by their names.
  std::map<std::string, JSONValue> tools;
  std::vector<JSONValue> resources;
  std::vector<JSONValue> resourceTemplates;
  McpAuthStatus authStatus;
  friend bool operator==(const McpServerStatusSummary&, const McpServerStatusSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerStatusSummary& value);
};

/// A page of MCP servers.
struct McpServerStatusListResponse {
  std::vector<McpServerStatusSummary> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  friend bool operator==(const McpServerStatusListResponse&, const McpServerStatusListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerStatusListResponse& value);
};

/// A login that has begun.
struct McpServerOAuthLoginResponse {
  /// The page on which the user continues.
  std::string authorizationURL;
  friend bool operator==(const McpServerOAuthLoginResponse&, const McpServerOAuthLoginResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerOAuthLoginResponse& value);
};

/// One part of a resource: a text, or bytes.
struct McpResourceContent {
  std::string uri;
  std::optional<std::string> mimeType;
  std::optional<std::string> text;
  /// Bytes in Base64.
  std::optional<std::string> blob;
  std::optional<JSONValue> meta;
  friend bool operator==(const McpResourceContent&, const McpResourceContent&);
  friend std::ostream& operator<<(std::ostream& stream, const McpResourceContent& value);
};

/// A resource that was read.
struct McpResourceReadResponse {
  std::vector<McpResourceContent> contents;
  friend bool operator==(const McpResourceReadResponse&, const McpResourceReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const McpResourceReadResponse& value);
};

/// How a call of a tool ended. The tool's output is passed through unchanged.
struct McpServerToolCallResponse {
  /// Blocks of text, images and the like.
  std::vector<JSONValue> content;
  /// The output as data, if the tool gives any.
  std::optional<JSONValue> structuredContent;
  /// Whether the tool itself failed.
  std::optional<bool> isError;
  std::optional<JSONValue> meta;
  friend bool operator==(const McpServerToolCallResponse&, const McpServerToolCallResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const McpServerToolCallResponse& value);
};

}  // namespace ormel
