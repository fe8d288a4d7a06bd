// Gives turns a limited time, and tries again as long as that is worth it.
// Usage: 09-timeout-and-retry [SERVER]

#include <OrmelSDK/Concurrency/Sleep.h>
#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

using std::chrono::milliseconds;

constexpr int attempts = 2;

ormel::Task<std::string> answerTo(ormel::Thread thread, std::string prompt) {
  ormel::TurnOptions turnOptions;
  turnOptions.timeout = milliseconds(500);
  milliseconds pause(100);
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    try {
      // A turn whose time is up is interrupted; the thread then takes the next one.
      const ormel::Turn turn = co_await thread.run(prompt, turnOptions);
      co_return turn.finalResponse;
    } catch (const ormel::Error& error) {
      std::cout << "attempt " << attempt << ": " << error.what() << '\n';
      if (!error.isRetryable()) throw;
    }
    // Longer each time: the server may need a moment.
    co_await ormel::sleepFor(pause);
    pause *= 2;
  }
  co_return "No answer";
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Thread thread = ormel::Ormel(options).startThread();
  for (const char* prompt : {"slow", "Hello, agent"}) std::cout << answerTo(thread, prompt).get() << '\n';

  // The server process is gone when this returns.
  thread.close().get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
