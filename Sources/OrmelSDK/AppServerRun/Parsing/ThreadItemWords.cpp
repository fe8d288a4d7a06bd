#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"

#include <initializer_list>
#include <string>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Items/CollaborationItems.h"
#include "OrmelSDK/Items/MessageItems.h"
#include "OrmelSDK/Text/LowercasedText.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

/// `synonyms` are words in canonical form that the enumeration itself does not have.
template <typename Enumeration>
Enumeration caseOrUnknown(std::string_view text, std::initializer_list<coding::Word<Enumeration>> synonyms = {}) {
  if (const auto found = coding::canonicalCase<Enumeration>(text)) return *found;
  const std::string canonical = coding::canonicalWord(text);
  for (const auto& synonym : synonyms) {
    if (synonym.text == canonical) return synonym.value;
  }
  return Enumeration::unknown;
}

}  // namespace

std::optional<AgentMessagePhase> agentMessagePhase(std::optional<std::string_view> from) {
  return from ? coding::canonicalCase<AgentMessagePhase>(*from) : std::nullopt;
}

CollabAgentTool collabAgentTool(std::string_view from) {
  return caseOrUnknown<CollabAgentTool>(from, {{CollabAgentTool::wait, "waitagent"}});
}

CollabAgentToolCallStatus collabAgentToolCallStatus(std::string_view from) {
  return caseOrUnknown<CollabAgentToolCallStatus>(from);
}

CollabAgentStatus collabAgentStatus(std::string_view from) {
  return caseOrUnknown<CollabAgentStatus>(from, {{CollabAgentStatus::running, "inprogress"},
                                                 {CollabAgentStatus::errored, "error"},
                                                 {CollabAgentStatus::errored, "failed"},
                                                 {CollabAgentStatus::shutdown, "closed"}});
}

SubAgentActivityKind subAgentActivityKind(std::optional<std::string_view> from) {
  return SubAgentActivityKind(from.value_or(""));
}

bool isCompletedWord(std::string_view from) {
  std::string word = lowercased(trimmed(from));
  std::erase(word, '_');
  return word == "completed";
}

std::optional<std::int64_t> parseOptionalInt(const JSONValue& from) {
  const auto number = from.numberValue();
  const bool fits = number && *number >= -0x1p63 && *number < 0x1p63;
  return fits ? from.intValue() : std::nullopt;
}

bool isContextCompactionItemType(std::string_view from) {
  const std::string canonical = coding::canonicalWord(from);
  return canonical.find("context") != std::string::npos && canonical.find("compact") != std::string::npos;
}

bool isContextCompactionNotificationMethod(std::string_view method) { return isContextCompactionItemType(method); }

}  // namespace ormel::detail
