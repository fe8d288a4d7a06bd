#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Items/CollaborationItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// A bare status word, or an object with one under `status` or `state`.
std::optional<CollabAgentState> collabAgentState(const JSONValue& from);

CollabAgentToolCallItem parseCollabAgentToolCallItem(std::string id, const JSONObject& object);
SubAgentActivityItem parseSubAgentActivityItem(std::string id, const JSONObject& object);

}  // namespace ormel::detail
