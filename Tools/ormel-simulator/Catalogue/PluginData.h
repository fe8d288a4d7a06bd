#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// The marketplaces that are there from the start, with their plugins.
const JSONValue& builtInMarketplaces();

}  // namespace ormel::simulator
