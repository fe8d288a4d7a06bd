#pragma once

#include <string>
#include <string_view>

#include "OrmelSDK/Items/PlanningItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

PlanItem parsePlanItem(std::string id, const JSONObject& object);
ReasoningItem parseReasoningItem(std::string id, const JSONObject& object);
TodoListItem parseTodoListItem(std::string id, const JSONObject& object);

/// The id of the list that a turn's plan makes.
std::string turnPlanItemID(std::string_view turnID);

/// The plan of a turn as a list; no entries make an empty one.
TodoListItem todoListItem(const JSONArray* fromPlanEntries, std::string_view turnID);

}  // namespace ormel::detail
