#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"

#include <exception>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorTurn.h"
#include "OrmelSDK/AppServerRun/TurnRun/RequestSender.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunConfiguration.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLife.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/Base/CheckedCounter.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Records/ThreadRecords.h"

namespace ormel::detail {

namespace {

StreamCompletion failedWith(std::string_view prefix, const std::exception_ptr& error) {
  RunFailure failure = describedFailure(error);
  failure.message.insert(0, prefix);
  return StreamCompletion::failed(std::move(failure));
}

StreamCompletion failedUnabortedWith(std::string_view prefix, const std::exception_ptr& error) {
  RunFailure failure = describedFailure(error);
  return StreamCompletion::failed(
      {std::string(prefix) + failure.message, false, failure.retryable, std::move(failure.cause)});
}

const ThreadTurn* turnWithID(const std::vector<ThreadTurn>& turns, std::string_view turnID) {
  for (const ThreadTurn& turn : turns) {
    if (turn.id == turnID) return &turn;
  }
  return nullptr;
}

}  // namespace

void RunRecovery::noteProtocolActivity() { incrementCounter(protocolActivityGeneration_); }

void RunRecovery::prepareForNextTurn() {
  cancelRecoveryTasks();
  abortedByClient_ = false;
}

void RunRecovery::scheduleLivenessProbe() {
  tasks_.cancelLivenessProbe();
  const auto generation = run_.stream.currentOperationGeneration();
  const auto& threadID = run_.scope.coordinatorThreadID();
  const auto& turnID = run_.scope.coordinatorTurnID();
  if (!run_.stream.isPending() || !generation || !threadID || !turnID) return;
  ProbedTurn probed{protocolActivityGeneration_, *threadID, *turnID, *generation};
  auto probe = [this, turn = std::move(probed)]() mutable { beginReconciliation(std::move(turn)); };
  tasks_.armLivenessProbe(
      run_.life.postAfter(run_.durations.livenessProbeIntervalNanoseconds, std::move(probe), "liveness probe"));
}

void RunRecovery::beginReconciliation(ProbedTurn probed) {
  std::stop_token stop = tasks_.beginReconciliation();
  auto reconciliation = reconcileCoordinatorTurnLiveness(run_.life.hold(), std::move(probed), stop);
  std::move(reconciliation).withStopToken(stop).detach();
}

bool RunRecovery::isUnchanged(const ProbedTurn& probed, const std::stop_token& stop) const {
  return !stop.stop_requested() && run_.stream.isCurrent(probed.operationGeneration) &&
         run_.scope.isCoordinator(probed.expectedThreadID, probed.expectedTurnID);
}

Task<void> RunRecovery::reconcileCoordinatorTurnLiveness([[maybe_unused]] std::shared_ptr<void> life, ProbedTurn probed,
                                                         std::stop_token stop) {
  co_await run_.life.strand().enter();
  if (!isUnchanged(probed, stop)) co_return;
  if (protocolActivityGeneration_ != probed.expectedGeneration) {
    scheduleLivenessProbe();
    co_return;
  }
  const JSONValue params = JSONValue::object({{"threadId", probed.expectedThreadID}, {"includeTurns", true}});
  JSONValue response;
  std::exception_ptr failure;
  try {
    response = co_await run_.sender.sendRequest("thread/read", params);
  } catch (...) {
    failure = std::current_exception();
  }
  if (!isUnchanged(probed, stop)) co_return;
  if (failure) {
    run_.lifecycle.finishCurrent(failedWith("Unable to reconcile coordinator turn: ", failure));
  } else {
    tasks_.forgetReconciliation();
    applyReconciliation(response, probed);
  }
}

void RunRecovery::applyReconciliation(const JSONValue& response, const ProbedTurn& probed) {
  const auto fail = [this](const char* message) {
    run_.lifecycle.finishCurrent(StreamCompletion::failed({message, false}));
  };
  ThreadReadResponse read;
  try {
    read = decode<ThreadReadResponse>(response);
  } catch (...) {
    run_.lifecycle.finishCurrent(
        failedUnabortedWith("Unable to decode coordinator turn reconciliation: ", std::current_exception()));
    return;
  }
  if (read.thread.id != probed.expectedThreadID)
    return fail("Coordinator thread mismatch during liveness reconciliation");
  const ThreadTurn* turn = turnWithID(read.thread.turns, probed.expectedTurnID);
  if (!turn) return fail("Coordinator turn missing during liveness reconciliation");
  if (turn->status == ThreadTurnStatus::inProgress) return scheduleLivenessProbe();
  try {
    // Encoded again, though it has just been decoded: so the end of a turn is read in one place, from one form, with
    // the words for its status and the items that the record keeps.
    const JSONValue ended = encode(*turn);
    run_.turn.handleTurnCompleted(*ended.objectValue(), turn->id);
  } catch (...) {
    run_.lifecycle.finishIfCurrent(
        probed.operationGeneration,
        failedUnabortedWith("Unable to apply coordinator turn reconciliation: ", std::current_exception()));
  }
}

Task<void> RunRecovery::interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration) {
  return interrupt(run_.life.hold(), expectedOperationGeneration);
}

Task<void> RunRecovery::interrupt([[maybe_unused]] std::shared_ptr<void> life,
                                  std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await run_.life.strand().enter();
  const auto generation = run_.stream.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  if (!generation || !isExpected || !run_.stream.isPending() || abortedByClient_) co_return;
  abortedByClient_ = true;
  run_.serverRequests.cancelAllPendingServerRequestTasks();
  const ActiveScope active = run_.scope.active();
  if (!active.activeThreadID || !active.activeTurnID) {
    run_.lifecycle.finishCurrent(StreamCompletion::aborted());
    co_return;
  }
  const InterruptedTurn turn{*active.activeThreadID, *active.activeTurnID, *generation};
  const JSONValue params = JSONValue::object({{"threadId", turn.threadID}, {"turnId", turn.turnID}});
  bool isAcknowledged = false;
  try {
    co_await run_.sender.sendRequest("turn/interrupt", params);
    isAcknowledged = true;
  } catch (...) {
    run_.lifecycle.finishIfCurrent(turn.operationGeneration, StreamCompletion::aborted());
  }
  if (isAcknowledged && awaitsEndOf(turn)) scheduleInterruptCompletionGrace(turn);
}

bool RunRecovery::awaitsEndOf(const InterruptedTurn& turn) const {
  return run_.stream.isCurrent(turn.operationGeneration) && abortedByClient_ &&
         run_.scope.isCoordinator(turn.threadID, turn.turnID);
}

void RunRecovery::scheduleInterruptCompletionGrace(InterruptedTurn turn) {
  auto finish = [this, interrupted = std::move(turn)] { finishAcknowledgedInterruptIfPending(interrupted); };
  tasks_.armInterruptGrace(
      run_.life.postAfter(run_.durations.interruptCompletionGraceNanoseconds, std::move(finish), "interrupt grace"));
}

void RunRecovery::finishAcknowledgedInterruptIfPending(const InterruptedTurn& turn) {
  if (awaitsEndOf(turn)) run_.lifecycle.finishCurrent(StreamCompletion::aborted());
}

}  // namespace ormel::detail
