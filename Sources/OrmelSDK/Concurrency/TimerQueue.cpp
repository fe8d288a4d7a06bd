#include "OrmelSDK/Concurrency/TimerQueue.h"

#include <utility>

namespace ormel::detail {

void TimerQueue::add(TimerItem& item, std::uint64_t deadline) {
  heap_.push_back(&item);
  item.deadline = deadline;
  item.sequence = nextSequence_++;
  moveUp(item, heap_.size() - 1);
}

bool TimerQueue::remove(TimerItem& item) noexcept {
  const auto position = std::exchange(item.position, TimerItem::notQueued);
  if (position == TimerItem::notQueued) return false;
  TimerItem& last = *heap_.back();
  heap_.pop_back();
  if (&last == &item) return true;
  if (before(last, item)) {
    moveUp(last, position);
  } else {
    moveDown(last, position);
  }
  return true;
}

TimerItem* TimerQueue::takeDue(std::uint64_t now) noexcept {
  if (empty() || nextDeadline() > now) return nullptr;
  TimerItem* item = heap_.front();
  remove(*item);
  return item;
}

bool TimerQueue::before(const TimerItem& left, const TimerItem& right) noexcept {
  return left.deadline != right.deadline ? left.deadline < right.deadline : left.sequence < right.sequence;
}

void TimerQueue::place(TimerItem& item, std::size_t position) noexcept {
  heap_[position] = &item;
  item.position = position;
}

void TimerQueue::moveUp(TimerItem& item, std::size_t position) noexcept {
  while (position > 0) {
    const auto parent = (position - 1) / 2;
    if (!before(item, *heap_[parent])) break;
    place(*heap_[parent], position);
    position = parent;
  }
  place(item, position);
}

void TimerQueue::moveDown(TimerItem& item, std::size_t position) noexcept {
  for (;;) {
    auto child = 2 * position + 1;
    if (child >= heap_.size()) break;
    if (child + 1 < heap_.size() && before(*heap_[child + 1], *heap_[child])) ++child;
    if (!before(*heap_[child], item)) break;
    place(*heap_[child], position);
    position = child;
  }
  place(item, position);
}

}  // namespace ormel::detail
