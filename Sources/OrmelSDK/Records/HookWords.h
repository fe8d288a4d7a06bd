#pragma once

#include <iosfwd>

#include "OrmelSDK/Base/NeverDestroyed.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/Coding/RecordCoding.h"

// The words that the list of hooks shares with the events of their runs. Every type here has a JSON form, a bare
// string.
namespace ormel {

/// The moment at which a hook runs.
struct HookEventName : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const HookEventName& preToolUse;
  static const HookEventName& permissionRequest;
  static const HookEventName& postToolUse;
  static const HookEventName& preCompact;
  static const HookEventName& postCompact;
  static const HookEventName& sessionStart;
  static const HookEventName& sessionEnd;
  static const HookEventName& userPromptSubmit;
  static const HookEventName& subagentStart;
  static const HookEventName& subagentStop;
  static const HookEventName& interrupt;
  static const HookEventName& mcpTool;
  static const HookEventName& stop;
};
std::ostream& operator<<(std::ostream& stream, const HookEventName& value);

inline const HookEventName& HookEventName::preToolUse = detail::neverDestroyed<HookEventName>("preToolUse");
inline const HookEventName& HookEventName::permissionRequest =
    detail::neverDestroyed<HookEventName>("permissionRequest");
inline const HookEventName& HookEventName::postToolUse = detail::neverDestroyed<HookEventName>("postToolUse");
inline const HookEventName& HookEventName::preCompact = detail::neverDestroyed<HookEventName>("preCompact");
inline const HookEventName& HookEventName::postCompact = detail::neverDestroyed<HookEventName>("postCompact");
inline const HookEventName& HookEventName::sessionStart = detail::neverDestroyed<HookEventName>("sessionStart");
inline const HookEventName& HookEventName::sessionEnd = detail::neverDestroyed<HookEventName>("sessionEnd");
inline const HookEventName& HookEventName::userPromptSubmit = detail::neverDestroyed<HookEventName>("userPromptSubmit");
inline const HookEventName& HookEventName::subagentStart = detail::neverDestroyed<HookEventName>("subagentStart");
inline const HookEventName& HookEventName::subagentStop = detail::neverDestroyed<HookEventName>("subagentStop");
inline const HookEventName& HookEventName::interrupt = detail::neverDestroyed<HookEventName>("interrupt");
inline const HookEventName& HookEventName::mcpTool = detail::neverDestroyed<HookEventName>("mcpTool");
inline const HookEventName& HookEventName::stop = detail::neverDestroyed<HookEventName>("stop");

/// The kind of handler that carries a hook out.
struct HookHandlerType : OpenVocabulary {
  using OpenVocabulary::OpenVocabulary;

  static const HookHandlerType& command;
  static const HookHandlerType& prompt;
  static const HookHandlerType& agent;
  static const HookHandlerType& mcpTool;
};
std::ostream& operator<<(std::ostream& stream, const HookHandlerType& value);

inline const HookHandlerType& HookHandlerType::command = detail::neverDestroyed<HookHandlerType>("command");
inline const HookHandlerType& HookHandlerType::prompt = detail::neverDestroyed<HookHandlerType>("prompt");
inline const HookHandlerType& HookHandlerType::agent = detail::neverDestroyed<HookHandlerType>("agent");
inline const HookHandlerType& HookHandlerType::mcpTool = detail::neverDestroyed<HookHandlerType>("mcpTool");

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
