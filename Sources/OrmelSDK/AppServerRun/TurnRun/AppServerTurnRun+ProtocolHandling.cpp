#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
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
    {"item/autoApprovalReview/started", scoped, &N::guardianReviewStarted},
    {"item/autoApprovalReview/completed", scoped, &N::guardianReviewCompleted},
    {"item/updated", scoped, &N::itemUpdated},
    {"item/completed", scoped, &N::itemCompleted},
    {"item/agentMessage/delta", scoped, &N::agentMessageDelta},
    {"item/commandExecution/outputDelta", scoped, &N::commandOutputDelta},
    {"item/mcpToolCall/progress", scoped, &N::mcpToolCallProgress},
    {"item/fileChange/patchUpdated", scoped, &N::fileChangePatchUpdated},
    {"item/reasoning/summaryTextDelta", scoped, &N::reasoningDelta},
    {"item/reasoning/textDelta", scoped, &N::reasoningDelta},
    {"item/plan/delta", scoped, &N::planDelta},
    {"turn/plan/updated", scoped, &N::turnPlanUpdated},
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

void AppServerTurnRun::handleServerNotification(const ServerNotificationMessage& notification) {
  Notifications::handle(*this, notification);
}

void AppServerTurnRun::Notifications::handle(AppServerTurnRun& run, const ServerNotificationMessage& notification) {
  const JSONValue& params = paramsOf(notification.payload);
  const Notifications handlers{run, params, *params.objectValue()};
  const auto* row = rowOf<Notifications>(notification.method);
  if (!row) {
    handlers.contextCompaction(notification.method);
  } else if (!row->isScoped || run.notificationBelongsToCoordinator(handlers.params)) {
    (handlers.*row->handle)();
  }
}

void AppServerTurnRun::Notifications::serverRequestResolved() const {
  const auto id = firstMember(params, {"requestId", "request_id"}, AppServerRequestID::fromJSONValue);
  if (!id) throw ThreadRunError::streamError("serverRequest/resolved missing requestId");
  run.serverRequests_.cancel(*id);
}

std::string_view AppServerTurnRun::Notifications::neededText(JSONKeys keys, const char* message) const {
  const auto text = textViewMember(params, keys);
  if (!text) throw ThreadRunError::streamError(message);
  return *text;
}

const JSONValue& AppServerTurnRun::Notifications::needed(JSONKeys keys, const char* message) const {
  const JSONValue* value = valueMember(params, keys);
  if (!value) throw ThreadRunError::streamError(message);
  return *value;
}

std::string AppServerTurnRun::Notifications::threadID() const {
  if (const auto named = threadIDIn(params)) return std::string(*named);
  return run.scope_.active().threadID.value_or("");
}

std::string AppServerTurnRun::Notifications::turnID() const {
  if (const auto named = turnIDIn(params)) return std::string(*named);
  return run.scope_.active().turnID.value_or("");
}

}  // namespace ormel::detail
