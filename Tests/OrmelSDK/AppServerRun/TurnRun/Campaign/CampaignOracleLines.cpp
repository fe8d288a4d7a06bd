#include <algorithm>
#include <array>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignOracle.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"

namespace ormel::testing {

namespace {

constexpr std::uint64_t secondOfOracle = 1'000'000'000;
constexpr std::size_t mostDeferred = 16;

constexpr std::array scopedMethods = {
    "item/started",
    "item/updated",
    "item/completed",
    "item/agentMessage/delta",
    "item/commandExecution/outputDelta",
    "item/mcpToolCall/progress",
    "item/fileChange/patchUpdated",
    "item/reasoning/summaryTextDelta",
    "item/reasoning/textDelta",
    "item/plan/delta",
    "turn/plan/updated",
    "thread/tokenUsage/updated",
};

std::optional<std::string> threadIn(const JSONValue& params) { return textOf(params, "threadId", "thread_id"); }
std::optional<std::string> turnIn(const JSONValue& params) { return textOf(params, "turnId", "turn_id"); }

std::optional<std::string> refusalIn(const JSONValue& response) {
  const JSONValue* error = objectIn(response, "error");
  if (!error) return std::nullopt;
  return textOf(*error, "message", "message").value_or("Unknown app-server error");
}

}  // namespace

void CampaignOracle::serverSent(const InMemoryProcess& process, const JSONValue& message) {
  meetMoment();
  if (process.isOutputClosed()) return;
  lines_[process.identifier()].push_back({message, std::nullopt, false});
}

void CampaignOracle::serverBroke(const InMemoryProcess& process, std::string_view failure) {
  meetMoment();
  if (process.isOutputClosed()) return;
  lines_[process.identifier()].push_back({JSONValue(), std::string(failure), false});
}

void CampaignOracle::takeLines(std::uint64_t activity) {
  require(activity >= activity_, "the count of the server's lines never falls");
  while (activity_ < activity) {
    auto& lines = linesOfProcess();
    while (!lines.empty() && lines.front().failure && (lines.front().mayBeTaken || !current_)) lines.pop_front();
    if (lines.empty()) return require(false, "the run takes what the server has said");
    if (lines.front().failure) return require(false, "a line that cannot be read ends the operation");
    const JSONValue message = lines.front().message;
    lines.pop_front();
    take(message);
  }
}

void CampaignOracle::take(const JSONValue& message) {
  ++activity_;
  const bool isHeldUp = waiterSince_ && *waiterSince_ != world_.scheduler.steps();
  require(!isHeldUp, "who waits for a response goes on before the next line is taken");
  const std::string method = textOf(message, "method");
  const JSONValue* params = objectIn(message, "params");
  if (method.empty()) {
    takeResponse(message);
  } else if (message.find("id")) {
    takeRequest(method, message);
  } else {
    takeNotification(method, params ? *params : JSONValue::object());
  }
}

// Responses.

void CampaignOracle::takeResponse(const JSONValue& message) {
  const std::string id = message.find("id")->encode();
  const auto found = requests_.find(id);
  if (found == requests_.end()) return;
  const Request request = found->second;
  requests_.erase(found);
  const auto refusal = refusalIn(message);
  if (request.method == "turn/steer") {
    const bool isRaced = request.deadline == moment_;
    resolve(request.call, refusal);
    if (isRaced && request.call) {
      calls_[request.call].outcomes.emplace_back("App-server RPC turn/steer timed out after 30 seconds");
    }
  } else if (request.method == "turn/interrupt") {
    resolve(request.call, std::nullopt);
    takeInterruptResponse(refusal.has_value());
  } else if (request.method == "thread/read") {
    if (!probe_ || probe_->requestID != id) return;
    probe_->refusal = refusal;
    if (!refusal) probe_->answer = *message.find("result");
    if (!refusal && isStillInProgress()) return armProbe();
    waiterSince_ = world_.scheduler.steps();
  } else {
    takeStartResponse(message);
  }
}

void CampaignOracle::takeStartResponse(const JSONValue& message) {
  current_->refusal = refusalIn(message);
  if (!current_->refusal) current_->response = *message.find("result");
  const bool isOver = current_->method == "thread/compact/start" && !current_->refusal;
  current_->phase = isOver ? Phase::returned : Phase::responded;
  // Nobody waits any more once the caller is cancelled.
  if (!isOver && !current_->record->stop.stop_requested()) waiterSince_ = world_.scheduler.steps();
}

void CampaignOracle::takeInterruptResponse(bool isRefused) {
  if (isRefused) {
    isInterruptRefused_ = true;
    waiterSince_ = world_.scheduler.steps();
  } else if (interrupted_ && thread_ == interrupted_->threadID && turn_ == interrupted_->turnID) {
    graceAt_ = moment_ + 3 * secondOfOracle;
  }
}

// Requests.

void CampaignOracle::takeRequest(const std::string& method, const JSONValue& message) {
  const JSONValue* params = objectIn(message, "params");
  if (method != "item/tool/requestUserInput" || !params || !current_) return;
  const std::string itemID = textOf(*params, "itemId");
  questions_[itemID] = message.find("id")->encode();
  emitAll(items_.userWasAsked(itemID));
}

// Notifications.

void CampaignOracle::takeNotification(const std::string& method, const JSONValue& params) {
  if (method == "turn/started") return takeTurnStarted(params);
  if (method == "turn/completed") return takeTurnCompleted(params);
  if (method == "thread/started") return takeThreadStarted(params);
  if (method == "serverRequest/resolved") {
    if (!params.find("requestId")) failByLine("serverRequest/resolved missing requestId");
    return;
  }
  const bool isScoped = std::find(scopedMethods.begin(), scopedMethods.end(), method) != scopedMethods.end();
  if (!current_ || (isScoped && !belongs(params))) return;
  if (method == "thread/goal/cleared" && !threadIn(params)) return failByLine("thread/goal/cleared missing threadId");
  emitAll(items_.notified(method, params));
}

bool CampaignOracle::belongs(const JSONValue& params, const std::optional<std::string>& embeddedThreadID,
                             const std::optional<std::string>& embeddedTurnID) const {
  if (!current_) return false;
  auto threadID = threadIn(params);
  if (!threadID) threadID = embeddedThreadID;
  auto turnID = turnIn(params);
  if (!turnID) turnID = embeddedTurnID;
  if (thread_ && threadID && threadID != thread_) return false;
  return !turn_ || !turnID || turnID == turn_;
}

void CampaignOracle::takeTurnStarted(const JSONValue& params) {
  const JSONValue* turn = objectIn(params, "turn");
  const std::string turnID = turn ? textOf(*turn, "id") : "";
  if (turnID.empty()) return failByLine("turn/started missing turn identity");
  if (!turn_ && !acceptsTurnFromNotification_) return defer(starts_, "turn/started", params, turnID);
  if (!turn_ && (!threadIn(params) || threadIn(params) != thread_)) return;
  if (!belongs(params, std::nullopt, turnID)) return;
  if (!turn_) setTurn(turnID);
  emitTurnStarted(params);
}

void CampaignOracle::takeTurnCompleted(const JSONValue& params) {
  const JSONValue* turn = objectIn(params, "turn");
  if (!turn) return failByLine("turn/completed missing turn payload");
  const JSONValue* id = turn->find("id");
  const std::string turnID = id && id->stringValue() ? textOf(*turn, "id") : turnIn(params).value_or("");
  if (turnID.empty()) return failByLine("turn/completed missing coordinator turn identity");
  if (!turn_) return defer(completions_, "turn/completed", params, turnID);
  if (!current_ || turnID != turn_) return;
  if (thread_ && threadIn(params) && threadIn(params) != thread_) return;
  completeTurn(*turn, turnID);
}

void CampaignOracle::takeThreadStarted(const JSONValue& params) {
  const JSONValue* thread = objectIn(params, "thread");
  if (!thread) return;
  const std::string threadID = textOf(*thread, "id");
  if (!belongs(params, threadID)) return;
  setThread(threadID);
  emit("thread started " + threadID);
}

void CampaignOracle::defer(std::vector<Deferred>& list, const char* method, const JSONValue& params,
                           const std::string& turnID) {
  if (!current_) return;
  if (list.size() >= mostDeferred) {
    return failByLine("Too many " + std::string(method) + " notifications before coordinator identity");
  }
  list.push_back({params, turnID});
}

void CampaignOracle::setThread(const std::string& threadID) {
  thread_ = threadID;
  activeThread_ = threadID;
}

void CampaignOracle::setTurn(const std::string& turnID) {
  turn_ = turnID;
  activeTurn_ = turnID;
  acceptsTurnFromNotification_ = false;
  armProbe();
  for (const Deferred& deferred : std::exchange(starts_, {})) {
    const auto threadID = threadIn(deferred.params);
    if (deferred.turnID != turnID || (threadID && threadID != thread_)) continue;
    emitTurnStarted(deferred.params);
    break;
  }
  for (const Deferred& deferred : std::exchange(completions_, {})) {
    const auto threadID = threadIn(deferred.params);
    if (deferred.turnID != turnID || (thread_ && threadID && threadID != thread_)) continue;
    completeTurn(*objectIn(deferred.params, "turn"), turnID);
    break;
  }
}

void CampaignOracle::armProbe() {
  probe_.reset();
  if (!current_ || !thread_ || !turn_) return;
  probe_.emplace();
  probe_->at = moment_ + 120 * secondOfOracle;
  probe_->low = activity_;
  probe_->high = activity_;
}

void CampaignOracle::emitTurnStarted(const JSONValue& params) {
  const JSONValue* turn = objectIn(params, "turn");
  const JSONValue* window = turn ? turn->find("modelContextWindow") : nullptr;
  emit("turn started " + (window ? window->encode() : "-"));
}

void CampaignOracle::completeTurn(const JSONValue& turn, const std::string& turnID) {
  emitAll(items_.completed(turn, turnID));
  const std::string status = textOf(turn, "status", "status").value_or("completed");
  if (status == "interrupted" && isAborted_) return end({true, true, std::string(aborted)});
  if (status == "completed" || status == "interrupted") {
    emit("turn completed " + items_.usage());
  } else if (status == "failed") {
    const JSONValue* error = objectIn(turn, "error");
    const auto message = error ? textOf(*error, "message", "message") : std::nullopt;
    emit("turn failed: " + message.value_or("Turn failed"));
  } else {
    emit("turn failed: Unknown turn completion status: " + status);
  }
  end({});
}

void CampaignOracle::failByLine(const std::string& text) {
  if (current_) end({true, false, text});
}

// The answer about a turn.

const JSONValue* CampaignOracle::probedTurn() const {
  const JSONValue* thread = objectIn(*probe_->answer, "thread");
  const JSONValue* turns = thread ? thread->find("turns") : nullptr;
  if (!turns || !turns->arrayValue()) return nullptr;
  for (const JSONValue& turn : *turns->arrayValue()) {
    if (textOf(turn, "id") == turn_) return &turn;
  }
  return nullptr;
}

bool CampaignOracle::isProbedThread() const {
  const JSONValue* thread = objectIn(*probe_->answer, "thread");
  return thread && textOf(*thread, "id") == thread_;
}

bool CampaignOracle::isStillInProgress() const {
  const JSONValue* turn = isProbedThread() ? probedTurn() : nullptr;
  return turn && textOf(*turn, "status") == "inProgress";
}

bool CampaignOracle::isProbeEnd(const End& actual) {
  if (!probe_) return false;
  if (probe_->refusal)
    return !actual.isAbort && actual.text == "Unable to reconcile coordinator turn: " + *probe_->refusal;
  if (!probe_->answer) return false;
  if (!objectIn(*probe_->answer, "thread")) {
    return actual.text.starts_with("Unable to decode coordinator turn reconciliation: ");
  }
  if (!isProbedThread()) return actual.text == "Coordinator thread mismatch during liveness reconciliation";
  const JSONValue* turn = probedTurn();
  if (!turn) return actual.text == "Coordinator turn missing during liveness reconciliation";
  Operation& operation = *current_;
  const JSONValue ended = *turn;
  completeTurn(ended, *turn_);
  return operation.end->isFailure == actual.isFailure && operation.end->text == actual.text;
}

}  // namespace ormel::testing
