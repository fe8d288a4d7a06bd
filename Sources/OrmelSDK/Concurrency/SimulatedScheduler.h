#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/TimerQueue.h"

namespace ormel {

/// A simulation ran out of work, or ran for too many steps, before it reached its goal. The text lists pending work.
class SimulationError : public Error {
 public:
  using Error::Error;
};

/// A scheduler without threads and without a clock, for tests: it runs one piece of work at a time, chosen among the
/// ready ones by a seed, and lets time jump to the next timer when nothing is ready. The same seed and the same code
/// give the same run, on every platform.
///
/// A strand counts as one ready piece at a time, so its order is kept while strands and plain work interleave.
///
/// *Thread safety*: none: everything on it, posting included, happens on one thread.
///
/// *Object lifetimes*: destroying it discards queued work without running it. Suspended coroutines then never resume
/// and are leaked.
///
/// *Errors*: `runUntil`, `run` and `runFor` throw `SimulationError`; exceptions of the step hook pass through.
class SimulatedScheduler final : public Scheduler {
 public:
  /// A longer run is treated as one that never ends.
  static constexpr std::uint64_t defaultStepLimit = 50'000'000;

  explicit SimulatedScheduler(std::uint64_t seed) noexcept;
  ~SimulatedScheduler() override;

  /// Runs one piece, advancing time to the next timer if nothing is ready. Returns false if there is nothing to run.
  bool step();

  /// Runs until nothing is left. Returns the number of steps taken.
  std::uint64_t run(std::uint64_t stepLimit = defaultStepLimit);

  /// Runs until `reached()`, tested before each step.
  template <typename Condition>
  void runUntil(Condition reached, std::uint64_t stepLimit = defaultStepLimit) {
    for (std::uint64_t taken = 0; !reached(); ++taken) {
      requireBelow(taken, stepLimit);
      if (!step()) failStalled();
    }
  }

  /// Advances time by `duration` and runs all work that becomes due meanwhile.
  void runFor(std::chrono::nanoseconds duration, std::uint64_t stepLimit = defaultStepLimit);

  /// Sets a hook that is called after each step to check invariants. It may throw.
  void setStepHook(Work hook) { hook_ = std::move(hook); }

  /// Lists the ready work, the timers and the suspended coroutines by name, for people.
  std::string pending() const;

  std::uint64_t seed() const noexcept { return seed_; }
  std::uint64_t steps() const noexcept { return steps_; }

  /// A number below `bound`, from the same seed: for tests that choose at random themselves.
  std::uint64_t choose(std::uint64_t bound) noexcept;

  using Scheduler::post;
  std::uint64_t now() const noexcept override { return now_; }
  void post(detail::WorkItem& item) noexcept override { ready_.push_back(&item); }
  void arm(detail::TimerItem& item, std::uint64_t deadline) override;
  bool disarm(detail::TimerItem& item) noexcept override { return timers_.remove(item); }
  std::size_t strandBatch() const noexcept override { return 1; }

 private:
  void requireBelow(std::uint64_t taken, std::uint64_t stepLimit) const;
  [[noreturn]] void failStalled() const;
  bool moveTimeOn();
  detail::WorkItem& takeAny() noexcept;

  const std::uint64_t seed_;
  std::uint64_t random_;
  std::uint64_t now_ = 0;
  std::uint64_t steps_ = 0;
  std::vector<detail::WorkItem*> ready_;
  detail::TimerQueue timers_;
  detail::WaitRegistry waits_;
  Work hook_;
};

}  // namespace ormel
