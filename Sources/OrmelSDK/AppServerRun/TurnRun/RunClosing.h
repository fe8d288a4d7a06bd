#pragma once

#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/OneShot.h"

namespace ormel::detail {

/// How far the closing of a run is, and the end of its process.
///
/// *Thread safety*: none; it belongs to the strand of its run.
class RunClosing {
 public:
  enum class Stage { open, closing, closed };

  RunClosing() = default;
  RunClosing(const RunClosing&) = delete;
  RunClosing& operator=(const RunClosing&) = delete;
  ~RunClosing() { begun_.request_stop(); }

  Stage stage() const noexcept { return stage_; }
  void requireOpen() const {
    if (stage_ != Stage::open) throw ThreadRunError::streamError("The thread has been closed");
  }

  void begin() noexcept {
    stage_ = Stage::closing;
    begun_.request_stop();
  }
  /// Triggered once the closing has begun, or the run is gone; may be read on any thread.
  std::stop_token begun() const noexcept { return begun_.get_token(); }
  void complete() {
    stage_ = Stage::closed;
    for (const auto& waiter : std::exchange(waiters_, {})) waiter.resume();
  }
  void tell(OneShotResolver<void> waiter) { waiters_.push_back(std::move(waiter)); }

  /// A process is about to be started: what its end completes, from any thread.
  OneShotResolver<void> expectProcess() {
    processEnd_ = std::make_shared<OneShot<void>>("process end");
    return processEnd_->resolver();
  }
  /// The end of the process that was started last.
  const std::shared_ptr<OneShot<void>>& processEnd() const noexcept { return processEnd_; }

 private:
  Stage stage_ = Stage::open;
  std::stop_source begun_;
  std::vector<OneShotResolver<void>> waiters_;
  std::shared_ptr<OneShot<void>> processEnd_;
};

}  // namespace ormel::detail
