#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Console.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "ShownTexts.h"

namespace ormel::chat {

/// Whether an item has begun, has changed, or has its final state.
enum class ItemStage { started, updated, completed };

/// Shows the items of a conversation as they grow.
class ItemRenderer {
 public:
  explicit ItemRenderer(Console& console) : console_(console) {}

  void show(const ThreadItem& item, ItemStage stage);

  /// The next output begins a block of its own.
  void closeBlock();

  /// Forgets the items that will not be completed.
  void endOperation();

 private:
  void showItem(const AgentMessageItem& item, ItemStage stage);
  void showItem(const PlanItem& item, ItemStage stage);
  void showItem(const ReasoningItem& item, ItemStage stage);
  void showItem(const CommandExecutionItem& item, ItemStage stage);
  void showItem(const FileChangeItem& item, ItemStage stage);
  void showItem(const TodoListItem& item, ItemStage stage);
  void showItem(const McpToolCallItem& item, ItemStage stage);
  void showItem(const DynamicToolCallItem& item, ItemStage stage);
  void showItem(const CollabAgentToolCallItem& item, ItemStage stage);
  void showItem(const EnteredReviewModeItem& item, ItemStage stage);
  void showItem(const ExitedReviewModeItem& item, ItemStage stage);
  void showItem(const ContextCompactionItem& item, ItemStage stage);
  void showItem(const WebSearchItem& item, ItemStage stage);
  void showItem(const ImageViewItem& item, ItemStage stage);
  void showItem(const ImageGenerationItem& item, ItemStage stage);
  void showItem(const SleepItem& item, ItemStage stage);
  void showItem(const SubAgentActivityItem& item, ItemStage stage);
  void showItem(const ErrorItem& item, ItemStage stage);
  void showItem(const UserMessageItem&, ItemStage) {}
  void showItem(const HookPromptItem&, ItemStage) {}
  void showItem(const UnknownThreadItem& item, ItemStage stage);

  /// Begins the item's block, with its title, if another one was being shown.
  void openBlock(const std::string& id, std::string_view title, Style style);
  /// A growing text within the block.
  void grow(const std::string& name, const SharedText& text, ItemStage stage, std::string_view indent, Style style);
  void writeIndented(std::string_view text, std::string_view indent, Style style);
  void showToolCall(const std::string& id, std::string_view name, const JSONValue& arguments);
  /// A line for an item of which only the end, or the beginning, is told.
  void note(std::string_view text, Style style = Style::dim);

  Console& console_;
  ShownTexts shown_;
  std::string openBlock_;
  std::string openText_;
  std::string shownProgress_;
  /// To-do lists come whole with each change; what was shown of them last.
  std::map<std::string, std::vector<TodoItem>> shownLists_;
};

}  // namespace ormel::chat
