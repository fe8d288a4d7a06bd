// A first turn: ask something, and print the answer. Blocking, as a simple tool would do it.
// Usage: 01-first-turn [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  const ormel::Thread thread = ormel.startThread();

  const ormel::Turn first = thread.run("Hello, agent").get();
  std::cout << first.finalResponse << '\n';

  // The conversation goes on; the server process stays for it.
  const ormel::Turn second = thread.run("Do you remember what I said?").get();
  std::cout << second.finalResponse << '\n';
  if (second.usage) std::cout << "(" << second.usage->outputTokens << " tokens)\n";
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
