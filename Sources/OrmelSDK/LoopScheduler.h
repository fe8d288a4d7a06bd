#pragma once

#include <chrono>
#include <coroutine>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "OrmelSDK/Base/Export.h"
#include "OrmelSDK/Concurrency/Place.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/TaskPromise.h"

namespace ormel {

namespace detail {

class LoopAwaiter final : public PlaceAware {
 public:
  LoopAwaiter(Scheduler& loop, bool isThere) noexcept : loop_(loop), isThere_(isThere) {}
  LoopAwaiter(const LoopAwaiter&) = delete;
  LoopAwaiter& operator=(const LoopAwaiter&) = delete;

  bool await_ready() const noexcept { return isThere_; }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> coroutine) noexcept {
    if constexpr (std::is_base_of_v<TaskPromiseBase, Promise>) keepPlaceBeforeLeaving(coroutine.promise());
    item_.coroutine = coroutine;
    loop_.post(item_);
  }
  void await_resume() const noexcept {}

 private:
  Scheduler& loop_;
  bool isThere_;
  ResumeItem item_;
};

}  // namespace detail

/// A scheduler for a thread of the application that has an event loop of its own: what is placed on it runs on that
/// thread, within `runReady`. A conversation can so live where the windows of the application do, without a lock.
///
///     ormel::LoopScheduler loop;
///     talk(thread).onScheduler(loop).start(callback);
///     while (isRunning) {
///       pollfd watched{loop.descriptor(), POLLIN, 0};
///       poll(&watched, 1, millisecondsOf(loop.timeToNextTimer()));
///       loop.runReady();
///     }
///
/// A coroutine that has no place of its own goes on where what it awaited was completed, which may be a piece here.
///
/// The server's output is still read, split and decoded on the library's own threads. Handlers for approvals and the
/// like are called on the library's threads for application code; one that is a coroutine moves to the loop by
/// `co_await loop.enter()`.
///
/// *Thread safety*: `runReady` is called by the loop's thread alone, and there also within a piece that it runs, as a
/// modal dialogue does; all other members may be called from any thread.
///
/// *Blocking*: within a piece `Task::get` and the like throw `WouldDeadlockError`. Elsewhere on the loop's thread, a
/// blocking wait for a task that is on this scheduler never ends, since only that thread could run it.
///
/// *Object lifetimes*: it outlives everything that was placed on it, and handlers that may `enter` it. Destroying it
/// discards work that has not begun; a coroutine that was suspended on it never resumes and is leaked.
class ORMEL_EXPORT LoopScheduler final : public Scheduler {
 public:
  /// Throws `ResourceExhaustedError` if the system has no descriptor left.
  LoopScheduler();
  ~LoopScheduler() override;

  /// A descriptor that is readable as long as there is something to run, and also when a new timer is the next one.
  /// The application's loop watches it for reading, level-triggered; nobody reads it. It belongs to the scheduler.
  int descriptor() const noexcept;

  /// The time until `runReady` has something to run by itself: zero if it has now, none if there is no timer.
  std::optional<std::chrono::nanoseconds> timeToNextTimer() const noexcept;

  /// Runs as many pieces as are ready, or due, when it is called, and none that these lead to, so that the
  /// application's own events have their turn. Returns their number. After a loop within a piece it may run pieces that
  /// came meanwhile.
  std::size_t runReady();

  /// Whether the calling code is a piece of this scheduler and of no strand.
  bool isCurrent() const noexcept;

  /// `co_await loop.enter()`: moves a coroutine onto the loop's thread; does not suspend if it is there already. A
  /// `Task` stays there until it ends, and the coroutine that awaits the task resumes in its own place.
  [[nodiscard]] detail::LoopAwaiter enter() noexcept { return {*this, isCurrent()}; }

  using Scheduler::post;
  std::uint64_t now() const noexcept override;
  void post(detail::WorkItem& item) noexcept override;
  void arm(detail::TimerItem& item, std::uint64_t deadline) override;
  bool disarm(detail::TimerItem& item) noexcept override;
  std::size_t strandBatch() const noexcept override;
  /// Code that was not placed on this scheduler does not run on it.
  Scheduler& applicationScheduler() noexcept override;

 private:
  struct State;

  const std::unique_ptr<State> state_;
};

}  // namespace ormel
