#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

template <typename Handlers>
struct NotificationRow {
  std::string_view method;
  /// Dropped unless it is about the coordinator.
  bool isScoped;
  void (Handlers::*handle)() const;
};

constexpr bool scoped = true;
constexpr bool unscoped = false;

template <typename N>
constexpr std::array<NotificationRow<N>, 35> notificationRows = {{
    {"serverRequest/resolved", unscoped, &N::serverRequestResolved},
    {"thread/started", unscoped, &N::threadStarted},
    {"turn/started", unscoped, &N::turnStarted},
    {"thread/goal/updated", unscoped, &N::threadGoalUpdated},
    {"thread/goal/cleared", unscoped, &N::threadGoalCleared},
    {"thread/settings/updated", unscoped, &N::threadSettingsUpdated},
    {"hook/started", unscoped, &N::hookStarted},
    {"item/started", scoped, &N::itemStarted},
    {"item/autoApprovalReview/started", scoped, &N::guardianApprovalReviewStarted},
    {"item/autoApprovalReview/completed", scoped, &N::guardianApprovalReviewCompleted},
    {"item/updated", scoped, &N::itemUpdated},
    {"item/completed", scoped, &N::itemCompleted},
    {"item/agentMessage/delta", scoped, &N::handleAgentMessageDelta},
    {"item/commandExecution/outputDelta", scoped, &N::handleCommandOutputDelta},
    {"item/mcpToolCall/progress", scoped, &N::handleMcpToolCallProgress},
    {"item/fileChange/patchUpdated", scoped, &N::handleFileChangePatchUpdated},
    {"item/reasoning/summaryTextDelta", scoped, &N::reasoningDelta},
    {"item/reasoning/textDelta", scoped, &N::reasoningDelta},
    {"item/plan/delta", scoped, &N::planDelta},
    {"turn/plan/updated", scoped, &N::handleTurnPlanUpdated},
    {"thread/tokenUsage/updated", scoped, &N::tokenUsageUpdated},
    {"turn/completed", unscoped, &N::turnCompleted},
    {"hook/completed", unscoped, &N::hookCompleted},
    {"error", unscoped, &N::error},
    {"warning", unscoped, &N::warning},
    {"guardianWarning", unscoped, &N::guardianWarning},
    {"modelProvider/authRecoveryStarted", scoped, &N::authRecoveryStarted},
    {"modelProvider/authRecoveryCompleted", scoped, &N::authRecoveryCompleted},
    {"autoApprovalReview/strictReviewRequired", scoped, &N::strictReviewRequired},
    {"deprecationNotice", unscoped, &N::deprecationNotice},
    {"configWarning", unscoped, &N::configWarning},
    {"model/verification", unscoped, &N::modelVerification},
    {"model/rerouted", unscoped, &N::modelRerouted},
    {"model/safetyBuffering/updated", unscoped, &N::modelSafetyBufferingUpdated},
    {"turn/moderationMetadata", unscoped, &N::turnModerationMetadata},
}};

// By length first: lengths tell most methods apart, and two numbers are quickly compared.
constexpr bool isListedBefore(std::string_view left, std::string_view right) {
  return left.size() != right.size() ? left.size() < right.size() : left < right;
}

template <typename N>
constexpr auto rowsByMethod = [] {
  auto rows = notificationRows<N>;
  std::ranges::sort(rows, isListedBefore, &NotificationRow<N>::method);
  return rows;
}();

template <typename N>
const NotificationRow<N>* rowOf(std::string_view method) {
  const auto found = std::ranges::lower_bound(rowsByMethod<N>, method, isListedBefore, &NotificationRow<N>::method);
  return found != rowsByMethod<N>.end() && found->method == method ? &*found : nullptr;
}

}  // namespace

void handleServerNotification(const NotificationContext& run, const ServerNotificationMessage& notification) {
  const NotificationHandlers handlers(run, notification.method, paramsOf(notification.payload));
  const auto* row = rowOf<NotificationHandlers>(notification.method);
  if (!row) {
    handlers.emitContextCompactionEventIfNeeded(notification.method);
  } else if (!row->isScoped || handlers.belongsToCoordinator()) {
    (handlers.*row->handle)();
  }
}

void NotificationHandlers::serverRequestResolved() const {
  const auto id = firstMember(params_, {"requestId", "request_id"}, AppServerRequestID::fromJSONValue);
  if (!id) throw ThreadRunError::streamError("serverRequest/resolved missing requestId");
  run_.serverRequests.cancelPendingServerRequest(*id);
}

std::string_view NotificationHandlers::neededText(JSONKeys keys, const char* message) const {
  const auto text = textViewMember(params_, keys);
  if (!text) throw ThreadRunError::streamError(message);
  return *text;
}

const JSONValue& NotificationHandlers::needed(JSONKeys keys, const char* message) const {
  const JSONValue* value = valueMember(params_, keys);
  if (!value) throw ThreadRunError::streamError(message);
  return *value;
}

std::string NotificationHandlers::neededThreadID(const char* message) const {
  if (!ids_.threadID) throw ThreadRunError::streamError(message);
  return std::string(*ids_.threadID);
}

std::string NotificationHandlers::threadID() const {
  return ids_.threadID ? std::string(*ids_.threadID) : run_.scope.active().activeThreadID.value_or("");
}

std::string NotificationHandlers::turnID() const {
  return ids_.turnID ? std::string(*ids_.turnID) : run_.scope.active().activeTurnID.value_or("");
}

}  // namespace ormel::detail
