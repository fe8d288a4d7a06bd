#include "ormel-simulator/Agent/AgentTurnRecord.h"

#include <algorithm>
#include <cmath>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

bool isItem(const JSONValue& item, std::string_view type) { return textMember(item, "type") == type; }

const char* wordOf(ItemsView view) {
  switch (view) {
    case ItemsView::notLoaded:
      return "notLoaded";
    case ItemsView::summary:
      return "summary";
    case ItemsView::full:
      break;
  }
  return "full";
}

}  // namespace

std::optional<std::string> AgentTurnRecord::prompt() const {
  for (const JSONValue& item : items) {
    if (isItem(item, "userMessage")) return inputText(anyMember(item, "content"));
  }
  return std::nullopt;
}

bool AgentTurnRecord::hasItem(std::string_view type) const {
  return std::any_of(items.begin(), items.end(), [&](const JSONValue& item) { return isItem(item, type); });
}

std::vector<JSONValue> AgentTurnRecord::summary() const {
  std::vector<JSONValue> chosen;
  const auto first =
      std::find_if(items.begin(), items.end(), [](const JSONValue& item) { return isItem(item, "userMessage"); });
  if (first != items.end()) chosen.push_back(*first);
  const auto last =
      std::find_if(items.rbegin(), items.rend(), [](const JSONValue& item) { return isItem(item, "agentMessage"); });
  if (last != items.rend()) chosen.push_back(*last);
  return chosen;
}

JSONObjectBuilder AgentTurnRecord::members(ItemsView view) const {
  std::vector<JSONValue> shown;
  if (view == ItemsView::full) shown = items;
  if (view == ItemsView::summary) shown = summary();
  constexpr double millisecondsOfSecond = 1000;
  JSONObjectBuilder members;
  members.set("id", id).set("status", status).set("startedAt", startedAt).set("completedAt", completedAt);
  members.set("items", JSONValue::array(shown)).set("itemsView", wordOf(view));
  members.set("error", errorMessage ? JSONValue::object({{"message", *errorMessage}}) : JSONValue());
  if (completedAt) members.set("durationMs", std::round((*completedAt - startedAt) * millisecondsOfSecond));
  return members;
}

JSONValue AgentTurnRecord::json(ItemsView view) const { return members(view).build(); }

JSONValue AgentTurnRecord::stateJSON() const { return members(ItemsView::full).set("tokens", tokens.json()).build(); }

AgentTurnRecord AgentTurnRecord::fromStateJSON(const JSONValue& state) {
  AgentTurnRecord turn;
  turn.id = textMember(state, "id").value_or("");
  turn.status = textMember(state, "status").value_or("");
  turn.errorMessage = textMember(anyMember(state, "error"), "message");
  const JSONValue items = anyMember(state, "items");
  if (const auto* elements = items.arrayValue()) turn.items.assign(elements->begin(), elements->end());
  turn.tokens = TokenCount::fromJSON(anyMember(state, "tokens"));
  turn.startedAt = numberMember(state, "startedAt");
  if (state.find("completedAt")) turn.completedAt = numberMember(state, "completedAt");
  return turn;
}

}  // namespace ormel::simulator
