#pragma once

#include <chrono>
#include <coroutine>
#include <type_traits>

#include "OrmelSDK/Concurrency/Place.h"
#include "OrmelSDK/Concurrency/StrandCore.h"

namespace ormel {

namespace detail {

/// Base of awaiters that resume the coroutine in its place themselves.
class PlaceAware {};

/// The promise base of the library's coroutines, as far as awaiters need it.
class TaskPromiseBase;
void keepPlaceBeforeLeaving(TaskPromiseBase& promise);

class StrandAwaiter : public PlaceAware {
 public:
  StrandAwaiter(StrandCore& strand, bool ready) noexcept : strand_(strand), ready_(ready) {}
  StrandAwaiter(const StrandAwaiter&) = delete;
  StrandAwaiter& operator=(const StrandAwaiter&) = delete;

  bool await_ready() const noexcept { return ready_; }
  template <typename Promise>
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

/// A serial queue: its pieces of work run one at a time, in the order of posting, on the threads of a scheduler. An
/// object guards its state with a strand instead of a mutex.
///
/// A coroutine that suspends on a strand resumes as a piece of the same strand; other pieces may have run in between. A
/// strand yields to other work of its scheduler after a bounded number of pieces.
///
/// *Thread safety*: all members may be called from any thread. Writes of one piece are visible to all later pieces.
///
/// *Object lifetimes*: a handle to a shared queue; copies are the same strand. Queued work runs even if all copies are
/// gone by then. The scheduler must outlive the work.
///
/// *Errors*: work must not throw; an exception that leaves it ends the process.
///
/// *Cancellation*: queued work cannot be cancelled. `enter` and `yield` ignore stop tokens.
class Strand {
 public:
  explicit Strand(Scheduler& scheduler, const char* name = "strand")
      : core_(detail::Ref<detail::StrandCore>::adopt(new detail::StrandCore(scheduler, name))) {}

  /// Whether the calling thread is running a piece of this strand.
  bool isCurrent() const noexcept { return core_->isCurrent(); }
  Scheduler& scheduler() const noexcept { return core_->scheduler(); }

  /// Queues `work` behind all work queued so far; never runs it within this call.
  void post(Work work, const char* name = "work") const {
    core_->scheduler().prepare();
    core_->post(detail::makeWorkItem(std::move(work), name));
  }

  /// Runs `work` on this strand once `delay` has passed. A timer that is cancelled on the strand does not run after.
  Timer postAfter(std::chrono::nanoseconds delay, Work work, const char* name = "timer") const {
    return Timer::armed(core_->scheduler(), core_, delay, std::move(work), name);
  }

  /// `co_await strand.enter()`: moves the coroutine onto this strand; does not suspend if it is there already. A `Task`
  /// stays on the strand until it ends; the coroutine that awaits the task resumes in its own place.
  [[nodiscard]] detail::StrandAwaiter enter() const noexcept { return {*core_, core_->isCurrent()}; }

  /// `co_await strand.yield()`: like `enter`, but always suspends and resumes behind all work queued so far.
  [[nodiscard]] detail::StrandAwaiter yield() const noexcept { return {*core_, false}; }

  friend bool operator==(const Strand& left, const Strand& right) noexcept {
    return left.core_.get() == right.core_.get();
  }

  const detail::Ref<detail::StrandCore>& core() const noexcept { return core_; }

 private:
  detail::Ref<detail::StrandCore> core_;
};

}  // namespace ormel
