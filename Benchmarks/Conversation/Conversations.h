#pragma once

#include <chrono>
#include <string>

#include "OrmelSDK/Ormel.h"

namespace ormel::benchmarks {

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A conversation on a server of its own that costs as little as possible.
inline Thread newThread() {
  OrmelOptions options;
  options.ormelPathOverride = ORMEL_CONVERSATION_SERVER;
  return Ormel(options).startThread();
}

}  // namespace ormel::benchmarks
