#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

namespace ormel::detail {

/// Decides when the end of the server's process is reported.
///
/// The end of the process and the end of its output come in no fixed order, and the last output can hold the very
/// message that the client waits for. So the report (the `fallback`) is held back until the reader has seen end of
/// file, which makes it needless, or until a grace period has passed and the reader is provably idle with nothing
/// left in the pipe.
///
/// *Thread safety*: all members may be called from any thread. No callback, timer or cancellation is called under
/// the lock, except `hasUnreadBytes`.
/// *Object lifetimes*: the grace timer does not keep the coordinator alive.
class AppServerProcessExitCoordinator : public std::enable_shared_from_this<AppServerProcessExitCoordinator> {
 public:
  using CancelTimer = std::function<void()>;

  /// Calls `fire` once after `delay`, unless the returned function is called first. Cancelling after the timer has
  /// fired does nothing; a timer that fires all the same, because it could not be stopped in time, does no harm.
  using StartTimer = std::function<CancelTimer(std::chrono::nanoseconds delay, std::function<void()> fire)>;

  /// `hasUnreadBytes` tells whether the pipe holds bytes that nobody has read. It must return at once, must not
  /// throw, and must not call the coordinator.
  static std::shared_ptr<AppServerProcessExitCoordinator> create(std::function<bool()> hasUnreadBytes,
                                                                 StartTimer startTimer);

  AppServerProcessExitCoordinator(const AppServerProcessExitCoordinator&) = delete;
  AppServerProcessExitCoordinator& operator=(const AppServerProcessExitCoordinator&) = delete;

  /// A read of the pipe begins; `chunkEnqueued`, `readFoundNothing` or `readerDidReachEOF` ends it.
  void readStarted();

  /// A read found neither bytes nor the end of file.
  void readFoundNothing();

  /// A read gave bytes, which are about to be put on the reader's channel.
  void chunkEnqueued();

  /// The reader has finished with a chunk.
  void chunkProcessed();

  /// A read met end of file: the process's end needs no report any more.
  void readerDidReachEOF();

  /// The process has ended. `fallback` is called at most once, on the thread of the timer, of a `chunkProcessed` or a
  /// `readFoundNothing`, as soon as `graceNanoseconds` have passed and the reader is idle; never after end of file or
  /// `cancel`. It replaces one that is still held back.
  void processDidExit(std::chrono::nanoseconds graceNanoseconds, std::function<void()> fallback);

  /// Puts the coordinator out of use.
  void cancel();

  /// Whether the end of file has been read, whose receiver then owns the outcome.
  bool readerReachedEOF() const;

 private:
  AppServerProcessExitCoordinator(std::function<bool()> hasUnreadBytes, StartTimer startTimer);

  void graceDidPass(std::uint64_t sequence);
  bool isSettledLocked() const { return cancelled_ || readerReachedEOF_; }
  void finishReadLocked();
  std::function<void()> takeFallbackIfReadyLocked();

  const std::function<bool()> hasUnreadBytes_;
  const StartTimer startTimer_;

  mutable std::mutex lock_;
  bool readerReachedEOF_ = false;
  bool cancelled_ = false;
  // Identifies the current grace period so that a stale timer is recognised.
  std::uint64_t fallbackSequence_ = 0;
  CancelTimer fallbackTask_;
  // The grace period has passed for the current fallback.
  bool fallbackReady_ = false;
  std::function<void()> fallback_;
  std::int64_t readsInProgress_ = 0;
  std::uint64_t chunksEnqueued_ = 0;
  std::uint64_t chunksProcessed_ = 0;
};

}  // namespace ormel::detail
