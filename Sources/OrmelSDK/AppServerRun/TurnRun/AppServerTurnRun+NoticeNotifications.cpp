#include "OrmelSDK/AppServerRun/Parsing/GuardianReviewParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"

namespace ormel::detail {

namespace {

std::string errorMessage(const JSONObject& params) {
  const JSONObject* error = objectMember(params, {"error"});
  auto message = error ? textMember(*error, {"message"}) : std::nullopt;
  return message ? *std::move(message) : textMember(params, {"message"}, "Unknown app-server error");
}

}  // namespace

void NotificationHandlers::hookStarted() const {
  const JSONValue& summary = needed({"run"}, "hook/started missing run payload");
  emitEvent(HookStartedEvent{threadID(), namedTurnID(), decode<HookRunSummary>(summary)});
}

void NotificationHandlers::hookCompleted() const {
  const JSONValue& summary = needed({"run"}, "hook/completed missing run payload");
  emitEvent(HookCompletedEvent{threadID(), namedTurnID(), decode<HookRunSummary>(summary)});
}

void NotificationHandlers::handleGuardianApprovalReviewNotification(bool isCompleted) const {
  emitEvent(parseGuardianApprovalReviewNotification(params_, isCompleted));
}

void NotificationHandlers::guardianWarning() const {
  emitEvent(GuardianWarningEvent{threadID(), textMember(params_, {"message"}, "Guardian warning")});
}

void NotificationHandlers::strictReviewRequired() const {
  if (auto event = decodedParams<StrictReviewRequiredEvent>()) emitEvent(*std::move(event));
}

void NotificationHandlers::authRecoveryStarted() const {
  auto event = decodedParams<AuthRecoveryEvent>();
  if (event) emitEvent(AuthRecoveryStartedEvent{*std::move(event)});
}

void NotificationHandlers::authRecoveryCompleted() const {
  auto event = decodedParams<AuthRecoveryEvent>();
  if (event) emitEvent(AuthRecoveryCompletedEvent{*std::move(event)});
}

void NotificationHandlers::modelVerification() const {
  emitEvent(ModelVerificationEvent{threadID(), turnID(), textsOf(arrayMember(params_, {"verifications"}))});
}

void NotificationHandlers::modelRerouted() const {
  emitEvent(ModelReroutedEvent{threadID(), turnID(), textMember(params_, {"fromModel"}, ""),
                               textMember(params_, {"toModel"}, ""), textMember(params_, {"reason"}, "")});
}

void NotificationHandlers::modelSafetyBufferingUpdated() const {
  emitEvent(ModelSafetyBufferingUpdatedEvent{
      threadID(), turnID(), textMember(params_, {"model"}, ""),
      textsOf(arrayMember(params_, {"useCases", "use_cases"})), textsOf(arrayMember(params_, {"reasons"})),
      booleanMember(params_, {"showBufferingUi", "show_buffering_ui"}).value_or(false),
      textMember(params_, {"fasterModel", "faster_model"})});
}

void NotificationHandlers::error() const { emitEvent(ThreadErrorEvent{errorMessage(params_)}); }

void NotificationHandlers::warning() const {
  emitEvent(ThreadWarningEvent{namedThreadID(), textMember(params_, {"message"}, "Ormel warning")});
}

void NotificationHandlers::deprecationNotice() const {
  if (auto event = decodedParams<DeprecationNoticeEvent>()) emitEvent(*std::move(event));
}

void NotificationHandlers::configWarning() const {
  if (auto event = decodedParams<ConfigWarningEvent>()) emitEvent(*std::move(event));
}

}  // namespace ormel::detail
