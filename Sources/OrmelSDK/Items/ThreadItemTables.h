#pragma once

#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Items/CollaborationItemsTables.h"
#include "OrmelSDK/Items/CommandItemsTables.h"
#include "OrmelSDK/Items/DynamicToolCallItemsTables.h"
#include "OrmelSDK/Items/FileChangeItemsTables.h"
#include "OrmelSDK/Items/McpToolCallItemsTables.h"
#include "OrmelSDK/Items/MediaItemsTables.h"
#include "OrmelSDK/Items/MessageItemsTables.h"
#include "OrmelSDK/Items/NoticeItemsTables.h"
#include "OrmelSDK/Items/PlanningItemsTables.h"
#include "OrmelSDK/Items/ThreadItem.h"

/// Some cases are written without a type. The server's form is like that: who reads such an object knows from its
/// place what it is.
template <>
struct ormel::coding::VariantTable<ormel::ThreadItem> {
  static constexpr auto cases = std::tuple(
      variantCase<UserMessageItem>("userMessage", "user_message"),
      variantCase<HookPromptItem>("hookPrompt", "hook_prompt"),
      variantCase<AgentMessageItem>("agentMessage", "agent_message"), variantCase<PlanItem>("plan").withoutType(),
      variantCase<ReasoningItem>("reasoning"),
      variantCase<EnteredReviewModeItem, RecordTable<ReviewModeItem>>("enteredReviewMode", "entered_review_mode"),
      variantCase<ExitedReviewModeItem, RecordTable<ReviewModeItem>>("exitedReviewMode", "exited_review_mode"),
      variantCase<ContextCompactionItem>("contextCompaction", "context_compaction"),
      variantCase<CommandExecutionItem>("commandExecution", "command_execution").withoutType(),
      variantCase<FileChangeItem>("fileChange", "file_change").withoutType(),
      variantCase<McpToolCallItem>("mcpToolCall", "mcp_tool_call").withoutType(),
      variantCase<DynamicToolCallItem>("dynamicToolCall", "dynamic_tool_call").withoutType(),
      variantCase<CollabAgentToolCallItem>("collabAgentToolCall", "collab_agent_tool_call").withoutType(),
      variantCase<WebSearchItem>("webSearch", "web_search").withoutType(),
      variantCase<ImageViewItem>("imageView", "image_view").withoutType(),
      variantCase<ImageGenerationItem>("imageGeneration", "image_generation"),
      variantCase<TodoListItem>("todoList", "todo_list").withoutType(), variantCase<SleepItem>("sleep"),
      variantCase<SubAgentActivityItem>("subAgentActivity", "sub_agent_activity"),
      variantCase<ErrorItem>("error").withoutType());
  static ThreadItem decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
  static JSONValue encodeUnknown(const ThreadItem& item);
};
ORMEL_DECLARE_CODEC(ThreadItem)
