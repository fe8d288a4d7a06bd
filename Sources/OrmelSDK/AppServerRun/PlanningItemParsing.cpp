#include "OrmelSDK/AppServerRun/PlanningItemParsing.h"

#include <optional>
#include <utility>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"
#include "OrmelSDK/TrimmedText.h"

namespace ormel::detail {

namespace {

std::optional<TodoItem> todoItem(const JSONValue& from, JSONKeys textKeys) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  const auto text = trimmed(textUnder(*object, textKeys).value_or(""));
  if (text.empty()) return std::nullopt;
  const auto completed = booleanUnder(*object, {"completed"});
  return TodoItem{std::string(text),
                  completed ? *completed : isCompletedWord(textUnder(*object, {"status"}).value_or(""))};
}

}  // namespace

PlanItem parsePlanItem(std::string id, const JSONObject& object) {
  return {std::move(id), textUnder(object, {"text"}).value_or("")};
}

ReasoningItem parseReasoningItem(std::string id, const JSONObject& object) {
  ReasoningItem item{std::move(id), textsOf<SharedText>(arrayUnder(object, {"summary"})),
                     textsOf<SharedText>(arrayUnder(object, {"content"}))};
  if (item.summary.empty() && item.content.empty()) {
    const auto text = textUnder(object, {"text"}).value_or("");
    if (!text.empty()) item.content.emplace_back(text);
  }
  return item;
}

TodoListItem parseTodoListItem(std::string id, const JSONObject& object) {
  return {std::move(id), listOf(arrayUnder(object, {"items"}),
                                [](const JSONValue& element) { return todoItem(element, {"text", "step"}); })};
}

std::string turnPlanItemID(std::string_view turnID) { return "turn-plan:" + std::string(turnID); }

TodoListItem todoListItem(const JSONArray* fromPlanEntries, std::string_view turnID) {
  return {turnPlanItemID(turnID),
          listOf(fromPlanEntries, [](const JSONValue& entry) { return todoItem(entry, {"step", "text"}); })};
}

}  // namespace ormel::detail
