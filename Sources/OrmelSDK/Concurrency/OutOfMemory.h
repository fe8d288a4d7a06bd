#pragma once

#include <new>
#include <utility>

namespace ormel::detail {

/// Ends the process, with the name of the work that had no memory.
[[noreturn]] void failForMemory(const char* work) noexcept;

/// Runs work whose failure could not be told to anybody. Want of memory ends the process with a word; anything else
/// that it throws is a fault of the library or of its user, and ends it as such.
template <typename Function>
void runOrFailForMemory(const char* name, Function&& function) noexcept {
  try {
    std::forward<Function>(function)();
  } catch (const std::bad_alloc&) {
    failForMemory(name);
  }
}

}  // namespace ormel::detail
