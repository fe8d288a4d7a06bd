#pragma once

#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TaskSet.h"

namespace ormel {

namespace detail {

template <typename... Ts>
using AllValues = std::conditional_t<(std::is_void_v<Ts> && ...), void, std::tuple<JoinedValue<Ts>...>>;
template <typename T>
using ListValues = std::conditional_t<std::is_void_v<T>, void, std::vector<JoinedValue<T>>>;

}  // namespace detail

/// Runs the tasks side by side and gives their values, in the order of the arguments: a tuple, in which the place of a
/// `Task<void>` is a `std::monostate` and a reference is a `std::reference_wrapper`; nothing if all of them are
/// `Task<void>`.
///
///     auto [first, second] = co_await whenAll(paris.run("Summarise"), rome.run("Summarise"));
///
/// *Threads*: each task begins where the call is awaited, or in the place that `onStrand` or `onScheduler` has set.
/// They begin one after the other, each up to its first wait; side by side is what they wait for. On one strand, or on
/// the thread that an ordinary thread waits with, tasks that compute take turns.
///
/// *Errors*: the first failure stops the other tasks; when all of them have ended, it is thrown. Failures and values of
/// the others are dropped. A task that would have begun after the failure does not run at all.
///
/// *Cancellation*: a stop request of the caller reaches all tasks. The call ends when they have ended: with
/// `CancelledError` if a task took note, else with the values. A task with a stop token of its own observes that one
/// only: it is awaited, and not stopped.
///
/// *Preconditions*: no task is empty; an empty one ends the process, as anywhere.
template <typename... Ts>
Task<detail::AllValues<Ts...>> whenAll(Task<Ts>... tasks) {
  detail::TaskPack<Ts...> pack(detail::Decision::byFailure, std::move(tasks)...);
  co_await pack;
  if constexpr (!std::is_void_v<detail::AllValues<Ts...>>) co_return pack.values();
}

/// The same for any number of tasks of one type: a vector of their values, in the order of the tasks; nothing for
/// `Task<void>`.
template <typename T>
Task<detail::ListValues<T>> whenAll(std::vector<Task<T>> tasks) {
  detail::TaskList<T> list(detail::Decision::byFailure, std::move(tasks));
  co_await list;
  if constexpr (!std::is_void_v<T>) co_return list.values();
}

}  // namespace ormel
