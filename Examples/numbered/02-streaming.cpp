// Shows a turn as it streams. An item that grows comes whole each time; only what is new is printed.
// Usage: 02-streaming [SERVER]

#include <OrmelSDK/Events/TextNews.h>
#include <OrmelSDK/Ormel.h>

#include <iostream>

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Thread thread = ormel::Ormel(options).startThread();
  ormel::StreamedTurn turn = thread.runStreamed("Tell me something").get();
  ormel::TextNews news;
  for (const ormel::ThreadEvent& event : turn.events) {
    const ormel::NewText added = news.ofMessage(event);
    std::cout << added.text << (added.isComplete ? "\n" : "") << std::flush;
    const auto* failed = std::get_if<ormel::TurnFailedEvent>(&event.value);
    if (failed) std::cout << "failed: " << failed->error.message << '\n';
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
