#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Events/ThreadEvent.h"

namespace ormel::detail {

/// The operation that a run carries out, and the channel of its events.
///
/// Invariants: while an operation is current, the completion is pending; a generation is used once and is
/// never 0; the high-water mark never falls and never exceeds the last generation.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunStream {
 public:
  /// Makes a new operation the current one and returns its generation.
  ///
  /// *Preconditions*: none is current, and `prepareForNextTurn` has been called.
  std::uint64_t begin();

  /// Fails with `ThreadRunError` of the kind `streamError` if an operation is current.
  void requireNoOperation() const;

  /// Forgets how the last operation ended, and its events.
  void prepareForNextTurn();

  const std::optional<std::uint64_t>& currentOperationGeneration() const noexcept {
    return currentOperationGeneration_;
  }
  bool isPending() const noexcept { return streamCompletion_.isPending(); }
  const StreamCompletion& streamCompletion() const noexcept { return streamCompletion_; }

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
  void attachContinuation(EventProducer<ThreadEvent> producer, std::uint64_t operationGeneration);

  /// Makes an event. It is kept until a producer is attached, if none is. One that belongs to no operation is dropped:
  /// an idle server may talk for ever.
  template <typename... Arguments>
  void emitEvent(Arguments&&... arguments) {
    if (!eventContinuation_ && !currentOperationGeneration_) return;
    bufferedEvents_.emplaceBack(std::forward<Arguments>(arguments)...);
    if (bufferedEvents_.size() >= flushThreshold_) flush();
  }

  /// As long as it lives, events go out several at a time, which costs their consumer one wake-up instead of many.
  class EmissionBatch {
   public:
    explicit EmissionBatch(RunStream& stream) noexcept : stream_(stream) {
      stream_.flushThreshold_ = firstFlushThreshold;
    }
    EmissionBatch(const EmissionBatch&) = delete;
    EmissionBatch& operator=(const EmissionBatch&) = delete;
    ~EmissionBatch() { end(); }

    /// Flushes, and sends each further event immediately.
    void end() {
      stream_.flushThreshold_ = 0;
      stream_.flush();
    }

   private:
    RunStream& stream_;
  };

  /// Records the end, and ends the channel in the same way. No operation is current from now on.
  void finish(const StreamCompletion& with, std::optional<std::uint64_t> finishedOperationGeneration);

  std::uint64_t completedOperationGenerationHighWaterMark() const noexcept {
    return completedOperationGenerationHighWaterMark_;
  }

 private:
  // Start with small batches for latency, then grow the batch fourfold for throughput.
  static constexpr std::size_t firstFlushThreshold = 32;

  void flush();

  std::optional<EventProducer<ThreadEvent>> eventContinuation_;
  /// Events that no producer has been given yet.
  EventBatch<ThreadEvent> bufferedEvents_;
  /// Number of buffered events at which they are sent; 0 means every event is sent immediately.
  std::size_t flushThreshold_ = 0;
  StreamCompletion streamCompletion_;
  std::uint64_t operationGeneration_ = 0;
  std::optional<std::uint64_t> currentOperationGeneration_;
  std::uint64_t completedOperationGenerationHighWaterMark_ = 0;
};

}  // namespace ormel::detail
