#pragma once

#include <atomic>
#include <chrono>
#include <coroutine>
#include <exception>
#include <utility>

#include "OrmelSDK/Concurrency/JointWait.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"

namespace ormel::detail {

/// A wait for a task and a timer. Its timer lies in the wait itself: once armed, it is a party of the wait until it has
/// been disarmed or has run.
class TimedWait : public JointWait, private TimerItem {
 public:
  explicit TimedWait(std::chrono::nanoseconds duration) noexcept : duration_(duration) {}

 protected:
  ~TimedWait() = default;

  void taskStarts() noexcept { checkIn(); }
  void taskEnded() noexcept;
  /// Called when the task has been started. Returns whether the coroutine stays suspended.
  bool hasToWait() noexcept;
  /// Throws unless the task has ended in time.
  void requireInTime() const;

 private:
  /// The event that decides how the wait ends, the first of them.
  enum class Outcome { open, ended, timedOut, cancelled };
  enum Stage : unsigned { taskHasEnded = 1, timerIsArmed = 2 };

  bool decide(Outcome outcome) noexcept;
  void arm();
  void disarm() noexcept;

  void stopRequested() noexcept override;
  void fallDue() noexcept override;
  void run() noexcept override;
  void discard() noexcept override {}
  const char* name() const noexcept override { return "time-out"; }

  const std::chrono::nanoseconds duration_;
  Scheduler* scheduler_ = nullptr;
  std::atomic<Outcome> outcome_{Outcome::open};
  /// The second of the task's end and the arming disarms the timer.
  std::atomic<unsigned> stage_{0};
  std::exception_ptr failureToArm_;
};

template <typename T>
class TimedTask final : public TimedWait, private Completion {
 public:
  TimedTask(Task<T>&& task, std::chrono::nanoseconds duration)
      : TimedWait(duration), frame_(TaskParts::takeFrame(std::move(task))) {}

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiting) {
    begin(awaiting);
    auto& promise = frame_.promise();
    follow(promise.stopToken ? promise.stopToken : stopTokenOf(awaiting));
    promise.stopToken = &token();
    taskStarts();
    startAlone(promise, frame_.handle(), *this);
    return hasToWait();
  }

  T await_resume() {
    end();
    requireInTime();
    return frame_.promise().result.take();
  }

 private:
  void completed() noexcept override { taskEnded(); }

  TaskFrame<T> frame_;
};

}  // namespace ormel::detail
