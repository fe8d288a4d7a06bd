#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Platform/PipeReader.h"

namespace ormel::detail {

/// A program to start, with its arguments and environment.
struct LaunchSettings {
  LaunchSettings() = default;

  /// Path of the program file; it is not looked up in `PATH`.
  std::string executable;
  /// The arguments after the program's own name.
  std::vector<std::string> arguments;
  /// Absent, the child inherits the environment of this process.
  std::optional<std::map<std::string, std::string>> environment;
};

enum class TerminationReason {
  exit,
  uncaughtSignal,
  /// The child has ended, but someone else in this process has taken its status.
  unknown,
};

/// How a child ended.
struct Termination {
  TerminationReason reason = TerminationReason::unknown;
  /// The exit status or the number of the signal; 0 when the reason is unknown.
  int status = 0;

  friend bool operator==(const Termination&, const Termination&) noexcept = default;
};

/// Called once when the child has ended, on a thread of the pool, with no lock held. The end of its output is reported
/// separately, before or after, or never if another process holds the pipe. Must neither block nor throw.
using TerminationHandler = std::function<void(const Termination&)>;

/// A child process with three pipes.
///
/// *Thread safety*: all members may be called from any thread; none of them blocks.
///
/// *Object lifetimes*: destroying the object closes the pipes, drops unwritten bytes and releases the termination
/// handler. It does not signal the child, which sees the end of its input and is reaped in the background when it ends.
/// A handler that was just being entered may still run.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// The child's standard output and standard error.
  virtual std::shared_ptr<PipeReader> output() = 0;
  virtual std::shared_ptr<PipeReader> errorOutput() = 0;

  /// Queues bytes for the child's standard input, behind those queued before. A child that has closed its input, or
  /// is gone, makes this and every later call do nothing.
  virtual void write(std::string bytes) = 0;

  /// Closes the child's standard input behind what is queued. Later writes do nothing.
  virtual void closeInput() = 0;

  /// Whether a write may still reach the child: false after `closeInput`, and once a write has found the pipe broken.
  virtual bool acceptsInput() const = 0;

  /// Asks the child to end (SIGTERM). Does nothing once it has ended.
  virtual void terminate() = 0;

  /// Ends the child (SIGKILL). Does nothing once it has ended.
  virtual void kill() = 0;

  /// The same for the child and what it has started in its process group. Do nothing once the child has ended.
  virtual void terminateGroup() { terminate(); }
  virtual void killGroup() { kill(); }

  virtual int processIdentifier() const = 0;

  /// False as soon as the end has been noticed, and from before the termination handler is called.
  virtual bool isRunning() const = 0;

  /// How the child ended; absent while it runs.
  virtual std::optional<Termination> termination() const = 0;
};

/// Starts all processes of the library, so that a test can substitute an in-memory child.
///
/// *Thread safety*: may be called from any thread.
class ProcessLauncher {
 public:
  virtual ~ProcessLauncher() = default;

  /// Starts a child. Fails with an `Error` that tells why it could not be started; then nothing is left behind.
  /// The handler may be called before this returns.
  virtual std::unique_ptr<ChildProcess> launch(const LaunchSettings& settings, TerminationHandler onTermination) = 0;
};

}  // namespace ormel::detail
