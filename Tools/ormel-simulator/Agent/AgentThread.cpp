#include "ormel-simulator/Agent/AgentThread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/JSONMembers.h"

namespace ormel::simulator {

double secondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

TokenCount& TokenCount::operator+=(const TokenCount& more) {
  input += more.input;
  cachedInput += more.cachedInput;
  output += more.output;
  return *this;
}

JSONValue TokenCount::json() const {
  return JSONValue::object({{"totalTokens", input + output},
                            {"inputTokens", input},
                            {"cachedInputTokens", cachedInput},
                            {"outputTokens", output},
                            {"reasoningOutputTokens", 0}});
}

TokenCount TokenCount::fromJSON(const JSONValue& value) {
  return {numberMember(value, "inputTokens"), numberMember(value, "cachedInputTokens"),
          numberMember(value, "outputTokens")};
}

std::optional<std::string> AgentTurnRecord::prompt() const {
  for (const JSONValue& item : items) {
    if (textMember(item, "type") == "userMessage") return inputText(anyMember(item, "content"));
  }
  return std::nullopt;
}

bool AgentTurnRecord::hasItem(std::string_view type) const {
  return std::any_of(items.begin(), items.end(),
                     [&](const JSONValue& item) { return textMember(item, "type") == type; });
}

JSONValue AgentTurnRecord::json(bool withItems) const {
  JSONObjectBuilder members;
  members.set("id", id).set("status", status).set("startedAt", startedAt).set("completedAt", completedAt);
  members.set("items", withItems ? JSONValue::array(items) : JSONValue::array());
  members.set("itemsView", withItems ? "full" : "notLoaded");
  members.set("error", errorMessage ? JSONValue::object({{"message", *errorMessage}}) : JSONValue());
  if (completedAt) members.set("durationMs", std::round((*completedAt - startedAt) * 1000));
  return members.build();
}

AgentTurnRecord AgentTurnRecord::fromJSON(const JSONValue& value) {
  AgentTurnRecord turn;
  turn.id = textMember(value, "id").value_or("");
  turn.status = textMember(value, "status").value_or("");
  turn.errorMessage = textMember(anyMember(value, "error"), "message");
  const JSONValue items = anyMember(value, "items");
  if (const auto* elements = items.arrayValue()) turn.items.assign(elements->begin(), elements->end());
  turn.startedAt = numberMember(value, "startedAt");
  if (value.find("completedAt")) turn.completedAt = numberMember(value, "completedAt");
  return turn;
}

void AgentThread::applySettings(const JSONValue& params) {
  cwd = textMember(params, "cwd").value_or(cwd);
  model = textMember(params, "model").value_or(model);
  modelProvider = textMember(params, "modelProvider").value_or(modelProvider);
  if (auto instructions = textMember(params, "developerInstructions")) developerInstructions = std::move(instructions);
  if (const JSONValue* policy = params.find("approvalPolicy")) approvalPolicy = policy->detached();
  if (const JSONValue* tools = params.find("dynamicTools")) dynamicTools = tools->detached();
}

JSONValue AgentThread::json(bool withTurns) const {
  const bool active = !turns.empty() && turns.back().status == "inProgress";
  std::vector<JSONValue> turnValues;
  for (const AgentTurnRecord& turn : turns) {
    if (withTurns) turnValues.push_back(turn.json(true));
  }
  JSONObjectBuilder members;
  members.set("id", id).set("sessionId", id).set("forkedFromId", textOrNull(forkedFromID));
  members.set("preview", turns.empty() ? "" : turns.front().prompt().value_or(""));
  members.set("ephemeral", ephemeral).set("modelProvider", modelProvider).set("cwd", cwd);
  members.set("createdAt", createdAt).set("updatedAt", updatedAt).set("cliVersion", "0.1.0");
  members.set("source", "appServer").set("turns", JSONValue::array(turnValues));
  members.set("status", active ? JSONValue::object({{"type", "active"}, {"activeFlags", JSONValue::array()}})
                               : JSONValue::object({{"type", "idle"}}));
  return members.build();
}

JSONValue AgentThread::responseJSON(bool withTurns) const {
  return JSONValue::object({{"thread", json(withTurns)},
                            {"model", model},
                            {"modelProvider", modelProvider},
                            {"cwd", cwd},
                            {"instructionSources", JSONValue::array()},
                            {"approvalPolicy", approvalPolicy}});
}

JSONValue AgentThread::stateJSON() const {
  return JSONValue::object({{"thread", json(true)},
                            {"model", model},
                            {"approvalPolicy", approvalPolicy},
                            {"developerInstructions", textOrNull(developerInstructions)},
                            {"dynamicTools", dynamicTools},
                            {"tokens", tokens.json()}});
}

AgentThread AgentThread::fromStateJSON(const JSONValue& state) {
  AgentThread thread;
  const JSONValue told = anyMember(state, "thread");
  thread.id = textMember(told, "id").value_or("");
  thread.forkedFromID = textMember(told, "forkedFromId");
  thread.cwd = textMember(told, "cwd").value_or("");
  thread.model = textMember(state, "model").value_or("");
  thread.modelProvider = textMember(told, "modelProvider").value_or("");
  thread.developerInstructions = textMember(state, "developerInstructions");
  thread.approvalPolicy = anyMember(state, "approvalPolicy");
  thread.dynamicTools = anyMember(state, "dynamicTools");
  thread.createdAt = numberMember(told, "createdAt");
  thread.updatedAt = numberMember(told, "updatedAt");
  thread.tokens = TokenCount::fromJSON(anyMember(state, "tokens"));
  const JSONValue turns = anyMember(told, "turns");
  if (const auto* elements = turns.arrayValue()) {
    for (const JSONValue& turn : *elements) thread.turns.push_back(AgentTurnRecord::fromJSON(turn));
  }
  return thread;
}

}  // namespace ormel::simulator
