#pragma once

// The server's words and numbers in items, read so that no spelling and no new word fails: words are compared in their
// canonical form, and one that nobody knows is failed, unknown or absent, never success.

#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Items/CollaborationItems.h"
#include "OrmelSDK/Items/CommandItems.h"
#include "OrmelSDK/Items/DynamicToolCallItems.h"
#include "OrmelSDK/Items/FileChangeItems.h"
#include "OrmelSDK/Items/McpToolCallItems.h"
#include "OrmelSDK/Items/MessageItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Absent for no text and for an unknown word.
std::optional<AgentMessagePhase> agentMessagePhase(std::optional<std::string_view> from);

/// Commands and patches share their words; an unknown one is `failed`.
template <typename Status = CommandExecutionStatus>
  requires std::same_as<Status, CommandExecutionStatus> || std::same_as<Status, PatchApplyStatus>
Status commandExecutionStatus(std::string_view from) {
  return coding::enumerationCase<Status>(from).value_or(Status::failed);
}

/// Both kinds of tool call share their words; an unknown one is `failed`.
template <typename Status = McpToolCallStatus>
  requires std::same_as<Status, McpToolCallStatus> || std::same_as<Status, DynamicToolCallStatus>
Status mcpToolCallStatus(std::string_view from) {
  return coding::enumerationCase<Status>(from).value_or(Status::failed);
}

CollabAgentTool collabAgentTool(std::string_view from);
CollabAgentToolCallStatus collabAgentToolCallStatus(std::string_view from);
CollabAgentStatus collabAgentStatus(std::string_view from);

/// Compared exactly; no text is the empty word.
SubAgentActivityKind subAgentActivityKind(std::optional<std::string_view> from);

/// Whether `from` is the word "completed", in any case and with any "_", but with no "-".
bool isCompletedWord(std::string_view from);

/// A number with no fraction; anything else, a number that does not fit too, is absent.
std::optional<std::int64_t> parseOptionalInt(const JSONValue& from);

/// Whether `from` says that the context was made compact, in whatever order and form the words come.
bool isContextCompactionItemType(std::string_view from);
bool isContextCompactionNotificationMethod(std::string_view method);

}  // namespace ormel::detail
