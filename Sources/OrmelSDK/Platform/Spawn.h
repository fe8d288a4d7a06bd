#pragma once

#include <sys/types.h>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// The descriptors of this process that become the child's standard streams.
struct StandardStreams {
  static constexpr int inherited = -1;

  int input = inherited;
  int output = inherited;
  int error = inherited;
};

/// How the end of a child is detected.
enum class EndNotice {
  /// Uses a system descriptor that refers to the child where that exists, else a thread.
  automatic,
  /// Uses a thread that waits for this one child.
  waiterThread,
};

/// A child that has just been started. Its owner must reap it.
struct SpawnedChild {
  pid_t pid = 0;
  /// Refers to this child from its birth on, so that its end is known whoever reaps it; see `Pidfd.h`. Not open where
  /// the system has no such descriptor, or a waiting thread was asked for.
  FileDescriptor pidfd;
};

/// Starts a program in a child that has the given standard streams and no other descriptor of ours, default signal
/// dispositions and an empty signal mask, regardless of those of this process.
/// Fails with `ProcessLaunchError`. May be called from any thread.
SpawnedChild spawn(const LaunchSettings& settings, const StandardStreams& streams,
                   EndNotice notice = EndNotice::automatic);

}  // namespace ormel::detail
