#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"

#include <array>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/CollaborationItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/MessageItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/AppServerRun/Parsing/ToolItemParsing.h"
#include "OrmelSDK/Base/UUID.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Coding/KeptValue.h"

namespace ormel::detail {

namespace {

WebSearchItem parseWebSearchItem(std::string id, const JSONObject& object) {
  return {std::move(id), textMember(object, {"query"}, ""), ownedValueMember(object, {"action"})};
}

ImageViewItem parseImageViewItem(std::string id, const JSONObject& object) {
  return {std::move(id), textMember(object, {"path"}, "")};
}

ImageGenerationItem parseImageGenerationItem(std::string id, const JSONObject& object) {
  return {std::move(id), textMember(object, {"status"}, ""), textMember(object, {"revisedPrompt", "revised_prompt"}),
          textMember(object, {"result"}, ""), textMember(object, {"savedPath", "saved_path"})};
}

SleepItem parseSleepItem(std::string id, const JSONObject& object) {
  return {std::move(id), firstMember(object, {"durationMs", "duration_ms"}, parseOptionalInt)};
}

template <typename Item>
Item parseReviewModeItem(std::string id, const JSONObject& object) {
  return {{std::move(id), textMember(object, {"review"}, "")}};
}

/// The reader of one case, seen as a reader of items.
template <auto parse>
ThreadItem item(std::string id, const JSONObject& object) {
  return parse(std::move(id), object);
}

struct Case {
  std::string_view type;
  ThreadItem (*parse)(std::string id, const JSONObject& object);
};

/// Types are compared exactly, and only in this spelling. An item that says "error" is no error item here.
constexpr std::array cases{
    Case{"hookPrompt", item<parseHookPromptItem>},
    Case{"agentMessage", item<parseAgentMessageItem>},
    Case{"plan", item<parsePlanItem>},
    Case{"reasoning", item<parseReasoningItem>},
    Case{"commandExecution", item<parseCommandExecutionItem>},
    Case{"fileChange", item<parseFileChangeItem>},
    Case{"mcpToolCall", item<parseMcpToolCallItem>},
    Case{"dynamicToolCall", item<parseDynamicToolCallItem>},
    Case{"collabAgentToolCall", item<parseCollabAgentToolCallItem>},
    Case{"webSearch", item<parseWebSearchItem>},
    Case{"imageView", item<parseImageViewItem>},
    Case{"imageGeneration", item<parseImageGenerationItem>},
    Case{"todoList", item<parseTodoListItem>},
    Case{"sleep", item<parseSleepItem>},
    Case{"subAgentActivity", item<parseSubAgentActivityItem>},
    Case{"enteredReviewMode", item<parseReviewModeItem<EnteredReviewModeItem>>},
    Case{"exitedReviewMode", item<parseReviewModeItem<ExitedReviewModeItem>>},
};

std::string contextCompactionID(const ActiveScope& scope) {
  const auto& owner = scope.activeTurnID ? scope.activeTurnID : scope.activeThreadID;
  return "context-compaction-" + (owner ? *owner : UUID::random().text());
}

}  // namespace

std::optional<ThreadItem> parseThreadItem(const JSONValue& from, const ActiveScope& scope) {
  const JSONObject* object = from.objectValue();
  const auto type = object ? textViewMember(*object, {"type"}) : std::nullopt;
  if (!type) return std::nullopt;
  // A message of the user has one form only, in both directions.
  if (*type == "userMessage") return decodeIfPossible<UserMessageItem>(from);

  auto id = textMember(*object, {"id"});
  for (const Case& known : cases) {
    if (known.type != *type) continue;
    if (!id) return std::nullopt;
    return known.parse(*std::move(id), *object);
  }
  if (isContextCompactionItemType(*type)) {
    return ContextCompactionItem{id ? *std::move(id) : contextCompactionID(scope)};
  }
  if (!id) return std::nullopt;
  return UnknownThreadItem{*std::move(id), std::string(*type), coding::kept(from)};
}

}  // namespace ormel::detail
