#include "OrmelSDK/AppServerRun/Launch/AppServerProcessExitCoordinator.h"

#include <utility>

#include "OrmelSDK/Base/CheckedCounter.h"

namespace ormel::detail {

namespace {

void callIfAny(const std::function<void()>& callback) {
  if (callback) callback();
}

}  // namespace

std::shared_ptr<AppServerProcessExitCoordinator> AppServerProcessExitCoordinator::create(
    std::function<bool()> hasUnreadBytes, StartTimer startTimer) {
  return std::shared_ptr<AppServerProcessExitCoordinator>(
      new AppServerProcessExitCoordinator(std::move(hasUnreadBytes), std::move(startTimer)));
}

AppServerProcessExitCoordinator::AppServerProcessExitCoordinator(std::function<bool()> hasUnreadBytes,
                                                                 StartTimer startTimer)
    : hasUnreadBytes_(std::move(hasUnreadBytes)), startTimer_(std::move(startTimer)) {}

void AppServerProcessExitCoordinator::readStarted() {
  const std::lock_guard guard(lock_);
  if (!isSettledLocked()) ++readsInProgress_;
}

void AppServerProcessExitCoordinator::readFoundNothing() {
  std::function<void()> taken;
  {
    const std::lock_guard guard(lock_);
    finishReadLocked();
    taken = takeFallbackIfReadyLocked();
  }
  callIfAny(taken);
}

void AppServerProcessExitCoordinator::chunkEnqueued() {
  const std::lock_guard guard(lock_);
  finishReadLocked();
  incrementCounter(chunksEnqueued_);
}

void AppServerProcessExitCoordinator::chunkProcessed() {
  std::function<void()> taken;
  {
    const std::lock_guard guard(lock_);
    incrementCounter(chunksProcessed_);
    taken = takeFallbackIfReadyLocked();
  }
  callIfAny(taken);
}

// The next operations move what they drop into locals, so that it is destroyed outside of the lock too: it may own
// anything.

void AppServerProcessExitCoordinator::readerDidReachEOF() {
  std::function<void()> dropped;
  CancelTimer timer;
  {
    const std::lock_guard guard(lock_);
    finishReadLocked();
    readerReachedEOF_ = true;
    fallbackReady_ = false;
    dropped = std::exchange(fallback_, nullptr);
    timer = std::exchange(fallbackTask_, nullptr);
  }
  callIfAny(timer);
}

void AppServerProcessExitCoordinator::processDidExit(std::chrono::nanoseconds graceNanoseconds,
                                                     std::function<void()> fallback) {
  std::uint64_t sequence = 0;
  {
    const std::lock_guard guard(lock_);
    if (isSettledLocked()) return;
    incrementCounter(fallbackSequence_);
    sequence = fallbackSequence_;
    std::swap(fallback_, fallback);
    fallbackReady_ = false;
  }
  CancelTimer timer = startTimer_(graceNanoseconds, [weak = weak_from_this(), sequence] {
    if (const auto coordinator = weak.lock()) coordinator->graceDidPass(sequence);
  });
  {
    const std::lock_guard guard(lock_);
    // Either the new timer takes the place of an old one, or it came too late itself.
    if (!isSettledLocked() && fallbackSequence_ == sequence) std::swap(fallbackTask_, timer);
  }
  callIfAny(timer);
}

bool AppServerProcessExitCoordinator::readerReachedEOF() const {
  const std::lock_guard guard(lock_);
  return readerReachedEOF_;
}

void AppServerProcessExitCoordinator::cancel() {
  std::function<void()> dropped;
  CancelTimer timer;
  {
    const std::lock_guard guard(lock_);
    cancelled_ = true;
    incrementCounter(fallbackSequence_);
    fallbackReady_ = false;
    dropped = std::exchange(fallback_, nullptr);
    timer = std::exchange(fallbackTask_, nullptr);
  }
  callIfAny(timer);
}

void AppServerProcessExitCoordinator::graceDidPass(std::uint64_t sequence) {
  CancelTimer finished;
  std::function<void()> taken;
  {
    const std::lock_guard guard(lock_);
    if (isSettledLocked() || fallbackSequence_ != sequence) return;
    fallbackReady_ = true;
    finished = std::exchange(fallbackTask_, nullptr);
    taken = takeFallbackIfReadyLocked();
  }
  callIfAny(taken);
}

void AppServerProcessExitCoordinator::finishReadLocked() {
  if (readsInProgress_ >= 1) --readsInProgress_;
}

std::function<void()> AppServerProcessExitCoordinator::takeFallbackIfReadyLocked() {
  const bool idle = readsInProgress_ == 0 && chunksProcessed_ >= chunksEnqueued_;
  if (!fallbackReady_ || isSettledLocked() || !idle || hasUnreadBytes_()) return nullptr;
  fallbackReady_ = false;
  return std::exchange(fallback_, nullptr);
}

}  // namespace ormel::detail
