#pragma once

#include <asio/steady_timer.hpp>
#include <mutex>
#include <optional>

#include "OrmelSDK/Concurrency/TimerQueue.h"
#include "OrmelSDK/Platform/IORuntime.h"

namespace ormel::detail {

/// A scheduler on the threads of an `IORuntime`. All its timers share one queue and one Asio timer, which is re-armed
/// only for an earlier deadline than its own: most arming and all cancelling make no system call.
class AsioScheduler final : public Scheduler {
 public:
  explicit AsioScheduler(IORuntime& runtime) noexcept : runtime_(runtime) {}

  using Scheduler::post;
  std::uint64_t now() const noexcept override;
  void post(WorkItem& item) noexcept override;
  void arm(TimerItem& item, std::uint64_t deadline) override;
  bool disarm(TimerItem& item) noexcept override;
  std::size_t strandBatch() const noexcept override { return 64; }
  void prepare() override { runtime_.start(); }
  Scheduler& applicationScheduler() noexcept override { return productionScheduler(); }
  bool runsApplicationCode() const noexcept override { return false; }

 private:
  static constexpr std::uint64_t notSet = ~std::uint64_t{0};

  void setWakeUp(std::uint64_t deadline);
  void wokenUp();

  IORuntime& runtime_;
  std::mutex mutex_;
  TimerQueue timers_;
  std::optional<asio::steady_timer> wakeUp_;
  std::uint64_t wakeUpAt_ = notSet;
};

/// Runs code of the application on threads that the runtime lends for it, so that it may block them. The time is that
/// of the library's own scheduler.
class ApplicationScheduler final : public Scheduler {
 public:
  ApplicationScheduler(IORuntime& runtime, Scheduler& clock) noexcept : runtime_(runtime), clock_(clock) {}

  using Scheduler::post;
  std::uint64_t now() const noexcept override { return clock_.now(); }
  void post(WorkItem& item) noexcept override;
  void arm(TimerItem& item, std::uint64_t deadline) override { clock_.arm(item, deadline); }
  bool disarm(TimerItem& item) noexcept override { return clock_.disarm(item); }
  std::size_t strandBatch() const noexcept override { return clock_.strandBatch(); }
  void prepare() override { runtime_.start(); }

 private:
  IORuntime& runtime_;
  Scheduler& clock_;
};

}  // namespace ormel::detail
