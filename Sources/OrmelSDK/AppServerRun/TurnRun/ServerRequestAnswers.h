#pragma once

// The answers to the requests of the server. Nothing is granted by default: without a handler, or when it fails, or
// when it answers something that was not offered, the answer is the most restrictive one that the request allows.
//
// Each task calls the application's handler. It fails only where there is nothing restrictive to say.

#include <optional>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::detail {

/// The most restrictive of the decisions that are offered.
OrmelApprovalDecision failClosedDecision(const std::vector<OrmelApprovalDecision>& availableDecisions);

Task<JSONValue> answerToCommandApproval(decltype(ThreadOptions::commandApprovalHandler) handler,
                                        CommandApprovalRequest request);
Task<JSONValue> answerToFileChangeApproval(decltype(ThreadOptions::fileChangeApprovalHandler) handler,
                                           FileChangeApprovalRequest request);
Task<JSONValue> answerToPermissionsApproval(decltype(ThreadOptions::permissionsApprovalHandler) handler,
                                            PermissionsApprovalRequest request);

/// The answer to an elicitation; without a request, it is the cancelling one.
Task<JSONValue> answerToElicitation(decltype(ThreadOptions::mcpServerElicitationHandler) handler,
                                    std::optional<McpServerElicitationRequest> request);

/// `tools` are the application's; a call of any other is answered by a failure.
Task<JSONValue> answerToDynamicToolCall(decltype(ThreadOptions::dynamicTools) tools, DynamicToolCallContext call);

/// Fails as the handler does: tokens cannot be refused.
Task<JSONValue> answerToAuthTokensRefresh(
    AsyncHandler<ParlaneAuthTokensRefreshResponse(ParlaneAuthTokensRefreshRequest)> handler,
    ParlaneAuthTokensRefreshRequest request);

Task<JSONValue> answerToAttestation(decltype(ThreadOptions::attestationGenerateHandler) handler);

}  // namespace ormel::detail
