#include <utility>

#include "OrmelSDK/AppServerRun/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/AppServerTurnRun.h"
#include "OrmelSDK/ThreadRunError.h"

namespace ormel::detail {

void AppServerTurnRun::dispatchServerRequest(const ServerRequestMessage& request) {
  respondToServerRequestError(request.id, AppServerRPCError::methodNotFoundCode, "Method not found: " + request.method);
}

void AppServerTurnRun::respondToServerRequest(const AppServerRequestID& id, const JSONValue& result) {
  transport_.write(JSONValue::object({{"id", id.jsonValue()}, {"result", result}}));
}

void AppServerTurnRun::respondToServerRequestError(const AppServerRequestID& id, std::int64_t code,
                                                   const std::string& message) {
  const JSONValue error = JSONValue::object({{"code", code}, {"message", message}});
  transport_.write(JSONValue::object({{"id", id.jsonValue()}, {"error", error}}));
}

}  // namespace ormel::detail
