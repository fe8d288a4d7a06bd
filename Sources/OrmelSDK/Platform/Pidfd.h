#pragma once

#include <signal.h>
#include <sys/types.h>

#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// A descriptor that refers to one child, even after its process id has been reused, and becomes readable when the
/// child has ended. Not open if the system does not support it or refuses.
FileDescriptor openPidfd(pid_t pid) noexcept;

/// Closes a pidfd that the system has given, unless it can do all that is asked of one here. One that has taken the
/// place of a standard stream moves up, and is closed if there is no room.
void keepUsablePidfd(FileDescriptor& pidfd) noexcept;

/// Reaps the child if it has ended. Absent while it runs. Also of a child that was reaped elsewhere it tells how it
/// ended, if the system remembers (Linux 6.15 and later); else the reason is unknown.
std::optional<Termination> reapPidfd(const FileDescriptor& pidfd) noexcept;

/// Waits until the child has ended, and reaps it.
void waitAndReapPidfd(const FileDescriptor& pidfd) noexcept;

void signalPidfd(const FileDescriptor& pidfd, int signal) noexcept;

/// How the child with this wait status ended.
Termination terminationFromWaitStatus(int status) noexcept;

/// How the child ended that `waitid` has told of.
Termination terminationFromSignalInformation(const siginfo_t& info) noexcept;

}  // namespace ormel::detail
