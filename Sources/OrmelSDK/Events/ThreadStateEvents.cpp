#include "OrmelSDK/Events/ThreadStateEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ThreadStartedEvent> {
  static constexpr Field fields[] = {
      required<&ThreadStartedEvent::threadID>("thread_id", "threadId"),
      optional<&ThreadStartedEvent::forkedFromID>("forked_from_id", "forkedFromId"),
      defaulted<&ThreadStartedEvent::instructionSources>("instructionSources", "instruction_sources")
          .omittedWhenEmpty(),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalUpdatedEvent> {
  static constexpr Field fields[] = {
      required<&ThreadGoalUpdatedEvent::threadID>("thread_id", "threadId"),
      optional<&ThreadGoalUpdatedEvent::turnID>("turn_id", "turnId"),
      required<&ThreadGoalUpdatedEvent::goal>("goal"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalClearedEvent> {
  static constexpr Field fields[] = {
      required<&ThreadGoalClearedEvent::threadID>("thread_id", "threadId"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettingsUpdatedEvent> {
  static constexpr Field fields[] = {
      required<&ThreadSettingsUpdatedEvent::threadID>("thread_id", "threadId"),
      required<&ThreadSettingsUpdatedEvent::threadSettings>("threadSettings"),
  };
};

ORMEL_DEFINE_HOT_RECORD(ThreadStartedEvent)
ORMEL_DEFINE_HOT_RECORD(ThreadGoalUpdatedEvent)
ORMEL_DEFINE_HOT_RECORD(ThreadGoalClearedEvent)
ORMEL_DEFINE_HOT_RECORD(ThreadSettingsUpdatedEvent)
