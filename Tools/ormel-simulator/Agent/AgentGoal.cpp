#include "ormel-simulator/Agent/AgentGoal.h"

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

JSONValue AgentGoal::stateJSON() const {
  JSONObjectBuilder members;
  members.set("objective", objective).set("status", status).set("tokenBudget", tokenBudget);
  return members.set("createdAt", createdAt).set("updatedAt", updatedAt).build();
}

AgentGoal AgentGoal::fromStateJSON(const JSONValue& state) {
  AgentGoal goal;
  goal.objective = textMember(state, "objective").value_or("");
  goal.status = textMember(state, "status").value_or("");
  if (state.find("tokenBudget")) goal.tokenBudget = numberMember(state, "tokenBudget");
  goal.createdAt = numberMember(state, "createdAt");
  goal.updatedAt = numberMember(state, "updatedAt");
  return goal;
}

}  // namespace ormel::simulator
