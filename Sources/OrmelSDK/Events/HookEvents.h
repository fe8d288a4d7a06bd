#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// The moment at which a hook runs.
struct HookEventName : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const HookEventName preToolUse;
  static const HookEventName permissionRequest;
  static const HookEventName postToolUse;
  static const HookEventName preCompact;
  static const HookEventName postCompact;
  static const HookEventName sessionStart;
  static const HookEventName sessionEnd;
  static const HookEventName userPromptSubmit;
  static const HookEventName subagentStart;
  static const HookEventName subagentStop;
  static const HookEventName interrupt;
  static const HookEventName mcpTool;
  static const HookEventName stop;
};
std::ostream& operator<<(std::ostream& stream, const HookEventName& value);

inline const HookEventName HookEventName::preToolUse = "preToolUse";
inline const HookEventName HookEventName::permissionRequest = "permissionRequest";
inline const HookEventName HookEventName::postToolUse = "postToolUse";
inline const HookEventName HookEventName::preCompact = "preCompact";
inline const HookEventName HookEventName::postCompact = "postCompact";
inline const HookEventName HookEventName::sessionStart = "sessionStart";
inline const HookEventName HookEventName::sessionEnd = "sessionEnd";
inline const HookEventName HookEventName::userPromptSubmit = "userPromptSubmit";
inline const HookEventName HookEventName::subagentStart = "subagentStart";
inline const HookEventName HookEventName::subagentStop = "subagentStop";
inline const HookEventName HookEventName::interrupt = "interrupt";
inline const HookEventName HookEventName::mcpTool = "mcpTool";
inline const HookEventName HookEventName::stop = "stop";

/// The kind of program that runs a hook.
struct HookHandlerType : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const HookHandlerType command;
  static const HookHandlerType prompt;
  static const HookHandlerType agent;
  static const HookHandlerType mcpTool;
};
std::ostream& operator<<(std::ostream& stream, const HookHandlerType& value);

inline const HookHandlerType HookHandlerType::command = "command";
inline const HookHandlerType HookHandlerType::prompt = "prompt";
inline const HookHandlerType HookHandlerType::agent = "agent";
inline const HookHandlerType HookHandlerType::mcpTool = "mcpTool";

/// Whether the server waits for a hook.
enum class HookExecutionMode { sync, async };
std::ostream& operator<<(std::ostream& stream, const HookExecutionMode& value);

enum class HookScope { thread, turn };
std::ostream& operator<<(std::ostream& stream, const HookScope& value);

enum class HookRunStatus { running, completed, failed, blocked, stopped };
std::ostream& operator<<(std::ostream& stream, const HookRunStatus& value);

enum class HookOutputEntryKind { warning, stop, feedback, context, error };
std::ostream& operator<<(std::ostream& stream, const HookOutputEntryKind& value);

enum class HookTrustStatus { managed, untrusted, trusted, modified };
std::ostream& operator<<(std::ostream& stream, const HookTrustStatus& value);

/// Where a hook is configured. Read without regard to case, "_" and "-"; a word that is not known is `unknown`.
enum class HookSource {
  system,
  user,
  project,
  mdm,
  sessionFlags,
  plugin,
  cloudRequirements,
  cloudManagedConfig,
  legacyManagedConfigFile,
  legacyManagedConfigMdm,
  unknown,
};
std::ostream& operator<<(std::ostream& stream, const HookSource& value);

/// One thing that a hook had to say.
struct HookOutputEntry {
  HookOutputEntryKind kind = HookOutputEntryKind::warning;
  std::string text;
  friend bool operator==(const HookOutputEntry&, const HookOutputEntry&) = default;
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
  friend bool operator==(const HookRunSummary&, const HookRunSummary&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const HookRunSummary& value);
};

/// A hook has begun to run.
struct HookStartedEvent {
  std::string threadID;
  std::optional<std::string> turnID;
  HookRunSummary run;
  friend bool operator==(const HookStartedEvent&, const HookStartedEvent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const HookStartedEvent& value);
};

/// A hook has run.
struct HookCompletedEvent {
  std::string threadID;
  std::optional<std::string> turnID;
  HookRunSummary run;
  friend bool operator==(const HookCompletedEvent&, const HookCompletedEvent&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const HookCompletedEvent& value);
};

}  // namespace ormel
