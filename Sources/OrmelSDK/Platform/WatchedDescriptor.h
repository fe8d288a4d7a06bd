#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "OrmelSDK/Concurrency/WorkItem.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/Poller.h"

namespace ormel::detail {

class EventLoop;

/// A descriptor that an event loop watches. Reads and writes on it return at once.
///
/// *Thread safety*: `watch`, `close` and the observers are called under a mutex of the derived class.
///
/// *Object lifetimes*: held by a `std::shared_ptr`, which the loop takes for the time of a call of `ready`.
class WatchedDescriptor : public std::enable_shared_from_this<WatchedDescriptor>, private WorkItem {
 public:
  WatchedDescriptor(const WatchedDescriptor&) = delete;
  WatchedDescriptor& operator=(const WatchedDescriptor&) = delete;

  /// Called by the loop: has `ready` run on a thread that serves it.
  void becameReady(bool hungUp) noexcept;

 protected:
  /// Fails with `ProcessLaunchError` when the system has no room to watch one more.
  WatchedDescriptor(EventLoop& loop, FileDescriptor descriptor);
  virtual ~WatchedDescriptor();

  /// Something has become of the descriptor. Called with no lock held, once after each change, never twice at a time;
  /// there may be nothing any more. `hungUp` stays true once the other end is closed.
  virtual void ready(bool hungUp) noexcept = 0;

  /// Has `ready` called again, after other work of the thread.
  void readyAgain() noexcept { becameReady(false); }

  /// Changes what is watched for. If the system refuses, `ready` is called as if it had come.
  void watch(Interest interest) noexcept;

  bool isOpen() const noexcept { return descriptor_.isOpen(); }
  int number() const noexcept { return descriptor_.number(); }
  void close() noexcept;

 private:
  enum class State { idle, queued, running, runningAndReady };

  void run() noexcept override;
  void discard() noexcept override { runsFor_.reset(); }
  const char* name() const noexcept override { return "descriptor"; }
  void queue() noexcept;

  EventLoop& loop_;
  FileDescriptor descriptor_;
  std::uint64_t key_ = 0;
  std::atomic<State> state_{State::idle};
  std::atomic<bool> hungUp_{false};
  /// Keeps this object alive while it is queued.
  std::shared_ptr<WatchedDescriptor> runsFor_;
};

}  // namespace ormel::detail
