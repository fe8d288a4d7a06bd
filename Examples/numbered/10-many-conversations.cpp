// Holds many conversations at once, and prints the answers in the order of the questions. Each conversation has a
// server process of its own; none costs a thread.
// Usage: 10-many-conversations [SERVER]

#include <OrmelSDK/Concurrency/WhenAll.h>
#include <OrmelSDK/Concurrency/WithTimeout.h>
#include <OrmelSDK/Ormel.h>

#include <iostream>
#include <vector>

namespace {

ormel::Task<std::string> answerTo(ormel::Ormel ormel, std::string question) {
  const ormel::Thread thread = ormel.startThread();
  const ormel::Turn turn = co_await thread.run(std::move(question));
  // Before the next of many begins, this server is gone.
  co_await thread.close();
  co_return turn.finalResponse;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];
  const ormel::Ormel ormel(options);

  std::vector<ormel::Task<std::string>> conversations;
  for (const char* bird : {"the wren", "the owl", "the heron", "the swift"}) {
    conversations.push_back(answerTo(ormel, std::string("Tell me about ") + bird));
  }
  // If one fails, the others are stopped, and its failure is thrown.
  auto all = ormel::whenAll(std::move(conversations));
  for (const std::string& answer : ormel::withTimeout(std::move(all), std::chrono::minutes(5)).get()) {
    std::cout << answer << '\n';
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
