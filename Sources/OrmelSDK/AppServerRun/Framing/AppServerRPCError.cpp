#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"

#include <utility>

namespace ormel {

AppServerRPCError::AppServerRPCError(std::int64_t code, std::string message, std::optional<JSONValue> data)
    : Error("App-server error " + std::to_string(code) + ": " + message),
      code_(code),
      message_(std::move(message)),
      data_(std::move(data)) {}

AppServerRPCError AppServerRPCError::fromJSONValue(const JSONValue& error) {
  const JSONValue* const code = error.find("code");
  const JSONValue* const message = error.find("message");
  const JSONValue* const data = error.find("data");
  const auto text = message ? message->stringValue() : std::nullopt;
  return AppServerRPCError((code ? code->intValue() : std::nullopt).value_or(unknownErrorCode),
                           std::string(text.value_or("Unknown app-server error")),
                           data ? std::optional(data->detached()) : std::nullopt);
}

}  // namespace ormel
