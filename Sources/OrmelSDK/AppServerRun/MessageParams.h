#pragma once

#include "OrmelSDK/JSONValue.h"

namespace ormel::detail {

/// The object under `params` of a message, or an empty one. Refers into the message.
const JSONValue& paramsOf(const JSONValue& payload);

}  // namespace ormel::detail
