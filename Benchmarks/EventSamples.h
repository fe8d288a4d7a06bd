#pragma once

#include <array>
#include <string_view>

namespace ormel::benchmarks {

struct EventSample {
  std::string_view name;
  std::string_view text;
};

#define ORMEL_SAMPLE_THREAD R"("thread_id":"0199a213-81c0-7800-8aa1-bbab2a035a53")"
#define ORMEL_SAMPLE_TURN ORMEL_SAMPLE_THREAD R"(,"turn_id":"0199a213-8243-7a51-9c2d-6b6f3c1d8e4f")"
#define ORMEL_SAMPLE_RUN                                                                                    \
  R"("run":{"id":"hook-run-17","eventName":"postToolUse","handlerType":"command","executionMode":"sync",)"  \
  R"("scope":"turn","sourcePath":"/home/user/.config/hooks/format.json","source":"user","displayOrder":3,)" \
  R"("status":"completed","statusMessage":"formatted 3 files","startedAt":1700000000000,)"                  \
  R"("completedAt":1700000000412,"durationMs":412,"entries":[{"kind":"feedback","text":"3 files changed"}]})"
#define ORMEL_SAMPLE_ITEM \
  R"("item":{"type":"agent_message","id":"msg_0c5e9f","text":"The quick brown fox jumps over the lazy dog"})"
#define ORMEL_SAMPLE_REVIEW                                                                       \
  R"("target_item_id":"item_17","review_id":"review_4",)"                                         \
  R"("review":{"status":"approved","riskScore":12,"riskLevel":"low","userAuthorization":"high",)" \
  R"("rationale":"The command only reads files inside of the workspace"},)"                       \
  R"("action":{"type":"command","source":"shell","command":"grep -rn main src","cwd":"/home/user/project"})"

/// One event of each kind in its flat form, as long as a server makes it.
inline constexpr std::array eventSamples = {
    EventSample{"threadStarted", R"({"type":"thread.started",)" ORMEL_SAMPLE_THREAD
                                 R"(,"instruction_sources":["/home/user/project/AGENTS.md"]})"},
    EventSample{"turnStarted", R"({"type":"turn.started","model_context_window":272000})"},
    EventSample{"hookStarted", R"({"type":"hook.started",)" ORMEL_SAMPLE_TURN "," ORMEL_SAMPLE_RUN "}"},
    EventSample{"turnCompleted", R"({"type":"turn.completed","usage":{"total_tokens":18230,"input_tokens":17000,)"
                                 R"("cached_input_tokens":12000,"output_tokens":1230,"model_context_window":272000}})"},
    EventSample{"hookCompleted", R"({"type":"hook.completed",)" ORMEL_SAMPLE_TURN "," ORMEL_SAMPLE_RUN "}"},
    EventSample{"turnFailed", R"({"type":"turn.failed","error":{"message":"The usage limit has been reached"}})"},
    EventSample{"threadGoalUpdated",
                R"({"type":"thread.goal.updated",)" ORMEL_SAMPLE_TURN R"(,"goal":{)" ORMEL_SAMPLE_THREAD
                R"(,"objective":"Make the build green again","status":"active","tokenBudget":100000,)"
                R"("tokensUsed":1234,"timeUsedSeconds":56,"createdAt":1700000000.5,"updatedAt":1700000056.25}})"},
    EventSample{"threadGoalCleared", R"({"type":"thread.goal.cleared",)" ORMEL_SAMPLE_THREAD "}"},
    EventSample{"threadSettingsUpdated",
                R"({"type":"thread.settings.updated",)" ORMEL_SAMPLE_THREAD
                R"(,"threadSettings":{"cwd":"/home/user/project","approvalPolicy":"on-request",)"
                R"("approvalsReviewer":"user","sandboxPolicy":{"type":"workspaceWrite","networkAccess":false},)"
                R"("model":"large","modelProvider":"default","effort":"high","collaborationMode":"default"}})"},
    EventSample{"itemStarted", R"({"type":"item.started",)" ORMEL_SAMPLE_TURN
                               R"(,"startedAtMs":1700000000000,)" ORMEL_SAMPLE_ITEM "}"},
    EventSample{"itemUpdated", R"({"type":"item.updated",)" ORMEL_SAMPLE_ITEM "}"},
    EventSample{"itemCompleted", R"({"type":"item.completed",)" ORMEL_SAMPLE_TURN
                                 R"(,"completedAtMs":1700000000412,)" ORMEL_SAMPLE_ITEM "}"},
    EventSample{"guardianApprovalReviewStarted",
                R"({"type":"item.autoApprovalReview.started",)" ORMEL_SAMPLE_TURN "," ORMEL_SAMPLE_REVIEW "}"},
    EventSample{"guardianApprovalReviewCompleted",
                R"({"type":"item.autoApprovalReview.completed","decision_source":"agent",)" ORMEL_SAMPLE_TURN
                "," ORMEL_SAMPLE_REVIEW "}"},
    EventSample{"warning", R"({"type":"warning",)" ORMEL_SAMPLE_THREAD
                           R"(,"message":"The skill has no description and was left out"})"},
    EventSample{"guardianWarning", R"({"type":"guardian.warning",)" ORMEL_SAMPLE_THREAD
                                   R"(,"message":"Three requests in a row were denied"})"},
    EventSample{"authRecoveryStarted", R"({"type":"modelProvider.authRecoveryStarted",)" ORMEL_SAMPLE_TURN
                                       R"(,"provider":"default","message":"Renewing the credentials"})"},
    EventSample{"authRecoveryCompleted", R"({"type":"modelProvider.authRecoveryCompleted",)" ORMEL_SAMPLE_TURN
                                         R"(,"provider":"default","message":"The credentials are renewed"})"},
    EventSample{"strictReviewRequired", R"({"type":"autoApprovalReview.strictReviewRequired",)" ORMEL_SAMPLE_TURN
                                        R"(,"startedAtMs":1700000000000})"},
    EventSample{"deprecationNotice", R"({"type":"deprecationNotice","summary":"The old policy will go away",)"
                                     R"("details":"Use the new policy before the next release"})"},
    EventSample{"configWarning", R"({"type":"configWarning","summary":"Unknown key","path":"/home/user/config.toml",)"
                                 R"("range":{"start":{"line":3,"column":1},"end":{"line":3,"column":12}}})"},
    EventSample{"modelVerification",
                R"({"type":"model.verification",)" ORMEL_SAMPLE_TURN R"(,"verifications":["trustedAccess"]})"},
    EventSample{"modelRerouted", R"({"type":"model.rerouted",)" ORMEL_SAMPLE_TURN
                                 R"(,"fromModel":"large","toModel":"small","reason":"highRiskActivity"})"},
    EventSample{"modelSafetyBufferingUpdated",
                R"({"type":"model.safetyBuffering.updated",)" ORMEL_SAMPLE_TURN
                R"(,"model":"large","useCases":["research"],"reasons":["policy"],"showBufferingUi":true})"},
    EventSample{"turnModerationMetadata", R"({"type":"turn.moderationMetadata",)" ORMEL_SAMPLE_TURN
                                          R"(,"metadata":{"categories":["none"],"score":0.125}})"},
    EventSample{"error", R"({"type":"error","message":"The model is overloaded"})"},
    EventSample{"unknown", R"({"type":"future.event",)" ORMEL_SAMPLE_TURN "}"},
};

#undef ORMEL_SAMPLE_THREAD
#undef ORMEL_SAMPLE_TURN
#undef ORMEL_SAMPLE_RUN
#undef ORMEL_SAMPLE_ITEM
#undef ORMEL_SAMPLE_REVIEW

}  // namespace ormel::benchmarks
