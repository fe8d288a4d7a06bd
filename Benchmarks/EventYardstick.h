#pragma once

// The events once more, in the way of a user of nlohmann's library: plain records whose conversion its macros define.
// One spelling of each key, no optional fields, and texts in place of enumerations.

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ItemYardstick.h"
#include "OneOf.h"

namespace ormel::benchmarks::yardstick {

struct threadStarted {
  std::string thread_id, forked_from_id;
  std::vector<std::string> instruction_sources;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(threadStarted, thread_id, forked_from_id, instruction_sources)

struct turnStarted {
  std::int64_t model_context_window = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(turnStarted, model_context_window)

struct HookEntry {
  std::string kind, text;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(HookEntry, kind, text)

struct HookRun {
  std::string id, eventName, handlerType, executionMode, scope, sourcePath, source, status, statusMessage;
  std::int64_t displayOrder = 0, startedAt = 0, completedAt = 0, durationMs = 0;
  std::vector<HookEntry> entries;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(HookRun, id, eventName, handlerType, executionMode, scope, sourcePath,
                                                source, status, statusMessage, displayOrder, startedAt, completedAt,
                                                durationMs, entries)

struct hookStarted {
  std::string thread_id, turn_id;
  HookRun run;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(hookStarted, thread_id, turn_id, run)

struct TokenUsage {
  std::int64_t total_tokens = 0, input_tokens = 0, cached_input_tokens = 0, output_tokens = 0, model_context_window = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(TokenUsage, total_tokens, input_tokens, cached_input_tokens,
                                                output_tokens, model_context_window)

struct turnCompleted {
  TokenUsage usage;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(turnCompleted, usage)

struct hookCompleted : hookStarted {};

struct Failure {
  std::string message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Failure, message)

struct turnFailed {
  Failure error;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(turnFailed, error)

struct Goal {
  std::string thread_id, objective, status;
  std::int64_t tokenBudget = 0, tokensUsed = 0, timeUsedSeconds = 0;
  double createdAt = 0, updatedAt = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Goal, thread_id, objective, status, tokenBudget, tokensUsed,
                                                timeUsedSeconds, createdAt, updatedAt)

struct threadGoalUpdated {
  std::string thread_id, turn_id;
  Goal goal;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(threadGoalUpdated, thread_id, turn_id, goal)

struct threadGoalCleared {
  std::string thread_id;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(threadGoalCleared, thread_id)

struct Settings {
  std::string cwd, approvalPolicy, approvalsReviewer, model, modelProvider, serviceTier, effort, summary,
      collaborationMode, personality;
  Json sandboxPolicy, activePermissionProfile;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Settings, cwd, approvalPolicy, approvalsReviewer, model, modelProvider,
                                                serviceTier, effort, summary, collaborationMode, personality,
                                                sandboxPolicy, activePermissionProfile)

struct threadSettingsUpdated {
  std::string thread_id;
  Settings threadSettings;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(threadSettingsUpdated, thread_id, threadSettings)

struct itemStarted {
  Item item;
  std::string thread_id, turn_id;
  std::int64_t startedAtMs = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(itemStarted, item, thread_id, turn_id, startedAtMs)

struct itemUpdated {
  Item item;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(itemUpdated, item)

struct itemCompleted {
  Item item;
  std::string thread_id, turn_id;
  std::int64_t completedAtMs = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(itemCompleted, item, thread_id, turn_id, completedAtMs)

struct Review {
  std::string status, riskLevel, userAuthorization, rationale;
  std::int64_t riskScore = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Review, status, riskLevel, userAuthorization, rationale, riskScore)

struct CommandAction {
  std::string source, command, cwd;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CommandAction, source, command, cwd)

inline constexpr TypeWords actionTypes[] = {{"command"}};
using Action = OneOf<actionTypes, CommandAction>;

struct reviewStarted {
  std::string thread_id, turn_id, target_item_id, review_id;
  Review review;
  Action action;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(reviewStarted, thread_id, turn_id, target_item_id, review_id, review,
                                                action)

struct reviewCompleted {
  std::string thread_id, turn_id, target_item_id, review_id, decision_source;
  Review review;
  Action action;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(reviewCompleted, thread_id, turn_id, target_item_id, review_id,
                                                decision_source, review, action)

struct warning {
  std::string thread_id, message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(warning, thread_id, message)

struct guardianWarning {
  std::string thread_id, message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(guardianWarning, thread_id, message)

struct authRecoveryStarted {
  std::string thread_id, turn_id, provider, message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(authRecoveryStarted, thread_id, turn_id, provider, message)

struct authRecoveryCompleted : authRecoveryStarted {};

struct strictReviewRequired {
  std::string thread_id, turn_id;
  std::int64_t startedAtMs = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(strictReviewRequired, thread_id, turn_id, startedAtMs)

struct deprecationNotice {
  std::string summary, details;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(deprecationNotice, summary, details)

struct Position {
  std::int64_t line = 0, column = 0;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Position, line, column)

struct Range {
  Position start, end;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Range, start, end)

struct configWarning {
  std::string summary, details, path;
  Range range;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(configWarning, summary, details, path, range)

struct modelVerification {
  std::string thread_id, turn_id;
  std::vector<std::string> verifications;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(modelVerification, thread_id, turn_id, verifications)

struct modelRerouted {
  std::string thread_id, turn_id, fromModel, toModel, reason;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(modelRerouted, thread_id, turn_id, fromModel, toModel, reason)

struct modelSafetyBufferingUpdated {
  std::string thread_id, turn_id, model, fasterModel;
  std::vector<std::string> useCases, reasons;
  bool showBufferingUi = false;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(modelSafetyBufferingUpdated, thread_id, turn_id, model, fasterModel,
                                                useCases, reasons, showBufferingUi)

struct turnModerationMetadata {
  std::string thread_id, turn_id;
  Json metadata;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(turnModerationMetadata, thread_id, turn_id, metadata)

struct errorEvent {
  std::string message;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(errorEvent, message)

struct unknownEvent {
  std::string type;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(unknownEvent, type)

inline constexpr TypeWords eventTypes[] = {{"thread.started"},
                                           {"turn.started"},
                                           {"hook.started"},
                                           {"turn.completed"},
                                           {"hook.completed"},
                                           {"turn.failed"},
                                           {"thread.goal.updated"},
                                           {"thread.goal.cleared"},
                                           {"thread.settings.updated"},
                                           {"item.started"},
                                           {"item.updated"},
                                           {"item.completed"},
                                           {"item.autoApprovalReview.started", "item.auto_approval_review.started"},
                                           {"item.autoApprovalReview.completed", "item.auto_approval_review.completed"},
                                           {"warning"},
                                           {"guardian.warning", "guardianWarning"},
                                           {"modelProvider.authRecoveryStarted"},
                                           {"modelProvider.authRecoveryCompleted"},
                                           {"autoApprovalReview.strictReviewRequired"},
                                           {"deprecationNotice"},
                                           {"configWarning"},
                                           {"model.verification"},
                                           {"model.rerouted"},
                                           {"model.safetyBuffering.updated", "model.safety_buffering.updated"},
                                           {"turn.moderationMetadata", "turn.moderation_metadata"},
                                           {"error"},
                                           {"future.event"}};

using Event = OneOf<eventTypes, threadStarted, turnStarted, hookStarted, turnCompleted, hookCompleted, turnFailed,
                    threadGoalUpdated, threadGoalCleared, threadSettingsUpdated, itemStarted, itemUpdated,
                    itemCompleted, reviewStarted, reviewCompleted, warning, guardianWarning, authRecoveryStarted,
                    authRecoveryCompleted, strictReviewRequired, deprecationNotice, configWarning, modelVerification,
                    modelRerouted, modelSafetyBufferingUpdated, turnModerationMetadata, errorEvent, unknownEvent>;

}  // namespace ormel::benchmarks::yardstick
