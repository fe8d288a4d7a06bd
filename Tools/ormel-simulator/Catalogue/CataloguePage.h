#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

/// The page of the elements, in their order, that "cursor" and "limit" of the params choose. `idKey` is a member that
/// tells elements apart. A cursor of another listing is a `Refusal`, like one that never was.
JSONValue pageOfListing(const std::string& listing, const std::vector<JSONValue>& elements, const char* idKey,
                        const RequestParams& params);

}  // namespace ormel::simulator
