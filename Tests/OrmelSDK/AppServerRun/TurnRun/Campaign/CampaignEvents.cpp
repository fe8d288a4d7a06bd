#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignEvents.h"

#include <cstdint>
#include <utility>

#include "OrmelSDK/Base/Visit.h"

namespace ormel::testing {

namespace {

constexpr const char* none = "-";

std::string orNone(const std::optional<std::string>& text) { return text.value_or(none); }

template <typename Number>
std::string orNone(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : none;
}

std::string itemInWords(std::string_view kind, std::string_view id, std::string_view text) {
  return std::string(kind) + " " + std::string(id) + ": " + std::string(text);
}

std::string statusOf(const McpToolCallItem& item) {
  if (item.status == McpToolCallStatus::completed) return "completed";
  return item.status == McpToolCallStatus::inProgress ? "inProgress" : "failed";
}

std::string stepsOf(const TodoListItem& list) {
  std::string text;
  for (const TodoItem& item : list.items) text += (item.completed ? "+" : "-") + item.text;
  return text;
}

std::string pathsOf(const FileChangeItem& item) {
  std::string text;
  for (const auto& change : item.changes) text += change.path + ";";
  return text;
}

std::string describe(const ThreadItem& item) {
  return visit(
      item, [](const AgentMessageItem& message) { return itemInWords("agentMessage", message.id, message.text); },
      [](const PlanItem& plan) { return itemInWords("plan", plan.id, plan.text); },
      [](const ReasoningItem& reasoning) { return itemInWords("reasoning", reasoning.id, reasoning.text()); },
      [](const CommandExecutionItem& command) {
        return itemInWords("commandExecution", command.id, command.aggregatedOutput);
      },
      [](const FileChangeItem& change) { return itemInWords("fileChange", change.id, pathsOf(change)); },
      [](const TodoListItem& list) { return itemInWords("todoList", list.id, stepsOf(list)); },
      [](const ContextCompactionItem& compaction) { return itemInWords("contextCompaction", compaction.id, ""); },
      [](const McpToolCallItem& call) {
        if (call.tool == "elicitation/request") return std::string();
        return itemInWords("mcpToolCall", call.id, call.progressMessage.value_or("") + "/" + statusOf(call));
      },
      [](const auto&) { return std::string("another item"); });
}

std::string placed(const char* verb, const ThreadItem& item, const std::optional<std::string>& threadID,
                   const std::optional<std::string>& turnID, const std::optional<std::int64_t>& moment) {
  const std::string words = describe(item);
  if (words.empty()) return words;
  return std::string(verb) + " " + words + " of " + orNone(threadID) + "/" + orNone(turnID) + " at " + orNone(moment);
}

std::string usageInWords(std::int64_t input, std::int64_t cached, std::int64_t output) {
  return std::to_string(input) + "/" + std::to_string(cached) + "/" + std::to_string(output);
}

std::string joined(const JSONValue* texts) {
  std::string all;
  if (!texts || !texts->arrayValue()) return all;
  bool isFirst = true;
  for (const JSONValue& text : *texts->arrayValue()) {
    if (!std::exchange(isFirst, false)) all += "\n";
    all += text.stringValue().value_or("");
  }
  return all;
}

std::string numberIn(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value ? value->encode() : none;
}

}  // namespace

std::string describe(const ThreadEvent& event) {
  return visit(
      event, [](const ThreadStartedEvent& thread) { return "thread started " + thread.threadID; },
      [](const TurnStartedEvent& turn) { return "turn started " + orNone(turn.modelContextWindow); },
      [](const ItemStartedEvent& item) {
        return placed("item started", item.item, item.threadID, item.turnID, item.startedAtMilliseconds);
      },
      [](const ItemUpdatedEvent& item) { return "item updated " + describe(item.item); },
      [](const ItemCompletedEvent& item) {
        return placed("item completed", item.item, item.threadID, item.turnID, item.completedAtMilliseconds);
      },
      [](const TurnCompletedEvent& turn) {
        return "turn completed " +
               usageInWords(turn.usage.inputTokens, turn.usage.cachedInputTokens, turn.usage.outputTokens);
      },
      [](const TurnFailedEvent& turn) { return "turn failed: " + turn.error.message; },
      [](const ThreadErrorEvent& error) { return "error: " + error.message; },
      [](const ThreadWarningEvent& warning) { return "warning " + orNone(warning.threadID) + ": " + warning.message; },
      [](const ThreadGoalClearedEvent& goal) { return "goal cleared " + goal.threadID; },
      [](const auto&) { return std::string("another event"); });
}

std::string textOf(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return std::string(value ? value->stringValue().value_or("") : std::string_view());
}

std::optional<std::string> textOf(const JSONValue& object, std::string_view key, std::string_view otherKey) {
  for (const auto each : {key, otherKey}) {
    const JSONValue* value = object.find(each);
    if (value && value->stringValue()) return std::string(*value->stringValue());
  }
  return std::nullopt;
}

const JSONValue* objectIn(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value && value->objectValue() ? value : nullptr;
}

void ExpectedItems::clear() {
  items_.clear();
  usage_.reset();
}

std::string ExpectedItems::usage() const { return usage_.value_or("0/0/0"); }

std::string ExpectedItems::told(const std::string& verb, const std::string& id) const {
  const Item& item = items_.at(id);
  return verb + " " + itemInWords(item.kind, id, item.text);
}

std::optional<std::pair<std::string, ExpectedItems::Item>> ExpectedItems::itemIn(const JSONValue& value) {
  const std::string kind = textOf(value, "type");
  const std::string id = textOf(value, "id");
  if (kind.empty() || id.empty()) return std::nullopt;
  std::string text = textOf(value, "text");
  if (kind == "commandExecution") text = textOf(value, "aggregatedOutput");
  if (kind == "mcpToolCall") text = "/" + textOf(value, "status");
  if (kind == "contextCompaction") text = "";
  if (kind == "reasoning") {
    const std::string summary = joined(value.find("summary"));
    const std::string content = joined(value.find("content"));
    text = summary + (summary.empty() || content.empty() ? "" : "\n") + content;
  }
  return std::pair(id, Item{kind, text});
}

ExpectedItems::Item ExpectedItems::planOf(const JSONValue& entries) {
  std::string text;
  for (const JSONValue& entry : *entries.arrayValue()) {
    text += (textOf(entry, "status") == "completed" ? "+" : "-") + textOf(entry, "step");
  }
  return {"todoList", text};
}

ExpectedItems::Events ExpectedItems::whole(const std::string& verb, const JSONValue& params) {
  const JSONValue* value = params.find("item");
  const auto item = value ? itemIn(*value) : std::nullopt;
  if (!item) return {};
  items_[item->first] = item->second;
  const std::string words = told("item " + verb, item->first);
  if (verb == "updated") return {words};
  return {words + " of " + orNone(textOf(params, "threadId", "thread_id")) + "/" +
          orNone(textOf(params, "turnId", "turn_id")) + " at " + numberIn(params, verb + "AtMs")};
}

ExpectedItems::Events ExpectedItems::grown(const std::string& kind, const JSONValue& params, bool needsItem) {
  const std::string id = textOf(params, "itemId");
  const auto stored = items_.find(id);
  const bool isOfKind = stored != items_.end() && stored->second.kind == kind;
  if (needsItem && !isOfKind) return {};
  // A plan that grows may go on from reasoning that was kept under its id.
  const bool goesOn = isOfKind || (kind == "plan" && stored != items_.end() && stored->second.kind == "reasoning");
  items_[id] = {kind, (goesOn ? stored->second.text : "") + textOf(params, "delta")};
  return {told("item updated", id)};
}

ExpectedItems::Events ExpectedItems::notified(const std::string& method, const JSONValue& params) {
  if (method == "item/started") return whole("started", params);
  if (method == "item/updated") return whole("updated", params);
  if (method == "item/completed") return whole("completed", params);
  if (method == "item/agentMessage/delta") return grown("agentMessage", params, false);
  if (method == "item/commandExecution/outputDelta") return grown("commandExecution", params, true);
  if (method == "item/reasoning/textDelta" || method == "item/reasoning/summaryTextDelta") {
    return grown("reasoning", params, false);
  }
  if (method == "item/plan/delta") return grown("plan", params, false);
  if (method == "item/mcpToolCall/progress") {
    const auto stored = items_.find(textOf(params, "itemId"));
    if (stored == items_.end() || stored->second.kind != "mcpToolCall") return {};
    stored->second.text = textOf(params, "message") + stored->second.text.substr(stored->second.text.find('/'));
    return {told("item updated", stored->first)};
  }
  if (method == "item/fileChange/patchUpdated") {
    const std::string id = textOf(params, "itemId");
    std::string paths;
    for (const JSONValue& change : *params.find("changes")->arrayValue()) paths += textOf(change, "path") + ";";
    items_[id] = {"fileChange", paths};
    return {told("item updated", id)};
  }
  if (method == "turn/plan/updated") {
    const std::string id = "turn-plan:" + textOf(params, "turnId");
    const bool isFirst = items_.insert_or_assign(id, planOf(*params.find("plan"))).second;
    return {isFirst ? told("item started", id) + " of -/- at -" : told("item updated", id)};
  }
  if (method == "thread/tokenUsage/updated") {
    const JSONValue* usage = objectIn(params, "tokenUsage");
    const JSONValue* last = usage ? objectIn(*usage, "last") : nullptr;
    usage_.reset();
    if (last) {
      usage_ = numberIn(*last, "inputTokens") + "/" + numberIn(*last, "cachedInputTokens") + "/" +
               numberIn(*last, "outputTokens");
    }
    return {};
  }
  if (method == "thread/context_compacted") {
    const std::string id = textOf(params, "id");
    if (!items_.insert_or_assign(id, Item{"contextCompaction", ""}).second) return {};
    return {told("item started", id) + " of -/- at -", told("item completed", id) + " of -/- at -"};
  }
  if (method == "error") return {"error: " + textOf(params, "message")};
  if (method == "warning") {
    return {"warning " + orNone(textOf(params, "threadId", "thread_id")) + ": " + textOf(params, "message")};
  }
  if (method == "thread/goal/cleared") return {"goal cleared " + orNone(textOf(params, "threadId", "thread_id"))};
  return {};
}

ExpectedItems::Events ExpectedItems::completed(const JSONValue& turn, const std::string& turnID) {
  Events events;
  if (const JSONValue* items = turn.find("items"); items && items->arrayValue()) {
    for (const JSONValue& value : *items->arrayValue()) {
      const auto item = itemIn(value);
      if (!item || item->second.kind != "contextCompaction") continue;
      items_[item->first] = item->second;
      events.push_back(told("item completed", item->first) + " of -/- at -");
    }
  }
  const std::string planID = "turn-plan:" + turnID;
  const JSONValue* plan = turn.find("plan");
  if (plan && plan->arrayValue() && !plan->arrayValue()->empty()) items_[planID] = planOf(*plan);
  if (items_.count(planID) != 0) events.push_back(told("item completed", planID) + " of -/- at -");
  return events;
}

ExpectedItems::Events ExpectedItems::userWasAsked(const std::string& itemID) {
  items_[itemID] = {"mcpToolCall", "/inProgress"};
  return {told("item started", itemID) + " of -/- at -"};
}

ExpectedItems::Events ExpectedItems::userHasAnswered(const std::string& itemID) {
  const auto stored = items_.find(itemID);
  if (stored == items_.end() || stored->second.kind != "mcpToolCall") return {};
  stored->second.text = stored->second.text.substr(0, stored->second.text.find('/')) + "/completed";
  return {told("item completed", itemID) + " of -/- at -"};
}

}  // namespace ormel::testing
