#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"

#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
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
  return params ? threadIDIn(*params) : std::nullopt;
}

}  // namespace

void CoordinatorScope::setCoordinatorThread(std::string threadID) {
  coordinatorThreadID_ = threadID;
  active_.threadID = std::move(threadID);
}

void CoordinatorScope::setCoordinatorTurn(std::string turnID) {
  coordinatorTurnID_ = turnID;
  active_.turnID = std::move(turnID);
  acceptsTurnFromNotification_ = false;
}

void CoordinatorScope::prepareForCoordinatorThreadTransition() {
  resetCoordinatorIdentity();
  clearActiveTurn();
}

void CoordinatorScope::resetCoordinatorIdentity() {
  coordinatorThreadID_.reset();
  coordinatorTurnID_.reset();
  acceptsTurnFromNotification_ = false;
  dropDeferred();
}

void CoordinatorScope::dropDeferred() {
  deferredTurnStarted_.clear();
  deferredTurnCompletions_.clear();
}

bool CoordinatorScope::notificationBelongs(const JSONObject& params,
                                           const std::optional<std::string_view>& embeddedThreadID,
                                           const std::optional<std::string_view>& embeddedTurnID) const {
  if (coordinatorThreadID_) {
    auto threadID = threadIDIn(params);
    if (!threadID) threadID = embeddedThreadID;
    if (threadID && *threadID != *coordinatorThreadID_) return false;
  }
  if (coordinatorTurnID_) {
    auto turnID = turnIDIn(params);
    if (!turnID) turnID = embeddedTurnID;
    if (turnID) return *turnID == *coordinatorTurnID_;
  }
  return true;
}

bool CoordinatorScope::turnCompletionBelongs(const JSONObject& params, std::string_view turnID) const {
  if (coordinatorTurnID_ != turnID) return false;
  const auto threadID = threadIDIn(params);
  return !coordinatorThreadID_ || !threadID || *threadID == *coordinatorThreadID_;
}

bool CoordinatorScope::namesCoordinatorThread(const JSONObject& params) const {
  const auto threadID = threadIDIn(params);
  return threadID && coordinatorThreadID_ == *threadID;
}

void CoordinatorScope::deferTurnStarted(DeferredTurnStarted notification) {
  defer(deferredTurnStarted_, std::move(notification), "turn/started");
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
  return takeDeferred(deferredTurnStarted_, runningGeneration, [this](std::optional<std::string_view> threadID) {
    return !threadID || coordinatorThreadID_ == *threadID;
  });
}

std::optional<JSONValue> CoordinatorScope::takeDeferredTurnCompletion(std::optional<std::uint64_t> runningGeneration) {
  return takeDeferred(deferredTurnCompletions_, runningGeneration, [this](std::optional<std::string_view> threadID) {
    return !coordinatorThreadID_ || !threadID || *coordinatorThreadID_ == *threadID;
  });
}

}  // namespace ormel::detail
