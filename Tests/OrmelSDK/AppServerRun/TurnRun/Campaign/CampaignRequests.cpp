#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignRequests.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "OrmelSDK/Concurrency/Sleep.h"

namespace ormel::testing {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view nameKey = "askName";

std::string_view textIn(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value ? value->stringValue().value_or("") : std::string_view();
}

JSONValue requestLine(const JSONValue& id, std::string_view method, JSONValue params) {
  return JSONValue::object({{"id", id}, {"method", method}, {"params", std::move(params)}});
}

/// A number and the text that spells it are two ids.
std::string spelledID(const JSONValue& message) {
  const JSONValue* id = message.find("id");
  return id ? id->encode() : "";
}

OrmelApprovalDecision acceptanceOf(const std::string& name) {
  return OrmelApprovalDecision(JSONValue::object({{"accept", name}}));
}

Task<void> pause(SimulatedScheduler& scheduler, std::uint64_t waits) {
  for (; waits > 0; --waits) co_await sleepFor(scheduler, 0ns);
}

}  // namespace

CampaignRequests::CampaignRequests(CampaignWorld& world, const RequestPlan& plan) : world_(world), plan_(plan) {
  world_.observeBy(this);
  world_.plan().asks = [this](const std::string& threadID, const std::string& turnID) {
    return linesOf(threadID, turnID);
  };
  installHandlers();
}

// The server's requests.

std::vector<JSONValue> CampaignRequests::linesOf(const std::string& threadID, const std::string& turnID) {
  std::vector<JSONValue> lines;
  for (auto asks = 1 + world_.scheduler.choose(plan_.asks); asks > 0; --asks) {
    const auto kind = world_.scheduler.choose(6);
    if (plan_.asksTheUser && kind < 2) {
      lines.push_back(askTheUser(turnID));
    } else if (plan_.asksWhatIsUnknown && kind == 2) {
      lines.push_back(askWhatIsUnknown(turnID));
    } else {
      lines.push_back(ask(threadID, turnID));
    }
    if (plan_.resolves && world_.coin()) lines.push_back(resolve(turnID));
  }
  return lines;
}

CampaignRequests::Request& CampaignRequests::newRequest(Kind kind, JSONValue id) {
  Request& request = requests_.emplace_back();
  request.kind = kind;
  request.id = std::move(id);
  request.name = "name-" + std::to_string(requests_.size());
  byName_[request.name] = &request;
  return request;
}

JSONValue CampaignRequests::anID(const std::string& turnID) {
  const std::size_t number = plan_.sharesIDs ? world_.scheduler.choose(2) : requests_.size();
  switch (world_.scheduler.choose(3)) {
    case 0:
      return turnID + "/" + std::to_string(number);
    case 1:
      return std::to_string(number);
    default:
      return static_cast<double>(number);
  }
}

JSONValue CampaignRequests::ask(const std::string& threadID, const std::string& turnID) {
  Request& request = newRequest(Kind::handled, anID(turnID));
  JSONObjectBuilder params;
  params.set(nameKey, request.name).set("threadId", threadID).set("turnId", turnID).set("itemId", "item-1");
  switch (world_.scheduler.choose(plan_.asksForTokens ? 7 : 6)) {
    case 0:
      params.set("approvalId", request.name);
      return requestLine(request.id, "item/commandExecution/requestApproval", params.build());
    case 1:
      params.set("reason", request.name);
      return requestLine(request.id, "item/fileChange/requestApproval", params.build());
    case 2:
      params.set("reason", request.name);
      return requestLine(request.id, "item/permissions/requestApproval", params.build());
    case 3:
      params.set("serverName", "mcp").set("mode", "form").set("message", request.name);
      return requestLine(request.id, "mcpServer/elicitation/request", params.build());
    case 4:
      params.set("tool", "lent").set("callId", request.name);
      return requestLine(request.id, "item/tool/call", params.build());
    case 5:
      request.isOfAttestation = true;
      return requestLine(request.id, "attestation/generate", params.build());
    default:
      params.set("previousAccountId", request.name);
      return requestLine(request.id, "account/parlaneAuthTokens/refresh", params.build());
  }
}

JSONValue CampaignRequests::askTheUser(const std::string& turnID) {
  const std::size_t number = requests_.size();
  JSONValue id = turnID + "/user-" + std::to_string(number);
  if (world_.coin()) id = JSONValue(static_cast<double>(1000 + number));
  Request& request = newRequest(Kind::user, std::move(id));
  request.itemID = "question-" + std::to_string(world_.scheduler.choose(2)) + "@" + turnID;
  itemIDs_.push_back(request.itemID);
  const JSONValue params = JSONValue::object({{nameKey, request.name}, {"itemId", request.itemID}});
  return requestLine(request.id, "item/tool/requestUserInput", params);
}

JSONValue CampaignRequests::askWhatIsUnknown(const std::string& turnID) {
  const Request& request = newRequest(Kind::unknown, anID(turnID));
  return requestLine(request.id, "foo/bar", JSONValue::object({{nameKey, request.name}}));
}

JSONValue CampaignRequests::resolve(const std::string& turnID) {
  const JSONValue id = world_.coin() ? anID(turnID) : requests_.back().id;
  const Request& request = newRequest(Kind::resolution, id);
  const JSONValue params = JSONValue::object({{nameKey, request.name}, {"requestId", id}});
  return JSONValue::object({{"method", "serverRequest/resolved"}, {"params", params}});
}

// The application's handlers.

void CampaignRequests::installHandlers() {
  ThreadOptions& options = world_.configuration.threadOptions;
  options.commandApprovalHandler = [this](CommandApprovalRequest request) -> Task<OrmelApprovalDecision> {
    std::string name = request.approvalID.value_or("");
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    co_return acceptanceOf(request.approvalID.value_or(""));
  };
  options.fileChangeApprovalHandler = [this](FileChangeApprovalRequest request) -> Task<OrmelApprovalDecision> {
    std::string name = request.reason.value_or("");
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    co_return acceptanceOf(request.reason.value_or(""));
  };
  options.permissionsApprovalHandler = [this](PermissionsApprovalRequest request) -> Task<PermissionsApprovalResponse> {
    std::string name = request.reason.value_or("");
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    PermissionsApprovalResponse response;
    response.permissions.network = JSONValue(request.reason.value_or(""));
    co_return response;
  };
  options.mcpServerElicitationHandler =
      [this](McpServerElicitationRequest request) -> Task<McpServerElicitationResponse> {
    std::string name = std::get<McpServerFormElicitation>(request.mode.value).message;
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    McpServerElicitationResponse response;
    response.action = McpServerElicitationAction::accept;
    response.content = JSONValue(std::get<McpServerFormElicitation>(request.mode.value).message);
    co_return response;
  };
  options.attestationGenerateHandler = [this]() -> Task<std::string> {
    Task<void> waiting = takeTime("");
    co_await std::move(waiting);
    co_return std::string("token");
  };
  options.parlaneAuthTokensRefreshHandler =
      [this](ParlaneAuthTokensRefreshRequest request) -> Task<ParlaneAuthTokensRefreshResponse> {
    std::string name = request.previousAccountID.value_or("");
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    ParlaneAuthTokensRefreshResponse response;
    response.accessToken = request.previousAccountID.value_or("");
    co_return response;
  };
  auto execute = [this](DynamicToolCallContext call) -> Task<DynamicToolResult> {
    std::string name = call.callID;
    Task<void> waiting = takeTime(std::move(name));
    co_await std::move(waiting);
    DynamicToolResult result;
    result.contentItems.push_back(DynamicToolCallOutputContentItem::inputText(call.callID));
    co_return result;
  };
  DynamicToolSpec spec;
  spec.name = "lent";
  options.dynamicTools = std::vector<DynamicTool>{DynamicTool{spec, std::move(execute)}};
}

/// Early, late or never; with or without an ear for cancellation; or a failure.
Task<void> CampaignRequests::takeTime(std::string name) {
  if (isOutOfUse_ && isOutOfUse_()) world_.breaks("no handler is called once the application has done with the thread");
  struct Over {
    std::shared_ptr<Serving> serving = std::make_shared<Serving>();
    ~Over() { serving->isOver = true; }
  };
  Over over;
  over.serving->stop = co_await currentStopToken();
  servings_.push_back(over.serving);
  const auto fate = world_.scheduler.choose(8);
  if (fate == 0) co_await sleepFor(world_.scheduler, 24h);
  const std::uint64_t longest = world_.coin() ? 4 : 25;
  Task<void> waiting = pause(world_.scheduler, world_.scheduler.choose(longest));
  if (fate < 3) waiting = std::move(waiting).withStopToken({});
  co_await std::move(waiting);
  if (plan_.handlersFail && (fate == 4 || fate == 5)) failed_.insert(name);
  if (plan_.handlersFail && fate == 4) throw std::runtime_error("campaign");
  if (plan_.handlersFail && fate == 5) throw 7;
  served_.insert(name);
}

void CampaignRequests::submit() {
  const bool isKnown = !itemIDs_.empty() && world_.scheduler.choose(8) != 0;
  std::string itemID = isKnown ? itemIDs_[world_.scheduler.choose(itemIDs_.size())] : "never asked";
  submissions_.push_back(&world_.submit(std::move(itemID), {{"q", {"answer"}}}));
}

// The promises.

void CampaignRequests::serverSent(const InMemoryProcess& process, const JSONValue& message) {
  const JSONValue* params = message.find("params");
  const auto named = params ? byName_.find(textIn(*params, nameKey)) : byName_.end();
  Request* request = named == byName_.end() ? nullptr : named->second;
  if (request) request->process = process.identifier();
  lines_[process.identifier()].push_back(request);
}

void CampaignRequests::stepped(const detail::AppServerTurnRun* run) {
  std::erase_if(servings_, [](const auto& serving) { return serving->isOver; });
  const auto unstopped = std::count_if(servings_.begin(), servings_.end(),
                                       [](const auto& serving) { return !serving->stop.stop_requested(); });
  const std::size_t waitedFor = run ? run->serverRequests().count() : 0;
  world_.require(static_cast<std::size_t>(unstopped) <= waitedFor, "a handler that nobody waits for is told to stop");
  if (!run) return;
  const std::uint64_t activity = run->protocolActivityGeneration();
  if (run->transport().generation() != transportGeneration_) {
    transportGeneration_ = run->transport().generation();
    activityBefore_ = activity;
    linesTaken_ = 0;
  }
  if (!run->transport().hasProcess()) return;
  const auto& lines = lines_[world_.server.lastProcess().identifier()];
  for (; linesTaken_ < std::min<std::uint64_t>(activity - activityBefore_, lines.size()); ++linesTaken_) {
    if (Request* request = lines[linesTaken_]) take(*request, run->stream().currentOperationGeneration());
  }
  // The whole of a line that was to be cut off may be a request, of which only the run knows.
  const bool mayHaveMore = world_.plan().fault == ServerPlan::Fault::exitWithinTheLine;
  if (run->stream().currentOperationGeneration() || mayHaveMore) return;
  const auto takenInNone = std::count_if(requests_.begin(), requests_.end(), [](const Request& request) {
    return request.kind == Kind::handled && request.takenAs != 0 && !request.takenIn;
  });
  world_.require(waitedFor <= static_cast<std::size_t>(takenInNone),
                 "the end of an operation leaves no request of the server");
}

void CampaignRequests::take(Request& request, std::optional<std::uint64_t> operationGeneration) {
  request.takenAs = ++requestsTaken_;
  request.takenIn = operationGeneration;
  for (Request& other : requests_) {
    if (&other == &request || other.takenAs == 0 || other.process != request.process) continue;
    const bool isOfTheID = other.kind == Kind::handled && other.id == request.id;
    const bool isOfTheItem = other.kind == Kind::user && other.itemID == request.itemID;
    const bool endsHandlers = request.kind == Kind::handled || request.kind == Kind::resolution;
    if ((endsHandlers && isOfTheID) || (request.kind == Kind::user && isOfTheItem)) other.isOvertaken = true;
  }
  const bool canBeTold = world_.server.lastProcess().isRunning() && !world_.plan().fault;
  if (request.kind == Kind::unknown && canBeTold) world_.require(request.isAnswered, "what is unknown is refused");
}

void CampaignRequests::runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process,
                                const JSONValue& message) {
  if (textIn(message, "method") == "turn/interrupt") forgetTaken(process);
  if (message.find("method")) return;
  const std::string id = spelledID(message);
  if (message.find("error")) {
    checkRefusal(process, id);
  } else if (const JSONValue* result = message.find("result")) {
    checkAnswer(run, process, id, *result);
  } else {
    world_.breaks("an answer has a result or an error");
  }
}

/// An interrupt leaves them without an answer.
void CampaignRequests::forgetTaken(const InMemoryProcess& process) {
  for (Request& request : requests_) {
    const bool isTaken = request.process == process.identifier() && request.takenAs != 0;
    if (isTaken && request.kind == Kind::handled) request.isOvertaken = true;
  }
}

void CampaignRequests::checkRefusal(const InMemoryProcess& process, const std::string& id) {
  // They are refused as they are taken, which is in the order of the lines.
  for (Request* request : lines_[process.identifier()]) {
    if (!request || request->kind != Kind::unknown || request->id.encode() != id || request->isAnswered) continue;
    request->isAnswered = true;
    return;
  }
  world_.breaks("only what is unknown is refused, and once");
}

void CampaignRequests::checkAnswer(const detail::AppServerTurnRun& run, const InMemoryProcess& process,
                                   const std::string& id, const JSONValue& result) {
  Request* request = newestTaken(process.identifier(), id);
  if (!request) return world_.breaks("no process gets an answer to what it did not ask");
  if (request->isAnswered) world_.breaks("a request is answered once");
  if (request->isOvertaken) world_.breaks("no answer is written that the server does not wait for");
  const auto current = run.stream().currentOperationGeneration();
  if (!current || request->takenIn != current) world_.breaks("no answer is written for an operation that is over");
  const std::string text = result.encode();
  const bool isNamed = text.find("\"name-") != std::string::npos;
  if (isNamed && text.find('"' + request->name + '"') == std::string::npos) {
    world_.breaks("a request gets its own answer");
  }
  if (request->kind == Kind::handled && !request->isOfAttestation) {
    if (isNamed != (served_.count(request->name) != 0)) world_.breaks("what a handler answered is written");
    if (!isNamed) checkClosedAnswer(*request, result);
  }
  request->isAnswered = true;
  if (request->kind == Kind::user) ++submissionsWritten_;
}

/// It grants nothing.
void CampaignRequests::checkClosedAnswer(const Request& request, const JSONValue& result) {
  const std::string text = result.encode();
  const auto has = [&text](std::string_view part) { return text.find(part) != std::string::npos; };
  const bool isClosed = has(R"("decision":"decline")") || has(R"("action":"cancel")") || has(R"("success":false)") ||
                        has(R"("permissions":{})");
  if (!isClosed) world_.breaks("a handler that failed grants nothing: " + text);
  if (failed_.count(request.name) == 0) world_.breaks("no request is refused that a handler answers: " + text);
}

CampaignRequests::Request* CampaignRequests::newestTaken(int process, const std::string& id) {
  Request* newest = nullptr;
  for (Request& request : requests_) {
    const bool wantsAnAnswer = request.kind == Kind::handled || request.kind == Kind::user;
    const bool isOfTheID = request.process == process && request.id.encode() == id;
    if (!wantsAnAnswer || !isOfTheID || request.takenAs == 0) continue;
    if (!newest || newest->takenAs < request.takenAs) newest = &request;
  }
  return newest;
}

void CampaignRequests::checkSubmissions() const {
  std::size_t successes = 0;
  for (const CallRecord* submission : submissions_) {
    if (!submission->isOver) continue;
    if (!submission->error) {
      ++successes;
      continue;
    }
    const bool isAllowed = *submission->error == "No active turn for request_user_input response" ||
                           submission->error->starts_with("No pending request_user_input call for item: ");
    world_.require(isAllowed, "a submission may not fail with: " + *submission->error);
  }
  world_.require(successes >= submissionsWritten_, "each answer of the user is written once");
  const bool canExit = world_.plan().fault || world_.plan().exitsAfterTurn;
  if (!canExit) world_.require(successes == submissionsWritten_, "each success is written");
}

}  // namespace ormel::testing
