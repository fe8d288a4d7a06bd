#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ServerRequests.h"

#include <array>
#include <exception>
#include <string_view>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/ServerRequestAnswers.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

template <typename R>
struct ServerRequestRow {
  std::string_view method;
  std::optional<PreparedServerRequestWork> (R::*prepare)() const;
};

template <typename R>
constexpr std::array<ServerRequestRow<R>, 8> requestRows = {{
    {"item/tool/requestUserInput", &R::userInput},
    {"item/commandExecution/requestApproval", &R::commandApproval},
    {"item/fileChange/requestApproval", &R::fileChangeApproval},
    {"item/permissions/requestApproval", &R::permissionsApproval},
    {"mcpServer/elicitation/request", &R::elicitation},
    {"item/tool/call", &R::toolCall},
    {"account/parlaneAuthTokens/refresh", &R::authTokensRefresh},
    {"attestation/generate", &R::attestation},
}};

McpToolCallItem openCall(std::string id, std::string server, std::string tool, JSONValue arguments) {
  McpToolCallItem item;
  item.id = std::move(id);
  item.server = std::move(server);
  item.tool = std::move(tool);
  item.arguments = std::move(arguments);
  item.status = McpToolCallStatus::inProgress;
  return item;
}

constexpr const char* elicitationTool = "elicitation/request";

McpToolCallItem answeredElicitation(const ElicitationContext& context, const JSONObject& answer) {
  McpToolCallItem item = openCall(context.itemID, context.serverName, elicitationTool, context.arguments);
  item.status = McpToolCallStatus::completed;
  McpToolCallResult result;
  const JSONValue* content = answer.find("content");
  if (content && content->arrayValue()) {
    result.content = valuesOf(content->arrayValue());
  } else if (content && !content->isNull()) {
    result.content.push_back(*content);
  }
  const JSONValue* meta = answer.find("_meta");
  if (meta && !meta->isNull()) result.meta = *meta;
  item.result = std::move(result);
  return item;
}

}  // namespace

void AppServerTurnRun::dispatchServerRequest(const ServerRequestMessage& request) {
  const AppServerRequestID id = serverRequestID(request.payload);
  auto work = ServerRequests::prepare(*this, request, id);
  if (!work) return;
  const ServerRequestScope scope{transport_.generation(), stream_.currentOperationGeneration(), UUID::random()};
  std::stop_token stop = serverRequests_.add(id, scope);
  auto serving = serve(weak_from_this(), id, scope, std::move(work->response), std::move(work->completionContext));
  // Beside the reader, which goes on meanwhile; a handler may wait for a person.
  std::move(serving).onScheduler(*services_.scheduler).withStopToken(std::move(stop)).detach();
}

Task<void> AppServerTurnRun::serve(std::weak_ptr<AppServerTurnRun> owner, AppServerRequestID id,
                                   ServerRequestScope scope, Task<JSONValue> response,
                                   std::optional<ElicitationContext> context) {
  JSONValue result;
  std::exception_ptr failure;
  try {
    result = co_await std::move(response);
  } catch (...) {
    failure = std::current_exception();
  }
  const auto self = owner.lock();
  if (!self) co_return;
  co_await self->strand_.enter();
  if (failure) {
    self->failPendingServerRequest(id, scope, failure);
  } else {
    self->completePendingServerRequest(id, scope, result, context);
  }
}

bool AppServerTurnRun::takePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope) {
  if (!serverRequests_.contains(id, scope)) return false;
  // Also when it is not answered: an idle server may ask for ever.
  serverRequests_.remove(id);
  return isCurrentTransport(scope.transportGeneration) &&
         stream_.currentOperationGeneration() == scope.operationGeneration && stream_.isPending();
}

void AppServerTurnRun::completePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                                    const JSONValue& result,
                                                    const std::optional<ElicitationContext>& context) {
  if (!takePendingServerRequest(id, scope)) return;
  try {
    applyServerRequestResult(id, result, context);
  } catch (...) {
    const auto text = describedFailure(std::current_exception()).message;
    finishCurrent(StreamCompletion::failed({"Failed responding to app-server request: " + text, false}));
  }
}

void AppServerTurnRun::failPendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                                const std::exception_ptr& error) {
  if (!takePendingServerRequest(id, scope)) return;
  const auto text = describedFailure(error).message;
  finishCurrent(StreamCompletion::failed({"Failed handling app-server request: " + text, false}));
}

void AppServerTurnRun::applyServerRequestResult(const AppServerRequestID& id, const JSONValue& result,
                                                const std::optional<ElicitationContext>& context) {
  respondToServerRequest(id, result);
  const JSONObject* answer = result.objectValue();
  if (!context || !answer) return;
  ThreadItem item = answeredElicitation(*context, *answer);
  items_.store(item);
  stream_.emit(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
}

void AppServerTurnRun::respondToServerRequest(const AppServerRequestID& id, const JSONValue& result) {
  transport_.writePayload(JSONValue::object({{"id", id.jsonValue()}, {"result", result}}));
}

void AppServerTurnRun::respondToServerRequestError(const AppServerRequestID& id, std::int64_t code,
                                                   const std::string& message) {
  const JSONValue error = JSONValue::object({{"code", code}, {"message", message}});
  transport_.writePayload(JSONValue::object({{"id", id.jsonValue()}, {"error", error}}));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::prepare(AppServerTurnRun& run,
                                                                                   const ServerRequestMessage& request,
                                                                                   const AppServerRequestID& id) {
  const JSONValue& params = paramsOf(request.payload);
  const ServerRequests requests{run, id, params, *params.objectValue()};
  for (const auto& row : requestRows<ServerRequests>) {
    if (row.method == request.method) return (requests.*row.prepare)();
  }
  run.respondToServerRequestError(id, AppServerRPCError::methodNotFoundCode,
                                  "Method not found: " + std::string(request.method));
  return std::nullopt;
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::userInput() const {
  auto itemID = textMember(params, {"itemId"});
  if (!itemID) throw ThreadRunError::streamError("request_user_input payload missing itemId");
  // Without an operation nobody will answer, and an idle server may ask for ever.
  if (run.stream_.currentOperationGeneration()) run.serverRequests_.addUserInput(*itemID, id);
  ThreadItem item = openCall(*std::move(itemID), "ormel", "request_user_input", requestUserInputArguments(params));
  run.keepForOperation(item);
  run.stream_.emit(ItemStartedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  return std::nullopt;
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::commandApproval() const {
  return PreparedServerRequestWork(
      answerToCommandApproval(handlers().commandApprovalHandler, commandApprovalRequest(params, scope())));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::fileChangeApproval() const {
  auto request = fileChangeApprovalRequest(params, scope(), run.items_.find(approvedItemID(params)));
  return PreparedServerRequestWork(
      answerToFileChangeApproval(handlers().fileChangeApprovalHandler, std::move(request)));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::permissionsApproval() const {
  return PreparedServerRequestWork(
      answerToPermissionsApproval(handlers().permissionsApprovalHandler, permissionsApprovalRequest(params, scope())));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::elicitation() const {
  auto request = mcpServerElicitationRequest(params, scope());
  std::optional<ElicitationContext> context;
  if (request) {
    context =
        ElicitationContext{syntheticItemID("mcp-server-elicitation", id), request->serverName, paramsValue.detached()};
    ThreadItem item = openCall(context->itemID, context->serverName, elicitationTool, context->arguments);
    run.keepForOperation(item);
    run.stream_.emit(ItemStartedEvent{std::move(item), request->threadID, request->turnID, std::nullopt});
  }
  PreparedServerRequestWork work(answerToElicitation(handlers().mcpServerElicitationHandler, std::move(request)));
  work.completionContext = std::move(context);
  return work;
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::toolCall() const {
  return PreparedServerRequestWork(answerToDynamicToolCall(handlers().dynamicTools, dynamicToolCallContext(params)));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::authTokensRefresh() const {
  const auto& handler = handlers().parlaneAuthTokensRefreshHandler;
  if (!handler) {
    throw ThreadRunError::streamError("Parlane auth token refresh requested without a configured handler");
  }
  return PreparedServerRequestWork(answerToAuthTokensRefresh(*handler, parlaneAuthTokensRefreshRequest(params)));
}

std::optional<PreparedServerRequestWork> AppServerTurnRun::ServerRequests::attestation() const {
  return PreparedServerRequestWork(answerToAttestation(handlers().attestationGenerateHandler));
}

}  // namespace ormel::detail
