#include "ormel-simulator/Agent/Approval.h"

#include <utility>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

Approval enterDecision(AgentThread& thread, const std::string& method, const std::optional<JSONValue>& result) {
  const std::string decision = result ? textMember(*result, "decision").value_or("") : "";
  if (decision == "acceptForSession") thread.sessionApprovals.insert(method);
  if (decision == "accept" || decision == "acceptForSession") return Approval::accepted;
  return decision == "cancel" ? Approval::cancelled : Approval::declined;
}

}  // namespace

void askApproval(AgentTurn& turn, const std::string& method, JSONObjectBuilder members,
                 std::function<void(Approval)> decided) {
  AgentThread& thread = turn.thread();
  if (thread.choices.approvalPolicy == JSONValue("never") || thread.sessionApprovals.contains(method)) {
    return decided(Approval::accepted);
  }
  members.set("availableDecisions", JSONValue::array({"accept", "acceptForSession", "decline", "cancel"}));
  turn.ask(method, members, [&thread, method, decided = std::move(decided)](const std::optional<JSONValue>& result) {
    decided(enterDecision(thread, method, result));
  });
}

}  // namespace ormel::simulator
