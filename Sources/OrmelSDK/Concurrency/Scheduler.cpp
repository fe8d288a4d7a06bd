#include "OrmelSDK/Concurrency/Scheduler.h"

#include <atomic>
#include <limits>

#include "OrmelSDK/Concurrency/OutOfMemory.h"
#include "OrmelSDK/Concurrency/Strand.h"

namespace ormel {

namespace detail {

std::uint64_t deadlineAfter(std::uint64_t now, std::chrono::nanoseconds delay) noexcept {
  if (delay.count() <= 0) return now;
  const auto span = static_cast<std::uint64_t>(delay.count());
  return span > std::numeric_limits<std::uint64_t>::max() - now ? std::numeric_limits<std::uint64_t>::max()
                                                                : now + span;
}

/// The queue in which the node stands owns one reference to it, the `Timer` the other.
class TimerNode final : public TimerItem, public RefCounted {
 public:
  TimerNode(Scheduler& scheduler, Ref<StrandCore> strand, Work work, const char* name) noexcept
      : scheduler_(scheduler), strand_(std::move(strand)), work_(std::move(work)), name_(name) {}

  bool cancel() noexcept {
    if (!settle()) return false;
    if (scheduler_.disarm(*this)) release();
    return true;
  }

  void fallDue() noexcept override {
    if (strand_) {
      strand_->post(*this);
    } else {
      scheduler_.post(*this);
    }
  }

  void run() noexcept override {
    // A simulation runs due timers itself, so that those of one strand and one moment come in any order.
    if (strand_ && !strand_->isCurrent()) {
      strand_->post(*this);
      return;
    }
    if (settle()) {
      Work work = std::move(work_);
      runOrFailForMemory(name_, work);
    }
    release();
  }
  void discard() noexcept override { release(); }
  const char* name() const noexcept override { return name_; }

 private:
  /// Decides between running and cancelling: true for the first call.
  bool settle() noexcept { return !settled_.exchange(true, std::memory_order_acq_rel); }

  Scheduler& scheduler_;
  Ref<StrandCore> strand_;
  std::atomic<bool> settled_{false};
  Work work_;
  const char* name_;
};

}  // namespace detail

Timer::Timer() noexcept = default;
Timer::Timer(Timer&&) noexcept = default;
Timer::Timer(detail::Ref<detail::TimerNode> node) noexcept : node_(std::move(node)) {}
Timer::~Timer() { cancel(); }

Timer& Timer::operator=(Timer&& other) noexcept {
  if (this != &other) {
    cancel();
    node_ = std::move(other.node_);
  }
  return *this;
}

bool Timer::cancel() noexcept {
  const auto node = std::exchange(node_, {});
  return node && node->cancel();
}

Timer Timer::armed(Scheduler& scheduler, detail::Ref<detail::StrandCore> strand, std::chrono::nanoseconds delay,
                   Work work, const char* name) {
  scheduler.prepare();
  auto node =
      detail::Ref<detail::TimerNode>::adopt(new detail::TimerNode(scheduler, std::move(strand), std::move(work), name));
  const auto deadline = detail::deadlineAfter(scheduler.now(), delay);
  node->retain();
  try {
    scheduler.arm(*node, deadline);
  } catch (...) {
    node->release();
    throw;
  }
  return Timer(std::move(node));
}

Timer Scheduler::postAfter(std::chrono::nanoseconds delay, Work work, const char* name) {
  return Timer::armed(*this, {}, delay, std::move(work), name);
}

}  // namespace ormel
