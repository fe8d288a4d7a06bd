#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "OrmelSDK/AppServerRun/Connection/ServerConnection.h"
#include "OrmelSDK/AppServerRun/Launch/AppServerProcessExitCoordinator.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The server process of a run, if there is one.
///
/// Invariants: each incarnation has a generation of its own, so that a late event of an earlier one is
/// recognised; an absent process has no reader, no pipe, no exit coordinator and no handshake.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunTransport {
 public:
  ~RunTransport() { shutdown(); }

  bool hasProcess() const noexcept { return connection_ != nullptr; }

  std::uint64_t generation() const noexcept { return transportGeneration_; }
  bool isCurrent(std::uint64_t transportGeneration) const noexcept {
    return transportGeneration_ == transportGeneration;
  }

  /// Whether the handshake has been done with this process.
  bool didInitializeProcess() const noexcept { return didInitializeProcess_; }
  void setInitialized() noexcept { didInitializeProcess_ = true; }

  /// A new incarnation; returns its generation.
  std::uint64_t nextGeneration();

  /// Keeps the connection to a process that was started, and the coordinator of its end.
  void adopt(std::unique_ptr<ServerConnection> connection,
             std::shared_ptr<AppServerProcessExitCoordinator> processExitCoordinator);

  /// Null without a process.
  const std::shared_ptr<AppServerProcessExitCoordinator>& processExitCoordinator() const noexcept {
    return processExitCoordinator_;
  }
  std::shared_ptr<StandardErrorCollector> errorOutput() const;
  std::shared_ptr<TerminationNotice> termination() const;

  /// Writes a line; see `ormel::detail::writePayload`.
  void writePayload(const JSONValue& payload) { detail::writePayload(connection_.get(), payload); }

  /// The standard error of the process so far, trimmed; empty without a process.
  std::string errorText() const;

  /// Whether the process's standard output has been read to its end.
  bool outputHasEnded() const;

  /// Ends the incarnation: its reader, its pipes, and, if it runs, the process by a termination signal that is not
  /// waited for. Does nothing without a process.
  void shutdown() { takeConnection(); }

  /// The same, but leaves the connection to the caller; null without a process.
  std::unique_ptr<ServerConnection> takeConnection();

 private:
  std::unique_ptr<ServerConnection> connection_;
  std::shared_ptr<AppServerProcessExitCoordinator> processExitCoordinator_;
  std::uint64_t transportGeneration_ = 0;
  bool didInitializeProcess_ = false;
};

}  // namespace ormel::detail
