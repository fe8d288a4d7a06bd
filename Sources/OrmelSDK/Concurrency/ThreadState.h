#pragma once

#include <coroutine>

namespace ormel {

class Scheduler;

namespace detail {

class StrandCore;

/// What the calling thread is doing for the library at this moment.
struct ThreadState {
  /// The coroutine that the innermost `drive` of this thread resumes next.
  std::coroutine_handle<> next;
  bool driving = false;
  /// The strand of which a piece is running, if any.
  StrandCore* strand = nullptr;
  /// The scheduler of which a piece is running, if any.
  Scheduler* scheduler = nullptr;
};

/// Never inlined into a coroutine: a coroutine can go on in another thread, where an address kept from before would be
/// the wrong one.
ThreadState& threadState() noexcept;

/// Whether the calling thread runs pieces of the library, so that it must not block.
bool onLibraryThread() noexcept;

/// Throws `WouldDeadlockError` on a thread of the library.
void requireBlockingAllowed();

/// Resumes `coroutine`, and then whatever it passes to `transferTo`, one after the other. Control goes from coroutine
/// to coroutine at a constant depth of stack without relying on tail calls, which compilers make only when they
/// optimise and never under a sanitizer.
void drive(std::coroutine_handle<> coroutine) noexcept;

/// Has `coroutine` resumed as soon as the calling one, which has just suspended, has returned.
void transferTo(std::coroutine_handle<> coroutine) noexcept;

}  // namespace detail
}  // namespace ormel
