#pragma once

#include <map>
#include <string>

#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelConfigValue.h"

// Arguments that go out in a form of their own; for `codedBy` in the table of a call's params.
namespace ormel::detail {

/// The server does not know every policy by the word of its case.
struct ApprovalPolicyWriter {
  static JSONValue encode(const ApprovalMode& policy) { return policy.jsonValue(); }
};

struct ConfigWriter {
  static JSONValue encode(const std::map<std::string, OrmelConfigValue>& config) {
    return configValueToJSONValue(OrmelConfigValue::object(config));
  }
};

}  // namespace ormel::detail
