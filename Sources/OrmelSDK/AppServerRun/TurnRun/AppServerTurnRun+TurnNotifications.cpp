#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"
#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

std::string startedTurnID(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  auto turnID = turn ? textMember(*turn, {"id"}) : std::nullopt;
  if (!turnID || turnID->empty()) throw ThreadRunError::streamError("turn/started missing turn identity");
  return *std::move(turnID);
}

const JSONObject& completedTurn(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  if (!turn) throw ThreadRunError::streamError("turn/completed missing turn payload");
  return *turn;
}

std::string completedTurnID(const JSONObject& turn, const MessageIDs& ids) {
  auto turnID = textViewMember(turn, {"id"});
  if (!turnID) turnID = ids.turnID;
  if (!turnID || turnID->empty()) {
    throw ThreadRunError::streamError("turn/completed missing coordinator turn identity");
  }
  return std::string(*turnID);
}

}  // namespace

void NotificationHandlers::threadStarted() const {
  const JSONObject* thread = objectMember(params_, {"thread"});
  if (!thread) return;
  ThreadStartedEvent event = parseThreadStartedEvent(*thread);
  if (!run_.turn.notificationBelongsToCoordinator(ids_, event.threadID)) return;
  run_.scope.setCoordinatorThread(event.threadID);
  emitEvent(std::move(event));
}

void NotificationHandlers::turnStarted() const {
  const std::string turnID = startedTurnID(params_);
  const bool isTurnKnown = run_.scope.coordinatorTurnID().has_value();
  if (!isTurnKnown) {
    if (!run_.scope.acceptsCoordinatorTurnIdentityFromNotification()) {
      run_.turn.deferTurnStartedNotification(paramsValue_, turnID);
      return;
    }
    // This notification sets the turn id, so here a missing thread id counts as a mismatch.
    if (!run_.scope.namesCoordinatorThread(ids_)) return;
  }
  if (!run_.turn.notificationBelongsToCoordinator(ids_, std::nullopt, turnID)) return;
  if (!isTurnKnown) run_.turn.setCoordinatorTurn(turnID);
  run_.turn.emitTurnStartedNotification(params_);
}

void NotificationHandlers::turnCompleted() const {
  const JSONObject& turn = completedTurn(params_);
  const std::string turnID = completedTurnID(turn, ids_);
  if (!run_.scope.coordinatorTurnID()) {
    run_.turn.deferTurnCompletion(paramsValue_, turnID);
  } else if (run_.turn.turnCompletionBelongsToCoordinator(ids_, turnID)) {
    run_.turn.handleTurnCompleted(turn, turnID);
  }
}

void NotificationHandlers::threadGoalUpdated() const {
  std::string threadID = neededThreadID("thread/goal/updated missing threadId");
  const JSONValue& goal = needed({"goal"}, "thread/goal/updated missing goal");
  emitEvent(ThreadGoalUpdatedEvent{std::move(threadID), namedTurnID(), decode<ThreadGoal>(goal)});
}

void NotificationHandlers::threadGoalCleared() const {
  std::string threadID = neededThreadID("thread/goal/cleared missing threadId");
  emitEvent(ThreadGoalClearedEvent{std::move(threadID)});
}

void NotificationHandlers::threadSettingsUpdated() const {
  std::string threadID = neededThreadID("thread/settings/updated missing threadId");
  const JSONValue& settings =
      needed({"threadSettings", "thread_settings"}, "thread/settings/updated missing threadSettings");
  emitEvent(ThreadSettingsUpdatedEvent{std::move(threadID), decode<ThreadSettings>(settings)});
}

void NotificationHandlers::tokenUsageUpdated() const { run_.items.latestUsage = parseUsageFromTokenUsage(params_); }

void NotificationHandlers::handleTurnPlanUpdated() const {
  const std::string turnID(neededText({"turnId"}, "turn/plan/updated missing turnId"));
  ThreadItem list = todoListItem(arrayMember(params_, {"plan"}), turnID);
  if (run_.items.store(list)) {
    emitEvent(ItemStartedEvent{std::move(list), std::nullopt, std::nullopt, std::nullopt});
  } else {
    emitEvent(ItemUpdatedEvent{std::move(list)});
  }
}

void NotificationHandlers::turnModerationMetadata() const {
  const JSONValue& metadata = needed({"metadata"}, "turn/moderationMetadata missing metadata");
  emitEvent(TurnModerationMetadataEvent{threadID(), turnID(), metadata.detached()});
}

}  // namespace ormel::detail
