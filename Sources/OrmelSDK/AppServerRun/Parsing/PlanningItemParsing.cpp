#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"

#include <optional>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

std::optional<TodoItem> todoItem(const JSONValue& from, JSONKeys textKeys) {
  const JSONObject* object = from.objectValue();
  if (!object) return std::nullopt;
  const auto text = trimmed(textViewMember(*object, textKeys).value_or(""));
  if (text.empty()) return std::nullopt;
  const auto completed = booleanMember(*object, {"completed"});
  return TodoItem{std::string(text),
                  completed ? *completed : isCompletedWord(textViewMember(*object, {"status"}).value_or(""))};
}

}  // namespace

PlanItem parsePlanItem(std::string id, const JSONObject& object) {
  return {std::move(id), textViewMember(object, {"text"}).value_or("")};
}

ReasoningItem parseReasoningItem(std::string id, const JSONObject& object) {
  ReasoningItem item{std::move(id), textsOf<SharedText>(arrayMember(object, {"summary"})),
                     textsOf<SharedText>(arrayMember(object, {"content"}))};
  if (item.summary.empty() && item.content.empty()) {
    const auto text = textViewMember(object, {"text"}).value_or("");
    if (!text.empty()) item.content.emplace_back(text);
  }
  return item;
}

TodoListItem parseTodoListItem(std::string id, const JSONObject& object) {
  return {std::move(id), listOf(arrayMember(object, {"items"}),
                                [](const JSONValue& element) { return todoItem(element, {"text", "step"}); })};
}

std::string turnPlanItemID(std::string_view turnID) { return "turn-plan:" + std::string(turnID); }

TodoListItem todoListItem(const JSONArray* fromPlanEntries, std::string_view turnID) {
  return {turnPlanItemID(turnID),
          listOf(fromPlanEntries, [](const JSONValue& entry) { return todoItem(entry, {"step", "text"}); })};
}

}  // namespace ormel::detail
