#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "OrmelSDK/AppServerRun/Framing/StandardErrorCollector.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// How a process ended, as soon as that is noticed. Its output may end sooner.
///
/// *Thread safety*: all members may be called from any thread.
class TerminationNotice {
 public:
  void tell(const Termination& termination);

  /// Empty as long as no end was noticed.
  std::optional<Termination> termination() const;

  /// Ends when the end of the process was noticed, or after `limit`. One caller at a time.
  static Task<void> awaited(std::shared_ptr<TerminationNotice> self, Scheduler& scheduler,
                            std::chrono::nanoseconds limit);

 private:
  mutable std::mutex lock_;
  std::optional<Termination> termination_;
  OneShotResolver<void> waiter_;
};

/// Ends when the last words of the process have been read and its end was noticed, or after `limit`: the end of its
/// standard output may be noticed before both.
Task<void> lastWordsAndEnd(std::shared_ptr<StandardErrorCollector> errorOutput,
                           std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler,
                           std::chrono::nanoseconds limit);

}  // namespace ormel::detail
