#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/ThreadStateEvents.h"
#include "OrmelSDK/Records/ThreadGoalTables.h"
#include "OrmelSDK/Records/ThreadSettingsTables.h"

template <>
struct ormel::coding::RecordTable<ormel::ThreadStartedEvent> {
  static constexpr auto fields =
      std::tuple(required<&ThreadStartedEvent::threadID>("thread_id", "threadId"),
                 optional<&ThreadStartedEvent::forkedFromID>("forked_from_id", "forkedFromId"),
                 defaulted<&ThreadStartedEvent::instructionSources>("instructionSources", "instruction_sources")
                     .omittedWhenEmpty());
};
ORMEL_DECLARE_CODEC(ThreadStartedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalUpdatedEvent> {
  static constexpr auto fields = std::tuple(required<&ThreadGoalUpdatedEvent::threadID>("thread_id", "threadId"),
                                            optional<&ThreadGoalUpdatedEvent::turnID>("turn_id", "turnId"),
                                            required<&ThreadGoalUpdatedEvent::goal>("goal"));
};
ORMEL_DECLARE_CODEC(ThreadGoalUpdatedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ThreadGoalClearedEvent> {
  static constexpr auto fields = std::tuple(required<&ThreadGoalClearedEvent::threadID>("thread_id", "threadId"));
};
ORMEL_DECLARE_CODEC(ThreadGoalClearedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettingsUpdatedEvent> {
  static constexpr auto fields = std::tuple(required<&ThreadSettingsUpdatedEvent::threadID>("thread_id", "threadId"),
                                            required<&ThreadSettingsUpdatedEvent::threadSettings>("threadSettings"));
};
ORMEL_DECLARE_CODEC(ThreadSettingsUpdatedEvent)
