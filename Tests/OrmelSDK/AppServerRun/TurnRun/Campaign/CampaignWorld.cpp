#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/Sleep.h"

namespace ormel::testing {

namespace {

/// A schedule takes a few hundred steps.
constexpr std::uint64_t stepLimit = 100'000;

/// The existing thread of the clients.
constexpr const char* threadOfOld = "thread-of-old";

std::string_view stampOf(std::string_view id) {
  const auto place = id.find('@');
  return place == std::string_view::npos ? std::string_view() : id.substr(place + 1);
}

std::size_t count(std::string_view text, std::string_view part) {
  std::size_t found = 0;
  for (auto place = text.find(part); place != std::string_view::npos; place = text.find(part, place + 1)) ++found;
  return found;
}

/// A wait of a few steps.
Task<void> pause(SimulatedScheduler& scheduler) {
  for (auto waits = scheduler.choose(6); waits > 0; --waits) co_await sleepFor(scheduler, std::chrono::nanoseconds(0));
}

}  // namespace

CampaignWorld::CampaignWorld(std::uint64_t seed)
    : scheduler(seed), behaviour(scheduler), server(scheduler), blockingWork(scheduler) {
  configuration.executablePath = "/server";
  configuration.ormelOptions.selectedOrmelPathOverride = true;
  configuration.ormelOptions.env = std::map<std::string, std::string>();
}

CampaignWorld::~CampaignWorld() { scheduler.setStepHook(nullptr); }

void CampaignWorld::dawdle() {
  isDawdling_ = true;
  configuration.threadOptions.threadStartedHandler = [this](const std::string& threadID) {
    if (oracle_) oracle_->toldThread(threadID);
    return pause(scheduler);
  };
}

void CampaignWorld::hurry() {
  isDawdling_ = false;
  configuration.threadOptions.threadStartedHandler.reset();
}

bool CampaignWorld::mayFailWith(std::string_view text) const {
  return std::any_of(allowedFailures_.begin(), allowedFailures_.end(),
                     [text](std::string_view beginning) { return text.starts_with(beginning); });
}

void CampaignWorld::open() {
  oracle_.emplace(*this);
  run_ = Run::create(configuration, detail::ServerServices(scheduler, server, blockingWork));
  open(run_);
}

void CampaignWorld::open(const std::shared_ptr<Run>& run) {
  InMemoryServerScript script = behaviour.script();
  script.onClientWrite = [this](InMemoryProcess& process, const std::string& line) { noteWrite(process, line); };
  script.onLostWrite = [this](InMemoryProcess&, const std::string& line) {
    if (oracle_) oracle_->runWrote(JSONValue::decode(line));
  };
  script.onSend = [this](InMemoryProcess& process, const JSONValue& message) {
    if (oracle_) oracle_->serverSent(process, message);
    if (observer_) observer_->serverSent(process, message);
  };
  behaviour.onBrokenLine = [this](const InMemoryProcess& process, std::string_view failure) {
    if (oracle_) oracle_->serverBroke(process, failure);
  };
  server.setScript(std::move(script));
  weakRun_ = run;
  if (isDawdling_) {
    run->stdoutChunkProcessingHook = [this](const std::string&) { return pause(scheduler); };
    run->postRequestAwaitHook = [this](const std::string& method, std::uint64_t operationGeneration) {
      if (oracle_) oracle_->hooked(method, operationGeneration);
      return pause(scheduler);
    };
  }
  scheduler.setStepHook([this] { afterStep(); });
}

// The clients' actions.

void CampaignWorld::launch(Task<void> task, std::stop_token stop) {
  ++tasksBegun_;
  auto ended = [this](TaskResult<void> result) noexcept {
    ++tasksEnded_;
    try {
      result.take();
    } catch (const std::exception& error) {
      breaks(std::string("a client's task does not throw: ") + error.what());
    }
  };
  std::move(task).onScheduler(scheduler).start(std::move(ended), std::move(stop));
}

OperationRecord& CampaignWorld::start(OperationKind kind, std::optional<std::uint64_t> preparedGeneration) {
  return startOperation(kind, preparedGeneration, false);
}

OperationRecord& CampaignWorld::reserveAndStart(OperationKind kind) { return startOperation(kind, std::nullopt, true); }

OperationRecord& CampaignWorld::startOperation(OperationKind kind, std::optional<std::uint64_t> preparedGeneration,
                                               bool reserves) {
  operations_.push_back(std::make_unique<OperationRecord>());
  OperationRecord& record = *operations_.back();
  record.kind = kind;
  if (!run_) {
    record.isOver = true;
    record.error = "dropped";
    return record;
  }
  launch(operate(*this, record, run_, preparedGeneration, reserves), record.stop.get_token());
  return record;
}

detail::OperationRequest CampaignWorld::requestOf(OperationKind kind) {
  using detail::OperationRequest;
  const std::string thread = threadOfOld;
  switch (kind) {
    case OperationKind::review:
      return OperationRequest::review(thread, ReviewTarget::custom("all"), ReviewDelivery::detached);
    case OperationKind::compaction:
      return OperationRequest::compaction(thread);
    case OperationKind::fork:
      return OperationRequest::ephemeralForkTurn(thread, "aside", "be brief", TurnOptions());
    default:
      return OperationRequest::turn(kind == OperationKind::resumedTurn ? std::optional(thread) : std::nullopt, "go",
                                    TurnOptions());
  }
}

Task<void> CampaignWorld::operate(CampaignWorld& world, OperationRecord& record, std::shared_ptr<Run> run,
                                  std::optional<std::uint64_t> preparedGeneration, bool reserves) {
  try {
    if (reserves) {
      auto reserving = reserveOnStrand(world, record, run);
      const std::uint64_t reserved = co_await std::move(reserving);
      preparedGeneration = reserved;
      Task<void> waiting = pause(world.scheduler);
      co_await std::move(waiting);
    }
    auto starting = startOnStrand(world, record, std::move(run), preparedGeneration);
    detail::StartedOperation started = co_await std::move(starting);
    record.wasStarted = true;
    while (const auto event = co_await started.events.next()) world.note(record, *event);
  } catch (const CancelledError& error) {
    record.wasCancelled = true;
    record.error = error.what();
  } catch (const AbandonedError& error) {
    record.wasAbandoned = true;
    record.error = error.what();
  } catch (const ThreadRunError& error) {
    record.error = error.what();
  } catch (const OrmelProcessError& error) {
    record.error = error.what();
  }
  record.isOver = true;
  record.wasReleased = world.isReleased_;
  if (world.oracle_) world.oracle_->ended(record);
  world.mix(record.error ? std::string_view(*record.error) : std::string_view("plain end"));
}

Task<std::uint64_t> CampaignWorld::reserveOnStrand(CampaignWorld& world, OperationRecord& record, SharedRun run) {
  co_await run->strand().enter();
  world.oracle_->reserving(record);
  auto reserving = run->reserveOperation();
  const std::uint64_t reserved = co_await std::move(reserving);
  co_return reserved;
}

Task<detail::StartedOperation> CampaignWorld::startOnStrand(CampaignWorld& world, OperationRecord& record,
                                                            SharedRun run,
                                                            std::optional<std::uint64_t> preparedGeneration) {
  co_await run->strand().enter();
  world.oracle_->starting(record, preparedGeneration);
  auto starting = run->start(requestOf(record.kind), preparedGeneration);
  run.reset();
  detail::StartedOperation started = co_await std::move(starting);
  co_return started;
}

Task<void> CampaignWorld::steerOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run, std::string text,
                                        Expected expected) {
  co_await run->strand().enter();
  world.oracle_->steering(record, text, expected);
  auto steering = run->steer(Input(text), TurnOptions(), expected);
  run.reset();
  co_await std::move(steering);
}

Task<void> CampaignWorld::submitOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run, std::string itemID,
                                         std::map<std::string, std::vector<std::string>> answers, Expected expected) {
  co_await run->strand().enter();
  world.oracle_->submitting(record, itemID, expected);
  auto submitting = run->submitUserInput(std::move(itemID), std::move(answers), expected);
  run.reset();
  co_await std::move(submitting);
}

Task<void> CampaignWorld::interruptOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run,
                                            Expected expected) {
  co_await run->strand().enter();
  world.oracle_->interrupting(record, expected);
  auto interrupting = run->interruptFromSignal(expected);
  run.reset();
  co_await std::move(interrupting);
}

Task<void> CampaignWorld::releaseOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run) {
  co_await run->strand().enter();
  world.oracle_->releasing(record);
  auto releasing = run->release();
  run.reset();
  co_await std::move(releasing);
}

Task<void> CampaignWorld::call(CampaignWorld& world, CallRecord& record, Task<void> task, bool isSteer) {
  try {
    co_await std::move(task);
  } catch (const Error& error) {
    record.error = error.what();
  }
  record.isOver = true;
  if (isSteer) --world.steersUnderWay_;
  if (world.oracle_) world.oracle_->ended(record);
  world.mix(record.error ? std::string_view(*record.error) : std::string_view("call done"));
}

CallRecord& CampaignWorld::begin(Task<void> task, bool isSteer) {
  return launchCall(newCall(), std::move(task), isSteer);
}

CallRecord& CampaignWorld::launchCall(CallRecord& record, Task<void> task, bool isSteer) {
  if (isSteer) ++steersUnderWay_;
  launch(call(*this, record, std::move(task), isSteer), {});
  return record;
}

CampaignWorld::Expected CampaignWorld::anyExpectation() {
  switch (scheduler.choose(8)) {
    case 0:
      return pastGeneration();
    case 1:
      return pastGeneration() + 1;
    default:
      return std::nullopt;
  }
}

CallRecord& CampaignWorld::steer() {
  CallRecord& record = newCall();
  if (!run_) return record;
  std::string text = "faster " + std::to_string(++steersMade_);
  return launchCall(record, steerOnStrand(*this, record, run_, std::move(text), anyExpectation()), true);
}

CallRecord& CampaignWorld::submit(std::string itemID, std::map<std::string, std::vector<std::string>> answers) {
  CallRecord& record = newCall();
  if (!run_) return record;
  return launchCall(record,
                    submitOnStrand(*this, record, run_, std::move(itemID), std::move(answers), anyExpectation()));
}

CallRecord& CampaignWorld::interrupt() {
  CallRecord& record = newCall();
  if (!run_) return record;
  return launchCall(record, interruptOnStrand(*this, record, run_, anyExpectation()));
}

CallRecord& CampaignWorld::release() {
  isReleased_ = true;
  CallRecord& record = newCall();
  if (!run_) return record;
  return launchCall(record, oracle_ ? releaseOnStrand(*this, record, run_) : run_->release());
}

void CampaignWorld::drop() {
  isDropped_ = isDropped_ || !isReleased_;
  run_.reset();
}

void CampaignWorld::atAnyStep(std::function<void()> action, std::uint64_t within) {
  actions_.push_back({scheduler.steps() + scheduler.choose(within), std::move(action)});
}

void CampaignWorld::after(std::chrono::nanoseconds delay, std::function<void()> action) {
  timers_.push_back(scheduler.postAfter(delay, std::move(action), "client's timer"));
}

void CampaignWorld::settle() {
  while (true) {
    scheduler.run(stepLimit);
    if (actions_.empty()) break;
    const auto next = std::min_element(actions_.begin(), actions_.end(),
                                       [](const auto& left, const auto& right) { return left.step < right.step; });
    scheduler.post(std::exchange(next->action, nullptr));
    actions_.erase(next);
  }
  if (oracle_) oracle_->settled();
  if (broken_) require(false, *broken_);
}

void CampaignWorld::close() {
  settle();
  if (run_) {
    release();
    settle();
    drop();
    settle();
  }
  for (const auto& record : operations_) checkOperation(*record);
  checkNothingIsLeft();
}

// The promises that hold at all times.

void CampaignWorld::breaks(std::string_view promise) {
  if (!broken_) broken_ = promise;
}

void CampaignWorld::require(bool holds, std::string_view promise) const {
  if (!holds) throw BrokenPromise("broken promise: " + std::string(promise));
}

void CampaignWorld::mix(std::uint64_t value) noexcept { trace_ = (trace_ ^ value) * 0x100000001b3U; }

void CampaignWorld::mix(std::string_view text) noexcept {
  for (const char character : text) mix(static_cast<unsigned char>(character));
}

void CampaignWorld::afterStep() {
  if (broken_) require(false, *broken_);
  mix(scheduler.now());
  const auto run = weakRun_.lock();
  if (oracle_) oracle_->stepped(run.get());
  if (broken_) require(false, *broken_);
  if (run) checkRun(*run);
  if (observer_) observer_->stepped(run.get());
  for (auto& planned : actions_) {
    if (planned.step <= scheduler.steps() && planned.action) scheduler.post(std::exchange(planned.action, nullptr));
  }
  std::erase_if(actions_, [](const auto& planned) { return !planned.action; });
}

void CampaignWorld::checkRun(const Run& run) {
  const auto& stream = run.stream();
  const auto& transport = run.transport();
  const auto current = stream.currentOperationGeneration();
  const auto mark = stream.completedOperationGenerationHighWaterMark();
  mix(current.value_or(0) * 8 + run.requests().count());
  mix(transport.generation() * 1024 + run.protocolActivityGeneration());

  require(mark >= highWaterMark_, "the high-water mark never falls");
  highWaterMark_ = mark;
  require(!current || stream.isPending(), "a current operation has not ended");
  require(!current || *current == mark + 1, "each operation ends, with its generation noted, before the next begins");

  require(transport.generation() >= transportGeneration_, "the transport's generation never falls");
  transportGeneration_ = transport.generation();
  require(transport.hasProcess() || !transport.didInitializeProcess(), "without a process there is no handshake");
  const std::size_t held = transport.hasProcess() ? 1U : 0U;
  require(server.held() == held || (isClosed_ && server.held() == 1), "the run holds its one process and no other");

  const auto& scope = run.scope();
  if (!transport.hasProcess()) {
    require(!scope.coordinatorThreadID() && !scope.coordinatorTurnID(), "without a process nothing is known of a turn");
  } else {
    const std::string stamp = std::to_string(server.lastProcess().identifier());
    const auto isOfProcess = [&stamp](const std::optional<std::string>& id) { return !id || stampOf(*id) == stamp; };
    require(isOfProcess(scope.coordinatorThreadID()) && isOfProcess(scope.coordinatorTurnID()),
            "what is known of a turn comes from the present process");
  }
  if (std::exchange(wasRunning_, current.has_value()) && !current) checkEndOfOperation(run);
}

void CampaignWorld::checkEndOfOperation(const Run& run) const {
  require(run.requests().count() <= steersUnderWay_, "the end of an operation leaves no request but steers");
  // An observer knows better: some requests may have come after the end.
  require(observer_ || run.serverRequests().count() == 0, "the end of an operation leaves no request of the server");
  // A timer that was cancelled when it was due may still be ready, and does nothing then.
  std::string pending = scheduler.pending();
  pending.erase(0, pending.find("; timers:"));
  require(count(pending, "[liveness probe") == 0, "the end of an operation leaves no probe");
  require(count(pending, "[interrupt grace") == 0, "the end of an operation leaves no grace");
  require(count(pending, "[request time-out") == run.requests().count(), "each request has its one timer");
}

// The clients' view.

void CampaignWorld::note(OperationRecord& record, const ThreadEvent& event) {
  mix(event.value.index());
  if (record.turnsEnded > 0) breaks("the end of a turn is its last event");
  const bool isEnd =
      std::holds_alternative<TurnFailedEvent>(event.value) || std::holds_alternative<TurnCompletedEvent>(event.value);
  if (isEnd) ++record.turnsEnded;
  std::string words = describe(event);
  if (!words.empty()) record.events.push_back(std::move(words));
}

// The lines of the run, seen in the call that writes them.

void CampaignWorld::noteWrite(InMemoryProcess& process, const std::string& line) {
  mix(line);
  const JSONValue message = JSONValue::decode(line);
  const std::string method = textOf(message, "method");
  if (!method.empty()) checkHandshake(process, method);
  checkScope(process, message, method);
}

void CampaignWorld::checkHandshake(const InMemoryProcess& process, std::string_view method) {
  const std::size_t place = process.linesWritten().size();
  if ((place == 1) != (method == "initialize") || (place == 2) != (method == "initialized")) {
    breaks("a process gets its handshake once and first");
  }
}

/// By what the server has named and the client has asked for, not by what the run believes.
void CampaignWorld::checkAddress(const InMemoryProcess& process, const JSONValue& params, std::string_view method) {
  const std::string threadID = textOf(params, "threadId");
  if (method == "thread/resume") {
    // An observer has a thread of its own.
    if (!observer_ && threadID != threadOfOld) breaks("the thread that is resumed is the one that was asked for");
    resumedThreadID_ = threadID;
  } else if (method == "review/start" || method == "thread/compact/start" || method == "thread/fork") {
    if (threadID != resumedThreadID_) breaks("what follows a resumed thread is about this one");
  } else if (method == "turn/start" || method == "thread/read") {
    if (threadID != behaviour.threadNamedBy(process)) breaks("a turn is one of the thread that the server has named");
  } else if (method == "turn/steer" || method == "turn/interrupt") {
    const char* key = method == "turn/steer" ? "expectedTurnId" : "turnId";
    const bool isPresent =
        threadID == behaviour.threadNamedBy(process) && textOf(params, key) == behaviour.turnNamedBy(process);
    if (!isPresent) breaks("who joins a turn joins the present one");
  }
}

void CampaignWorld::checkScope(const InMemoryProcess& process, const JSONValue& message, std::string_view method) {
  if (&process != &server.lastProcess()) breaks("nothing is written to an older process");
  const auto run = weakRun_.lock();
  if (!run) return breaks("a run that is gone writes nothing");
  if (oracle_) oracle_->runWrote(message);
  if (observer_) observer_->runWrote(*run, process, message);
  // A request that is not understood is refused at any time.
  if (message.find("error")) return;
  if (!run->stream().isPending()) breaks("nothing is written for an operation that has ended");
  const auto& turnID = run->scope().coordinatorTurnID();
  if (const JSONValue* params = message.find("params")) checkAddress(process, *params, method);
  if (method.empty() && !observer_ && turnID && textOf(message, "id") != "ask-" + *turnID) {
    breaks("no answer is written for a turn that is over");
  }
}

// The promises that hold at the end.

void CampaignWorld::checkOperation(const OperationRecord& record) const {
  require(record.isOver, "each operation ends");
  require(!record.wasCancelled || record.stop.stop_requested(), "only a cancelled caller is cancelled");
  require(!record.wasAbandoned || isDropped_, "the events end before their producer goes");
  if (record.error) require(record.turnsEnded == 0, "a failed operation has no ended turn");
  if (record.endedPlainly() && !record.wasReleased) {
    require(record.turnsEnded == 1, "a plain end follows the end of the turn");
  }
}

void CampaignWorld::requireErrors(const OperationRecord& record, const std::vector<std::string_view>& allowed) const {
  if (!record.error) return;
  const bool isAllowed = std::any_of(allowed.begin(), allowed.end(),
                                     [&record](std::string_view text) { return record.error->starts_with(text); });
  require(isAllowed, "the operation may not fail with: " + *record.error);
}

void CampaignWorld::checkNothingIsLeft() const {
  require(tasksEnded_ == tasksBegun_, "each call returns: " + scheduler.pending());
  require(weakRun_.expired(), "nothing holds the run");
  require(server.held() == 0 && server.read() == 0, "no process or pipe is held");
  require(behaviour.plan.ignoresTermination || server.running() == 0, "no process is left");
  const std::string pending = scheduler.pending();
  require(pending.ends_with("; ready:; timers:; waiting:"), "nothing is pending: " + pending);
}

}  // namespace ormel::testing
