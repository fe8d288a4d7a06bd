#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThreadOracle.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignEvents.h"

namespace ormel::testing {

namespace {

constexpr std::string_view closed = "The thread has been closed";
constexpr std::string_view noTurnToSteer = "No active turn to steer";

const JSONValue& paramsOf(const JSONValue& message) {
  static const JSONValue none = JSONValue::object();
  const JSONValue* params = message.find("params");
  return params ? *params : none;
}

bool isAmong(std::string_view text, const std::vector<std::string_view>& beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [text](std::string_view beginning) { return text.starts_with(beginning); });
}

std::optional<std::string> errorOf(const detail::StreamCompletion& completion) {
  const std::exception_ptr error = completion.streamError();
  if (!error) return std::nullopt;
  try {
    std::rethrow_exception(error);
  } catch (const Error& known) {
    return known.what();
  }
}

const char* refusalWithoutThread(ThreadCallKind kind) {
  switch (kind) {
    case ThreadCallKind::review:
      return "Start the thread before requesting a review";
    case ThreadCallKind::compaction:
      return "Start the thread before requesting compaction";
    case ThreadCallKind::side:
      return "Start the main thread before opening a side conversation";
    default:
      return nullptr;
  }
}

std::string timeoutText(std::chrono::nanoseconds timeout) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout).count();
  return "Timed out after " + std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

}  // namespace

std::string wordsOfItem(const JSONValue& item) { return textOf(item, "id") + " " + textOf(item, "text"); }

// Promises.

void CampaignThreadOracle::require(bool holds, const std::string& promise) {
  if (!holds) world_.breaks(promise);
}

CampaignThreadOracle::Operation* CampaignThreadOracle::operationOf(std::optional<std::uint64_t> generation) {
  const auto found = generation ? operations_.find(*generation) : operations_.end();
  return found == operations_.end() ? nullptr : &found->second;
}

std::optional<std::uint64_t> CampaignThreadOracle::busyWith() const {
  const auto conversation = conversation_.lock();
  const auto operation = conversation ? conversation->currentOperation() : std::nullopt;
  return operation ? std::optional(operation->generation) : std::nullopt;
}

/// A line that is written to a server which is about to be gone need not arrive.
bool CampaignThreadOracle::canLoseWrites() const { return world_.plan().fault || world_.plan().exitsAfterTurn; }

void CampaignThreadOracle::meetMoment() {
  if (world_.scheduler.now() == moment_) return;
  requireNothingIsDue();
  moment_ = world_.scheduler.now();
}

void CampaignThreadOracle::requireNothingIsDue() {
  const auto busy = busyWith();
  if (const Operation* operation = operationOf(busy)) {
    require(!operation->end, "the end of an operation is forwarded at once");
  }
  if (const Operation* operation = operationOf(current_)) {
    require(conversation_.expired() || busy == current_, "a thread is busy with the operation of its run");
    requireOperationIsNotDue(*operation);
  }
  for (const auto& [record, call] : calls_) {
    const bool isOver = record->isOver || !call.hasBegun;
    require(isOver || !call.refusal, "a call that is refused returns at once");
    const bool hasEnded = call.operation && call.operation->end;
    require(isOver || !hasEnded, "the application sees the end of its operation at once");
  }
  for (const ThreadJoin* join : joins_) {
    const bool waits = join->kind == ThreadJoin::Kind::idle && join->hasBegun && !join->isOver;
    require(!waits || busy, "a wait for idleness ends with the operation");
  }
}

void CampaignThreadOracle::requireOperationIsNotDue(const Operation& operation) {
  if (operation.wasInterrupted || canLoseWrites()) return;
  require(!mustBeInterrupted(operation), "an operation that the application stops is interrupted at once");
}

// The side of the application: everything that it stops.

bool CampaignThreadOracle::isStoppedBy(const ThreadCallRecord& call, const Operation& operation) const {
  const auto now = world_.scheduler.now();
  const bool isDue = call.timeout && now >= operation.begunAt + static_cast<std::uint64_t>(call.timeout->count());
  return call.controller.signal.isAborted() || call.stop.stop_requested() || isDue;
}

bool CampaignThreadOracle::mayBeInterrupted(const Operation& operation) const {
  if (isClosed_) return true;
  for (const ThreadJoin* join : joins_) {
    if (join->kind == ThreadJoin::Kind::interrupt && join->generation == operation.generation) return true;
  }
  if (operation.call) return isStoppedBy(*operation.call, operation);
  // It is the operation of one that is not known on the wire yet.
  return std::any_of(calls_.begin(), calls_.end(), [&](const auto& entry) {
    return !entry.second.operation && entry.second.hasBegun && isStoppedBy(*entry.first, operation);
  });
}

bool CampaignThreadOracle::mustBeInterrupted(const Operation& operation) const {
  for (const ThreadJoin* join : joins_) {
    if (join->kind == ThreadJoin::Kind::interrupt && join->generation == operation.generation) return true;
  }
  const ThreadCallRecord* call = operation.call;
  if (!call) return false;
  const bool isDue = call->timeout && moment_ >= operation.begunAt + static_cast<std::uint64_t>(call->timeout->count());
  return call->controller.signal.isAborted() || isDue;
}

// The application's calls.

void CampaignThreadOracle::begins(const ThreadCallRecord& record) {
  meetMoment();
  Call& call = calls_[&record];
  call.hasBegun = true;
  const auto conversation = conversation_.lock();
  call.idBefore = conversation ? conversation->id() : std::nullopt;
  call.newestBefore = operations_.empty() ? 0 : operations_.rbegin()->first;
  const char* needsThread = refusalWithoutThread(record.kind);
  if (needsThread && !call.idBefore) {
    call.refusal = needsThread;
  } else if (record.controller.signal.isAborted()) {
    call.refusal = aborted;
  } else if (isClosed_) {
    call.refusal = closed;
  }
  call.sawAnother = current_.has_value();
}

void CampaignThreadOracle::begins(ThreadJoin& join) {
  meetMoment();
  join.hasBegun = true;
  join.generation = busyWith();
  joins_.push_back(&join);
  if (join.kind == ThreadJoin::Kind::close) isClosed_ = true;
}

void CampaignThreadOracle::accepted(const ThreadCallRecord& record) {
  const Operation* operation = calls_[&record].operation;
  if (!operation || !record.isOfMainThread() || busyWith() != operation->generation) return;
  const auto id = conversation_.lock()->id();
  require(id == operation->threadID, "a turn that was accepted is one of the thread's conversation");
}

// The wire.

void CampaignThreadOracle::serverSent(const InMemoryProcess& process, const JSONValue& message) {
  lines_[process.identifier()].push_back(message);
}

void CampaignThreadOracle::runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process,
                                    const JSONValue& message) {
  Operation* operation = operationOf(run.stream().currentOperationGeneration());
  if (!operation) return;
  const std::string method = textOf(message, "method");
  if (method == "thread/start" || method == "thread/resume" || method == "thread/fork") {
    operation->entry += method;
    if (method != "thread/fork") operation->threadAsked = textOf(paramsOf(message), "threadId");
    operation->threadBefore = world_.behaviour.threadNamedBy(process);
    operation->threadID.clear();
    operation->process = &process;
  } else if (method == "turn/start" || method == "review/start" || method == "thread/compact/start") {
    noteNames(*operation);
    operation->turnBefore = world_.behaviour.turnNamedBy(process);
    operation->hasAskedForTurn = true;
    assign(*operation, method, message.encode());
  } else if (method == "turn/steer") {
    noteSteer(operation->generation, message.encode());
  } else if (method == "turn/interrupt") {
    require(!operation->wasInterrupted, "a turn is interrupted once");
    require(mayBeInterrupted(*operation), "a turn is interrupted when the application wants it only");
    operation->wasInterrupted = true;
  }
}

void CampaignThreadOracle::assign(Operation& operation, const std::string& method, const std::string& line) {
  const bool isCompaction = method == "thread/compact/start";
  std::vector<const ThreadCallRecord*> candidates;
  for (const auto& [record, call] : calls_) {
    if (!call.hasBegun || (isCompaction && (record->isOver || call.refusal || call.operation))) continue;
    const bool isCandidate =
        isCompaction ? record->kind == ThreadCallKind::compaction : line.find(record->name) != std::string::npos;
    if (isCandidate) candidates.push_back(record);
  }
  require(!candidates.empty(), "what is started is what a call asks for");
  if (candidates.size() != 1) return;
  const ThreadCallRecord& record = *candidates.front();
  Call& call = calls_[&record];
  require(!call.refusal, "what is refused is not started");
  require(!call.operation && !record.isOver, "a call starts one operation");
  call.operation = &operation;
  operation.call = &record;
  const auto& id = record.isOfMainThread() ? operation.idBefore : call.idBefore;
  const bool isFork = record.kind == ThreadCallKind::side;
  const std::string entry = !id ? "thread/start" : isFork ? "thread/resumethread/fork" : "thread/resume";
  const bool isEntered = operation.entry == entry || (isFork && operation.entry == "thread/fork");
  require(isEntered && (isFork || operation.threadAsked == id.value_or("")),
          "an operation is one of the thread's conversation: " + operation.entry + " " + operation.threadAsked);
}

void CampaignThreadOracle::noteSteer(std::uint64_t generation, const std::string& line) {
  for (ThreadJoin* join : joins_) {
    if (join->kind != ThreadJoin::Kind::steer || line.find(join->name) == std::string::npos) continue;
    require(join->generation == generation, "a steer reaches the operation that it was meant for");
    require(++join->writes == 1, "a steer is sent once");
    return;
  }
  world_.breaks("a steer is one of the application's");
}

// The run.

void CampaignThreadOracle::stepped(const detail::AppServerTurnRun* run) {
  meetMoment();
  if (!run) {
    current_.reset();
    return;
  }
  if (isClosed_ && !run->transport().hasProcess() && world_.server.held() == 1) closing_ = &world_.server.lastProcess();
  if (Operation* operation = operationOf(current_)) noteNames(*operation);
  takeLines(*run);
  const auto current = run->stream().currentOperationGeneration();
  if (current_ && current != current_) noteEnd(*run, operations_[*current_]);
  if (current && !operationOf(current)) {
    Operation& operation = operations_[*current];
    operation.generation = *current;
    operation.begunAt = moment_;
  }
  current_ = current;
  Operation* operation = operationOf(current_);
  const auto conversation = conversation_.lock();
  if (operation && operation->entry.empty() && conversation) operation->idBefore = conversation->id();
  if (current_) {
    for (auto& [record, call] : calls_) call.sawAnother = call.sawAnother || call.hasBegun;
  }
  checkID();
}

void CampaignThreadOracle::noteNames(Operation& operation) {
  if (!operation.process) return;
  const std::string thread = world_.behaviour.threadNamedBy(*operation.process);
  if (!operation.hasAskedForTurn && thread != operation.threadBefore) operation.threadID = thread;
  const std::string turn = world_.behaviour.turnNamedBy(*operation.process);
  if (operation.hasAskedForTurn && operation.turnID.empty() && turn != operation.turnBefore) operation.turnID = turn;
}

void CampaignThreadOracle::takeLines(const detail::AppServerTurnRun& run) {
  const std::uint64_t activity = run.protocolActivityGeneration();
  if (run.transport().generation() != transportGeneration_) {
    // Lines of the process that has just been let go of may have come in this very step.
    if (Operation* operation = operationOf(current_); operation && operation->process) {
      const auto& lines = lines_[operation->process->identifier()];
      const auto count = std::min<std::uint64_t>(activity - activityBefore_, lines.size());
      for (; linesTaken_ < count; ++linesTaken_) take(*operation, lines[linesTaken_]);
    }
    transportGeneration_ = run.transport().generation();
    activityBefore_ = activity;
    linesTaken_ = 0;
  }
  if (!run.transport().hasProcess()) return;
  const auto& lines = lines_[world_.server.lastProcess().identifier()];
  const auto count = std::min<std::uint64_t>(activity - activityBefore_, lines.size());
  for (; linesTaken_ < count; ++linesTaken_) {
    if (Operation* operation = operationOf(current_)) take(*operation, lines[linesTaken_]);
  }
}

void CampaignThreadOracle::take(Operation& operation, const JSONValue& line) {
  const std::string method = textOf(line, "method");
  if (method == "item/completed" && textOf(paramsOf(line), "turnId") == operation.turnID && !operation.status) {
    if (const JSONValue* item = paramsOf(line).find("item")) operation.items.push_back(wordsOfItem(*item));
  } else if (method == "turn/completed" && !operation.status) {
    // The first one ends the operation; a second one may come with the same chunk.
    const JSONValue* turn = paramsOf(line).find("turn");
    if (turn && textOf(*turn, "id") == operation.turnID) operation.status = textOf(*turn, "status");
  }
}

void CampaignThreadOracle::noteEnd(const detail::AppServerTurnRun& run, Operation& operation) {
  operation.end.emplace();
  operation.end->at = moment_;
  operation.end->error = errorOf(run.stream().streamCompletion());
  if (operation.end->error != aborted) return;
  require(mayBeInterrupted(operation), "an operation is aborted when the application wants it only");
  operation.wasInterrupted = true;
}

void CampaignThreadOracle::checkID() {
  const auto conversation = conversation_.lock();
  if (!conversation) return;
  const auto id = conversation->id();
  const auto busy = busyWith();
  // The thread may have become idle in the same step.
  const Operation* operation = operationOf(busy ? busy : lastBusy_);
  lastBusy_ = busy;
  if (std::exchange(lastID_, id) == id || operations_.empty()) return;
  if (!operation) return world_.breaks("the id changes within an operation only");
  const bool isNamed = id == operation->threadID;
  if (operation->call && operation->call->isOfMainThread()) {
    return require(isNamed, "the id is the one that the server named for the operation");
  }
  // The conversation may have moved on between such a call and its operation, and is taken back to the call's.
  const bool isTakenBack = std::any_of(calls_.begin(), calls_.end(), [&](const auto& entry) {
    const bool isCandidate = entry.second.operation == operation || !entry.second.operation;
    return isCandidate && !entry.first->isOfMainThread() && entry.second.idBefore == id;
  });
  require(isTakenBack || (!operation->call && isNamed), "the id is that of the main conversation");
}

// The outcomes.

void CampaignThreadOracle::ended(const ThreadCallRecord& record) {
  const Call& call = calls_[&record];
  if (!call.hasBegun) return;
  if (call.refusal) return checkRefused(record, call);
  if (record.wasCancelled || record.wasLeftUnread) return;
  if (!call.operation) return checkWithoutOperation(record, call);
  checkOutcome(record, *call.operation);
  const bool isForwarded = record.wasAccepted && operations_.rbegin()->first == call.operation->generation;
  if (!record.isOfMainThread() && isForwarded) {
    const auto conversation = conversation_.lock();
    require(!conversation || conversation->id() == call.idBefore, "the id is that of the main conversation again");
  }
}

void CampaignThreadOracle::checkRefused(const ThreadCallRecord& record, const Call& call) {
  require(record.error == call.refusal || record.wasCancelled,
          "a call is refused with: " + *call.refusal + ", not: " + record.error.value_or("no error"));
}

void CampaignThreadOracle::checkWithoutOperation(const ThreadCallRecord& record, const Call& call) {
  if (!record.error) return require(record.kind == ThreadCallKind::compaction, "a call that succeeds did something");
  if (*record.error == alreadyActive) return require(call.sawAnother, "a thread that is not busy takes a call");
  std::vector<std::string_view> allowed = {noLongerCurrent, streamFinished, alreadyFinished};
  if (isClosed_) allowed.push_back(closed);
  const std::string due = record.timeout ? timeoutText(*record.timeout) : "";
  if (record.timeout) allowed.push_back(due);
  require(!record.timeout || *record.error != aborted || isStoppedOtherwise(record),
          "a call that its time has ended tells of the time-out");
  bool isEnd = false;
  for (const auto& [generation, operation] : operations_) {
    const bool isUnknown = generation > call.newestBefore && !operation.call && operation.end;
    isEnd = isEnd || (isUnknown && operation.end->error == record.error);
  }
  require(isEnd || isAmong(*record.error, allowed), "a call without an operation may not fail with: " + *record.error);
}

/// The error with which `Thread::run` tells of a turn that failed.
std::optional<std::string> CampaignThreadOracle::failureOfTurn(const Operation& operation) const {
  if (!operation.status || operation.end->error) return std::nullopt;
  if (*operation.status == "failed") return "";
  return std::nullopt;
}

void CampaignThreadOracle::checkOutcome(const ThreadCallRecord& record, const Operation& operation) {
  if (!operation.end) return world_.breaks("a call lasts as long as its operation");
  if (record.timeout) checkTimeout(record, operation);
  const auto& expected = operation.end->error;
  const bool isOverdue = record.timeout && record.error == timeoutText(*record.timeout);
  if (!record.wasAccepted && record.kind != ThreadCallKind::run) {
    std::vector<std::string_view> allowed = {noLongerCurrent, alreadyFinished};
    if (!expected) allowed.push_back(streamFinished);
    const bool isAllowed = record.error == expected || isAmong(record.error.value_or(""), allowed);
    return require(record.error && (isOverdue || isAllowed),
                   "a start fails as its operation did: " + record.error.value_or("no error"));
  }
  if (const auto failure = failureOfTurn(operation); failure && record.kind == ThreadCallKind::run) {
    return require(record.error.has_value(), "a turn that failed is told by its call");
  }
  if (operation.status == "failed" && !expected && record.kind != ThreadCallKind::run) {
    require(record.turnsFailed == 1 && !record.error, "a turn that failed is told by an event");
  }
  const bool isOfStart = record.kind == ThreadCallKind::run && !record.wasAccepted && record.error &&
                         isAmong(*record.error, {noLongerCurrent, alreadyFinished});
  const bool isStrange = record.kind == ThreadCallKind::run && operation.status == "strange";
  require(isOverdue || isOfStart || isStrange || record.error == expected,
          "a call ends as its operation did: " + expected.value_or("plainly") +
              ", not: " + record.error.value_or("plainly"));
  checkItems(record, operation);
}

/// By something else than the time that the call gave it.
bool CampaignThreadOracle::isStoppedOtherwise(const ThreadCallRecord& record) const {
  return isClosed_ || record.controller.signal.isAborted() || record.stop.stop_requested() ||
         std::any_of(joins_.begin(), joins_.end(),
                     [](const ThreadJoin* join) { return join->kind == ThreadJoin::Kind::interrupt; });
}

void CampaignThreadOracle::checkTimeout(const ThreadCallRecord& record, const Operation& operation) {
  const auto due = operation.begunAt + static_cast<std::uint64_t>(record.timeout->count());
  const bool isToldSo = record.error == timeoutText(*record.timeout);
  require(!isToldSo || operation.end->at >= due, "no call times out before its time");
  const bool isLate = operation.end->error && operation.end->at > due;
  const bool isByTime = operation.end->error == aborted && !isStoppedOtherwise(record);
  require((!isLate && !isByTime) || isToldSo,
          "a call that fails after its time tells of the time-out: " + record.error.value_or(""));
}

void CampaignThreadOracle::checkItems(const ThreadCallRecord& record, const Operation& operation) {
  if (record.kind == ThreadCallKind::run && !record.turn) return;
  // A line that breaks may have counted as one, or not.
  if (world_.plan().fault && operation.end->error) return;
  std::string seen;
  for (const std::string& item : record.items) seen += item + "; ";
  std::string taken;
  for (const std::string& item : operation.items) taken += item + "; ";
  require(seen == taken, "the application sees the items that came: " + taken + "not: " + seen);
}

void CampaignThreadOracle::ended(const ThreadJoin& join) {
  switch (join.kind) {
    case ThreadJoin::Kind::steer:
      return checkSteer(join);
    case ThreadJoin::Kind::interrupt:
      return checkInterrupt(join);
    case ThreadJoin::Kind::answer:
      return checkAnswer(join);
    case ThreadJoin::Kind::idle:
      return checkIdle(join);
    case ThreadJoin::Kind::close:
      return checkClosed(join);
  }
}

void CampaignThreadOracle::checkSteer(const ThreadJoin& join) {
  if (!join.generation) return require(join.error == noTurnToSteer, "an idle thread has no turn to steer");
  if (!join.error) return require(join.writes == 1 || canLoseWrites(), "a steer that succeeds was sent");
  // A steer outlasts a normal end of its operation: the next end that is a failure releases it.
  auto failed = operations_.lower_bound(*join.generation);
  while (failed != operations_.end() && failed->second.end && !failed->second.end->error) ++failed;
  const bool isEnd = failed != operations_.end() && failed->second.end && failed->second.end->error == join.error;
  const std::vector<std::string_view> allowed = {noTurnToSteer,  refused,         timedOut,
                                                 streamFinished, noLongerCurrent, alreadyFinished};
  require(isEnd || isAmong(*join.error, allowed), "a steer may not fail with: " + *join.error);
  const bool wasTooLate = join.error == noTurnToSteer;
  require(!wasTooLate || join.writes == 0, "a steer that comes too late is not sent");
}

void CampaignThreadOracle::checkInterrupt(const ThreadJoin& join) {
  require(!join.error, "an interrupt reports no failure");
  const Operation* operation = operationOf(join.generation);
  if (!operation || operation->end || canLoseWrites()) return;
  require(operation->wasInterrupted, "an interrupt does something");
}

void CampaignThreadOracle::checkAnswer(const ThreadJoin& join) {
  const std::string_view none = "No active turn for request_user_input response";
  if (!join.generation) return require(join.error == none, "an idle thread has no question");
  require(join.error && isAmong(*join.error, {none, "No pending request_user_input call for item: "}),
          "an answer that nobody asked for is refused");
}

void CampaignThreadOracle::checkIdle(const ThreadJoin& join) {
  require(!join.error, "a wait for idleness does not fail: " + join.error.value_or(""));
  require(!join.generation || busyWith() != join.generation, "a wait for idleness lasts as long as the operation");
}

void CampaignThreadOracle::checkClosed(const ThreadJoin& join) {
  require(!join.error, "a thread can be closed: " + join.error.value_or(""));
  require(!busyWith() && !current_, "a thread that has been closed is idle");
  require(!closing_ || !closing_->isRunning(), "a thread that has been closed has no process");
}

}  // namespace ormel::testing
