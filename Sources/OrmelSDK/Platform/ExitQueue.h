#pragma once

#include <sys/types.h>

#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// A queue of the system's that is told how one child ends, whoever reaps it. Not open where there are no such queues,
/// and when the child has already ended.
FileDescriptor openExitQueue(pid_t pid) noexcept;

/// Waits until the child has ended. Absent if the queue is not open or tells nothing.
std::optional<Termination> waitForExit(const FileDescriptor& queue) noexcept;

}  // namespace ormel::detail
