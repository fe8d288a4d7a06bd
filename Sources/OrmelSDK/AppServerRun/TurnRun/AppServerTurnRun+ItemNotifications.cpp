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

void AppServerTurnRun::Notifications::update(ThreadItem item) const {
  run.items_.store(item);
  emit(ItemUpdatedEvent{std::move(item)});
}

std::optional<ThreadItem> AppServerTurnRun::Notifications::storedItem() const {
  const JSONValue* value = params.find("item");
  auto item = value ? parseThreadItem(*value, run.scope_.active()) : std::nullopt;
  if (item) run.items_.store(*item);
  return item;
}

void AppServerTurnRun::Notifications::itemStarted() const {
  auto item = storedItem();
  if (!item) return;
  emit(ItemStartedEvent{*std::move(item), textMember(params, {"threadId", "thread_id"}),
                        textMember(params, {"turnId", "turn_id"}),
                        millisecondsUnder(params, {"startedAtMs", "started_at_ms"})});
}

void AppServerTurnRun::Notifications::itemUpdated() const {
  if (auto item = storedItem()) emit(ItemUpdatedEvent{*std::move(item)});
}

void AppServerTurnRun::Notifications::itemCompleted() const {
  auto item = storedItem();
  if (!item) return;
  emit(ItemCompletedEvent{*std::move(item), textMember(params, {"threadId", "thread_id"}),
                          textMember(params, {"turnId", "turn_id"}),
                          millisecondsUnder(params, {"completedAtMs", "completed_at_ms"})});
}

void AppServerTurnRun::Notifications::agentMessageDelta() const {
  const std::string_view itemID = neededText({"itemId"}, "agentMessage delta missing itemId");
  AgentMessageItem& message =
      mergeAgentMessageDelta(run.items_.at(itemID), itemID, deltaIn(params), run.items_.snapshots());
  emitGrown(message, &AgentMessageItem::text);
}

void AppServerTurnRun::Notifications::commandOutputDelta() const {
  ThreadItem* item = run.items_.find(neededText({"itemId"}, "commandExecution delta missing itemId"));
  auto* command = item ? mergeCommandOutputDelta(*item, deltaIn(params), run.items_.snapshots()) : nullptr;
  if (command) emitGrown(*command, &CommandExecutionItem::aggregatedOutput);
}

void AppServerTurnRun::Notifications::mcpToolCallProgress() const {
  ThreadItem* item = run.items_.find(neededText({"itemId"}, "mcpToolCall progress missing itemId"));
  if (item && mergeMcpToolCallProgress(*item, textMember(params, {"message"}, ""))) emitUpdated(*item);
}

void AppServerTurnRun::Notifications::fileChangePatchUpdated() const {
  std::string itemID(neededText({"itemId", "item_id"}, "fileChange patch update missing itemId"));
  const ThreadItem* stored = run.items_.find(itemID);
  update(mergeFileChangePatch(stored, std::move(itemID), arrayMember(params, {"changes"})));
}

void AppServerTurnRun::Notifications::reasoningDelta() const { reasoningLikeDelta(false); }
void AppServerTurnRun::Notifications::planDelta() const { reasoningLikeDelta(true); }

void AppServerTurnRun::Notifications::reasoningLikeDelta(bool isPlan) const {
  std::string itemID(neededText({"itemId"}, "reasoning delta missing itemId"));
  const ThreadItem* stored = run.items_.find(itemID);
  update(mergeReasoningLikeDelta(stored, std::move(itemID), deltaIn(params), isPlan));
}

bool AppServerTurnRun::Notifications::contextCompaction(std::string_view method) const {
  if (!isContextCompactionNotificationMethod(method)) return false;
  ThreadItem item = contextCompactionItem(params);
  if (run.keepForOperation(item)) {
    emit(ItemStartedEvent{item, std::nullopt, std::nullopt, std::nullopt});
    emit(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  }
  return true;
}

}  // namespace ormel::detail
