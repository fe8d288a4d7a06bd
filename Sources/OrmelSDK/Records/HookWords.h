#pragma once

#include <iosfwd>

#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"

// The words that the list of hooks shares with the events of their runs. Every type here has a JSON form, a bare
// string.
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

/// The kind of handler that carries a hook out.
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

/// Whether a hook is trusted to run.
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

}  // namespace ormel
