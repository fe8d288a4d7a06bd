#pragma once

#include <mutex>
#include <unordered_set>

#include "OrmelSDK/Platform/ProcessHandle.h"

namespace ormel::detail {

/// The children that are to be told when this process ends.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: never destroyed. A child is removed before it is destroyed.
class RunningChildren {
 public:
  static RunningChildren& shared();

  void add(ProcessHandle& child);
  void remove(ProcessHandle& child) noexcept;

  /// Sends SIGTERM to all.
  void terminate() noexcept;

  RunningChildren(const RunningChildren&) = delete;
  RunningChildren& operator=(const RunningChildren&) = delete;

 private:
  RunningChildren() = default;
  ~RunningChildren() = default;

  std::mutex mutex_;
  std::unordered_set<ProcessHandle*> children_;
};

}  // namespace ormel::detail
