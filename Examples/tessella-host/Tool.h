#pragma once

#include <OrmelSDK/JSON/JSONValue.h>

#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessella {

/// The client of a tool: one session per connection.
struct Session {
  /// The name in the log.
  std::string name;
  std::string workspacePath;
  /// Asks a running tool to give up, because the host is ending.
  std::stop_token stop;
};

/// A tool could not do its work. The client gets the text as a result marked `isError`, so that the agent can read
/// it and try something else; a JSON-RPC error would end at the client's own machinery.
class ToolFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A tool that the host offers to agents.
struct Tool {
  std::string name;
  /// Name, description and schemas, as `tools/list` reports them.
  ormel::JSONValue declaration;
  /// Takes the call's arguments, always an object, and returns the MCP tool result. Is called from several threads
  /// at once. Fails with `ToolFailure`.
  std::function<ormel::JSONValue(const ormel::JSONValue& arguments, const Session& session)> call;
};

}  // namespace tessella
