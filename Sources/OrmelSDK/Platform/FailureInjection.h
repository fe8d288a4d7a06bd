#pragma once

#include <atomic>

namespace ormel::detail {

/// The calls of the system that a start makes, and that can find no room; and the one that may not know yet how a child
/// ended.
enum class SystemCall { startThread, makeContext, makePipe, duplicate, watch, spawn, openPidfd, rememberEnd };

/// Asked before each such call: gives the `errno` that the call is to fail with, or 0.
using FailureInjector = int (*)(SystemCall call);

/// A seam for tests; null outside of them.
inline std::atomic<FailureInjector> failureInjector{nullptr};

inline int injectedFailure(SystemCall call) noexcept {
  const FailureInjector injector = failureInjector.load(std::memory_order_relaxed);
  return injector ? injector(call) : 0;
}

}  // namespace ormel::detail
