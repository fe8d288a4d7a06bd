#pragma once

#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Events/GuardianReviewEventsTables.h"
#include "OrmelSDK/Events/HookEventsTables.h"
#include "OrmelSDK/Events/ItemEventsTables.h"
#include "OrmelSDK/Events/ModelEventsTables.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Events/ThreadStateEventsTables.h"
#include "OrmelSDK/Events/TurnEventsTables.h"
#include "OrmelSDK/Events/WarningEventsTables.h"

template <>
struct ormel::coding::RecordTable<ormel::UnknownThreadEvent> {
  static constexpr auto fields = std::tuple(required<&UnknownThreadEvent::type>("type"));
};
ORMEL_DECLARE_CODEC(UnknownThreadEvent)

namespace ormel::coding {

/// In the flat form the sources are written as all other keys of a thread are.
struct FlatThreadStartedTable {
  static constexpr auto fields =
      std::tuple(required<&ThreadStartedEvent::threadID>("thread_id", "threadId"),
                 optional<&ThreadStartedEvent::forkedFromID>("forked_from_id", "forkedFromId"),
                 defaulted<&ThreadStartedEvent::instructionSources>("instructionSources", "instruction_sources")
                     .writtenAs("instruction_sources")
                     .omittedWhenEmpty());
};

}  // namespace ormel::coding

template <>
struct ormel::coding::VariantTable<ormel::ThreadEvent> {
  static constexpr auto cases = std::tuple(
      variantCase<ThreadStartedEvent, FlatThreadStartedTable>("thread.started"),
      variantCase<TurnStartedEvent>("turn.started"), variantCase<HookStartedEvent>("hook.started"),
      variantCase<TurnCompletedEvent>("turn.completed"), variantCase<HookCompletedEvent>("hook.completed"),
      variantCase<TurnFailedEvent>("turn.failed"), variantCase<ThreadGoalUpdatedEvent>("thread.goal.updated"),
      variantCase<ThreadGoalClearedEvent>("thread.goal.cleared"),
      variantCase<ThreadSettingsUpdatedEvent>("thread.settings.updated"), variantCase<ItemStartedEvent>("item.started"),
      variantCase<ItemUpdatedEvent>("item.updated"), variantCase<ItemCompletedEvent>("item.completed"),
      variantCase<GuardianApprovalReviewStartedEvent>("item.autoApprovalReview.started",
                                                      "item.auto_approval_review.started"),
      variantCase<GuardianApprovalReviewCompletedEvent>("item.autoApprovalReview.completed",
                                                        "item.auto_approval_review.completed"),
      variantCase<ThreadWarningEvent>("warning"),
      variantCase<GuardianWarningEvent>("guardian.warning", "guardianWarning"),
      variantCase<AuthRecoveryStartedEvent, RecordTable<AuthRecoveryEvent>>("modelProvider.authRecoveryStarted"),
      variantCase<AuthRecoveryCompletedEvent, RecordTable<AuthRecoveryEvent>>("modelProvider.authRecoveryCompleted"),
      variantCase<StrictReviewRequiredEvent>("autoApprovalReview.strictReviewRequired"),
      variantCase<DeprecationNoticeEvent>("deprecationNotice"), variantCase<ConfigWarningEvent>("configWarning"),
      variantCase<ModelVerificationEvent>("model.verification"), variantCase<ModelReroutedEvent>("model.rerouted"),
      variantCase<ModelSafetyBufferingUpdatedEvent>("model.safetyBuffering.updated", "model.safety_buffering.updated"),
      variantCase<TurnModerationMetadataEvent>("turn.moderationMetadata", "turn.moderation_metadata"),
      variantCase<ThreadErrorEvent>("error"));
  static ThreadEvent decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
  static JSONValue encodeUnknown(const ThreadEvent& event);
};
ORMEL_DECLARE_CODEC(ThreadEvent)
