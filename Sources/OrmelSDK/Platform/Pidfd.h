#pragma once

#include <sys/types.h>

#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// A descriptor that names one child, however often its number is given out again, and becomes readable when it has
/// ended. Not open where the system has none or refuses.
FileDescriptor openPidfd(pid_t pid) noexcept;

/// Reaps the child if it has ended. Absent while it runs.
std::optional<Termination> reapPidfd(const FileDescriptor& pidfd) noexcept;

void signalPidfd(const FileDescriptor& pidfd, int signal) noexcept;

/// How the child with this wait status ended.
Termination terminationFromWaitStatus(int status) noexcept;

}  // namespace ormel::detail
