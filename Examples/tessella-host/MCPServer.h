#pragma once

#include <OrmelSDK/JSON/JSONValue.h>

#include <optional>
#include <string_view>
#include <vector>

#include "RequestLog.h"
#include "Tool.h"

namespace tessella {

/// The MCP server itself: a JSON-RPC message goes in, its response comes out. It knows nothing of how messages
/// travel, and keeps no state between them, so any number of threads may call it.
class MCPServer {
 public:
  /// `log` must outlive the server.
  MCPServer(std::vector<Tool> tools, RequestLog& log);

  /// The complete response to `message`, or nothing if it is a notification.
  std::optional<ormel::JSONValue> answer(const ormel::JSONValue& message, const Session& session) const;

 private:
  ormel::JSONValue dispatch(std::string_view method, const ormel::JSONValue& params, const Session& session) const;
  ormel::JSONValue listTools() const;
  ormel::JSONValue callTool(const ormel::JSONValue& params, const Session& session) const;
  const Tool& tool(const ormel::JSONValue& params) const;

  std::vector<Tool> tools_;
  RequestLog& log_;
};

}  // namespace tessella
