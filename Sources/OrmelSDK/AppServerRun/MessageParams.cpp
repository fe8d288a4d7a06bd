#include "OrmelSDK/AppServerRun/MessageParams.h"

namespace ormel::detail {

const JSONValue& paramsOf(const JSONValue& payload) {
  static const JSONValue none = JSONValue::object({});
  const JSONValue* params = payload.find("params");
  return params && params->objectValue() ? *params : none;
}

}  // namespace ormel::detail
