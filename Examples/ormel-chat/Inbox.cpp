#include "Inbox.h"

#include <utility>

namespace ormel::chat {

namespace {

/// The item, if all that happened to it is in its latest state.
const ThreadItem* updatedItem(const Message& message) {
  const auto* event = std::get_if<ThreadEvent>(&message);
  const auto* update = event ? std::get_if<ItemUpdatedEvent>(&event->value) : nullptr;
  if (!update) return nullptr;
  const auto& kind = update->item.value;
  const bool grows = std::holds_alternative<AgentMessageItem>(kind) || std::holds_alternative<PlanItem>(kind) ||
                     std::holds_alternative<ReasoningItem>(kind) || std::holds_alternative<CommandExecutionItem>(kind);
  return grows ? &update->item : nullptr;
}

}  // namespace

void Inbox::post(Message message) {
  {
    const std::lock_guard lock(mutex_);
    const ThreadItem* item = keepsEachUpdate_ ? nullptr : updatedItem(message);
    if (!item) {
      updates_.clear();
      messages_.push_back(std::move(message));
    } else if (const auto [place, isNew] = updates_.try_emplace(item->id(), messages_.size()); isNew) {
      messages_.push_back(std::move(message));
    } else {
      messages_[place->second] = std::move(message);
    }
  }
  wakePipe_.wake();
}

std::vector<Message> Inbox::take() {
  wakePipe_.drain();
  const std::lock_guard lock(mutex_);
  updates_.clear();
  return std::exchange(messages_, {});
}

}  // namespace ormel::chat
