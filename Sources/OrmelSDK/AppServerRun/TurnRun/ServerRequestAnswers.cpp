#include "OrmelSDK/AppServerRun/TurnRun/ServerRequestAnswers.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/RunFailure.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Handlers/Elicitation.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"

namespace ormel::detail {

namespace {

bool contains(const std::vector<OrmelApprovalDecision>& decisions, const OrmelApprovalDecision& decision) {
  return std::find(decisions.begin(), decisions.end(), decision) != decisions.end();
}

JSONValue decisionAnswer(const OrmelApprovalDecision& decision) {
  return JSONValue::object({{"decision", decision.jsonValue}});
}

std::exception_ptr decisionNotOffered() {
  return std::make_exception_ptr(HandlerError("The handler gave a decision that was not offered"));
}

template <typename Request>
Task<ServerRequestAnswer> answerToApproval(std::optional<AsyncHandler<OrmelApprovalDecision(Request)>> handler,
                                           Request request) {
  const auto available = request.availableDecisions;
  const JSONValue closed = decisionAnswer(failClosedDecision(available));
  if (!handler) co_return ServerRequestAnswer(closed);
  std::exception_ptr failure;
  try {
    Task<OrmelApprovalDecision> task = (*handler)(std::move(request));
    const OrmelApprovalDecision decision = co_await std::move(task);
    const bool isOffered = available.empty() || contains(available, decision);
    if (isOffered) co_return ServerRequestAnswer(decisionAnswer(decision), nullptr);
    failure = decisionNotOffered();
  } catch (...) {
    failure = std::current_exception();
  }
  co_return ServerRequestAnswer(closed, failure);
}

JSONValue permissionsAnswer(const PermissionsApprovalResponse& response) {
  return JSONValue::object({{"permissions", permissionProfileJSONObject(response.permissions)},
                            {"scope", coding::Codec<PermissionGrantScope>::encode(response.scope)}});
}

JSONValue elicitationAnswer(const McpServerElicitationResponse& response) {
  return JSONValue::object({{"action", coding::Codec<McpServerElicitationAction>::encode(response.action)},
                            {"content", response.content.value_or(JSONValue())},
                            {"_meta", response.metadata.value_or(JSONValue())}});
}

// Not the form that items have: there the key of an image is another.
JSONValue contentOf(const DynamicToolCallOutputText& text) {
  return JSONValue::object({{"type", "inputText"}, {"text", text.text}});
}
JSONValue contentOf(const DynamicToolCallOutputImage& image) {
  return JSONValue::object({{"type", "inputImage"}, {"imageUrl", image.imageURL}});
}

JSONValue toolAnswer(const DynamicToolResult& result) {
  std::vector<JSONValue> items;
  items.reserve(result.contentItems.size());
  for (const auto& item : result.contentItems) {
    items.push_back(visit(item, [](const auto& content) { return contentOf(content); }));
  }
  return JSONValue::object({{"contentItems", JSONValue::array(items)}, {"success", result.success}});
}

JSONValue failedToolAnswer(std::string text) {
  DynamicToolResult result;
  result.contentItems.push_back(DynamicToolCallOutputContentItem::inputText(std::move(text)));
  return toolAnswer(result);
}

const DynamicTool* toolOf(const std::vector<DynamicTool>& tools, const std::string& name,
                          const std::optional<std::string>& namespaceOfTool) {
  const auto found = std::find_if(tools.begin(), tools.end(), [&](const DynamicTool& tool) {
    return tool.spec.name == name && tool.spec.namespace_ == namespaceOfTool;
  });
  return found == tools.end() ? nullptr : &*found;
}

// A tool of the empty namespace is offered without one, and so is called without one.
const DynamicTool* toolCalledBy(const DynamicToolCallContext& call, const std::vector<DynamicTool>& tools) {
  const DynamicTool* const called = toolOf(tools, call.tool, call.namespace_);
  return called || call.namespace_ ? called : toolOf(tools, call.tool, "");
}

JSONValue attestationAnswer(const std::string& token) { return JSONValue::object({{"token", token}}); }

}  // namespace

OrmelApprovalDecision failClosedDecision(const std::vector<OrmelApprovalDecision>& availableDecisions) {
  const bool declineIsOffered =
      availableDecisions.empty() || contains(availableDecisions, OrmelApprovalDecision::decline);
  const bool cancelIsOffered = contains(availableDecisions, OrmelApprovalDecision::cancel);
  return !declineIsOffered && cancelIsOffered ? OrmelApprovalDecision::cancel : OrmelApprovalDecision::decline;
}

Task<ServerRequestAnswer> answerToCommandApproval(decltype(ThreadOptions::commandApprovalHandler) handler,
                                                  CommandApprovalRequest request) {
  return answerToApproval(std::move(handler), std::move(request));
}

Task<ServerRequestAnswer> answerToFileChangeApproval(decltype(ThreadOptions::fileChangeApprovalHandler) handler,
                                                     FileChangeApprovalRequest request) {
  return answerToApproval(std::move(handler), std::move(request));
}

Task<ServerRequestAnswer> answerToPermissionsApproval(decltype(ThreadOptions::permissionsApprovalHandler) handler,
                                                      PermissionsApprovalRequest request) {
  const JSONValue closed = permissionsAnswer(PermissionsApprovalResponse());
  if (!handler) co_return ServerRequestAnswer(closed);
  try {
    Task<PermissionsApprovalResponse> task = (*handler)(std::move(request));
    const PermissionsApprovalResponse response = co_await std::move(task);
    co_return ServerRequestAnswer(permissionsAnswer(response), nullptr);
  } catch (...) {
    co_return ServerRequestAnswer(closed, std::current_exception());
  }
}

Task<ServerRequestAnswer> answerToElicitation(decltype(ThreadOptions::mcpServerElicitationHandler) handler,
                                              std::optional<McpServerElicitationRequest> request) {
  const JSONValue closed = elicitationAnswer(McpServerElicitationResponse());
  if (!handler || !request) co_return ServerRequestAnswer(closed);
  try {
    Task<McpServerElicitationResponse> task = (*handler)(*std::move(request));
    const McpServerElicitationResponse response = co_await std::move(task);
    co_return ServerRequestAnswer(elicitationAnswer(response), nullptr);
  } catch (...) {
    co_return ServerRequestAnswer(closed, std::current_exception());
  }
}

Task<ServerRequestAnswer> answerToDynamicToolCall(decltype(ThreadOptions::dynamicTools) tools,
                                                  DynamicToolCallContext call) {
  const std::string name = call.tool;
  const DynamicTool* const called = tools ? toolCalledBy(call, *tools) : nullptr;
  if (!called) co_return ServerRequestAnswer(failedToolAnswer("Dynamic tool '" + name + "' is not registered."));
  try {
    Task<DynamicToolResult> task = called->execute(std::move(call));
    const DynamicToolResult result = co_await std::move(task);
    co_return ServerRequestAnswer(toolAnswer(result), nullptr);
  } catch (...) {
    const auto failure = std::current_exception();
    co_return ServerRequestAnswer(failedToolAnswer(describedFailure(failure).message), failure);
  }
}

Task<ServerRequestAnswer> answerToAuthTokensRefresh(
    AsyncHandler<ParlaneAuthTokensRefreshResponse(ParlaneAuthTokensRefreshRequest)> handler,
    ParlaneAuthTokensRefreshRequest request) {
  Task<ParlaneAuthTokensRefreshResponse> task = handler(std::move(request));
  const ParlaneAuthTokensRefreshResponse response = co_await std::move(task);
  const JSONValue planType = response.parlanePlanType ? JSONValue(*response.parlanePlanType) : JSONValue();
  const JSONValue answer = JSONValue::object({{"accessToken", response.accessToken},
                                              {"parlaneAccountId", response.parlaneAccountID},
                                              {"parlanePlanType", planType}});
  co_return ServerRequestAnswer(answer, nullptr);
}

Task<ServerRequestAnswer> answerToAttestation(decltype(ThreadOptions::attestationGenerateHandler) handler) {
  if (!handler) co_return ServerRequestAnswer(attestationAnswer(""));
  try {
    Task<std::string> task = (*handler)();
    const std::string token = co_await std::move(task);
    co_return ServerRequestAnswer(attestationAnswer(token), nullptr);
  } catch (...) {
    co_return ServerRequestAnswer(attestationAnswer(""), std::current_exception());
  }
}

}  // namespace ormel::detail
