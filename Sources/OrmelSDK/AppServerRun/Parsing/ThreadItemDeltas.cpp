#include "OrmelSDK/AppServerRun/Parsing/ThreadItemDeltas.h"

#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/Parsing/ToolItemParsing.h"

namespace ormel::detail {

namespace {

template <typename Item>
const Item* storedAs(const ThreadItem* stored) {
  return stored ? std::get_if<Item>(&stored->value) : nullptr;
}

SharedText textSoFar(const ThreadItem* stored, bool isPlan) {
  const auto* plan = storedAs<PlanItem>(stored);
  if (isPlan && plan) return plan->text;
  const auto* reasoning = storedAs<ReasoningItem>(stored);
  return reasoning ? reasoning->text() : SharedText();
}

}  // namespace

AgentMessageItem& mergeAgentMessageDelta(ThreadItem& item, std::string_view itemID, std::string_view delta,
                                         SharedTextSnapshots& snapshots) {
  auto* message = std::get_if<AgentMessageItem>(&item.value);
  if (!message) {
    message = &item.value.emplace<AgentMessageItem>();
    message->id = itemID;
  }
  snapshots.append(delta, message->text);
  return *message;
}

CommandExecutionItem* mergeCommandOutputDelta(ThreadItem& item, std::string_view delta,
                                              SharedTextSnapshots& snapshots) {
  auto* command = std::get_if<CommandExecutionItem>(&item.value);
  if (command) snapshots.append(delta, command->aggregatedOutput);
  return command;
}

bool mergeMcpToolCallProgress(ThreadItem& item, std::string message) {
  auto* call = std::get_if<McpToolCallItem>(&item.value);
  if (call) call->progressMessage = std::move(message);
  return call;
}

ThreadItem mergeFileChangePatch(const ThreadItem* stored, std::string itemID, const JSONArray* changes) {
  const auto* change = storedAs<FileChangeItem>(stored);
  return FileChangeItem{std::move(itemID), fileUpdateChanges(changes),
                        change ? change->status : PatchApplyStatus::inProgress};
}

ThreadItem mergeReasoningLikeDelta(const ThreadItem* stored, std::string itemID, std::string_view delta, bool isPlan) {
  SharedText text = textSoFar(stored, isPlan);
  text.append(delta);
  if (isPlan) return PlanItem{std::move(itemID), std::move(text)};
  ReasoningItem reasoning{std::move(itemID), {}, {}};
  if (!text.empty()) reasoning.content.push_back(std::move(text));
  return reasoning;
}

}  // namespace ormel::detail
