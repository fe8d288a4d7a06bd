#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/Events/TurnEvents.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The tokens used last; absent if one of the counts that every usage has is missing.
std::optional<Usage> parseUsageFromTokenUsage(const JSONObject& params);

/// The part of a compaction's notification that describes it, which may be all of it.
const JSONObject& contextCompactionPayload(const JSONObject& params);

/// The item that a compaction's notification tells of; without an id of its own it has a new one.
ContextCompactionItem contextCompactionItem(const JSONObject& params);

/// The items that only the end of their turn reports: compactions, sleeps and the plan. Each id comes once, at the
/// place of its first appearance and with its last value.
std::vector<ThreadItem> completedTurnItems(const JSONObject& from, std::string_view turnID, const ActiveScope& scope);

}  // namespace ormel::detail
