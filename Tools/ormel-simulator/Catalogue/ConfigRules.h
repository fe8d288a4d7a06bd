#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Fails with a `Refusal` that names the key, if a key that the server knows has a value that it cannot have.
void checkConfig(const JSONValue& config);

}  // namespace ormel::simulator
