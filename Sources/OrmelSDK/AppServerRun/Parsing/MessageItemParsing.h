#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Items/MessageItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Absent unless the value is an object.
std::optional<MemoryCitation> memoryCitation(const JSONValue& from);

HookPromptItem parseHookPromptItem(std::string id, const JSONObject& object);
AgentMessageItem parseAgentMessageItem(std::string id, const JSONObject& object);

}  // namespace ormel::detail
