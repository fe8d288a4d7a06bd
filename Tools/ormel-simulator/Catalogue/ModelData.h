#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

const JSONValue& modelDescriptors();
const JSONValue& permissionProfiles();

}  // namespace ormel::simulator
