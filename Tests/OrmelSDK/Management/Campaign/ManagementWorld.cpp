#include "OrmelSDK/Management/Campaign/ManagementWorld.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Support/RunTranscript.h"

namespace ormel::testing {

using namespace std::chrono_literals;

namespace {

void require(bool holds, const std::string& promise) {
  if (!holds) throw Error("broken promise: " + promise);
}

/// Whether both are one client, which may be gone.
template <typename Other>
bool isSame(const std::weak_ptr<detail::AppServerRPCClient>& left, const Other& right) {
  return !left.owner_before(right) && !right.owner_before(left);
}

/// A request on a client that has shaken hands; JSON null otherwise.
Task<JSONValue> requestOn(std::shared_ptr<detail::AppServerRPCClient> client, JSONValue params) {
  co_await client->strand().enter();
  if (!client->didInitializeProcess()) co_return JSONValue();
  auto sending = client->sendRequest("echo", std::move(params));
  auto result = co_await std::move(sending);
  co_return result;
}

}  // namespace

ManagementWorld::ManagementWorld(std::uint64_t seed) : scheduler(seed), server_(scheduler), blockingWork_(scheduler) {
  server_.setScript(script());
  detail::AppServerRPCClientConfiguration configuration;
  configuration.executablePath = "/opt/ormel";
  configuration.ormelOptions.selectedOrmelPathOverride = true;
  if (chance(30)) {
    configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::trusted();
    };
  }
  faultPercent_ = choose(3) * 15;
  const detail::ServerServices services(scheduler, server_, blockingWork_);
  session_ = std::make_shared<detail::ControlSession>(std::move(configuration), services);
  scheduler.setStepHook([this] { look(); });
}

ManagementWorld::~ManagementWorld() {
  scheduler.setStepHook([] {});
}

void ManagementWorld::play() {
  const std::uint64_t actions = 4 + choose(14);
  for (std::uint64_t action = 0; action < actions; ++action) {
    timers_.push_back(scheduler.postAfter(std::chrono::milliseconds(choose(6)), [this] { act(); }, "application"));
  }
  scheduler.runFor(1s);
  isHealed_ = true;
  server_.failLaunches(0);
  lookAtQuietSession();
  close();
  scheduler.runFor(1s);
  require(callsUnderWay() == 0, "the end of the session ends every call");
  require(session_->subscribers() == 0, "the end of the session ends every subscription");
  mayNextEnd_ = false;
  call();
  scheduler.runFor(1s);
  require(callsUnderWay() == 0, "a session can be used again");
  require(session_->client() && session_->client()->hasProcess(), "a good call leaves its process");
  allowEndOfAll();
  session_.reset();
  clientBefore_.reset();
  scheduler.run();
  require(server_.running() == 0 && server_.held() == 0 && server_.read() == 0, "no process outlives the session");
  require(scheduler.pending().ends_with("ready:; timers:; waiting:"), "nothing waits any more: " + scheduler.pending());
}

void ManagementWorld::act() {
  const std::uint64_t kind = choose(100);
  if (kind < 45) {
    call();
  } else if (kind < 55) {
    request();
  } else if (kind < 70) {
    cancelACall();
  } else if (kind < 82) {
    subscribe();
  } else if (kind < 90) {
    dropASubscriber();
  } else if (kind < 95) {
    server_.failLaunches(1);
  } else {
    close();
  }
}

void ManagementWorld::call() {
  const std::size_t number = calls_.size();
  calls_.emplace_back();
  auto performing =
      detail::performFor<JSONValue>(session_, "echo", JSONValue::object({{"n", static_cast<std::int64_t>(number)}}));
  auto outcome = startOn(scheduler, std::move(performing), calls_.back().stop.get_token());
  calls_[number].outcome = std::move(outcome);
}

void ManagementWorld::request() {
  const auto client = session_->client();
  if (!client) return;
  const std::size_t number = calls_.size();
  calls_.emplace_back();
  auto requesting = requestOn(client, JSONValue::object({{"n", static_cast<std::int64_t>(number)}}));
  auto outcome = startOn(scheduler, std::move(requesting), calls_.back().stop.get_token());
  calls_[number].outcome = std::move(outcome);
  calls_[number].isRequest = true;
}

void ManagementWorld::cancelACall() {
  if (calls_.empty()) return;
  Call& call = calls_[choose(calls_.size())];
  if (call.hasEnded) return;
  call.wasCancelled = true;
  if (call.process && !call.isRequest) processes_[*call.process].mayEnd = true;
  call.stop.request_stop();
}

void ManagementWorld::subscribe() {
  auto outcome = startOn(scheduler, detail::ControlSession::notifications(session_));
  auto keep = [this, outcome] {
    auto subscriber = std::make_unique<Subscriber>();
    subscriber->channel = outcome->take();
    subscriber->processesBefore = processes_.size();
    subscribers_.push_back(std::move(subscriber));
  };
  // The channel is there as soon as the session has had its turn.
  auto wait = std::make_shared<std::function<void()>>();
  *wait = [this, outcome, keep, weak = std::weak_ptr(wait)] {
    if (outcome->isSet()) return keep();
    if (const auto again = weak.lock()) scheduler.post([again] { (*again)(); }, "subscriber");
  };
  scheduler.post([wait] { (*wait)(); }, "subscriber");
}

void ManagementWorld::dropASubscriber() {
  if (subscribers_.empty()) return;
  subscribers_.erase(subscribers_.begin() + static_cast<std::ptrdiff_t>(choose(subscribers_.size())));
}

void ManagementWorld::close() {
  allowEndOfAll();
  closings_.push_back(startOn(scheduler, detail::ControlSession::close(session_)));
}

std::size_t ManagementWorld::callsUnderWay() const {
  return static_cast<std::size_t>(std::ranges::count_if(calls_, [](const Call& call) { return !call.hasEnded; }));
}

InMemoryServerScript ManagementWorld::script() {
  InMemoryServerScript script;
  script.onStart = [this](InMemoryProcess& process) {
    if (!isHealed_ && chance(faultPercent_ / 4)) misbehave(process);
  };
  script.onClientWrite = [this](InMemoryProcess& process, const std::string& line) { write(process, line); };
  script.onMessage = [this](InMemoryProcess& process, const JSONValue& message) { serve(process, message); };
  return script;
}

std::size_t ManagementWorld::indexOf(const InMemoryProcess& process) const {
  return static_cast<std::size_t>(process.identifier() - 1000);
}

void ManagementWorld::write(InMemoryProcess& process, const std::string& line) {
  // A process is written to in the very step that starts it.
  noticeNewProcesses();
  const JSONValue message = JSONValue::decode(line);
  Process& facts = processes_.at(indexOf(process));
  const std::string method(message.find("method")->stringValue().value());
  if (method == "initialize") {
    note(facts.handshakeLines == 0, "a handshake begins once");
    ++facts.handshakeLines;
  } else if (method == "initialized") {
    note(facts.handshakeLines == 1, "a handshake ends once, after it has begun");
    ++facts.handshakeLines;
  } else {
    note(facts.handshakeLines == 2, "a process is asked after the handshake");
    const auto number = message.find("params")->find("n")->intValue().value();
    calls_.at(static_cast<std::size_t>(number)).process = indexOf(process);
  }
}

void ManagementWorld::serve(InMemoryProcess& process, const JSONValue& message) {
  if (*message.find("method") == JSONValue("initialized")) return;
  while (chance(30)) notify(process);
  if (!isHealed_ && chance(faultPercent_)) return misbehave(process);
  if (chance(50)) {
    process.after(std::chrono::milliseconds(choose(4)), [this, &process, message] { answer(process, message); });
  } else {
    answer(process, message);
  }
}

void ManagementWorld::misbehave(InMemoryProcess& process) {
  const std::uint64_t kind = choose(5);
  // Withholding an answer is no reason for anything.
  if (kind == 0) return;
  processes_.at(indexOf(process)).mayEnd = true;
  if (kind == 1) {
    process.write("nonsense\n");
  } else if (kind == 2) {
    process.exit(1);
  } else if (kind == 3) {
    process.closeOutput();
  } else {
    process.end({detail::TerminationReason::exit, 0}, true);
  }
}

void ManagementWorld::answer(InMemoryProcess& process, const JSONValue& request) {
  const JSONValue* params = request.find("params");
  const JSONValue* number = params->find("n");
  if (!isHealed_ && chance(faultPercent_)) {
    // The caller that waits for the answer learns of it when the process has gone.
    processes_.at(indexOf(process)).mayEnd = true;
    const JSONValue answer = JSONValue::object({{"id", *request.find("id")}, {"result", number ? *number : *params}});
    process.write(answer.encode() + "\nnonsense\n");
  } else if (isHealed_ || !chance(faultPercent_)) {
    process.answer(request, number ? *number : JSONValue::object());
  } else {
    Call* call = number ? &calls_.at(static_cast<std::size_t>(number->intValue().value())) : nullptr;
    if (call) call->wasRefused = true;
    if (!call || !call->isRequest) processes_.at(indexOf(process)).mayEnd = true;
    // The next caller may shake hands anew.
    if (!call) processes_.at(indexOf(process)).handshakeLines = 0;
    process.refuse(request, "no");
  }
  while (chance(30)) notify(process);
}

void ManagementWorld::notify(InMemoryProcess& process) {
  Process& facts = processes_.at(indexOf(process));
  const auto index = static_cast<std::int64_t>(indexOf(process));
  const auto count = static_cast<std::int64_t>(++facts.notifications);
  process.notify("told", JSONValue::object({{"process", index}, {"count", count}}));
}

void ManagementWorld::note(bool holds, const char* promise) {
  if (!holds && brokenInCall_.empty()) brokenInCall_ = promise;
}

void ManagementWorld::look() {
  require(brokenInCall_.empty(), brokenInCall_);
  lookAtProcesses();
  lookAtSubscribers();
  lookAtCalls();
  lookAtRequests();
  clientBefore_ = session_ ? session_->client() : nullptr;
}

void ManagementWorld::noticeNewProcesses() {
  const std::size_t failed = server_.launchesTried() - server_.started();
  if (failed > launchesFailed_) {
    launchesFailed_ = failed;
    // Those who share the client of the caller that failed lose it too.
    mayNextEnd_ = true;
  }
  while (processes_.size() < server_.started()) {
    Process facts;
    const auto client = session_ ? session_->client() : nullptr;
    const bool isOfSession = client && client->hasProcess();
    const bool isTaken = isOfSession && std::ranges::any_of(processes_, [&](const Process& other) {
                           return other.owner && !other.hasEnded && isSame(*other.owner, client);
                         });
    if (isOfSession && !isTaken) facts.owner = client;
    facts.mayEnd = std::exchange(mayNextEnd_, false);
    processes_.push_back(facts);
  }
}

void ManagementWorld::lookAtProcesses() {
  noticeNewProcesses();
  if (isAnyEndAllowed()) allowEndOfAll();
  for (std::size_t index = 0; index < processes_.size(); ++index) {
    Process& facts = processes_[index];
    const InMemoryProcess& process = server_.process(index);
    if (facts.hasEnded || process.isHeldByClient()) continue;
    facts.hasEnded = true;
    require(mayEnd(facts), "process " + std::to_string(index) + " is ended for a reason");
  }
}

void ManagementWorld::lookAtSubscribers() {
  const auto clientNow = session_ ? session_->client() : nullptr;
  for (const auto& subscriber : subscribers_) {
    while (!subscriber->hasEnded && subscriber->channel.isReady()) {
      const auto told = subscriber->channel.nextBlocking();
      subscriber->hasEnded = !told;
      if (!told) break;
      const auto index = static_cast<std::size_t>(told->params->find("process")->intValue().value());
      const auto count = static_cast<std::uint64_t>(told->params->find("count")->intValue().value());
      const auto& owner = processes_.at(index).owner;
      const bool isCurrent =
          owner && ((clientNow && isSame(*owner, clientNow)) || (clientBefore_ && isSame(*owner, clientBefore_)));
      require(isCurrent || !subscriber->isWatched, "nobody hears from a client that was given up");
      const auto [last, isFirst] = subscriber->heard.try_emplace(index, count);
      if (isFirst) {
        require(index < subscriber->processesBefore || count == 1, "a subscriber hears a process from its beginning");
      } else {
        require(count == last->second + 1, "a subscriber hears everything in order, once");
        last->second = count;
      }
    }
    subscriber->isWatched = true;
  }
}

void ManagementWorld::lookAtCalls() {
  for (std::size_t number = 0; number < calls_.size(); ++number) {
    Call& call = calls_[number];
    if (call.hasEnded || !call.outcome || !call.outcome->isSet()) continue;
    call.hasEnded = true;
    judge(call, number);
  }
}

void ManagementWorld::lookAtRequests() {
  const auto client = session_ ? session_->client() : nullptr;
  if (!client) return;
  const std::size_t handshakes = client->didInitializeProcess() ? 0 : 1;
  require(client->requestsInFlight() <= callsUnderWay() + handshakes, "a call that has ended leaves no request");
}

void ManagementWorld::judge(Call& call, std::size_t number) {
  JSONValue value;
  const std::string failure = failureOf([&] { value = call.outcome->take(); });
  const std::string name = "call " + std::to_string(number) + " ends with what happened to it: ";
  if (failure == "no failure" && call.isRequest && value.isNull()) return;
  if (failure == "no failure") {
    require(value == JSONValue(static_cast<std::int64_t>(number)), name + value.encode());
  } else if (failure == "cancelled") {
    require(call.wasCancelled, name + failure);
  } else if (failure == "other error: App-server error -32000: no" && call.process) {
    require(call.wasRefused, name + failure);
  } else {
    const bool hasReason =
        call.process ? processes_[*call.process].mayEnd || !processes_[*call.process].owner : hasAnythingHappened();
    require(hasReason, name + failure);
  }
}

void ManagementWorld::allowEndOfAll() {
  for (Process& process : processes_) process.mayEnd = true;
}

bool ManagementWorld::isAnyEndAllowed() const {
  const bool isClosing = std::ranges::any_of(closings_, [](const auto& closing) { return !closing->isSet(); });
  return isClosing || std::ranges::any_of(calls_, [](const Call& call) {
           return call.wasCancelled && !call.hasEnded && !call.process && !call.isRequest;
         });
}

bool ManagementWorld::mayEnd(const Process& process) const {
  if (process.mayEnd || !process.owner) return true;
  return std::ranges::any_of(processes_, [&](const Process& other) {
    return other.mayEnd && other.owner && isSame(*other.owner, *process.owner);
  });
}

bool ManagementWorld::hasAnythingHappened() const {
  return launchesFailed_ > 0 || !closings_.empty() ||
         std::ranges::any_of(calls_, [](const Call& call) { return call.wasCancelled; }) ||
         std::ranges::any_of(processes_, [](const Process& process) { return process.mayEnd; });
}

void ManagementWorld::lookAtQuietSession() {
  const auto live = static_cast<std::size_t>(
      std::ranges::count_if(subscribers_, [](const auto& subscriber) { return !subscriber->hasEnded; }));
  require(session_->subscribers() == live, "a subscription that has ended leaves nothing");
}

}  // namespace ormel::testing
