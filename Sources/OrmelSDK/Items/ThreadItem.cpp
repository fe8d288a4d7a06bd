#include "OrmelSDK/Items/ThreadItem.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

/// Some cases are written without a type. The server's form is like that: who reads such an object knows from its
/// place what it is.
template <>
struct ormel::coding::VariantTable<ormel::ThreadItem> : CasesOf<ThreadItem> {
  static constexpr Case cases[] = {
      variantCase<UserMessageItem>("userMessage", "user_message"),
      variantCase<HookPromptItem>("hookPrompt", "hook_prompt"),
      variantCase<AgentMessageItem>("agentMessage", "agent_message"),
      variantCase<PlanItem>("plan").withoutType(),
      variantCase<ReasoningItem>("reasoning"),
      variantCase<EnteredReviewModeItem, RecordCoder<ReviewModeItem>>("enteredReviewMode", "entered_review_mode"),
      variantCase<ExitedReviewModeItem, RecordCoder<ReviewModeItem>>("exitedReviewMode", "exited_review_mode"),
      variantCase<ContextCompactionItem>("contextCompaction", "context_compaction"),
      variantCase<CommandExecutionItem>("commandExecution", "command_execution").withoutType(),
      variantCase<FileChangeItem>("fileChange", "file_change").withoutType(),
      variantCase<McpToolCallItem>("mcpToolCall", "mcp_tool_call").withoutType(),
      variantCase<DynamicToolCallItem>("dynamicToolCall", "dynamic_tool_call").withoutType(),
      variantCase<CollabAgentToolCallItem>("collabAgentToolCall", "collab_agent_tool_call").withoutType(),
      variantCase<WebSearchItem>("webSearch", "web_search").withoutType(),
      variantCase<ImageViewItem>("imageView", "image_view").withoutType(),
      variantCase<ImageGenerationItem>("imageGeneration", "image_generation"),
      variantCase<TodoListItem>("todoList", "todo_list").withoutType(),
      variantCase<SleepItem>("sleep"),
      variantCase<SubAgentActivityItem>("subAgentActivity", "sub_agent_activity"),
      variantCase<ErrorItem>("error").withoutType(),
  };
  static ThreadItem decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
  static JSONValue encodeUnknown(const ThreadItem& item);
};

namespace ormel {

ThreadItem::ThreadItem() = default;
ThreadItem::ThreadItem(const ThreadItem&) = default;
ThreadItem::ThreadItem(ThreadItem&&) noexcept = default;
ThreadItem& ThreadItem::operator=(const ThreadItem&) = default;
ThreadItem& ThreadItem::operator=(ThreadItem&&) noexcept = default;
ThreadItem::~ThreadItem() = default;

const std::string& ThreadItem::id() const {
  return visit(*this, [](const auto& item) -> const std::string& { return item.id; });
}

std::optional<SharedText> ThreadItem::agentMessageText() const {
  const auto* message = std::get_if<AgentMessageItem>(&value);
  if (!message) return std::nullopt;
  return message->text;
}

}  // namespace ormel

namespace ormel::coding {

ThreadItem VariantTable<ThreadItem>::decodeUnknown(std::string_view type, const JSONValue& value,
                                                   const CodingPath& path) {
  const JSONValue* id = value.find("id");
  if (!id || !id->stringValue()) failCorrupted("Unknown item type: " + std::string(type), path.at("type"));
  return decodeAs<UnknownThreadItem>(value, path);
}

JSONValue VariantTable<ThreadItem>::encodeUnknown(const ThreadItem& item) {
  return Codec<UnknownThreadItem>::encode(std::get<UnknownThreadItem>(item.value));
}

}  // namespace ormel::coding

ORMEL_DEFINE_VARIANT(ThreadItem)
