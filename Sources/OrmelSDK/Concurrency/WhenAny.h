#pragma once

#include <cstddef>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TaskSet.h"

namespace ormel {

/// The task that ended first, by its place among the tasks, and its value.
template <typename Value>
class FirstOf {
 public:
  FirstOf(std::size_t indexOfTask, Value valueOfTask) : index(indexOfTask), value(std::move(valueOfTask)) {}

  std::size_t index;
  Value value;
};

/// Runs the tasks side by side until one of them has ended, and gives its index and value; the others are stopped, and
/// awaited. The value is a `std::variant` with one alternative a task, of which that of the index is set; that of a
/// `Task<void>` is a `std::monostate`, that of a reference a `std::reference_wrapper`.
///
///     auto first = co_await whenAny(nextKey(), sleepFor(std::chrono::seconds(5)));
///     if (first.index == 1) ...      // no key for five seconds
///
/// *Threads*, *Preconditions*: as with `whenAll`. A task that would have begun when another has ended already does not
/// run at all.
///
/// *Errors*: if the task that ends first fails, its failure is thrown. The ends of the others are dropped.
///
/// *Cancellation*: a stop request of the caller reaches all tasks; the one that ends first decides as ever, so that the
/// call fails with `CancelledError` if this one took note. A task with a stop token of its own observes that one only:
/// it is awaited, and not stopped.
template <typename... Ts>
  requires(sizeof...(Ts) > 0)
Task<FirstOf<std::variant<detail::JoinedValue<Ts>...>>> whenAny(Task<Ts>... tasks) {
  detail::TaskPack<Ts...> pack(detail::Decision::byEnd, std::move(tasks)...);
  co_await pack;
  co_return FirstOf<std::variant<detail::JoinedValue<Ts>...>>(pack.winner(), pack.winningValue());
}

/// The same for any number of tasks of one type, whose values need no variant. Fails with `Error` if there is none.
template <typename T>
Task<FirstOf<detail::JoinedValue<T>>> whenAny(std::vector<Task<T>> tasks) {
  if (tasks.empty()) throw Error("The first of no tasks was asked for");
  detail::TaskList<T> list(detail::Decision::byEnd, std::move(tasks));
  co_await list;
  co_return FirstOf<detail::JoinedValue<T>>(list.winner(), list.winningValue());
}

}  // namespace ormel
