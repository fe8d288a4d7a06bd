#pragma once

#include <atomic>
#include <coroutine>
#include <cstdint>
#include <exception>
#include <optional>
#include <stop_token>
#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/TaskPromise.h"
#include "OrmelSDK/Concurrency/TaskResult.h"
#include "OrmelSDK/Concurrency/Wakeup.h"

namespace ormel {

namespace detail {

/// The part independent of the value's type. The first caller to `claim` the completion sets the result and publishes
/// it.
class OneShotStateBase : public Wakeup {
 public:
  bool claim() noexcept { return !claimed_.exchange(true, std::memory_order_acq_rel); }
  bool isClaimed() const noexcept { return claimed_.load(std::memory_order_acquire); }

  /// Makes the result visible and resumes the waiting coroutine, if there is one.
  void publish() noexcept {
    if (stage_.exchange(Stage::resolved, std::memory_order_acq_rel) == Stage::waiting) wake();
  }
  bool isResolved() const noexcept { return stage_.load(std::memory_order_acquire) == Stage::resolved; }

  /// Whether the coroutine must suspend until `publish`.
  bool beginWaiting() noexcept {
    auto expected = Stage::empty;
    return stage_.compare_exchange_strong(expected, Stage::waiting, std::memory_order_acq_rel,
                                          std::memory_order_acquire);
  }
  /// The waiting coroutine is being destroyed.
  void stopWaiting() noexcept {
    auto expected = Stage::waiting;
    if (stage_.compare_exchange_strong(expected, Stage::empty, std::memory_order_acq_rel, std::memory_order_acquire)) {
      unprepare();
    } else {
      forget();
    }
  }

  /// Moves the error out: the waiter becomes its last owner, so the waiter's thread frees it.
  virtual void fail(std::exception_ptr error) noexcept = 0;

  void addResolver() noexcept { resolvers_.fetch_add(1, std::memory_order_relaxed); }
  void removeResolver() noexcept {
    if (isClaimed()) return;
    if (resolvers_.fetch_sub(1, std::memory_order_acq_rel) == 1 && claim()) {
      fail(errorOrWantOfMemory<AbandonedError>());
    }
  }

 protected:
  explicit OneShotStateBase(const char* name) noexcept : Wakeup(name) {}

 private:
  enum class Stage { empty, waiting, resolved };

  std::atomic<bool> claimed_{false};
  std::atomic<Stage> stage_{Stage::empty};
  std::atomic<std::uint32_t> resolvers_{0};
};

template <typename T>
class OneShotState final : public OneShotStateBase {
 public:
  explicit OneShotState(const char* name) noexcept : OneShotStateBase(name) {}

  template <typename... From>
  bool resume(From&&... from) {
    if (!claim()) return false;
    try {
      result.setValue(std::forward<From>(from)...);
    } catch (...) {
      result.setError(std::current_exception());
    }
    publish();
    return true;
  }
  bool resumeWithError(std::exception_ptr error) noexcept {
    if (!claim()) return false;
    fail(std::move(error));
    return true;
  }
  void fail(std::exception_ptr error) noexcept override {
    result.setError(std::move(error));
    publish();
  }

  TaskResult<T> result;
};

template <typename T>
class [[nodiscard]] OneShotAwaiter final : public PlaceAware {
 public:
  OneShotAwaiter(OneShotState<T>& state, bool cancellable) noexcept : state_(&state), cancellable_(cancellable) {}
  OneShotAwaiter(const OneShotAwaiter&) = delete;
  OneShotAwaiter& operator=(const OneShotAwaiter&) = delete;
  ~OneShotAwaiter() {
    if (!suspended_) return;
    onStop_.reset();
    state_->stopWaiting();
  }

  bool await_ready() const noexcept { return state_->isResolved(); }

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> coroutine) {
    const auto* token = cancellable_ ? stopTokenOf(coroutine) : nullptr;
    state_->prepare(coroutine);
    suspended_ = true;
    if (token && token->stop_possible()) onStop_.emplace(*token, CancelWait(*state_));
    if (state_->beginWaiting()) return true;
    suspended_ = false;
    state_->unprepare();
    return false;
  }

  T await_resume() {
    suspended_ = false;
    onStop_.reset();
    return state_->result.take();
  }

 private:
  class CancelWait {
   public:
    explicit CancelWait(OneShotState<T>& state) noexcept : state_(&state) {}
    void operator()() const noexcept {
      if (!state_->isClaimed()) state_->resumeWithError(errorOrWantOfMemory<CancelledError>());
    }

   private:
    OneShotState<T>* state_;
  };

  /// Held by the `OneShot` until the wait begins, and then by the wait.
  OneShotState<T>* state_;
  std::optional<std::stop_callback<CancelWait>> onStop_;
  bool cancellable_;
  bool suspended_ = false;
};

}  // namespace detail

/// The right to complete a `OneShot`. Copies share it.
///
/// *Thread safety*: any number of copies may be used by any threads at a time.
///
/// *Object lifetimes*: may outlive the `OneShot`. If the last copy is destroyed before completion, the wait fails with
/// `AbandonedError`.
template <typename T>
class OneShotResolver {
 public:
  OneShotResolver() noexcept = default;
  explicit OneShotResolver(detail::Ref<detail::OneShotState<T>> state) noexcept : state_(std::move(state)) {
    state_->addResolver();
  }
  OneShotResolver(const OneShotResolver& other) noexcept : state_(other.state_) {
    if (state_) state_->addResolver();
  }
  OneShotResolver(OneShotResolver&& other) noexcept = default;
  OneShotResolver& operator=(OneShotResolver other) noexcept {
    std::swap(state_, other.state_);
    return *this;
  }
  ~OneShotResolver() {
    if (state_) state_->removeResolver();
  }

  /// Completes it with a value made of the arguments. False, with nothing done, if it was completed before.
  template <typename... From>
  bool resume(From&&... from) const {
    return state_ && state_->resume(std::forward<From>(from)...);
  }

  /// Completes it with an error: an exception, or a pointer to one. False if it was completed before.
  template <typename E>
  bool fail(E&& error) const {
    if constexpr (std::is_convertible_v<E&&, std::exception_ptr>) {
      return state_ && state_->resumeWithError(std::forward<E>(error));
    } else {
      return state_ && state_->resumeWithError(std::make_exception_ptr(std::forward<E>(error)));
    }
  }

 private:
  detail::Ref<detail::OneShotState<T>> state_;
};

/// A single-use promise: one coroutine awaits the value that another party provides once.
///
/// The first attempt to complete it wins, be it a value, an error, a cancellation or the loss of the last resolver;
/// each later attempt returns false and changes nothing. The waiting coroutine is never resumed within the completing
/// call: it resumes as a piece of its own strand, or of its scheduler.
///
/// *Thread safety*: may be completed from any threads at a time; one coroutine waits, once.
///
/// *Object lifetimes*: the shared state lives as long as this object, a resolver or a wait. Destroying the `OneShot`
/// while it is awaited changes nothing. A coroutine that is destroyed while it waits, which has to happen where it
/// would have been resumed, is not resumed; a later completion still succeeds.
///
/// *Cancellation*: by the stop token of the waiting task:
///
/// | state                     | a stop request                                                      |
/// |---------------------------|---------------------------------------------------------------------|
/// | not awaited, not complete | does nothing yet; a `wait` after it throws `CancelledError` at once |
/// | awaited                   | completes it: the wait throws `CancelledError`                      |
/// | complete                  | does nothing: the wait gives the value or error                     |
///
/// *Errors*: `wait` throws the error it was completed with, `CancelledError`, or `AbandonedError`.
template <typename T = void>
class OneShot {
 public:
  explicit OneShot(const char* name = "one-shot")
      : state_(detail::Ref<detail::OneShotState<T>>::adopt(new detail::OneShotState<T>(name))) {}

  OneShot(OneShot&&) noexcept = default;
  OneShot& operator=(OneShot&&) noexcept = default;
  OneShot(const OneShot&) = delete;
  OneShot& operator=(const OneShot&) = delete;
  ~OneShot() = default;

  OneShotResolver<T> resolver() const noexcept { return OneShotResolver<T>(state_); }

  /// The same as the resolver's.
  template <typename... From>
  bool resume(From&&... from) const {
    return state_->resume(std::forward<From>(from)...);
  }
  template <typename E>
  bool fail(E&& error) const {
    return resolver().fail(std::forward<E>(error));
  }

  bool isComplete() const noexcept { return state_->isResolved(); }

  /// `co_await oneShot.wait()`: the value, moved out.
  detail::OneShotAwaiter<T> wait() const noexcept { return {*state_, true}; }

  /// Like `wait`, but ignores the stop token: for callers that handle cancellation themselves.
  detail::OneShotAwaiter<T> waitThroughCancellation() const noexcept { return {*state_, false}; }

 private:
  detail::Ref<detail::OneShotState<T>> state_;
};

}  // namespace ormel
