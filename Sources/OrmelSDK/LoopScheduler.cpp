#include "OrmelSDK/LoopScheduler.h"

#include <array>
#include <mutex>
#include <system_error>
#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/TimerQueue.h"
#include "OrmelSDK/Platform/EventLoop.h"
#include "OrmelSDK/Platform/Poller.h"

namespace ormel {

namespace {

/// Marks the calling thread as running pieces of the scheduler. A piece may call `runReady` again, so what it was
/// running before comes back.
class RunningPieces {
 public:
  explicit RunningPieces(Scheduler& scheduler) noexcept
      : outer_(std::exchange(detail::executionState(), detail::ExecutionState())) {
    detail::executionState().scheduler = &scheduler;
  }
  ~RunningPieces() { detail::executionState() = outer_; }
  RunningPieces(const RunningPieces&) = delete;
  RunningPieces& operator=(const RunningPieces&) = delete;

 private:
  detail::ExecutionState outer_;
};

}  // namespace

struct LoopScheduler::State {
  /// The descriptor stays readable until everything has been taken, so that a loop within a piece sees the rest.
  void tell() noexcept {
    if (std::exchange(isTold, true)) return;
    poller.wakeUp();
  }
  void untell() noexcept {
    if (!isTold || hasNewTimer) return;
    std::array<detail::PollEvent, 1> none;
    poller.wait(none, std::chrono::nanoseconds(0));
    isTold = false;
  }
  void push(detail::WorkItem& item) noexcept {
    item.next = nullptr;
    (last ? last->next : first) = &item;
    last = &item;
    ++count;
    tell();
  }
  /// Null if there is none.
  detail::WorkItem* pop() noexcept {
    detail::WorkItem* const item = first;
    if (!item) return nullptr;
    first = item->next;
    if (!first) last = nullptr;
    --count;
    return item;
  }

  detail::Poller poller;

  std::mutex mutex;
  detail::WorkItem* first = nullptr;
  detail::WorkItem* last = nullptr;
  std::size_t count = 0;
  bool isTold = false;
  /// The descriptor tells of a timer that the loop has not reckoned with.
  bool hasNewTimer = false;

  /// Locked before `mutex` where both are: a timer that falls due is queued under both, so that it can be disarmed
  /// until then.
  std::mutex timersMutex;
  detail::TimerQueue timers;
};

LoopScheduler::LoopScheduler() try : state_(std::make_unique<State>()) {
} catch (const std::system_error& error) {
  throw ResourceExhaustedError("descriptors", error.code().message());
}

LoopScheduler::~LoopScheduler() {
  while (true) {
    detail::WorkItem* item = nullptr;
    {
      const std::scoped_lock lock(state_->timersMutex, state_->mutex);
      item = state_->pop();
      if (!item) item = state_->timers.takeDue(~std::uint64_t{0});
    }
    if (!item) return;
    item->discard();
  }
}

int LoopScheduler::descriptor() const noexcept { return state_->poller.descriptor(); }

std::optional<std::chrono::nanoseconds> LoopScheduler::timeToNextTimer() const noexcept {
  const std::scoped_lock lock(state_->timersMutex, state_->mutex);
  if (state_->count > 0) return std::chrono::nanoseconds(0);
  if (state_->timers.empty()) return std::nullopt;
  const std::uint64_t deadline = state_->timers.nextDeadline();
  const std::uint64_t time = now();
  return std::chrono::nanoseconds(deadline > time ? static_cast<std::int64_t>(deadline - time) : 0);
}

std::size_t LoopScheduler::runReady() {
  std::size_t left = 0;
  {
    const std::lock_guard timersLock(state_->timersMutex);
    const std::uint64_t time = now();
    while (detail::TimerItem* due = state_->timers.takeDue(time)) due->fallDue();
    const std::lock_guard lock(state_->mutex);
    left = state_->count;
    // The caller asks for the next timer before it sleeps again. A loop within a piece may be asleep already.
    if (left == 0) state_->hasNewTimer = false;
    if (left == 0) state_->untell();
  }
  const RunningPieces running(*this);
  std::size_t run = 0;
  for (; run < left; ++run) {
    detail::WorkItem* item = nullptr;
    {
      const std::lock_guard lock(state_->mutex);
      item = state_->pop();
      if (state_->count == 0) state_->untell();
    }
    // A loop within a piece may have run the rest.
    if (!item) break;
    item->run();
  }
  return run;
}

bool LoopScheduler::isCurrent() const noexcept {
  const detail::ExecutionState& state = detail::executionState();
  return state.scheduler == this && !state.strand;
}

std::uint64_t LoopScheduler::now() const noexcept { return detail::EventLoop::now(); }

void LoopScheduler::post(detail::WorkItem& item) noexcept {
  const std::lock_guard lock(state_->mutex);
  state_->push(item);
}

void LoopScheduler::arm(detail::TimerItem& item, std::uint64_t deadline) {
  const std::lock_guard timersLock(state_->timersMutex);
  const bool isNext = state_->timers.empty() || deadline < state_->timers.nextDeadline();
  state_->timers.add(item, deadline);
  if (!isNext) return;
  const std::lock_guard lock(state_->mutex);
  state_->hasNewTimer = true;
  state_->tell();
}

bool LoopScheduler::disarm(detail::TimerItem& item) noexcept {
  const std::lock_guard lock(state_->timersMutex);
  return state_->timers.remove(item);
}

std::size_t LoopScheduler::strandBatch() const noexcept { return 1; }

Scheduler& LoopScheduler::applicationScheduler() noexcept { return productionScheduler(); }

}  // namespace ormel
