// Has the agent review the changes that are not committed, within a conversation.
// Usage: 07-review [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

ormel::Task<void> review(ormel::Thread thread) {
  // A review belongs to a conversation, which has to have begun.
  const ormel::Turn turn = co_await thread.run("I have changed something");
  std::cout << turn.finalResponse << '\n';

  ormel::StreamedTurn review = co_await thread.startReviewStreamed(ormel::ReviewTarget::uncommittedChanges());
  while (auto event = co_await review.events.next()) {
    const auto* completed = std::get_if<ormel::ItemCompletedEvent>(&event->value);
    if (!completed) continue;
    const auto* ended = std::get_if<ormel::ExitedReviewModeItem>(&completed->item.value);
    if (ended) std::cout << ended->review << '\n';
  }
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  review(ormel::Ormel(options).startThread()).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
