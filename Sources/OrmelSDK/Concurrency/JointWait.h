#pragma once

#include <atomic>
#include <coroutine>
#include <cstddef>
#include <optional>
#include <stop_token>

#include "OrmelSDK/Concurrency/TaskPromise.h"

namespace ormel::detail {

/// Suspends a coroutine until several parties have checked out, the starter of the wait among them. Tasks that are
/// parties share one stop token, which follows that of the waiting coroutine.
class JointWait : public PlaceAware {
 public:
  JointWait(const JointWait&) = delete;
  JointWait& operator=(const JointWait&) = delete;

  bool await_ready() const noexcept { return false; }

  /// The token of the tasks. It lives as long as this object.
  const std::stop_token& token() const noexcept { return token_; }

 protected:
  JointWait() = default;
  ~JointWait() = default;

  /// To be called first in `await_suspend`. The starter is then a party.
  template <typename Promise>
  void begin(std::coroutine_handle<Promise> awaiting) noexcept {
    awaiting_ = awaiting;
    place_ = Place::current();
    // The tasks may leave the strand and come back to it when nothing else holds it.
    strand_ = place_.strand();
  }
  /// Makes the end of the wait cancellable by `token`.
  void follow(const std::stop_token* token) {
    if (token && token->stop_possible()) onStop_.emplace(*token, PassOn(*this));
  }
  /// To be called when the coroutine has resumed.
  void end() noexcept { onStop_.reset(); }

  void checkIn() noexcept { parties_.fetch_add(1, std::memory_order_relaxed); }
  /// Returns whether that was the last party. For any but the last, this object may be gone.
  bool checkOut() noexcept { return parties_.fetch_sub(1, std::memory_order_acq_rel) == 1; }
  /// Resumes the coroutine; for the last party.
  void resume() noexcept { place_.resume(awaiting_, item_); }

  void requestStop() noexcept {
    // A task may end, and with it this object, within the request: an awaitable of the application's may resume it.
    std::stop_source stop = stop_;
    stop.request_stop();
  }
  const Place& place() const noexcept { return place_; }

 private:
  class PassOn {
   public:
    explicit PassOn(JointWait& wait) noexcept : wait_(&wait) {}
    void operator()() const noexcept { wait_->stopRequested(); }

   private:
    JointWait* wait_;
  };

  /// The token that is followed was triggered.
  virtual void stopRequested() noexcept { requestStop(); }

  std::coroutine_handle<> awaiting_;
  Place place_;
  Ref<StrandCore> strand_;
  ResumeItem item_;
  std::atomic<std::size_t> parties_{1};
  std::stop_source stop_;
  std::stop_token token_ = stop_.get_token();
  std::optional<std::stop_callback<PassOn>> onStop_;
};

}  // namespace ormel::detail
