#pragma once

#include <sys/types.h>

#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// The descriptors of this process that become the child's standard streams.
struct StandardStreams {
  static constexpr int inherited = -1;

  int input = inherited;
  int output = inherited;
  int error = inherited;
};

/// Starts a program in a child that has the given standard streams and no other descriptor of ours, default signal
/// dispositions and an empty signal mask, regardless of those of this process. The caller must reap the child.
/// Fails with `ProcessLaunchError`. May be called from any thread.
pid_t spawn(const LaunchSettings& settings, const StandardStreams& streams);

}  // namespace ormel::detail
