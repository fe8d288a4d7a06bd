#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/Connection/ServerOutput.h"
#include "OrmelSDK/AppServerRun/Connection/TerminationNotice.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerLockedData.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerOutputChunks.h"
#include "OrmelSDK/AppServerRun/Framing/StandardErrorCollector.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// Ends when the executable may be started. Fails with `OrmelProcessError` of the kind `untrustedExecutable`, or
/// `spawnFailed` for a path that the program starter would take for something else. The assessment, if one is needed,
/// runs as blocking work, so that other work may come first on the caller's strand.
Task<void> vetServerExecutable(BlockingWork& blockingWork, std::string executablePath, OrmelOptions ormelOptions);

/// The settings that start the server: the system's program starter is given the executable and its arguments. Fails
/// with `OrmelProcessError` of the kind `invalidConfigOverride`.
LaunchSettings serverLaunchSettings(const std::string& executablePath,
                                    const std::vector<std::string>& ormelPathDirectories,
                                    const OrmelOptions& ormelOptions);

/// A running server process and the ways to talk with it: its input, its output line by line, its standard error.
///
/// *Thread safety*: none; it belongs to the strand of its owner. The pipes are read on threads of the pool.
///
/// *Object lifetimes*: destroying it ends the connection: the reader is told to stop, the pipes are closed, and a
/// process that still runs gets a termination signal that is not waited for.
class ServerConnection {
 public:
  /// Starts the process. Fails with `OrmelProcessError` of the kind `spawnFailed`; nothing is left behind then.
  ///
  /// All that the process writes to its standard error goes to the accumulator. `onTermination`, if there is one, may
  /// be called before this returns, on another thread.
  static std::unique_ptr<ServerConnection> launch(ProcessLauncher& launcher, const LaunchSettings& settings,
                                                  std::shared_ptr<AppServerLockedData> stderrAccumulator,
                                                  TerminationHandler onTermination = nullptr);

  ServerConnection(const ServerConnection&) = delete;
  ServerConnection& operator=(const ServerConnection&) = delete;
  ~ServerConnection();

  /// Begins to read the standard output; once.
  ServerOutput read(AppServerOutputChunkCallbacks callbacks = AppServerOutputChunkCallbacks());

  /// The pipe that is read, for questions about it from any thread.
  std::shared_ptr<PipeReader> outputPipe() const { return process_->output(); }

  const std::shared_ptr<StandardErrorCollector>& errorOutput() const noexcept { return errorOutput_; }

  /// How the process ended, as soon as that is noticed.
  const std::shared_ptr<TerminationNotice>& termination() const noexcept { return termination_; }

  /// Queues the message as one line. Fails with `ThreadRunError` of the kind `streamError` if the input has been
  /// closed, and as `JSONValue::encode`. That the process does not read it is no failure here: the end of the output
  /// will tell.
  void write(const JSONValue& payload);

  /// Closes the process's standard input behind the lines that are queued.
  void closeInput();

  bool isRunning() const { return process_->isRunning(); }

  /// Ends the reader, closes the input and asks the process to end, as the destructor does, but leaves the termination
  /// handler in place.
  void end();

  /// Ends a process that does not do what it is asked for.
  void kill() { process_->kill(); }

 private:
  ServerConnection(std::unique_ptr<ChildProcess> process, std::shared_ptr<TerminationNotice> termination,
                   std::shared_ptr<AppServerLockedData> stderrAccumulator);

  const std::unique_ptr<ChildProcess> process_;
  const std::shared_ptr<TerminationNotice> termination_;
  const std::shared_ptr<StandardErrorCollector> errorOutput_;
  std::stop_source readerTask_;
  bool isInputClosed_ = false;
};

/// The same for an owner that may have no connection at the moment, which fails like one whose input is closed.
void writePayload(ServerConnection* connection, const JSONValue& payload);

}  // namespace ormel::detail
