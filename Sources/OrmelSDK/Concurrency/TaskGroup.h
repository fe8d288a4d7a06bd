#pragma once

#include <memory>
#include <stop_token>
#include <utility>

#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"

namespace ormel {

namespace detail {

class TaskGroupState;
void taskOfGroupBegins(TaskGroupState& state);
void taskOfGroupEnded(TaskGroupState& state) noexcept;
std::stop_token stopTokenOfGroup(const TaskGroupState& state);

}  // namespace detail

/// A set of detached tasks that are cancelled and awaited as one.
///
///     TaskGroup conversations;
///     conversations.spawn(converse(paris));
///     conversations.spawn(converse(rome));
///     co_await conversations.join();
///
/// `whenAll` is for tasks whose values or failures are wanted.
///
/// *Thread safety*: all members may be called from any thread; one coroutine at a time awaits `join`.
///
/// *Object lifetimes*: move-only. Destroying the group cancels its tasks and does not wait for them.
///
/// *Cancellation*: `cancel` triggers the stop token that the tasks run with, those spawned later included.
///
/// *Preconditions*: a group that was moved from may only be destroyed or assigned to.
///
/// *Errors*: a task must handle its own failures: a `CancelledError` that leaves it is ignored, any other exception
/// ends the process, as with `Task::detach`.
class TaskGroup {
 public:
  TaskGroup();
  TaskGroup(TaskGroup&&) noexcept;
  TaskGroup& operator=(TaskGroup&&) noexcept;
  ~TaskGroup();

  /// Starts the task, within this call if it has no place of its own. Throws as `Task::start`; the task is then
  /// dropped.
  void spawn(Task<void> task) {
    detail::taskOfGroupBegins(*state_);
    try {
      std::move(task)
          .withStopToken(detail::stopTokenOfGroup(*state_))
          .start([state = state_](const TaskResult<void>& result) noexcept {
            if (result.error()) detail::requireCancelled(result.error());
            detail::taskOfGroupEnded(*state);
          });
    } catch (...) {
      detail::taskOfGroupEnded(*state_);
      throw;
    }
  }

  /// Has all tasks stop at their next wait. Does nothing the second time.
  void cancel() noexcept;

  /// Completes when no task of the group is running. Throws `CancelledError` if the caller's stop token is triggered
  /// first; the tasks then keep running.
  Task<void> join() const;

 private:
  std::shared_ptr<detail::TaskGroupState> state_;
};

}  // namespace ormel
