#include "OrmelSDK/AppServerRun/TurnRun/ServerRequestHandlers.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
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
    {"item/tool/requestUserInput", &R::handleRequestUserInput},
    {"item/commandExecution/requestApproval", &R::commandApproval},
    {"item/fileChange/requestApproval", &R::fileChangeApproval},
    {"item/permissions/requestApproval", &R::permissionsApproval},
    {"mcpServer/elicitation/request", &R::mcpElicitation},
    {"item/tool/call", &R::toolCall},
    {"account/parlaneAuthTokens/refresh", &R::authTokensRefresh},
    {"attestation/generate", &R::attestation},
}};

}  // namespace

std::optional<PreparedServerRequestWork> prepareServerRequestWork(const ServerRequestContext& run,
                                                                  const ServerRequestMessage& request,
                                                                  const AppServerRequestID& id) {
  const ServerRequestHandlers handlers(run, id, paramsOf(request.payload));
  for (const auto& row : requestRows<ServerRequestHandlers>) {
    if (row.method == request.method) return (handlers.*row.prepare)();
  }
  respondToServerRequestError(run.transport, id, AppServerRPCError::methodNotFoundCode,
                              "Method not found: " + std::string(request.method));
  return std::nullopt;
}

void ServerRequestHandlers::keepForOperation(const ThreadItem& item) const {
  if (run_.stream.currentOperationGeneration()) run_.items.store(item);
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::handleRequestUserInput() const {
  auto itemID = textMember(params_, {"itemId"});
  if (!itemID) throw ThreadRunError::streamError("request_user_input payload missing itemId");
  // Without an operation nobody will answer, and an idle server may ask for ever.
  if (run_.stream.currentOperationGeneration()) run_.serverRequests.addUserInput(*itemID, id_);
  ThreadItem item = openToolCall(*std::move(itemID), "ormel", "request_user_input", requestUserInputArguments(params_));
  keepForOperation(item);
  run_.stream.emitEvent(ItemStartedEvent{std::move(item), std::nullopt, std::nullopt, std::nullopt});
  return std::nullopt;
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::commandApproval() const {
  return PreparedServerRequestWork(
      answerToCommandApproval(handlers().commandApprovalHandler, commandApprovalRequest(params_, scope())));
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::fileChangeApproval() const {
  auto request = fileChangeApprovalRequest(params_, scope(), run_.items.find(approvedItemID(params_)));
  return PreparedServerRequestWork(
      answerToFileChangeApproval(handlers().fileChangeApprovalHandler, std::move(request)));
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::permissionsApproval() const {
  return PreparedServerRequestWork(
      answerToPermissionsApproval(handlers().permissionsApprovalHandler, permissionsApprovalRequest(params_, scope())));
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::mcpElicitation() const {
  auto request = mcpServerElicitationRequest(params_, scope());
  std::optional<ServerRequestCompletionContext::McpElicitation> elicitation;
  if (request) {
    elicitation.emplace(ServerRequestCompletionContext::McpElicitation{syntheticItemID("mcp-server-elicitation", id_),
                                                                       request->serverName, paramsValue_.detached()});
    ThreadItem item =
        openToolCall(elicitation->itemID, elicitation->serverName, elicitationTool, elicitation->arguments);
    keepForOperation(item);
    run_.stream.emitEvent(ItemStartedEvent{std::move(item), request->threadID, request->turnID, std::nullopt});
  }
  PreparedServerRequestWork work(answerToElicitation(handlers().mcpServerElicitationHandler, std::move(request)));
  work.completionContext.mcpElicitation = std::move(elicitation);
  return work;
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::toolCall() const {
  return PreparedServerRequestWork(answerToDynamicToolCall(handlers().dynamicTools, dynamicToolCallContext(params_)));
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::authTokensRefresh() const {
  const auto& handler = handlers().parlaneAuthTokensRefreshHandler;
  if (!handler) {
    throw ThreadRunError::streamError("Parlane auth token refresh requested without a configured handler");
  }
  return PreparedServerRequestWork(answerToAuthTokensRefresh(*handler, parlaneAuthTokensRefreshRequest(params_)));
}

std::optional<PreparedServerRequestWork> ServerRequestHandlers::attestation() const {
  return PreparedServerRequestWork(answerToAttestation(handlers().attestationGenerateHandler));
}

}  // namespace ormel::detail
