#pragma once

#include <cstdint>
#include <vector>

#include "OrmelSDK/Concurrency/Scheduler.h"

namespace ormel::detail {

/// Timer items by deadline; among equal deadlines the one armed first comes first.
class TimerQueue {
 public:
  bool empty() const noexcept { return heap_.empty(); }
  /// *Preconditions*: not empty.
  std::uint64_t nextDeadline() const noexcept { return heap_.front()->deadline; }

  void add(TimerItem& item, std::uint64_t deadline);
  /// Whether the item stood in the queue.
  bool remove(TimerItem& item) noexcept;
  /// The next item that is due at `now`, taken out, or null.
  TimerItem* takeDue(std::uint64_t now) noexcept;
  const std::vector<TimerItem*>& items() const noexcept { return heap_; }

 private:
  static bool before(const TimerItem& left, const TimerItem& right) noexcept;
  void place(TimerItem& item, std::size_t position) noexcept;
  void moveUp(TimerItem& item, std::size_t position) noexcept;
  void moveDown(TimerItem& item, std::size_t position) noexcept;

  std::vector<TimerItem*> heap_;
  std::uint64_t nextSequence_ = 0;
};

}  // namespace ormel::detail
