#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

void AppServerTurnRun::adoptCoordinatorTurn(std::string turnID) {
  scope_.setCoordinatorTurn(std::move(turnID));
  scheduleLivenessProbe();
  // The start first, so that the consumer sees it ahead of the end. The end may end the operation.
  drainDeferredTurnStartedNotifications();
  drainDeferredTurnCompletions();
}

void AppServerTurnRun::deferUntilTurnIsKnown(void (CoordinatorScope::*defer)(DeferredTurnNotification),
                                             const JSONValue& params, std::string_view turnID) {
  const auto generation = stream_.currentOperationGeneration();
  if (generation && stream_.isPending()) (scope_.*defer)({*generation, params, std::string(turnID)});
}

void AppServerTurnRun::drainDeferredTurnStartedNotifications() {
  const auto params = scope_.takeDeferredTurnStarted(stream_.currentOperationGeneration());
  if (params) emitTurnStartedNotification(*params->objectValue());
}

void AppServerTurnRun::drainDeferredTurnCompletions() {
  const auto params = scope_.takeDeferredTurnCompletion(stream_.currentOperationGeneration());
  if (!params) return;
  try {
    handleTurnCompleted(*params->objectValue());
  } catch (...) {
    finishCurrent(StreamCompletion::failed(describedFailure(std::current_exception())));
  }
}

}  // namespace ormel::detail
