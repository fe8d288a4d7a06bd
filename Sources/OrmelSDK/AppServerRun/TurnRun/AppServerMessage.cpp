#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"

#include <optional>
#include <string_view>
#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

constexpr std::string_view unknownError = "Unknown app-server error";

[[noreturn]] void refuse(const char* message) { throw ThreadRunError::streamError(message); }

std::optional<AppServerRequestID> requestID(const JSONObject& object) {
  return firstMember(object, {"id"}, AppServerRequestID::fromJSONValue);
}

AppServerMessage messageWithMethod(const JSONObject& object, const JSONValue& method, JSONValue payload) {
  const auto name = method.stringValue();
  if (!name || name->empty()) refuse("Invalid app-server JSON-RPC method");
  if (!object.contains("id")) return ServerNotificationMessage{*name, std::move(payload)};
  if (!requestID(object)) refuse("Invalid app-server JSON-RPC request id");
  return ServerRequestMessage{*name, std::move(payload)};
}

std::string bareErrorMessage(const JSONObject& object) {
  const JSONObject* error = objectMember(object, {"error"});
  auto message = error ? textViewMember(*error, {"message"}) : std::nullopt;
  if (!message) message = textViewMember(object, {"error", "message"});
  return std::string(message.value_or(unknownError));
}

AppServerMessage response(const JSONObject& object, AppServerRequestID id) {
  const JSONValue* result = object.find("result");
  const JSONValue* error = object.find("error");
  if (result && !error) return ResponseMessage{std::move(id), *result};
  const JSONObject* details = error && !result ? error->objectValue() : nullptr;
  if (!details) refuse("Invalid app-server JSON-RPC response");
  return ErrorResponseMessage{std::move(id), textMember(*details, {"message"}, unknownError)};
}

}  // namespace

AppServerMessage classifiedAppServerMessage(JSONValue payload) {
  const JSONObject* object = payload.objectValue();
  if (!object) refuse("Unexpected non-object JSON from app-server");
  if (object->empty()) refuse("Unexpected app-server protocol object");
  if (const JSONValue* method = object->find("method")) return messageWithMethod(*object, *method, std::move(payload));
  if (textViewMember(*object, {"type"}) == "error") throw ThreadRunError::streamError(bareErrorMessage(*object));
  auto id = requestID(*object);
  if (!id) refuse("Unexpected app-server protocol object");
  return response(*object, *std::move(id));
}

}  // namespace ormel::detail
