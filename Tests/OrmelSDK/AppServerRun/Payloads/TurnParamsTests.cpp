#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Payloads/TurnPayloads.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using Context = std::map<std::string, AdditionalContextEntry>;
using Environments = std::vector<TurnEnvironment>;
using Members = std::map<std::string, JSONValue>;
using Metadata = std::map<std::string, std::string>;
using Texts = std::vector<std::string>;
using tests::joined;
using tests::json;

constexpr std::string_view least = R"({"threadId":"t","input":[{"type":"text","text":"go"}]})";
constexpr std::string_view leastSteer =
    R"({"threadId":"t","expectedTurnId":"u","input":[{"type":"text","text":"go"}]})";

JSONValue turnParams(const TurnOptions& turn, const ThreadOptions& thread = ThreadOptions()) {
  return detail::buildTurnStartParams("t", "go", turn, thread);
}

JSONValue steerParams(const TurnOptions& turn) { return detail::buildTurnSteerParams("t", "u", "go", turn); }

struct TurnChoice {
  void (*state)(TurnOptions& options);
  /// The members that a turn sends beside the least.
  std::string_view members;
  bool alsoInSteer = false;
};

const std::vector<TurnChoice>& turnChoices() {
  static const std::vector<TurnChoice> choices = {
      {[](auto& options) { options.workingDirectory = "/w"; }, R"({"cwd":"/w"})"},
      {[](auto& options) { options.runtimeWorkspaceRoots.emplace(); }, R"({"runtimeWorkspaceRoots":[]})"},
      {[](auto& options) { options.runtimeWorkspaceRoots = Texts{"/r"}; }, R"({"runtimeWorkspaceRoots":["/r"]})"},
      {[](auto& options) { options.responsesAPIClientMetadata.emplace(); }, "{}", true},
      {[](auto& options) { options.responsesAPIClientMetadata = Metadata{{"k", "1"}, {"l", ""}}; },
       R"({"responsesapiClientMetadata":{"k":"1","l":""}})", true},
      {[](auto& options) { options.clientUserMessageID = "c"; }, R"({"clientUserMessageId":"c"})", true},
      {[](auto& options) { options.additionalContext.emplace(); }, "{}", true},
      {[](auto& options) { options.additionalContext = Context{{"a", {"v", AdditionalContextKind::application}}}; },
       R"({"additionalContext":{"a":{"value":"v","kind":"application"}}})", true},
      {[](auto& options) { options.environments.emplace(); }, R"({"environments":[]})"},
      {[](auto& options) { options.environments = Environments{{"e", "/e"}}; },
       R"({"environments":[{"environmentId":"e","cwd":"/e"}]})"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::onFailure; }, R"({"approvalPolicy":"on-request"})"},
      {[](auto& options) { options.approvalPolicy = GranularApprovalMode{}; },
       R"({"approvalPolicy":{"granular":{"sandbox_approval":false,"rules":false,"skill_approval":false,
                                         "request_permissions":false,"mcp_elicitations":false}}})"},
      {[](auto& options) { options.approvalsReviewer = ApprovalsReviewer::autoReview; },
       R"({"approvalsReviewer":"auto_review"})"},
      {[](auto& options) { options.sandboxPolicy.emplace(); }, R"({"sandboxPolicy":{}})"},
      {[](auto& options) { options.sandboxPolicy = Members{{"type", "own"}, {"x", nullptr}}; },
       R"({"sandboxPolicy":{"type":"own","x":null}})"},
      {[](auto& options) { options.permissions = "p"; }, R"({"permissions":"p"})"},
      {[](auto& options) { options.model = "m"; }, R"({"model":"m"})"},
      {[](auto& options) { options.modelReasoningEffort = "custom-effort"; }, R"({"effort":"custom-effort"})"},
      {[](auto& options) { options.outputSchema.emplace(); }, R"({"outputSchema":{}})"},
      {[](auto& options) { options.outputSchema = Members{{"type", "object"}}; },
       R"({"outputSchema":{"type":"object"}})"},
      {[](auto& options) { options.signal.emplace(); }, "{}"},
      {[](auto& options) { options.serviceTier = ServiceTier::fast; }, R"({"serviceTier":"fast"})"},
      {[](auto& options) { options.modelReasoningSummary = ModelReasoningSummary::detailed; },
       R"({"summary":"detailed"})"},
      {[](auto& options) { options.personality = Personality::friendly; }, R"({"personality":"friendly"})"},
      // Without a model no mode can be sent.
      {[](auto& options) { options.collaborationMode = CollaborationMode::plan; }, "{}"},
  };
  return choices;
}

// The options that result from the last choice of every field.
TurnOptions everyTurnChoice() {
  TurnOptions options;
  for (const auto& choice : turnChoices()) choice.state(options);
  return options;
}

constexpr std::string_view everyInputMember = R"({
    "responsesapiClientMetadata": {"k": "1", "l": ""}, "clientUserMessageId": "c",
    "additionalContext": {"a": {"value": "v", "kind": "application"}}})";
constexpr std::string_view everyTurnMember = R"({
    "cwd": "/w", "runtimeWorkspaceRoots": ["/r"], "environments": [{"environmentId": "e", "cwd": "/e"}],
    "approvalPolicy": {"granular": {"sandbox_approval": false, "rules": false, "skill_approval": false,
                                    "request_permissions": false, "mcp_elicitations": false}},
    "approvalsReviewer": "auto_review", "sandboxPolicy": {"type": "own", "x": null}, "permissions": "p", "model": "m",
    "effort": "custom-effort", "outputSchema": {"type": "object"}, "serviceTier": "fast", "summary": "detailed",
    "personality": "friendly",
    "collaborationMode": {"mode": "plan", "settings": {"model": "m", "developer_instructions": null,
                                                       "reasoning_effort": "custom-effort"}}})";

struct Fallback {
  void (*state)(ThreadOptions& options);
  /// The members that a turn sends beside the least when it states nothing itself.
  std::string_view members;
};

// Every field of the thread's options, also those that are no turn's concern.
const std::vector<Fallback>& fallbacks() {
  static const std::vector<Fallback> all = {
      {[](auto& options) { options.model = "tm"; }, R"({"model":"tm"})"},
      {[](auto& options) { options.modelProvider = "p"; }, "{}"},
      {[](auto& options) { options.workingDirectory = "/tw"; }, R"({"cwd":"/tw"})"},
      {[](auto& options) { options.skipGitRepoCheck = true; }, "{}"},
      {[](auto& options) { options.modelReasoningEffort = "custom"; }, R"({"effort":"custom"})"},
      {[](auto& options) { options.modelReasoningSummary = ModelReasoningSummary::concise; }, "{}"},
      {[](auto& options) { options.modelVerbosity = ModelVerbosity::low; }, "{}"},
      {[](auto& options) { options.modelContextWindow = 1; }, "{}"},
      {[](auto& options) { options.modelAutoCompactTokenLimit = 2; }, "{}"},
      {[](auto& options) { options.serviceTier = "express"; }, R"({"serviceTier":"express"})"},
      {[](auto& options) { options.personality = Personality::pragmatic; }, "{}"},
      {[](auto& options) { options.baseInstructions = "b"; }, "{}"},
      {[](auto& options) { options.developerInstructions = "d"; }, "{}"},
      {[](auto& options) { options.serviceName = "s"; }, "{}"},
      {[](auto& options) { options.ephemeral = true; }, "{}"},
      {[](auto& options) { options.sessionStartSource = ThreadStartSource::clear; }, "{}"},
      {[](auto& options) { options.threadSource = ThreadSource::user; }, "{}"},
      {[](auto& options) { options.skillExtraRoots = Texts{"/s"}; }, "{}"},
      {[](auto& options) { options.runtimeWorkspaceRoots = Texts{"/tr"}; }, "{}"},
      {[](auto& options) { options.environments = Environments{{"te", "/te"}}; }, "{}"},
      {[](auto& options) { options.persistExtendedHistory = true; }, "{}"},
      {[](auto& options) { options.webSearchMode = WebSearchMode::live; }, "{}"},
      {[](auto& options) { options.webSearchEnabled = true; }, "{}"},
      {[](auto& options) { options.approvalPolicy = ApprovalMode::onFailure; }, R"({"approvalPolicy":"on-request"})"},
      {[](auto& options) { options.approvalsReviewer = ApprovalsReviewer::guardianSubagent; },
       R"({"approvalsReviewer":"guardian_subagent"})"},
      {[](auto& options) { options.permissions = "tp"; }, R"({"permissions":"tp"})"},
      // Without a model no mode can be sent.
      {[](auto& options) { options.collaborationMode = CollaborationMode::defaultMode; }, "{}"},
      {[](auto& options) { options.dynamicTools = std::vector{tests::namedTool("a")}; }, "{}"},
      {[](auto& options) { options.configOverrides = OrmelConfigValue::Object{{"a", 1}}; }, "{}"},
      {[](auto& options) { options.sandboxMode = SandboxMode::dangerFullAccess; },
       R"({"sandboxPolicy":{"type":"dangerFullAccess"}})"},
      // Full access leaves these two without a meaning.
      {[](auto& options) {
         options.sandboxMode = SandboxMode::dangerFullAccess;
         options.networkAccessEnabled = false;
         options.additionalDirectories = Texts{"/ta"};
       },
       R"({"sandboxPolicy":{"type":"dangerFullAccess"}})"},
  };
  return all;
}

ThreadOptions everyFallback() {
  ThreadOptions options;
  for (const auto& fallback : fallbacks()) fallback.state(options);
  return options;
}

TEST(BuildTurnStartParams, SendOnlyTheThreadAndTheInputWithoutOptions) {
  EXPECT_EQ(turnParams(TurnOptions()), json(least));
  EXPECT_EQ(detail::buildTurnStartParams("", Input::from({}), TurnOptions(), ThreadOptions()),
            json(R"({"threadId":"","input":[]})"));
}

TEST(BuildTurnStartParams, SendEachChoiceInItsForm) {
  for (const auto& choice : turnChoices()) {
    TurnOptions options;
    choice.state(options);
    EXPECT_EQ(turnParams(options), joined({least, choice.members})) << choice.members;
  }
}

TEST(BuildTurnStartParams, SendAllChoicesTogether) {
  EXPECT_EQ(turnParams(everyTurnChoice()), joined({least, everyInputMember, everyTurnMember}));
}

TEST(BuildTurnStartParams, FallBackToEachChoiceOfTheThreadThatATurnTakes) {
  for (const auto& fallback : fallbacks()) {
    ThreadOptions thread;
    fallback.state(thread);
    EXPECT_EQ(turnParams(TurnOptions(), thread), joined({least, fallback.members})) << fallback.members;
  }
}

TEST(BuildTurnStartParams, FallBackToAllChoicesOfTheThreadTogether) {
  EXPECT_EQ(turnParams(TurnOptions(), everyFallback()), joined({least, R"({
    "model": "tm", "cwd": "/tw", "effort": "custom", "serviceTier": "express", "approvalPolicy": "on-request",
    "approvalsReviewer": "guardian_subagent", "permissions": "tp", "sandboxPolicy": {"type": "dangerFullAccess"},
    "collaborationMode": {"mode": "default", "settings": {"model": "tm", "developer_instructions": null,
                                                          "reasoning_effort": "custom"}}})"}));
}

TEST(BuildTurnStartParams, PutTheTurnsChoicesAheadOfTheThreads) {
  EXPECT_EQ(turnParams(everyTurnChoice(), everyFallback()), turnParams(everyTurnChoice()));
}

TEST(BuildTurnStartParams, TakeAnEmptyTextForAChoice) {
  ThreadOptions thread;
  thread.model = "tm";
  thread.workingDirectory = "/tw";
  TurnOptions turn;
  turn.model = "";
  turn.workingDirectory = "";
  EXPECT_EQ(turnParams(turn, thread), joined({least, R"({"model":"","cwd":""})"}));
}

TEST(BuildTurnSteerParams, SendOnlyTheTurnAndTheInputWithoutOptions) {
  EXPECT_EQ(steerParams(TurnOptions()), json(leastSteer));
}

TEST(BuildTurnSteerParams, SendEachChoiceThatBelongsToTheInputAndNoOther) {
  for (const auto& choice : turnChoices()) {
    TurnOptions options;
    choice.state(options);
    EXPECT_EQ(steerParams(options), joined({leastSteer, choice.alsoInSteer ? choice.members : "{}"})) << choice.members;
  }
  EXPECT_EQ(steerParams(everyTurnChoice()), joined({leastSteer, everyInputMember}));
}

std::optional<JSONValue> policyOf(const ThreadOptions& thread) {
  return detail::buildSandboxPolicy(TurnOptions(), thread);
}

JSONValue workspaceWrite(std::string_view members) {
  return joined({R"({"type":"workspaceWrite","writableRoots":[],"readOnlyAccess":{"type":"fullAccess"},
                     "networkAccess":false,"excludeTmpdirEnvVar":false,"excludeSlashTmp":false})",
                 members});
}

ThreadOptions sandboxed(std::optional<SandboxMode> mode) {
  ThreadOptions thread;
  thread.sandboxMode = mode;
  return thread;
}

TEST(BuildSandboxPolicy, GivesNoneWhereNothingIsStated) {
  ThreadOptions thread;
  EXPECT_EQ(policyOf(thread), std::nullopt);
  thread.additionalDirectories.emplace();
  EXPECT_EQ(policyOf(thread), std::nullopt);
  thread.workingDirectory = "/w";
  EXPECT_EQ(policyOf(thread), std::nullopt);
}

TEST(BuildSandboxPolicy, MakesAWorkspacePolicyOfAdditionalDirectories) {
  ThreadOptions thread;
  thread.additionalDirectories = Texts{"/a"};
  EXPECT_EQ(policyOf(thread), workspaceWrite(R"({"writableRoots":["/a"]})"));
  thread.workingDirectory = "/w";
  EXPECT_EQ(policyOf(thread), workspaceWrite(R"({"writableRoots":["/w","/a"]})"));
}

TEST(BuildSandboxPolicy, MakesAWorkspacePolicyOfAnyChoiceAboutTheNetwork) {
  ThreadOptions thread;
  thread.networkAccessEnabled = true;
  EXPECT_EQ(policyOf(thread), workspaceWrite(R"({"networkAccess":true})"));
  thread.networkAccessEnabled = false;
  EXPECT_EQ(policyOf(thread), workspaceWrite("{}"));
}

TEST(BuildSandboxPolicy, MakesAWorkspacePolicyOfItsModeAlone) {
  ThreadOptions thread = sandboxed(SandboxMode::workspaceWrite);
  EXPECT_EQ(policyOf(thread), workspaceWrite("{}"));
  thread.workingDirectory = "/w";
  EXPECT_EQ(policyOf(thread), workspaceWrite(R"({"writableRoots":["/w"]})"));
  thread.additionalDirectories = Texts{"/b", "/a", "/w"};
  thread.networkAccessEnabled = true;
  EXPECT_EQ(policyOf(thread), workspaceWrite(R"({"writableRoots":["/w","/b","/a","/w"],"networkAccess":true})"));
}

TEST(BuildSandboxPolicy, IgnoresExtrasInTheOtherModes) {
  for (const bool hasExtras : {false, true}) {
    ThreadOptions readOnly = sandboxed(SandboxMode::readOnly);
    ThreadOptions fullAccess = sandboxed(SandboxMode::dangerFullAccess);
    for (auto* thread : {&readOnly, &fullAccess}) {
      if (!hasExtras) continue;
      thread->workingDirectory = "/w";
      thread->additionalDirectories = Texts{"/a"};
      thread->networkAccessEnabled = true;
    }
    EXPECT_EQ(policyOf(readOnly), json(R"({"type":"readOnly","access":{"type":"fullAccess"}})"));
    EXPECT_EQ(policyOf(fullAccess), json(R"({"type":"dangerFullAccess"})"));
  }
}

TEST(BuildSandboxPolicy, TakesOnlyTheThreadsWorkingDirectory) {
  TurnOptions turn;
  turn.workingDirectory = "/turn";
  EXPECT_EQ(detail::buildSandboxPolicy(turn, sandboxed(SandboxMode::workspaceWrite)), workspaceWrite("{}"));
}

TEST(BuildSandboxPolicy, LeavesTheTurnsOwnAsItIs) {
  TurnOptions turn;
  turn.sandboxPolicy = Members{{"type", "custom"}};
  for (const auto mode : {SandboxMode::readOnly, SandboxMode::workspaceWrite, SandboxMode::dangerFullAccess}) {
    EXPECT_EQ(detail::buildSandboxPolicy(turn, sandboxed(mode)), json(R"({"type":"custom"})"));
  }
}

std::optional<JSONValue> collaboration(const TurnOptions& turn, const ThreadOptions& thread = ThreadOptions()) {
  return detail::buildCollaborationModePayload(turn, thread);
}

TEST(BuildCollaborationModePayload, NeedsAMode) {
  TurnOptions turn;
  turn.model = "m";
  turn.modelReasoningEffort = ModelReasoningEffort::high;
  EXPECT_EQ(collaboration(turn), std::nullopt);
}

TEST(BuildCollaborationModePayload, NeedsAModelThatIsNotBlank) {
  TurnOptions turn;
  turn.collaborationMode = CollaborationMode::plan;
  EXPECT_EQ(collaboration(turn), std::nullopt);
  for (const char* blank : {"", "  ", "\n\t", "\u2003"}) {
    turn.model = blank;
    EXPECT_EQ(collaboration(turn), std::nullopt);
  }
}

TEST(BuildCollaborationModePayload, DoesNotPassABlankModelOfTheTurnOver) {
  ThreadOptions thread;
  thread.model = "tm";
  TurnOptions turn;
  turn.collaborationMode = CollaborationMode::plan;
  turn.model = " ";
  EXPECT_EQ(collaboration(turn, thread), std::nullopt);
  EXPECT_EQ(turnParams(turn, thread), joined({least, R"({"model":" "})"})) << "the turn goes ahead without it";
}

TEST(BuildCollaborationModePayload, SendsTheModelUntrimmed) {
  TurnOptions turn;
  turn.collaborationMode = CollaborationMode::defaultMode;
  turn.model = " m\n";
  EXPECT_EQ(collaboration(turn),
            json(R"({"mode":"default","settings":{"model":" m\n","developer_instructions":null}})"));
}

TEST(BuildCollaborationModePayload, TakesEachOfItsPartsFromTheTurnFirst) {
  ThreadOptions thread;
  thread.collaborationMode = CollaborationMode::defaultMode;
  thread.model = "tm";
  thread.modelReasoningEffort = ModelReasoningEffort::low;
  TurnOptions turn;
  EXPECT_EQ(collaboration(turn, thread), json(R"({"mode":"default","settings":{
    "model":"tm","developer_instructions":null,"reasoning_effort":"low"}})"));
  turn.collaborationMode = CollaborationMode::plan;
  EXPECT_EQ(collaboration(turn, thread), json(R"({"mode":"plan","settings":{
    "model":"tm","developer_instructions":null,"reasoning_effort":"low"}})"));
  turn.model = "m";
  EXPECT_EQ(collaboration(turn, thread), json(R"({"mode":"plan","settings":{
    "model":"m","developer_instructions":null,"reasoning_effort":"low"}})"));
  turn.modelReasoningEffort = ModelReasoningEffort::ultra;
  EXPECT_EQ(collaboration(turn, thread), json(R"({"mode":"plan","settings":{
    "model":"m","developer_instructions":null,"reasoning_effort":"ultra"}})"));
}

TEST(BuildCollaborationModePayload, LeavesTheThreadsInstructionsOut) {
  ThreadOptions thread;
  thread.model = "m";
  thread.collaborationMode = CollaborationMode::plan;
  thread.developerInstructions = "d";
  EXPECT_EQ(collaboration(TurnOptions(), thread),
            json(R"({"mode":"plan","settings":{"model":"m","developer_instructions":null}})"));
}

}  // namespace
