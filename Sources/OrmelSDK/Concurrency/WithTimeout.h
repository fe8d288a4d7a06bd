#pragma once

#include <chrono>
#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TimedTask.h"

namespace ormel {

/// Gives the value of the task, if it ends within `duration` of its start; else stops it, awaits its end, and fails
/// with `TimeoutError`.
///
///     const ThreadListResponse page = co_await withTimeout(ormel.listThreads(), std::chrono::seconds(10));
///
/// The time is that of the scheduler on which the call is awaited, without one that of the library's threads. The task
/// begins before the timer is armed: one that ends without a wait never times out. With a duration of zero or less the
/// task is stopped at its first wait.
///
/// A task can be stopped where it waits. The wait for its end takes as long as it needs for that, for ever if it
/// ignores its stop token; its value or failure is then dropped. To limit the duration of a turn use
/// `TurnOptions::timeout`, which has the server end the turn: stopping a `Thread::run` only stops reading.
///
/// *Errors*: those of the task, as they are; `TimeoutError`.
///
/// *Cancellation*: a stop request of the caller reaches the task and passes through with the task's own
/// `CancelledError`, also when the time runs out before the task has ended. A task with a stop token of its own
/// observes that one in place of the caller's, and is stopped by the time-out too.
///
/// *Preconditions*: the task is not empty; an empty one ends the process, as anywhere.
template <typename T>
Task<T> withTimeout(Task<T> task, std::chrono::nanoseconds duration) {
  detail::TimedTask<T> timed(std::move(task), duration);
  co_return co_await timed;
}

}  // namespace ormel
