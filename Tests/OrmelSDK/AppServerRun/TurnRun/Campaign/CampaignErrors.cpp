#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"

namespace ormel::testing {

namespace {

using Errors = std::vector<std::string_view>;

Errors errorsOf(ServerPlan::Fault fault) {
  switch (fault) {
    case ServerPlan::Fault::malformedLine:
      return {unreadable, "Unexpected ", "Invalid app-server JSON-RPC ", "bare", "Unknown app-server error"};
    case ServerPlan::Fault::exitWithinTheLine:
      // A line that was cut off cannot be read.
      return {exited, endOfFile, unreadable};
    case ServerPlan::Fault::inputBreaks:
      return {timedOut};
    default:
      return {exited, endOfFile};
  }
}

}  // namespace

Errors errorsOf(const ServerPlan& plan) {
  // A compaction may be told in whole before its response.
  Errors errors = {streamFinished};
  if (plan.fault) {
    const Errors ofFault = errorsOf(*plan.fault);
    errors.insert(errors.end(), ofFault.begin(), ofFault.end());
    if (plan.explainsFault) errors.push_back(explained);
  }
  // The next operation may begin before the end comes to light.
  if (plan.exitsAfterTurn) errors.insert(errors.end(), {exited, endOfFile});
  for (const auto& [method, reply] : plan.replies) {
    if (reply == ServerPlan::Reply::refuse) errors.push_back(refused);
    if (reply == ServerPlan::Reply::withhold || reply == ServerPlan::Reply::giveAtTimeout) errors.push_back(timedOut);
  }
  return errors;
}

}  // namespace ormel::testing
