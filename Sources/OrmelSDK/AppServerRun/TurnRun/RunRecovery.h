#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "OrmelSDK/AppServerRun/TurnRun/RecoveryTasks.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

class CoordinatorScope;
class CoordinatorTurn;
class RequestSender;
class RunLife;
class RunLifecycle;
class RunServerRequests;
class RunStream;
struct RunDurations;

/// Keeps an operation from hanging for ever: the probe of a server that has fallen silent, and the interrupt.
///
/// *Thread safety*: `interruptFromSignal` may be called from any thread; all else belongs to the run's strand.
class RunRecovery {
 public:
  struct Context {
    const RunLife& life;
    const RunDurations& durations;
    RunStream& stream;
    CoordinatorScope& scope;
    RunServerRequests& serverRequests;
    RequestSender& sender;
    CoordinatorTurn& turn;
    RunLifecycle& lifecycle;
  };
  explicit RunRecovery(const Context& context) : run_(context) {}

  /// Counts a well-formed message of the server: it is not silent.
  void noteProtocolActivity();
  std::uint64_t protocolActivityGeneration() const noexcept { return protocolActivityGeneration_; }

  /// The application has asked for the end of the current operation.
  bool abortedByClient() const noexcept { return abortedByClient_; }

  void prepareForNextTurn();
  void cancelRecoveryTasks() { tasks_.cancelRecoveryTasks(); }

  /// Probes the server when it has been silent for an interval. Does nothing but cancel an earlier probe if no turn is
  /// followed.
  void scheduleLivenessProbe();

  /// Ends the operation as aborted: by way of the server if the turn is known, else at once. Does nothing for an
  /// operation that is not the expected one, or is being interrupted already. Reports no failure.
  Task<void> interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration);

 private:
  /// The turn that a probe asks about, and the server's activity when it was armed.
  struct ProbedTurn {
    std::uint64_t expectedGeneration;
    std::string expectedThreadID;
    std::string expectedTurnID;
    std::uint64_t operationGeneration;
  };

  /// The turn that an interrupt is to end.
  struct InterruptedTurn {
    std::string threadID;
    std::string turnID;
    std::uint64_t operationGeneration;
  };

  void beginReconciliation(ProbedTurn probed);
  Task<void> reconcileCoordinatorTurnLiveness(std::shared_ptr<void> life, ProbedTurn probed, std::stop_token stop);
  bool isUnchanged(const ProbedTurn& probed, const std::stop_token& stop) const;
  void applyReconciliation(const JSONValue& response, const ProbedTurn& probed);

  Task<void> interrupt(std::shared_ptr<void> life, std::optional<std::uint64_t> expectedOperationGeneration);
  void scheduleInterruptCompletionGrace(InterruptedTurn turn);
  void finishAcknowledgedInterruptIfPending(const InterruptedTurn& turn);
  bool awaitsEndOf(const InterruptedTurn& turn) const;

  const Context run_;
  RecoveryTasks tasks_;
  bool abortedByClient_ = false;
  std::uint64_t protocolActivityGeneration_ = 0;
};

}  // namespace ormel::detail
