#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Items/CollaborationItems.h"
#include "OrmelSDK/Items/CommandItems.h"
#include "OrmelSDK/Items/DynamicToolCallItems.h"
#include "OrmelSDK/Items/FileChangeItems.h"
#include "OrmelSDK/Items/McpToolCallItems.h"
#include "OrmelSDK/Items/MediaItems.h"
#include "OrmelSDK/Items/MessageItems.h"
#include "OrmelSDK/Items/NoticeItems.h"
#include "OrmelSDK/Items/PlanningItems.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// One piece of a turn's content. Use `visit` or `std::get_if` to tell the cases apart.
///
/// Its JSON form: an object whose `type` tells the case. A type that is not known is read as `UnknownThreadItem` if
/// the object has an `id`. Some cases write no `type`, as their records say; such an object cannot be read back as a
/// `ThreadItem`.
struct ThreadItem {
  using Value =
      std::variant<UserMessageItem, HookPromptItem, AgentMessageItem, PlanItem, ReasoningItem, EnteredReviewModeItem,
                   ExitedReviewModeItem, ContextCompactionItem, CommandExecutionItem, FileChangeItem, McpToolCallItem,
                   DynamicToolCallItem, CollabAgentToolCallItem, WebSearchItem, ImageViewItem, ImageGenerationItem,
                   TodoListItem, SleepItem, SubAgentActivityItem, ErrorItem, UnknownThreadItem>;
  Value value;

  // Copying and moving a variant of so many cases is much code; it is compiled once, not in every file that does it.
  ThreadItem();
  ThreadItem(const ThreadItem& other);
  ThreadItem(ThreadItem&& other) noexcept;
  ThreadItem& operator=(const ThreadItem& other);
  ThreadItem& operator=(ThreadItem&& other) noexcept;
  ~ThreadItem();

  template <CaseOf<Value> Case>
  ThreadItem(Case item) : value(std::move(item)) {}

  /// The same, made in place from what the record is made of.
  template <CaseOf<Value> Case, typename... Arguments>
  explicit ThreadItem(std::in_place_type_t<Case> kind, Arguments&&... arguments)
      : value(kind, std::forward<Arguments>(arguments)...) {}

  const std::string& id() const;

  /// The text of an agent's message; absent for every other case.
  std::optional<SharedText> agentMessageText() const;

  friend bool operator==(const ThreadItem&, const ThreadItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadItem& value);
};

}  // namespace ormel
