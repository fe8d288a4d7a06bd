#include "MCPServer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "JSONRPC.h"
#include "ToolResult.h"

namespace tessella {

using ormel::JSONValue;

namespace {

/// Newest first.
constexpr std::array<std::string_view, 4> protocolVersions = {"2025-11-25", "2025-06-18", "2025-03-26", "2024-11-05"};

/// Becomes the `error` of a response.
class RequestError : public std::runtime_error {
 public:
  RequestError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
  int code() const noexcept { return code_; }

 private:
  int code_;
};

std::string textOrNothing(const JSONValue& object, std::string_view key) {
  const auto* value = object.find(key);
  return std::string(value ? value->stringValue().value_or("") : "");
}

JSONValue initialize(const JSONValue& params) {
  const auto wanted = textOrNothing(params, "protocolVersion");
  const bool supported = std::ranges::find(protocolVersions, wanted) != protocolVersions.end();
  return JSONValue::object({
      {"protocolVersion", supported ? std::string_view(wanted) : protocolVersions.front()},
      {"capabilities", JSONValue::object({{"tools", JSONValue::object()}})},
      {"serverInfo", JSONValue::object({{"name", "tessella-host"}, {"version", "1.0.0"}})},
      {"instructions", "Opens pages that are served by this machine and reads them out."},
  });
}

std::string outcomeOf(const JSONValue& response) {
  if (const auto* error = response.find("error")) {
    return "error " + std::to_string(error->find("code")->intValue().value_or(0)) + ", " +
           textOrNothing(*error, "message");
  }
  const auto* result = response.find("result");
  const auto* isError = result ? result->find("isError") : nullptr;
  return isError && isError->boolValue() == true ? "tool failed" : "result";
}

}  // namespace

MCPServer::MCPServer(std::vector<Tool> tools, RequestLog& log) : tools_(std::move(tools)), log_(log) {}

std::optional<JSONValue> MCPServer::answer(const JSONValue& message, const Session& session) const {
  const auto started = std::chrono::steady_clock::now();
  const auto method = textOrNothing(message, "method");
  const auto* id = message.find("id");
  if (!id && !method.empty()) {
    log_.request(session.name, method, "notification", started);
    return std::nullopt;
  }

  const auto* params = message.find("params");
  const JSONValue arguments = params ? *params : JSONValue::object();
  JSONValue response;
  try {
    if (method.empty()) throw RequestError(errorcode::invalidRequest, "The message is not a request.");
    if (id->isNull()) throw RequestError(errorcode::invalidRequest, "A request's id cannot be null.");
    response = resultResponse(*id, dispatch(method, arguments, session));
  } catch (const RequestError& error) {
    response = errorResponse(idOf(message), error.code(), error.what());
  } catch (const std::exception& error) {
    response = errorResponse(idOf(message), errorcode::internalError, error.what());
  }

  const auto subject = method == "tools/call" ? method + " " + textOrNothing(arguments, "name") : method;
  log_.request(session.name, subject, outcomeOf(response), started);
  return response;
}

JSONValue MCPServer::dispatch(std::string_view method, const JSONValue& params, const Session& session) const {
  if (method == "initialize") return initialize(params);
  if (method == "ping") return JSONValue::object();
  if (method == "tools/list") return listTools();
  if (method == "tools/call") return callTool(params, session);
  throw RequestError(errorcode::methodNotFound, "Unknown method: " + std::string(method));
}

JSONValue MCPServer::listTools() const {
  std::vector<JSONValue> declarations;
  declarations.reserve(tools_.size());
  for (const auto& tool : tools_) declarations.push_back(tool.declaration);
  return JSONValue::object({{"tools", JSONValue::array(declarations)}});
}

JSONValue MCPServer::callTool(const JSONValue& params, const Session& session) const {
  const auto& called = tool(params);
  const auto* given = params.find("arguments");
  const JSONValue arguments = given ? *given : JSONValue::object();
  if (!arguments.objectValue()) throw RequestError(errorcode::invalidParams, "The arguments are not an object.");
  try {
    return called.call(arguments, session);
  } catch (const ToolFailure& failure) {
    return failedResult(failure.what());
  }
}

const Tool& MCPServer::tool(const JSONValue& params) const {
  const auto name = textOrNothing(params, "name");
  const auto found = std::ranges::find(tools_, name, &Tool::name);
  if (found == tools_.end()) throw RequestError(errorcode::invalidParams, "Unknown tool: " + name);
  return *found;
}

}  // namespace tessella
