#include "Expectations/Registry.h"
#include "OrmelSDK/Items/ThreadItem.h"

namespace ormel::tests {

template <>
struct Plain<EnteredReviewModeItem> {
  using Record = ReviewModeItem;
};

template <>
struct Plain<ExitedReviewModeItem> {
  using Record = ReviewModeItem;
};

void registerItems(Registry& registry) {
  registry.record<UserMessageItem>();
  registry.record<HookPromptFragment>();
  registry.record<HookPromptItem>();
  registry.enumeration<AgentMessagePhase>();
  registry.record<AgentMessageQuestion>();
  registry.record<MemoryCitationEntry>();
  registry.record<MemoryCitation>();
  registry.record<AgentMessageItem>();
  registry.record<PlanItem>();
  registry.record<ReasoningItem>();
  registry.record<ReviewModeItem>();
  registry.record<ContextCompactionItem>();
  registry.enumeration<CommandExecutionStatus>();
  registry.record<CommandExecutionItem>();
  registry.enumeration<PatchApplyStatus>();
  registry.enumeration<PatchChangeKind>();
  registry.record<FileUpdateChange>();
  registry.record<FileChangeItem>();
  registry.enumeration<McpToolCallStatus>();
  registry.record<McpToolCallResult>();
  registry.record<McpToolCallError>();
  registry.record<McpToolCallAppContext>();
  registry.record<McpToolCallItem>();
  registry.enumeration<DynamicToolCallStatus>();
  registry.variant<DynamicToolCallOutputContentItem>();
  registry.record<DynamicToolCallItem>();
  registry.enumeration<CollabAgentTool>();
  registry.enumeration<CollabAgentToolCallStatus>();
  registry.enumeration<CollabAgentStatus>();
  registry.record<CollabAgentState>();
  registry.record<CollabAgentToolCallItem>();
  registry.record<WebSearchItem>();
  registry.record<ImageViewItem>();
  registry.record<ImageGenerationItem>();
  registry.record<TodoItem>();
  registry.record<TodoListItem>();
  registry.record<SleepItem>();
  registry.vocabulary<SubAgentActivityKind>({{"started", SubAgentActivityKind::started},
                                             {"interacted", SubAgentActivityKind::interacted},
                                             {"interrupted", SubAgentActivityKind::interrupted},
                                             {"completed", SubAgentActivityKind::completed}});
  registry.record<SubAgentActivityItem>();
  registry.record<ErrorItem>();
  registry.variant<ThreadItem>();
}

}  // namespace ormel::tests
