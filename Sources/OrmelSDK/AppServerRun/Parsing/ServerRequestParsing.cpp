#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"

#include <utility>
#include <variant>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

std::string idOr(std::optional<std::string_view> named, const std::optional<std::string>& active) {
  return named ? std::string(*named) : active.value_or("");
}

/// A command as one line.
std::optional<std::string> commandString(const JSONObject& params) {
  if (auto text = textMember(params, {"command"})) return text;
  const JSONArray* words = arrayMember(params, {"command"});
  if (!words) return std::nullopt;
  std::string line;
  for (const JSONValue& word : *words) {
    const auto text = word.stringValue();
    // Never show a partial command for approval.
    if (!text) return std::nullopt;
    if (&word != words->begin()) line += ' ';
    line += *text;
  }
  return line;
}

/// Each element is a decision, whatever it is.
std::vector<OrmelApprovalDecision> availableApprovalDecisions(const JSONObject& params) {
  const JSONArray* listed = arrayMember(params, {"availableDecisions", "available_decisions"});
  if (!listed) return {};
  std::vector<OrmelApprovalDecision> decisions;
  for (const JSONValue& element : *listed) decisions.emplace_back(element.detached());
  return decisions;
}

RequestPermissionProfile permissionProfile(const JSONObject& params, JSONKeys keys) {
  const JSONObject* profile = objectMember(params, keys);
  return profile ? decodePermissionProfile(*profile) : RequestPermissionProfile{};
}

McpServerElicitationForm elicitationForm(const JSONObject& params) {
  auto message = textMember(params, {"message"});
  if (!message) throw ThreadRunError::streamError("MCP elicitation form request missing message");
  return {*std::move(message), ownedValueMember(params, {"requestedSchema"}).value_or(JSONValue()),
          ownedValueMember(params, {"_meta"})};
}

McpServerURLElicitation urlElicitation(const JSONObject& params) {
  auto message = textMember(params, {"message"});
  auto url = textMember(params, {"url"});
  auto elicitationID = textMember(params, {"elicitationId"});
  if (!message || !url || !elicitationID)
    throw ThreadRunError::streamError("MCP elicitation URL request missing fields");
  return {*std::move(message), *std::move(url), *std::move(elicitationID), ownedValueMember(params, {"_meta"})};
}

std::optional<McpServerElicitationMode> elicitationMode(std::string_view mode, const JSONObject& params) {
  if (mode == "form") return McpServerFormElicitation{elicitationForm(params)};
  if (mode == "velnor/form" || mode == "velnorForm") return McpServerVelnorFormElicitation{elicitationForm(params)};
  if (mode == "url") return urlElicitation(params);
  return std::nullopt;
}

}  // namespace

AppServerRequestID serverRequestID(const JSONValue& payload) {
  const JSONValue* id = payload.find("id");
  auto requestID = id ? AppServerRequestID::fromJSONValue(*id) : std::nullopt;
  if (!requestID) throw ThreadRunError::streamError("Server request missing id");
  return *std::move(requestID);
}

std::string syntheticItemID(std::string_view prefix, const AppServerRequestID& requestID) {
  const auto number = requestID.integerValue();
  return std::string(prefix) + ":" + (number ? std::to_string(*number) : *requestID.stringValue());
}

std::string approvedItemID(const JSONObject& params) { return textMember(params, {"itemId", "item_id"}, ""); }

CommandApprovalRequest commandApprovalRequest(const JSONObject& params, const ActiveScope& scope) {
  CommandApprovalRequest request;
  request.kind = textMember(params, {"kind"}, CommandApprovalKind::command.rawValue);
  request.approvalID = textMember(params, {"approvalId", "approval_id"});
  request.environmentID = textMember(params, {"environmentId", "environment_id"});
  const MessageIDs ids = idsIn(params);
  request.threadID = idOr(ids.threadID, scope.activeThreadID);
  request.turnID = idOr(ids.turnID, scope.activeTurnID);
  request.itemID = approvedItemID(params);
  request.command = commandString(params);
  request.workingDirectory = textMember(params, {"cwd", "workingDirectory", "working_directory"});
  request.reason = textMember(params, {"reason"});
  if (const auto* actions = arrayMember(params, {"commandActions", "command_actions"})) {
    request.commandActions = valuesOf(actions);
  }
  request.additionalPermissions = permissionProfile(params, {"additionalPermissions", "additional_permissions"});
  request.availableDecisions = availableApprovalDecisions(params);
  return request;
}

FileChangeApprovalRequest fileChangeApprovalRequest(const JSONObject& params, const ActiveScope& scope,
                                                    const ThreadItem* stored) {
  FileChangeApprovalRequest request;
  const MessageIDs ids = idsIn(params);
  request.threadID = idOr(ids.threadID, scope.activeThreadID);
  request.turnID = idOr(ids.turnID, scope.activeTurnID);
  request.itemID = approvedItemID(params);
  request.reason = textMember(params, {"reason"});
  request.grantRoot = textMember(params, {"grantRoot", "grant_root"});
  const auto* fileChange = stored ? std::get_if<FileChangeItem>(&stored->value) : nullptr;
  if (fileChange) request.changes = fileChange->changes;
  request.availableDecisions = availableApprovalDecisions(params);
  return request;
}

PermissionsApprovalRequest permissionsApprovalRequest(const JSONObject& params, const ActiveScope& scope) {
  PermissionsApprovalRequest request;
  request.threadID = idOr(textViewMember(params, {"threadId"}), scope.activeThreadID);
  request.turnID = idOr(textViewMember(params, {"turnId"}), scope.activeTurnID);
  request.itemID = textMember(params, {"itemId"}, "");
  request.reason = textMember(params, {"reason"});
  request.permissions = permissionProfile(params, {"permissions"});
  return request;
}

std::optional<McpServerElicitationRequest> mcpServerElicitationRequest(const JSONObject& params,
                                                                       const ActiveScope& scope) {
  auto threadID = textMember(params, {"threadId"});
  if (!threadID) threadID = scope.activeThreadID;
  auto serverName = textMember(params, {"serverName"});
  const auto word = textViewMember(params, {"mode"});
  if (!threadID || !serverName || !word) return std::nullopt;
  auto mode = elicitationMode(*word, params);
  if (!mode) return std::nullopt;
  return McpServerElicitationRequest{*std::move(threadID), textMember(params, {"turnId"}), *std::move(serverName),
                                     *std::move(mode)};
}

DynamicToolCallContext dynamicToolCallContext(const JSONObject& params) {
  auto tool = textMember(params, {"tool"});
  if (!tool) throw ThreadRunError::streamError("dynamic tool call missing tool name");
  return {textMember(params, {"threadId"}, ""),
          textMember(params, {"turnId"}, ""),
          textMember(params, {"callId"}, ""),
          textMember(params, {"namespace"}),
          *std::move(tool),
          ownedValueMember(params, {"arguments"}).value_or(JSONValue())};
}

ParlaneAuthTokensRefreshRequest parlaneAuthTokensRefreshRequest(const JSONObject& params) {
  return {ParlaneAuthTokensRefreshReason::unauthorized, textMember(params, {"previousAccountId"})};
}

}  // namespace ormel::detail
