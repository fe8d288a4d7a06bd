#include "JSONRPC.h"

namespace tessella {

using ormel::JSONValue;

JSONValue resultResponse(const JSONValue& id, const JSONValue& result) {
  return JSONValue::object({{"jsonrpc", "2.0"}, {"id", id}, {"result", result}});
}

JSONValue errorResponse(const JSONValue& id, int code, std::string_view message) {
  const auto error = JSONValue::object({{"code", code}, {"message", message}});
  return JSONValue::object({{"jsonrpc", "2.0"}, {"id", id}, {"error", error}});
}

JSONValue idOf(const JSONValue& message) {
  const auto* id = message.find("id");
  return id ? *id : JSONValue();
}

}  // namespace tessella
