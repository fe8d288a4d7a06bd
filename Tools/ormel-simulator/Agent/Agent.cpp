#include "ormel-simulator/Agent/Agent.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/UUID.h"
#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Agent/JSONMembers.h"
#include "ormel-simulator/Agent/TurnScripts.h"

namespace ormel::simulator {

namespace {

constexpr int parseError = -32700;
constexpr int invalidRequest = -32600;
constexpr int methodNotFound = -32601;
constexpr int internalError = -32603;

/// The answer to a request is an error.
class Refusal : public Error {
 public:
  Refusal(int code, const std::string& text) : Error(text), code_(code) {}

  int code() const noexcept { return code_; }

 private:
  int code_;
};

std::string newID() {
  std::string text = UUID::random().text();
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

AgentThread newThread() {
  AgentThread thread;
  thread.id = newID();
  thread.cwd = std::filesystem::current_path().string();
  thread.model = "simulated";
  thread.modelProvider = "simulator";
  thread.approvalPolicy = "on-request";
  return thread;
}

JSONValue emptyObject() { return JSONValue::object(); }

JSONObjectBuilder userMessage(const std::string& id, const JSONValue& params) {
  JSONObjectBuilder item;
  item.set("type", "userMessage").set("id", id).set("clientId", anyMember(params, "clientUserMessageId"));
  return item.set("content", anyMember(params, "input").detached());
}

}  // namespace

struct Agent::Route {
  std::string_view method;
  JSONValue (Agent::*handle)(const JSONValue& params);
};

Agent::Agent(Wire& wire, Recorder& recorder, const AgentSettings& settings)
    : wire_(wire), recorder_(recorder), settings_(settings), client_(wire, recorder), threads_(settings.stateFolder) {}

Exit Agent::run() {
  try {
    while (!exitStatus_) {
      wire_.pump(timeToNextStep());
      receiveLines();
      if (wire_.inputEnded()) {
        recorder_.record("endOfInput");
        return Exit{0};
      }
      advanceTurns();
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
  return std::max(time, milliseconds(0));
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
  threads_.save(turn.thread());
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
  static constexpr std::array<Route, 11> routes = {{{"initialize", &Agent::initialize},
                                                    {"thread/start", &Agent::startThread},
                                                    {"thread/resume", &Agent::resumeThread},
                                                    {"thread/read", &Agent::readThread},
                                                    {"thread/fork", &Agent::forkThread},
                                                    {"thread/compact/start", &Agent::compactThread},
                                                    {"turn/start", &Agent::startTurn},
                                                    {"turn/steer", &Agent::steerTurn},
                                                    {"turn/interrupt", &Agent::interruptTurn},
                                                    {"review/start", &Agent::startReview},
                                                    {"skills/extraRoots/set", &Agent::setSkillRoots}}};
  const auto route =
      std::find_if(routes.begin(), routes.end(), [&](const Route& one) { return one.method == request.method; });
  try {
    if (route == routes.end()) throw Refusal(methodNotFound, "Method not found: " + request.method);
    if (!initialized_ && request.method != "initialize") throw Refusal(invalidRequest, "Not initialized");
    const JSONValue result = (this->*route->handle)(request.content.value_or(JSONValue()));
    client_.reply(request.id, result);
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
  const JSONValue methods = anyMember(anyMember(params, "capabilities"), "optOutNotificationMethods");
  if (const auto* elements = methods.arrayValue()) {
    for (const JSONValue& method : *elements) unwanted.emplace(method.stringValue().value_or(""));
  }
  client_.setUnwanted(std::move(unwanted));
  return JSONValue::object({{"userAgent", "ormel-simulator/0.1.0"}});
}

JSONValue Agent::startThread(const JSONValue& params) {
  AgentThread started = newThread();
  started.ephemeral = flagMember(params, "ephemeral");
  started.applySettings(params);
  return threads_.add(std::move(started)).responseJSON(false);
}

JSONValue Agent::resumeThread(const JSONValue& params) {
  AgentThread& resumed = thread(params);
  resumed.applySettings(params);
  return resumed.responseJSON(!flagMember(params, "excludeTurns"));
}

JSONValue Agent::readThread(const JSONValue& params) {
  return JSONValue::object({{"thread", thread(params).json(flagMember(params, "includeTurns"))}});
}

JSONValue Agent::forkThread(const JSONValue& params) {
  return fork(thread(params), params).responseJSON(!flagMember(params, "excludeTurns"));
}

AgentThread& Agent::fork(const AgentThread& parent, const JSONValue& params) {
  AgentThread copy = parent;
  copy.id = newID();
  copy.forkedFromID = parent.id;
  copy.ephemeral = flagMember(params, "ephemeral");
  copy.createdAt = copy.updatedAt = secondsNow();
  // A turn that is under way is the parent's.
  std::erase_if(copy.turns, [](const AgentTurnRecord& turn) { return turn.status == "inProgress"; });
  if (const auto last = textMember(params, "lastTurnId")) {
    const auto found = std::find_if(copy.turns.begin(), copy.turns.end(),
                                    [&](const AgentTurnRecord& turn) { return turn.id == *last; });
    if (found == copy.turns.end()) throw Refusal(invalidRequest, "turn not found: " + *last);
    copy.turns.erase(found + 1, copy.turns.end());
  }
  copy.applySettings(params);
  return threads_.add(std::move(copy));
}

JSONValue Agent::compactThread(const JSONValue& params) {
  AgentTurn& turn = beginTurn(thread(params), {});
  playCompaction(turn);
  turn.scheduleAdded();
  return emptyObject();
}

JSONValue Agent::startTurn(const JSONValue& params) {
  AgentThread& addressed = thread(params);
  AgentTurn& turn = beginTurn(addressed, anyMember(params, "outputSchema").detached());
  addressed.applySettings(params);
  const JSONObjectBuilder message = userMessage(turn.newItemID("user"), params);
  turn.thenAfter(milliseconds(0), [&turn, message] {
    turn.startItem(message);
    turn.completeItem(message);
    playPrompt(turn);
  });
  turn.scheduleAdded();
  return JSONValue::object({{"turn", addressed.turns.back().json(false)}});
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
  AgentThread& place = textMember(params, "delivery") == "detached" ? fork(reviewed, emptyObject()) : reviewed;
  AgentTurn& turn = beginTurn(place, {});
  playReview(turn, anyMember(params, "target").detached());
  turn.scheduleAdded();
  return JSONValue::object({{"turn", place.turns.back().json(false)}, {"reviewThreadId", place.id}});
}

JSONValue Agent::setSkillRoots(const JSONValue&) { return emptyObject(); }

AgentThread& Agent::thread(const JSONValue& params) {
  const std::string id = textMember(params, "threadId").value_or("");
  AgentThread* found = threads_.find(id);
  if (!found) throw Refusal(invalidRequest, "thread not found: " + id);
  return *found;
}

AgentTurn& Agent::beginTurn(AgentThread& thread, const JSONValue& outputSchema) {
  if (runningTurn(thread)) throw Refusal(invalidRequest, "a turn is already running");
  turns_.push_back(std::make_unique<AgentTurn>(client_, thread, newID(), settings_.pace, outputSchema));
  AgentTurn& turn = *turns_.back();
  turn.thenAfter(milliseconds(0), [&turn] {
    JSONObjectBuilder members;
    turn.notify("turn/started", members.set("turn", turn.thread().turns.back().json(false)));
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
