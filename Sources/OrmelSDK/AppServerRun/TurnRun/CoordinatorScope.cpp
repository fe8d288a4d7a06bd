#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"

#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

void defer(std::vector<DeferredTurnNotification>& list, DeferredTurnNotification notification, const char* method) {
  if (list.size() >= CoordinatorScope::maximumDeferred) {
    throw ThreadRunError::streamError("Too many " + std::string(method) + " notifications before coordinator identity");
  }
  list.push_back(std::move(notification));
}

std::optional<std::string_view> threadIDOf(const DeferredTurnNotification& notification) {
  const JSONObject* params = notification.params.objectValue();
  return params ? idsIn(*params).threadID : std::nullopt;
}

}  // namespace

void CoordinatorScope::setCoordinatorThread(std::string threadID) {
  coordinatorThreadID_ = threadID;
  active_.activeThreadID = std::move(threadID);
}

void CoordinatorScope::setCoordinatorTurn(std::string turnID) {
  coordinatorTurnID_ = turnID;
  active_.activeTurnID = std::move(turnID);
  acceptsCoordinatorTurnIdentityFromNotification_ = false;
}

void CoordinatorScope::prepareForCoordinatorThreadTransition() {
  resetCoordinatorIdentity();
  active_.activeTurnID.reset();
}

void CoordinatorScope::resetCoordinatorIdentity() {
  coordinatorThreadID_.reset();
  coordinatorTurnID_.reset();
  acceptsCoordinatorTurnIdentityFromNotification_ = false;
  dropDeferred();
}

void CoordinatorScope::operationDidEnd() {
  dropDeferred();
  active_.activeTurnID.reset();
}

void CoordinatorScope::processDidEnd() {
  active_ = ActiveScope();
  resetCoordinatorIdentity();
}

void CoordinatorScope::dropDeferred() {
  deferredTurnStartedNotifications_.clear();
  deferredTurnCompletions_.clear();
}

bool CoordinatorScope::notificationBelongs(const MessageIDs& ids,
                                           const std::optional<std::string_view>& embeddedThreadID,
                                           const std::optional<std::string_view>& embeddedTurnID) const {
  if (coordinatorThreadID_) {
    const auto& threadID = ids.threadID ? ids.threadID : embeddedThreadID;
    if (threadID && *threadID != *coordinatorThreadID_) return false;
  }
  if (coordinatorTurnID_) {
    const auto& turnID = ids.turnID ? ids.turnID : embeddedTurnID;
    if (turnID) return *turnID == *coordinatorTurnID_;
  }
  return true;
}

bool CoordinatorScope::turnCompletionBelongs(const MessageIDs& ids, std::string_view turnID) const {
  if (coordinatorTurnID_ != turnID) return false;
  return !coordinatorThreadID_ || !ids.threadID || *ids.threadID == *coordinatorThreadID_;
}

bool CoordinatorScope::namesCoordinatorThread(const MessageIDs& ids) const {
  return ids.threadID && coordinatorThreadID_ == *ids.threadID;
}

void CoordinatorScope::deferTurnStarted(DeferredTurnStarted notification) {
  defer(deferredTurnStartedNotifications_, std::move(notification), "turn/started");
}

void CoordinatorScope::deferTurnCompletion(DeferredTurnCompletion notification) {
  defer(deferredTurnCompletions_, std::move(notification), "turn/completed");
}

template <typename ThreadMatches>
std::optional<JSONValue> CoordinatorScope::takeDeferred(std::vector<DeferredTurnNotification>& list,
                                                        std::optional<std::uint64_t> runningGeneration,
                                                        ThreadMatches threadMatches) {
  const auto taken = std::exchange(list, {});
  if (!runningGeneration || !coordinatorTurnID_) return std::nullopt;
  for (const auto& entry : taken) {
    const bool isOurs = entry.operationGeneration == *runningGeneration && entry.turnID == *coordinatorTurnID_;
    if (isOurs && threadMatches(threadIDOf(entry))) return entry.params;
  }
  return std::nullopt;
}

// A start must name our thread if it names any; for a completion it is enough that it names no other one.
std::optional<JSONValue> CoordinatorScope::takeDeferredTurnStarted(std::optional<std::uint64_t> runningGeneration) {
  return takeDeferred(
      deferredTurnStartedNotifications_, runningGeneration,
      [this](std::optional<std::string_view> threadID) { return !threadID || coordinatorThreadID_ == *threadID; });
}

std::optional<JSONValue> CoordinatorScope::takeDeferredTurnCompletion(std::optional<std::uint64_t> runningGeneration) {
  return takeDeferred(deferredTurnCompletions_, runningGeneration, [this](std::optional<std::string_view> threadID) {
    return !coordinatorThreadID_ || !threadID || *coordinatorThreadID_ == *threadID;
  });
}

}  // namespace ormel::detail
