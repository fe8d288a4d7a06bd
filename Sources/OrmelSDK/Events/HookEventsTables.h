#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/HookEvents.h"

template <>
struct ormel::coding::EnumerationTable<ormel::HookExecutionMode> {
  static constexpr auto words =
      closed(std::array{Word{HookExecutionMode::sync, "sync"}, Word{HookExecutionMode::async, "async"}});
};
ORMEL_DECLARE_ENUMERATION(HookExecutionMode)

template <>
struct ormel::coding::EnumerationTable<ormel::HookScope> {
  static constexpr auto words = closed(std::array{Word{HookScope::thread, "thread"}, Word{HookScope::turn, "turn"}});
};
ORMEL_DECLARE_ENUMERATION(HookScope)

template <>
struct ormel::coding::EnumerationTable<ormel::HookRunStatus> {
  static constexpr auto words =
      closed(std::array{Word{HookRunStatus::running, "running"}, Word{HookRunStatus::completed, "completed"},
                        Word{HookRunStatus::failed, "failed"}, Word{HookRunStatus::blocked, "blocked"},
                        Word{HookRunStatus::stopped, "stopped"}});
};
ORMEL_DECLARE_ENUMERATION(HookRunStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::HookOutputEntryKind> {
  static constexpr auto words =
      closed(std::array{Word{HookOutputEntryKind::warning, "warning"}, Word{HookOutputEntryKind::stop, "stop"},
                        Word{HookOutputEntryKind::feedback, "feedback"}, Word{HookOutputEntryKind::context, "context"},
                        Word{HookOutputEntryKind::error, "error"}});
};
ORMEL_DECLARE_ENUMERATION(HookOutputEntryKind)

template <>
struct ormel::coding::EnumerationTable<ormel::HookTrustStatus> {
  static constexpr auto words =
      closed(std::array{Word{HookTrustStatus::managed, "managed"}, Word{HookTrustStatus::untrusted, "untrusted"},
                        Word{HookTrustStatus::trusted, "trusted"}, Word{HookTrustStatus::modified, "modified"}});
};
ORMEL_DECLARE_ENUMERATION(HookTrustStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::HookSource> {
  static constexpr auto words = tolerant(
      HookSource::unknown,
      std::array{
          Word{HookSource::system, "system"}, Word{HookSource::user, "user"}, Word{HookSource::project, "project"},
          Word{HookSource::mdm, "mdm"}, Word{HookSource::sessionFlags, "sessionFlags"},
          Word{HookSource::plugin, "plugin"}, Word{HookSource::cloudRequirements, "cloudRequirements"},
          Word{HookSource::cloudManagedConfig, "cloudManagedConfig"},
          Word{HookSource::legacyManagedConfigFile, "legacyManagedConfigFile"},
          Word{HookSource::legacyManagedConfigMdm, "legacyManagedConfigMdm"}, Word{HookSource::unknown, "unknown"}});
};
ORMEL_DECLARE_ENUMERATION(HookSource)

template <>
struct ormel::coding::RecordTable<ormel::HookOutputEntry> {
  static constexpr auto fields =
      std::tuple(required<&HookOutputEntry::kind>("kind"), required<&HookOutputEntry::text>("text"));
};
ORMEL_DECLARE_CODEC(HookOutputEntry)

template <>
struct ormel::coding::RecordTable<ormel::HookRunSummary> {
  static constexpr auto fields = std::tuple(
      required<&HookRunSummary::id>("id"), required<&HookRunSummary::eventName>("eventName"),
      required<&HookRunSummary::handlerType>("handlerType"), required<&HookRunSummary::executionMode>("executionMode"),
      required<&HookRunSummary::scope>("scope"), required<&HookRunSummary::sourcePath>("sourcePath"),
      required<&HookRunSummary::source>("source"), required<&HookRunSummary::displayOrder>("displayOrder"),
      required<&HookRunSummary::status>("status"), optional<&HookRunSummary::statusMessage>("statusMessage"),
      required<&HookRunSummary::startedAt>("startedAt"), optional<&HookRunSummary::completedAt>("completedAt"),
      optional<&HookRunSummary::durationMilliseconds>("durationMs"), required<&HookRunSummary::entries>("entries"));
};
ORMEL_DECLARE_CODEC(HookRunSummary)

template <>
struct ormel::coding::RecordTable<ormel::HookStartedEvent> {
  static constexpr auto fields =
      std::tuple(required<&HookStartedEvent::threadID>("thread_id", "threadId"),
                 optional<&HookStartedEvent::turnID>("turn_id", "turnId"), required<&HookStartedEvent::run>("run"));
};
ORMEL_DECLARE_CODEC(HookStartedEvent)

template <>
struct ormel::coding::RecordTable<ormel::HookCompletedEvent> {
  static constexpr auto fields =
      std::tuple(required<&HookCompletedEvent::threadID>("thread_id", "threadId"),
                 optional<&HookCompletedEvent::turnID>("turn_id", "turnId"), required<&HookCompletedEvent::run>("run"));
};
ORMEL_DECLARE_CODEC(HookCompletedEvent)
