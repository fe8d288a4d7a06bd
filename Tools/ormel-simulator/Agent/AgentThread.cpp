#include "ormel-simulator/Agent/AgentThread.h"

#include <algorithm>
#include <utility>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

AgentTurnRecord* AgentThread::findTurn(const std::string& turnID) {
  const auto found =
      std::find_if(turns.begin(), turns.end(), [&](const AgentTurnRecord& turn) { return turn.id == turnID; });
  return found == turns.end() ? nullptr : &*found;
}

std::string AgentThread::preview() const {
  for (const AgentTurnRecord& turn : turns) {
    if (auto prompt = turn.prompt()) return std::move(*prompt);
  }
  return "";
}

TokenCount AgentThread::tokens() const {
  TokenCount sum;
  for (const AgentTurnRecord& turn : turns) sum += turn.tokens;
  return sum;
}

JSONValue AgentThread::json(ItemsView view) const {
  std::vector<JSONValue> turnValues;
  for (const AgentTurnRecord& turn : turns) {
    if (view != ItemsView::notLoaded) turnValues.push_back(turn.json(view));
  }
  JSONObjectBuilder members;
  members.set("id", id).set("sessionId", id).set("forkedFromId", textOrNull(forkedFromID));
  members.set("preview", preview()).set("name", textOrNull(name)).set("ephemeral", ephemeral);
  members.set("modelProvider", choices.modelProvider).set("cwd", choices.cwd).set("path", textOrNull(path));
  members.set("createdAt", createdAt).set("updatedAt", updatedAt).set("recencyAt", recencyAt());
  members.set("cliVersion", "0.1.0").set("source", source).set("threadSource", textOrNull(threadSource));
  members.set("gitInfo", gitInfo).set("turns", JSONValue::array(turnValues));
  members.set("status", isActive() ? JSONValue::object({{"type", "active"}, {"activeFlags", JSONValue::array()}})
                                   : JSONValue::object({{"type", "idle"}}));
  return members.build();
}

JSONValue AgentThread::responseJSON(ItemsView view) const {
  JSONObjectBuilder members;
  members.set("thread", json(view)).set("model", choices.model).set("modelProvider", choices.modelProvider);
  members.set("cwd", choices.cwd).set("instructionSources", JSONValue::array());
  members.set("approvalPolicy", choices.approvalPolicy);
  for (const char* key : {"approvalsReviewer", "sandbox", "serviceTier", "reasoningEffort"}) {
    const auto chosen = choices.others.find(key);
    if (chosen != choices.others.end()) members.set(key, chosen->second);
  }
  return members.build();
}

JSONValue AgentThread::stateJSON() const {
  std::vector<JSONValue> turnValues;
  for (const AgentTurnRecord& turn : turns) {
    if (!turn.isUnderWay()) turnValues.push_back(turn.stateJSON());
  }
  JSONObjectBuilder members;
  members.set("id", id).set("forkedFromId", forkedFromID).set("name", name).set("threadSource", threadSource);
  members.set("archived", archived).set("choices", choices.stateJSON()).set("gitInfo", gitInfo);
  if (goal) members.set("goal", goal->stateJSON());
  members.set("injectedItems", JSONValue::array(injectedItems));
  members.set("createdAt", createdAt).set("updatedAt", updatedAt);
  return members.set("turns", JSONValue::array(turnValues)).build();
}

AgentThread AgentThread::fromStateJSON(const JSONValue& state) {
  AgentThread thread;
  thread.id = textMember(state, "id").value_or("");
  thread.forkedFromID = textMember(state, "forkedFromId");
  thread.name = textMember(state, "name");
  thread.threadSource = textMember(state, "threadSource");
  thread.archived = flagMember(state, "archived");
  thread.choices = ThreadChoices::fromStateJSON(anyMember(state, "choices"));
  thread.gitInfo = anyMember(state, "gitInfo");
  if (const JSONValue* goal = state.find("goal")) thread.goal = AgentGoal::fromStateJSON(*goal);
  const JSONValue injected = anyMember(state, "injectedItems");
  if (const auto* items = injected.arrayValue()) thread.injectedItems.assign(items->begin(), items->end());
  thread.createdAt = numberMember(state, "createdAt");
  thread.updatedAt = numberMember(state, "updatedAt");
  const JSONValue turns = anyMember(state, "turns");
  if (const auto* elements = turns.arrayValue()) {
    for (const JSONValue& turn : *elements) thread.turns.push_back(AgentTurnRecord::fromStateJSON(turn));
  }
  return thread;
}

}  // namespace ormel::simulator
