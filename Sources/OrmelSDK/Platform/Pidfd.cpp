#include "OrmelSDK/Platform/Pidfd.h"

#include <errno.h>
#include <signal.h>
#include <sys/wait.h>

#if defined(__linux__)
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#endif

#include "OrmelSDK/Platform/FailureInjection.h"

namespace ormel::detail {

Termination terminationFromWaitStatus(int status) noexcept {
  if (WIFEXITED(status)) return {TerminationReason::exit, WEXITSTATUS(status)};
  return {TerminationReason::uncaughtSignal, WTERMSIG(status)};
}

#if defined(__linux__)

namespace {

/// The kernel's `struct pidfd_info`, declared here because the headers of older systems lack it.
struct PidfdInfo {
  std::uint64_t mask = 0;
  std::uint64_t controlGroup = 0;
  std::uint32_t identifiers[11] = {};
  std::int32_t waitStatus = 0;
};

constexpr std::uint64_t infoHasWaitStatus = 1U << 3;
constexpr unsigned long getInfoRequest = _IOWR(0xFF, 11, PidfdInfo);
constexpr auto pidfdKind = static_cast<idtype_t>(3);

/// How a child ended that was reaped elsewhere in the process. Newer kernels remember how it ended for as long as the
/// pidfd is open.
Termination rememberedTermination(const FileDescriptor& pidfd) noexcept {
  PidfdInfo info;
  info.mask = infoHasWaitStatus;
  if (::ioctl(pidfd.number(), getInfoRequest, &info) != 0 || (info.mask & infoHasWaitStatus) == 0) return {};
  return terminationFromWaitStatus(info.waitStatus);
}

}  // namespace

FileDescriptor openPidfd(pid_t pid) noexcept {
  if (injectedFailure(SystemCall::openPidfd) != 0) return FileDescriptor();
  FileDescriptor opened(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  // Not in the place of a standard stream that the application has closed.
  if (opened.isOpen() && opened.number() <= STDERR_FILENO) opened = FileDescriptor::duplicate(opened.number());
  return opened;
}

std::optional<Termination> reapPidfd(const FileDescriptor& pidfd) noexcept {
  siginfo_t info{};
  while (::waitid(pidfdKind, static_cast<id_t>(pidfd.number()), &info, WEXITED | WNOHANG) != 0) {
    if (errno == EAGAIN) return std::nullopt;
    if (errno != EINTR) return rememberedTermination(pidfd);
  }
  if (info.si_pid == 0) return std::nullopt;
  const auto reason = info.si_code == CLD_EXITED ? TerminationReason::exit : TerminationReason::uncaughtSignal;
  return Termination{reason, info.si_status};
}

void signalPidfd(const FileDescriptor& pidfd, int signal) noexcept {
  ::syscall(SYS_pidfd_send_signal, pidfd.number(), signal, nullptr, 0);
}

#else

FileDescriptor openPidfd(pid_t) noexcept { return FileDescriptor(); }

std::optional<Termination> reapPidfd(const FileDescriptor&) noexcept { return std::nullopt; }

void signalPidfd(const FileDescriptor&, int) noexcept {}

#endif

}  // namespace ormel::detail
