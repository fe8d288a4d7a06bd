#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/TimerQueue.h"

namespace ormel {

/// A simulation has nothing left to run, or has run too long, before what it was to reach. The text says what is
/// pending.
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
/// *Object lifetimes*: destroying it discards queued work without running it. Coroutines that wait then never go on and
/// are leaked.
///
/// *Errors*: `runUntil`, `run` and `runFor` throw `SimulationError`; whatever the step hook throws passes through.
class SimulatedScheduler final : public Scheduler {
 public:
  /// A run of more steps than this is taken for one that does not end.
  static constexpr std::uint64_t defaultStepLimit = 50'000'000;

  explicit SimulatedScheduler(std::uint64_t seed) noexcept;
  ~SimulatedScheduler() override;

  /// Runs one piece, if need be after moving time on to the next timer. False if there is nothing to run.
  bool step();

  /// Runs until nothing is left. The number of steps taken.
  std::uint64_t run(std::uint64_t stepLimit = defaultStepLimit);

  /// Runs until `reached()`, tested before each step.
  template <class Condition>
  void runUntil(Condition reached, std::uint64_t stepLimit = defaultStepLimit) {
    for (std::uint64_t taken = 0; !reached(); ++taken) {
      requireBelow(taken, stepLimit);
      if (!step()) failStalled();
    }
  }

  /// Runs all that is due before `duration` has passed, which it has then.
  void runFor(std::chrono::nanoseconds duration, std::uint64_t stepLimit = defaultStepLimit);

  /// Called after each step, to check what must always hold. It may throw.
  void setStepHook(Work hook) { hook_ = std::move(hook); }

  /// The ready work, the timers and the coroutines that wait, by name. Text for people.
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
