#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "OrmelSDK/AppServerRun/Framing/AppServerLockedData.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Platform/PipeReader.h"

namespace ormel::detail {

/// Collects the standard error of a server process in an accumulator, which may outlive the process and serve several
/// of them one after the other.
///
/// *Thread safety*: all members may be called from any thread.
class StandardErrorCollector : public std::enable_shared_from_this<StandardErrorCollector> {
 public:
  explicit StandardErrorCollector(std::shared_ptr<AppServerLockedData> stderrAccumulator)
      : stderrAccumulator_(std::move(stderrAccumulator)) {}

  /// Begins to read; once.
  void start(const std::shared_ptr<PipeReader>& stderrReadHandle);

  /// All that is in the accumulator, trimmed.
  std::string text() const;

  /// Ends when nothing that the process has written is under way any more, or after `limit`: the end of standard output
  /// may be noticed before the last words on standard error.
  static Task<void> settled(std::shared_ptr<StandardErrorCollector> self, Scheduler& scheduler,
                            std::chrono::nanoseconds limit);

 private:
  void readEnded(bool atEnd);
  bool isSettledLocked() const;

  const std::shared_ptr<AppServerLockedData> stderrAccumulator_;
  mutable std::mutex lock_;
  std::shared_ptr<PipeReader> stderrReadHandle_;
  std::uint64_t readsInProgress_ = 0;
  bool atEnd_ = false;
  OneShotResolver<void> waiter_;
};

}  // namespace ormel::detail
