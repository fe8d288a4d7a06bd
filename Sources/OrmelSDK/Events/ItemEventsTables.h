#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/ItemEvents.h"
#include "OrmelSDK/Items/ThreadItemTables.h"

template <>
struct ormel::coding::RecordTable<ormel::ItemStartedEvent> {
  static constexpr auto fields = std::tuple(
      required<&ItemStartedEvent::item>("item"), optional<&ItemStartedEvent::threadID>("thread_id", "threadId"),
      optional<&ItemStartedEvent::turnID>("turn_id", "turnId"),
      optional<&ItemStartedEvent::startedAtMilliseconds>("started_at_ms", "startedAtMs").writtenAs("startedAtMs"));
};
ORMEL_DECLARE_CODEC(ItemStartedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ItemUpdatedEvent> {
  static constexpr auto fields = std::tuple(required<&ItemUpdatedEvent::item>("item"));
};
ORMEL_DECLARE_CODEC(ItemUpdatedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ItemCompletedEvent> {
  static constexpr auto fields = std::tuple(
      required<&ItemCompletedEvent::item>("item"), optional<&ItemCompletedEvent::threadID>("thread_id", "threadId"),
      optional<&ItemCompletedEvent::turnID>("turn_id", "turnId"),
      optional<&ItemCompletedEvent::completedAtMilliseconds>("completed_at_ms", "completedAtMs")
          .writtenAs("completedAtMs"));
};
ORMEL_DECLARE_CODEC(ItemCompletedEvent)
