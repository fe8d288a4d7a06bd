#pragma once

#include <coroutine>
#include <exception>
#include <stop_token>
#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/TaskPromise.h"
#include "OrmelSDK/Concurrency/TaskResult.h"

namespace ormel {

namespace detail {

/// The frame of a task that has not ended.
template <typename T>
class TaskFrame {
 public:
  using Handle = std::coroutine_handle<TaskPromise<T>>;

  TaskFrame() noexcept = default;
  explicit TaskFrame(Handle handle) noexcept : handle_(handle) {}
  TaskFrame(TaskFrame&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  TaskFrame& operator=(TaskFrame&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~TaskFrame() {
    if (handle_) handle_.destroy();
  }

  Handle handle() const noexcept { return handle_; }
  TaskPromise<T>& promise() const noexcept { return handle_.promise(); }

 private:
  Handle handle_;
};

template <typename T>
class [[nodiscard]] TaskAwaiter final : public PlaceAware, private Completion {
 public:
  TaskAwaiter(TaskFrame<T> frame, bool mayLeave) noexcept : frame_(std::move(frame)), mayLeave_(mayLeave) {}
  TaskAwaiter(const TaskAwaiter&) = delete;
  TaskAwaiter& operator=(const TaskAwaiter&) = delete;

  bool await_ready() const noexcept { return false; }

  template <typename Promise>
  auto await_suspend(std::coroutine_handle<Promise> awaiting) noexcept {
    if constexpr (PromiseOfTask<Promise>) {
      suspend(awaiting);
    } else {
      auto& promise = frame_.promise();
      if (auto failure = failureToStart(promise)) {
        promise.result.setError(std::move(failure));
        return false;
      }
      suspend(awaiting);
      return true;
    }
  }

  T await_resume() { return frame_.promise().result.take(); }

 private:
  template <typename Promise>
  void suspend(std::coroutine_handle<Promise> awaiting) noexcept {
    awaiting_ = awaiting;
    place_ = Place::current();
    auto& promise = frame_.promise();
    if (!promise.stopToken) promise.stopToken = stopTokenOf(awaiting);
    if (!PromiseOfTask<Promise> || mayLeave_ || promise.startsElsewhere()) leftStrand_ = place_.strand();
    startAwaited(promise, frame_.handle(), *this);
  }
  void completed() noexcept override { place_.resume(awaiting_, startItem); }

  TaskFrame<T> frame_;
  std::coroutine_handle<> awaiting_;
  Place place_;
  Ref<StrandCore> leftStrand_;
  bool mayLeave_;
};

/// Lets a thread wait for the end of a task.
void runAndBlock(TaskPromiseBase& promise, std::coroutine_handle<> coroutine);

/// Calls the application's callback where its code may run.
template <typename T, typename Callback>
class CallbackCompletion final : public Completion, private WorkItem {
 public:
  CallbackCompletion(TaskFrame<T> frame, Callback callback)
      : frame_(std::move(frame)), callback_(std::move(callback)) {}

  void completed() noexcept override {
    if (onThreadOfApplication()) {
      call();
    } else {
      Place().post(*this);
    }
  }

  void begin() noexcept { startAlone(frame_.promise(), frame_.handle(), *this); }

 private:
  void run() noexcept override { call(); }
  void discard() noexcept override { delete this; }
  const char* name() const noexcept override { return "callback"; }

  void call() noexcept {
    auto result = std::move(frame_.promise().result);
    auto callback = std::move(callback_);
    delete this;
    callback(std::move(result));
  }

  TaskFrame<T> frame_;
  Callback callback_;
};

[[noreturn]] void failForSpentTask() noexcept;

struct TaskParts;

/// Ends the process unless a detached task that failed was cancelled: any other failure has no receiver.
void requireCancelled(const std::exception_ptr& error) noexcept;

/// Ends a task in whose value nobody is interested, where it ended.
template <typename T>
class DetachedCompletion final : public Completion {
 public:
  explicit DetachedCompletion(TaskFrame<T> frame) : frame_(std::move(frame)) {}

  void completed() noexcept override {
    const auto error = frame_.promise().result.error();
    delete this;
    if (error) requireCancelled(error);
  }

  void begin() noexcept { startAlone(frame_.promise(), frame_.handle(), *this); }

 private:
  TaskFrame<T> frame_;
};

}  // namespace detail

/// A lazily started asynchronous function: `co_await` it, or start it by `get`, `start` or `detach`. Each of these
/// consumes the task.
///
/// *Threads*: a task begins where it is awaited or started. After each `co_await` inside, it resumes where it was: on
/// its strand if it was on one, else on its scheduler. A task started by an ordinary thread has neither and resumes on
/// the thread that completes the awaited operation, which is one of the library's pool. `onStrand` and `onScheduler`
/// make the task begin, and therefore stay, elsewhere; its awaiter still resumes in its own place.
///
/// *Thread safety*: a task object is used by one thread at a time.
///
/// *Object lifetimes*: move-only. A task that was never started is destroyed without having run. A started one lives
/// until it ends; it cannot be destroyed from outside. The arguments of the function that returned the task live as
/// long as coroutine parameters do: what was passed by reference must outlive the task.
///
/// *Cancellation*: cooperative, by a `std::stop_token` that is set by `withStopToken` or `start` and inherited by the
/// tasks awaited inside. Waits of the library end with `CancelledError` when it is triggered; code reads it by
/// `co_await currentStopToken()`. A task that does neither runs to its end.
///
/// | state of the task        | a stop request                                                            |
/// |--------------------------|---------------------------------------------------------------------------|
/// | not started              | is seen by the first wait of the library that is not complete at once     |
/// | running                  | is seen by the next such wait                                             |
/// | waiting in the library   | ends the wait with `CancelledError`, on the task's strand                 |
/// | waiting for anything else| is up to the awaited object                                               |
/// | ended                    | does nothing                                                              |
///
/// *Errors*: an exception that leaves the task is thrown by `co_await` and `get`, and handed to the callback of
/// `start`.
///
/// *Preconditions*: a task that is empty (moved from, or used up) is not awaited or started; doing so ends the process.
template <typename T = void>
class [[nodiscard]] Task {
 public:
  using promise_type = detail::TaskPromise<T>;

  Task() noexcept = default;
  explicit Task(detail::TaskFrame<T> frame) noexcept : frame_(std::move(frame)) {}

  /// Whether there is something to await.
  explicit operator bool() const noexcept { return static_cast<bool>(frame_.handle()); }

  /// Sets the stop token that the task and everything it awaits observe, in place of the inherited one. An empty token
  /// shields the task from cancellation.
  Task withStopToken(std::stop_token token) && noexcept {
    promise().setStopToken(std::move(token));
    return std::move(*this);
  }

  /// Makes the task begin on the strand.
  Task onStrand(const Strand& strand) && noexcept {
    promise().startStrand = strand.core();
    return std::move(*this);
  }

  /// Makes the task begin as a piece of the scheduler, on no strand.
  Task onScheduler(Scheduler& scheduler) && noexcept {
    promise().startScheduler = &scheduler;
    return std::move(*this);
  }

  detail::TaskAwaiter<T> operator co_await() && noexcept { return {takeFrame(), mayLeave_}; }

  /// Runs the task and blocks the calling thread until it ends. Throws `WouldDeadlockError` on a thread of the library,
  /// and what `start` throws; the task is then left as it is.
  T get() {
    detail::requireBlockingAllowed();
    detail::prepareStart(promise());
    const auto frame = takeFrame();
    detail::runAndBlock(frame.promise(), frame.handle());
    return frame.promise().result.take();
  }

  /// Runs the task on its own; `callback` is called once, with its `TaskResult<T>`: within this call if the task ends
  /// in it, else on a thread of the library that it may block. The callback must not throw.
  ///
  /// Throws `ResourceExhaustedError` if the library's threads cannot be started, and `ForkedProcessError`; the task is
  /// then left as it is.
  template <typename Callback>
  void start(Callback callback) {
    detail::prepareStart(promise());
    (new detail::CallbackCompletion<T, Callback>(takeFrame(), std::move(callback)))->begin();
  }

  /// The same, with a stop token.
  template <typename Callback>
  void start(Callback callback, std::stop_token token) {
    detail::prepareStart(promise());
    promise().setStopToken(std::move(token));
    start(std::move(callback));
  }

  /// Runs the task on its own. Its value is dropped, and so is its cancellation; any other exception ends the process,
  /// with its text on standard error. Throws as `start` does.
  void detach() {
    detail::prepareStart(promise());
    (new detail::DetachedCompletion<T>(takeFrame()))->begin();
  }

  /// For tasks that await something that may resume them on any thread.
  Task resumingAnywhere() && noexcept {
    mayLeave_ = true;
    return std::move(*this);
  }

 private:
  promise_type& promise() const noexcept {
    if (!frame_.handle()) detail::failForSpentTask();
    return frame_.promise();
  }
  detail::TaskFrame<T> takeFrame() noexcept {
    if (!frame_.handle()) detail::failForSpentTask();
    return std::move(frame_);
  }

  friend struct detail::TaskParts;

  detail::TaskFrame<T> frame_;
  bool mayLeave_ = false;
};

namespace detail {

/// For what starts tasks in ways of its own.
struct TaskParts {
  template <typename T>
  static TaskFrame<T> takeFrame(Task<T>&& task) noexcept {
    return task.takeFrame();
  }
};

template <typename T>
Task<T> TaskPromiseOf<T>::get_return_object() noexcept {
  return Task<T>(TaskFrame<T>(TaskFrame<T>::Handle::from_promise(static_cast<TaskPromise<T>&>(*this))));
}

template <typename Awaitable>
TaskOfResult<AwaitResult<Awaitable>> awaitForeign(Awaitable&& awaitable) {
  co_return co_await Foreign<Awaitable>(static_cast<Awaitable&&>(awaitable));
}

class [[nodiscard]] StopTokenAwaiter final : public PlaceAware {
 public:
  StopTokenAwaiter() noexcept {}
  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> coroutine) noexcept {
    if (const auto* token = stopTokenOf(coroutine)) token_ = *token;
    return false;
  }
  std::stop_token await_resume() noexcept { return std::move(token_); }

 private:
  std::stop_token token_;
};

}  // namespace detail

/// `co_await currentStopToken()`: the token of the calling task; an empty one in any other coroutine.
inline detail::StopTokenAwaiter currentStopToken() noexcept { return {}; }

}  // namespace ormel
