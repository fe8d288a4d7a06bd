#include "OrmelSDK/AppServerRun/ThreadItemDeltas.h"

#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/ToolItemParsing.h"

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

ThreadItem mergeAgentMessageDelta(const ThreadItem* stored, std::string itemID, std::string_view delta) {
  const auto* message = storedAs<AgentMessageItem>(stored);
  AgentMessageItem merged = message ? *message : AgentMessageItem();
  merged.id = std::move(itemID);
  merged.text.append(delta);
  return merged;
}

std::optional<ThreadItem> mergeCommandOutputDelta(const ThreadItem* stored, std::string_view delta) {
  const auto* command = storedAs<CommandExecutionItem>(stored);
  if (!command) return std::nullopt;
  CommandExecutionItem merged = *command;
  merged.aggregatedOutput.append(delta);
  return merged;
}

std::optional<ThreadItem> mergeMcpToolCallProgress(const ThreadItem* stored, std::string message) {
  const auto* call = storedAs<McpToolCallItem>(stored);
  if (!call) return std::nullopt;
  McpToolCallItem merged = *call;
  merged.progressMessage = std::move(message);
  return merged;
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
