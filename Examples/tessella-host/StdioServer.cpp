#include "StdioServer.h"

#include <iostream>
#include <string>

#include "JSONRPC.h"

namespace tessella {

using ormel::JSONValue;

namespace {

std::optional<JSONValue> answerLine(const std::string& line, const MCPServer& server, const Session& session) {
  try {
    return server.answer(JSONValue::decode(line), session);
  } catch (const ormel::DecodingError& error) {
    return errorResponse(JSONValue(), errorcode::parseError, error.what());
  }
}

}  // namespace

void serveStandardStreams(const MCPServer& server, const Session& session) {
  std::ios::sync_with_stdio(false);
  for (std::string line; std::getline(std::cin, line);) {
    if (const auto response = answerLine(line, server, session)) std::cout << response->encode() + "\n" << std::flush;
  }
}

}  // namespace tessella
