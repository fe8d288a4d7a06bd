#include "OrmelSDK/Events/TextNews.h"

#include <variant>

namespace ormel {

namespace {

struct ItemOfEvent {
  const ThreadItem* item = nullptr;
  bool isComplete = false;
};

ItemOfEvent itemOf(const ThreadEvent& event) {
  if (const auto* started = std::get_if<ItemStartedEvent>(&event.value)) return {&started->item, false};
  if (const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value)) return {&updated->item, false};
  if (const auto* completed = std::get_if<ItemCompletedEvent>(&event.value)) return {&completed->item, true};
  return {};
}

}  // namespace

NewText TextNews::ofMessage(const ThreadEvent& event) {
  const auto [item, isComplete] = itemOf(event);
  const auto* message = item ? std::get_if<AgentMessageItem>(&item->value) : nullptr;
  return message ? of(message->id, message->text, isComplete) : NewText();
}

NewText TextNews::ofCommandOutput(const ThreadEvent& event) {
  const auto [item, isComplete] = itemOf(event);
  const auto* command = item ? std::get_if<CommandExecutionItem>(&item->value) : nullptr;
  return command ? of(command->id, command->aggregatedOutput, isComplete) : NewText();
}

NewText TextNews::of(const std::string& itemID, const SharedText& text, bool isComplete) {
  SharedText& told = told_[itemID];
  NewText news;
  news.isComplete = isComplete;
  news.replaces = !text.isContinuationOf(told);
  news.text = news.replaces ? text.view() : text.view().substr(told.size());
  if (isComplete) {
    told_.erase(itemID);
  } else {
    told = text;
  }
  return news;
}

}  // namespace ormel
