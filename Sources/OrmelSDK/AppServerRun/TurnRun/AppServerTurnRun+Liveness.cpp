#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
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
  return StreamCompletion::failed({std::string(prefix) + describedFailure(error).message, false});
}

const ThreadTurn* turnWithID(const std::vector<ThreadTurn>& turns, std::string_view turnID) {
  for (const ThreadTurn& turn : turns) {
    if (turn.id == turnID) return &turn;
  }
  return nullptr;
}

}  // namespace

void AppServerTurnRun::scheduleLivenessProbe() {
  recovery_.cancelLivenessProbe();
  const auto generation = stream_.currentOperationGeneration();
  const auto& threadID = scope_.coordinatorThreadID();
  const auto& turnID = scope_.coordinatorTurnID();
  if (!stream_.isPending() || !generation || !threadID || !turnID) return;
  ProbedTurn probed{protocolActivityGeneration_, *threadID, *turnID, *generation};
  auto probe = [owner = weak_from_this(), turn = std::move(probed)]() mutable {
    if (const auto run = owner.lock()) run->beginReconciliation(std::move(turn));
  };
  recovery_.armLivenessProbe(
      strand_.postAfter(configuration_.durations.livenessProbeInterval, std::move(probe), "liveness probe"));
}

void AppServerTurnRun::beginReconciliation(ProbedTurn probed) {
  std::stop_token stop = recovery_.beginReconciliation();
  auto reconciliation = reconcileCoordinatorTurnLiveness(shared_from_this(), std::move(probed), stop);
  std::move(reconciliation).withStopToken(stop).detach();
}

bool AppServerTurnRun::isUnchanged(const ProbedTurn& expected, const std::stop_token& stop) const {
  return !stop.stop_requested() && stream_.isCurrent(expected.operationGeneration) &&
         scope_.isCoordinator(expected.threadID, expected.turnID);
}

Task<void> AppServerTurnRun::reconcileCoordinatorTurnLiveness(Self self, ProbedTurn expected, std::stop_token stop) {
  co_await self->strand_.enter();
  if (!self->isUnchanged(expected, stop)) co_return;
  if (self->protocolActivityGeneration_ != expected.activityGeneration) {
    self->scheduleLivenessProbe();
    co_return;
  }
  const JSONValue params = JSONValue::object({{"threadId", expected.threadID}, {"includeTurns", true}});
  JSONValue response;
  std::exception_ptr failure;
  try {
    response = co_await self->sendRequest("thread/read", params);
  } catch (...) {
    failure = std::current_exception();
  }
  if (!self->isUnchanged(expected, stop)) co_return;
  if (failure) {
    self->finishCurrent(failedWith("Unable to reconcile coordinator turn: ", failure));
  } else {
    self->recovery_.forgetReconciliation();
    self->applyReconciliation(response, expected);
  }
}

void AppServerTurnRun::applyReconciliation(const JSONValue& response, const ProbedTurn& expected) {
  ThreadReadResponse read;
  try {
    read = decode<ThreadReadResponse>(response);
  } catch (...) {
    finishCurrent(failedUnabortedWith("Unable to decode coordinator turn reconciliation: ", std::current_exception()));
    return;
  }
  if (read.thread.id != expected.threadID) {
    finishCurrent(StreamCompletion::failed({"Coordinator thread mismatch during liveness reconciliation", false}));
    return;
  }
  const ThreadTurn* turn = turnWithID(read.thread.turns, expected.turnID);
  if (!turn) {
    finishCurrent(StreamCompletion::failed({"Coordinator turn missing during liveness reconciliation", false}));
    return;
  }
  if (turn->status == ThreadTurnStatus::inProgress) {
    scheduleLivenessProbe();
    return;
  }
  try {
    const JSONValue params = JSONValue::object({{"threadId", expected.threadID}, {"turn", encode(*turn)}});
    handleTurnCompleted(*params.objectValue());
  } catch (...) {
    finishIfCurrent(expected.operationGeneration,
                    failedUnabortedWith("Unable to apply coordinator turn reconciliation: ", std::current_exception()));
  }
}

Task<void> AppServerTurnRun::interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration) {
  return interrupt(shared_from_this(), expectedOperationGeneration);
}

Task<void> AppServerTurnRun::interrupt(Self self, std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await self->strand_.enter();
  const auto generation = self->stream_.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  if (!generation || !isExpected || !self->stream_.isPending() || self->abortedByClient_) co_return;
  self->abortedByClient_ = true;
  self->serverRequests_.cancelAll();
  const ActiveScope active = self->scope_.active();
  if (!active.threadID || !active.turnID) {
    self->finishCurrent(StreamCompletion::aborted());
    co_return;
  }
  const InterruptedTurn turn{*active.threadID, *active.turnID, *generation};
  const JSONValue params = JSONValue::object({{"threadId", turn.threadID}, {"turnId", turn.turnID}});
  bool isAcknowledged = false;
  try {
    co_await self->sendRequest("turn/interrupt", params);
    isAcknowledged = true;
  } catch (...) {
    self->finishIfCurrent(turn.operationGeneration, StreamCompletion::aborted());
  }
  if (isAcknowledged && self->awaitsEndOf(turn)) self->scheduleInterruptCompletionGrace(turn);
}

bool AppServerTurnRun::awaitsEndOf(const InterruptedTurn& turn) const {
  return stream_.isCurrent(turn.operationGeneration) && abortedByClient_ &&
         scope_.isCoordinator(turn.threadID, turn.turnID);
}

void AppServerTurnRun::scheduleInterruptCompletionGrace(InterruptedTurn turn) {
  auto finish = [owner = weak_from_this(), interrupted = std::move(turn)] {
    const auto run = owner.lock();
    if (run && run->awaitsEndOf(interrupted)) run->finishCurrent(StreamCompletion::aborted());
  };
  recovery_.armInterruptGrace(
      strand_.postAfter(configuration_.durations.interruptGrace, std::move(finish), "interrupt grace"));
}

}  // namespace ormel::detail
