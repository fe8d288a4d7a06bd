#pragma once

#include <chrono>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"

namespace ormel {

/// Ends once `duration` has passed on the scheduler's clock, not before.
///
/// *Cancellation*: throws `CancelledError` as soon as the stop token of the task is triggered.
///
/// *Object lifetimes*: the scheduler must outlive the task.
Task<void> sleepFor(Scheduler& scheduler, std::chrono::nanoseconds duration);

/// The same on the scheduler on which the task begins; without one, on that of the library's threads. A duration of
/// zero or less lets other work go first.
///
///     co_await sleepFor(std::chrono::milliseconds(200));
Task<void> sleepFor(std::chrono::nanoseconds duration);

}  // namespace ormel
