#include "OrmelSDK/Events/ThreadEvent.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::RecordTable<ormel::UnknownThreadEvent> {
  static constexpr Field fields[] = {
      required<&UnknownThreadEvent::type>("type"),
  };
};

namespace ormel::coding {

/// In the flat form the sources are written as all other keys of a thread are.
struct FlatThreadStartedTable {
  static constexpr Field fields[] = {
      required<&ThreadStartedEvent::threadID>("thread_id", "threadId"),
      optional<&ThreadStartedEvent::forkedFromID>("forked_from_id", "forkedFromId"),
      defaulted<&ThreadStartedEvent::instructionSources>("instructionSources", "instruction_sources")
          .writtenAs("instruction_sources")
          .omittedWhenEmpty(),
  };
};

}  // namespace ormel::coding

template <>
struct ormel::coding::VariantTable<ormel::ThreadEvent> : CasesOf<ThreadEvent> {
  static constexpr Case cases[] = {
      variantCase<ThreadStartedEvent, TableCodec<ThreadStartedEvent, FlatThreadStartedTable>>("thread.started"),
      variantCase<TurnStartedEvent>("turn.started"),
      variantCase<HookStartedEvent>("hook.started"),
      variantCase<TurnCompletedEvent>("turn.completed"),
      variantCase<HookCompletedEvent>("hook.completed"),
      variantCase<TurnFailedEvent>("turn.failed"),
      variantCase<ThreadGoalUpdatedEvent>("thread.goal.updated"),
      variantCase<ThreadGoalClearedEvent>("thread.goal.cleared"),
      variantCase<ThreadSettingsUpdatedEvent>("thread.settings.updated"),
      variantCase<ItemStartedEvent>("item.started"),
      variantCase<ItemUpdatedEvent>("item.updated"),
      variantCase<ItemCompletedEvent>("item.completed"),
      variantCase<GuardianApprovalReviewStartedEvent>("item.autoApprovalReview.started",
                                                      "item.auto_approval_review.started"),
      variantCase<GuardianApprovalReviewCompletedEvent>("item.autoApprovalReview.completed",
                                                        "item.auto_approval_review.completed"),
      variantCase<ThreadWarningEvent>("warning"),
      variantCase<GuardianWarningEvent>("guardian.warning", "guardianWarning"),
      variantCase<AuthRecoveryStartedEvent, RecordCoder<AuthRecoveryEvent>>("modelProvider.authRecoveryStarted"),
      variantCase<AuthRecoveryCompletedEvent, RecordCoder<AuthRecoveryEvent>>("modelProvider.authRecoveryCompleted"),
      variantCase<StrictReviewRequiredEvent>("autoApprovalReview.strictReviewRequired"),
      variantCase<DeprecationNoticeEvent>("deprecationNotice"),
      variantCase<ConfigWarningEvent>("configWarning"),
      variantCase<ModelVerificationEvent>("model.verification"),
      variantCase<ModelReroutedEvent>("model.rerouted"),
      variantCase<ModelSafetyBufferingUpdatedEvent>("model.safetyBuffering.updated", "model.safety_buffering.updated"),
      variantCase<TurnModerationMetadataEvent>("turn.moderationMetadata", "turn.moderation_metadata"),
      variantCase<ThreadErrorEvent>("error"),
  };
  static ThreadEvent decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
  static JSONValue encodeUnknown(const ThreadEvent& event);
};

namespace ormel {

ThreadEvent::ThreadEvent() = default;
ThreadEvent::ThreadEvent(const ThreadEvent&) = default;
ThreadEvent::ThreadEvent(ThreadEvent&&) noexcept = default;
ThreadEvent& ThreadEvent::operator=(const ThreadEvent&) = default;
ThreadEvent& ThreadEvent::operator=(ThreadEvent&&) noexcept = default;
ThreadEvent::~ThreadEvent() = default;

}  // namespace ormel

namespace ormel::coding {

ThreadEvent VariantTable<ThreadEvent>::decodeUnknown(std::string_view type, const JSONValue&, const CodingPath&) {
  return UnknownThreadEvent{std::string(type)};
}

JSONValue VariantTable<ThreadEvent>::encodeUnknown(const ThreadEvent& event) {
  return Codec<UnknownThreadEvent>::encode(std::get<UnknownThreadEvent>(event.value));
}

}  // namespace ormel::coding

ORMEL_DEFINE_HOT_RECORD(UnknownThreadEvent)
ORMEL_DEFINE_VARIANT(ThreadEvent)
