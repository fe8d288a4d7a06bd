#pragma once

// The questions of the server to the application, read from the params of its requests. An id that
// a request does not name is that of the run's thread or turn.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/Handlers/ApprovalRequests.h"
#include "OrmelSDK/Handlers/DynamicTool.h"
#include "OrmelSDK/Handlers/Elicitation.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Fails with `ThreadRunError` of the kind `streamError` if the message has none.
AppServerRequestID serverRequestID(const JSONValue& payload);

/// The id of an item that the client makes up for a request.
std::string syntheticItemID(std::string_view prefix, const AppServerRequestID& requestID);

/// The item that an approval is about; empty if none is named.
std::string approvedItemID(const JSONObject& params);

CommandApprovalRequest commandApprovalRequest(const JSONObject& params, const ActiveScope& scope);

/// `stored` is the item that the request is about, if it is known.
FileChangeApprovalRequest fileChangeApprovalRequest(const JSONObject& params, const ActiveScope& scope,
                                                    const ThreadItem* stored);

PermissionsApprovalRequest permissionsApprovalRequest(const JSONObject& params, const ActiveScope& scope);

/// Absent for a request that cannot be placed, or that asks in an unknown way. Fails with `ThreadRunError` of the kind
/// `streamError` if the text for the user is missing.
std::optional<McpServerElicitationRequest> mcpServerElicitationRequest(const JSONObject& params,
                                                                       const ActiveScope& scope);

/// Fails with `ThreadRunError` of the kind `streamError` if no tool is named.
DynamicToolCallContext dynamicToolCallContext(const JSONObject& params);

ParlaneAuthTokensRefreshRequest parlaneAuthTokensRefreshRequest(const JSONObject& params);

/// The arguments of the item that stands for questions to the user: each with all that is needed to show it. An
/// element that is no question, or no option, is skipped. Questions without an id get a new one.
JSONValue requestUserInputArguments(const JSONObject& params);

}  // namespace ormel::detail
