#pragma once

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/UniqueFunction.h"

namespace ormel::detail {

/// Where work is done that blocks for long, such as waiting for an outside command: never on a thread of the pool.
///
/// *Thread safety*: may be called from any thread.
class BlockingWork {
 public:
  virtual ~BlockingWork() = default;

  /// Runs `work`, which must not throw, soon, and never within this call.
  virtual void run(UniqueFunction<void()> work) = 0;

  /// A new thread for each piece of work, with all signals blocked.
  static BlockingWork& onThreads();
};

/// Ends when `work` has ended, and fails as it does. A caller that is cancelled does not wait for it; the work goes on,
/// so it must own what it uses.
Task<void> runBlocking(BlockingWork& where, UniqueFunction<void()> work);

}  // namespace ormel::detail
