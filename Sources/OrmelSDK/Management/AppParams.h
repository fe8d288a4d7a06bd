#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

// The optional arguments of the calls about apps and MCP servers. One that is given is sent, also when it is empty; one
// that is absent is left to the server.
namespace ormel {

/// How much is told of an MCP server.
enum class McpServerStatusDetail { full, toolsAndAuthOnly };
std::ostream& operator<<(std::ostream& stream, const McpServerStatusDetail& value);

/// Chooses the page of `listApps`.
struct ListAppsParams {
  ListAppsParams() {}
  /// `nextCursor` of the page before.
  std::optional<std::string> cursor;
  /// The most apps on a page.
  std::optional<std::int64_t> limit;
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  /// Whether the server asks for the apps again.
  std::optional<bool> forceRefetch;
};

/// Narrows `listAllApps`.
struct ListAllAppsParams {
  ListAllAppsParams() {}
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  /// The most apps on a page; all of them are listed whatever it is.
  std::optional<std::int64_t> limit;
  /// Whether the server asks for the apps again, on every page.
  std::optional<bool> forceRefetch;
};

/// Narrows `listInstalledApps`.
struct ListInstalledAppsParams {
  ListInstalledAppsParams() {}
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  /// Whether the server asks for the apps again.
  bool forceRefresh = false;
};

/// Says how much `readApps` brings.
struct ReadAppsParams {
  ReadAppsParams() {}
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  /// Whether the tools of each app come with it.
  bool includeTools = false;
};

/// Chooses the page of `listMcpServerStatus`.
struct ListMcpServerStatusParams {
  ListMcpServerStatusParams() {}
  std::optional<std::string> cursor;
  std::optional<std::int64_t> limit;
  std::optional<McpServerStatusDetail> detail;
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
};

/// Narrows `listAllMcpServerStatus`.
struct ListAllMcpServerStatusParams {
  ListAllMcpServerStatusParams() {}
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  std::optional<McpServerStatusDetail> detail;
  /// The most servers on a page; all of them are listed whatever it is.
  std::optional<std::int64_t> limit;
};

/// Shapes the sign-in of `startMcpServerOAuthLogin`.
struct StartMcpServerOAuthLoginParams {
  StartMcpServerOAuthLoginParams() {}
  /// The thread whose configuration is in force.
  std::optional<std::string> threadID;
  /// The scopes that the sign-in asks for.
  std::optional<std::vector<std::string>> scopes;
  /// How long the server waits for the user.
  std::optional<std::int64_t> timeoutSeconds;
};

/// The data that `callMcpServerTool` hands to the tool.
struct CallMcpServerToolParams {
  CallMcpServerToolParams() {}
  /// The arguments, in the form that the tool's schema demands.
  std::optional<JSONValue> arguments;
  /// Metadata that goes along with the call beside its arguments.
  std::optional<JSONValue> meta;
};

}  // namespace ormel
