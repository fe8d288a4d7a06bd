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

/// A thread and a turn with the least that they need, the same with what stands for the rest, and all that there can
/// be.
#define ORMEL_SMALL_THREAD_READ                                                                                 \
  R"({"id":"t1","sessionId":"","preview":"","ephemeral":false,"modelProvider":"","createdAt":0,"updatedAt":0,)" \
  R"("status":{"type":"unknown","activeFlags":[]},"cwd":"","cliVersion":"","turns":[]})"
#define ORMEL_SMALL_TURN R"({"id":"u1","status":"In_Progress"})"
#define ORMEL_SMALL_TURN_READ R"({"id":"u1","items":[],"itemsView":"full","status":"inProgress"})"
#define ORMEL_WHOLE_TURN                                                                                       \
  R"({"id":"u2","items":[{"type":"sleep","id":"i1","durationMs":5}],"itemsView":"summary","status":"failed",)" \
  R"("error":{"message":"m","ormelErrorInfo":{"a":[null]},"additionalDetails":"d"},"startedAt":1.5,)"          \
  R"("completedAt":2,"durationMs":500})"
#define ORMEL_WHOLE_THREAD                                                                                  \
  R"({"id":"t2","sessionId":"s","forkedFromId":"t0","parentThreadId":"t1","preview":"p","ephemeral":true,)" \
  R"("modelProvider":"mp","createdAt":1.5,"updatedAt":2,"recencyAt":3,"status":{"type":"active",)"          \
  R"("activeFlags":["f"]},"path":"/p","cwd":"/w","cliVersion":"1","source":{"custom":[1]},)"                \
  R"("threadSource":"user","agentNickname":"n","agentRole":"r","gitInfo":{"sha":"a","branch":"b",)"         \
  R"("originUrl":"o"},"name":"N","turns":[)" ORMEL_WHOLE_TURN "]}"

constexpr const char* aThread = R"({"thread":{"id":"t1"}})";
constexpr const char* aThreadRead = R"({"thread":)" ORMEL_SMALL_THREAD_READ "}";
constexpr const char* aWholeThread = R"({"thread":)" ORMEL_WHOLE_THREAD "}";
constexpr const char* aFork =
    R"({"thread":{"id":"t1"},"model":"m","modelProvider":"p","cwd":"/","instructionSources":[]})";
constexpr const char* aForkRead =
    R"({"thread":)" ORMEL_SMALL_THREAD_READ R"(,"model":"m","modelProvider":"p","cwd":"/","instructionSources":[]})";
constexpr const char* aWholeFork =
    R"({"thread":)" ORMEL_WHOLE_THREAD
    R"(,"model":"m","modelProvider":"p","serviceTier":"flex","cwd":"/w","instructionSources":["/i"],)"
    R"("approvalPolicy":"never","approvalsReviewer":"auto_review","sandbox":{"type":"readOnly"},)"
    R"("reasoningEffort":"futureEffort"})";
constexpr const char* aPage = R"({"data":[]})";
constexpr const char* pageOfThreads =
    R"({"data":[{"id":"t1"},)" ORMEL_WHOLE_THREAD R"(],"nextCursor":"n","backwardsCursor":"b"})";
constexpr const char* pageOfThreadsRead =
    R"({"data":[)" ORMEL_SMALL_THREAD_READ "," ORMEL_WHOLE_THREAD R"(],"nextCursor":"n","backwardsCursor":"b"})";
constexpr const char* pageOfTurns =
    R"({"data":[)" ORMEL_SMALL_TURN "," ORMEL_WHOLE_TURN R"(],"nextCursor":"n","backwardsCursor":"b"})";
constexpr const char* pageOfTurnsRead =
    R"({"data":[)" ORMEL_SMALL_TURN_READ "," ORMEL_WHOLE_TURN R"(],"nextCursor":"n","backwardsCursor":"b"})";
constexpr const char* pageOfItems = R"({"data":[{"turnId":"u1","item":{"type":"sleep","id":"i1"}},{"turnId":"u2",)"
                                    R"("item":{"type":"sleep","id":"i2","durationMs":5}}],"nextCursor":"n",)"
                                    R"("backwardsCursor":"b"})";
constexpr const char* aGoal = R"({"goal":{"threadId":"t1","objective":"o","status":"active","tokensUsed":0,)"
                              R"("timeUsedSeconds":0,"createdAt":1,"updatedAt":2}})";
constexpr const char* aGoalRead = R"({"goal":{"thread_id":"t1","objective":"o","status":"active","tokensUsed":0,)"
                                  R"("timeUsedSeconds":0,"createdAt":1,"updatedAt":2}})";
constexpr const char* aWholeGoal = R"({"goal":{"thread_id":"t1","objective":"","status":"budgetLimited",)"
                                   R"("tokenBudget":50000,"tokensUsed":7,"timeUsedSeconds":8,"createdAt":1.5,)"
                                   R"("updatedAt":2.5}})";
constexpr const char* aReview = R"({"turn":)" ORMEL_SMALL_TURN R"(,"reviewThreadId":"t1"})";
constexpr const char* aReviewRead = R"({"turn":)" ORMEL_SMALL_TURN_READ R"(,"reviewThreadId":"t1"})";
constexpr const char* aWholeReview = R"({"turn":)" ORMEL_WHOLE_TURN R"(,"reviewThreadId":""})";

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

const CallRow threadRows[] = {
    onOrmel(R"({"id":2,"method":"thread/list","params":{}})", aPage,
            [](const Ormel& ormel) { return ormel.listThreads(); }),
    onOrmel(
        R"({"id":2,"method":"thread/list","params":{"cursor":"c","limit":7,"sortKey":"recency_at","sortDirection":"asc",)"
        R"("modelProviders":["p","q"],"sourceKinds":["cli","vscode","exec","appServer","subAgent","subAgentReview",)"
        R"("subAgentCompact","subAgentThreadSpawn","subAgentOther","unknown"],"archived":false,"cwd":["/a"],)"
        R"("useStateDbOnly":true,"searchTerm":"s"}})",
        pageOfThreads, pageOfThreadsRead,
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
          return ormel.listThreads(params);
        }),
    // A given option is sent, also when it is empty.
    onOrmel(
        R"({"id":2,"method":"thread/list","params":{"cursor":"","limit":0,"sortKey":"created_at","sortDirection":"desc",)"
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
          return ormel.listThreads(params);
        }),
    onOrmel(R"({"id":2,"method":"thread/list","params":{"sortKey":"updated_at"}})", aPage,
            [](const Ormel& ormel) {
              ListThreadsParams params;
              params.sortKey = ThreadSortKey::updatedAt;
              return ormel.listThreads(params);
            }),
    onOrmel(R"({"id":2,"method":"thread/loaded/list","params":{}})", aPage,
            [](const Ormel& ormel) { return ormel.listLoadedThreads(); }),
    onOrmel(R"({"id":2,"method":"thread/loaded/list","params":{"cursor":"c","limit":-1}})", pageOfThreads,
            pageOfThreadsRead,
            [](const Ormel& ormel) {
              ListLoadedThreadsParams params;
              params.cursor = "c";
              params.limit = -1;
              return ormel.listLoadedThreads(params);
            }),
    onOrmel(R"({"id":2,"method":"thread/read","params":{"threadId":"t1","includeTurns":false}})", aThread, aThreadRead,
            [](const Ormel& ormel) { return ormel.readThread("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/read","params":{"threadId":"","includeTurns":true}})", aWholeThread,
            [](const Ormel& ormel) {
              ReadThreadParams params;
              params.includeTurns = true;
              return ormel.readThread("", params);
            }),
    onBoth(R"({"id":2,"method":"thread/fork","params":{"threadId":"t1"}})", aFork, aForkRead,
           [](const auto& object) { return object.forkThread("t1"); }),
    onOrmel(
        R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","lastTurnId":"u1","model":"m","modelProvider":"p",)"
        R"("serviceTier":"flex","cwd":"/w","approvalPolicy":"on-request","approvalsReviewer":"auto_review",)"
        R"("sandbox":"workspace-write","config":{"a":{"b":1},"c":[true,2.5]},"baseInstructions":"base",)"
        R"("developerInstructions":"dev","ephemeral":true,"threadSource":"memory_consolidation"}})",
        aWholeFork,
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
          return ormel.forkThread("t1", params);
        }),
    onOrmel(
        R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","approvalPolicy":{"granular":{"sandbox_approval":true,)"
        R"("rules":false,"skill_approval":false,"request_permissions":false,"mcp_elicitations":false}},)"
        R"("approvalsReviewer":"guardian_subagent","sandbox":"danger-full-access","config":{},"ephemeral":false,)"
        R"("threadSource":"user"}})",
        aFork, aForkRead,
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
          return ormel.forkThread("t1", params);
        }),
    onSession(R"({"id":2,"method":"thread/fork","params":{"threadId":"t1","lastTurnId":"u1","ephemeral":true}})",
              aWholeFork,
              [](const OrmelControlSession& session) {
                ForkThreadInSessionParams params;
                params.lastTurnID = "u1";
                params.ephemeral = true;
                return session.forkThread("t1", params);
              }),
    onBoth(R"({"id":2,"method":"thread/archive","params":{"threadId":"t1"}})", "{}", "null",
           [](const auto& object) { return object.archiveThread("t1"); }),
    onBoth(R"({"id":2,"method":"thread/delete","params":{"threadId":"t1"}})", "{}", "null",
           [](const auto& object) { return object.deleteThread("t1"); }),
    onBoth(R"({"id":2,"method":"thread/unarchive","params":{"threadId":"t1"}})", aThread, aThreadRead,
           [](const auto& object) { return object.unarchiveThread("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/unsubscribe","params":{"threadId":"t1"}})", R"({"status":"gone"})",
            [](const Ormel& ormel) { return ormel.unsubscribeThread("t1"); }),
    onBoth(R"({"id":2,"method":"thread/name/set","params":{"threadId":"t1","name":"a \"name\""}})", R"({"more":1})",
           "null", [](const auto& object) { return object.setThreadName("t1", "a \"name\""); }),
    onOrmel(R"({"id":2,"method":"thread/compact/start","params":{"threadId":"t1"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.startThreadCompaction("t1"); }),
    onSession(R"({"id":2,"method":"thread/compact/start","params":{"threadId":"t1"}})", "{}", "null",
              [](const OrmelControlSession& session) { return session.compactThread("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/shellCommand","params":{"threadId":"t1","command":"ls -l"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.runThreadShellCommand("t1", "ls -l"); }),
    onOrmel(
        R"({"id":2,"method":"thread/approveGuardianDeniedAction","params":{"threadId":"t1","event":{"id":[1,null]}}})",
        "{}", "null",
        [](const Ormel& ormel) {
          return ormel.approveGuardianDeniedAction("t1", JSONValue::object({{"id", JSONValue::array({1, nullptr})}}));
        }),
    onOrmel(R"({"id":2,"method":"thread/approveGuardianDeniedAction","params":{"threadId":"t1","event":null}})", "{}",
            "null", [](const Ormel& ormel) { return ormel.approveGuardianDeniedAction("t1", JSONValue()); }),
    onOrmel(R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1"}})", aThread, aThreadRead,
            [](const Ormel& ormel) { return ormel.updateThreadMetadata("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1","gitInfo":{}}})", aThread,
            aThreadRead,
            [](const Ormel& ormel) {
              UpdateThreadMetadataParams params;
              params.gitInfo.emplace();
              return ormel.updateThreadMetadata("t1", params);
            }),
    onOrmel(
        R"({"id":2,"method":"thread/metadata/update","params":{"threadId":"t1","gitInfo":{"branch":"main","sha":null,)"
        R"("originUrl":""}}})",
        aWholeThread,
        [](const Ormel& ormel) {
          UpdateThreadMetadataParams params;
          params.gitInfo.emplace();
          params.gitInfo->branch = ThreadMetadataStringUpdate::value("main");
          params.gitInfo->sha = ThreadMetadataStringUpdate::clear();
          params.gitInfo->originURL = ThreadMetadataStringUpdate::value("");
          return ormel.updateThreadMetadata("t1", params);
        }),
    onOrmel(R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1"}})", "{}",
            [](const Ormel& ormel) { return ormel.updateThreadSettings("t1"); }),
    onOrmel(
        R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1","cwd":"/w","approvalPolicy":"on-request",)"
        R"("approvalsReviewer":"user","sandboxPolicy":null,"permissions":"p","model":"m","serviceTier":"fast",)"
        R"("effort":"xhigh","summary":"auto","collaborationMode":"plan","personality":"none"}})",
        R"({"more":1})", "{}",
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
          return ormel.updateThreadSettings("t1", params);
        }),
    onOrmel(R"({"id":2,"method":"thread/settings/update","params":{"threadId":"t1","approvalPolicy":"never",)"
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
              return ormel.updateThreadSettings("t1", params);
            }),
    onOrmel(R"({"id":2,"method":"thread/inject_items","params":{"threadId":"t1","items":[]}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.injectThreadItems("t1", {}); }),
    onOrmel(
        R"({"id":2,"method":"thread/inject_items","params":{"threadId":"t1","items":[{"a":1},null]}})", R"({"more":1})",
        "null",
        [](const Ormel& ormel) { return ormel.injectThreadItems("t1", {JSONValue::object({{"a", 1}}), JSONValue()}); }),
    onOrmel(R"({"id":2,"method":"thread/turns/list","params":{"threadId":"t1"}})", aPage,
            [](const Ormel& ormel) { return ormel.listThreadTurns("t1"); }),
    onOrmel(
        R"({"id":2,"method":"thread/turns/list","params":{"threadId":"t1","cursor":"c","limit":5,"sortDirection":"desc",)"
        R"("itemsView":"notLoaded"}})",
        pageOfTurns, pageOfTurnsRead,
        [](const Ormel& ormel) {
          ListThreadTurnsParams params;
          params.cursor = "c";
          params.limit = 5;
          params.sortDirection = ThreadTurnSortDirection::desc;
          params.itemsView = ThreadTurnItemsView::notLoaded;
          return ormel.listThreadTurns("t1", params);
        }),
    onOrmel(R"({"id":2,"method":"thread/items/list","params":{"threadId":"t1","turnId":"u1"}})", aPage,
            [](const Ormel& ormel) { return ormel.listThreadTurnItems("t1", "u1"); }),
    onOrmel(R"({"id":2,"method":"thread/items/list","params":{"threadId":"t1","turnId":"u1","cursor":"c","limit":5,)"
            R"("sortDirection":"asc"}})",
            pageOfItems,
            [](const Ormel& ormel) {
              ListThreadTurnItemsParams params;
              params.cursor = "c";
              params.limit = 5;
              params.sortDirection = ThreadTurnSortDirection::asc;
              return ormel.listThreadTurnItems("t1", "u1", params);
            }),
    onOrmel(R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1"}})", aGoal, aGoalRead,
            [](const Ormel& ormel) { return ormel.setThreadGoal("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1","objective":"o","status":"budgetLimited",)"
            R"("tokenBudget":50000}})",
            aWholeGoal,
            [](const Ormel& ormel) {
              SetThreadGoalParams params;
              params.objective = "o";
              params.status = ThreadGoalStatus::budgetLimited;
              params.tokenBudget = 50'000;
              return ormel.setThreadGoal("t1", params);
            }),
    onOrmel(R"({"id":2,"method":"thread/goal/set","params":{"threadId":"t1","tokenBudget":null}})", aGoal, aGoalRead,
            [](const Ormel& ormel) {
              SetThreadGoalParams params;
              params.tokenBudget = ThreadGoalTokenBudgetUpdate::clear();
              return ormel.setThreadGoal("t1", params);
            }),
    onOrmel(R"({"id":2,"method":"thread/goal/get","params":{"threadId":"t1"}})", "{}",
            [](const Ormel& ormel) { return ormel.readThreadGoal("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/goal/get","params":{"threadId":""}})", R"({"goal":null})", "{}",
            [](const Ormel& ormel) { return ormel.readThreadGoal(""); }),
    onOrmel(R"({"id":2,"method":"thread/goal/get","params":{"threadId":"t1"}})", aWholeGoal,
            [](const Ormel& ormel) { return ormel.readThreadGoal("t1"); }),
    onOrmel(R"({"id":2,"method":"thread/goal/clear","params":{"threadId":"t1"}})", R"({"cleared":true})",
            [](const Ormel& ormel) { return ormel.clearThreadGoal("t1"); }),
    onOrmel(R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"uncommittedChanges"}}})",
            aReview, aReviewRead,
            [](const Ormel& ormel) { return ormel.startReview("t1", ReviewTarget::uncommittedChanges()); }),
    onOrmel(
        R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"commit","sha":"abc","title":"t"},)"
        R"("delivery":"detached"}})",
        aWholeReview,
        [](const Ormel& ormel) {
          StartReviewParams params;
          params.delivery = ReviewDelivery::detached;
          return ormel.startReview("t1", ReviewTarget::commit("abc", "t"), params);
        }),
    onOrmel(
        R"({"id":2,"method":"review/start","params":{"threadId":"t1","target":{"type":"baseBranch","branch":"main"},)"
        R"("delivery":"inline"}})",
        aReview, aReviewRead,
        [](const Ormel& ormel) {
          StartReviewParams params;
          params.delivery = ReviewDelivery::inline_;
          return ormel.startReview("t1", ReviewTarget::baseBranch("main"), params);
        }),
    onOrmel(R"({"id":2,"method":"getConversationSummary","params":{}})", R"({"summary":null})",
            [](const Ormel& ormel) { return ormel.getConversationSummary(); }),
    onOrmel(R"({"id":2,"method":"getConversationSummary","params":{"conversationId":"c","rolloutPath":"/r"}})",
            R"({"summary":{"preview":"p"}})",
            [](const Ormel& ormel) {
              GetConversationSummaryParams params;
              params.conversationID = "c";
              params.rolloutPath = "/r";
              return ormel.getConversationSummary(params);
            }),
};

#undef ORMEL_SMALL_THREAD_READ
#undef ORMEL_SMALL_TURN
#undef ORMEL_SMALL_TURN_READ
#undef ORMEL_WHOLE_TURN
#undef ORMEL_WHOLE_THREAD

TEST(ThreadCalls, GoOutExactly) { expectCalls(threadRows); }

TEST(ThreadCalls, FailByTheirRecordAndByTheServersError) { expectFailures(threadRows, threadRecords); }

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
