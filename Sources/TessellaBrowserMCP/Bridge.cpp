#include "TessellaBrowserMCP/Bridge.h"

#include <unistd.h>

#include <optional>
#include <string_view>
#include <utility>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/UTF8.h"
#include "TessellaBrowserMCP/BridgeEnvironment.h"
#include "TessellaBrowserMCP/BridgeFailure.h"
#include "TessellaBrowserMCP/LineReader.h"
#include "TessellaBrowserMCP/LineWriter.h"
#include "TessellaBrowserMCP/NativePipeClient.h"

namespace ormel {

namespace {

constexpr int internalError = -32603;

// JSON is valid UTF-8, so a line needs repair only if it was refused.
JSONValue decodeRepairing(std::string_view line) {
  try {
    return detail::decodePaddedJSON(line);
  } catch (const DecodingError&) {
    if (isValidUTF8(line)) throw;
    return JSONValue::decode(repairedUTF8(line));
  }
}

std::optional<JSONValue> decodeLine(std::string_view line) {
  try {
    return decodeRepairing(line);
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

void serve(NativePipeClient& client, LineWriter& output, const BridgeEnvironment& environment, JSONValue message) {
  const JSONValue* found = message.find("id");
  if (!found) return;
  const JSONValue id = found->detached();
  JSONValue result;
  try {
    result = client.request(environment.token, environment.workspacePath, std::move(message));
  } catch (const BridgeFailure& failure) {
    output.write(errorEnvelope(id, failure));
    if (failure.kind() == BridgeFailure::Kind::disconnected) throw;
    return;
  } catch (const std::exception& error) {
    return output.write(errorEnvelope(id, error));
  }
  output.write(result);
}

}  // namespace

JSONValue errorEnvelope(const JSONValue& id, const std::exception& error) {
  return JSONValue::object({
      {"jsonrpc", "2.0"},
      {"id", id},
      {"error", JSONValue::object({{"code", internalError}, {"message", error.what()}})},
  });
}

void runBridge() {
  const BridgeEnvironment environment = BridgeEnvironment::read();
  NativePipeClient client(environment.socketPath);
  LineReader input(STDIN_FILENO);
  LineWriter output(STDOUT_FILENO);
  while (const auto line = input.next()) {
    if (auto message = decodeLine(*line)) serve(client, output, environment, *std::move(message));
  }
}

}  // namespace ormel
