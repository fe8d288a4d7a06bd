#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "OrmelSDK/AppServerRun/StreamCompletion.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/ThreadEvent.h"

namespace ormel::detail {

/// The operation that a run carries out, and the channel of its events.
///
/// What holds at all times: while an operation is current, the completion is pending; a generation is used once and is
/// never 0; the high-water mark never falls and never exceeds the last generation.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunStream {
 public:
  /// Makes a new operation the current one and returns its generation.
  ///
  /// *Preconditions*: none is current, and `reset` has been called.
  std::uint64_t begin();

  /// Fails with `ThreadRunError` of the kind `streamError` if an operation is current.
  void requireNoOperation() const;

  /// Forgets how the last operation ended, and its events.
  void reset();

  const std::optional<std::uint64_t>& currentOperationGeneration() const noexcept {
    return currentOperationGeneration_;
  }
  bool isPending() const noexcept { return completion_.isPending(); }
  const StreamCompletion& completion() const noexcept { return completion_; }

  /// Whether the operation is the current one and has not ended.
  bool isCurrent(std::uint64_t operationGeneration) const noexcept {
    return currentOperationGeneration_ == operationGeneration && isPending();
  }
  /// Fails with `ThreadRunError` of the kind `streamError` unless the operation is current.
  void requireCurrent(std::uint64_t operationGeneration) const;

  /// For work that comes back from its last wait: true if the operation is still current, false if it has ended in the
  /// meantime. Fails like `requireCurrent` if the generation never was an operation of this run that ended.
  bool isCurrentOrElseEnded(std::uint64_t operationGeneration) const;

  /// Gives the operation's events, those before and those to come, to the producer. A producer that comes too late for
  /// its operation is failed.
  void attach(EventProducer<ThreadEvent> producer, std::uint64_t operationGeneration);

  /// Keeps the event until a producer is attached, if none is. One that belongs to no operation is dropped: an idle
  /// server may talk for ever.
  void emit(ThreadEvent event);

  /// Records the end; no operation is current from now on. `endChannel` is to follow.
  void close(StreamCompletion completion, std::optional<std::uint64_t> operationGeneration);
  void endChannel();

  std::uint64_t completedOperationGenerationHighWaterMark() const noexcept {
    return completedOperationGenerationHighWaterMark_;
  }

 private:
  std::optional<EventProducer<ThreadEvent>> eventContinuation_;
  std::vector<ThreadEvent> bufferedEvents_;
  StreamCompletion completion_;
  std::uint64_t operationGeneration_ = 0;
  std::optional<std::uint64_t> currentOperationGeneration_;
  std::uint64_t completedOperationGenerationHighWaterMark_ = 0;
};

}  // namespace ormel::detail
