#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"

#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

const JSONValue& paramsOf(const JSONValue& payload) {
  static const JSONValue none = JSONValue::object({});
  const JSONValue* params = payload.find("params");
  return params && params->objectValue() ? *params : none;
}

std::optional<std::string_view> threadIDIn(const JSONObject& params) {
  return textViewMember(params, {"threadId", "thread_id"});
}

std::optional<std::string_view> turnIDIn(const JSONObject& params) {
  return textViewMember(params, {"turnId", "turn_id"});
}

}  // namespace ormel::detail
