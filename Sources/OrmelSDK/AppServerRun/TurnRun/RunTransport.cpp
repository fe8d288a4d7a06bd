#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"

#include <utility>

#include "OrmelSDK/Base/CheckedCounter.h"

namespace ormel::detail {

std::uint64_t RunTransport::nextGeneration() {
  incrementCounter(transportGeneration_);
  return transportGeneration_;
}

void RunTransport::adopt(std::unique_ptr<ServerConnection> connection,
                         std::shared_ptr<AppServerProcessExitCoordinator> processExitCoordinator) {
  connection_ = std::move(connection);
  processExitCoordinator_ = std::move(processExitCoordinator);
}

std::shared_ptr<StandardErrorCollector> RunTransport::errorOutput() const {
  return connection_ ? connection_->errorOutput() : nullptr;
}

std::shared_ptr<TerminationNotice> RunTransport::termination() const {
  return connection_ ? connection_->termination() : nullptr;
}

std::string RunTransport::errorText() const { return connection_ ? connection_->errorOutput()->text() : ""; }

bool RunTransport::outputHasEnded() const {
  return processExitCoordinator_ && processExitCoordinator_->readerReachedEOF();
}

void RunTransport::shutdown() {
  if (!hasProcess()) return;
  incrementCounter(transportGeneration_);
  std::exchange(processExitCoordinator_, nullptr)->cancel();
  const auto ended = std::exchange(connection_, nullptr);
  didInitializeProcess_ = false;
}

}  // namespace ormel::detail
