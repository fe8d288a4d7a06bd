#pragma once

#include <signal.h>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "OrmelSDK/Concurrency/Scheduler.h"

namespace ormel::detail {

/// The threads of the library: one pool per process, started on first use.
///
/// Each thread serves the I/O context and is lent to the application for the time that it runs code of the application.
/// One thread at least is always left for the I/O: the last one is lent only after another has been started. Threads
/// that are idle beyond the usual number end after a while.
///
/// Asynchronous signals are blocked in the threads while they serve the I/O: a write to a dead peer is an error code
/// there and never a SIGPIPE, and handlers of the application's signals never run on them. Code of the application runs
/// with the signal mask of the thread that started the pool.
///
/// When the process ends, the threads that serve the I/O are stopped; those that the application holds get a moment to
/// come back, before static objects that they may still use go, and are left alone then. Work posted later is accepted
/// but never runs. A thread of the pool may end the process. In a forked child of a process that has started the pool,
/// nothing can be started or posted.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: never destroyed, so that static objects of the application may use the library until the end.
class IORuntime {
 public:
  static IORuntime& shared();

  /// Starts the pool unless it has been started. Fails with `ResourceExhaustedError`, and may be tried again; in a
  /// forked child with `ForkedProcessError`.
  void start();

  bool isStarted() const noexcept { return isStarted_.load(std::memory_order_acquire); }

  /// The context of the pool: posted work runs on any of its threads, in no order, and must not block. Starts the pool,
  /// and ends the process where that is impossible: call `start` before.
  asio::io_context& context() noexcept;

  /// Whether this process is a forked child that has the pool's memory and none of its threads.
  bool isForkedCopy() const noexcept { return isForkedCopy_.load(std::memory_order_relaxed); }

  /// The signal mask with which code of the application runs.
  const sigset_t& applicationMask();

  /// Lends the calling thread of the pool to the application, which then may block it. Gives false when it is the last
  /// thread and no other can be started: `item` is then posted again later.
  bool lendThread(WorkItem& item) noexcept;
  /// Gives the calling thread back to the pool.
  void takeThreadBack() noexcept;

  /// Asks as many of the threads that serve the I/O to end as soon as they come to it; those that are needed by then
  /// stay.
  void askToRetire(int count) noexcept;

  IORuntime(const IORuntime&) = delete;
  IORuntime& operator=(const IORuntime&) = delete;

 private:
  /// Ends the threads of a runtime when it is destroyed.
  class Ending;
  struct Retirement {};

  IORuntime() = default;
  ~IORuntime() = default;

  void startLocked();
  void makeContext();
  void dropContext() noexcept;
  void reserveRoomForTimers();
  void startThread();
  void serve() noexcept;
  /// Counts the calling thread out, if enough others serve the I/O.
  bool mayRetire() noexcept;
  void endThreads() noexcept;
  [[noreturn]] void stayAway() noexcept;

  void postAgainLater(WorkItem& item) noexcept;
  void postKeptItems() noexcept;
  void watchForIdleThreads();
  void retireIdleThreads();

  std::atomic<bool> isStarted_{false};
  std::atomic<bool> isForkedCopy_{false};
  std::atomic<bool> isEnding_{false};

  std::mutex startMutex_;
  std::optional<asio::io_context> context_;
  std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work_;
  sigset_t applicationMask_{};

  /// The threads that serve the I/O, or are about to.
  std::atomic<int> available_{0};
  /// The fewest that there were since idle threads were last looked for.
  std::atomic<int> fewestAvailable_{0};
  std::atomic<int> lent_{0};
  std::mutex endMutex_;
  std::condition_variable threadLeft_;

  std::atomic<bool> hasKeptItems_{false};
  std::mutex keptMutex_;
  WorkItem* keptItems_ = nullptr;
  std::optional<asio::steady_timer> anotherTry_;

  std::atomic<bool> isWatchingForIdle_{false};
  std::optional<asio::steady_timer> idleWatch_;
};

/// Runs the library's own work on the threads that serve the I/O. Nothing that it runs may block, or call the
/// application.
Scheduler& ioScheduler();

}  // namespace ormel::detail
