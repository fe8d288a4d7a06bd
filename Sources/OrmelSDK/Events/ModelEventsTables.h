#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/ModelEvents.h"

template <>
struct ormel::coding::RecordTable<ormel::ModelVerificationEvent> {
  static constexpr auto fields = std::tuple(required<&ModelVerificationEvent::threadID>("thread_id", "threadId"),
                                            required<&ModelVerificationEvent::turnID>("turn_id", "turnId"),
                                            defaulted<&ModelVerificationEvent::verifications>("verifications"));
};
ORMEL_DECLARE_CODEC(ModelVerificationEvent)

template <>
struct ormel::coding::RecordTable<ormel::ModelReroutedEvent> {
  static constexpr auto fields = std::tuple(
      required<&ModelReroutedEvent::threadID>("thread_id", "threadId"),
      required<&ModelReroutedEvent::turnID>("turn_id", "turnId"), required<&ModelReroutedEvent::fromModel>("fromModel"),
      required<&ModelReroutedEvent::toModel>("toModel"), required<&ModelReroutedEvent::reason>("reason"));
};
ORMEL_DECLARE_CODEC(ModelReroutedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ModelSafetyBufferingUpdatedEvent> {
  static constexpr auto fields =
      std::tuple(required<&ModelSafetyBufferingUpdatedEvent::threadID>("thread_id", "threadId"),
                 required<&ModelSafetyBufferingUpdatedEvent::turnID>("turn_id", "turnId"),
                 required<&ModelSafetyBufferingUpdatedEvent::model>("model"),
                 defaulted<&ModelSafetyBufferingUpdatedEvent::useCases>("useCases"),
                 defaulted<&ModelSafetyBufferingUpdatedEvent::reasons>("reasons"),
                 required<&ModelSafetyBufferingUpdatedEvent::showBufferingUI>("showBufferingUi"),
                 optional<&ModelSafetyBufferingUpdatedEvent::fasterModel>("fasterModel"));
};
ORMEL_DECLARE_CODEC(ModelSafetyBufferingUpdatedEvent)

template <>
struct ormel::coding::RecordTable<ormel::TurnModerationMetadataEvent> {
  static constexpr auto fields = std::tuple(required<&TurnModerationMetadataEvent::threadID>("thread_id", "threadId"),
                                            required<&TurnModerationMetadataEvent::turnID>("turn_id", "turnId"),
                                            required<&TurnModerationMetadataEvent::metadata>("metadata"));
};
ORMEL_DECLARE_CODEC(TurnModerationMetadataEvent)
