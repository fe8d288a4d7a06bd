#pragma once

#include <poll.h>

#include <chrono>

namespace ormel::testing {

/// How long a test waits for what must happen: far beyond any real delay, so that a hang fails and nothing else does.
inline constexpr std::chrono::seconds patience{120};

/// Whether the condition comes true in time. For what nobody can signal, such as the end of a thread.
template <typename Condition>
bool eventually(Condition&& condition) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    ::poll(nullptr, 0, 1);
  }
  return true;
}

}  // namespace ormel::testing
