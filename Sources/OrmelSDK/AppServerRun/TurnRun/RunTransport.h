#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>

#include "OrmelSDK/AppServerRun/Framing/StandardErrorCollector.h"
#include "OrmelSDK/AppServerRun/Launch/AppServerProcessExitCoordinator.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// What one incarnation of the server process consists of.
struct ServerProcess {
  std::unique_ptr<ChildProcess> child;
  std::shared_ptr<StandardErrorCollector> errorOutput;
  std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator;
};

/// The server process of a run, if there is one.
///
/// What holds at all times: each incarnation has a generation of its own, so that what comes late from an earlier one
/// is known as such; an absent process has no reader, no pipe and no handshake.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunTransport {
 public:
  ~RunTransport() { shutdown(); }

  bool hasProcess() const noexcept { return process_.child != nullptr; }

  std::uint64_t generation() const noexcept { return generation_; }

  /// Whether the handshake has been done with this process.
  bool didInitialize() const noexcept { return didInitialize_; }
  void setInitialized() noexcept { didInitialize_ = true; }

  /// A new incarnation; returns its generation.
  std::uint64_t nextGeneration();

  /// Keeps a process that was started; returns the token that tells its reader to end.
  std::stop_token adopt(ServerProcess process);

  /// Writes a line. Fails with `ThreadRunError` of the kind `streamError` if there is no process, and as
  /// `JSONValue::encode`. That the process does not read it is no failure here.
  void write(const JSONValue& payload);

  /// What the process has written to its standard error, trimmed; empty without a process.
  std::string errorText() const;

  /// Whether the process's standard output has been read to its end.
  bool outputHasEnded() const;

  /// Ends the incarnation: its reader, its pipes, and, if it runs, the process by a termination signal that is not
  /// waited for. Does nothing without a process.
  void shutdown();

 private:
  ServerProcess process_;
  std::stop_source reader_{std::nostopstate};
  std::uint64_t generation_ = 0;
  bool didInitialize_ = false;
};

}  // namespace ormel::detail
