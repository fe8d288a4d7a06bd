#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignOracle.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"
#include "OrmelSDK/Base/OrmelProcessError.h"

namespace ormel::testing {

namespace {

constexpr std::uint64_t second = 1'000'000'000;
constexpr std::uint64_t requestTimeout = 30 * second;
constexpr std::uint64_t exitGrace = second / 10;

bool isLastRequest(const std::string& method) {
  return method == "turn/start" || method == "review/start" || method == "thread/compact/start";
}

}  // namespace

// Promises.

void CampaignOracle::require(bool holds, const std::string& promise) {
  if (!holds) world_.breaks(promise);
}

void CampaignOracle::meetMoment() {
  if (world_.server.started() > launches_) noteLaunch();
  if (world_.scheduler.now() == moment_) return;
  requireNothingIsDue();
  moment_ = world_.scheduler.now();
  activityAtMoment_ = activity_;
}

void CampaignOracle::requireNothingIsDue() {
  if (isOver_) return;
  if (current_) requireStartIsNotDue();
  if (hasProcess_) requireProcessIsNotDue();
  requireProbeIsNotDue();
  require(!isInterruptRefused_, "an interrupt that is refused ends the operation at once");
  require(!graceAt_ || *graceAt_ > moment_, "an acknowledged interrupt ends the operation after 3 seconds");
  for (auto request = requests_.begin(); request != requests_.end();) {
    const bool isDue = request->second.deadline <= moment_;
    const bool isOfThePast = !current_ || request->second.generation != current_->generation;
    require(!isDue || isOfThePast, "a request ends after 30 seconds: " + request->second.method);
    if (isDue)
      resolve(request->second.call, "App-server RPC " + request->second.method + " timed out after 30 seconds");
    request = isDue ? requests_.erase(request) : std::next(request);
  }
  for (const Operation& operation : operations_) {
    if (!operation.end || !operation.record) continue;
    require(operationsOver_.count(operation.record) != 0, "the clients see the end of an operation at once");
  }
  for (const auto& record : world_.operations()) {
    const bool isCancelled = record->stop.stop_requested();
    require(!isCancelled || record->isOver, "a caller that is cancelled returns at once");
  }
  for (const auto& [call, expectation] : calls_) {
    // One whose time-out is told in the next step but in this moment is not late.
    const bool isLate = expectation.isResolved && callsOver_.count(call) == 0;
    require(!isLate, "a call returns with the end of its request");
  }
}

void CampaignOracle::requireStartIsNotDue() {
  const bool waits = current_->phase == Phase::sent || current_->phase == Phase::returned;
  require(waits, "a start goes on as soon as it can: " + current_->method);
}

void CampaignOracle::requireProcessIsNotDue() {
  auto& lines = linesOfProcess();
  while (!lines.empty() && lines.front().failure && lines.front().mayBeTaken) lines.pop_front();
  require(lines.empty(), "all lines that are there are taken");
  require(!outputClosedAt_, "the end of the output ends the use of a process at once");
  require(!processEndedAt_ || *processEndedAt_ + exitGrace > moment_, "an exit is reported after 0.1 seconds");
}

void CampaignOracle::requireProbeIsNotDue() {
  if (!probe_) return;
  if (!probe_->requestID.empty()) {
    require(!probe_->answer && !probe_->refusal, "the answer about a turn is applied at once");
    return;
  }
  if (probe_->at > moment_) return;
  const bool isSilent = probe_->low == probe_->high && activityAtMoment_ == probe_->low && activity_ == probe_->low;
  require(!isSilent, "a server that is silent for 120 seconds is asked for its turn");
  probe_->at += 120 * second;
  probe_->low = activityAtMoment_;
  probe_->high = activity_;
}

void CampaignOracle::compare(const detail::AppServerTurnRun& run) {
  const auto& stream = run.stream();
  const auto current = current_ ? std::optional(current_->generation) : std::nullopt;
  require(stream.currentOperationGeneration() == current, "an operation is current until it must end");
  require(run.transport().hasProcess() == hasProcess_, "the run has a process exactly when it must");
  require(run.transport().didInitializeProcess() == isInitialized_, "the handshake is done exactly when it must");
  require(run.scope().coordinatorThreadID() == thread_, "the thread is the right one");
  require(run.scope().coordinatorTurnID() == turn_, "the turn is the right one");
  require(run.scope().active().activeThreadID == activeThread_, "requests address the right thread");
  require(run.scope().active().activeTurnID == activeTurn_, "requests address the right turn");
  std::size_t atLeast = 0;
  for (const auto& [id, request] : requests_) {
    const bool isOfThePast = !current || request.generation != *current;
    const bool isCancelled = current_ && current_->record && current_->record->stop.stop_requested();
    // Such a request may have ended already, and nothing tells.
    if (!(isOfThePast && request.deadline == moment_) && !isCancelled) ++atLeast;
  }
  const std::size_t count = run.requests().count();
  require(count >= atLeast && count <= requests_.size(), "the requests in flight are those that must be");
}

// The operation.

void CampaignOracle::reserve(OperationRecord& record) {
  Operation& operation = operations_.emplace_back();
  operation.generation = ++lastGeneration_;
  operation.record = &record;
  byRecord_[&record] = &operation;
  current_ = &operation;
  thread_.reset();
  turn_.reset();
  activeTurn_.reset();
  acceptsTurnFromNotification_ = false;
  starts_.clear();
  completions_.clear();
  items_.clear();
  questions_.clear();
  isAborted_ = false;
}

void CampaignOracle::emit(const std::string& event) {
  if (current_ && !event.empty()) current_->events.push_back(event);
}

void CampaignOracle::emitAll(const std::vector<std::string>& events) {
  for (const std::string& event : events) emit(event);
}

void CampaignOracle::end(End with) {
  Operation& operation = *std::exchange(current_, nullptr);
  noteStartAtEnd(operation, with);
  operation.endedAt = moment_;
  for (auto request = requests_.begin(); request != requests_.end();) {
    const bool survives = !with.isFailure && request->second.method == "turn/steer";
    if (!survives) resolve(request->second.call, with.isFailure ? with.text : std::string(streamFinished));
    request = survives ? std::next(request) : requests_.erase(request);
  }
  starts_.clear();
  completions_.clear();
  activeTurn_.reset();
  questions_.clear();
  probe_.reset();
  graceAt_.reset();
  interrupted_.reset();
  isInterruptRefused_ = false;
  waiterSince_.reset();
  const bool isFailure = with.isFailure;
  operation.end = std::move(with);
  if (isFailure) dropProcess();
}

/// The end of a start that is under way when its operation ends.
void CampaignOracle::noteStartAtEnd(Operation& operation, const End& with) {
  switch (operation.phase) {
    case Phase::reserved:
    case Phase::returned:
    case Phase::inHook:
      break;
    case Phase::sent:
      operation.startError = with.isFailure ? with.text : std::string(streamFinished);
      break;
    case Phase::responded:
      if (operation.refusal) {
        operation.startError = operation.refusal;
      } else if (!isLastRequest(operation.method)) {
        operation.startError = noLongerCurrent;
      }
      break;
    case Phase::launching:
      operation.startError = noLongerCurrent;
      if (world_.isUntrusted()) operation.startError = OrmelProcessError::trustFailureRecoveryMessage();
      break;
    default:
      operation.startError = noLongerCurrent;
  }
}

/// The interrupt itself reports no failure.
void CampaignOracle::resolve(const CallRecord* call, std::optional<std::string> outcome) {
  const auto found = calls_.find(call);
  if (found == calls_.end()) return;
  found->second.isResolved = true;
  if (found->second.outcomes.empty()) found->second.outcomes.push_back(std::move(outcome));
}

void CampaignOracle::dropProcess() {
  linesOfProcess().clear();
  hasProcess_ = false;
  isInitialized_ = false;
  processEndedAt_.reset();
  outputClosedAt_.reset();
  thread_.reset();
  turn_.reset();
  activeThread_.reset();
  activeTurn_.reset();
  acceptsTurnFromNotification_ = false;
  starts_.clear();
  completions_.clear();
}

void CampaignOracle::noteLaunch() {
  require(world_.server.started() == launches_ + 1, "processes are started one at a time");
  require(current_ && current_->phase == Phase::launching && !hasProcess_, "a process is started for an operation");
  launches_ = world_.server.started();
  launchesTried_ = world_.server.launchesTried();
  hasProcess_ = true;
  process_ = world_.server.lastProcess().identifier();
}

void CampaignOracle::noteProcess() {
  if (!hasProcess_) return;
  const InMemoryProcess& process = world_.server.lastProcess();
  if (!process.isRunning() && !processEndedAt_) processEndedAt_ = world_.scheduler.now();
  if (process.isOutputClosed() && !outputClosedAt_) outputClosedAt_ = world_.scheduler.now();
}

// The clients.

void CampaignOracle::reserving(OperationRecord& record) {
  meetMoment();
  if (current_) {
    refusedStarts_[&record] = alreadyActive;
  } else {
    reserve(record);
  }
}

void CampaignOracle::starting(OperationRecord& record, std::optional<std::uint64_t> prepared) {
  meetMoment();
  if (prepared && (!current_ || current_->generation != *prepared)) {
    refusedStarts_[&record] = noLongerCurrent;
    return;
  }
  if (!prepared && current_) {
    refusedStarts_[&record] = alreadyActive;
    return;
  }
  if (!prepared) reserve(record);
  current_->phase = hasProcess_ && isInitialized_ ? Phase::entering : Phase::launching;
}

bool CampaignOracle::isCurrent(Expected expected) const {
  return current_ && (!expected || *expected == current_->generation);
}

void CampaignOracle::steering(CallRecord& record, const std::string& text, Expected expected) {
  meetMoment();
  CallExpectation& expectation = calls_[&record];
  if (isCurrent(expected) && activeThread_ && activeTurn_) {
    writesDue_.insert("turn/steer");
    joining_ = &record;
    joiningText_ = text;
  } else {
    expectation = {true, {"No active turn to steer"}};
  }
}

void CampaignOracle::interrupting(CallRecord& record, Expected expected) {
  meetMoment();
  CallExpectation& expectation = calls_[&record];
  expectation.outcomes = {std::nullopt};
  if (!isCurrent(expected) || isAborted_) {
    expectation.isResolved = true;
    return;
  }
  isAborted_ = true;
  if (activeThread_ && activeTurn_) {
    writesDue_.insert("turn/interrupt");
    joining_ = &record;
    return;
  }
  expectation.isResolved = true;
  end({true, true, std::string(aborted)});
}

void CampaignOracle::submitting(CallRecord& record, const std::string& itemID, Expected expected) {
  meetMoment();
  CallExpectation& expectation = calls_[&record];
  expectation.isResolved = true;
  const auto question = questions_.find(itemID);
  if (!isCurrent(expected)) {
    expectation.outcomes = {"No active turn for request_user_input response"};
  } else if (question == questions_.end()) {
    expectation.outcomes = {"No pending request_user_input call for item: " + itemID};
  } else {
    expectation.outcomes = {std::nullopt};
    writesDue_.insert("answer to " + question->second);
    questions_.erase(question);
    emitAll(items_.userHasAnswered(itemID));
  }
}

void CampaignOracle::releasing(CallRecord& record) {
  meetMoment();
  calls_[&record] = {true, {std::nullopt}};
  if (current_) end({});
  if (hasProcess_) dropProcess();
}

void CampaignOracle::toldThread(const std::string& threadID) {
  meetMoment();
  // Its operation may have ended since.
  if (!current_ || current_->phase != Phase::entered) return;
  require(thread_ == threadID, "the thread that is told is the one that the server named");
  current_->phase = Phase::inHandler;
}

void CampaignOracle::hooked(const std::string& method, std::uint64_t operationGeneration) {
  meetMoment();
  const bool isOfCurrent = current_ && current_->generation == operationGeneration;
  if (method != "turn/start" || !isOfCurrent || current_->phase != Phase::responded) return;
  current_->phase = Phase::inHook;
  waiterSince_.reset();
}

// The outcomes that the clients see.

void CampaignOracle::ended(const OperationRecord& record) {
  meetMoment();
  operationsOver_.insert(&record);
  const auto refusedStart = refusedStarts_.find(&record);
  if (refusedStart != refusedStarts_.end()) {
    require(record.wasCancelled || record.error == refusedStart->second,
            "a start fails with: " + refusedStart->second + ", not: " + record.error.value_or("success"));
    return;
  }
  if (record.wasCancelled || record.wasAbandoned) return;
  const auto found = byRecord_.find(&record);
  if (found == byRecord_.end()) return require(false, "an operation that ends was begun");
  const Operation& operation = *found->second;
  // A run that goes within a step leaves no trace of what it did in it.
  if (isOver_ && !operation.end) return;
  if (!operation.end) return require(false, "an operation ends when it must: " + record.error.value_or("plain end"));
  if (operation.isStartCancelled) return require(false, "a start that is cancelled is told so");
  const auto expected =
      operation.startError || !operation.end->isFailure ? operation.startError : std::optional(operation.end->text);
  require(record.wasStarted == !operation.startError, "a start succeeds exactly when it must");
  require(record.error == expected,
          "an operation ends with: " + expected.value_or("success") + ", not: " + record.error.value_or("success"));
  if (operation.startError) return require(record.events.empty(), "a start that failed gives no events");
  const auto [actual, wanted] =
      std::mismatch(record.events.begin(), record.events.end(), operation.events.begin(), operation.events.end());
  require(actual == record.events.end() && wanted == operation.events.end(),
          "the next event is: " + (wanted == operation.events.end() ? "none" : *wanted) +
              ", not: " + (actual == record.events.end() ? "none" : *actual));
}

void CampaignOracle::ended(const CallRecord& record) {
  if (isOver_) return;
  meetMoment();
  callsOver_.insert(&record);
  const auto found = calls_.find(&record);
  if (found == calls_.end()) return;
  const CallExpectation& expectation = found->second;
  if (!expectation.isResolved && record.error && record.error->ends_with("timed out after 30 seconds")) {
    // The time-out of a request that has outlived its operation shows in nothing else.
    const auto request = std::find_if(requests_.begin(), requests_.end(),
                                      [&record](const auto& entry) { return entry.second.call == &record; });
    require(request != requests_.end() && request->second.deadline == moment_, "a request ends after 30 seconds");
    if (request != requests_.end()) requests_.erase(request);
    found->second.isResolved = true;
    return;
  }
  require(expectation.isResolved, "a call ends with its request: " + record.error.value_or("success"));
  const bool isExpected =
      std::find(expectation.outcomes.begin(), expectation.outcomes.end(), record.error) != expectation.outcomes.end();
  require(isExpected || !expectation.isResolved,
          "a call ends as it must, not with: " + record.error.value_or("success"));
}

void CampaignOracle::settled() {
  requireNothingIsDue();
  if (isOver_) return;
  require(!current_, "each operation ends, and before anybody is released");
  for (const auto& [call, expectation] : calls_) {
    require(callsOver_.count(call) != 0, "each call ends, and before anybody is released");
  }
}

// The run's writes.

void CampaignOracle::runWrote(const JSONValue& message) {
  meetMoment();
  const std::string method = textOf(message, "method");
  const JSONValue* id = message.find("id");
  const JSONValue* params = objectIn(message, "params");
  if (method.empty()) {
    const auto due = id ? writesDue_.find("answer to " + id->encode()) : writesDue_.end();
    if (due != writesDue_.end()) writesDue_.erase(due);
  } else if (method == "initialized") {
    wroteInitialized();
  } else if (method == "skills/extraRoots/set") {
    require(current_ && current_->phase == Phase::entering && needsRoots() && !current_->hasSetRoots,
            "the roots of skills are told once in each operation");
    if (current_) current_->hasSetRoots = true;
  } else {
    const auto number = id ? static_cast<std::int64_t>(id->numberValue().value_or(0)) : 0;
    require(number >= nextID_ && number <= nextID_ + idsSpent_, "requests are numbered one by one");
    nextID_ = number + 1;
    idsSpent_ = 0;
    wroteRequest(method, id ? id->encode() : "", params ? *params : JSONValue::object());
  }
}

bool CampaignOracle::needsRoots() const {
  const auto& roots = world_.configuration.threadOptions.skillExtraRoots;
  return roots && std::any_of(roots->begin(), roots->end(), [](const std::string& root) {
           return root.find_first_not_of(" \t\r\n") != std::string::npos;
         });
}

void CampaignOracle::wroteInitialized() {
  const bool isAnswered = current_ && current_->phase == Phase::responded && current_->method == "initialize";
  require(isAnswered && !current_->refusal && hasProcess_, "the handshake is confirmed once it is answered");
  if (!current_) return;
  current_->phase = Phase::entering;
  waiterSince_.reset();
  isInitialized_ = true;
}

void CampaignOracle::wroteRequest(const std::string& method, const std::string& id, const JSONValue& params) {
  if (!current_) return require(false, "only an operation that goes on sends requests: " + method);
  Request request{method, current_->generation, moment_ + requestTimeout, nullptr};
  if (method == "turn/steer" || method == "turn/interrupt") {
    request.call = wroteJoin(method, params);
  } else if (method == "thread/read") {
    wroteProbe(id, params);
  } else {
    wroteStartRequest(method, params);
  }
  requests_.emplace(id, request);
}

void CampaignOracle::wroteStartRequest(const std::string& method, const JSONValue& params) {
  Operation& operation = *current_;
  const OperationKind kind = operation.record->kind;
  require(!operation.record->stop.stop_requested(), "a caller that is cancelled sends nothing more");
  const bool isAnswered = operation.phase == Phase::responded && !operation.refusal;
  const bool isOfTurn = kind == OperationKind::turn || kind == OperationKind::resumedTurn;
  bool isRight = false;
  if (method == "initialize") {
    isRight = operation.phase == Phase::launching;
  } else if (method == "thread/start" || method == "thread/resume") {
    isRight = operation.phase == Phase::entering && (method == "thread/start") == (kind == OperationKind::turn) &&
              operation.hasSetRoots == needsRoots();
  } else if (method == "turn/start") {
    const bool isTold = world_.configuration.threadOptions.threadStartedHandler.has_value();
    const bool isForked = kind == OperationKind::fork && isAnswered && operation.method == "thread/fork";
    const bool isNext = isTold ? operation.phase == Phase::inHandler : isAnswered && isInformedOfThread();
    isRight = isForked || (isOfTurn && isNext);
    if (isRight && operation.phase == Phase::responded) enterThread();
    isRight = isRight && textOf(params, "threadId") == activeThread_;
  } else {
    const bool isNext = (method == "review/start" && kind == OperationKind::review) ||
                        (method == "thread/compact/start" && kind == OperationKind::compaction) ||
                        (method == "thread/fork" && kind == OperationKind::fork);
    isRight = isNext && isAnswered && operation.method == "thread/resume";
    if (isRight) enterThread();
    if (kind == OperationKind::compaction) {
      acceptsTurnFromNotification_ = true;
    } else {
      leaveThread();
    }
  }
  require(isRight, "an operation takes its steps in their order, not: " + method);
  operation.phase = Phase::sent;
  operation.method = method;
  waiterSince_.reset();
}

bool CampaignOracle::isInformedOfThread() const {
  return current_->method == "thread/start" || current_->method == "thread/resume";
}

const CallRecord* CampaignOracle::wroteJoin(const std::string& method, const JSONValue& params) {
  const auto due = writesDue_.find(method);
  require(due != writesDue_.end(), "nothing is written that nobody asked for: " + method);
  if (due != writesDue_.end()) writesDue_.erase(due);
  const std::string turnID = textOf(params, method == "turn/steer" ? "expectedTurnId" : "turnId");
  require(textOf(params, "threadId") == activeThread_ && turnID == activeTurn_, "who joins a turn addresses it");
  if (method == "turn/steer") {
    require(params.encode().find('"' + joiningText_ + '"') != std::string::npos, "a steer carries its input");
  } else {
    interrupted_ = {textOf(params, "threadId"), turnID};
  }
  return std::exchange(joining_, nullptr);
}

void CampaignOracle::wroteProbe(const std::string& id, const JSONValue& params) {
  const bool isDue = probe_ && probe_->requestID.empty() && probe_->at == moment_;
  require(isDue, "a turn is asked for once, 120 seconds after it was heard of");
  if (!isDue) return;
  require(activity_ >= probe_->low && activity_ <= probe_->high, "only a silent server is asked for its turn");
  require(textOf(params, "threadId") == thread_ && params.find("includeTurns"), "the probe asks for the turn's thread");
  probe_->requestID = id;
}

void CampaignOracle::enterThread() {
  setThread(namedThread());
  emit("thread started " + thread_.value_or(""));
}

std::string CampaignOracle::namedThread() const {
  const JSONValue* thread = objectIn(current_->response, "thread");
  return thread ? textOf(*thread, "id") : "";
}

void CampaignOracle::leaveThread() {
  thread_.reset();
  turn_.reset();
  activeTurn_.reset();
  acceptsTurnFromNotification_ = false;
  starts_.clear();
  completions_.clear();
}

// The events of a step.

void CampaignOracle::stepped(const detail::AppServerTurnRun* run) {
  if (isOver_) return;
  meetMoment();
  if (!run) {
    isOver_ = true;
    return;
  }
  noteProcess();
  takeLines(run->protocolActivityGeneration());
  require(writesDue_.empty(), "what a call has to write is written at once");
  if (isToBeTold() && run->scope().coordinatorThreadID() == namedThread()) {
    enterThread();
    current_->phase = Phase::entered;
    waiterSince_.reset();
  }
  if (canAdopt() && run->scope().coordinatorTurnID()) adopt();
  if (current_ && run->stream().currentOperationGeneration() != current_->generation) explainEnd(*run);
  if (hasProcess_ && !current_ && !run->transport().hasProcess()) {
    const bool isOver = outputClosedAt_ || (processEndedAt_ && *processEndedAt_ + exitGrace <= moment_);
    require(isOver, "an idle process is let go of only when it has ended");
    dropProcess();
  }
  auto& lines = linesOfProcess();
  for (Line& line : lines) {
    if (!line.failure) break;
    if (!current_) line.mayBeTaken = true;
  }
  if (current_) {
    const bool isVetted = static_cast<bool>(world_.configuration.ormelOptions.executableTrustAssessment);
    require(current_->phase != Phase::entering && (current_->phase != Phase::launching || isVetted),
            "an operation that is admitted goes on at once");
  }
  isOutputRead_ = run->transport().outputHasEnded();
  compare(*run);
}

/// Whether the application hears of the thread before a turn is started on it.
bool CampaignOracle::isToBeTold() const {
  if (!current_ || current_->phase != Phase::responded || current_->refusal || !isInformedOfThread()) return false;
  const OperationKind kind = current_->record->kind;
  const bool isOfTurn = kind == OperationKind::turn || kind == OperationKind::resumedTurn;
  return isOfTurn && world_.configuration.threadOptions.threadStartedHandler.has_value();
}

bool CampaignOracle::canAdopt() const {
  if (!current_ || turn_ || current_->refusal) return false;
  const bool isAnswered = current_->phase == Phase::inHook || current_->phase == Phase::responded;
  return isAnswered && (current_->method == "turn/start" || current_->method == "review/start");
}

void CampaignOracle::adopt() {
  if (current_->method == "review/start") setThread(textOf(current_->response, "reviewThreadId"));
  current_->phase = Phase::returned;
  waiterSince_.reset();
  const JSONValue* turn = objectIn(current_->response, "turn");
  setTurn(turn ? textOf(*turn, "id") : "");
}

// The cause that ended an operation, if no line did.

void CampaignOracle::explainEnd(const detail::AppServerTurnRun& run) {
  End actual;
  if (const auto error = run.stream().streamCompletion().streamError()) {
    actual.isFailure = true;
    try {
      std::rethrow_exception(error);
    } catch (const OrmelProcessError& failure) {
      actual.isAbort = failure.kind() == OrmelProcessError::Kind::aborted;
      actual.text = failure.what();
    } catch (const std::exception& failure) {
      actual.text = failure.what();
    }
  }
  if (explains(actual)) {
    if (current_) end(actual);
  } else {
    require(false, "nothing ends the operation with: " + (actual.isFailure ? actual.text : "success"));
    if (current_) end(actual);
  }
}

bool CampaignOracle::explains(const End& actual) {
  return isStartFailure(actual) || isTimeout(actual) || isInterruptEnd(actual) || isProbeEnd(actual) ||
         isProcessEnd(actual) || isBrokenLine(actual) || isCancellation(actual) || world_.mayFailWith(actual.text);
}

bool CampaignOracle::isStartFailure(const End& actual) {
  if (!actual.isFailure || actual.isAbort) return false;
  std::optional<std::string> failure;
  if (current_->phase == Phase::responded && current_->refusal) failure = current_->refusal;
  if (current_->phase == Phase::launching && world_.server.launchesTried() > launchesTried_) {
    launchesTried_ = world_.server.launchesTried();
    if (actual.text.starts_with("/usr/bin/env: ")) failure = actual.text;
  }
  if (current_->phase == Phase::launching && world_.isUntrusted()) {
    failure = OrmelProcessError::trustFailureRecoveryMessage();
  }
  if (failure != actual.text) return false;
  Operation& operation = *current_;
  end(actual);
  operation.startError = failure;
  return true;
}

bool CampaignOracle::isTimeout(const End& actual) const {
  return !actual.isAbort && std::any_of(requests_.begin(), requests_.end(), [&](const auto& entry) {
    const Request& request = entry.second;
    return request.generation == current_->generation && request.deadline == moment_ &&
           actual.text == "App-server RPC " + request.method + " timed out after 30 seconds";
  });
}

bool CampaignOracle::isInterruptEnd(const End& actual) const {
  return actual.isAbort && isAborted_ && (isInterruptRefused_ || graceAt_ == moment_);
}

bool CampaignOracle::isProcessEnd(const End& actual) const {
  const auto lines = lines_.find(process_);
  const bool isRead = lines == lines_.end() || lines->second.empty();
  const bool isAtEnd = outputClosedAt_ && isRead;
  const bool isReported = processEndedAt_ && *processEndedAt_ + exitGrace <= moment_ && isRead;
  if (!actual.isFailure || (!isAtEnd && !isReported)) return false;
  if (isAborted_) return actual.isAbort;
  if (actual.isAbort) return false;
  const std::string words = errorText();
  if (isAtEnd && actual.text == (words.empty() ? std::string(endOfFile) : words)) return true;
  // It is the reader of the output who tells of the end from then on.
  if (!isReported || isOutputRead_) return false;
  const auto termination = *world_.server.lastProcess().termination();
  const bool isSignal = termination.reason == detail::TerminationReason::uncaughtSignal;
  const std::string detail = (isSignal ? "signal " : "exit status ") + std::to_string(termination.status);
  return actual.text == std::string(exited) + detail + (words.empty() ? "" : ": " + words);
}

std::string CampaignOracle::errorText() const {
  return world_.behaviour.hasExplained(process_) ? std::string(explained) : "";
}

bool CampaignOracle::isBrokenLine(const End& actual) const {
  const auto lines = lines_.find(process_);
  if (lines == lines_.end() || lines->second.empty() || actual.isAbort) return false;
  const auto& failure = lines->second.front().failure;
  return failure && actual.text.starts_with(*failure);
}

bool CampaignOracle::isCancellation(const End& actual) {
  const bool isUnderWay = !current_->record->wasStarted;
  if (!actual.isAbort || !isUnderWay || !current_->record->stop.stop_requested()) return false;
  current_->isStartCancelled = true;
  // A request that is not written any more has taken its number.
  ++idsSpent_;
  return true;
}

}  // namespace ormel::testing
