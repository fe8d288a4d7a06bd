#include "OrmelSDK/Events/ModelEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ModelVerificationEvent> {
  static constexpr Field fields[] = {
      required<&ModelVerificationEvent::threadID>("thread_id", "threadId"),
      required<&ModelVerificationEvent::turnID>("turn_id", "turnId"),
      defaulted<&ModelVerificationEvent::verifications>("verifications"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelReroutedEvent> {
  static constexpr Field fields[] = {
      required<&ModelReroutedEvent::threadID>("thread_id", "threadId"),
      required<&ModelReroutedEvent::turnID>("turn_id", "turnId"),
      required<&ModelReroutedEvent::fromModel>("fromModel"),
      required<&ModelReroutedEvent::toModel>("toModel"),
      required<&ModelReroutedEvent::reason>("reason"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ModelSafetyBufferingUpdatedEvent> {
  static constexpr Field fields[] = {
      required<&ModelSafetyBufferingUpdatedEvent::threadID>("thread_id", "threadId"),
      required<&ModelSafetyBufferingUpdatedEvent::turnID>("turn_id", "turnId"),
      required<&ModelSafetyBufferingUpdatedEvent::model>("model"),
      defaulted<&ModelSafetyBufferingUpdatedEvent::useCases>("useCases"),
      defaulted<&ModelSafetyBufferingUpdatedEvent::reasons>("reasons"),
      required<&ModelSafetyBufferingUpdatedEvent::showBufferingUI>("showBufferingUi"),
      optional<&ModelSafetyBufferingUpdatedEvent::fasterModel>("fasterModel"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TurnModerationMetadataEvent> {
  static constexpr Field fields[] = {
      required<&TurnModerationMetadataEvent::threadID>("thread_id", "threadId"),
      required<&TurnModerationMetadataEvent::turnID>("turn_id", "turnId"),
      required<&TurnModerationMetadataEvent::metadata>("metadata"),
  };
};

ORMEL_DEFINE_HOT_RECORD(ModelVerificationEvent)
ORMEL_DEFINE_HOT_RECORD(ModelReroutedEvent)
ORMEL_DEFINE_HOT_RECORD(ModelSafetyBufferingUpdatedEvent)
ORMEL_DEFINE_HOT_RECORD(TurnModerationMetadataEvent)
