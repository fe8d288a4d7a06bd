#pragma once

#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

#include "OrmelSDK/Management/OrmelControlNotification.h"
#include "ormel-chat/WakePipe.h"

namespace ormel::control {

/// Notifications on their way from the library's threads to the main thread. A reader of the output who falls behind
/// loses the oldest ones.
class NotificationQueue {
 public:
  static constexpr std::size_t mostKept = 65536;

  void put(OrmelControlNotification notification) {
    {
      const std::lock_guard lock(mutex_);
      if (notifications_.size() == mostKept) {
        notifications_.pop_front();
        ++lost_;
      }
      notifications_.push_back(std::move(notification));
    }
    wakePipe_.wake();
  }

  /// Tells that the server could not be asked; the first failure stands.
  void fail(std::exception_ptr failure) {
    {
      const std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::move(failure);
    }
    wakePipe_.wake();
  }

  std::optional<OrmelControlNotification> take() {
    const std::lock_guard lock(mutex_);
    if (notifications_.empty()) return std::nullopt;
    OrmelControlNotification first = std::move(notifications_.front());
    notifications_.pop_front();
    return first;
  }

  /// How many were lost since the last call.
  std::size_t takeLost() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lost_, 0);
  }

  std::exception_ptr failure() {
    const std::lock_guard lock(mutex_);
    return failure_;
  }

  /// Tells that no more notifications come.
  void end() {
    {
      const std::lock_guard lock(mutex_);
      hasEnded_ = true;
    }
    wakePipe_.wake();
  }

  bool hasEnded() {
    const std::lock_guard lock(mutex_);
    return hasEnded_;
  }

  const chat::WakePipe& wakePipe() const noexcept { return wakePipe_; }

 private:
  chat::WakePipe wakePipe_;
  std::mutex mutex_;
  std::deque<OrmelControlNotification> notifications_;
  std::size_t lost_ = 0;
  std::exception_ptr failure_;
  bool hasEnded_ = false;
};

}  // namespace ormel::control
