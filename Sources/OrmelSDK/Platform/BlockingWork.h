#pragma once

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/UniqueFunction.h"

namespace ormel::detail {

/// Runs work that blocks for long, such as waiting for an external command, outside the pool.
///
/// *Thread safety*: may be called from any thread.
class BlockingWork {
 public:
  virtual ~BlockingWork() = default;

  /// Runs `work`, which must not throw, soon, and never within this call.
  virtual void run(UniqueFunction<void()> work) = 0;

  /// A new thread for each piece of work, with the application's signal mask. Fails with `ResourceExhaustedError`.
  static BlockingWork& onThreads();
};

/// Completes when `work` has ended, and rethrows its exception. A cancelled caller stops waiting while the work keeps
/// running, so the work must own everything it uses.
Task<void> runBlocking(BlockingWork& where, UniqueFunction<void()> work);

}  // namespace ormel::detail
