#pragma once

#include <sys/types.h>

#include <mutex>
#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"
#include "OrmelSDK/Platform/Spawn.h"

namespace ormel::detail {

/// One child process of ours: its end, its status, and signals to it.
///
/// The end is detected for this child alone and without SIGCHLD, so it does not matter what the application does with
/// that signal. An application that reaps every child of the process, or has the system do so by ignoring SIGCHLD,
/// takes the status only where the system does not tell it to anyone else: the reason of the end is then unknown.
///
/// *Thread safety*: all members may be called from any thread.
///
/// *Object lifetimes*: the destructor does not wait for the child; call `reapInBackground` before destroying the handle
/// of a running child.
class ProcessHandle {
 public:
  /// Takes charge of a child that was just started. Fails with `ProcessLaunchError` when its end could not be
  /// noticed; the child is then killed and reaped.
  explicit ProcessHandle(SpawnedChild child);
  ProcessHandle(const ProcessHandle&) = delete;
  ProcessHandle& operator=(const ProcessHandle&) = delete;

  pid_t identifier() const noexcept { return pid_; }

  /// A descriptor that becomes readable when the child has ended; open until the child is reaped.
  int endDescriptor() const noexcept;

  /// Reaps the child if it has ended, and tells how it ended. Never blocks.
  std::optional<Termination> reapIfEnded() noexcept;

  /// How the child ended, as far as `reapIfEnded` has found out.
  std::optional<Termination> termination() const noexcept;

  /// Sends a signal unless the child has been reaped: its process id may then belong to another process.
  void signal(int number) noexcept;

  /// The same for all processes of the child's process group.
  void signalGroup(int number) noexcept;

  /// Kills the child and waits until it is reaped.
  void killAndReap() noexcept;

  /// Hands a running child to a thread that reaps it when it ends.
  void reapInBackground() noexcept;

 private:
  std::optional<Termination> reapByIdentifier() const noexcept;
  std::optional<Termination> toldByWaiter() const noexcept;

  const pid_t pid_;
  mutable std::mutex mutex_;
  FileDescriptor pidfd_;
  FileDescriptor waiterPipe_;
  std::optional<Termination> termination_;
};

}  // namespace ormel::detail
