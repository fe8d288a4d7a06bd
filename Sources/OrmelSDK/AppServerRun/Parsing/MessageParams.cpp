#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

const JSONValue& paramsOf(const JSONValue& payload) {
  static const JSONValue& none = neverDestroyed<JSONValue>(JSONValue::object({}));
  const JSONValue* params = payload.find("params");
  return params && params->objectValue() ? *params : none;
}

MessageIDs idsIn(const JSONObject& params) {
  return {textViewMember(params, {"threadId", "thread_id"}), textViewMember(params, {"turnId", "turn_id"})};
}

}  // namespace ormel::detail
