#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Requests/LaterAnswer.h"

namespace ormel::simulator {

/// Gives the result of a request, or fails with `Refusal`.
using ImmediateHandler = std::function<JSONValue(const JSONValue& params)>;

/// Begins with a request whose answer comes later. If it fails with `Refusal`, that is the answer, and no other may
/// follow.
using DeferredHandler = std::function<void(const JSONValue& params, LaterAnswer answer)>;

using RequestHandler = std::variant<ImmediateHandler, DeferredHandler>;

/// The requests that the agent answers, by their method.
using RequestTable = std::map<std::string, RequestHandler>;

}  // namespace ormel::simulator
