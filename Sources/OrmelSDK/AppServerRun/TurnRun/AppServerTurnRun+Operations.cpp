#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/AppServerRun/Payloads/TurnPayloads.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Base/ThreadRunError.h"
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

Task<StartedTurn> AppServerTurnRun::startTurn(std::optional<std::string> existingThreadID, Input input,
                                              TurnOptions turnOptions,
                                              std::optional<std::uint64_t> preparedOperationGeneration) {
  return startTurnOn(shared_from_this(), std::move(existingThreadID), std::move(input), std::move(turnOptions),
                     preparedOperationGeneration);
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startReview(
    std::string existingThreadID, ReviewTarget target, ReviewDelivery delivery,
    std::optional<std::uint64_t> preparedOperationGeneration) {
  return startReviewOn(shared_from_this(), std::move(existingThreadID), std::move(target), delivery,
                       preparedOperationGeneration);
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startCompaction(
    std::string existingThreadID, std::optional<std::uint64_t> preparedOperationGeneration) {
  return startCompactionOn(shared_from_this(), std::move(existingThreadID), preparedOperationGeneration);
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startEphemeralForkTurn(
    std::string existingThreadID, Input input, std::string developerInstructions, TurnOptions turnOptions,
    std::optional<std::uint64_t> preparedOperationGeneration) {
  return startEphemeralForkTurnOn(shared_from_this(), std::move(existingThreadID), std::move(input),
                                  std::move(developerInstructions), std::move(turnOptions),
                                  preparedOperationGeneration);
}

Task<void> AppServerTurnRun::steer(Input input, TurnOptions turnOptions,
                                   std::optional<std::uint64_t> expectedOperationGeneration) {
  return steerOn(shared_from_this(), std::move(input), std::move(turnOptions), expectedOperationGeneration);
}

Task<StartedTurn> AppServerTurnRun::startTurnOn(Self self, std::optional<std::string> existingThreadID, Input input,
                                                TurnOptions turnOptions, std::optional<std::uint64_t> prepared) {
  co_await self->strand_.enter();
  const std::uint64_t generation = self->admit(prepared);
  try {
    auto events = co_await self->openOperation(generation);
    auto threadID = co_await self->beginTurn(generation, std::move(existingThreadID), input, turnOptions);
    co_return StartedTurn(std::move(events), std::move(threadID));
  } catch (...) {
    self->finishIfCurrent(generation, failedAsCaught());
    throw;
  }
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startReviewOn(Self self, std::string existingThreadID,
                                                                ReviewTarget target, ReviewDelivery delivery,
                                                                std::optional<std::uint64_t> prepared) {
  co_await self->strand_.enter();
  const std::uint64_t generation = self->admit(prepared);
  try {
    auto events = co_await self->openOperation(generation);
    co_await self->beginReview(generation, std::move(existingThreadID), target, delivery);
    co_return std::move(events);
  } catch (...) {
    self->finishIfCurrent(generation, failedAsCaught());
    throw;
  }
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startCompactionOn(Self self, std::string existingThreadID,
                                                                    std::optional<std::uint64_t> prepared) {
  co_await self->strand_.enter();
  const std::uint64_t generation = self->admit(prepared);
  try {
    auto events = co_await self->openOperation(generation);
    co_await self->beginCompaction(generation, std::move(existingThreadID));
    co_return std::move(events);
  } catch (...) {
    self->finishIfCurrent(generation, failedAsCaught());
    throw;
  }
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::startEphemeralForkTurnOn(Self self, std::string existingThreadID,
                                                                           Input input,
                                                                           std::string developerInstructions,
                                                                           TurnOptions turnOptions,
                                                                           std::optional<std::uint64_t> prepared) {
  co_await self->strand_.enter();
  const std::uint64_t generation = self->admit(prepared);
  try {
    auto events = co_await self->openOperation(generation);
    co_await self->beginForkTurn(generation, std::move(existingThreadID), input, std::move(developerInstructions),
                                 turnOptions);
    co_return std::move(events);
  } catch (...) {
    self->finishIfCurrent(generation, failedAsCaught());
    throw;
  }
}

Task<EventChannel<ThreadEvent>> AppServerTurnRun::openOperation(std::uint64_t operationGeneration) {
  co_await startProcess(operationGeneration);
  auto ends = EventChannel<ThreadEvent>::make(ChannelLimit::unbounded(), "thread event");
  stream_.attach(std::move(ends.first), operationGeneration);
  co_await initializeIfNeeded(operationGeneration);
  stream_.requireCurrent(operationGeneration);
  applySkillExtraRootsIfNeeded();
  stream_.requireCurrent(operationGeneration);
  co_return std::move(ends.second);
}

Task<void> AppServerTurnRun::initializeIfNeeded(std::uint64_t operationGeneration) {
  if (!transport_.didInitialize()) {
    const auto capabilities = AppServerInitializeCapabilities::forTurns(configuration_.threadOptions);
    const JSONValue params = appServerInitializeParams(capabilities);
    co_await sendRequest("initialize", params);
    stream_.requireCurrent(operationGeneration);
    writeNotification("initialized");
    transport_.setInitialized();
  }
  stream_.requireCurrent(operationGeneration);
}

void AppServerTurnRun::applySkillExtraRootsIfNeeded() {
  const auto params = buildSkillExtraRootsParams(configuration_.threadOptions);
  if (params) writeNotification("skills/extraRoots/set", params);
}

Task<std::string> AppServerTurnRun::beginTurn(std::uint64_t operationGeneration,
                                              std::optional<std::string> existingThreadID, const Input& input,
                                              const TurnOptions& turnOptions) {
  const auto& threadOptions = configuration_.threadOptions;
  const char* method = existingThreadID ? "thread/resume" : "thread/start";
  const JSONValue params = existingThreadID
                               ? buildThreadResumeParams(*existingThreadID, threadOptions, configuration_.ormelOptions)
                               : buildThreadStartParams(threadOptions, configuration_.ormelOptions);
  const JSONValue thread = co_await sendRequest(method, params);
  std::string threadID = enterThread(operationGeneration, thread);
  if (threadOptions.threadStartedHandler) {
    // Not on the strand: an application's function may take its time.
    Task<void> handling = (*threadOptions.threadStartedHandler)(threadID);
    co_await std::move(handling).onScheduler(*services_.scheduler);
    stream_.requireCurrent(operationGeneration);
  }
  const JSONValue turn = co_await requestTurn(threadID, input, turnOptions);
  if (postRequestAwaitHook) {
    Task<void> hook = postRequestAwaitHook("turn/start", operationGeneration);
    co_await std::move(hook);
  }
  enterTurn(operationGeneration, turn);
  co_return threadID;
}

Task<void> AppServerTurnRun::beginReview(std::uint64_t operationGeneration, std::string existingThreadID,
                                         const ReviewTarget& target, ReviewDelivery delivery) {
  co_await resumeThread(operationGeneration, existingThreadID);
  scope_.prepareForCoordinatorThreadTransition();
  const JSONValue params = JSONValue::object({{"threadId", existingThreadID},
                                              {"target", coding::Codec<ReviewTarget>::encode(target)},
                                              {"delivery", coding::Codec<ReviewDelivery>::encode(delivery)}});
  const JSONValue review = co_await sendRequest("review/start", params);
  if (!stream_.isCurrentOrElseEnded(operationGeneration)) co_return;
  scope_.setCoordinatorThread(parseReviewThreadID(review));
  adoptCoordinatorTurn(parseTurnID(review));
}

Task<void> AppServerTurnRun::beginCompaction(std::uint64_t operationGeneration, std::string existingThreadID) {
  co_await resumeThread(operationGeneration, existingThreadID);
  scope_.acceptTurnFromNotification();
  const JSONValue params = JSONValue::object({{"threadId", existingThreadID}});
  co_await sendRequest("thread/compact/start", params);
  static_cast<void>(stream_.isCurrentOrElseEnded(operationGeneration));
}

Task<void> AppServerTurnRun::beginForkTurn(std::uint64_t operationGeneration, std::string existingThreadID,
                                           const Input& input, std::string developerInstructions,
                                           const TurnOptions& turnOptions) {
  co_await resumeThread(operationGeneration, existingThreadID);
  scope_.prepareForCoordinatorThreadTransition();
  const JSONValue params = JSONValue::object(
      {{"threadId", existingThreadID}, {"developerInstructions", developerInstructions}, {"ephemeral", true}});
  const JSONValue fork = co_await sendRequest("thread/fork", params);
  const std::string threadID = enterThread(operationGeneration, fork);
  const JSONValue turn = co_await requestTurn(threadID, input, turnOptions);
  enterTurn(operationGeneration, turn);
}

Task<void> AppServerTurnRun::resumeThread(std::uint64_t operationGeneration, const std::string& threadID) {
  const JSONValue params = buildThreadResumeParams(threadID, configuration_.threadOptions, configuration_.ormelOptions);
  const JSONValue thread = co_await sendRequest("thread/resume", params);
  enterThread(operationGeneration, thread);
}

std::string AppServerTurnRun::enterThread(std::uint64_t operationGeneration, const JSONValue& response) {
  stream_.requireCurrent(operationGeneration);
  ThreadStartedEvent event = parseThreadStartedEventFromThreadResponse(response);
  std::string threadID = event.threadID;
  scope_.setCoordinatorThread(threadID);
  stream_.emit(std::move(event));
  return threadID;
}

Task<JSONValue> AppServerTurnRun::requestTurn(const std::string& threadID, const Input& input,
                                              const TurnOptions& turnOptions) {
  return sendRequest("turn/start", buildTurnStartParams(threadID, input, turnOptions, configuration_.threadOptions));
}

void AppServerTurnRun::enterTurn(std::uint64_t operationGeneration, const JSONValue& response) {
  if (stream_.isCurrentOrElseEnded(operationGeneration)) adoptCoordinatorTurn(parseTurnID(response));
}

Task<void> AppServerTurnRun::steerOn(Self self, Input input, TurnOptions turnOptions,
                                     std::optional<std::uint64_t> expectedOperationGeneration) {
  co_await self->strand_.enter();
  const auto generation = self->stream_.currentOperationGeneration();
  const bool isExpected = !expectedOperationGeneration || expectedOperationGeneration == generation;
  const ActiveScope active = self->scope_.active();
  if (!generation || !isExpected || !self->stream_.isPending() || !active.threadID || !active.turnID) {
    throw ThreadRunError::streamError("No active turn to steer");
  }
  const JSONValue params = buildTurnSteerParams(*active.threadID, *active.turnID, input, turnOptions);
  co_await self->sendRequest("turn/steer", params);
  if (self->postRequestAwaitHook) {
    Task<void> hook = self->postRequestAwaitHook("turn/steer", *generation);
    co_await std::move(hook);
  }
  // The turn may have ended after the server took the steer, which is a success.
  static_cast<void>(self->stream_.isCurrentOrElseEnded(*generation));
}

}  // namespace ormel::detail
