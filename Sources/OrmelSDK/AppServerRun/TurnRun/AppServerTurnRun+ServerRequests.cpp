#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ServerRequests.h"

#include <exception>

#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunClosing.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLife.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunProblems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

McpToolCallItem answeredElicitation(const ServerRequestCompletionContext::McpElicitation& elicitation,
                                    const JSONObject& answer) {
  McpToolCallItem item =
      openToolCall(elicitation.itemID, elicitation.serverName, elicitationTool, elicitation.arguments);
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

McpToolCallItem openToolCall(std::string id, std::string server, std::string tool, JSONValue arguments) {
  McpToolCallItem item;
  item.id = std::move(id);
  item.server = std::move(server);
  item.tool = std::move(tool);
  item.arguments = std::move(arguments);
  item.status = McpToolCallStatus::inProgress;
  return item;
}

void respondToServerRequest(RunTransport& transport, const AppServerRequestID& id, const JSONValue& result) {
  transport.writePayload(JSONValue::object({{"id", id.jsonValue()}, {"result", result}}));
}

void respondToServerRequestError(RunTransport& transport, const AppServerRequestID& id, std::int64_t code,
                                 const std::string& message) {
  const JSONValue error = JSONValue::object({{"code", code}, {"message", message}});
  transport.writePayload(JSONValue::object({{"id", id.jsonValue()}, {"error", error}}));
}

void ServerRequestDispatcher::dispatchServerRequest(const ServerRequestMessage& request) {
  const AppServerRequestID id = serverRequestID(request.payload);
  auto work = prepareServerRequestWork(run_, request, id);
  if (!work) return;
  const ServerRequestScope scope{run_.transport.generation(), run_.stream.currentOperationGeneration(), UUID::random()};
  std::stop_token stop = run_.serverRequests.add(id, scope);
  auto serving =
      serve(run_.life.run(), *this, std::string(request.method), id, scope, run_.closing.begun(), *std::move(work));
  // Run concurrently with the reader: a handler may block on a human.
  auto& where = run_.life.strand().scheduler().applicationScheduler();
  std::move(serving).onScheduler(where).withStopToken(std::move(stop)).detach();
}

Task<void> ServerRequestDispatcher::serve(std::weak_ptr<void> run, ServerRequestDispatcher& self, std::string method,
                                          AppServerRequestID id, ServerRequestScope scope, std::stop_token closing,
                                          PreparedServerRequestWork work) {
  // An application that has closed its thread may be gone.
  if (closing.stop_requested()) co_return;
  ServerRequestAnswer answer;
  std::exception_ptr failure;
  try {
    answer = co_await std::move(work.response);
  } catch (...) {
    failure = std::current_exception();
  }
  const auto held = run.lock();
  if (!held) co_return;
  co_await self.run_.life.strand().enter();
  const RunProblems& problems = self.run_.problems;
  if (failure) {
    // Where the request still waits, its operation fails, which tells of the failure.
    if (!self.failPendingServerRequest(id, scope, failure)) problems.handlerFailed(method, failure);
    co_return;
  }
  const bool isInTime = self.completePendingServerRequest(id, scope, answer.result, work.completionContext);
  if (answer.handlerFailure) {
    problems.handlerFailed(method, answer.handlerFailure);
  } else if (answer.isByHandler && !isInTime) {
    problems.answerCameTooLate(method);
  }
}

bool ServerRequestDispatcher::takePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope) {
  if (!run_.serverRequests.contains(id, scope)) return false;
  // Erase the entry even if no answer is written, or a chatty idle server grows the table without bound.
  run_.serverRequests.remove(id);
  return run_.transport.isCurrent(scope.transportGeneration) &&
         run_.stream.currentOperationGeneration() == scope.operationGeneration && run_.stream.isPending();
}

bool ServerRequestDispatcher::completePendingServerRequest(const AppServerRequestID& id,
                                                           const ServerRequestScope& scope, const JSONValue& result,
                                                           const ServerRequestCompletionContext& context) {
  if (!takePendingServerRequest(id, scope)) return false;
  try {
    applyServerRequestResult(id, result, context);
  } catch (...) {
    const auto text = describedFailure(std::current_exception()).message;
    run_.lifecycle.finishCurrent(StreamCompletion::failed({"Failed responding to app-server request: " + text, false}));
  }
  return true;
}

bool ServerRequestDispatcher::failPendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                                       const std::exception_ptr& error) {
  if (!takePendingServerRequest(id, scope)) return false;
  const auto text = describedFailure(error).message;
  run_.lifecycle.finishCurrent(StreamCompletion::failed({"Failed handling app-server request: " + text, false}));
  return true;
}

void ServerRequestDispatcher::applyServerRequestResult(const AppServerRequestID& id, const JSONValue& result,
                                                       const ServerRequestCompletionContext& context) {
  respondToServerRequest(run_.transport, id, result);
  const JSONObject* answer = result.objectValue();
  if (!context.mcpElicitation || !answer) return;
  ThreadItem item = answeredElicitation(*context.mcpElicitation, *answer);
  run_.items.store(item);
  run_.stream.emitEvent(ItemCompletedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
}

}  // namespace ormel::detail
