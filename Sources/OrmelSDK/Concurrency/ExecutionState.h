#pragma once

#include <coroutine>

namespace ormel {

class Scheduler;

namespace detail {

class StrandCore;

/// State of the calling thread: the work of the library that it is running, if any.
struct ExecutionState {
  /// The coroutine that the innermost `drive` of this thread resumes next.
  std::coroutine_handle<> next;
  bool driving = false;
  /// The strand whose piece is running; null if none is.
  StrandCore* strand = nullptr;
  /// The scheduler whose piece is running; null if none is.
  Scheduler* scheduler = nullptr;
  /// Whether the thread serves the library's I/O, so that nothing on it may block or call the application.
  bool isPoolThread = false;
  /// The running piece is about to return its thread, so the work it posts may stay on this thread: that is quicker
  /// than waking another one. Until the thread is returned no other thread can take that work.
  bool isLeaving = false;
  /// The running piece only resumes one coroutine, and that coroutine is the one now running (not a task started inside
  /// it), so the piece ends when it suspends.
  bool endsWithCoroutine = false;
};

/// Never inlined into a coroutine: it may resume on another thread, where a cached thread-local address would be wrong.
ExecutionState& executionState() noexcept;

/// RAII hint: the current work item is about to return its thread, so posted work may run right here. Set it only where
/// nothing follows in the work item. A suspending coroutine cannot know that, because its starter may go on after it,
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

/// Whether the thread is free once the running piece has ended. One more queued piece of the same strand is tolerated:
/// it is done before another thread would be awake.
bool isLastPieceOfThread() noexcept;

/// Whether the running piece ends now and leaves the thread free. Call it when a coroutine has just suspended.
bool isEndOfPiece() noexcept;

/// Whether the calling thread runs pieces of a scheduler or strand, so that it must not wait for others of them.
bool onLibraryThread() noexcept;

/// Whether the calling thread is the application's own, or one lent to it.
bool onThreadOfApplication() noexcept;

/// Whether code of the application may run here: on a thread of the application and on no strand.
bool mayRunApplicationCode() noexcept;

/// Throws `WouldDeadlockError` on a thread of the library.
void requireBlockingAllowed();

/// Resumes `coroutine`, then each coroutine passed to `transferTo`, one after the other. Control goes from coroutine
/// to coroutine at a constant depth of stack without relying on tail calls, which compilers make only when they
/// optimise and never under a sanitizer.
void drive(std::coroutine_handle<> coroutine) noexcept;

/// Like `drive`, for a piece that only resumes this coroutine.
void drivePiece(std::coroutine_handle<> coroutine) noexcept;

/// Schedules `coroutine` to be resumed by the enclosing `drive`, as soon as the calling coroutine, which has just
/// suspended, returns.
void transferTo(std::coroutine_handle<> coroutine) noexcept;

}  // namespace detail
}  // namespace ormel
