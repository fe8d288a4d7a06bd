#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <mutex>

#include "OrmelSDK/Concurrency/TimerQueue.h"

namespace ormel::detail {

/// A scheduler on the threads that run an Asio context. All its timers share one queue and one Asio timer, which is
/// re-armed only for an earlier deadline than its own: most arming and all cancelling make no system call.
class AsioScheduler final : public Scheduler {
 public:
  explicit AsioScheduler(asio::io_context& context) : context_(context), wakeUp_(context) {}

  using Scheduler::post;
  std::uint64_t now() const noexcept override;
  void post(WorkItem& item) noexcept override;
  void arm(TimerItem& item, std::uint64_t deadline) override;
  bool disarm(TimerItem& item) noexcept override;
  std::size_t strandBatch() const noexcept override { return 64; }

 private:
  static constexpr std::uint64_t notSet = ~std::uint64_t{0};

  void setWakeUp(std::uint64_t deadline);
  void wokenUp();

  asio::io_context& context_;
  std::mutex mutex_;
  TimerQueue timers_;
  asio::steady_timer wakeUp_;
  std::uint64_t wakeUpAt_ = notSet;
};

}  // namespace ormel::detail
