#include "OrmelSDK/AppServerRun/AppServerTurnRun+ProtocolHandling.h"
#include "OrmelSDK/AppServerRun/GuardianReviewParsing.h"

namespace ormel::detail {

namespace {

std::string errorMessage(const JSONObject& params) {
  const JSONObject* error = objectUnder(params, {"error"});
  auto message = error ? ownTextUnder(*error, {"message"}) : std::nullopt;
  return message ? *std::move(message) : ownTextUnder(params, {"message"}, "Unknown app-server error");
}

}  // namespace

void AppServerTurnRun::Notifications::hookStarted() const {
  const JSONValue& summary = needed({"run"}, "hook/started missing run payload");
  emit(HookStartedEvent{threadID(), ownTextUnder(params, {"turnId", "turn_id"}), decode<HookRunSummary>(summary)});
}

void AppServerTurnRun::Notifications::hookCompleted() const {
  const JSONValue& summary = needed({"run"}, "hook/completed missing run payload");
  emit(HookCompletedEvent{threadID(), ownTextUnder(params, {"turnId", "turn_id"}), decode<HookRunSummary>(summary)});
}

void AppServerTurnRun::Notifications::guardianReview(bool isCompleted) const {
  emit(parseGuardianApprovalReviewNotification(params, isCompleted));
}

void AppServerTurnRun::Notifications::guardianReviewStarted() const { guardianReview(false); }
void AppServerTurnRun::Notifications::guardianReviewCompleted() const { guardianReview(true); }

void AppServerTurnRun::Notifications::guardianWarning() const {
  emit(GuardianWarningEvent{threadID(), ownTextUnder(params, {"message"}, "Guardian warning")});
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
  emit(ModelVerificationEvent{threadID(), turnID(), textsOf(arrayUnder(params, {"verifications"}))});
}

void AppServerTurnRun::Notifications::modelRerouted() const {
  emit(ModelReroutedEvent{threadID(), turnID(), ownTextUnder(params, {"fromModel"}, ""),
                          ownTextUnder(params, {"toModel"}, ""), ownTextUnder(params, {"reason"}, "")});
}

void AppServerTurnRun::Notifications::modelSafetyBufferingUpdated() const {
  emit(ModelSafetyBufferingUpdatedEvent{threadID(), turnID(), ownTextUnder(params, {"model"}, ""),
                                        textsOf(arrayUnder(params, {"useCases", "use_cases"})),
                                        textsOf(arrayUnder(params, {"reasons"})),
                                        booleanUnder(params, {"showBufferingUi", "show_buffering_ui"}).value_or(false),
                                        ownTextUnder(params, {"fasterModel", "faster_model"})});
}

void AppServerTurnRun::Notifications::error() const { emit(ThreadErrorEvent{errorMessage(params)}); }

void AppServerTurnRun::Notifications::warning() const {
  emit(ThreadWarningEvent{ownTextUnder(params, {"threadId", "thread_id"}),
                          ownTextUnder(params, {"message"}, "Ormel warning")});
}

void AppServerTurnRun::Notifications::deprecationNotice() const {
  if (auto event = decodeIfPossible<DeprecationNoticeEvent>(paramsValue)) emit(*std::move(event));
}

void AppServerTurnRun::Notifications::configWarning() const {
  if (auto event = decodeIfPossible<ConfigWarningEvent>(paramsValue)) emit(*std::move(event));
}

}  // namespace ormel::detail
