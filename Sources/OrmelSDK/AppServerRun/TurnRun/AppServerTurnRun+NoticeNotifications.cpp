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

void AppServerTurnRun::Notifications::hookStarted() const {
  const JSONValue& summary = needed({"run"}, "hook/started missing run payload");
  emit(HookStartedEvent{threadID(), textMember(params, {"turnId", "turn_id"}), decode<HookRunSummary>(summary)});
}

void AppServerTurnRun::Notifications::hookCompleted() const {
  const JSONValue& summary = needed({"run"}, "hook/completed missing run payload");
  emit(HookCompletedEvent{threadID(), textMember(params, {"turnId", "turn_id"}), decode<HookRunSummary>(summary)});
}

void AppServerTurnRun::Notifications::guardianReview(bool isCompleted) const {
  emit(parseGuardianApprovalReviewNotification(params, isCompleted));
}

void AppServerTurnRun::Notifications::guardianReviewStarted() const { guardianReview(false); }
void AppServerTurnRun::Notifications::guardianReviewCompleted() const { guardianReview(true); }

void AppServerTurnRun::Notifications::guardianWarning() const {
  emit(GuardianWarningEvent{threadID(), textMember(params, {"message"}, "Guardian warning")});
}

void AppServerTurnRun::Notifications::strictReviewRequired() const {
  if (auto event = decodeIfPossible<StrictReviewRequiredEvent>(paramsValue)) emit(*std::move(event));
}

void AppServerTurnRun::Notifications::authRecoveryStarted() const {
  auto event = decodeIfPossible<AuthRecoveryEvent>(paramsValue);
  if (event) emit(AuthRecoveryStartedEvent{*std::move(event)});
}

void AppServerTurnRun::Notifications::authRecoveryCompleted() const {
  auto event = decodeIfPossible<AuthRecoveryEvent>(paramsValue);
  if (event) emit(AuthRecoveryCompletedEvent{*std::move(event)});
}

void AppServerTurnRun::Notifications::modelVerification() const {
  emit(ModelVerificationEvent{threadID(), turnID(), textsOf(arrayMember(params, {"verifications"}))});
}

void AppServerTurnRun::Notifications::modelRerouted() const {
  emit(ModelReroutedEvent{threadID(), turnID(), textMember(params, {"fromModel"}, ""),
                          textMember(params, {"toModel"}, ""), textMember(params, {"reason"}, "")});
}

void AppServerTurnRun::Notifications::modelSafetyBufferingUpdated() const {
  emit(ModelSafetyBufferingUpdatedEvent{threadID(), turnID(), textMember(params, {"model"}, ""),
                                        textsOf(arrayMember(params, {"useCases", "use_cases"})),
                                        textsOf(arrayMember(params, {"reasons"})),
                                        booleanMember(params, {"showBufferingUi", "show_buffering_ui"}).value_or(false),
                                        textMember(params, {"fasterModel", "faster_model"})});
}

void AppServerTurnRun::Notifications::error() const { emit(ThreadErrorEvent{errorMessage(params)}); }

void AppServerTurnRun::Notifications::warning() const {
  emit(ThreadWarningEvent{textMember(params, {"threadId", "thread_id"}),
                          textMember(params, {"message"}, "Ormel warning")});
}

void AppServerTurnRun::Notifications::deprecationNotice() const {
  if (auto event = decodeIfPossible<DeprecationNoticeEvent>(paramsValue)) emit(*std::move(event));
}

void AppServerTurnRun::Notifications::configWarning() const {
  if (auto event = decodeIfPossible<ConfigWarningEvent>(paramsValue)) emit(*std::move(event));
}

}  // namespace ormel::detail
