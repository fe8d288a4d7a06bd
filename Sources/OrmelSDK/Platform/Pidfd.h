#pragma once

#include <sys/types.h>

#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// A descriptor that refers to one child, even after its process id has been reused, and becomes readable when the
/// child has ended. Not open if the system does not support it or refuses.
FileDescriptor openPidfd(pid_t pid) noexcept;

/// Reaps the child if it has ended. Absent while it runs.
std::optional<Termination> reapPidfd(const FileDescriptor& pidfd) noexcept;

void signalPidfd(const FileDescriptor& pidfd, int signal) noexcept;

/// How the child with this wait status ended.
Termination terminationFromWaitStatus(int status) noexcept;

}  // namespace ormel::detail
