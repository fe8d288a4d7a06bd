#include "OrmelSDK/Events/HookEvents.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::HookExecutionMode> {
  static constexpr auto rule = closed;
  static constexpr Word<HookExecutionMode> words[] = {
      {HookExecutionMode::sync, "sync"},
      {HookExecutionMode::async, "async"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::HookScope> {
  static constexpr auto rule = closed;
  static constexpr Word<HookScope> words[] = {
      {HookScope::thread, "thread"},
      {HookScope::turn, "turn"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::HookRunStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<HookRunStatus> words[] = {
      {HookRunStatus::running, "running"}, {HookRunStatus::completed, "completed"}, {HookRunStatus::failed, "failed"},
      {HookRunStatus::blocked, "blocked"}, {HookRunStatus::stopped, "stopped"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::HookOutputEntryKind> {
  static constexpr auto rule = closed;
  static constexpr Word<HookOutputEntryKind> words[] = {
      {HookOutputEntryKind::warning, "warning"},   {HookOutputEntryKind::stop, "stop"},
      {HookOutputEntryKind::feedback, "feedback"}, {HookOutputEntryKind::context, "context"},
      {HookOutputEntryKind::error, "error"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookOutputEntry> {
  static constexpr Field fields[] = {
      required<&HookOutputEntry::kind>("kind"),
      required<&HookOutputEntry::text>("text"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookRunSummary> {
  static constexpr Field fields[] = {
      required<&HookRunSummary::id>("id"),
      required<&HookRunSummary::eventName>("eventName"),
      required<&HookRunSummary::handlerType>("handlerType"),
      required<&HookRunSummary::executionMode>("executionMode"),
      required<&HookRunSummary::scope>("scope"),
      required<&HookRunSummary::sourcePath>("sourcePath"),
      required<&HookRunSummary::source>("source"),
      required<&HookRunSummary::displayOrder>("displayOrder"),
      required<&HookRunSummary::status>("status"),
      optional<&HookRunSummary::statusMessage>("statusMessage"),
      required<&HookRunSummary::startedAt>("startedAt"),
      optional<&HookRunSummary::completedAt>("completedAt"),
      optional<&HookRunSummary::durationMilliseconds>("durationMs"),
      required<&HookRunSummary::entries>("entries"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookStartedEvent> {
  static constexpr Field fields[] = {
      required<&HookStartedEvent::threadID>("thread_id", "threadId"),
      optional<&HookStartedEvent::turnID>("turn_id", "turnId"),
      required<&HookStartedEvent::run>("run"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::HookCompletedEvent> {
  static constexpr Field fields[] = {
      required<&HookCompletedEvent::threadID>("thread_id", "threadId"),
      optional<&HookCompletedEvent::turnID>("turn_id", "turnId"),
      required<&HookCompletedEvent::run>("run"),
  };
};

ORMEL_DEFINE_ENUMERATION(HookExecutionMode)
ORMEL_DEFINE_ENUMERATION(HookScope)
ORMEL_DEFINE_ENUMERATION(HookRunStatus)
ORMEL_DEFINE_ENUMERATION(HookOutputEntryKind)
ORMEL_DEFINE_HOT_RECORD(HookOutputEntry)
ORMEL_DEFINE_HOT_RECORD(HookRunSummary)
ORMEL_DEFINE_HOT_RECORD(HookStartedEvent)
ORMEL_DEFINE_HOT_RECORD(HookCompletedEvent)
