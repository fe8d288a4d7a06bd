#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "OrmelSDK/Concurrency/TaskResult.h"
#include "Report.h"
#include "ormel-chat/WakePipe.h"

namespace ormel::control {

/// Where a task on the library's threads leaves its result for the main thread.
class Ending {
 public:
  void put(TaskResult<Report> result) {
    {
      const std::lock_guard lock(mutex_);
      result_ = std::move(result);
    }
    wakePipe_.wake();
  }

  std::optional<TaskResult<Report>> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(result_, std::nullopt);
  }

  const chat::WakePipe& wakePipe() const noexcept { return wakePipe_; }

 private:
  chat::WakePipe wakePipe_;
  std::mutex mutex_;
  std::optional<TaskResult<Report>> result_;
};

}  // namespace ormel::control
