#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// All apps, with their tools. "connected" says that the user's account can use it.
const JSONValue& appDescriptions();

}  // namespace ormel::simulator
