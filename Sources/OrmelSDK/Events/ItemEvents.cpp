#include "OrmelSDK/Events/ItemEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ItemStartedEvent> {
  static constexpr Field fields[] = {
      required<&ItemStartedEvent::item>("item"),
      optional<&ItemStartedEvent::threadID>("thread_id", "threadId"),
      optional<&ItemStartedEvent::turnID>("turn_id", "turnId"),
      optional<&ItemStartedEvent::startedAtMilliseconds>("started_at_ms", "startedAtMs").writtenAs("startedAtMs"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ItemUpdatedEvent> {
  static constexpr Field fields[] = {
      required<&ItemUpdatedEvent::item>("item"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ItemCompletedEvent> {
  static constexpr Field fields[] = {
      required<&ItemCompletedEvent::item>("item"),
      optional<&ItemCompletedEvent::threadID>("thread_id", "threadId"),
      optional<&ItemCompletedEvent::turnID>("turn_id", "turnId"),
      optional<&ItemCompletedEvent::completedAtMilliseconds>("completed_at_ms", "completedAtMs")
          .writtenAs("completedAtMs"),
  };
};

ORMEL_DEFINE_HOT_RECORD(ItemStartedEvent)
ORMEL_DEFINE_HOT_RECORD(ItemUpdatedEvent)
ORMEL_DEFINE_HOT_RECORD(ItemCompletedEvent)
