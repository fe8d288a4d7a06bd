#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/Options/TurnOptions.h"

namespace {

using namespace ormel;

TEST(ThreadOptions, StateNothingByThemselves) {
  static_assert(!std::is_aggregate_v<ThreadOptions>);
  const ThreadOptions options;
  EXPECT_FALSE(options.model || options.modelProvider || options.sandboxMode || options.workingDirectory);
  EXPECT_FALSE(options.skipGitRepoCheck || options.modelReasoningEffort || options.modelReasoningSummary);
  EXPECT_FALSE(options.modelVerbosity || options.modelContextWindow || options.modelAutoCompactTokenLimit);
  EXPECT_FALSE(options.serviceTier || options.personality || options.baseInstructions || options.developerInstructions);
  EXPECT_FALSE(options.serviceName || options.ephemeral || options.sessionStartSource || options.threadSource);
  EXPECT_FALSE(options.skillExtraRoots || options.runtimeWorkspaceRoots || options.environments);
  EXPECT_FALSE(options.persistExtendedHistory || options.networkAccessEnabled || options.webSearchMode);
  EXPECT_FALSE(options.webSearchEnabled || options.approvalPolicy || options.approvalsReviewer || options.permissions);
  EXPECT_FALSE(options.additionalDirectories || options.collaborationMode || options.dynamicTools);
  EXPECT_FALSE(options.commandApprovalHandler || options.fileChangeApprovalHandler);
  EXPECT_FALSE(options.permissionsApprovalHandler || options.mcpServerElicitationHandler);
  EXPECT_FALSE(options.parlaneAuthTokensRefreshHandler || options.attestationGenerateHandler);
  EXPECT_FALSE(options.threadStartedHandler || options.configOverrides);
  EXPECT_FALSE(options.supportsVelnorFormElicitation);
}

TEST(ThreadOptions, TakeHandlersOfBothKinds) {
  ThreadOptions options;
  options.commandApprovalHandler = [](const CommandApprovalRequest& request) {
    return request.command == "ls" ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
  };
  options.fileChangeApprovalHandler = [](FileChangeApprovalRequest request) -> Task<OrmelApprovalDecision> {
    co_return request.availableDecisions.front();
  };
  options.permissionsApprovalHandler = [](const PermissionsApprovalRequest& request) {
    return PermissionsApprovalResponse{{request.permissions.network, std::nullopt}, PermissionGrantScope::session};
  };
  options.mcpServerElicitationHandler = [](const McpServerElicitationRequest&) {
    return McpServerElicitationResponse();
  };
  options.parlaneAuthTokensRefreshHandler = [](const ParlaneAuthTokensRefreshRequest&) {
    return ParlaneAuthTokensRefreshResponse{"token", "account", std::nullopt};
  };
  options.attestationGenerateHandler = [] { return "attested"; };
  std::string started;
  options.threadStartedHandler = [&](std::string threadID) { started = std::move(threadID); };

  const ThreadOptions copy = options;
  const auto conversation = [&]() -> Task<std::vector<OrmelApprovalDecision>> {
    std::vector<OrmelApprovalDecision> decisions;
    CommandApprovalRequest command;
    command.command = "ls";
    decisions.push_back(co_await (*copy.commandApprovalHandler)(std::move(command)));
    FileChangeApprovalRequest change;
    change.availableDecisions = {OrmelApprovalDecision::cancel};
    decisions.push_back(co_await (*copy.fileChangeApprovalHandler)(std::move(change)));
    co_return decisions;
  };
  EXPECT_EQ(conversation().get(), (std::vector{OrmelApprovalDecision::accept, OrmelApprovalDecision::cancel}));
  PermissionsApprovalRequest permissions;
  permissions.permissions.network = JSONValue(true);
  EXPECT_EQ((*copy.permissionsApprovalHandler)(permissions).get().permissions.network, JSONValue(true));
  EXPECT_EQ((*copy.mcpServerElicitationHandler)({}).get().action, McpServerElicitationAction::cancel);
  EXPECT_EQ((*copy.parlaneAuthTokensRefreshHandler)({}).get().parlaneAccountID, "account");
  EXPECT_EQ((*copy.attestationGenerateHandler)().get(), "attested");
  (*copy.threadStartedHandler)("thread").get();
  EXPECT_EQ(started, "thread");
}

TEST(ThreadOptions, CarryAnEffortThatNoListKnows) {
  ThreadOptions options;
  options.modelReasoningEffort = "custom-effort";
  EXPECT_EQ(options.modelReasoningEffort->rawValue, "custom-effort");
  EXPECT_EQ(encode(*options.modelReasoningEffort), JSONValue("custom-effort"));
}

TEST(TurnOptions, StateNothingByThemselves) {
  static_assert(!std::is_aggregate_v<TurnOptions>);
  const TurnOptions options;
  EXPECT_FALSE(options.workingDirectory || options.runtimeWorkspaceRoots || options.responsesAPIClientMetadata);
  EXPECT_FALSE(options.clientUserMessageID || options.additionalContext || options.environments);
  EXPECT_FALSE(options.approvalPolicy || options.approvalsReviewer || options.sandboxPolicy || options.permissions);
  EXPECT_FALSE(options.model || options.modelReasoningEffort || options.outputSchema || options.signal);
  EXPECT_FALSE(options.serviceTier || options.modelReasoningSummary || options.personality ||
               options.collaborationMode);
}

TEST(TurnOptions, ShareTheirSignalWithTheirCopies) {
  const AbortController controller;
  TurnOptions options;
  options.signal = controller.signal;
  const TurnOptions copy = options;
  controller.abort();
  EXPECT_TRUE(copy.signal->isAborted());
}

TEST(TurnOptions, AreMutable) {
  TurnOptions options;
  options.approvalPolicy = ApprovalMode::never;
  options.additionalContext = {{"page", {"text", AdditionalContextKind::application}}};
  options.outputSchema = std::map<std::string, JSONValue>{{"type", JSONValue("object")}};
  options.collaborationMode = CollaborationMode::plan;
  EXPECT_EQ(options.approvalPolicy, ApprovalMode::never);
  EXPECT_EQ(options.additionalContext->at("page").value, "text");
  EXPECT_EQ(options.outputSchema->at("type"), JSONValue("object"));
}

}  // namespace
