#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignServer.h"

#include <chrono>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignLines.h"

namespace ormel::testing {

namespace {

using namespace std::chrono_literals;

std::string copiedText(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return std::string(value ? value->stringValue().value_or("") : "");
}

std::string paramIn(const JSONValue& request, std::string_view key) {
  const JSONValue* params = request.find("params");
  return params ? copiedText(*params, key) : "";
}

JSONValue responseTo(const JSONValue& request, const JSONValue& result) {
  return JSONValue::object({{"id", *request.find("id")}, {"result", result}});
}

JSONValue turnObject(const std::string& turnID, const std::string& status) {
  return JSONValue::object({{"id", turnID}, {"status", status}, {"items", JSONValue::array()}});
}

JSONValue failedForeignTurn(const std::string& turnID) {
  const JSONValue error = JSONValue::object({{"message", CampaignServer::foreignError}});
  return JSONValue::object({{"id", turnID}, {"status", "failed"}, {"error", error}});
}

JSONValue itemCompleted(const std::string& threadID, const std::string& turnID, int number) {
  const JSONValue item =
      JSONValue::object({{"id", "item-" + std::to_string(number)}, {"type", "agentMessage"}, {"text", turnID}});
  return notification("item/completed",
                      JSONValue::object({{"threadId", threadID}, {"turnId", turnID}, {"item", item}}));
}

JSONValue approvalRequest(const std::string& threadID, const std::string& turnID) {
  const JSONValue params =
      JSONValue::object({{"threadId", threadID}, {"turnId", turnID}, {"itemId", "item-1"}, {"command", "make"}});
  return JSONValue::object(
      {{"id", "ask-" + turnID}, {"method", "item/commandExecution/requestApproval"}, {"params", params}});
}

}  // namespace

InMemoryServerScript CampaignServer::script() {
  InMemoryServerScript script;
  script.onMessage = [this](InMemoryProcess& process, const JSONValue& message) { read(process, message); };
  if (plan.ignoresTermination) {
    script.onTerminate = [](InMemoryProcess&) {};
    script.onInputEnd = [](InMemoryProcess&) {};
  }
  return script;
}

std::string CampaignServer::threadNamedBy(const InMemoryProcess& process) const {
  const auto found = conversations_.find(process.identifier());
  return found == conversations_.end() ? "" : found->second.threadID;
}

std::string CampaignServer::turnNamedBy(const InMemoryProcess& process) const {
  const auto found = conversations_.find(process.identifier());
  return found == conversations_.end() ? "" : found->second.turnID;
}

std::string CampaignServer::stamped(const char* kind, const InMemoryProcess& process) {
  return kind + std::to_string(++idsMade_) + "@" + std::to_string(process.identifier());
}

void CampaignServer::read(InMemoryProcess& process, const JSONValue& message) {
  const std::string method = copiedText(message, "method");
  if (!message.find("id") || method.empty()) return;
  if (onRequest) onRequest(method);
  if (method == "initialize") {
    reply(process, message, JSONValue::object({{"userAgent", "campaign"}}));
  } else if (method == "thread/start" || method == "thread/fork") {
    enterThread(process, message, stamped("thread-", process));
  } else if (method == "thread/resume") {
    enterThread(process, message, stamped("resumed-", process));
  } else if (method == "turn/start" || method == "review/start" || method == "thread/compact/start") {
    beginTurn(process, message, method == "thread/compact/start");
  } else if (method == "turn/interrupt") {
    interrupt(process, message);
  } else if (method == "turn/steer") {
    steer(process, message);
  } else if (method == "thread/read") {
    const JSONValue answer = probed(message);
    const bool isFirst = scheduler_.choose(2) == 0;
    if (isFirst) reply(process, message, answer);
    if (plan.endsTurnWhenProbed) {
      Conversation& conversation = conversations_[process.identifier()];
      say(process, turnCompleted(conversation.threadID, endOfTurn(conversation)));
    }
    if (!isFirst) reply(process, message, answer);
  }
}

void CampaignServer::enterThread(InMemoryProcess& process, const JSONValue& request, std::string threadID) {
  Conversation& conversation = conversations_[process.identifier()];
  conversation.threadID = std::move(threadID);
  const JSONValue thread = JSONValue::object({{"id", conversation.threadID}});
  reply(process, request, JSONValue::object({{"thread", thread}}));
}

JSONValue CampaignServer::turnResponse(InMemoryProcess& process, const JSONValue& request, bool isCompaction) {
  Conversation& conversation = conversations_[process.identifier()];
  conversation.turnID = stamped("turn-", process);
  if (isCompaction) return responseTo(request, JSONValue::object());
  const JSONValue turn = turnObject(conversation.turnID, "inProgress");
  if (copiedText(request, "method") != "review/start") return responseTo(request, JSONValue::object({{"turn", turn}}));
  conversation.threadID = stamped("review-", process);
  return responseTo(request, JSONValue::object({{"reviewThreadId", conversation.threadID}, {"turn", turn}}));
}

void CampaignServer::beginTurn(InMemoryProcess& process, const JSONValue& request, bool isCompaction) {
  const auto kind = plan.replies.find(copiedText(request, "method"));
  if (kind != plan.replies.end() && kind->second == ServerPlan::Reply::refuse) {
    reply(process, request, JSONValue());
    return;
  }
  JSONValue response = turnResponse(process, request, isCompaction);
  Conversation& conversation = conversations_[process.identifier()];
  std::deque<JSONValue> course;
  course.push_back(turnStarted(conversation.threadID, conversation.turnID, 1));
  for (int item = 1; item <= itemsOfTurn; ++item) {
    course.push_back(itemCompleted(conversation.threadID, conversation.turnID, item));
  }
  if (plan.asksForApproval) course.push_back(approvalRequest(conversation.threadID, conversation.turnID));
  if (plan.completesTurns && turnsCompleted_++ < plan.turnsToComplete) {
    course.push_back(turnCompleted(conversation.threadID, endOfTurn(conversation)));
  }
  if (plan.asks) {
    for (JSONValue& line : plan.asks(conversation.threadID, conversation.turnID)) insert(course, std::move(line));
  }
  if (plan.isTalkative) addWords(process, course, isCompaction);
  if (kind == plan.replies.end()) {
    responses_.push_back(response);
    insert(course, std::move(response));
  } else {
    reply(process, request, *response.find("result"));
  }
  if (plan.repeatsResponses) addRepetition(course);
  if (plan.tellsOfForeignTurns) addForeignTurns(course, conversation, isCompaction);
  for (std::size_t start = 0; start < plan.foreignStartsAhead; ++start) {
    course.push_front(turnStarted("foreign", "foreign-turn", foreignWindow));
  }
  for (JSONValue& line : course) conversation.course.push_back(std::move(line));
  if (!std::exchange(conversation.isUnderWay, true)) process.later([this, &process] { advance(process); });
}

void CampaignServer::addForeignTurns(std::deque<JSONValue>& course, const Conversation& of, bool isCompaction) {
  insert(course, turnStarted("foreign", "foreign-turn", foreignWindow));
  insert(course, turnCompleted("foreign", failedForeignTurn("foreign-turn")));
  // A compaction would take it for its own.
  if (isCompaction) return;
  insert(course, turnStarted(of.threadID, "sub-turn", foreignWindow));
  insert(course, turnCompleted(of.threadID, failedForeignTurn("sub-turn")));
}

void CampaignServer::addWords(const InMemoryProcess& process, std::deque<JSONValue>& course, bool isCompaction) {
  const Conversation& conversation = conversations_[process.identifier()];
  const std::string stamp = "@" + std::to_string(process.identifier());
  const LineIDs ids{conversation.threadID, conversation.turnID, "foreign" + stamp, "foreign-turn" + stamp};
  for (JSONValue& line : wordsOfTurn(scheduler_, ids)) insert(course, std::move(line));
  for (JSONValue& line : decoysOfTurn(scheduler_, ids, isCompaction)) insert(course, std::move(line));
}

/// An answer that was given, or is about to be, comes again: the same one, or a refusal.
void CampaignServer::addRepetition(std::deque<JSONValue>& course) {
  if (responses_.empty()) return;
  const JSONValue& response = responses_[scheduler_.choose(responses_.size())];
  if (scheduler_.choose(2) == 0) {
    course.push_back(response);
  } else {
    const JSONValue error = JSONValue::object({{"message", "repeated"}});
    course.push_back(JSONValue::object({{"id", *response.find("id")}, {"error", error}}));
  }
}

JSONValue CampaignServer::endOfTurn(const Conversation& of) {
  JSONObjectBuilder turn;
  turn.set("id", of.turnID);
  if (!plan.turnStatus.empty()) turn.set("status", plan.turnStatus);
  if (plan.isTalkative && scheduler_.choose(2) == 0) {
    const JSONValue compaction = JSONValue::object({{"type", "contextCompaction"}, {"id", "x-1"}});
    const JSONValue message = JSONValue::object({{"type", "agentMessage"}, {"id", "x-2"}, {"text", "again"}});
    turn.set("items", JSONValue::array({compaction, message}));
  }
  if (plan.isTalkative && scheduler_.choose(4) == 0) {
    const JSONValue step = JSONValue::object({{"step", "last"}, {"status", "completed"}});
    turn.set("plan", JSONValue::array({step}));
  }
  if (scheduler_.choose(2) == 0) turn.set("error", JSONValue::object({{"message", "went wrong"}}));
  return turn.build();
}

void CampaignServer::insert(std::deque<JSONValue>& course, JSONValue line) {
  const auto place = scheduler_.choose(course.size() + 1);
  course.insert(course.begin() + static_cast<std::ptrdiff_t>(place), std::move(line));
}

void CampaignServer::advance(InMemoryProcess& process) {
  Conversation& conversation = conversations_[process.identifier()];
  for (auto burst = 1 + scheduler_.choose(3); burst > 0 && !conversation.course.empty(); --burst) {
    const JSONValue line = std::move(conversation.course.front());
    conversation.course.pop_front();
    say(process, line);
  }
  if (conversation.course.empty()) {
    endTurn(process);
  } else {
    process.later([this, &process] { advance(process); });
  }
}

void CampaignServer::endTurn(InMemoryProcess& process) {
  Conversation& conversation = conversations_[process.identifier()];
  conversation.isUnderWay = false;
  for (const JSONValue& steer : std::exchange(conversation.heldSteers, {})) {
    reply(process, steer, JSONValue::object());
  }
  if (plan.exitsAfterTurn) process.exit(0);
}

void CampaignServer::interrupt(InMemoryProcess& process, const JSONValue& request) {
  reply(process, request, JSONValue::object());
  Conversation& conversation = conversations_[process.identifier()];
  if (!plan.endsInterruptedTurns || !process.isRunning() || scheduler_.choose(4) == 0) return;
  // Messages other than responses are dropped.
  std::deque<JSONValue> rest;
  for (const JSONValue& line : conversation.course) {
    if (!line.find("method")) rest.push_back(line);
  }
  rest.push_back(turnCompleted(conversation.threadID, turnObject(conversation.turnID, "interrupted")));
  conversation.course = std::move(rest);
  if (!std::exchange(conversation.isUnderWay, true)) process.later([this, &process] { advance(process); });
}

void CampaignServer::steer(InMemoryProcess& process, const JSONValue& request) {
  Conversation& conversation = conversations_[process.identifier()];
  if (plan.holdsSteersUntilTurnEnds && conversation.isUnderWay) {
    conversation.heldSteers.push_back(request);
  } else {
    reply(process, request, JSONValue::object());
  }
}

JSONValue CampaignServer::probed(const JSONValue& request) {
  auto kind = ServerPlan::ProbeReply::completed;
  if (probesAnswered_ < plan.probeReplies.size()) kind = plan.probeReplies[probesAnswered_];
  ++probesAnswered_;
  if (kind == ServerPlan::ProbeReply::garbage) return JSONValue::object({{"thread", 7}});
  std::string turnID = "turn-of-old";
  for (const auto& [process, conversation] : conversations_) {
    if (conversation.threadID == paramIn(request, "threadId")) turnID = conversation.turnID;
  }
  if (kind == ServerPlan::ProbeReply::turnMissing) turnID = "another turn";
  const char* status = "inProgress";
  if (kind == ServerPlan::ProbeReply::completed) status = "completed";
  if (kind == ServerPlan::ProbeReply::failed) status = "failed";
  if (kind == ServerPlan::ProbeReply::interrupted) status = "interrupted";
  const JSONValue turn = turnObject(turnID, status);
  const bool isOther = kind == ServerPlan::ProbeReply::otherThread;
  const JSONValue thread = JSONValue::object(
      {{"id", isOther ? "another thread" : paramIn(request, "threadId")}, {"turns", JSONValue::array({turn})}});
  return JSONValue::object({{"thread", thread}});
}

void CampaignServer::reply(InMemoryProcess& process, const JSONValue& request, const JSONValue& result) {
  const auto planned = plan.replies.find(copiedText(request, "method"));
  const auto kind = planned == plan.replies.end() ? ServerPlan::Reply::give : planned->second;
  if (plan.fault && plan.faultAtResponseTo == copiedText(request, "method")) {
    plan.faultAtResponseTo.clear();
    fail(process, responseTo(request, result));
    return;
  }
  if (kind == ServerPlan::Reply::give) {
    responses_.push_back(responseTo(request, result));
    say(process, responses_.back());
  } else if (kind == ServerPlan::Reply::refuse) {
    const JSONValue error = JSONValue::object({{"code", -32000}, {"message", "refused"}});
    say(process, JSONValue::object({{"id", *request.find("id")}, {"error", error}}));
  } else if (kind == ServerPlan::Reply::giveAtTimeout) {
    auto late = [this, &process, response = responseTo(request, result)] { say(process, response); };
    process.after(detail::RunDurations().requestTimeoutNanoseconds, std::move(late));
  }
}

void CampaignServer::say(InMemoryProcess& process, const JSONValue& message) {
  if (plan.fault && process.isRunning() && ++linesSaid_ == plan.faultAtLine) {
    fail(process, message);
  } else {
    process.send(message);
  }
}

void CampaignServer::breakLine(InMemoryProcess& process) {
  const BrokenLine& line = brokenLines()[scheduler_.choose(brokenLines().size())];
  if (onBrokenLine && process.isRunning()) onBrokenLine(process, line.failure);
  process.write(line.text);
}

/// The last line may be whole, but for its end.
void CampaignServer::cutLine(InMemoryProcess& process, const JSONValue& message) {
  const std::string line = message.encode();
  const auto size = scheduler_.choose(4) == 0 ? line.size() : scheduler_.choose(line.size() + 1);
  if (size == line.size()) {
    process.sendUnended(message);
  } else {
    if (onBrokenLine && process.isRunning() && size > 0) onBrokenLine(process, "App-server decode error at ");
    process.write(std::string_view(line).substr(0, size));
  }
}

void CampaignServer::fail(InMemoryProcess& process, const JSONValue& message) {
  if (onFault) onFault();
  if (plan.explainsFault) {
    process.writeError(std::string(explanation) + "\n");
    explained_.insert(process.identifier());
  }
  switch (*plan.fault) {
    case ServerPlan::Fault::malformedLine:
      breakLine(process);
      process.send(message);
      break;
    case ServerPlan::Fault::faultyNotification: {
      const auto& lines = faultyNotifications();
      process.send(JSONValue::decode(lines[scheduler_.choose(lines.size())].text));
      process.send(message);
      break;
    }
    case ServerPlan::Fault::exit:
      process.send(message);
      process.exit(1);
      break;
    case ServerPlan::Fault::exitInstead:
      process.endBySignal(11);
      break;
    case ServerPlan::Fault::exitWithinTheLine:
      cutLine(process, message);
      process.exit(2);
      break;
    case ServerPlan::Fault::exitWithPipesHeld:
      process.send(message);
      process.end({detail::TerminationReason::exit, 3}, true);
      if (scheduler_.choose(2) == 0) {
        const auto moment = scheduler_.choose(3) * 50ms;
        process.evenAfterEnd(moment, [&process] {
          process.closeOutput();
          process.closeErrorOutput();
        });
      }
      break;
    case ServerPlan::Fault::endOfFile:
      process.send(message);
      process.closeOutput();
      break;
    case ServerPlan::Fault::endOfFileThenExit:
      process.closeOutput();
      process.after(scheduler_.choose(3) * 50ms, [&process] { process.exit(4); });
      break;
    case ServerPlan::Fault::inputBreaks:
      process.breakInput();
      process.send(message);
      break;
  }
}

}  // namespace ormel::testing
