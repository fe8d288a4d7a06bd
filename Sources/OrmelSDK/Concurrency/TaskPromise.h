#pragma once

#include <coroutine>
#include <exception>
#include <stop_token>
#include <type_traits>
#include <utility>

#include "OrmelSDK/Concurrency/Place.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/TaskResult.h"

namespace ormel {

template <typename T>
class Task;

namespace detail {

/// Notified when a task ends. It then owns the task's frame and may destroy it.
class Completion {
 public:
  virtual void completed() noexcept = 0;

  /// Brings the task to the place where it starts.
  ResumeItem startItem;

 protected:
  Completion() noexcept = default;
  ~Completion() = default;
};

class TaskPromiseBase {
 public:
  /// Where the task starts, if not where it is awaited.
  Ref<StrandCore> startStrand;
  Scheduler* startScheduler = nullptr;
  Completion* completion = nullptr;
  /// The token of the task: its own one or that of a task that awaits it.
  const std::stop_token* stopToken = nullptr;
  std::stop_token ownStopToken;
  /// The strand on which the task was before it first left it: its awaiter may go on there.
  Ref<StrandCore> leftStrand;

  void setStopToken(std::stop_token token) noexcept {
    ownStopToken = std::move(token);
    stopToken = &ownStopToken;
  }
  bool startsElsewhere() const noexcept { return startStrand || startScheduler; }

  class FinalAwaiter {
   public:
    FinalAwaiter() noexcept {}
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> coroutine) const noexcept {
      coroutine.promise().completion->completed();
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  FinalAwaiter final_suspend() const noexcept { return {}; }
};

/// Starts a task that is awaited: in the place set for it, or else as soon as the calling coroutine, which has just
/// suspended, has returned.
void startAwaited(TaskPromiseBase& promise, std::coroutine_handle<> coroutine, Completion& completion) noexcept;

/// Starts a task that has no awaiter: in the place set for it, or else within this call.
void startAlone(TaskPromiseBase& promise, std::coroutine_handle<> coroutine, Completion& completion) noexcept;

/// Makes sure that a task started by the application can run to its end. Fails as `Scheduler::prepare`.
void prepareStart(const TaskPromiseBase& promise);
/// The same; gives the failure.
std::exception_ptr failureToStart(const TaskPromiseBase& promise) noexcept;

template <typename Promise>
concept PromiseOfTask = std::is_base_of_v<TaskPromiseBase, Promise>;

/// The stop token of the coroutine, if it has one.
template <typename Promise>
const std::stop_token* stopTokenOf(std::coroutine_handle<Promise> coroutine) noexcept {
  if constexpr (PromiseOfTask<Promise>) {
    return coroutine.promise().stopToken;
  } else {
    return nullptr;
  }
}

/// Holds a foreign awaitable, which does not resume in a place, until an adapter coroutine awaits it for a task.
template <typename Awaitable>
class Foreign {
 public:
  explicit Foreign(Awaitable&& awaitable) noexcept : awaitable_(awaitable) {}
  Awaitable&& get() const noexcept { return static_cast<Awaitable&&>(awaitable_); }

 private:
  std::remove_reference_t<Awaitable>& awaitable_;
};

/// Stands for an awaiter that lives elsewhere: g++ 12 copies an awaiter that `await_transform` returns by reference.
template <typename Awaiter>
class AwaiterReference {
 public:
  explicit AwaiterReference(Awaiter& awaiter) noexcept : awaiter_(&awaiter) {}

  decltype(auto) await_ready() const { return awaiter_->await_ready(); }
  template <typename Promise>
  decltype(auto) await_suspend(std::coroutine_handle<Promise> coroutine) const {
    return awaiter_->await_suspend(coroutine);
  }
  decltype(auto) await_resume() const { return awaiter_->await_resume(); }

 private:
  Awaiter* awaiter_;
};

template <typename Awaitable>
decltype(auto) awaiterOf(Awaitable&& awaitable) {
  if constexpr (requires { static_cast<Awaitable&&>(awaitable).operator co_await(); }) {
    return static_cast<Awaitable&&>(awaitable).operator co_await();
  } else if constexpr (requires { operator co_await(static_cast<Awaitable&&>(awaitable)); }) {
    return operator co_await(static_cast<Awaitable&&>(awaitable));
  } else {
    return AwaiterReference<std::remove_reference_t<Awaitable>>(awaitable);
  }
}

template <typename Awaitable>
using AwaitResult = decltype(awaiterOf(std::declval<Awaitable>()).await_resume());

template <typename T>
using TaskOfResult = Task<std::conditional_t<std::is_rvalue_reference_v<T>, std::remove_reference_t<T>, T>>;

template <typename Awaitable>
TaskOfResult<AwaitResult<Awaitable>> awaitForeign(Awaitable&& awaitable);

template <typename>
inline constexpr bool isTask = false;
template <typename T>
inline constexpr bool isTask<Task<T>> = true;

template <typename T>
class TaskPromiseOf : public TaskPromiseBase {
 public:
  TaskResult<T> result;

  Task<T> get_return_object() noexcept;
  void unhandled_exception() noexcept { result.setError(std::current_exception()); }

  /// Makes a task resume in its place after every await: the library's own awaiters do so themselves; any other
  /// awaitable is wrapped in an adapter coroutine.
  template <typename Awaitable>
  decltype(auto) await_transform(Awaitable&& awaitable) {
    using Plain = std::remove_cvref_t<Awaitable>;
    if constexpr (isTask<Plain>) {
      static_assert(!std::is_lvalue_reference_v<Awaitable>, "await std::move(task): a task runs only once");
      return std::forward<Awaitable>(awaitable).operator co_await();
    } else if constexpr (std::is_base_of_v<PlaceAware, Plain>) {
      return AwaiterReference<std::remove_reference_t<Awaitable>>(awaitable);
    } else {
      return awaitForeign(std::forward<Awaitable>(awaitable)).resumingAnywhere().operator co_await();
    }
  }
  template <typename Awaitable>
  decltype(auto) await_transform(Foreign<Awaitable> foreign) {
    return awaiterOf(foreign.get());
  }
};

template <typename T>
class TaskPromise final : public TaskPromiseOf<T> {
 public:
  template <typename From = T>
    requires std::is_convertible_v<From&&, T>
  void return_value(From&& value) {
    this->result.setValue(std::forward<From>(value));
  }
};

template <>
class TaskPromise<void> final : public TaskPromiseOf<void> {
 public:
  void return_void() noexcept { result.setValue(); }
};

}  // namespace detail
}  // namespace ormel
