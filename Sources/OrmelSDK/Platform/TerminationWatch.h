#pragma once

#include <memory>
#include <mutex>

#include "OrmelSDK/Platform/ProcessHandle.h"
#include "OrmelSDK/Platform/RunningChildren.h"
#include "OrmelSDK/Platform/Spawn.h"

namespace ormel::detail {

class EventLoop;

/// One child from start to end: starts it, waits for its end on the threads of an event loop, reaps it and calls the
/// handler.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: from `begin` on the watch keeps itself alive until the child has ended.
class TerminationWatch final : public std::enable_shared_from_this<TerminationWatch> {
 public:
  /// Starts the child. Fails with `ProcessLaunchError`. To be followed by `begin`.
  TerminationWatch(const LaunchSettings& settings, const StandardStreams& streams, EndNotice notice,
                   TerminationHandler onTermination)
      : process_(spawn(settings, streams, notice)), onTermination_(std::move(onTermination)) {}
  TerminationWatch(const TerminationWatch&) = delete;
  TerminationWatch& operator=(const TerminationWatch&) = delete;
  ~TerminationWatch() { RunningChildren::shared().remove(process_); }

  /// Begins to wait. Fails with `ProcessLaunchError`; the child is then killed and reaped.
  void begin(EventLoop& loop);

  /// Releases the handler, which is then no longer called.
  void forgetHandler() noexcept;

  ProcessHandle& process() noexcept { return process_; }

 private:
  class EndDescriptor;

  /// Reaps the child if it has ended.
  bool hasEnded() noexcept;
  /// Calls the handler of a child that has.
  void tellEnd() noexcept;

  ProcessHandle process_;
  std::mutex mutex_;
  TerminationHandler onTermination_;
};

}  // namespace ormel::detail
