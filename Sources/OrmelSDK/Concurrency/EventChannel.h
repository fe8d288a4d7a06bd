#pragma once

#include <atomic>
#include <condition_variable>
#include <coroutine>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/EventBatch.h"
#include "OrmelSDK/Concurrency/TaskPromise.h"
#include "OrmelSDK/Concurrency/UniqueFunction.h"
#include "OrmelSDK/Concurrency/Wakeup.h"

namespace ormel {

/// The side that ended an event channel.
enum class ChannelTermination {
  /// The producer finished it or failed it.
  producerEnded,
  /// The consumer cancelled or dropped it.
  consumerGone,
};

/// The maximum number of undelivered events that a channel keeps.
class ChannelLimit {
 public:
  static constexpr ChannelLimit unbounded() noexcept { return ChannelLimit(0); }
  /// The newest `count`, at least one; older ones are dropped without notice.
  static constexpr ChannelLimit newest(std::size_t count) noexcept { return ChannelLimit(count == 0 ? 1 : count); }

  constexpr bool isUnbounded() const noexcept { return count_ == 0; }
  constexpr std::size_t count() const noexcept { return count_; }

 private:
  explicit constexpr ChannelLimit(std::size_t count) noexcept : count_(count) {}
  std::size_t count_;
};

namespace detail {

using TerminationCallback = UniqueFunction<void(ChannelTermination)>;

/// Wakes the waiting consumer. Allocated separately from the channel: a coroutine destroyed after waking leaves this
/// object queued, so the next waiter needs another.
class ConsumerWait final : public Wakeup {
 public:
  explicit ConsumerWait(const char* name) noexcept : Wakeup(name) {}
};

template <typename T>
class EventChannelState final : public RefCounted {
 public:
  EventChannelState(ChannelLimit limit, const char* name)
      : limit_(limit), name_(name), wait_(Ref<ConsumerWait>::adopt(new ConsumerWait(name))) {}

  // The producers' side.

  bool yield(T&& value) {
    std::optional<T> dropped;
    Waiter waiter;
    {
      const std::lock_guard lock(mutex_);
      if (termination_) return false;
      if (!limit_.isUnbounded() && arrived_.size() == limit_.count()) {
        dropped.emplace(std::move(arrived_.front()));
        arrived_.popFront();
      }
      arrived_.emplaceBack(std::move(value));
      waiter = std::exchange(waiter_, {});
    }
    wakeUp(waiter);
    return true;
  }

  bool yieldAll(EventBatch<T>&& events) {
    if (!limit_.isUnbounded()) {
      for (; !events.empty(); events.popFront()) {
        if (!yield(std::move(events.front()))) return false;
      }
      return true;
    }
    Waiter waiter;
    {
      const std::lock_guard lock(mutex_);
      if (termination_) return false;
      arrived_.append(std::move(events));
      if (!arrived_.empty()) waiter = std::exchange(waiter_, {});
    }
    wakeUp(waiter);
    return true;
  }

  /// Moves the error out: the consumer becomes its last owner, so the consumer's thread frees it.
  bool end(std::exception_ptr error) {
    return terminate(ChannelTermination::producerEnded, [&] { error_ = std::move(error); });
  }

  void setTerminationCallback(TerminationCallback callback) {
    std::optional<ChannelTermination> already;
    {
      const std::lock_guard lock(mutex_);
      already = termination_;
      if (!already) std::swap(onTermination_, callback);
    }
    if (already && callback) callback(*already);
  }

  bool isOpen() const {
    const std::lock_guard lock(mutex_);
    return !termination_;
  }

  void addProducer() noexcept { producers_.fetch_add(1, std::memory_order_relaxed); }
  void removeProducer() {
    if (producers_.fetch_sub(1, std::memory_order_acq_rel) == 1 && isOpen()) {
      end(errorOrWantOfMemory<AbandonedError>());
    }
  }

  // The consumer's side.

  void cancel() {
    EventBatch<T> undelivered;
    terminate(ChannelTermination::consumerGone, [] {});
    {
      const std::lock_guard lock(mutex_);
      error_ = nullptr;
      undelivered.swap(arrived_);
    }
    taken_.clear();
  }

  /// Whether `next` need not wait.
  bool isReady() {
    if (!taken_.empty()) return true;
    const std::lock_guard lock(mutex_);
    return isReadyLocked();
  }

  /// Records the coroutine, which is about to suspend.
  void prepare(std::coroutine_handle<> coroutine) {
    if (!wait_) wait_ = Ref<ConsumerWait>::adopt(new ConsumerWait(name_));
    wait_->prepare(coroutine);
  }

  /// Returns true if the coroutine must suspend; otherwise `prepare` has been undone.
  bool beginWaiting() {
    {
      const std::lock_guard lock(mutex_);
      if (!isReadyLocked() && !stopped_) {
        waiter_.coroutine = wait_.get();
        return true;
      }
    }
    wait_->unprepare();
    return false;
  }

  /// The waiting coroutine is being destroyed.
  void stopWaiting() {
    Waiter waiter;
    {
      const std::lock_guard lock(mutex_);
      waiter = std::exchange(waiter_, {});
      stopped_ = false;
    }
    if (waiter.coroutine) {
      wait_->unprepare();
    } else {
      wait_->forget();
      wait_ = {};
    }
  }

  void stopWait() {
    Waiter waiter;
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
      waiter = std::exchange(waiter_, {});
    }
    wakeUp(waiter);
  }

  void waitBlocking() {
    requireBlockingAllowed();
    std::unique_lock lock(mutex_);
    while (taken_.empty() && !isReadyLocked()) {
      waiter_.thread = true;
      somethingArrived_.wait(lock);
    }
    waiter_ = {};
  }

  /// The next event, or nothing at the end. Throws the error that the channel failed with, once, or `CancelledError`.
  std::optional<T> take() {
    if (!fillTaken()) return std::nullopt;
    std::optional<T> event(std::move(taken_.front()));
    taken_.popFront();
    return event;
  }

  /// The same with all events that are there; none at the end.
  EventBatch<T> takeAll() {
    fillTaken();
    return std::move(taken_);
  }

 private:
  /// The waiting consumer, a coroutine or a thread; empty if none waits.
  struct Waiter {
    ConsumerWait* coroutine = nullptr;
    bool thread = false;
  };

  /// Whether there is an event for the consumer, which is then in `taken_`.
  bool fillTaken() {
    if (!taken_.empty()) return true;
    bool stopped = false;
    std::exception_ptr error;
    {
      const std::lock_guard lock(mutex_);
      stopped = std::exchange(stopped_, false);
      takeArrivedLocked();
      if (taken_.empty()) error = std::exchange(error_, nullptr);
      if (termination_) stopped = false;
    }
    if (error) std::rethrow_exception(error);
    if (taken_.empty() && stopped) throw CancelledError();
    return !taken_.empty();
  }

  template <typename Note>
  bool terminate(ChannelTermination termination, Note note) {
    TerminationCallback callback;
    Waiter waiter;
    {
      const std::lock_guard lock(mutex_);
      if (termination_) return false;
      termination_ = termination;
      note();
      callback = std::move(onTermination_);
      waiter = std::exchange(waiter_, {});
    }
    wakeUp(waiter);
    if (callback) callback(termination);
    return true;
  }

  void wakeUp(Waiter waiter) {
    if (waiter.coroutine) waiter.coroutine->wake();
    if (waiter.thread) somethingArrived_.notify_one();
  }

  bool isReadyLocked() const { return !arrived_.empty() || termination_; }

  /// Takes all events of an unbounded channel at once, so that most events cost the consumer no lock. Events of a
  /// bounded channel stay in `arrived_`, where newer ones can evict them.
  void takeArrivedLocked() {
    if (limit_.isUnbounded()) {
      taken_.swap(arrived_);
    } else if (!arrived_.empty()) {
      taken_.emplaceBack(std::move(arrived_.front()));
      arrived_.popFront();
    }
  }

  const ChannelLimit limit_;
  const char* const name_;
  std::atomic<std::uint32_t> producers_{0};

  mutable std::mutex mutex_;
  std::condition_variable somethingArrived_;
  EventBatch<T> arrived_;
  std::optional<ChannelTermination> termination_;
  std::exception_ptr error_;
  TerminationCallback onTermination_;
  Waiter waiter_;
  bool stopped_ = false;

  // Accessed by the consumer only.
  /// Events taken out of `arrived_`, not yet delivered.
  EventBatch<T> taken_;
  /// Reused for the next waiting coroutine unless it is still queued for an earlier one.
  Ref<ConsumerWait> wait_;
};

/// Waits until a channel has something for its consumer.
template <typename T>
class ChannelAwaiter : public PlaceAware {
 public:
  explicit ChannelAwaiter(Ref<EventChannelState<T>> state) noexcept : state_(std::move(state)) {}
  ChannelAwaiter(const ChannelAwaiter&) = delete;
  ChannelAwaiter& operator=(const ChannelAwaiter&) = delete;

  bool await_ready() const { return state_->isReady(); }

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> coroutine) {
    const auto* token = stopTokenOf(coroutine);
    state_->prepare(coroutine);
    suspended_ = true;
    if (token && token->stop_possible()) onStop_.emplace(*token, StopWait(*state_));
    // If this returns true, the coroutine may already be running on another thread.
    if (state_->beginWaiting()) return true;
    suspended_ = false;
    return false;
  }

 protected:
  ~ChannelAwaiter() {
    if (!suspended_) return;
    onStop_.reset();
    state_->stopWaiting();
  }

  EventChannelState<T>& resumed() {
    suspended_ = false;
    onStop_.reset();
    return *state_;
  }

 private:
  class StopWait {
   public:
    explicit StopWait(EventChannelState<T>& state) noexcept : state_(&state) {}
    void operator()() const noexcept { state_->stopWait(); }

   private:
    EventChannelState<T>* state_;
  };

  Ref<EventChannelState<T>> state_;
  std::optional<std::stop_callback<StopWait>> onStop_;
  bool suspended_ = false;
};

template <typename T>
class [[nodiscard]] NextEventAwaiter final : public ChannelAwaiter<T> {
 public:
  using ChannelAwaiter<T>::ChannelAwaiter;
  std::optional<T> await_resume() { return this->resumed().take(); }
};

template <typename T>
class [[nodiscard]] NextBatchAwaiter final : public ChannelAwaiter<T> {
 public:
  using ChannelAwaiter<T>::ChannelAwaiter;
  EventBatch<T> await_resume() { return this->resumed().takeAll(); }
};

}  // namespace detail

template <typename T>
class EventChannel;

/// The producing end of an `EventChannel`. Copies share it.
///
/// *Thread safety*: any number of copies may be used by any threads at a time. No member blocks or runs a consumer's
/// code.
///
/// *Object lifetimes*: when the last copy goes and the channel is still open, the channel fails with `AbandonedError`.
///
/// *Errors*: once either side has ended the channel, the members do nothing and return false.
template <typename T>
class EventProducer {
 public:
  EventProducer() noexcept = default;
  EventProducer(const EventProducer& other) noexcept : state_(other.state_) {
    if (state_) state_->addProducer();
  }
  EventProducer(EventProducer&& other) noexcept = default;
  EventProducer& operator=(EventProducer other) noexcept {
    std::swap(state_, other.state_);
    return *this;
  }
  ~EventProducer() {
    if (state_) state_->removeProducer();
  }

  /// Adds an event at the end.
  bool yield(T event) const { return state_ && state_->yield(std::move(event)); }

  /// Adds all these events at the end, with one wake-up of the consumer.
  bool yieldAll(EventBatch<T> events) const { return state_ && state_->yieldAll(std::move(events)); }

  /// Ends the channel; the consumer still gets the events before.
  bool finish() const { return state_ && state_->end(nullptr); }

  /// The same, and then `next` throws the error: an exception, or a pointer to one.
  template <typename E>
  bool fail(E&& error) const {
    if constexpr (std::is_convertible_v<E&&, std::exception_ptr>) {
      return state_ && state_->end(std::forward<E>(error));
    } else {
      return state_ && state_->end(std::make_exception_ptr(std::forward<E>(error)));
    }
  }

  bool isOpen() const { return state_ && state_->isOpen(); }

  /// Sets the callback that is called once when the channel ends, with the side that ended it, on the thread that did
  /// so, without a lock held. A second callback replaces the first. If the channel has already ended it is called at
  /// once.
  void onTermination(detail::TerminationCallback callback) const {
    if (state_) state_->setTerminationCallback(std::move(callback));
  }

 private:
  friend class EventChannel<T>;
  explicit EventProducer(detail::Ref<detail::EventChannelState<T>> state) noexcept : state_(std::move(state)) {
    state_->addProducer();
  }

  detail::Ref<detail::EventChannelState<T>> state_;
};

/// A sequence of events that arrive over time, from producers on any thread to one consumer:
/// `while (auto event = co_await events.next())`, or, blocking, `for (const auto& event : events)`.
///
/// *Thread safety*: one consumer at a time. A waiting coroutine is resumed where it was, never within a producer's
/// call.
///
/// *Object lifetimes*: move-only. Destroying it is `cancel`. A coroutine that is destroyed while it waits, which has to
/// happen where it would have been resumed, is not resumed and loses no event.
///
/// *Cancellation*:
///
/// | state of the consumer | stop request of its task                | `cancel`, or destruction            |
/// |-----------------------|-----------------------------------------|-------------------------------------|
/// | not waiting           | an event that is there is still given,  | ends the channel, drops what was not|
/// |                       | else `next` throws `CancelledError`     | delivered; `next` gives nothing     |
/// | waiting               | `next` throws `CancelledError`; the     | the same, and the wait ends         |
/// |                       | channel stays open and loses nothing    |                                     |
/// | at the end            | does nothing                            | does nothing                        |
///
/// *Errors*: when the producer has failed the channel, `next` throws that error once, after all earlier events, and
/// then returns nothing. It throws `CancelledError` as above, and `AbandonedError` if all producers went without ending
/// it.
template <typename T>
class EventChannel {
 public:
  /// Both ends of a new channel.
  static std::pair<EventProducer<T>, EventChannel> make(ChannelLimit limit = ChannelLimit::unbounded(),
                                                        const char* name = "event") {
    auto state = detail::Ref<detail::EventChannelState<T>>::adopt(new detail::EventChannelState<T>(limit, name));
    return {EventProducer<T>(state), EventChannel(state)};
  }

  EventChannel() noexcept = default;
  EventChannel(EventChannel&&) noexcept = default;
  EventChannel& operator=(EventChannel&& other) noexcept {
    if (this != &other) {
      cancel();
      state_ = std::move(other.state_);
    }
    return *this;
  }
  ~EventChannel() { cancel(); }

  /// `co_await events.next()`: the next event, or nothing at the end.
  ///
  /// *Preconditions*: not moved from.
  detail::NextEventAwaiter<T> next() noexcept { return detail::NextEventAwaiter<T>(state_); }

  /// `co_await events.nextBatch()`: as many available events as can be taken at once, at least one, or none at the end.
  /// Otherwise like `next`; for consumers that forward events or process them in bulk.
  ///
  /// *Preconditions*: not moved from.
  detail::NextBatchAwaiter<T> nextBatch() noexcept { return detail::NextBatchAwaiter<T>(state_); }

  /// Whether `next` would not have to wait: there is an event, or the channel has ended.
  ///
  /// *Preconditions*: not moved from.
  bool isReady() const { return state_->isReady(); }

  /// The next event if there is one now, else nothing; never waits, so it may be called anywhere. Throws the error that
  /// the channel failed with, once, after all earlier events. Nothing is also what it returns at the end, which is
  /// known by `isReady`.
  ///
  ///     while (auto event = events.tryNext()) show(*event);      // all that has come since the last frame
  ///
  /// *Preconditions*: not moved from.
  std::optional<T> tryNext() {
    if (!state_->isReady()) return std::nullopt;
    return state_->take();
  }

  /// The next event, or nothing at the end; blocks the calling thread. Throws `WouldDeadlockError` on a thread of the
  /// library. Not cancelled by stop tokens.
  std::optional<T> nextBlocking() {
    state_->waitBlocking();
    return state_->take();
  }

  /// Ends the channel from this side: the producers learn of it, and events not yet delivered are dropped.
  void cancel() noexcept {
    if (state_) state_->cancel();
  }

  /// Iterates over the events as they arrive, blocking like `nextBlocking`.
  class Iterator {
   public:
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::input_iterator_tag;

    explicit Iterator(EventChannel& channel) : channel_(&channel), event_(channel.nextBlocking()) {}

    const T& operator*() const noexcept { return *event_; }
    const T* operator->() const noexcept { return &*event_; }
    Iterator& operator++() {
      event_ = channel_->nextBlocking();
      return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const Iterator& iterator, std::default_sentinel_t) noexcept { return !iterator.event_; }

   private:
    EventChannel* channel_;
    std::optional<T> event_;
  };

  Iterator begin() { return Iterator(*this); }
  std::default_sentinel_t end() const noexcept { return {}; }

 private:
  explicit EventChannel(detail::Ref<detail::EventChannelState<T>> state) noexcept : state_(std::move(state)) {}

  detail::Ref<detail::EventChannelState<T>> state_;
};

}  // namespace ormel
