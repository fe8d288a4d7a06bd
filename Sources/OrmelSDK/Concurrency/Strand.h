#pragma once

#include <chrono>
#include <coroutine>
#include <type_traits>

#include "OrmelSDK/Concurrency/Place.h"
#include "OrmelSDK/Concurrency/StrandCore.h"

namespace ormel {

namespace detail {

/// Awaiters that take care themselves of where the coroutine goes on.
class PlaceAware {};

/// What a coroutine of this library offers to those that it awaits.
class TaskPromiseBase;
void keepPlaceBeforeLeaving(TaskPromiseBase& promise);

class StrandAwaiter : public PlaceAware {
 public:
  StrandAwaiter(StrandCore& strand, bool ready) noexcept : strand_(strand), ready_(ready) {}
  StrandAwaiter(const StrandAwaiter&) = delete;
  StrandAwaiter& operator=(const StrandAwaiter&) = delete;

  bool await_ready() const noexcept { return ready_; }
  template <class Promise>
  void await_suspend(std::coroutine_handle<Promise> coroutine) noexcept {
    if constexpr (std::is_base_of_v<TaskPromiseBase, Promise>) keepPlaceBeforeLeaving(coroutine.promise());
    item_.coroutine = coroutine;
    const ThreadHandoff leaving(isEndOfPiece());
    strand_.post(item_);
  }
  void await_resume() const noexcept {}

 private:
  StrandCore& strand_;
  bool ready_;
  ResumeItem item_;
};

}  // namespace detail

/// A queue whose pieces of work run one at a time, in the order in which they came, on the threads of a scheduler.
/// What a serialised object guards its state with.
///
/// A coroutine that is on a strand when it suspends goes on as a piece of this strand; other pieces may have run in
/// between. A strand gives way to other work of its scheduler after a bounded number of pieces.
///
/// *Thread safety*: all members may be called from any thread. What one piece writes the later pieces see.
///
/// *Object lifetimes*: a value that refers to the shared queue; copies are the same strand. Work that is queued runs
/// also if all copies are gone by then. The scheduler must outlive the work.
///
/// *Errors*: work must not throw; an exception that leaves it ends the process.
///
/// *Cancellation*: queued work is not taken back. `enter` and `yield` do not look at stop tokens.
class Strand {
 public:
  explicit Strand(Scheduler& scheduler, const char* name = "strand")
      : core_(detail::Ref<detail::StrandCore>::adopt(new detail::StrandCore(scheduler, name))) {}

  /// Whether the calling thread is running a piece of this strand.
  bool isCurrent() const noexcept { return core_->isCurrent(); }
  Scheduler& scheduler() const noexcept { return core_->scheduler(); }

  /// Runs `work` after all that is queued now, never within this call.
  void post(Work work, const char* name = "work") const { core_->post(detail::makeWorkItem(std::move(work), name)); }

  /// Runs `work` on this strand once `delay` has passed. A timer that is cancelled on the strand does not run after.
  Timer postAfter(std::chrono::nanoseconds delay, Work work, const char* name = "timer") const {
    return Timer::armed(core_->scheduler(), core_, delay, std::move(work), name);
  }

  /// `co_await strand.enter()`: the coroutine goes on as a piece of this strand, at once if it is on it already. A
  /// `Task` stays on the strand to its end; the coroutine that awaits the task goes on where that one was.
  [[nodiscard]] detail::StrandAwaiter enter() const noexcept { return {*core_, core_->isCurrent()}; }

  /// `co_await strand.yield()`: like `enter`, but whatever is queued goes first.
  [[nodiscard]] detail::StrandAwaiter yield() const noexcept { return {*core_, false}; }

  friend bool operator==(const Strand& left, const Strand& right) noexcept {
    return left.core_.get() == right.core_.get();
  }

  const detail::Ref<detail::StrandCore>& core() const noexcept { return core_; }

 private:
  detail::Ref<detail::StrandCore> core_;
};

}  // namespace ormel
