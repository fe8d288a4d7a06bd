#include "OrmelSDK/Platform/ClonedChild.h"

#if defined(__linux__)

#include <errno.h>
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <memory>

#include "OrmelSDK/Platform/Pidfd.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/SignalMask.h"

// The child runs in the memory of this process, where a sanitizer would take what it does for the doing of the thread
// that waits for it.
#if defined(__clang__)
#define ORMEL_UNSANITIZED \
  __attribute__((no_sanitize("address", "thread", "undefined"), disable_sanitizer_instrumentation))
#else
#define ORMEL_UNSANITIZED __attribute__((no_sanitize("address", "thread", "undefined")))
#endif

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORMEL_CLONE __clone
#endif
#elif defined(__SANITIZE_THREAD__)
#define ORMEL_CLONE __clone
#endif

#if defined(ORMEL_CLONE)
// The thread sanitizer replaces `clone`, and treats every child as one with a memory of its own.
extern "C" int __clone(int (*run)(void*), void* stack, int flags, void* argument, ...);
#else
#define ORMEL_CLONE ::clone
#endif

namespace ormel::detail {

namespace {

/// The messages between a child and the thread that waits for it.
struct Birth {
  const ChildPlan& plan;
  /// Why the child could not become its program.
  volatile int failure = 0;
};

// The system's own structures, which are smaller than the ones of the C library.
constexpr unsigned long defaultDisposition[8] = {};
constexpr unsigned long noSignal[1] = {};
constexpr long signalSetSize = 8;
constexpr long lastSignal = 64;

ORMEL_UNSANITIZED long becomeProgram(const ChildPlan& plan) {
  // No handler of the application may run in the child, so the mask comes last. The two signals that have no other
  // disposition refuse, which is all right.
  for (long signal = 1; signal <= lastSignal; ++signal) {
    ::syscall(SYS_rt_sigaction, signal, defaultDisposition, nullptr, signalSetSize);
  }
  ::syscall(SYS_setpgid, 0L, 0L);
  for (long stream = 0; stream < 3; ++stream) {
    if (plan.streams[stream] == StandardStreams::inherited) continue;
    if (::syscall(SYS_dup3, static_cast<long>(plan.streams[stream]), stream, 0L) < 0) return -1;
  }
  ::syscall(SYS_rt_sigprocmask, static_cast<long>(SIG_SETMASK), noSignal, nullptr, signalSetSize);
  return ::syscall(SYS_execve, plan.executable, plan.arguments, plan.environment);
}

/// The life of the child until it is the program. The thread that has started it is held up for as long, and shares
/// everything with it but descriptors and dispositions; so the child makes system calls and nothing else.
ORMEL_UNSANITIZED int runChild(void* argument) {
  auto* const birth = static_cast<Birth*>(argument);
  becomeProgram(birth->plan);
  birth->failure = errno;
  constexpr long nobodySeesThisStatus = 127;
  ::syscall(SYS_exit_group, nobodySeesThisStatus);
  return 0;
}

// Until it is the program the child has no exit signal, which hides it from an application that reaps every child.
void reapUnborn(pid_t pid) noexcept {
  while (::waitpid(pid, nullptr, __WALL) < 0 && errno == EINTR) {
  }
}

bool isRefusedAltogether(int failure) { return failure == EINVAL || failure == ENOSYS || failure == EPERM; }

}  // namespace

std::optional<SpawnedChild> cloneChild(const ChildPlan& plan) {
  constexpr std::size_t stackSize = std::size_t{64} * 1024;
  const auto stack = std::make_unique_for_overwrite<std::byte[]>(stackSize);
  Birth birth{plan};
  int pidfd = -1;
  pid_t pid = -1;
  int failure = 0;
  {
    const SignalMask blocked(asynchronousSignals());
    constexpr int flags = CLONE_VM | CLONE_VFORK | CLONE_PIDFD;
    pid = ORMEL_CLONE(runChild, stack.get() + stackSize, flags, &birth, &pidfd);
    failure = errno;
  }
  SpawnedChild child{pid, FileDescriptor(pidfd)};
  if (pid < 0) {
    if (isRefusedAltogether(failure)) return std::nullopt;
    throw ProcessLaunchError(plan.executable, failure);
  }
  if (birth.failure != 0) {
    reapUnborn(pid);
    throw ProcessLaunchError(plan.executable, birth.failure);
  }
  keepUsablePidfd(child.pidfd);
  return child;
}

}  // namespace ormel::detail

#undef ORMEL_CLONE
#undef ORMEL_UNSANITIZED

#else

namespace ormel::detail {

std::optional<SpawnedChild> cloneChild(const ChildPlan&) { return std::nullopt; }

}  // namespace ormel::detail

#endif
