#include "ormel-simulator/Agent/GoalRequests.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "ormel-simulator/Agent/ThreadLookup.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr std::array<std::string_view, 6> goalStatuses = {"active",       "paused",        "blocked",
                                                          "usageLimited", "budgetLimited", "complete"};

JSONValue goalJSON(const AgentThread& thread) {
  if (!thread.goal) return {};
  TokenCount tokens;
  double seconds = 0;
  for (const AgentTurnRecord& turn : thread.turns) {
    if (turn.startedAt < thread.goal->createdAt) continue;
    tokens += turn.tokens;
    seconds += turn.completedAt.value_or(turn.startedAt) - turn.startedAt;
  }
  JSONObjectBuilder members;
  members.set("threadId", thread.id).set("objective", thread.goal->objective).set("status", thread.goal->status);
  members.set("tokenBudget", thread.goal->tokenBudget).set("tokensUsed", tokens.total());
  members.set("timeUsedSeconds", std::floor(seconds));
  return members.set("createdAt", thread.goal->createdAt).set("updatedAt", thread.goal->updatedAt).build();
}

void checkGoalParams(const JSONValue& params) {
  const auto status = textMember(params, "status");
  if (status && std::find(goalStatuses.begin(), goalStatuses.end(), *status) == goalStatuses.end()) {
    throw Refusal(invalidParams, "a goal has no status " + *status);
  }
  const JSONValue budget = anyMember(params, "tokenBudget");
  if (!budget.isNull() && budget.numberValue().value_or(0) <= 0) {
    throw Refusal(invalidParams, "tokenBudget must be a number above 0");
  }
}

void applyGoalParams(AgentThread& thread, const JSONValue& params) {
  const auto objective = textMember(params, "objective");
  if (!thread.goal && !objective) throw Refusal(invalidParams, "the thread has no goal yet; objective must be given");
  if (!thread.goal) thread.goal.emplace();
  AgentGoal& goal = *thread.goal;
  goal.objective = objective.value_or(goal.objective);
  goal.status = textMember(params, "status").value_or(goal.status);
  if (const JSONValue* budget = params.find("tokenBudget")) goal.tokenBudget = budget->numberValue();
  goal.updatedAt = thread.updatedAt = secondsNow();
}

JSONValue setGoal(AgentThreadStore& store, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  checkGoalParams(params);
  store.change(thread, [&](AgentThread& newest) { applyGoalParams(newest, params); });
  return JSONValue::object({{"goal", goalJSON(thread)}});
}

JSONValue clearGoal(AgentThreadStore& store, const JSONValue& params) {
  bool cleared = false;
  store.change(knownThread(store, params), [&](AgentThread& thread) {
    cleared = thread.goal.has_value();
    thread.goal.reset();
  });
  return JSONValue::object({{"cleared", cleared}});
}

}  // namespace

void addGoalRequests(RequestTable& table, AgentThreadStore& store) {
  table["thread/goal/set"] = [&](const JSONValue& params) { return setGoal(store, params); };
  table["thread/goal/clear"] = [&](const JSONValue& params) { return clearGoal(store, params); };
  table["thread/goal/get"] = [&](const JSONValue& params) {
    return JSONValue::object({{"goal", goalJSON(knownThread(store, params))}});
  };
}

}  // namespace ormel::simulator
