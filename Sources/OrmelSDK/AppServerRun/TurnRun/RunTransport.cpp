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

std::unique_ptr<ServerConnection> RunTransport::takeConnection() {
  if (!hasProcess()) return nullptr;
  incrementCounter(transportGeneration_);
  std::exchange(processExitCoordinator_, nullptr)->cancel();
  didInitializeProcess_ = false;
  return std::exchange(connection_, nullptr);
}

}  // namespace ormel::detail
