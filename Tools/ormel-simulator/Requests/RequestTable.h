#pragma once

#include <functional>
#include <map>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Gives the result of a request, or fails with `Refusal`.
using RequestHandler = std::function<JSONValue(const JSONValue& params)>;

/// The requests that the agent answers, by their method.
using RequestTable = std::map<std::string, RequestHandler>;

}  // namespace ormel::simulator
