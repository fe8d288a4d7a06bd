#pragma once

#include <string>
#include <string_view>

#include "MCPServer.h"

namespace tessella {

/// Unwraps what a bridge sends, has the MCP server answer it, and wraps the answer. Any number of threads may use
/// one handler.
class EnvelopeHandler {
 public:
  /// `server` must outlive the handler.
  EnvelopeHandler(const MCPServer& server, std::string token);

  /// The body of the reply to an envelope. There always is one, since the bridge waits for it. `session` takes the
  /// workspace path of the envelope.
  std::string reply(std::string_view body, Session& session) const;

 private:
  ormel::JSONValue answer(const ormel::JSONValue& params, Session& session) const;

  const MCPServer& server_;
  const std::string token_;
};

}  // namespace tessella
