#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

// In each struct `payload` is the whole message; `method` is a view into it.

/// The server asks the client for something.
struct ServerRequestMessage {
  std::string_view method;
  JSONValue payload;
};

/// The server tells something.
struct ServerNotificationMessage {
  std::string_view method;
  JSONValue payload;
};

/// The answer to a request of the client.
struct ResponseMessage {
  AppServerRequestID id;
  JSONValue result;
};

/// The refusal of a request of the client; the code of the error is of no use to a run.
struct ErrorResponseMessage {
  AppServerRequestID id;
  std::string message;
};

/// A line of the server. Use `visit` to tell the cases apart.
struct AppServerMessage {
  std::variant<ServerRequestMessage, ServerNotificationMessage, ResponseMessage, ErrorResponseMessage> value;

  AppServerMessage(ServerRequestMessage message) : value(std::move(message)) {}
  AppServerMessage(ServerNotificationMessage message) : value(std::move(message)) {}
  AppServerMessage(ResponseMessage message) : value(std::move(message)) {}
  AppServerMessage(ErrorResponseMessage message) : value(std::move(message)) {}
};

/// Classifies a line of the server. Fails with `ThreadRunError` of the kind `streamError` if the protocol knows no such
/// message, or if it is the bare report of an error.
AppServerMessage classifiedAppServerMessage(JSONValue payload);

}  // namespace ormel::detail
