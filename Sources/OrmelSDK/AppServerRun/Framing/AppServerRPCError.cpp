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

std::string AppServerRPCError::generalAdvice() const {
  if (code_ == methodNotFoundCode) {
    return "The server does not know this call: it is older than the call, or not the server that was meant. Update "
           "it; "
           "ormel-doctor shows its version.";
  }
  constexpr std::int64_t invalidParamsCode = -32602;
  if (code_ == invalidRequestCode || code_ == invalidParamsCode) {
    return "The server was reached and refuses the request as it stands: correct the arguments that its text names. If "
           "they are right, its version may not know them.";
  }
  return "The server was reached and could not serve the request; the text above is its own. Mend what it names, and "
         "try "
         "again.";
}

}  // namespace ormel
