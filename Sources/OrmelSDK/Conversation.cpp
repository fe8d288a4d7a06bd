#include "OrmelSDK/Conversation.h"

#include <exception>
#include <new>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

namespace ormel::detail {

namespace {

void refuseIfAborted(const std::optional<AbortSignal>& signal) {
  if (signal && signal->isAborted()) throw OrmelProcessError::aborted();
}

/// Folds an event into the turn. Fails with the failure of the turn, if the event tells of one.
void fold(ThreadEvent& event, Turn& turn) {
  if (auto* completed = std::get_if<ItemCompletedEvent>(&event.value)) {
    if (const auto text = completed->item.agentMessageText()) turn.finalResponse = std::string(std::string_view(*text));
    turn.items.push_back(std::move(completed->item));
  } else if (const auto* ended = std::get_if<TurnCompletedEvent>(&event.value)) {
    turn.usage = ended->usage;
  } else if (const auto* failed = std::get_if<TurnFailedEvent>(&event.value)) {
    throw ThreadRunError::turnFailed(failed->error.message);
  } else if (const auto* error = std::get_if<ThreadErrorEvent>(&event.value)) {
    throw ThreadRunError::streamError(error->message);
  }
}

}  // namespace

Conversation::Conversation(AppServerTurnRunConfiguration configuration, std::optional<std::string> threadID,
                           ServerServices services)
    : configuration_(std::move(configuration)), services_(services), threadID_(std::move(threadID)) {}

Conversation::~Conversation() {
  if (!persistentRun_) return;
  try {
    released(std::move(persistentRun_)).onScheduler(*services_.scheduler).detach();
  } catch (const Error&) {
    // Nothing was started for the run, or its server belongs to the process that was forked.
  } catch (const std::bad_alloc&) {
    // The run has gone with its last owner, and has ended its server.
  }
}

Task<void> Conversation::released(Run run) {
  try {
    auto releasing = run->release();
    co_await std::move(releasing);
  } catch (const std::bad_alloc&) {
    // As above.
  }
}

std::optional<std::string> Conversation::id() const {
  const std::lock_guard guard(lock_);
  return threadID_;
}

std::string Conversation::neededThreadID(const char* message) const {
  auto threadID = id();
  if (!threadID) throw ThreadRunError::streamError(message);
  return *std::move(threadID);
}

Conversation::Run Conversation::reusableRun() {
  const std::lock_guard guard(lock_);
  if (isClosed_) throw ThreadRunError::streamError("The thread has been closed");
  if (!persistentRun_) persistentRun_ = AppServerTurnRun::create(configuration_, services_);
  return persistentRun_;
}

std::optional<Conversation::ActiveOperation> Conversation::currentOperation() const {
  const std::lock_guard guard(lock_);
  return currentOperation_;
}

void Conversation::updateThreadID(const std::string& threadID, const ActiveOperation& operation) {
  const std::lock_guard guard(lock_);
  if (currentOperation_ == operation) threadID_ = threadID;
}

void Conversation::noteOperation(const ActiveOperation& operation) {
  const std::lock_guard guard(lock_);
  // The end of an idle server may have ended this operation since, and a later one may have been reserved.
  if (!currentOperation_ || currentOperation_->generation < operation.generation) currentOperation_ = operation;
}

Task<Conversation::ConnectedOperation> Conversation::connectOperation(Self self, Interruptions by) {
  refuseIfAborted(by.signal);
  const Run run = self->reusableRun();
  const std::uint64_t generation = co_await run->reserveOperation();
  ConnectedOperation connected;
  connected.operation = {run, generation};
  self->noteOperation(connected.operation);
  connected.by = std::move(by);
  if (connected.by.timeout) {
    connected.isDue = std::make_shared<std::atomic<bool>>(false);
    auto interrupt = [weakRun = std::weak_ptr(run), generation, isDue = connected.isDue] {
      if (const auto interrupted = weakRun.lock()) interrupted->interruptWhenDue(generation, isDue).detach();
    };
    connected.timer =
        self->services_.scheduler->postAfter(*connected.by.timeout, std::move(interrupt), "turn time-out");
  }
  if (connected.by.signal) {
    connected.signalToken = connected.by.signal->register_([weakRun = std::weak_ptr(run), generation] {
      if (const auto interrupted = weakRun.lock()) interrupted->interruptFromSignal(generation).detach();
    });
  }
  co_return connected;
}

void Conversation::finishActiveOperation(const ConnectedOperation& connected,
                                         std::optional<std::string> restoringThreadID) noexcept {
  if (connected.by.signal) connected.by.signal->unregister(connected.signalToken);
  std::map<std::uint64_t, OneShotResolver<void>> waiters;
  {
    const std::lock_guard guard(lock_);
    if (currentOperation_ != connected.operation) return;
    if (restoringThreadID) threadID_ = std::move(restoringThreadID);
    currentOperation_.reset();
    waiters.swap(idleWaiters_);
  }
  for (const auto& [number, waiter] : waiters) waiter.resume();
}

std::exception_ptr Conversation::ConnectedOperation::failure(const std::exception_ptr& own) const {
  return isDue && *isDue ? std::make_exception_ptr(TimeoutError(*by.timeout)) : own;
}

Task<StreamedTurn> Conversation::start(Self self, OperationRequest request, Interruptions by,
                                       std::optional<std::string> restoringThreadID) {
  auto connecting = connectOperation(self, std::move(by));
  auto connected = co_await std::move(connecting);
  const ActiveOperation operation = connected.operation;
  // The thread of a turn may have become known since the call.
  if (auto* turn = std::get_if<OperationRequest::Turn>(&request.value)) turn->existingThreadID = self->id();
  try {
    auto start = operation.run->start(std::move(request), operation.generation);
    auto started = co_await std::move(start);
    if (!restoringThreadID) self->updateThreadID(started.threadID, operation);
    co_return self->wrapOperationEvents(self, std::move(started.events), std::move(connected),
                                        std::move(restoringThreadID));
  } catch (...) {
    self->finishActiveOperation(connected, std::nullopt);
    std::rethrow_exception(connected.failure(std::current_exception()));
  }
}

StreamedTurn Conversation::wrapOperationEvents(const Self& self, EventChannel<ThreadEvent> events,
                                               ConnectedOperation connected,
                                               std::optional<std::string> restoringThreadID) {
  auto ends = EventChannel<ThreadEvent>::make(ChannelLimit::unbounded(), "turn event");
  auto forwarding =
      forwardEvents(self, std::move(events), std::move(ends.first), std::move(connected), std::move(restoringThreadID));
  std::move(forwarding).withStopToken({}).onScheduler(*services_.scheduler).detach();
  return StreamedTurn(std::move(ends.second));
}

Task<void> Conversation::forwardEvents(Self self, EventChannel<ThreadEvent> from, EventProducer<ThreadEvent> to,
                                       ConnectedOperation connected, std::optional<std::string> restoringThreadID) {
  std::exception_ptr failure;
  try {
    for (;;) {
      auto events = co_await from.nextBatch();
      if (events.empty()) break;
      for (const ThreadEvent& event : events) {
        const auto* started = std::get_if<ThreadStartedEvent>(&event.value);
        if (started && !restoringThreadID) self->updateThreadID(started->threadID, connected.operation);
      }
      to.yieldAll(std::move(events));
    }
  } catch (...) {
    failure = std::current_exception();
  }
  self->finishActiveOperation(connected, std::move(restoringThreadID));
  if (failure) {
    to.fail(connected.failure(failure));
  } else {
    to.finish();
  }
}

Task<StreamedTurn> Conversation::runStreamedInternal(Self self, Input input, TurnOptions turnOptions) {
  Interruptions by(turnOptions.signal, turnOptions.timeout);
  auto request = OperationRequest::turn(std::nullopt, std::move(input), std::move(turnOptions));
  auto starting = start(std::move(self), std::move(request), std::move(by));
  auto streamed = co_await std::move(starting);
  co_return streamed;
}

Task<StreamedTurn> Conversation::startReviewStreamed(Self self, ReviewTarget target, ReviewDelivery delivery,
                                                     std::optional<AbortSignal> signal) {
  if (delivery == ReviewDelivery::detached) {
    throw ThreadRunError::streamError("Detached reviews require a separate thread owner");
  }
  std::string threadID = self->neededThreadID("Start the thread before requesting a review");
  Interruptions by(std::move(signal), std::nullopt);
  auto request = OperationRequest::review(threadID, std::move(target), delivery);
  auto starting = start(std::move(self), std::move(request), std::move(by), std::move(threadID));
  auto streamed = co_await std::move(starting);
  co_return streamed;
}

Task<StreamedTurn> Conversation::compactStreamed(Self self, std::optional<AbortSignal> signal) {
  std::string threadID = self->neededThreadID("Start the thread before requesting compaction");
  Interruptions by(std::move(signal), std::nullopt);
  auto request = OperationRequest::compaction(threadID);
  auto starting = start(std::move(self), std::move(request), std::move(by), std::move(threadID));
  auto streamed = co_await std::move(starting);
  co_return streamed;
}

Task<StreamedTurn> Conversation::runSideConversationStreamed(Self self, Input input, std::string developerInstructions,
                                                             TurnOptions turnOptions) {
  std::string threadID = self->neededThreadID("Start the main thread before opening a side conversation");
  Interruptions by(turnOptions.signal, turnOptions.timeout);
  auto request = OperationRequest::ephemeralForkTurn(threadID, std::move(input), std::move(developerInstructions),
                                                     std::move(turnOptions));
  auto starting = start(std::move(self), std::move(request), std::move(by), std::move(threadID));
  auto streamed = co_await std::move(starting);
  co_return streamed;
}

Task<Turn> Conversation::run(Self self, Input input, TurnOptions turnOptions) {
  auto start = runStreamedInternal(self, std::move(input), std::move(turnOptions));
  auto streamed = co_await std::move(start);
  Turn turn;
  while (auto event = co_await streamed.events.next()) fold(*event, turn);
  co_return turn;
}

Task<void> Conversation::steer(Self self, Input input, TurnOptions turnOptions) {
  const auto operation = self->currentOperation();
  if (!operation) throw ThreadRunError::streamError("No active turn to steer");
  auto steering = operation->run->steer(std::move(input), std::move(turnOptions), operation->generation);
  co_await std::move(steering);
}

Task<void> Conversation::submitRequestUserInput(Self self, std::string itemID,
                                                std::map<std::string, std::vector<std::string>> answers) {
  const auto operation = self->currentOperation();
  if (!operation) throw ThreadRunError::streamError("No active turn for request_user_input response");
  auto submission = operation->run->submitUserInput(std::move(itemID), std::move(answers), operation->generation);
  co_await std::move(submission);
}

Task<void> Conversation::interrupt(Self self) {
  const auto operation = self->currentOperation();
  if (!operation) co_return;
  auto interruption = operation->run->interruptFromSignal(operation->generation);
  co_await std::move(interruption);
}

Task<void> Conversation::idle(Self self) {
  const OneShot<void> ended("end of the operation");
  std::uint64_t number = 0;
  {
    const std::lock_guard guard(self->lock_);
    if (!self->currentOperation_) co_return;
    number = self->nextIdleWaiter_++;
    self->idleWaiters_.emplace(number, ended.resolver());
  }
  try {
    co_await ended.wait();
  } catch (const CancelledError&) {
    const std::lock_guard guard(self->lock_);
    self->idleWaiters_.erase(number);
    throw;
  }
}

Task<void> Conversation::close(Self self) {
  Run run;
  {
    const std::lock_guard guard(self->lock_);
    self->isClosed_ = true;
    run = self->persistentRun_;
  }
  if (!run) co_return;
  co_await run->close();
  co_await idle(self);
}

}  // namespace ormel::detail
