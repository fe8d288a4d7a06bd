#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"
#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

std::optional<std::string> owned(std::optional<std::string_view> text) {
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

ThreadEvent turnFailed(std::string message) { return TurnFailedEvent{{std::move(message)}}; }

std::string turnErrorMessage(const JSONObject& turn) {
  const JSONObject* error = objectMember(turn, {"error"});
  return error ? textMember(*error, {"message"}, "Turn failed") : "Turn failed";
}

/// The id of the turn that a "turn/started" is about.
std::string startedTurnID(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  auto turnID = turn ? textMember(*turn, {"id"}) : std::nullopt;
  if (!turnID || turnID->empty()) throw ThreadRunError::streamError("turn/started missing turn identity");
  return *std::move(turnID);
}

/// The id of the turn that a "turn/completed" is about.
std::string completedTurnID(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  if (!turn) throw ThreadRunError::streamError("turn/completed missing turn payload");
  auto turnID = textMember(*turn, {"id"});
  if (!turnID) turnID = owned(turnIDIn(params));
  if (!turnID || turnID->empty()) {
    throw ThreadRunError::streamError("turn/completed missing coordinator turn identity");
  }
  return *std::move(turnID);
}

}  // namespace

bool AppServerTurnRun::notificationBelongsToCoordinator(const JSONObject& params,
                                                        const std::optional<std::string_view>& embeddedThreadID,
                                                        const std::optional<std::string_view>& embeddedTurnID) const {
  return stream_.isPending() && scope_.notificationBelongs(params, embeddedThreadID, embeddedTurnID);
}

void AppServerTurnRun::Notifications::threadStarted() const {
  const JSONValue* thread = params.find("thread");
  if (!thread || !thread->objectValue()) return;
  ThreadStartedEvent event = parseThreadStartedEventFromThreadObject(*thread);
  if (!run.notificationBelongsToCoordinator(params, event.threadID)) return;
  run.scope_.setCoordinatorThread(event.threadID);
  emit(std::move(event));
}

void AppServerTurnRun::Notifications::turnStarted() const {
  const std::string turnID = startedTurnID(params);
  const bool isTurnKnown = run.scope_.coordinatorTurnID().has_value();
  if (!isTurnKnown) {
    if (!run.scope_.acceptsTurnFromNotification()) {
      run.deferUntilTurnIsKnown(&CoordinatorScope::deferTurnStarted, paramsValue, turnID);
      return;
    }
    // It is about to define the turn, so that for once absence is a mismatch.
    if (!run.scope_.namesCoordinatorThread(params)) return;
  }
  if (!run.notificationBelongsToCoordinator(params, std::nullopt, turnID)) return;
  if (!isTurnKnown) run.adoptCoordinatorTurn(turnID);
  run.emitTurnStartedNotification(params);
}

void AppServerTurnRun::Notifications::turnCompleted() const {
  const std::string turnID = completedTurnID(params);
  if (!run.scope_.coordinatorTurnID()) {
    run.deferUntilTurnIsKnown(&CoordinatorScope::deferTurnCompletion, paramsValue, turnID);
  } else if (run.stream_.isPending() && run.scope_.turnCompletionBelongs(params, turnID)) {
    run.handleTurnCompleted(params);
  }
}

void AppServerTurnRun::emitTurnStartedNotification(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  stream_.emit(TurnStartedEvent{turn ? integerMember(*turn, {"modelContextWindow"}) : std::nullopt});
}

void AppServerTurnRun::handleTurnCompleted(const JSONObject& params) {
  const JSONObject* turn = objectMember(params, {"turn"});
  if (!turn) throw ThreadRunError::streamError("turn/completed missing turn payload");
  auto turnID = textMember(*turn, {"id"});
  if (!turnID) turnID = scope_.active().turnID;
  if (turnID) completeItemsOfTurn(*turn, *turnID);

  const std::string status = textMember(*turn, {"status"}, "completed");
  if (status == "interrupted" && abortedByClient_) {
    finishCurrent(StreamCompletion::aborted());
    return;
  }
  if (status == "completed" || status == "interrupted") {
    stream_.emit(TurnCompletedEvent{items_.latestUsage.value_or(Usage{})});
  } else if (status == "failed") {
    stream_.emit(turnFailed(turnErrorMessage(*turn)));
  } else {
    stream_.emit(turnFailed("Unknown turn completion status: " + status));
  }
  finishCurrent(StreamCompletion::finished());
}

bool AppServerTurnRun::keepForOperation(const ThreadItem& item) {
  return stream_.currentOperationGeneration() && items_.store(item);
}

void AppServerTurnRun::completeItemsOfTurn(const JSONObject& turn, const std::string& turnID) {
  bool hasTodoList = false;
  for (ThreadItem& item : completedTurnItems(turn, turnID, scope_.active())) {
    hasTodoList = hasTodoList || std::holds_alternative<TodoListItem>(item.value);
    items_.store(item);
    stream_.emit(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  }
  const ThreadItem* plan = hasTodoList ? nullptr : items_.find(turnPlanItemID(turnID));
  if (plan) stream_.emit(ItemCompletedEvent{*plan, std::nullopt, std::nullopt, std::nullopt});
}

void AppServerTurnRun::Notifications::threadGoalUpdated() const {
  std::string threadID(neededText({"threadId", "thread_id"}, "thread/goal/updated missing threadId"));
  const JSONValue& goal = needed({"goal"}, "thread/goal/updated missing goal");
  emit(ThreadGoalUpdatedEvent{std::move(threadID), owned(turnIDIn(params)), decode<ThreadGoal>(goal)});
}

void AppServerTurnRun::Notifications::threadGoalCleared() const {
  std::string threadID(neededText({"threadId", "thread_id"}, "thread/goal/cleared missing threadId"));
  emit(ThreadGoalClearedEvent{std::move(threadID)});
}

void AppServerTurnRun::Notifications::threadSettingsUpdated() const {
  std::string threadID(neededText({"threadId", "thread_id"}, "thread/settings/updated missing threadId"));
  const JSONValue& settings =
      needed({"threadSettings", "thread_settings"}, "thread/settings/updated missing threadSettings");
  emit(ThreadSettingsUpdatedEvent{std::move(threadID), decode<ThreadSettings>(settings)});
}

void AppServerTurnRun::Notifications::tokenUsageUpdated() const {
  run.items_.latestUsage = parseUsageFromTokenUsage(params);
}

void AppServerTurnRun::Notifications::turnPlanUpdated() const {
  const std::string turnID(neededText({"turnId"}, "turn/plan/updated missing turnId"));
  ThreadItem list = todoListItem(arrayMember(params, {"plan"}), turnID);
  if (run.items_.store(list)) {
    emit(ItemStartedEvent{std::move(list), std::nullopt, std::nullopt, std::nullopt});
  } else {
    emit(ItemUpdatedEvent{std::move(list)});
  }
}

void AppServerTurnRun::Notifications::turnModerationMetadata() const {
  const JSONValue& metadata = needed({"metadata"}, "turn/moderationMetadata missing metadata");
  emit(TurnModerationMetadataEvent{threadID(), turnID(), metadata.detached()});
}

}  // namespace ormel::detail
