#include "OrmelSDK/AppServerRun/Parsing/ThreadItemDeltas.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"

namespace ormel::detail {

namespace {

std::string_view deltaIn(const JSONObject& params) { return textViewMember(params, {"delta"}).value_or(""); }

std::optional<std::int64_t> millisecondsUnder(const JSONObject& params, JSONKeys keys) {
  return firstMember(params, keys, parseOptionalInt);
}

}  // namespace

void NotificationHandlers::update(ThreadItem item) const {
  run_.items.store(item);
  emitEvent(ItemUpdatedEvent{std::move(item)});
}

std::optional<ThreadItem> NotificationHandlers::storedItem() const {
  const JSONValue* value = params_.find("item");
  auto item = value ? parseThreadItem(*value, run_.scope.active()) : std::nullopt;
  if (item) run_.items.store(*item);
  return item;
}

void NotificationHandlers::itemStarted() const {
  auto item = storedItem();
  if (!item) return;
  emitEvent(ItemStartedEvent{*std::move(item), namedThreadID(), namedTurnID(),
                             millisecondsUnder(params_, {"startedAtMs", "started_at_ms"})});
}

void NotificationHandlers::itemUpdated() const {
  if (auto item = storedItem()) emitEvent(ItemUpdatedEvent{*std::move(item)});
}

void NotificationHandlers::itemCompleted() const {
  auto item = storedItem();
  if (!item) return;
  emitEvent(ItemCompletedEvent{*std::move(item), namedThreadID(), namedTurnID(),
                               millisecondsUnder(params_, {"completedAtMs", "completed_at_ms"})});
}

void NotificationHandlers::handleAgentMessageDelta() const {
  const std::string_view itemID = neededText({"itemId"}, "agentMessage delta missing itemId");
  AgentMessageItem& message =
      mergeAgentMessageDelta(run_.items.at(itemID), itemID, deltaIn(params_), run_.items.snapshots());
  emitGrown(message, &AgentMessageItem::text);
}

void NotificationHandlers::handleCommandOutputDelta() const {
  ThreadItem* item = run_.items.find(neededText({"itemId"}, "commandExecution delta missing itemId"));
  auto* command = item ? mergeCommandOutputDelta(*item, deltaIn(params_), run_.items.snapshots()) : nullptr;
  if (command) emitGrown(*command, &CommandExecutionItem::aggregatedOutput);
}

void NotificationHandlers::handleMcpToolCallProgress() const {
  ThreadItem* item = run_.items.find(neededText({"itemId"}, "mcpToolCall progress missing itemId"));
  if (item && mergeMcpToolCallProgress(*item, textMember(params_, {"message"}, ""))) emitUpdated(*item);
}

void NotificationHandlers::handleFileChangePatchUpdated() const {
  std::string itemID(neededText({"itemId", "item_id"}, "fileChange patch update missing itemId"));
  const ThreadItem* stored = run_.items.find(itemID);
  update(mergeFileChangePatch(stored, std::move(itemID), arrayMember(params_, {"changes"})));
}

void NotificationHandlers::handleReasoningLikeDelta(bool isPlan) const {
  std::string itemID(neededText({"itemId"}, "reasoning delta missing itemId"));
  const ThreadItem* stored = run_.items.find(itemID);
  update(mergeReasoningLikeDelta(stored, std::move(itemID), deltaIn(params_), isPlan));
}

bool NotificationHandlers::emitContextCompactionEventIfNeeded(std::string_view method) const {
  if (!isContextCompactionNotificationMethod(method)) return false;
  ThreadItem item = contextCompactionItem(params_);
  if (run_.stream.currentOperationGeneration() && run_.items.store(item)) {
    emitEvent(ItemStartedEvent{item, std::nullopt, std::nullopt, std::nullopt});
    emitEvent(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  }
  return true;
}

}  // namespace ormel::detail
