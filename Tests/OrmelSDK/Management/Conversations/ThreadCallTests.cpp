#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"
#include "Support/CallRows.h"
#include "Support/RunTranscript.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* aThread = R"({"thread":{"id":"t1"}})";
constexpr const char* aFork =
    R"({"thread":{"id":"t2"},"model":"m","modelProvider":"p","cwd":"/","instructionSources":[]})";
constexpr const char* aPage = R"({"data":[]})";
constexpr const char* aGoal = R"({"goal":{"threadId":"t1","objective":"o","status":"active","tokensUsed":0,)"
                              R"("timeUsedSeconds":0,"createdAt":1,"updatedAt":2}})";
constexpr const char* aReview = R"({"turn":{"id":"u1","status":"completed"},"reviewThreadId":"t1"})";

const ReplyRecords threadRecords = {
    {"thread/list", "ThreadListResponse"},
    {"thread/loaded/list", "ThreadListResponse"},
    {"thread/read", "ThreadReadResponse"},
    {"thread/fork", "ThreadForkResponse"},
    {"thread/archive", "EmptyRPCResponse"},
    {"thread/delete", "EmptyRPCResponse"},
    {"thread/unarchive", "ThreadReadResponse"},
    {"thread/unsubscribe", "ThreadUnsubscribeResponse"},
    {"thread/name/set", "EmptyRPCResponse"},
    {"thread/compact/start", "EmptyRPCResponse"},
    {"thread/shellCommand", "EmptyRPCResponse"},
    {"thread/approveGuardianDeniedAction", "EmptyRPCResponse"},
    {"thread/metadata/update", "ThreadReadResponse"},
    {"thread/settings/update", "ThreadSettingsUpdateResponse"},
    {"thread/inject_items", "ConfigWriteAck"},
    {"thread/turns/list", "ThreadTurnsListResponse"},
    {"thread/items/list", "ThreadTurnItemsListResponse"},
    {"thread/goal/set", "ThreadGoalSetResponse"},
    {"thread/goal/get", "ThreadGoalGetResponse"},
    {"thread/goal/clear", "ThreadGoalClearResponse"},
    {"review/start", "ReviewStartResponse"},
    {"getConversationSummary", "ConversationSummaryResponse"},
};

const CallRow rows[] = {
    {R"({"id":2,"method":"thread/list","params":{}})", aPage, [](const Ormel& ormel) { ormel.listThreads().get(); }},
    {R"({"id":2,"method":"thread/list","params":{"cursor":"c","limit":7,"sortKey":"recency_at","sortDirection":"asc",)"
     R"("modelProviders":["p","q"],"sourceKinds":["cli","vscode","exec","appServer","subAgent","subAgentReview",)"
     R"("subAgentCompact","subAgentThreadSpawn","subAgentOther","unknown"],"archived":false,"cwd":["/a"],)"
     R"("useStateDbOnly":true,"searchTerm":"s"}})",
     aPage,
     [](const Ormel& ormel) {
       ListThreadsParams params;
       params.cursor = "c";
       params.limit = 7;
       params.sortKey = ThreadSortKey::recencyAt;
       params.sortDirection = ThreadSortDirection::asc;
       params.modelProviders = {"p", "q"};
       params.sourceKinds = {ThreadSourceKind::cli,
                             ThreadSourceKind::vscode,
                             ThreadSourceKind::exec,
                             ThreadSourceKind::appServer,
                             ThreadSourceKind::subAgent,
                             ThreadSourceKind::subAgentReview,
                             ThreadSourceKind::subAgentCompact,
                             ThreadSourceKind::subAgentThreadSpawn,
                             ThreadSourceKind::subAgentOther,
                             ThreadSourceKind::unknown};
       params.archived = false;
       params.cwd = {"/a"};
       params.useStateDBOnly = true;
       params.searchTerm = "s";
       ormel.listThreads(params).get();
     }},
    // A given option is sent, also when it is empty.
    {R"({"id":2,"method":"thread/list","params":{"cursor":"","limit":0,"sortKey":"created_at","sortDirection":"desc",)"
     R"("modelProviders":[],"sourceKinds":[],"archived":true,"cwd":[],"useStateDbOnly":false,"searchTerm":""}})",
     aPage,
     [](const Ormel& ormel) {
       ListThreadsParams params;
       params.cursor = "";
       params.limit = 0;
       params.sortKey = ThreadSortKey::createdAt;
       params.sortDirection = ThreadSortDirection::desc;
       params.modelProviders.emplace();
       params.sourceKinds.emplace();
       params.archived = true;
       params.cwd.emplace();
       params.useStateDBOnly = false;
       params.searchTerm = "";
       ormel.listThreads(params).get();
     }},
    {R"({"id":2,"method":"thread/list","params":{"sortKey":"updated_at"}})", aPage,
     [](const Ormel& ormel) {
       ListThreadsParams params;
       params.sortKey = ThreadSortKey::updatedAt;
       ormel.listThreads(params).get();
     }},
    {R"({"id":2,"method":"thread/loaded/list","params":{}})", aPage,
     [](const Ormel& ormel) { ormel.listLoadedThreads().get(); }},
    {R"({"id":2,"method":"thread/loaded/list","params":{"cursor":"c","limit":-1}})", aPage,
     [](const Ormel& ormel) {
       ListLoadedThreadsParams params;
       params.cursor = "c";
       params.limit = -1;
       ormel.listLoadedThreads(params).get();
     }},
    {R"({"id":2,"method":"thread/read","params":{"threadId":"t1","includeTurns":false}})", aThread,
     [](const Ormel& ormel) { EXPECT_EQ(ormel.readThread("t1").get().thread.id, "t1"); }},
    {R"({"id":2,"method":"thread/read","params":{"threadId":"","includeTurns":true}})", aThread,
     [](const Ormel& ormel) {
       ReadThreadParams params;
       params.includeTurns = true;
       ormel.readThread("", params).get();
     }},
    {R"({"id":2,"method":"thread/fork","params":{"threadId":"t1"}})", aFork,
     [](const Ormel& ormel) { EXPECT_EQ(ormel.forkThread("t1").get().thread.id, "t2"); },
     [](const OrmelControlSession& session) { EXPECT_EQ(session.forkThread("t1").get().model, "m"); }},
    {R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","lastTurnId":"u1","model":"m","modelProvider":"p",)"
     R"("serviceTier":"flex","cwd":"/w","approvalPolicy":"on-request","approvalsReviewer":"auto_review",)"
     R"("sandbox":"workspace-write","config":{"a":{"b":1},"c":[true,2.5]},"baseInstructions":"base",)"
     R"("developerInstructions":"dev","ephemeral":true,"threadSource":"memory_consolidation"}})",
     aFork,
     [](const Ormel& ormel) {
       ForkThreadParams params;
       params.lastTurnID = "u1";
       params.model = "m";
       params.modelProvider = "p";
       params.serviceTier = ServiceTier::flex;
       params.workingDirectory = "/w";
       // The server no longer knows the word of this policy.
       params.approvalPolicy = ApprovalMode::onFailure;
       params.approvalsReviewer = ApprovalsReviewer::autoReview;
       params.sandboxMode = SandboxMode::workspaceWrite;
       params.config.emplace();
       params.config->emplace("a", OrmelConfigValue::object({{"b", 1}}));
       params.config->emplace("c", OrmelConfigValue::array({true, 2.5}));
       params.baseInstructions = "base";
       params.developerInstructions = "dev";
       params.ephemeral = true;
       params.threadSource = ThreadSource::memoryConsolidation;
       ormel.forkThread("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","approvalPolicy":{"granular":{"sandbox_approval":true,)"
     R"("rules":false,"skill_approval":false,"request_permissions":false,"mcp_elicitations":false}},)"
     R"("approvalsReviewer":"guardian_subagent","sandbox":"danger-full-access","config":{},"ephemeral":false,)"
     R"("threadSource":"user"}})",
     aFork,
     [](const Ormel& ormel) {
       ForkThreadParams params;
       GranularApprovalMode granular;
       granular.sandboxApproval = true;
       params.approvalPolicy = ApprovalMode::granular(granular);
       params.approvalsReviewer = ApprovalsReviewer::guardianSubagent;
       params.sandboxMode = SandboxMode::dangerFullAccess;
       params.config.emplace();
       params.ephemeral = false;
       params.threadSource = ThreadSource::user;
       ormel.forkThread("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","lastTurnId":"u1","ephemeral":true}})", aFork, nullptr,
     [](const OrmelControlSession& session) {
       ForkThreadInSessionParams params;
       params.lastTurnID = "u1";
       params.ephemeral = true;
       session.forkThread("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/archive","params":{"threadId":"t1"}})", "{}",
     [](const Ormel& ormel) { ormel.archiveThread("t1").get(); },
     [](const OrmelControlSession& session) { session.archiveThread("t1").get(); }},
    {R"({"id":2,"method":"thread/delete","params":{"threadId":"t1"}})", "{}",
     [](const Ormel& ormel) { ormel.deleteThread("t1").get(); },
     [](const OrmelControlSession& session) { session.deleteThread("t1").get(); }},
    {R"({"id":2,"method":"thread/unarchive","params":{"threadId":"t1"}})", aThread,
     [](const Ormel& ormel) { EXPECT_EQ(ormel.unarchiveThread("t1").get().thread.id, "t1"); },
     [](const OrmelControlSession& session) { EXPECT_EQ(session.unarchiveThread("t1").get().thread.id, "t1"); }},
    {R"({"id":2,"method":"thread/unsubscribe","params":{"threadId":"t1"}})", R"({"status":"gone"})",
     [](const Ormel& ormel) { EXPECT_EQ(ormel.unsubscribeThread("t1").get().status, "gone"); }},
    {R"({"id":2,"method":"thread/name/set","params":{"threadId":"t1","name":"a \"name\""}})", R"({"more":1})",
     [](const Ormel& ormel) { ormel.setThreadName("t1", "a \"name\"").get(); },
     [](const OrmelControlSession& session) { session.setThreadName("t1", "a \"name\"").get(); }},
    {R"({"id":2,"method":"thread/compact/start","params":{"threadId":"t1"}})", "{}",
     [](const Ormel& ormel) { ormel.startThreadCompaction("t1").get(); },
     [](const OrmelControlSession& session) { session.compactThread("t1").get(); }},
    {R"({"id":2,"method":"thread/shellCommand","params":{"threadId":"t1","command":"ls -l"}})", "{}",
     [](const Ormel& ormel) { ormel.runThreadShellCommand("t1", "ls -l").get(); }},
    {R"({"id":2,"method":"thread/approveGuardianDeniedAction","params":{"threadId":"t1","event":{"id":[1,null]}}})",
     "{}",
     [](const Ormel& ormel) {
       ormel.approveGuardianDeniedAction("t1", JSONValue::object({{"id", JSONValue::array({1, nullptr})}})).get();
     }},
    {R"({"id":2,"method":"thread/approveGuardianDeniedAction","params":{"threadId":"t1","event":null}})", "{}",
     [](const Ormel& ormel) { ormel.approveGuardianDeniedAction("t1", JSONValue()).get(); }},
    {R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1"}})", aThread,
     [](const Ormel& ormel) { ormel.updateThreadMetadata("t1").get(); }},
    {R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1","gitInfo":{}}})", aThread,
     [](const Ormel& ormel) {
       UpdateThreadMetadataParams params;
       params.gitInfo.emplace();
       ormel.updateThreadMetadata("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1","gitInfo":{"branch":"main","sha":null,)"
     R"("originUrl":""}}})",
     aThread,
     [](const Ormel& ormel) {
       UpdateThreadMetadataParams params;
       params.gitInfo.emplace();
       params.gitInfo->branch = ThreadMetadataStringUpdate::value("main");
       params.gitInfo->sha = ThreadMetadataStringUpdate::clear();
       params.gitInfo->originURL = ThreadMetadataStringUpdate::value("");
       ormel.updateThreadMetadata("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1"}})", "{}",
     [](const Ormel& ormel) { ormel.updateThreadSettings("t1").get(); }},
    {R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1","cwd":"/w","approvalPolicy":"on-request",)"
     R"("approvalsReviewer":"user","sandboxPolicy":null,"permissions":"p","model":"m","serviceTier":"fast",)"
     R"("effort":"xhigh","summary":"auto","collaborationMode":"plan","personality":"none"}})",
     "{}",
     [](const Ormel& ormel) {
       UpdateThreadSettingsParams params;
       params.workingDirectory = "/w";
       params.approvalPolicy = ApprovalMode::onFailure;
       params.approvalsReviewer = ApprovalsReviewer::user;
       params.sandboxPolicy = JSONValue();
       params.permissions = "p";
       params.model = "m";
       params.serviceTier = ServiceTierUpdate::value(ServiceTier::fast);
       params.modelReasoningEffort = ModelReasoningEffort::xhigh;
       params.modelReasoningSummary = ModelReasoningSummary::auto_;
       params.collaborationMode = CollaborationMode::plan;
       params.personality = Personality::none;
       ormel.updateThreadSettings("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1","approvalPolicy":"never",)"
     R"("sandboxPolicy":{"type":"readOnly"},"serviceTier":null,"summary":"none","collaborationMode":"default",)"
     R"("personality":"pragmatic"}})",
     "{}",
     [](const Ormel& ormel) {
       UpdateThreadSettingsParams params;
       params.approvalPolicy = ApprovalMode::never;
       params.sandboxPolicy = JSONValue::object({{"type", "readOnly"}});
       params.serviceTier = ServiceTierUpdate::clear();
       params.modelReasoningSummary = ModelReasoningSummary::none;
       params.collaborationMode = CollaborationMode::defaultMode;
       params.personality = Personality::pragmatic;
       ormel.updateThreadSettings("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/inject_items","params":{"threadId":"t1","items":[]}})", "{}",
     [](const Ormel& ormel) { ormel.injectThreadItems("t1", {}).get(); }},
    {R"({"id":2,"method":"thread/inject_items","params":{"threadId":"t1","items":[{"a":1},null]}})", "{}",
     [](const Ormel& ormel) { ormel.injectThreadItems("t1", {JSONValue::object({{"a", 1}}), JSONValue()}).get(); }},
    {R"({"id":2,"method":"thread/turns/list","params":{"threadId":"t1"}})", aPage,
     [](const Ormel& ormel) { ormel.listThreadTurns("t1").get(); }},
    {R"({"id":2,"method":"thread/turns/list","params":{"threadId":"t1","cursor":"c","limit":5,"sortDirection":"desc",)"
     R"("itemsView":"notLoaded"}})",
     aPage,
     [](const Ormel& ormel) {
       ListThreadTurnsParams params;
       params.cursor = "c";
       params.limit = 5;
       params.sortDirection = ThreadTurnSortDirection::desc;
       params.itemsView = ThreadTurnItemsView::notLoaded;
       ormel.listThreadTurns("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/items/list","params":{"threadId":"t1","turnId":"u1"}})", aPage,
     [](const Ormel& ormel) { ormel.listThreadTurnItems("t1", "u1").get(); }},
    {R"({"id":2,"method":"thread/items/list","params":{"threadId":"t1","turnId":"u1","cursor":"c","limit":5,)"
     R"("sortDirection":"asc"}})",
     aPage,
     [](const Ormel& ormel) {
       ListThreadTurnItemsParams params;
       params.cursor = "c";
       params.limit = 5;
       params.sortDirection = ThreadTurnSortDirection::asc;
       ormel.listThreadTurnItems("t1", "u1", params).get();
     }},
    {R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1"}})", aGoal,
     [](const Ormel& ormel) { EXPECT_EQ(ormel.setThreadGoal("t1").get().goal.objective, "o"); }},
    {R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1","objective":"o","status":"budgetLimited",)"
     R"("tokenBudget":50000}})",
     aGoal,
     [](const Ormel& ormel) {
       SetThreadGoalParams params;
       params.objective = "o";
       params.status = ThreadGoalStatus::budgetLimited;
       params.tokenBudget = 50'000;
       ormel.setThreadGoal("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1","tokenBudget":null}})", aGoal,
     [](const Ormel& ormel) {
       SetThreadGoalParams params;
       params.tokenBudget = ThreadGoalTokenBudgetUpdate::clear();
       ormel.setThreadGoal("t1", params).get();
     }},
    {R"({"id":2,"method":"thread/goal/get","params":{"threadId":"t1"}})", "{}",
     [](const Ormel& ormel) { EXPECT_EQ(ormel.readThreadGoal("t1").get().goal, std::nullopt); }},
    {R"({"id":2,"method":"thread/goal/clear","params":{"threadId":"t1"}})", R"({"cleared":true})",
     [](const Ormel& ormel) { EXPECT_TRUE(ormel.clearThreadGoal("t1").get().cleared); }},
    {R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"uncommittedChanges"}}})", aReview,
     [](const Ormel& ormel) { ormel.startReview("t1", ReviewTarget::uncommittedChanges()).get(); }},
    {R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"commit","sha":"abc","title":"t"},)"
     R"("delivery":"detached"}})",
     aReview,
     [](const Ormel& ormel) {
       StartReviewParams params;
       params.delivery = ReviewDelivery::detached;
       EXPECT_EQ(ormel.startReview("t1", ReviewTarget::commit("abc", "t"), params).get().reviewThreadID, "t1");
     }},
    {R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"baseBranch","branch":"main"},)"
     R"("delivery":"inline"}})",
     aReview,
     [](const Ormel& ormel) {
       StartReviewParams params;
       params.delivery = ReviewDelivery::inline_;
       ormel.startReview("t1", ReviewTarget::baseBranch("main"), params).get();
     }},
    {R"({"id":2,"method":"getConversationSummary","params":{}})", R"({"summary":null})",
     [](const Ormel& ormel) { ormel.getConversationSummary().get(); }},
    {R"({"id":2,"method":"getConversationSummary","params":{"conversationId":"c","rolloutPath":"/r"}})",
     R"({"summary":{"preview":"p"}})",
     [](const Ormel& ormel) {
       GetConversationSummaryParams params;
       params.conversationID = "c";
       params.rolloutPath = "/r";
       EXPECT_EQ(ormel.getConversationSummary(params).get().summary, JSONValue::object({{"preview", "p"}}));
     }},
};

TEST(ThreadCalls, GoOutExactly) { expectCalls(rows); }

TEST(ThreadCalls, FailByTheirRecordAndByTheServersError) { expectFailures(rows, threadRecords); }

TEST(ThreadCalls, WhoseReplyIsDroppedStillNeedAnObject) {
  for (const char* reply : {"[]", "1", "\"\""}) {
    SCOPED_TRACE(reply);
    const SimulatorScenario scenario = answering("*", reply);
    EXPECT_THAT(
        failureOf([&] { ormelPlaying(scenario).archiveThread("t1").get(); }),
        ::testing::StartsWith("stream error: App-server RPC thread/archive failed: App-server decode error at $: "
                              "type mismatch for EmptyRPCResponse: "));
    EXPECT_THAT(
        failureOf([&] { ormelPlaying(scenario).injectThreadItems("t1", {}).get(); }),
        ::testing::StartsWith("stream error: App-server RPC thread/inject_items failed: App-server decode error "
                              "at $: type mismatch for ConfigWriteAck: "));
  }
}

// The older name of the call, on a server that does not know the newer one.

std::string itemsScenario(const std::string& error) {
  return "always answer initialize with {}\nalways ignore initialized\nalways answer thread/items/list with error " +
         error + R"(
always answer thread/turns/items/list with {"data":[{"type":"sleep","id":"i1"},{"type":"sleep","id":"i2"}],"nextCursor":"n","backwardsCursor":"b"}
)";
}

TEST(ThreadTurnItems, ComeByTheOlderNameFromAServerThatDoesNotKnowTheNewer) {
  for (const char* error :
       {R"({"code":-32601,"message":"anything"})", R"({"code":-32600,"message":"METHOD NOT FOUND: x"})",
        R"({"code":-32600,"message":"Unknown method"})", R"({"code":-32600,"message":"is Not Supported"})"}) {
    SCOPED_TRACE(error);
    const SimulatorScenario scenario(itemsScenario(error));
    ListThreadTurnItemsParams params;
    params.limit = 5;
    const auto page = ormelPlaying(scenario).listThreadTurnItems("t1", "u1", params).get();
    ASSERT_EQ(page.data.size(), 2U);
    EXPECT_EQ(page.data[0].turnID, "u1");
    EXPECT_EQ(page.data[0].item.id(), "i1");
    EXPECT_EQ(page.data[1].turnID, "u1");
    EXPECT_EQ(page.data[1].item.id(), "i2");
    EXPECT_EQ(page.nextCursor, "n");
    EXPECT_EQ(page.backwardsCursor, "b");
    EXPECT_EQ(scenario.processesStarted(), 2U);
    const auto lines = scenario.receivedLines();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[2], R"({"id":2,"method":"thread/items/list","params":{"threadId":"t1","turnId":"u1","limit":5}})");
    EXPECT_EQ(lines[5],
              R"({"id":2,"method":"thread/turns/items/list","params":{"threadId":"t1","turnId":"u1","limit":5}})");
    for (const std::size_t opening : {0U, 3U}) {
      EXPECT_NE(lines[opening].find(R"("experimentalApi":true)"), std::string::npos) << lines[opening];
    }
  }
}

TEST(ThreadTurnItems, FailAsTheNewerCallDidForAnyOtherReason) {
  for (const char* error :
       {R"({"code":-32602,"message":"unknown method"})", R"({"code":-32600,"message":"bad request"})",
        R"({"code":-32000,"message":"not supported"})"}) {
    SCOPED_TRACE(error);
    const SimulatorScenario scenario(itemsScenario(error));
    const auto expected = AppServerRPCError::fromJSONValue(JSONValue::decode(error));
    EXPECT_EQ(failureOf([&] { ormelPlaying(scenario).listThreadTurnItems("t1", "u1").get(); }),
              "other error: " + expected.description());
    EXPECT_EQ(scenario.processesStarted(), 1U);
  }
  const SimulatorScenario scenario = answering("*", "{}");
  EXPECT_EQ(failureOf([&] { ormelPlaying(scenario).listThreadTurnItems("t1", "u1").get(); }),
            "stream error: App-server RPC thread/items/list failed: App-server decode error at $: missing key 'data': "
            "No value is associated with the key 'data'.");
  EXPECT_EQ(scenario.processesStarted(), 1U);
}

TEST(ThreadTurnItems, NameTheOlderCallWhenThatOneFails) {
  const SimulatorScenario scenario(
      "always answer initialize with {}\nalways ignore initialized\n"
      "always answer thread/items/list with error {\"code\":-32601}\nalways answer thread/turns/items/list with {}\n");
  EXPECT_EQ(failureOf([&] { ormelPlaying(scenario).listThreadTurnItems("t1", "u1").get(); }),
            "stream error: App-server RPC thread/turns/items/list failed: App-server decode error at $: missing key "
            "'data': No value is associated with the key 'data'.");
}

// Only these two ask for the experimental interface.
TEST(ThreadCalls, RunWithoutAnyCapability) {
  const SimulatorScenario scenario = answering("*", aPage);
  ormelPlaying(scenario).listThreads().get();
  EXPECT_NE(scenario.receivedLines().front().find(R"("experimentalApi":false,"requestAttestation":false,"optOut)"),
            std::string::npos);
}

}  // namespace
