#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"

#include <algorithm>
#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Base/UUID.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

/// Told by the type alone, so that the large items of a turn are not read only to be dropped.
bool isReportedByTheTurn(const JSONValue& item) {
  const JSONObject* object = item.objectValue();
  const auto type = object ? textViewMember(*object, {"type"}) : std::nullopt;
  return type && (*type == "sleep" || isContextCompactionItemType(*type));
}

void put(std::vector<ThreadItem>& items, ThreadItem item) {
  const auto same = std::find_if(items.begin(), items.end(),
                                 [&item](const ThreadItem& earlier) { return earlier.id() == item.id(); });
  if (same == items.end()) {
    items.push_back(std::move(item));
  } else {
    *same = std::move(item);
  }
}

}  // namespace

std::optional<Usage> parseUsageFromTokenUsage(const JSONObject& params) {
  const JSONObject* usage = objectMember(params, {"tokenUsage"});
  const JSONObject* last = usage ? objectMember(*usage, {"last"}) : nullptr;
  if (!last) return std::nullopt;
  const auto input = integerMember(*last, {"inputTokens"});
  const auto cachedInput = integerMember(*last, {"cachedInputTokens"});
  const auto output = integerMember(*last, {"outputTokens"});
  if (!input || !cachedInput || !output) return std::nullopt;
  return Usage{integerMember(*last, {"totalTokens"}), *input, *cachedInput, *output,
               integerMember(*usage, {"modelContextWindow"})};
}

const JSONObject& contextCompactionPayload(const JSONObject& params) {
  const JSONObject* payload = objectMember(params, {"item", "compaction", "context"});
  return payload ? *payload : params;
}

ContextCompactionItem contextCompactionItem(const JSONObject& params) {
  auto id = textMember(contextCompactionPayload(params), {"id"});
  return {id ? *std::move(id) : "context-compaction-notification-" + UUID::random().text()};
}

std::vector<ThreadItem> completedTurnItems(const JSONObject& from, std::string_view turnID, const ActiveScope& scope) {
  std::vector<ThreadItem> items;
  if (const auto* listed = arrayMember(from, {"items"})) {
    for (const JSONValue& element : *listed) {
      if (!isReportedByTheTurn(element)) continue;
      if (auto item = parseThreadItem(element, scope)) put(items, *std::move(item));
    }
  }
  const auto* plan = arrayMember(from, {"plan"});
  if (plan && !plan->empty()) put(items, todoListItem(plan, turnID));
  return items;
}

}  // namespace ormel::detail
