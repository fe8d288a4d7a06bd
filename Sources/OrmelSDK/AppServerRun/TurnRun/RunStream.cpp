#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"

#include <algorithm>
#include <utility>

#include "OrmelSDK/Base/CheckedCounter.h"
#include "OrmelSDK/Base/ThreadRunError.h"

namespace ormel::detail {

namespace {

ThreadRunError noLongerCurrent() {
  return ThreadRunError::streamError("Prepared app-server operation is no longer current");
}

void endProducer(const EventProducer<ThreadEvent>& producer, const StreamCompletion& completion) {
  if (auto error = completion.streamError()) {
    producer.fail(std::move(error));
  } else {
    producer.finish();
  }
}

}  // namespace

std::uint64_t RunStream::begin() {
  incrementCounter(operationGeneration_);
  currentOperationGeneration_ = operationGeneration_;
  return operationGeneration_;
}

void RunStream::requireNoOperation() const {
  if (currentOperationGeneration_) throw ThreadRunError::passing("An app-server operation is already active");
}

void RunStream::prepareForNextTurn() {
  streamCompletion_ = StreamCompletion();
  eventContinuation_.reset();
  bufferedEvents_.clear();
}

void RunStream::requireCurrent(std::uint64_t operationGeneration) const {
  if (!isCurrent(operationGeneration)) throw noLongerCurrent();
}

bool RunStream::isCurrentOrElseEnded(std::uint64_t operationGeneration) const {
  if (currentOperationGeneration_ == operationGeneration) return true;
  const bool hasEnded = operationGeneration != 0 && operationGeneration_ >= operationGeneration &&
                        completedOperationGenerationHighWaterMark_ >= operationGeneration;
  if (!hasEnded) throw noLongerCurrent();
  return false;
}

void RunStream::attachContinuation(EventProducer<ThreadEvent> producer, std::uint64_t operationGeneration) {
  if (currentOperationGeneration_ != operationGeneration) {
    producer.fail(noLongerCurrent());
    return;
  }
  flush();
  eventContinuation_ = std::move(producer);
  flush();
}

void RunStream::flush() {
  if (!eventContinuation_ || bufferedEvents_.empty()) return;
  flushThreshold_ *= 4;
  eventContinuation_->yieldAll(std::exchange(bufferedEvents_, {}));
}

void RunStream::finish(const StreamCompletion& with, std::optional<std::uint64_t> finishedOperationGeneration) {
  // It either ends or, where there is no memory for it, goes on.
  StreamCompletion completion = with;
  streamCompletion_ = std::move(completion);
  if (finishedOperationGeneration) {
    completedOperationGenerationHighWaterMark_ =
        std::max(completedOperationGenerationHighWaterMark_, *finishedOperationGeneration);
  }
  currentOperationGeneration_.reset();
  if (!eventContinuation_) return;
  flush();
  endProducer(*eventContinuation_, with);
  eventContinuation_.reset();
}

}  // namespace ormel::detail
