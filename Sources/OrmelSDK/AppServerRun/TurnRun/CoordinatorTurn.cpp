#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorTurn.h"

#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

ThreadEvent turnFailed(std::string message) { return TurnFailedEvent{{std::move(message)}}; }

std::string turnErrorMessage(const JSONObject& turn) {
  const JSONObject* error = objectMember(turn, {"error"});
  return error ? textMember(*error, {"message"}, "Turn failed") : "Turn failed";
}

}  // namespace

bool CoordinatorTurn::notificationBelongsToCoordinator(const MessageIDs& ids,
                                                       const std::optional<std::string_view>& embeddedThreadID,
                                                       const std::optional<std::string_view>& embeddedTurnID) const {
  return run_.stream.isPending() && run_.scope.notificationBelongs(ids, embeddedThreadID, embeddedTurnID);
}

bool CoordinatorTurn::turnCompletionBelongsToCoordinator(const MessageIDs& ids, std::string_view turnID) const {
  return run_.stream.isPending() && run_.scope.turnCompletionBelongs(ids, turnID);
}

void CoordinatorTurn::setCoordinatorTurn(std::string turnID) {
  run_.scope.setCoordinatorTurn(std::move(turnID));
  run_.recovery.scheduleLivenessProbe();
  // The start first, so that the consumer sees it ahead of the end. The end may end the operation.
  drainDeferredTurnStartedNotifications();
  drainDeferredTurnCompletions();
}

std::optional<DeferredTurnNotification> CoordinatorTurn::deferred(const JSONValue& params,
                                                                  std::string_view turnID) const {
  const auto generation = run_.stream.currentOperationGeneration();
  if (!generation || !run_.stream.isPending()) return std::nullopt;
  return DeferredTurnNotification{*generation, params, std::string(turnID)};
}

void CoordinatorTurn::deferTurnStartedNotification(const JSONValue& params, std::string_view turnID) {
  if (auto notification = deferred(params, turnID)) run_.scope.deferTurnStarted(*std::move(notification));
}

void CoordinatorTurn::deferTurnCompletion(const JSONValue& params, std::string_view turnID) {
  if (auto notification = deferred(params, turnID)) run_.scope.deferTurnCompletion(*std::move(notification));
}

void CoordinatorTurn::drainDeferredTurnStartedNotifications() {
  const auto params = run_.scope.takeDeferredTurnStarted(run_.stream.currentOperationGeneration());
  if (params) emitTurnStartedNotification(*params->objectValue());
}

void CoordinatorTurn::drainDeferredTurnCompletions() {
  const auto params = run_.scope.takeDeferredTurnCompletion(run_.stream.currentOperationGeneration());
  const JSONObject* turn = params ? objectMember(*params->objectValue(), {"turn"}) : nullptr;
  if (!turn) return;
  try {
    handleTurnCompleted(*turn, std::string(*run_.scope.coordinatorTurnID()));
  } catch (...) {
    run_.lifecycle.finishCurrent(StreamCompletion::failed(describedFailure(std::current_exception())));
  }
}

void CoordinatorTurn::emitTurnStartedNotification(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  run_.stream.emitEvent(TurnStartedEvent{turn ? integerMember(*turn, {"modelContextWindow"}) : std::nullopt});
}

void CoordinatorTurn::handleTurnCompleted(const JSONObject& turn, std::string_view turnID) {
  completeItems(turn, turnID);
  const std::string status = textMember(turn, {"status"}, "completed");
  if (status == "interrupted" && run_.recovery.abortedByClient()) {
    run_.lifecycle.finishCurrent(StreamCompletion::aborted());
    return;
  }
  if (status == "completed" || status == "interrupted") {
    run_.stream.emitEvent(TurnCompletedEvent{run_.items.latestUsage.value_or(Usage{})});
  } else if (status == "failed") {
    run_.stream.emitEvent(turnFailed(turnErrorMessage(turn)));
  } else {
    run_.stream.emitEvent(turnFailed("Unknown turn completion status: " + status));
  }
  run_.lifecycle.finishCurrent(StreamCompletion::finished());
}

void CoordinatorTurn::completeItems(const JSONObject& turn, std::string_view turnID) {
  bool hasTodoList = false;
  for (ThreadItem& item : completedTurnItems(turn, turnID, run_.scope.active())) {
    hasTodoList = hasTodoList || std::holds_alternative<TodoListItem>(item.value);
    run_.items.store(item);
    run_.stream.emitEvent(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  }
  const ThreadItem* plan = hasTodoList ? nullptr : run_.items.find(turnPlanItemID(turnID));
  if (plan) run_.stream.emitEvent(ItemCompletedEvent{*plan, std::nullopt, std::nullopt, std::nullopt});
}

}  // namespace ormel::detail
