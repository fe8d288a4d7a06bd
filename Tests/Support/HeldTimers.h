#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/TimerQueue.h"

namespace ormel::testing {

/// The library's threads and clock, save that the timers of one name never fall due by themselves. A test lets them
/// fall due at the moment that it wants, however slow the machine.
///
/// *Object lifetimes*: never destroyed, like the library's own scheduler: when a test is over, threads of the pool may
/// still have to do with it.
class HeldTimers final : public Scheduler {
 public:
  static HeldTimers& neverDestroyed(std::string name) {
    static auto& all = *new std::deque<std::unique_ptr<HeldTimers>>();
    return *all.emplace_back(new HeldTimers(std::move(name)));
  }

  /// Lets all held timers that are waiting fall due, and says how many there were.
  std::size_t letFallDue() {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    while (detail::TimerItem* due = held_.takeDue(UINT64_MAX)) {
      due->fallDue();
      ++count;
    }
    return count;
  }

  using Scheduler::post;
  std::uint64_t now() const noexcept override { return threads_.now(); }
  void post(detail::WorkItem& item) noexcept override { threads_.post(item); }
  void arm(detail::TimerItem& item, std::uint64_t deadline) override {
    if (item.name() != name_) return threads_.arm(item, deadline);
    const std::lock_guard lock(mutex_);
    held_.add(item, deadline);
  }
  bool disarm(detail::TimerItem& item) noexcept override {
    if (item.name() != name_) return threads_.disarm(item);
    const std::lock_guard lock(mutex_);
    return held_.remove(item);
  }
  std::size_t strandBatch() const noexcept override { return threads_.strandBatch(); }

 private:
  explicit HeldTimers(std::string name) : name_(std::move(name)) {}

  Scheduler& threads_ = productionScheduler();
  const std::string name_;
  std::mutex mutex_;
  detail::TimerQueue held_;
};

}  // namespace ormel::testing
