#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "Support/Eventually.h"

namespace ormel::testing {

/// Where the result of a task arrives.
template <typename T>
class Outcome {
 public:
  void set(TaskResult<T> result) {
    const std::lock_guard lock(mutex_);
    result_.emplace(std::move(result));
    arrived_.notify_all();
  }
  bool isSet() {
    const std::lock_guard lock(mutex_);
    return result_.has_value();
  }
  void waitUntilSet() {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, patience, [this] { return result_.has_value(); })) {
      throw std::runtime_error("the task does not end");
    }
  }
  T take() {
    const std::lock_guard lock(mutex_);
    return result_->take();
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::optional<TaskResult<T>> result_;
};

template <typename T>
std::shared_ptr<Outcome<T>> startOn(Scheduler& scheduler, Task<T> task, std::stop_token token = {}) {
  auto outcome = std::make_shared<Outcome<T>>();
  std::move(task).onScheduler(scheduler).start([outcome](TaskResult<T> result) { outcome->set(std::move(result)); },
                                               std::move(token));
  return outcome;
}

/// Runs tasks to their end in a simulation.
class Simulated {
 public:
  Scheduler& scheduler() { return scheduler_; }

  template <typename T>
  T run(Task<T> task, std::stop_token token = {}) {
    const auto outcome = startOn(scheduler_, std::move(task), std::move(token));
    scheduler_.runUntil([&] { return outcome->isSet(); });
    scheduler_.run();
    return outcome->take();
  }

 private:
  SimulatedScheduler scheduler_{1};
};

/// Runs tasks to their end on the threads of the library.
class Production {
 public:
  Scheduler& scheduler() { return productionScheduler(); }

  template <typename T>
  T run(Task<T> task, std::stop_token token = {}) {
    const auto outcome = startOn(scheduler(), std::move(task), std::move(token));
    outcome->waitUntilSet();
    return outcome->take();
  }
};

using BothSchedulers = ::testing::Types<Simulated, Production>;

/// The same scenario under many seeds, each named in what fails.
template <typename Scenario>
void underSeeds(std::uint64_t count, Scenario scenario) {
  for (std::uint64_t seed = 1; seed <= count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    SimulatedScheduler scheduler(seed);
    scenario(scheduler);
    if (::testing::Test::HasFailure()) return;
  }
}

}  // namespace ormel::testing
