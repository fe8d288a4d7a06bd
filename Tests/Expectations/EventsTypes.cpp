#include "Expectations/Registry.h"
#include "OrmelSDK/Events/GuardianReview.h"
#include "OrmelSDK/Events/GuardianReviewAction.h"
#include "OrmelSDK/Events/GuardianReviewEvents.h"
#include "OrmelSDK/Events/HookEvents.h"
#include "OrmelSDK/Events/ThreadEvent.h"

namespace ormel::tests {

template <>
struct Plain<AuthRecoveryStartedEvent> {
  using Record = AuthRecoveryEvent;
};

template <>
struct Plain<AuthRecoveryCompletedEvent> {
  using Record = AuthRecoveryEvent;
};

void registerEvents(Registry& registry) {
  registry.record<ThreadStartedEvent>();
  registry.record<TurnStartedEvent>();
  registry.record<Usage>();
  registry.record<TurnCompletedEvent>();
  registry.record<ThreadError>();
  registry.record<TurnFailedEvent>();
  registry.record<ThreadErrorEvent>();
  registry.record<ItemStartedEvent>();
  registry.record<ItemUpdatedEvent>();
  registry.record<ItemCompletedEvent>();
  registry.record<ThreadGoalUpdatedEvent>();
  registry.record<ThreadGoalClearedEvent>();
  registry.record<ThreadSettingsUpdatedEvent>();
  registry.record<ThreadWarningEvent>();
  registry.record<AuthRecoveryEvent>();
  registry.record<DeprecationNoticeEvent>();
  registry.record<TextPosition>();
  registry.record<TextRange>();
  registry.record<ConfigWarningEvent>();
  registry.record<UnknownThreadEvent>();
  registry.enumeration<GuardianApprovalReviewStatus>();
  registry.enumeration<GuardianRiskLevel>();
  registry.enumeration<GuardianUserAuthorization>();
  registry.enumeration<AutoReviewDecisionSource>();
  registry.record<GuardianApprovalReview>();
  registry.record<GuardianApprovalReviewStartedEvent>();
  registry.record<GuardianApprovalReviewCompletedEvent>();
  registry.record<GuardianWarningEvent>();
  registry.record<StrictReviewRequiredEvent>();
  registry.enumeration<GuardianCommandSource>();
  registry.enumeration<NetworkApprovalProtocol>();
  registry.record<GuardianCommandReviewAction>();
  registry.record<GuardianExecveReviewAction>();
  registry.record<GuardianApplyPatchReviewAction>();
  registry.record<GuardianNetworkAccessReviewAction>();
  registry.record<GuardianMcpToolCallReviewAction>();
  registry.record<GuardianRequestPermissionsReviewAction>();
  registry.record<GuardianWriteStdinReviewAction>();
  registry.record<GuardianUnknownReviewAction>();
  registry.variant<GuardianApprovalReviewAction>();
  registry.vocabulary<HookEventName>({{"preToolUse", HookEventName::preToolUse},
                                      {"permissionRequest", HookEventName::permissionRequest},
                                      {"postToolUse", HookEventName::postToolUse},
                                      {"preCompact", HookEventName::preCompact},
                                      {"postCompact", HookEventName::postCompact},
                                      {"sessionStart", HookEventName::sessionStart},
                                      {"sessionEnd", HookEventName::sessionEnd},
                                      {"userPromptSubmit", HookEventName::userPromptSubmit},
                                      {"subagentStart", HookEventName::subagentStart},
                                      {"subagentStop", HookEventName::subagentStop},
                                      {"interrupt", HookEventName::interrupt},
                                      {"mcpTool", HookEventName::mcpTool},
                                      {"stop", HookEventName::stop}});
  registry.vocabulary<HookHandlerType>({{"command", HookHandlerType::command},
                                        {"prompt", HookHandlerType::prompt},
                                        {"agent", HookHandlerType::agent},
                                        {"mcpTool", HookHandlerType::mcpTool}});
  registry.enumeration<HookExecutionMode>();
  registry.enumeration<HookScope>();
  registry.enumeration<HookRunStatus>();
  registry.enumeration<HookOutputEntryKind>();
  registry.enumeration<HookTrustStatus>();
  registry.enumeration<HookSource>();
  registry.record<HookOutputEntry>();
  registry.record<HookRunSummary>();
  registry.record<HookStartedEvent>();
  registry.record<HookCompletedEvent>();
  registry.record<ModelVerificationEvent>();
  registry.record<ModelReroutedEvent>();
  registry.record<ModelSafetyBufferingUpdatedEvent>();
  registry.record<TurnModerationMetadataEvent>();
  registry.variant<ThreadEvent>();
}

}  // namespace ormel::tests
