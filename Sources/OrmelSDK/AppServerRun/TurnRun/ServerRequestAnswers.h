#pragma once

// The answers to the requests of the server. Nothing is granted by default: without a handler, or when it fails, or
// when it answers something that was not offered, the answer is the most restrictive one that the request allows.
//
// Each task calls the application's handler. It fails only where there is nothing restrictive to say.

#include <exception>
#include <optional>
#include <utility>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::detail {

/// The answer to a request of the server.
struct ServerRequestAnswer {
  ServerRequestAnswer() = default;
  /// Nobody was asked for it.
  explicit ServerRequestAnswer(JSONValue answer) : result(std::move(answer)) {}
  /// The answer of the handler, or the restrictive one in place of an answer of the handler that failed.
  ServerRequestAnswer(JSONValue answer, std::exception_ptr failure)
      : result(std::move(answer)), isByHandler(true), handlerFailure(std::move(failure)) {}

  JSONValue result;
  bool isByHandler = false;
  std::exception_ptr handlerFailure;
};

/// The most restrictive of the decisions that are offered.
OrmelApprovalDecision failClosedDecision(const std::vector<OrmelApprovalDecision>& availableDecisions);

Task<ServerRequestAnswer> answerToCommandApproval(decltype(ThreadOptions::commandApprovalHandler) handler,
                                                  CommandApprovalRequest request);
Task<ServerRequestAnswer> answerToFileChangeApproval(decltype(ThreadOptions::fileChangeApprovalHandler) handler,
                                                     FileChangeApprovalRequest request);
Task<ServerRequestAnswer> answerToPermissionsApproval(decltype(ThreadOptions::permissionsApprovalHandler) handler,
                                                      PermissionsApprovalRequest request);

/// The answer to an elicitation; without a request, it is the cancelling one.
Task<ServerRequestAnswer> answerToElicitation(decltype(ThreadOptions::mcpServerElicitationHandler) handler,
                                              std::optional<McpServerElicitationRequest> request);

/// `tools` are the application's; a call of any other is answered by a failure.
Task<ServerRequestAnswer> answerToDynamicToolCall(decltype(ThreadOptions::dynamicTools) tools,
                                                  DynamicToolCallContext call);

/// Fails as the handler does: tokens cannot be refused.
Task<ServerRequestAnswer> answerToAuthTokensRefresh(
    AsyncHandler<ParlaneAuthTokensRefreshResponse(ParlaneAuthTokensRefreshRequest)> handler,
    ParlaneAuthTokensRefreshRequest request);

Task<ServerRequestAnswer> answerToAttestation(decltype(ThreadOptions::attestationGenerateHandler) handler);

}  // namespace ormel::detail
