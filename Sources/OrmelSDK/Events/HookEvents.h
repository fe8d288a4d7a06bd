#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Records/HookWords.h"

namespace ormel {

/// Whether the server waits for a hook.
enum class HookExecutionMode { sync, async };
std::ostream& operator<<(std::ostream& stream, const HookExecutionMode& value);

enum class HookScope { thread, turn };
std::ostream& operator<<(std::ostream& stream, const HookScope& value);

enum class HookRunStatus { running, completed, failed, blocked, stopped };
std::ostream& operator<<(std::ostream& stream, const HookRunStatus& value);

enum class HookOutputEntryKind { warning, stop, feedback, context, error };
std::ostream& operator<<(std::ostream& stream, const HookOutputEntryKind& value);

/// One thing that a hook had to say.
struct HookOutputEntry {
  HookOutputEntryKind kind = HookOutputEntryKind::warning;
  std::string text;
  friend bool operator==(const HookOutputEntry&, const HookOutputEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const HookOutputEntry& value);
};

/// One run of a hook, as far as it has come.
struct HookRunSummary {
  std::string id;
  HookEventName eventName;
  HookHandlerType handlerType;
  HookExecutionMode executionMode = HookExecutionMode::sync;
  HookScope scope = HookScope::thread;
  std::string sourcePath;
  HookSource source = HookSource::unknown;
  std::int64_t displayOrder = 0;
  HookRunStatus status = HookRunStatus::running;
  std::optional<std::string> statusMessage;
  /// Milliseconds since the Unix epoch.
  std::int64_t startedAt = 0;
  /// Milliseconds since the Unix epoch.
  std::optional<std::int64_t> completedAt;
  std::optional<std::int64_t> durationMilliseconds;
  std::vector<HookOutputEntry> entries;
  friend bool operator==(const HookRunSummary&, const HookRunSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const HookRunSummary& value);
};

/// A hook has begun to run.
struct HookStartedEvent {
  std::string threadID;
  std::optional<std::string> turnID;
  HookRunSummary run;
  friend bool operator==(const HookStartedEvent&, const HookStartedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const HookStartedEvent& value);
};

/// A hook has run.
struct HookCompletedEvent {
  std::string threadID;
  std::optional<std::string> turnID;
  HookRunSummary run;
  friend bool operator==(const HookCompletedEvent&, const HookCompletedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const HookCompletedEvent& value);
};

}  // namespace ormel
