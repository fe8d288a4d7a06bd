#include "OrmelSDK/AppServerRun/TurnNotificationParsing.h"

#include <algorithm>
#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"
#include "OrmelSDK/UUID.h"

namespace ormel::detail {

namespace {

/// Told by the type alone, so that the large items of a turn are not read only to be dropped.
bool isReportedByTheTurn(const JSONValue& item) {
  const JSONObject* object = item.objectValue();
  const auto type = object ? textUnder(*object, {"type"}) : std::nullopt;
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
  const JSONObject* usage = objectUnder(params, {"tokenUsage"});
  const JSONObject* last = usage ? objectUnder(*usage, {"last"}) : nullptr;
  if (!last) return std::nullopt;
  const auto input = integerUnder(*last, {"inputTokens"});
  const auto cachedInput = integerUnder(*last, {"cachedInputTokens"});
  const auto output = integerUnder(*last, {"outputTokens"});
  if (!input || !cachedInput || !output) return std::nullopt;
  return Usage{integerUnder(*last, {"totalTokens"}), *input, *cachedInput, *output,
               integerUnder(*usage, {"modelContextWindow"})};
}

const JSONObject& contextCompactionPayload(const JSONObject& params) {
  const JSONObject* payload = objectUnder(params, {"item", "compaction", "context"});
  return payload ? *payload : params;
}

ContextCompactionItem contextCompactionItem(const JSONObject& params) {
  auto id = ownTextUnder(contextCompactionPayload(params), {"id"});
  return {id ? *std::move(id) : "context-compaction-notification-" + UUID::random().text()};
}

std::vector<ThreadItem> completedTurnItems(const JSONObject& from, std::string_view turnID, const ActiveScope& scope) {
  std::vector<ThreadItem> items;
  if (const auto* listed = arrayUnder(from, {"items"})) {
    for (const JSONValue& element : *listed) {
      if (!isReportedByTheTurn(element)) continue;
      if (auto item = parseThreadItem(element, scope)) put(items, *std::move(item));
    }
  }
  const auto* plan = arrayUnder(from, {"plan"});
  if (plan && !plan->empty()) put(items, todoListItem(plan, turnID));
  return items;
}

}  // namespace ormel::detail
