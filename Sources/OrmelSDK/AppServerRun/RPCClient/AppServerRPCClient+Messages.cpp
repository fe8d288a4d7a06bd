#include <exception>
#include <new>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"
#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

JSONValue methodNotFound(const AppServerRequestID& id) {
  const JSONValue error =
      JSONValue::object({{"code", AppServerRPCError::methodNotFoundCode}, {"message", "Method not found"}});
  return JSONValue::object({{"id", id.jsonValue()}, {"error", error}});
}

std::optional<AppServerRequestID> usableID(const JSONObject& message) {
  const JSONValue* id = message.find("id");
  return id ? AppServerRequestID::fromJSONValue(*id) : std::nullopt;
}

AppServerRPCNotification notification(std::string_view method, const JSONObject& message) {
  AppServerRPCNotification told;
  told.method = method;
  if (const JSONValue* params = message.find("params")) told.params = *params;
  return told;
}

}  // namespace

void AppServerRPCClient::handleIncomingLine(std::string_view paddedLine) noexcept {
  bool isMessage = false;
  try {
    const JSONValue message = decodePaddedJSON(paddedLine);
    isMessage = message.objectValue() != nullptr;
    handleMessage(message);
  } catch (const std::bad_alloc&) {
    failPendingResponses(std::current_exception());
  } catch (const std::exception& error) {
    const bool isTold = !isMessage && !pendingResponses_.empty();
    failPendingResponses(appServerProtocolErrorDescription(error), isTold ? causes().ofGarbage(paddedLine) : nullptr);
  }
}

void AppServerRPCClient::handleMessage(const JSONValue& message) {
  const JSONObject* object = message.objectValue();
  if (!object) throw ThreadRunError::streamError("Unexpected non-object JSON from app-server");
  const JSONValue* method = object->find("method");
  const auto name = method ? method->stringValue() : std::nullopt;
  if (!name) return handleResponse(*object);
  if (const auto id = usableID(*object)) {
    writePayload(methodNotFound(*id));
  } else {
    notificationContinuation_.yield(notification(*name, *object));
  }
}

void AppServerRPCClient::handleResponse(const JSONObject& message) {
  const auto id = usableID(message);
  if (!id) return;
  if (const JSONValue* result = message.find("result")) {
    if (const auto response = takePendingResponse(*id)) response->resume(*result);
    return;
  }
  const JSONValue* error = message.find("error");
  if (!error || !error->objectValue()) return;
  if (const auto response = takePendingResponse(*id)) response->fail(AppServerRPCError::fromJSONValue(*error));
}

std::string AppServerRPCClient::eofMessage() const {
  const std::string words = stderrAccumulator_->string();
  const std::string_view told = trimmed(words);
  return told.empty() ? "Ormel app-server terminated unexpectedly" : std::string(told);
}

}  // namespace ormel::detail
