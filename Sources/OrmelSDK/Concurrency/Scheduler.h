#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "OrmelSDK/Concurrency/Ref.h"
#include "OrmelSDK/Concurrency/WaitRegistry.h"
#include "OrmelSDK/Concurrency/WorkItem.h"

namespace ormel {

class Scheduler;

namespace detail {

class StrandCore;
class TimerNode;

/// The moment `delay` after `now`, at most the last one; `now` itself if the delay is zero or less.
std::uint64_t deadlineAfter(std::uint64_t now, std::chrono::nanoseconds delay) noexcept;

/// A work item that is queued at its deadline.
class TimerItem : public WorkItem {
 public:
  /// Queues the item where it is to run. Called in deadline order.
  virtual void fallDue() noexcept = 0;

  static constexpr std::size_t notQueued = static_cast<std::size_t>(-1);

  /// Owned by the timer queue that holds the item.
  std::uint64_t deadline = 0;
  std::uint64_t sequence = 0;
  std::size_t position = notQueued;

 protected:
  ~TimerItem() = default;
};

}  // namespace detail

/// Delayed work that can be cancelled.
///
/// *Object lifetimes*: move-only; destroying or overwriting the timer cancels it. The scheduler must outlive it.
///
/// *Thread safety*: one timer is used by one thread at a time, which may be the one that runs its work.
///
/// *Cancellation*: what `cancel` does depends on how far the work is:
///
/// | state            | `cancel` returns | the work                                               |
/// |------------------|------------------|--------------------------------------------------------|
/// | waiting          | true             | never runs                                             |
/// | due but not begun| true             | never runs; certain for a strand's timer on its strand |
/// | begun or done    | false            | goes on, is not waited for                             |
/// | cancelled, empty | false            | stays as it is                                         |
class [[nodiscard]] Timer {
 public:
  Timer() noexcept;
  Timer(Timer&&) noexcept;
  Timer& operator=(Timer&&) noexcept;
  ~Timer();

  /// Returns true if this call has prevented the work from running.
  bool cancel() noexcept;

 private:
  friend class Scheduler;
  friend class Strand;
  explicit Timer(detail::Ref<detail::TimerNode> node) noexcept;
  static Timer armed(Scheduler& scheduler, detail::Ref<detail::StrandCore> strand, std::chrono::nanoseconds delay,
                     Work work, const char* name);

  detail::Ref<detail::TimerNode> node_;
};

/// Runs work and tells the time: the library's only source of concurrency and of time.
///
/// *Thread safety*: all members may be called from any thread, unless the implementation says otherwise.
///
/// *Object lifetimes*: a scheduler outlives everything that was made on it.
///
/// *Errors*: work must not throw; an exception that leaves it ends the process.
///
/// Names given to work are not copied and are meant to be literals. They appear in the reports of a simulation.
class Scheduler {
 public:
  virtual ~Scheduler() = default;
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  /// Runs `work` soon, in no order with other work, never within this call.
  void post(Work work, const char* name = "work") {
    prepare();
    post(detail::makeWorkItem(std::move(work), name));
  }

  /// Runs `work` once `delay` has passed. A delay of zero or less means soon.
  Timer postAfter(std::chrono::nanoseconds delay, Work work, const char* name = "timer");

  /// Nanoseconds on a monotonic clock with an arbitrary zero.
  virtual std::uint64_t now() const noexcept = 0;

  virtual void post(detail::WorkItem& item) noexcept = 0;
  virtual void arm(detail::TimerItem& item, std::uint64_t deadline) = 0;
  /// Returns true if the item was still waiting; it then belongs to the caller again.
  virtual bool disarm(detail::TimerItem& item) noexcept = 0;
  /// How many pieces of a strand may run in a row before other work has its turn.
  virtual std::size_t strandBatch() const noexcept = 0;

  /// Makes sure that posted work will run. Fails with `ResourceExhaustedError` and `ForkedProcessError`.
  virtual void prepare() {}
  /// The scheduler for code of the application, where this one is for the library's own; else this one.
  virtual Scheduler& applicationScheduler() noexcept { return *this; }
  virtual bool runsApplicationCode() const noexcept { return true; }

  /// The registry of waits; null if the scheduler keeps none.
  detail::WaitRegistry* waitRegistry() const noexcept { return waitRegistry_; }

 protected:
  explicit Scheduler(detail::WaitRegistry* waitRegistry = nullptr) noexcept : waitRegistry_(waitRegistry) {}

 private:
  detail::WaitRegistry* waitRegistry_;
};

/// The scheduler of the library's thread pool for code of the application. Work may block: threads are added while all
/// are taken, and end when they are idle. The pool starts on first use.
Scheduler& productionScheduler();

}  // namespace ormel
