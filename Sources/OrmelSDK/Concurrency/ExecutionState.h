#pragma once

#include <coroutine>

namespace ormel {

class Scheduler;

namespace detail {

class StrandCore;

/// What the calling thread is doing for the library at this moment.
struct ExecutionState {
  /// The coroutine that the innermost `drive` of this thread resumes next.
  std::coroutine_handle<> next;
  bool driving = false;
  /// The strand of which a piece is running, if any.
  StrandCore* strand = nullptr;
  /// The scheduler of which a piece is running, if any.
  Scheduler* scheduler = nullptr;
  /// Whether the thread belongs to the pool of a scheduler, so that nothing on it may block.
  bool isPoolThread = false;
  /// The running piece is about to give its thread back, so that what it posts can go on right here: that is sooner
  /// than another thread would be awake. Until it does, nothing else can run what it has posted.
  bool isLeaving = false;
  /// The running piece does nothing but resume a coroutine, and it is that coroutine which is running, not one that was
  /// started within it: when it suspends, the piece ends.
  bool endsWithCoroutine = false;
};

/// Never inlined into a coroutine: a coroutine can go on in another thread, where an address kept from before would be
/// the wrong one.
ExecutionState& executionState() noexcept;

/// Says, as long as it lives, that the running piece is about to give its thread back, if that is so. Only for code
/// that knows the whole piece: what a coroutine posts as it suspends may be followed by more of whoever has started it,
/// unless `isEndOfPiece`.
class ThreadHandoff {
 public:
  explicit ThreadHandoff(bool isSo = true) noexcept;
  ThreadHandoff(const ThreadHandoff&) = delete;
  ThreadHandoff& operator=(const ThreadHandoff&) = delete;
  ~ThreadHandoff();

 private:
  bool before_;
};

/// Whether the thread is free when the running piece has ended. One more piece of the same strand may come first: that
/// is over sooner than another thread would be awake.
bool isLastPieceOfThread() noexcept;

/// Whether the running piece ends now, and the thread is free then. To be asked for a coroutine that has just
/// suspended.
bool isEndOfPiece() noexcept;

/// Whether the calling thread runs pieces of the library, so that it must not block.
bool onLibraryThread() noexcept;

/// Throws `WouldDeadlockError` on a thread of the library.
void requireBlockingAllowed();

/// Resumes `coroutine`, and then whatever it passes to `transferTo`, one after the other. Control goes from coroutine
/// to coroutine at a constant depth of stack without relying on tail calls, which compilers make only when they
/// optimise and never under a sanitizer.
void drive(std::coroutine_handle<> coroutine) noexcept;

/// The same for a piece that does nothing else.
void drivePiece(std::coroutine_handle<> coroutine) noexcept;

/// Has `coroutine` resumed as soon as the calling one, which has just suspended, has returned.
void transferTo(std::coroutine_handle<> coroutine) noexcept;

}  // namespace detail
}  // namespace ormel
