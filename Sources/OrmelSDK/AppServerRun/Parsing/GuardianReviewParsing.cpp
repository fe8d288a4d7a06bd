#include "OrmelSDK/AppServerRun/Parsing/GuardianReviewParsing.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Events/GuardianReview.h"
#include "OrmelSDK/Events/GuardianReviewAction.h"

namespace ormel::detail {

namespace {

template <typename Value>
const Value& needed(const Value* value, const char* message) {
  if (!value) throw ThreadRunError::streamError(message);
  return *value;
}

template <typename Value>
Value needed(std::optional<Value> value, const char* message) {
  if (!value) throw ThreadRunError::streamError(message);
  return *std::move(value);
}

std::string neededText(const JSONObject& object, JSONKeys keys, const char* message) {
  return std::string(needed(textViewMember(object, keys), message));
}

template <typename Enumeration>
std::optional<Enumeration> caseUnder(const JSONObject& object, JSONKeys keys) {
  const auto word = textViewMember(object, keys);
  return word ? coding::enumerationCase<Enumeration>(*word) : std::nullopt;
}

GuardianCommandSource commandSource(const JSONObject& object) {
  return caseUnder<GuardianCommandSource>(object, {"source"}).value_or(GuardianCommandSource::shell);
}

GuardianCommandReviewAction commandAction(const JSONObject& object) {
  constexpr auto message = "guardian command review action missing fields";
  return {commandSource(object), neededText(object, {"command"}, message), neededText(object, {"cwd"}, message)};
}

GuardianExecveReviewAction execveAction(const JSONObject& object) {
  constexpr auto message = "guardian execve review action missing fields";
  return {commandSource(object), neededText(object, {"program"}, message),
          textsOf(&needed(arrayMember(object, {"argv"}), message)), neededText(object, {"cwd"}, message)};
}

GuardianApplyPatchReviewAction applyPatchAction(const JSONObject& object) {
  return {neededText(object, {"cwd"}, "guardian applyPatch review action missing cwd"),
          textsOf(arrayMember(object, {"files"}))};
}

GuardianNetworkAccessReviewAction networkAccessAction(const JSONObject& object) {
  constexpr auto message = "guardian networkAccess review action missing fields";
  return {neededText(object, {"target"}, message), neededText(object, {"host"}, message),
          needed(caseUnder<NetworkApprovalProtocol>(object, {"protocol"}), message),
          needed(integerMember(object, {"port"}), message)};
}

GuardianMcpToolCallReviewAction mcpToolCallAction(const JSONObject& object) {
  constexpr auto missingName = "guardian mcpToolCall review action missing toolName";
  auto server = neededText(object, {"server"}, "guardian mcpToolCall review action missing server");
  auto toolName = neededText(object, {"toolName", "tool_name"}, missingName);
  if (toolName.empty()) throw ThreadRunError::streamError(missingName);
  return {std::move(server), std::move(toolName), textMember(object, {"connectorId", "connector_id"}),
          textMember(object, {"connectorName", "connector_name"}), textMember(object, {"toolTitle", "tool_title"})};
}

GuardianRequestPermissionsReviewAction requestPermissionsAction(const JSONObject& object) {
  constexpr auto message = "guardian requestPermissions review action missing permissions";
  return {textMember(object, {"reason"}),
          decodePermissionProfile(needed(objectMember(object, {"permissions"}), message))};
}

GuardianWriteStdinReviewAction writeStdinAction(const JSONObject& object) {
  constexpr auto message = "guardian writeStdin review action missing fields";
  return {neededText(object, {"approvalId"}, message), neededText(object, {"processId"}, message),
          neededText(object, {"stdin"}, message), neededText(object, {"cwd"}, message)};
}

/// The reader of one case, seen as a reader of actions.
template <auto parse>
GuardianApprovalReviewAction action(const JSONObject& object) {
  return parse(object);
}

struct ActionCase {
  std::string_view type;
  GuardianApprovalReviewAction (*parse)(const JSONObject& object);
};

constexpr std::array actionCases{
    ActionCase{"command", action<commandAction>},
    ActionCase{"execve", action<execveAction>},
    ActionCase{"applyPatch", action<applyPatchAction>},
    ActionCase{"networkAccess", action<networkAccessAction>},
    ActionCase{"mcpToolCall", action<mcpToolCallAction>},
    ActionCase{"requestPermissions", action<requestPermissionsAction>},
    ActionCase{"writeStdin", action<writeStdinAction>},
};

}  // namespace

ThreadEvent parseGuardianApprovalReviewNotification(const JSONObject& params, bool isCompleted) {
  GuardianApprovalReviewStartedEvent event;
  event.threadID = neededText(params, {"threadId", "thread_id"}, "guardian approval review payload missing threadId");
  event.turnID = neededText(params, {"turnId", "turn_id"}, "guardian approval review payload missing turnId");
  event.targetItemID = textMember(params, {"targetItemId", "target_item_id"});
  event.reviewID = neededText(params, {"reviewId", "review_id"}, "guardian approval review payload missing reviewId");
  event.review = parseGuardianApprovalReview(
      needed(valueMember(params, {"review"}), "guardian approval review payload missing review"));
  event.action = parseGuardianApprovalReviewAction(
      needed(valueMember(params, {"action"}), "guardian approval review payload missing action"));
  if (!isCompleted) return event;
  // The agent is the only source that decides, so that whatever the server calls it, it is the agent.
  return GuardianApprovalReviewCompletedEvent{std::move(event.threadID),       std::move(event.turnID),
                                              std::move(event.targetItemID),   std::move(event.reviewID),
                                              AutoReviewDecisionSource::agent, std::move(event.review),
                                              std::move(event.action)};
}

GuardianApprovalReview parseGuardianApprovalReview(const JSONValue& from) {
  constexpr auto message = "guardian approval review missing status";
  const JSONObject& object = needed(from.objectValue(), message);
  return {needed(caseUnder<GuardianApprovalReviewStatus>(object, {"status"}), message),
          integerMember(object, {"riskScore", "risk_score"}),
          caseUnder<GuardianRiskLevel>(object, {"riskLevel", "risk_level"}),
          caseUnder<GuardianUserAuthorization>(object, {"userAuthorization", "user_authorization"}),
          textMember(object, {"rationale"})};
}

GuardianApprovalReviewAction parseGuardianApprovalReviewAction(const JSONValue& from) {
  constexpr auto message = "guardian approval review action missing type";
  const JSONObject& object = needed(from.objectValue(), message);
  const auto type = needed(textViewMember(object, {"type"}), message);
  for (const ActionCase& known : actionCases) {
    if (known.type == type) return known.parse(object);
  }
  return GuardianUnknownReviewAction{std::string(type)};
}

}  // namespace ormel::detail
