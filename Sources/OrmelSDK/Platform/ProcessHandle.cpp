#include "OrmelSDK/Platform/ProcessHandle.h"

#include <errno.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <system_error>

#include "OrmelSDK/Platform/DetachedThread.h"
#include "OrmelSDK/Platform/ExitQueue.h"
#include "OrmelSDK/Platform/Pidfd.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

/// Waits until the child has ended without reaping it, so that its process id is not reused before the handle knows.
/// The reason is unknown if another part of the process was first to reap it.
Termination waitWithoutReaping(pid_t pid) noexcept {
  siginfo_t info{};
  while (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) return {};
  }
  return terminationFromSignalInformation(info);
}

void waitAndReap(pid_t pid) noexcept {
  while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

/// The read end of a pipe in which it is written how the child has ended. The end is not signalled by closing the other
/// end: a process forked by the application may hold a copy of that.
FileDescriptor startWaiter(pid_t pid) {
  Pipe pipe = makePipe();
  FileDescriptor queue = openExitQueue(pid);
  const SignalMask blocked(asynchronousSignals());
  startDetachedThread([pid, told = std::move(pipe.writeEnd), exitQueue = std::move(queue)] {
    const auto fromQueue = waitForExit(exitQueue);
    const Termination seen = waitWithoutReaping(pid);
    const Termination termination = fromQueue.value_or(seen);
    [[maybe_unused]] const auto written = ::write(told.number(), &termination, sizeof termination);
  });
  return std::move(pipe.readEnd);
}

}  // namespace

ProcessHandle::ProcessHandle(SpawnedChild child) : pid_(child.pid), pidfd_(std::move(child.pidfd)) {
  if (pidfd_.isOpen()) return;
  try {
    waiterPipe_ = startWaiter(pid_);
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
  return reaped < 0 ? toldByWaiter() : terminationFromWaitStatus(status);
}

/// How a child ended that was reaped elsewhere; absent until the waiter tells.
std::optional<Termination> ProcessHandle::toldByWaiter() const noexcept {
  if (!waiterPipe_.isOpen()) return Termination();
  if (!isReadable(waiterPipe_.number())) return std::nullopt;
  Termination told;
  if (::read(waiterPipe_.number(), &told, sizeof told) != sizeof told) return Termination();
  return told;
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

void ProcessHandle::signalGroup(int number) noexcept {
  const std::lock_guard lock(mutex_);
  if (!termination_ && ::getpgid(pid_) == pid_) ::kill(-pid_, number);
}

void ProcessHandle::killAndReap() noexcept {
  signal(SIGKILL);
  waitWithoutReaping(pid_);
  reapIfEnded();
}

void ProcessHandle::reapInBackground() noexcept {
  const SignalMask blocked(asynchronousSignals());
  try {
    startDetachedThread([pid = pid_, pidfd = FileDescriptor::duplicate(pidfd_.number())] {
      if (pidfd.isOpen()) return waitAndReapPidfd(pidfd);
      waitAndReap(pid);
    });
  } catch (const std::exception&) {
    // Without a thread to spare the child stays until this process ends, which is the lesser evil.
  }
}

}  // namespace ormel::detail
