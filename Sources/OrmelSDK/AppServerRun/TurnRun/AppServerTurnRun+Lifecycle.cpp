#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/AppServerRun/Payloads/TurnPayloads.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Input/ReviewTarget.h"

namespace ormel::detail {

namespace {

StreamCompletion failedAsCaught() { return StreamCompletion::failed(describedFailure(std::current_exception())); }

std::string parseReviewThreadID(const JSONValue& response) {
  const JSONObject* object = response.objectValue();
  auto threadID = object ? textMember(*object, {"reviewThreadId"}) : std::nullopt;
  if (!threadID) throw ThreadRunError::streamError("Invalid review/start response from app-server");
  return *std::move(threadID);
}

}  // namespace

Task<StartedOperation> AppServerTurnRun::start(OperationRequest request,
                                               std::optional<std::uint64_t> preparedOperationGeneration) {
  return startOn(shared_from_this(), std::move(request), preparedOperationGeneration);
}

Task<StartedOperation> AppServerTurnRun::startOn(Self self, OperationRequest request,
                                                 std::optional<std::uint64_t> prepared) {
  co_await self->strand().enter();
  const std::uint64_t generation = self->lifecycle_.admit(prepared);
  try {
    auto events = co_await self->openOperation(generation);
    auto threadID = co_await self->carryOut(generation, request);
    co_return StartedOperation(std::move(events), std::move(threadID));
  } catch (...) {
    self->lifecycle_.finishIfCurrent(generation, failedAsCaught());
    throw;
  }
}

Task<void> AppServerTurnRun::steer(Input input, TurnOptions turnOptions,
                                   std::optional<std::uint64_t> expectedOperationGeneration) {
  return steerOn(shared_from_this(), std::move(input), std::move(turnOptions), expectedOperationGeneration);
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::openOperation(std::uint64_t operationGeneration) {
  co_await startProcess(operationGeneration);
  auto ends = EventChannel<ThreadEvent>::make(ChannelLimit::unbounded(), "thread event");
  stream_.attachContinuation(std::move(ends.first), operationGeneration);
  co_await initializeIfNeeded(operationGeneration);
  stream_.requireCurrent(operationGeneration);
  applySkillExtraRootsIfNeeded();
  stream_.requireCurrent(operationGeneration);
  co_return std::move(ends.second);
}

Task<void> AppServerTurnRun::initializeIfNeeded(std::uint64_t operationGeneration) {
  if (!transport_.didInitializeProcess()) {
    const auto capabilities = AppServerInitializeCapabilities::forTurns(configuration_.threadOptions);
    const JSONValue params = appServerInitializeParams(capabilities);
    co_await sender_.sendRequest("initialize", params);
    stream_.requireCurrent(operationGeneration);
    sender_.writeNotification("initialized");
    transport_.setInitialized();
  }
  stream_.requireCurrent(operationGeneration);
}

void AppServerTurnRun::applySkillExtraRootsIfNeeded() {
  const auto params = buildSkillExtraRootsParams(configuration_.threadOptions);
  if (params) sender_.writeNotification("skills/extraRoots/set", params);
}

Task<std::string> AppServerTurnRun::carryOut(std::uint64_t operationGeneration, const OperationRequest& request) {
  return visit(
      request, [&](const OperationRequest::Turn& turn) { return startTurn(operationGeneration, turn); },
      [&](const OperationRequest::Review& review) { return startReview(operationGeneration, review); },
      [&](const OperationRequest::Compaction& compaction) { return startCompaction(operationGeneration, compaction); },
      [&](const OperationRequest::EphemeralForkTurn& turn) {
        return startEphemeralForkTurn(operationGeneration, turn);
      });
}

Task<std::string> AppServerTurnRun::startTurn(std::uint64_t operationGeneration,
                                              const OperationRequest::Turn& request) {
  const auto& threadOptions = configuration_.threadOptions;
  std::string threadID;
  if (request.existingThreadID) {
    threadID = co_await resumeThread(operationGeneration, *request.existingThreadID);
  } else {
    const JSONValue params = buildThreadStartParams(threadOptions, configuration_.ormelOptions);
    const JSONValue thread = co_await sender_.sendRequest("thread/start", params);
    threadID = enterThread(operationGeneration, thread);
  }
  if (threadOptions.threadStartedHandler) {
    Task<void> handling = (*threadOptions.threadStartedHandler)(threadID);
    co_await std::move(handling).onScheduler(services_.scheduler->applicationScheduler());
    stream_.requireCurrent(operationGeneration);
  }
  const JSONValue turn = co_await requestTurn(threadID, request.input, request.turnOptions);
  if (postRequestAwaitHook) {
    Task<void> hook = postRequestAwaitHook("turn/start", operationGeneration);
    co_await std::move(hook);
  }
  enterTurn(operationGeneration, turn);
  co_return threadID;
}

Task<std::string> AppServerTurnRun::startReview(std::uint64_t operationGeneration,
                                                const OperationRequest::Review& request) {
  std::string threadID = co_await resumeThread(operationGeneration, request.existingThreadID);
  scope_.prepareForCoordinatorThreadTransition();
  const JSONValue params = JSONValue::object({{"threadId", request.existingThreadID},
                                              {"target", coding::Codec<ReviewTarget>::encode(request.target)},
                                              {"delivery", coding::Codec<ReviewDelivery>::encode(request.delivery)}});
  const JSONValue review = co_await sender_.sendRequest("review/start", params);
  if (stream_.isCurrentOrElseEnded(operationGeneration)) {
    scope_.setCoordinatorThread(parseReviewThreadID(review));
    turn_.setCoordinatorTurn(parseTurnID(review));
  }
  co_return threadID;
}

Task<std::string> AppServerTurnRun::startCompaction(std::uint64_t operationGeneration,
                                                    const OperationRequest::Compaction& request) {
  std::string threadID = co_await resumeThread(operationGeneration, request.existingThreadID);
  // The response names no turn: "turn/started" will.
  scope_.acceptCoordinatorTurnIdentityFromNotification();
  const JSONValue params = JSONValue::object({{"threadId", request.existingThreadID}});
  co_await sender_.sendRequest("thread/compact/start", params);
  static_cast<void>(stream_.isCurrentOrElseEnded(operationGeneration));
  co_return threadID;
}

Task<std::string> AppServerTurnRun::startEphemeralForkTurn(std::uint64_t operationGeneration,
                                                           const OperationRequest::EphemeralForkTurn& request) {
  co_await resumeThread(operationGeneration, request.existingThreadID);
  scope_.prepareForCoordinatorThreadTransition();
  const JSONValue params = JSONValue::object({{"threadId", request.existingThreadID},
                                              {"developerInstructions", request.developerInstructions},
                                              {"ephemeral", true}});
  const JSONValue fork = co_await sender_.sendRequest("thread/fork", params);
  std::string threadID = enterThread(operationGeneration, fork);
  const JSONValue turn = co_await requestTurn(threadID, request.input, request.turnOptions);
  enterTurn(operationGeneration, turn);
  co_return threadID;
}

Task<std::string> AppServerTurnRun::resumeThread(std::uint64_t operationGeneration, const std::string& threadID) {
  const JSONValue params = buildThreadResumeParams(threadID, configuration_.threadOptions, configuration_.ormelOptions);
  const JSONValue thread = co_await sender_.sendRequest("thread/resume", params);
  co_return enterThread(operationGeneration, thread);
}

std::string AppServerTurnRun::enterThread(std::uint64_t operationGeneration, const JSONValue& response) {
  stream_.requireCurrent(operationGeneration);
  ThreadStartedEvent event = parseThreadStartedEvent(response);
  std::string threadID = event.threadID;
  scope_.setCoordinatorThread(threadID);
  stream_.emitEvent(std::move(event));
  return threadID;
}

Task<JSONValue> AppServerTurnRun::requestTurn(const std::string& threadID, const Input& input,
                                              const TurnOptions& turnOptions) {
  return sender_.sendRequest("turn/start",
                             buildTurnStartParams(threadID, input, turnOptions, configuration_.threadOptions));
}

void AppServerTurnRun::enterTurn(std::uint64_t operationGeneration, const JSONValue& response) {
  if (stream_.isCurrentOrElseEnded(operationGeneration)) turn_.setCoordinatorTurn(parseTurnID(response));
}

Task<void> AppServerTurnRun::steerOn(Self self, Input input, TurnOptions turnOptions,
                                     std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await self->strand().enter();
  const auto generation = self->stream_.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  const ActiveScope active = self->scope_.active();
  if (!generation || !isExpected || !self->stream_.isPending() || !active.activeThreadID || !active.activeTurnID) {
    throw ThreadRunError::streamError("No active turn to steer");
  }
  const JSONValue params = buildTurnSteerParams(*active.activeThreadID, *active.activeTurnID, input, turnOptions);
  co_await self->sender_.sendRequest("turn/steer", params);
  if (self->postRequestAwaitHook) {
    Task<void> hook = self->postRequestAwaitHook("turn/steer", *generation);
    co_await std::move(hook);
  }
  // The turn may have ended after the server took the steer, which is a success.
  static_cast<void>(self->stream_.isCurrentOrElseEnded(*generation));
}

}  // namespace ormel::detail
