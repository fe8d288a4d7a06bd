#include "OrmelSDK/Platform/AsioScheduler.h"

#include <algorithm>
#include <asio/bind_allocator.hpp>
#include <asio/defer.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <limits>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/ReservedMemory.h"

namespace ormel {

namespace detail {

namespace {

/// Owns an item queued in the context, which may be destroyed without having run it.
class PostedItem {
 public:
  using allocator_type = ReservedAllocator<void>;
  allocator_type get_allocator() const noexcept { return {}; }

  PostedItem(Scheduler& scheduler, WorkItem& item) noexcept : scheduler_(&scheduler), item_(&item) {}
  PostedItem(PostedItem&& other) noexcept : scheduler_(other.scheduler_), item_(std::exchange(other.item_, nullptr)) {}
  PostedItem& operator=(PostedItem&&) = delete;
  ~PostedItem() {
    if (item_) item_->discard();
  }

  void operator()() { run(*std::exchange(item_, nullptr)); }

 protected:
  void run(WorkItem& item) noexcept {
    executionState().scheduler = scheduler_;
    item.run();
    executionState().scheduler = nullptr;
  }
  WorkItem& take() noexcept { return *std::exchange(item_, nullptr); }

 private:
  Scheduler* scheduler_;
  WorkItem* item_;
};

/// The same for an item that is code of the application.
class PostedApplicationItem : public PostedItem {
 public:
  PostedApplicationItem(Scheduler& scheduler, IORuntime& runtime, WorkItem& item) noexcept
      : PostedItem(scheduler, item), runtime_(&runtime) {}

  void operator()() {
    WorkItem& item = take();
    if (!runtime_->lendThread(item)) return;
    run(item);
    runtime_->takeThreadBack();
  }

 private:
  IORuntime* runtime_;
};

template <typename Posted>
void postItem(IORuntime& runtime, Posted posted) {
  // The threads that would run it are those of another process, and so is the state of the context.
  if (runtime.isForkedCopy()) return;
  if (executionState().isLeaving) {
    asio::defer(runtime.context(), std::move(posted));
  } else {
    asio::post(runtime.context(), std::move(posted));
  }
}

}  // namespace

std::uint64_t AsioScheduler::now() const noexcept {
  const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

void AsioScheduler::post(WorkItem& item) noexcept { postItem(runtime_, PostedItem(*this, item)); }

void ApplicationScheduler::post(WorkItem& item) noexcept {
  postItem(runtime_, PostedApplicationItem(*this, runtime_, item));
}

void AsioScheduler::arm(TimerItem& item, std::uint64_t deadline) {
  const std::lock_guard lock(mutex_);
  timers_.add(item, deadline);
  if (deadline >= wakeUpAt_) return;
  try {
    setWakeUp(deadline);
  } catch (...) {
    // Only the first wait for it takes memory.
    timers_.remove(item);
    wakeUpAt_ = notSet;
    throw;
  }
}

bool AsioScheduler::disarm(TimerItem& item) noexcept {
  if (runtime_.isForkedCopy()) return false;
  const std::lock_guard lock(mutex_);
  return timers_.remove(item);
}

void AsioScheduler::setWakeUp(std::uint64_t deadline) {
  constexpr auto latest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  wakeUpAt_ = deadline;
  const std::chrono::nanoseconds sinceStart(static_cast<std::int64_t>(std::min(deadline, latest)));
  if (!wakeUp_) wakeUp_.emplace(runtime_.context());
  wakeUp_->expires_at(std::chrono::steady_clock::time_point(
      std::chrono::duration_cast<std::chrono::steady_clock::duration>(sinceStart)));
  wakeUp_->async_wait(asio::bind_allocator(ReservedAllocator<void>(), [this](std::error_code error) {
    if (!error) wokenUp();
  }));
}

void AsioScheduler::wokenUp() {
  const std::lock_guard lock(mutex_);
  const auto time = now();
  while (TimerItem* due = timers_.takeDue(time)) due->fallDue();
  wakeUpAt_ = notSet;
  if (!timers_.empty()) setWakeUp(timers_.nextDeadline());
}

}  // namespace detail

namespace detail {

// Never destroyed: threads of the pool may use them until the very end of the process.
Scheduler& ioScheduler() {
  static auto& scheduler = *new AsioScheduler(IORuntime::shared());
  return scheduler;
}

}  // namespace detail

Scheduler& productionScheduler() {
  static auto& scheduler = *new detail::ApplicationScheduler(detail::IORuntime::shared(), detail::ioScheduler());
  return scheduler;
}

}  // namespace ormel
