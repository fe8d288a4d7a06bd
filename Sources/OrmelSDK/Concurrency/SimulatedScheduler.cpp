#include "OrmelSDK/Concurrency/SimulatedScheduler.h"

#include <algorithm>
#include <utility>

#include "OrmelSDK/Concurrency/ExecutionState.h"

namespace ormel {

namespace {

/// Marks the calling thread as running a piece of the scheduler.
class RunningPieceOf {
 public:
  explicit RunningPieceOf(Scheduler& scheduler) noexcept
      : outer_(std::exchange(detail::executionState().scheduler, &scheduler)) {}
  ~RunningPieceOf() { detail::executionState().scheduler = outer_; }
  RunningPieceOf(const RunningPieceOf&) = delete;
  RunningPieceOf& operator=(const RunningPieceOf&) = delete;

 private:
  Scheduler* outer_;
};

}  // namespace

SimulatedScheduler::SimulatedScheduler(std::uint64_t seed) noexcept : Scheduler(&waits_), seed_(seed), random_(seed) {}

SimulatedScheduler::~SimulatedScheduler() {
  while (!ready_.empty() || !timers_.empty()) {
    for (detail::WorkItem* item : std::exchange(ready_, {})) item->discard();
    while (detail::TimerItem* item = timers_.takeDue(~std::uint64_t{0})) item->discard();
  }
}

bool SimulatedScheduler::step() {
  if (ready_.empty() && !moveTimeOn()) return false;
  {
    const RunningPieceOf running(*this);
    takeAny().run();
  }
  ++steps_;
  if (hook_) hook_();
  return true;
}

std::uint64_t SimulatedScheduler::run(std::uint64_t stepLimit) {
  const auto before = steps_;
  while (!ready_.empty() || !timers_.empty()) {
    requireBelow(steps_ - before, stepLimit);
    step();
  }
  return steps_ - before;
}

void SimulatedScheduler::runFor(std::chrono::nanoseconds duration, std::uint64_t stepLimit) {
  const auto end = now_ + static_cast<std::uint64_t>(std::max<std::int64_t>(duration.count(), 0));
  const auto before = steps_;
  while (!ready_.empty() || (!timers_.empty() && timers_.nextDeadline() <= end)) {
    requireBelow(steps_ - before, stepLimit);
    step();
  }
  now_ = end;
}

std::string SimulatedScheduler::pending() const {
  std::string text = "at " + std::to_string(now_) + " ns after " + std::to_string(steps_) + " steps of seed " +
                     std::to_string(seed_) + "; ready:";
  for (const auto* item : ready_) text += std::string(" [") + item->name() + "]";
  text += "; timers:";
  auto timers = timers_.items();
  std::sort(timers.begin(), timers.end(), [](const auto* left, const auto* right) {
    return std::pair(left->deadline, left->sequence) < std::pair(right->deadline, right->sequence);
  });
  for (const auto* item : timers) {
    text += std::string(" [") + item->name() + " at " + std::to_string(item->deadline) + "]";
  }
  text += "; waiting:";
  waits_.forEach([&text](const char* name) { text += std::string(" [") + name + "]"; });
  return text;
}

std::uint64_t SimulatedScheduler::choose(std::uint64_t bound) noexcept {
  // SplitMix64: its own generator, because those of the standard library's distributions differ by library.
  random_ += 0x9e3779b97f4a7c15U;
  auto mixed = random_;
  mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
  mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
  mixed ^= mixed >> 31U;
  return mixed % bound;
}

void SimulatedScheduler::arm(detail::TimerItem& item, std::uint64_t deadline) {
  if (deadline <= now_) {
    post(item);
  } else {
    timers_.add(item, deadline);
  }
}

void SimulatedScheduler::requireBelow(std::uint64_t taken, std::uint64_t stepLimit) const {
  if (taken >= stepLimit) throw SimulationError("The simulation does not end: " + pending());
}

void SimulatedScheduler::failStalled() const { throw SimulationError("The simulation has stalled: " + pending()); }

bool SimulatedScheduler::moveTimeOn() {
  if (timers_.empty()) return false;
  now_ = timers_.nextDeadline();
  while (detail::TimerItem* item = timers_.takeDue(now_)) ready_.push_back(item);
  return true;
}

detail::WorkItem& SimulatedScheduler::takeAny() noexcept {
  const auto chosen = ready_.size() == 1 ? 0 : choose(ready_.size());
  std::swap(ready_[chosen], ready_.back());
  detail::WorkItem& item = *ready_.back();
  ready_.pop_back();
  return item;
}

}  // namespace ormel
