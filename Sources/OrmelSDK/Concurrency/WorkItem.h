#pragma once

#include <coroutine>

#include "OrmelSDK/Concurrency/UniqueFunction.h"

namespace ormel {

/// A piece of work for a `Scheduler` or a `Strand`. It must not throw.
using Work = detail::UniqueFunction<void()>;

namespace detail {

/// A piece of work that brings its own link, so that queueing it allocates nothing. It may stand in one queue at a
/// time, and from the moment it is queued until it runs or is discarded it belongs to the queue.
class WorkItem {
 public:
  virtual void run() noexcept = 0;
  /// Called instead of `run` when the queue ends with the item still in it.
  virtual void discard() noexcept = 0;
  virtual const char* name() const noexcept = 0;

  WorkItem* next = nullptr;

 protected:
  WorkItem() noexcept = default;
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;
  ~WorkItem() = default;
};

/// Makes an item that runs `work` and then frees itself.
WorkItem& makeWorkItem(Work work, const char* name);

}  // namespace detail
}  // namespace ormel
