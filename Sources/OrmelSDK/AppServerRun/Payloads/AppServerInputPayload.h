#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Input/AdditionalContext.h"
#include "OrmelSDK/Input/TurnEnvironment.h"
#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The input of the user as an array of parts, also where it is a single text.
JSONValue appServerInputItems(const Input& input);

/// An empty map is left out like an absent one.
std::optional<JSONValue> buildAdditionalContextObject(
    const std::optional<std::map<std::string, AdditionalContextEntry>>& additionalContext);

/// An empty list is sent: it states that there are no environments, while an absent one states nothing.
std::optional<JSONValue> buildEnvironmentArray(const std::optional<std::vector<TurnEnvironment>>& environments);

}  // namespace ormel::detail
