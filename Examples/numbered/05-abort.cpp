// Ends a turn that takes too long, from a coroutine.
// Usage: 05-abort [SERVER]

#include <OrmelSDK/Base/OrmelProcessError.h>
#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

ormel::Task<void> talkForAWhile(ormel::Thread thread) {
  const ormel::AbortController controller;
  ormel::TurnOptions turnOptions;
  turnOptions.signal = controller.signal;

  try {
    ormel::StreamedTurn turn = co_await thread.runStreamed("slow", turnOptions);
    int updates = 0;
    while (auto event = co_await turn.events.next()) {
      const bool isUpdate = std::holds_alternative<ormel::ItemUpdatedEvent>(event->value);
      // From any thread, at any time; here, when three pieces of the answer have come.
      if (isUpdate && ++updates == 3) controller.abort();
    }
  } catch (const ormel::OrmelProcessError& error) {
    if (error.kind() != ormel::OrmelProcessError::Kind::aborted) throw;
    // The thread can be used again; its next turn starts another server process.
    std::cout << error.what() << '\n';
  }
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  talkForAWhile(ormel::Ormel(options).startThread()).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
