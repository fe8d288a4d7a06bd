#include "OrmelSDK/Platform/Pidfd.h"

#include <errno.h>
#include <signal.h>
#include <sys/wait.h>

#if defined(__linux__)
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <thread>
#endif

#include "OrmelSDK/Platform/FailureInjection.h"

namespace ormel::detail {

Termination terminationFromWaitStatus(int status) noexcept {
  if (WIFEXITED(status)) return {TerminationReason::exit, WEXITSTATUS(status)};
  return {TerminationReason::uncaughtSignal, WTERMSIG(status)};
}

Termination terminationFromSignalInformation(const siginfo_t& info) noexcept {
  const auto reason = info.si_code == CLD_EXITED ? TerminationReason::exit : TerminationReason::uncaughtSignal;
  return {reason, info.si_status};
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

/// How long a child can be on its way from one that is waited for to one that is remembered. The way itself takes a
/// microsecond, but the host of a virtual machine may hold up the core that is on it.
constexpr std::chrono::seconds longestWayToMemory{2};
constexpr std::chrono::microseconds pauseOnTheWay{50};

/// A kernel that remembers may still refuse a question that comes in the middle of the reaping. Older ones always do.
constexpr int refusalsTolerated = 50;

/// Asks the system how the child ended. Gives an `errno`, or 0 where `info` has the answer if there is one.
int askForEnd(const FileDescriptor& pidfd, PidfdInfo& info) noexcept {
  info.mask = infoHasWaitStatus;
  if (::ioctl(pidfd.number(), getInfoRequest, &info) != 0) return errno;
  const int injected = injectedFailure(SystemCall::rememberEnd);
  if (injected != 0) info.mask = 0;
  return injected == EAGAIN ? 0 : injected;
}

/// How a child ended that was reaped elsewhere in the process. Newer kernels remember how it ended for as long as the
/// pidfd is open.
Termination rememberedTermination(const FileDescriptor& pidfd) noexcept {
  const auto deadline = std::chrono::steady_clock::now() + longestWayToMemory;
  PidfdInfo info;
  for (int refusals = 0; refusals < refusalsTolerated;) {
    const int failure = askForEnd(pidfd, info);
    if (failure == 0 && (info.mask & infoHasWaitStatus) != 0) return terminationFromWaitStatus(info.waitStatus);
    if (failure == ESRCH) ++refusals;
    if ((failure != 0 && failure != ESRCH) || std::chrono::steady_clock::now() >= deadline) break;
    std::this_thread::sleep_for(pauseOnTheWay);
  }
  return {};
}

bool isWaitedFor(const FileDescriptor& pidfd) noexcept {
  siginfo_t info{};
  const int result = ::waitid(pidfdKind, static_cast<id_t>(pidfd.number()), &info, WEXITED | WNOHANG | WNOWAIT);
  return result == 0 || errno == ECHILD;
}

}  // namespace

FileDescriptor openPidfd(pid_t pid) noexcept {
  FileDescriptor pidfd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  keepUsablePidfd(pidfd);
  return pidfd;
}

void keepUsablePidfd(FileDescriptor& pidfd) noexcept {
  if (!pidfd.isOpen()) return;
  if (injectedFailure(SystemCall::openPidfd) != 0 || !isWaitedFor(pidfd)) return pidfd.close();
  if (pidfd.number() <= STDERR_FILENO) pidfd = FileDescriptor::duplicate(pidfd.number());
}

std::optional<Termination> reapPidfd(const FileDescriptor& pidfd) noexcept {
  siginfo_t info{};
  while (::waitid(pidfdKind, static_cast<id_t>(pidfd.number()), &info, WEXITED | WNOHANG) != 0) {
    if (errno == EAGAIN) return std::nullopt;
    if (errno != EINTR) return rememberedTermination(pidfd);
  }
  if (info.si_pid == 0) return std::nullopt;
  return terminationFromSignalInformation(info);
}

void waitAndReapPidfd(const FileDescriptor& pidfd) noexcept {
  siginfo_t info{};
  while (::waitid(pidfdKind, static_cast<id_t>(pidfd.number()), &info, WEXITED) != 0 && errno == EINTR) {
  }
}

void signalPidfd(const FileDescriptor& pidfd, int signal) noexcept {
  ::syscall(SYS_pidfd_send_signal, pidfd.number(), signal, nullptr, 0);
}

#else

FileDescriptor openPidfd(pid_t) noexcept { return FileDescriptor(); }

void keepUsablePidfd(FileDescriptor&) noexcept {}

std::optional<Termination> reapPidfd(const FileDescriptor&) noexcept { return std::nullopt; }

void waitAndReapPidfd(const FileDescriptor&) noexcept {}

void signalPidfd(const FileDescriptor&, int) noexcept {}

#endif

}  // namespace ormel::detail
