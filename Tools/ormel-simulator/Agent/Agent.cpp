#include "ormel-simulator/Agent/Agent.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Visit.h"
#include "ormel-simulator/Agent/GoalRequests.h"
#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/ListRequests.h"
#include "ormel-simulator/Agent/ThreadEditRequests.h"
#include "ormel-simulator/Agent/ThreadLookup.h"
#include "ormel-simulator/Agent/ThreadRequests.h"
#include "ormel-simulator/Agent/TurnListRequests.h"
#include "ormel-simulator/Agent/TurnScripts.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

JSONValue emptyObject() { return JSONValue::object(); }

JSONObjectBuilder userMessage(const std::string& id, const JSONValue& params) {
  JSONObjectBuilder item;
  item.set("type", "userMessage").set("id", id).set("clientId", anyMember(params, "clientUserMessageId"));
  return item.set("content", anyMember(params, "input").detached());
}

// So many steps of a turn does it take the pretended user to log in.
constexpr int stepsOfLogin = 20;

CatalogueSettings catalogueSettings(const AgentSettings& settings, AgentThreadStore& threads) {
  return {.folder = threads.folder(),
          .configOverrides = settings.configOverrides,
          .loginTime = stepsOfLogin * settings.pace,
          .requireThread = [&threads](const std::string& id) { knownThread(threads, id); }};
}

bool isExperimental(const std::string& method) {
  return method == "thread/items/list" || method == "thread/turns/items/list";
}

}  // namespace

Agent::Agent(Wire& wire, Recorder& recorder, const AgentSettings& settings, const std::filesystem::path& stateFolder)
    : wire_(wire),
      recorder_(recorder),
      settings_(settings),
      client_(wire, recorder),
      threads_(stateFolder),
      catalogue_(client_, later_, catalogueSettings(settings_, threads_)),
      machine_(client_, folderForFiles(settings, stateFolder)) {
  addOwnRequests();
  addThreadRequests(requests_, threads_, client_);
  addThreadEditRequests(requests_, threads_, client_);
  addGoalRequests(requests_, threads_);
  addListRequests(requests_, threads_, client_);
  addTurnListRequests(requests_, threads_);
  catalogue_.addRequests(requests_);
  machine_.addRequests(requests_);
  for (const std::string& method : settings_.unknownMethods) requests_.erase(method);
}

void Agent::addOwnRequests() {
  const auto add = [this](const char* method, JSONValue (Agent::*handle)(const JSONValue&)) {
    requests_[method] = [this, handle](const JSONValue& params) { return (this->*handle)(params); };
  };
  add("initialize", &Agent::initialize);
  add("thread/compact/start", &Agent::compactThread);
  add("thread/shellCommand", &Agent::runShellCommand);
  add("turn/start", &Agent::startTurn);
  add("turn/steer", &Agent::steerTurn);
  add("turn/interrupt", &Agent::interruptTurn);
  add("review/start", &Agent::startReview);
  requests_["skills/extraRoots/set"] = [](const JSONValue&) { return emptyObject(); };
}

Exit Agent::run() {
  try {
    while (!exitStatus_) {
      wire_.pump(timeToNextStep(), machine_.descriptors());
      receiveLines();
      if (wire_.inputEnded()) {
        recorder_.record("endOfInput");
        return Exit{0};
      }
      machine_.serve();
      advanceTurns();
      doLaterSteps();
    }
  } catch (const std::system_error&) {
    // Nobody reads any more, which is an end like that of the input.
    return Exit{0};
  }
  return Exit{*exitStatus_};
}

milliseconds Agent::timeToNextStep() const {
  milliseconds time = std::chrono::hours(1);
  const auto now = AgentTurn::Clock::now();
  for (const auto& turn : turns_) {
    if (const auto due = turn->due()) time = std::min(time, std::chrono::ceil<milliseconds>(*due - now));
  }
  if (const auto due = later_.due()) time = std::min(time, std::chrono::ceil<milliseconds>(*due - now));
  if (const auto due = machine_.due()) time = std::min(time, std::chrono::ceil<milliseconds>(*due - now));
  return std::max(time, milliseconds(0));
}

void Agent::doLaterSteps() {
  const auto now = LaterSteps::Clock::now();
  while (later_.due() && *later_.due() <= now) {
    try {
      later_.doOne(now);
    } catch (const Error& error) {
      client_.complain(error.description());
    }
  }
}

void Agent::advanceTurns() {
  const auto now = AgentTurn::Clock::now();
  for (const auto& turn : turns_) {
    const auto due = turn->due();
    if (due && *due <= now && !turn->ended()) turn->advance();
    if (turn->crashStatus()) exitStatus_ = turn->crashStatus();
    if (turn->ended()) endTurn(*turn);
  }
  std::erase_if(turns_, [](const auto& turn) { return turn->ended(); });
}

void Agent::endTurn(AgentTurn& turn) {
  // A client may end this process as soon as it is told.
  try {
    threads_.change(turn.thread(), [](AgentThread& thread) { thread.updatedAt = secondsNow(); });
  } catch (const Error& error) {
    client_.complain(error.description());
  }
  turn.announceEnd();
}

void Agent::receiveLines() {
  while (auto line = wire_.takeLine()) {
    recorder_.recordReceived(line->bytes, line->terminated);
    receive(readMessage(std::move(line->bytes)));
  }
}

void Agent::receive(const Message& message) {
  switch (message.kind) {
    case Message::Kind::request:
      return answer(message);
    case Message::Kind::answer:
    case Message::Kind::errorAnswer:
      return client_.takeAnswer(message);
    case Message::Kind::malformed:
      return client_.refuse(message.id, message.whole ? invalidRequest : parseError, message.fault);
    case Message::Kind::notification:
      // All that a client announces is that it is ready, and skills, which nothing here makes use of.
      return;
  }
}

void Agent::answer(const Message& request) {
  const auto handler = requests_.find(request.method);
  try {
    if (handler == requests_.end()) throw Refusal(methodNotFound, "Method not found: " + request.method);
    if (!initialized_ && request.method != "initialize") throw Refusal(invalidRequest, "Not initialized");
    if (isExperimental(request.method) && !takesExperiments_) {
      throw Refusal(invalidRequest, request.method + " is for clients with the capability experimentalApi");
    }
    const JSONValue params = request.content.value_or(JSONValue());
    std::visit(Overloaded{[&](const ImmediateHandler& handle) { client_.reply(request.id, handle(params)); },
                          [&](const DeferredHandler& handle) { handle(params, {client_, request.id}); }},
               handler->second);
  } catch (const Refusal& refusal) {
    client_.refuse(request.id, refusal.code(), refusal.description());
  } catch (const Error& error) {
    client_.refuse(request.id, internalError, error.description());
  }
}

JSONValue Agent::initialize(const JSONValue& params) {
  if (initialized_) throw Refusal(invalidRequest, "Already initialized");
  initialized_ = true;
  std::set<std::string> unwanted;
  const JSONValue capabilities = anyMember(params, "capabilities");
  takesExperiments_ = flagMember(capabilities, "experimentalApi");
  const JSONValue methods = anyMember(capabilities, "optOutNotificationMethods");
  if (const auto* elements = methods.arrayValue()) {
    for (const JSONValue& method : *elements) unwanted.emplace(method.stringValue().value_or(""));
  }
  client_.setUnwanted(std::move(unwanted));
  return JSONValue::object({{"userAgent", "ormel-simulator/0.1.0"}});
}

JSONValue Agent::compactThread(const JSONValue& params) {
  AgentTurn& turn = beginTurn(thread(params), {});
  playCompaction(turn);
  turn.scheduleAdded();
  return emptyObject();
}

JSONValue Agent::runShellCommand(const JSONValue& params) {
  const std::string command = requiredText(params, "command");
  AgentTurn& turn = beginTurn(thread(params), {});
  playUsersCommand(turn, command);
  turn.scheduleAdded();
  // It is done when it is answered, so that a client that asks for nothing else need not stay.
  while (!turn.ended()) turn.advance();
  advanceTurns();
  return emptyObject();
}

JSONValue Agent::startTurn(const JSONValue& params) {
  AgentThread& addressed = thread(params);
  AgentTurn& turn = beginTurn(addressed, anyMember(params, "outputSchema").detached());
  applyChoices(threads_, addressed, params);
  const JSONObjectBuilder message = userMessage(turn.newItemID("user"), params);
  turn.thenAfter(milliseconds(0), [&turn, message] {
    turn.startItem(message);
    turn.completeItem(message);
    playPrompt(turn);
  });
  turn.scheduleAdded();
  return JSONValue::object({{"turn", addressed.turns.back().json(ItemsView::notLoaded)}});
}

JSONValue Agent::steerTurn(const JSONValue& params) {
  AgentTurn& turn = addressedTurn(params, "expectedTurnId");
  turn.steer(inputText(anyMember(params, "input")));
  return JSONValue::object({{"turnId", turn.id()}});
}

JSONValue Agent::interruptTurn(const JSONValue& params) {
  addressedTurn(params, "turnId").interrupt();
  return emptyObject();
}

JSONValue Agent::startReview(const JSONValue& params) {
  AgentThread& reviewed = thread(params);
  AgentThread& place =
      textMember(params, "delivery") == "detached" ? forkThread(threads_, reviewed, emptyObject()) : reviewed;
  AgentTurn& turn = beginTurn(place, {});
  playReview(turn, anyMember(params, "target").detached());
  turn.scheduleAdded();
  return JSONValue::object({{"turn", place.turns.back().json(ItemsView::notLoaded)}, {"reviewThreadId", place.id}});
}

AgentThread& Agent::thread(const JSONValue& params) { return knownThread(threads_, params); }

AgentTurn& Agent::beginTurn(AgentThread& thread, const JSONValue& outputSchema) {
  if (runningTurn(thread)) throw Refusal(invalidRequest, "a turn is already running");
  turns_.push_back(std::make_unique<AgentTurn>(client_, thread, newID(), settings_.pace, outputSchema));
  AgentTurn& turn = *turns_.back();
  turn.thenAfter(milliseconds(0), [&turn] {
    JSONObjectBuilder members;
    turn.notify("turn/started", members.set("turn", turn.thread().turns.back().json(ItemsView::notLoaded)));
  });
  return turn;
}

AgentTurn* Agent::runningTurn(const AgentThread& thread) {
  const auto found =
      std::find_if(turns_.begin(), turns_.end(), [&](const auto& turn) { return &turn->thread() == &thread; });
  return found == turns_.end() ? nullptr : found->get();
}

AgentTurn& Agent::addressedTurn(const JSONValue& params, const char* turnKey) {
  AgentTurn* turn = runningTurn(thread(params));
  const std::string id = textMember(params, turnKey).value_or("");
  if (!turn || turn->ended() || turn->id() != id) throw Refusal(invalidRequest, "no such turn is running: " + id);
  return *turn;
}

}  // namespace ormel::simulator
