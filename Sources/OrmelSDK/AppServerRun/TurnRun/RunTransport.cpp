#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"

#include <utility>

#include "OrmelSDK/Base/CheckedCounter.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

std::uint64_t RunTransport::nextGeneration() {
  incrementCounter(generation_);
  return generation_;
}

std::stop_token RunTransport::adopt(ServerProcess process) {
  process_ = std::move(process);
  reader_ = std::stop_source();
  return reader_.get_token();
}

void RunTransport::write(const JSONValue& payload) {
  if (!hasProcess()) throw ThreadRunError::streamError("Ormel app-server stdin is unavailable");
  std::string line = payload.encode();
  line += '\n';
  process_.child->write(std::move(line));
}

std::string RunTransport::errorText() const { return process_.errorOutput ? process_.errorOutput->text() : ""; }

bool RunTransport::outputHasEnded() const {
  return process_.exitCoordinator && process_.exitCoordinator->readerReachedEOF();
}

void RunTransport::shutdown() {
  if (!hasProcess()) return;
  incrementCounter(generation_);
  reader_.request_stop();
  const ServerProcess ended = std::exchange(process_, ServerProcess());
  ended.exitCoordinator->cancel();
  if (ended.child->isRunning()) ended.child->terminate();
  didInitialize_ = false;
}

}  // namespace ormel::detail
