#include "OrmelSDK/Platform/IOScheduler.h"

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/IORuntime.h"

namespace ormel {

namespace detail {

void IOScheduler::post(WorkItem& item) noexcept {
  // The threads that would run it are those of another process, and so is the state of the loop.
  if (runtime_.isForkedCopy()) return item.discard();
  runtime_.loop().post(item, kind_, executionState().isLeaving);
}

void IOScheduler::arm(TimerItem& item, std::uint64_t deadline) { runtime_.loop().arm(item, deadline); }

bool IOScheduler::disarm(TimerItem& item) noexcept { return !runtime_.isForkedCopy() && runtime_.loop().disarm(item); }

void IOScheduler::prepare() { runtime_.start(); }

// Never destroyed: threads of the pool may use them until the very end of the process.
Scheduler& ioScheduler() {
  static auto& scheduler = *new IOScheduler(IORuntime::shared(), WorkKind::library);
  return scheduler;
}

}  // namespace detail

Scheduler& productionScheduler() {
  static auto& scheduler = *new detail::IOScheduler(detail::IORuntime::shared(), detail::WorkKind::application);
  return scheduler;
}

}  // namespace ormel
