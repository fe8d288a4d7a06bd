#include "OrmelSDK/Platform/ProcessHandle.h"

#include <errno.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <system_error>

#include "OrmelSDK/Platform/DetachedThread.h"
#include "OrmelSDK/Platform/Pidfd.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

/// Waits until the child has ended without reaping it, so that its process id is not reused before the handle knows.
void waitWithoutReaping(pid_t pid) noexcept {
  siginfo_t info{};
  while (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
}

void waitAndReap(pid_t pid) noexcept {
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

/// The read end of a pipe that gets a byte when the child has ended. The end is signalled by the byte, not by closing
/// the other end: a process forked by the application may hold a copy of that.
FileDescriptor startWaiter(pid_t pid) {
  Pipe pipe = makePipe();
  const SignalMask blocked(asynchronousSignals());
  startDetachedThread([pid, told = std::move(pipe.writeEnd)] {
    waitWithoutReaping(pid);
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(told.number(), &byte, 1);
  });
  return std::move(pipe.readEnd);
}

}  // namespace

ProcessHandle::ProcessHandle(pid_t pid, EndNotice notice) : pid_(pid) {
  if (notice == EndNotice::automatic) pidfd_ = openPidfd(pid);
  if (pidfd_.isOpen()) return;
  try {
    waiterPipe_ = startWaiter(pid);
  } catch (const std::system_error& error) {
    killAndReap();
    throw ProcessLaunchError("thread", error.code().value());
  } catch (...) {
    killAndReap();
    throw;
  }
}

int ProcessHandle::endDescriptor() const noexcept {
  const std::lock_guard lock(mutex_);
  return pidfd_.isOpen() ? pidfd_.number() : waiterPipe_.number();
}

std::optional<Termination> ProcessHandle::reapIfEnded() noexcept {
  const std::lock_guard lock(mutex_);
  if (termination_) return termination_;
  termination_ = pidfd_.isOpen() ? reapPidfd(pidfd_) : reapByIdentifier();
  if (termination_) {
    pidfd_.close();
    waiterPipe_.close();
  }
  return termination_;
}

std::optional<Termination> ProcessHandle::reapByIdentifier() const noexcept {
  int status = 0;
  pid_t reaped = 0;
  do {
    reaped = ::waitpid(pid_, &status, WNOHANG);
  } while (reaped < 0 && errno == EINTR);
  if (reaped == 0) return std::nullopt;
  return reaped < 0 ? Termination() : terminationFromWaitStatus(status);
}

std::optional<Termination> ProcessHandle::termination() const noexcept {
  const std::lock_guard lock(mutex_);
  return termination_;
}

void ProcessHandle::signal(int number) noexcept {
  const std::lock_guard lock(mutex_);
  if (termination_) return;
  if (pidfd_.isOpen()) {
    signalPidfd(pidfd_, number);
  } else {
    ::kill(pid_, number);
  }
}

void ProcessHandle::killAndReap() noexcept {
  signal(SIGKILL);
  waitWithoutReaping(pid_);
  reapIfEnded();
}

void ProcessHandle::reapInBackground() noexcept {
  const SignalMask blocked(asynchronousSignals());
  try {
    startDetachedThread([pid = pid_] { waitAndReap(pid); });
  } catch (const std::system_error&) {
    // Without a thread to spare the child stays until this process ends, which is the lesser evil.
  }
}

}  // namespace ormel::detail
