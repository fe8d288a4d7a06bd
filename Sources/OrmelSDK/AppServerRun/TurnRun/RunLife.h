#pragma once

#include <chrono>
#include <memory>
#include <utility>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Strand.h"

namespace ormel::detail {

/// The strand of a run, and a weak hold on the run, for the parts that start timers and tasks. All that is late does
/// nothing when the run is gone by then.
///
/// *Thread safety*: all members but `begin` may be called from any thread.
class RunLife {
 public:
  explicit RunLife(Scheduler& scheduler) : strand_(scheduler, "run") {}
  RunLife(const RunLife&) = delete;
  RunLife& operator=(const RunLife&) = delete;

  /// Once, as soon as the run has an owner.
  void begin(std::weak_ptr<void> run) noexcept { run_ = std::move(run); }

  const Strand& strand() const noexcept { return strand_; }

  /// Keeps the run, and with it each of its parts, alive; null if it is gone.
  std::shared_ptr<void> hold() const noexcept { return run_.lock(); }
  const std::weak_ptr<void>& run() const noexcept { return run_; }

  /// Work for the strand that runs only if the run is still there.
  template <typename Work>
  auto whileAlive(Work work) const {
    return [run = run_, work = std::move(work)]() mutable {
      if (const auto held = run.lock()) work();
    };
  }

  template <typename Work>
  Timer postAfter(std::chrono::nanoseconds delay, Work work, const char* name) const {
    return strand_.postAfter(delay, whileAlive(std::move(work)), name);
  }

 private:
  const Strand strand_;
  std::weak_ptr<void> run_;
};

}  // namespace ormel::detail
