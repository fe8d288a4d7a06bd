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

/// Tasks that are started together with nobody awaiting each of them, to be cancelled and awaited as one.
///
/// *Thread safety*: all members may be called from any thread; one coroutine at a time awaits `join`.
///
/// *Object lifetimes*: move-only. Destroying the group cancels its tasks and does not wait for them.
///
/// *Cancellation*: `cancel` triggers the stop token that the tasks run with, those spawned later included.
///
/// *Errors*: a task ends its failures itself: its cancellation is dropped, any other exception that leaves it ends the
/// process, as with `Task::detach`.
class TaskGroup {
 public:
  TaskGroup();
  TaskGroup(TaskGroup&&) noexcept;
  TaskGroup& operator=(TaskGroup&&) noexcept;
  ~TaskGroup();

  /// Starts the task, within this call if it has no place of its own.
  void spawn(Task<void> task) {
    detail::taskOfGroupBegins(*state_);
    std::move(task)
        .withStopToken(detail::stopTokenOfGroup(*state_))
        .start([state = state_](TaskResult<void> result) noexcept {
          detail::takeUnlessCancelled(std::move(result));
          detail::taskOfGroupEnded(*state);
        });
  }

  void cancel() noexcept;

  /// Ends when no task of the group is running. Throws `CancelledError` if the stop token of the caller is triggered
  /// first; the tasks go on then.
  Task<void> join() const;

 private:
  std::shared_ptr<detail::TaskGroupState> state_;
};

}  // namespace ormel
