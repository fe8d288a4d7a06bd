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

  /// Makes an event. It is kept until a producer is attached, if none is. One that belongs to no operation is dropped:
  /// an idle server may talk for ever.
  template <class... Arguments>
  void emit(Arguments&&... arguments) {
    if (!eventContinuation_ && !currentOperationGeneration_) return;
    unsent_.emplaceBack(std::forward<Arguments>(arguments)...);
    if (unsent_.size() >= gathered_) send();
  }

  /// As long as it lives, events go out several at a time, which costs their consumer one wake-up instead of many.
  class EmissionBatch {
   public:
    explicit EmissionBatch(RunStream& stream) noexcept : stream_(stream) { stream_.gathered_ = firstGathered; }
    EmissionBatch(const EmissionBatch&) = delete;
    EmissionBatch& operator=(const EmissionBatch&) = delete;
    ~EmissionBatch() { end(); }

    /// Sends what is left.
    void end() {
      stream_.gathered_ = 0;
      stream_.send();
    }

   private:
    RunStream& stream_;
  };

  /// Records the end; no operation is current from now on. `endChannel` is to follow.
  void close(StreamCompletion completion, std::optional<std::uint64_t> operationGeneration);
  void endChannel();

  std::uint64_t completedOperationGenerationHighWaterMark() const noexcept {
    return completedOperationGenerationHighWaterMark_;
  }

 private:
  // A consumer that waits for the first of many should not wait long; each further wait may be four times as long.
  static constexpr std::size_t firstGathered = 32;

  void send();

  std::optional<EventProducer<ThreadEvent>> eventContinuation_;
  /// What no producer has been given yet.
  EventBatch<ThreadEvent> unsent_;
  /// How many unsent events are sent at last; 0 sends each at once.
  std::size_t gathered_ = 0;
  StreamCompletion completion_;
  std::uint64_t operationGeneration_ = 0;
  std::optional<std::uint64_t> currentOperationGeneration_;
  std::uint64_t completedOperationGenerationHighWaterMark_ = 0;
};

}  // namespace ormel::detail
