#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Payloads/TurnPayloads.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using Environments = std::vector<TurnEnvironment>;
using Texts = std::vector<std::string>;
using tests::joined;
using tests::json;

constexpr std::string_view leastConfig = R"({"config":{"features":{"goals":true}}})";

JSONValue startParams(const ThreadOptions& options) { return detail::buildThreadStartParams(options, OrmelOptions()); }

JSONValue resumeParams(const ThreadOptions& options) {
  return detail::buildThreadResumeParams("t", options, OrmelOptions());
}

struct ThreadChoice {
  void (*state)(ThreadOptions& options);
  /// The members that a start sends beside the least config.
  std::string_view members;
  bool onlyInStart = false;
};

const std::vector<ThreadChoice>& threadChoices() {
  static const std::vector<ThreadChoice> choices = {
      {[](auto& options) { options.model = "m"; }, R"({"model":"m"})"},
      {[](auto& options) { options.model = ""; }, R"({"model":""})"},
      {[](auto& options) { options.modelProvider = "p"; }, R"({"modelProvider":"p"})"},
      {[](auto& options) { options.sandboxMode = SandboxMode::readOnly; }, R"({"sandbox":"read-only"})"},
      {[](auto& options) { options.sandboxMode = SandboxMode::workspaceWrite; }, R"({"sandbox":"workspace-write"})"},
      {[](auto& options) { options.sandboxMode = SandboxMode::dangerFullAccess; },
       R"({"sandbox":"danger-full-access"})"},
      {[](auto& options) { options.workingDirectory = "/w"; }, R"({"cwd":"/w"})"},
      {[](auto& options) { options.skipGitRepoCheck = true; }, "{}"},
      {[](auto& options) { options.modelReasoningEffort = ModelReasoningEffort::high; }, "{}"},
      {[](auto& options) { options.modelReasoningSummary = ModelReasoningSummary::concise; },
       R"({"config":{"features":{"goals":true},"model_reasoning_summary":"concise"}})"},
      {[](auto& options) { options.modelVerbosity = ModelVerbosity::low; },
       R"({"config":{"features":{"goals":true},"model_verbosity":"low"}})"},
      {[](auto& options) { options.modelContextWindow = 1; },
       R"({"config":{"features":{"goals":true},"model_context_window":1}})"},
      {[](auto& options) { options.modelAutoCompactTokenLimit = 2; },
       R"({"config":{"features":{"goals":true},"model_auto_compact_token_limit":2}})"},
      {[](auto& options) { options.serviceTier = ServiceTier::flex; }, R"({"serviceTier":"flex"})"},
      {[](auto& options) { options.serviceTier = "express"; }, R"({"serviceTier":"express"})"},
      {[](auto& options) { options.personality = Personality::none; }, R"({"personality":"none"})"},
      {[](auto& options) { options.personality = Personality::friendly; }, R"({"personality":"friendly"})"},
      {[](auto& options) { options.personality = Personality::pragmatic; }, R"({"personality":"pragmatic"})"},
      {[](auto& options) { options.baseInstructions = "b"; }, R"({"baseInstructions":"b"})"},
      {[](auto& options) { options.developerInstructions = "d"; }, R"({"developerInstructions":"d"})"},
      {[](auto& options) { options.serviceName = "s"; }, R"({"serviceName":"s"})", true},
      {[](auto& options) { options.ephemeral = false; }, R"({"ephemeral":false})", true},
      {[](auto& options) { options.ephemeral = true; }, R"({"ephemeral":true})", true},
      {[](auto& options) { options.sessionStartSource = ThreadStartSource::startup; },
       R"({"sessionStartSource":"startup"})", true},
      {[](auto& options) { options.sessionStartSource = ThreadStartSource::clear; },
       R"({"sessionStartSource":"clear"})", true},
      {[](auto& options) { options.threadSource = ThreadSource::user; }, R"({"threadSource":"user"})"},
      {[](auto& options) { options.threadSource = ThreadSource::subagent; }, R"({"threadSource":"subagent"})"},
      {[](auto& options) { options.threadSource = ThreadSource::memoryConsolidation; },
       R"({"threadSource":"memory_consolidation"})"},
      {[](auto& options) { options.skillExtraRoots = Texts{"/s"}; }, "{}"},
      {[](auto& options) { options.runtimeWorkspaceRoots = Texts{"/r", "/q"}; },
       R"({"runtimeWorkspaceRoots":["/r","/q"]})"},
      {[](auto& options) { options.runtimeWorkspaceRoots.emplace(); }, R"({"runtimeWorkspaceRoots":[]})"},
      {[](auto& options) { options.environments = Environments{{"e", "/e"}}; },
       R"({"environments":[{"environmentId":"e","cwd":"/e"}]})"},
      {[](auto& options) { options.environments.emplace(); }, R"({"environments":[]})"},
      {[](auto& options) { options.persistExtendedHistory = true; }, "{}"},
      {[](auto& options) { options.networkAccessEnabled = true; }, "{}"},
      {[](auto& options) { options.webSearchMode = WebSearchMode::cached; },
       R"({"config":{"features":{"goals":true},"web_search":"cached"}})"},
      {[](auto& options) { options.webSearchEnabled = true; },
       R"({"config":{"features":{"goals":true},"web_search":"live"}})"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::never; }, R"({"approvalPolicy":"never"})"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::onRequest; }, R"({"approvalPolicy":"on-request"})"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::onFailure; }, R"({"approvalPolicy":"on-request"})"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::untrusted; }, R"({"approvalPolicy":"untrusted"})"},
      {[](auto& options) { options.approvalPolicy = GranularApprovalMode{true, false, true, false, true}; },
       R"({"approvalPolicy":{"granular":{"sandbox_approval":true,"rules":false,"skill_approval":true,
                                         "request_permissions":false,"mcp_elicitations":true}}})"},
      {[](auto& options) { options.approvalsReviewer = ApprovalsReviewer::user; }, R"({"approvalsReviewer":"user"})"},
      {[](auto& options) { options.approvalsReviewer = ApprovalsReviewer::autoReview; },
       R"({"approvalsReviewer":"auto_review"})"},
      {[](auto& options) { options.approvalsReviewer = ApprovalsReviewer::guardianSubagent; },
       R"({"approvalsReviewer":"guardian_subagent"})"},
      {[](auto& options) { options.permissions = "p"; }, R"({"permissions":"p"})"},
      {[](auto& options) { options.additionalDirectories = Texts{"/a"}; }, "{}"},
      {[](auto& options) { options.collaborationMode = CollaborationMode::plan; }, "{}"},
      {[](auto& options) { options.dynamicTools.emplace(); }, "{}"},
      {[](auto& options) { options.dynamicTools = std::vector{tests::namedTool("a")}; },
       R"({"dynamicTools":[{"type":"function","name":"a","description":"","inputSchema":null}]})"},
      {[](auto& options) { options.supportsVelnorFormElicitation = true; }, "{}"},
      {[](auto& options) { options.attestationGenerateHandler = [] { return std::string(); }; }, "{}"},
      {[](auto& options) { options.configOverrides.emplace(); }, "{}"},
      {[](auto& options) { options.configOverrides = OrmelConfigValue::Object{{"a", 1}}; },
       R"({"config":{"features":{"goals":true},"a":1}})"},
  };
  return choices;
}

TEST(BuildThreadStartParams, SendOnlyTheConfigWithoutOptions) {
  EXPECT_EQ(startParams(ThreadOptions()), json(leastConfig));
}

TEST(BuildThreadStartParams, SendEachChoiceInItsForm) {
  for (const auto& choice : threadChoices()) {
    ThreadOptions options;
    choice.state(options);
    EXPECT_EQ(startParams(options), joined({leastConfig, choice.members})) << choice.members;
  }
}

TEST(BuildThreadResumeParams, SendOnlyTheThreadAndTheConfigWithoutOptions) {
  EXPECT_EQ(resumeParams(ThreadOptions()), joined({leastConfig, R"({"threadId":"t","excludeTurns":true})"}));
}

TEST(BuildThreadResumeParams, RepeatEachChoiceThatIsNotOfTheStartAlone) {
  for (const auto& choice : threadChoices()) {
    ThreadOptions options;
    choice.state(options);
    const std::string_view members = choice.onlyInStart ? "{}" : choice.members;
    EXPECT_EQ(resumeParams(options), joined({leastConfig, members, R"({"threadId":"t","excludeTurns":true})"}))
        << choice.members;
  }
}

ThreadOptions everyChoice() {
  ThreadOptions options;
  for (const auto& choice : threadChoices()) choice.state(options);
  return options;
}

// The members that result from the last choice of every field.
constexpr std::string_view everyCommonMember = R"({
    "model": "", "modelProvider": "p", "cwd": "/w", "runtimeWorkspaceRoots": [],
    "approvalPolicy": {"granular": {"sandbox_approval": true, "rules": false, "skill_approval": true,
                                    "request_permissions": false, "mcp_elicitations": true}},
    "approvalsReviewer": "guardian_subagent", "sandbox": "danger-full-access", "permissions": "p",
    "serviceTier": "express", "baseInstructions": "b", "developerInstructions": "d", "personality": "pragmatic",
    "threadSource": "memory_consolidation", "environments": [],
    "dynamicTools": [{"type": "function", "name": "a", "description": "", "inputSchema": null}],
    "config": {"features": {"goals": true}, "a": 1, "web_search": "cached", "model_reasoning_summary": "concise",
               "model_verbosity": "low", "model_context_window": 1, "model_auto_compact_token_limit": 2}})";

TEST(BuildThreadStartParams, SendAllChoicesTogether) {
  EXPECT_EQ(startParams(everyChoice()),
            joined({everyCommonMember, R"({"serviceName":"s","ephemeral":true,"sessionStartSource":"clear"})"}));
}

TEST(BuildThreadResumeParams, SendAllChoicesButThoseOfTheStart) {
  EXPECT_EQ(resumeParams(everyChoice()), joined({everyCommonMember, R"({"threadId":"t","excludeTurns":true})"}));
}

TEST(BuildThreadStartParams, SendTheLibrarysOverrides) {
  OrmelOptions ormelOptions;
  ormelOptions.config = OrmelConfigValue::Object{{"a", 1}};
  constexpr std::string_view config = R"({"config":{"features":{"goals":true},"a":1}})";
  EXPECT_EQ(detail::buildThreadStartParams(ThreadOptions(), ormelOptions), json(config));
  EXPECT_EQ(detail::buildThreadResumeParams("t", ThreadOptions(), ormelOptions),
            joined({config, R"({"threadId":"t","excludeTurns":true})"}));
}

TEST(BuildSkillExtraRootsParams, GiveNothingWithoutRoots) {
  ThreadOptions options;
  EXPECT_EQ(detail::buildSkillExtraRootsParams(options), std::nullopt);
  options.skillExtraRoots.emplace();
  EXPECT_EQ(detail::buildSkillExtraRootsParams(options), std::nullopt);
  options.skillExtraRoots = Texts{"", "  ", "\t\r\n", "\u00a0"};
  EXPECT_EQ(detail::buildSkillExtraRootsParams(options), std::nullopt);
}

TEST(BuildSkillExtraRootsParams, TrimRootsAndDropBlankOnes) {
  ThreadOptions options;
  options.skillExtraRoots = Texts{" /b b\n", "", "/a", "\n"};
  EXPECT_EQ(detail::buildSkillExtraRootsParams(options), json(R"({"extraRoots":["/b b","/a"]})"));
}

}  // namespace
