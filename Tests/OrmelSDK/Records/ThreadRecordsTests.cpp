#include "OrmelSDK/Records/ThreadRecords.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>

#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"
#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;

constexpr std::string_view recordedItem = R"({"type":"reasoning","id":"i","summary":["s"],"content":[]})";
constexpr std::string_view recordedGoal =
    R"({"threadId":"t","objective":"o","status":"active","tokenBudget":9,"tokensUsed":1,"timeUsedSeconds":2,)"
    R"("createdAt":3,"updatedAt":4})";
constexpr std::string_view status = R"({"type":"active","activeFlags":["waiting"]})";
constexpr std::string_view gitInfo = R"({"sha":"abc","branch":"main","originUrl":"ssh://host/path"})";
constexpr std::string_view turnError =
    R"({"message":"m","ormelErrorInfo":{"kind":"overload"},"additionalDetails":"more"})";

std::string turn() {
  return R"({"id":"u","items":[)" + std::string(recordedItem) +
         R"(],"itemsView":"summary","status":"failed","error":)" + std::string(turnError) +
         R"(,"startedAt":1.5,"completedAt":2.5,"durationMs":1000})";
}

std::string thread() {
  return R"({"id":"t","sessionId":"s","forkedFromId":"f","parentThreadId":"p","preview":"hello","ephemeral":true,)"
         R"("modelProvider":"mp","createdAt":1.5,"updatedAt":2.5,"recencyAt":3.5,"status":)" +
         std::string(status) +
         R"(,"path":"/t.jsonl","cwd":"/w","cliVersion":"1.2","source":{"custom":1},"threadSource":"user",)"
         R"("agentNickname":"n","agentRole":"r","gitInfo":)" +
         std::string(gitInfo) + R"(,"name":"N","turns":[)" + turn() + "]}";
}

/// `member` in an object that is a page.
std::string page(const std::string& element) {
  return R"({"data":[)" + element + R"(],"nextCursor":"n","backwardsCursor":"b"})";
}

TEST(ThreadRecords, FollowTheirTables) {
  tests::checkRecord<OrmelThreadStatus>(status);
  tests::checkRecord<OrmelThreadGitInfo>(gitInfo);
  tests::checkRecord<OrmelThreadRecord>(thread());
  tests::checkRecord<ThreadListResponse>(page(thread()));
  tests::checkRecord<ThreadReadResponse>(R"({"thread":)" + thread() + "}");
  tests::checkRecord<ThreadForkResponse>(
      R"({"thread":)" + thread() +
      R"(,"model":"m","modelProvider":"mp","serviceTier":"flex","cwd":"/w","instructionSources":["/AGENTS.md"],)"
      R"("approvalPolicy":"never","approvalsReviewer":"auto_review","sandbox":{"type":"readOnly"},)"
      R"("reasoningEffort":"custom"})");
  tests::checkRecord<ThreadUnsubscribeResponse>(R"({"status":"unsubscribed"})");
  tests::checkRecord<ThreadGoalSetResponse>(R"({"goal":)" + std::string(recordedGoal) + "}");
  tests::checkRecord<ThreadGoalGetResponse>(R"({"goal":)" + std::string(recordedGoal) + "}");
  tests::checkRecord<ThreadGoalClearResponse>(R"({"cleared":true})");
  tests::checkRecord<ConversationSummaryResponse>(R"({"summary":{"text":"s"}})");
}

TEST(ThreadTurnRecords, FollowTheirTables) {
  tests::checkRecord<ThreadTurnError>(turnError);
  tests::checkRecord<ThreadTurn>(turn());
  tests::checkRecord<ThreadItemEntry>(R"({"turnId":"u","item":)" + std::string(recordedItem) + "}");
  tests::checkRecord<ThreadTurnItemsListResponse>(page(R"({"turnId":"u","item":)" + std::string(recordedItem) + "}"));
  tests::checkRecord<LegacyThreadTurnItemsListResponse>(page(std::string(recordedItem)));
  tests::checkRecord<ThreadTurnsListResponse>(page(turn()));
  tests::checkRecord<ReviewStartResponse>(R"({"turn":)" + turn() + R"(,"reviewThreadId":"r"})");
}

TEST(ThreadRecords, GiveNeutralDefaultsForAllButTheId) {
  const auto record = tests::decoded<OrmelThreadRecord>(R"({"id":"t"})");
  EXPECT_EQ(record.id, "t");
  EXPECT_EQ(record.sessionID, "");
  EXPECT_EQ(record.preview, "");
  EXPECT_EQ(record.modelProvider, "");
  EXPECT_EQ(record.cwd, "");
  EXPECT_EQ(record.cliVersion, "");
  EXPECT_FALSE(record.ephemeral);
  EXPECT_EQ(record.createdAt, 0);
  EXPECT_EQ(record.updatedAt, 0);
  EXPECT_EQ(record.status, (OrmelThreadStatus{"unknown", {}}));
  EXPECT_TRUE(record.turns.empty());
  OrmelThreadRecord expected;
  expected.id = "t";
  EXPECT_EQ(record, expected);
}

TEST(ThreadRecords, RequireTheId) {
  EXPECT_EQ(tests::failureOf<OrmelThreadRecord>("{}"), "No value is associated with the key 'id'.");
  EXPECT_EQ(tests::failureOf<ThreadReadResponse>(R"({"thread":{"name":"n"}})"),
            "No value is associated with the key 'id'.");
}

TEST(ThreadRecords, TakeANullForAnAbsentValue) {
  EXPECT_EQ(tests::decoded<OrmelThreadRecord>(R"({"id":"t","status":null,"turns":null,"createdAt":null,"cwd":null})"),
            tests::decoded<OrmelThreadRecord>(R"({"id":"t"})"));
}

TEST(ThreadRecords, LeaveTheStatusOfAThreadUninterpreted) {
  const auto record = tests::decoded<OrmelThreadRecord>(R"({"id":"t","status":{"type":"Future_State"}})");
  EXPECT_EQ(record.status, (OrmelThreadStatus{"Future_State", {}}));
  EXPECT_EQ(tests::failureOf<OrmelThreadRecord>(R"({"id":"t","status":{"activeFlags":[]}})"),
            "No value is associated with the key 'type'.");
}

TEST(ThreadRecords, ReadEveryKindOfApprovalPolicyOfAFork) {
  const auto fork = [](const std::string& member) {
    return R"({"thread":{"id":"t"},"model":"m","modelProvider":"p","cwd":"/","instructionSources":[])" + member + "}";
  };
  EXPECT_EQ(tests::decoded<ThreadForkResponse>(fork("")).approvalPolicy, std::nullopt);
  EXPECT_EQ(tests::decoded<ThreadForkResponse>(fork(R"(,"approvalPolicy":"on-failure")")).approvalPolicy,
            ApprovalMode::onRequest);
  EXPECT_EQ(tests::failureOf<ThreadForkResponse>(fork(R"(,"approvalPolicy":"sometimes")")),
            "Unsupported approval policy");
  EXPECT_EQ(tests::failureOf<ThreadForkResponse>(fork(R"(,"approvalsReviewer":"nobody")")),
            "Cannot initialize ApprovalsReviewer from invalid String value nobody");
}

TEST(ThreadRecords, ReadAnAbsentGoalOnlyWhereThereMayBeNone) {
  EXPECT_EQ(tests::decoded<ThreadGoalGetResponse>(R"({"goal":null})").goal, std::nullopt);
  EXPECT_EQ(tests::decoded<ThreadGoalGetResponse>("{}").goal, std::nullopt);
  EXPECT_EQ(tests::failureOf<ThreadGoalSetResponse>("{}"), "No value is associated with the key 'goal'.");
  EXPECT_THROW(tests::decoded<ThreadGoalSetResponse>(R"({"goal":null})"), DecodingError);
}

TEST(ThreadRecords, KeepASummaryWhole) {
  EXPECT_EQ(tests::decoded<ConversationSummaryResponse>(R"({"summary":[1,{"x":null}]})").summary,
            JSONValue::decode(R"([1,{"x":null}])"));
  EXPECT_EQ(tests::decoded<ConversationSummaryResponse>(R"({"summary":null})").summary, JSONValue());
}

TEST(ThreadTurnStatus, IsReadInAnySpelling) {
  tests::checkWords<ThreadTurnStatus>({{ThreadTurnStatus::completed, "completed"},
                                       {ThreadTurnStatus::interrupted, "interrupted"},
                                       {ThreadTurnStatus::failed, "failed"},
                                       {ThreadTurnStatus::inProgress, "inProgress"},
                                       {ThreadTurnStatus::unknown, "unknown"}});
  tests::checkTolerance<ThreadTurnStatus>({{"in_progress", ThreadTurnStatus::inProgress},
                                           {"IN-PROGRESS", ThreadTurnStatus::inProgress},
                                           {"inprogress", ThreadTurnStatus::inProgress},
                                           {" \n\tCompleted\r\n", ThreadTurnStatus::completed},
                                           {"Interrupted", ThreadTurnStatus::interrupted},
                                           {"_fai-led_", ThreadTurnStatus::failed},
                                           {"in progress", ThreadTurnStatus::unknown},
                                           {"future", ThreadTurnStatus::unknown},
                                           {"", ThreadTurnStatus::unknown}});
}

TEST(ThreadTurn, RequiresAStatus) {
  EXPECT_EQ(tests::failureOf<ThreadTurn>(R"({"id":"u"})"), "No value is associated with the key 'status'.");
  EXPECT_EQ(tests::failureOf<ThreadTurn>(R"({"id":"u","status":3})"), "Expected String but found a number.");
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"in_progress"})").status, ThreadTurnStatus::inProgress);
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"new"})").status, ThreadTurnStatus::unknown);
}

TEST(ThreadTurn, IsReadWithNothingButIdAndStatus) {
  ThreadTurn expected;
  expected.id = "u";
  expected.status = ThreadTurnStatus::completed;
  expected.itemsView = ThreadTurnItemsView::full;
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed"})"), expected);
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed","items":[]})"), expected);
}

TEST(ThreadTurn, ReadsBothSpellingsOfItsDuration) {
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed","duration_ms":7})").durationMilliseconds, 7);
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed","durationMs":5,"duration_ms":7})")
                .durationMilliseconds,
            5);
  EXPECT_EQ(tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed"})").durationMilliseconds, std::nullopt);
  ThreadTurn written;
  written.durationMilliseconds = 5;
  const JSONValue object = encode(written);
  EXPECT_EQ(*object.find("durationMs"), JSONValue(5));
  EXPECT_EQ(object.find("duration_ms"), nullptr);
  EXPECT_EQ(tests::failureOf<ThreadTurn>(R"({"id":"u","status":"completed","durationMs":0.5})"),
            "The number 0.5 does not fit in Int.");
}

TEST(ThreadTurn, HasAClosedListOfViews) {
  tests::checkWords<ThreadTurnItemsView>({{ThreadTurnItemsView::notLoaded, "notLoaded"},
                                          {ThreadTurnItemsView::summary, "summary"},
                                          {ThreadTurnItemsView::full, "full"}});
  tests::checkStrictness<ThreadTurnItemsView>("ThreadTurnItemsView", {"not_loaded", "Full", "partial"});
}

TEST(ThreadTurn, FailsAWholePageForOneElement) {
  const std::string good = turn();
  EXPECT_EQ(tests::failureOf<ThreadTurnsListResponse>(R"({"data":[)" + good + R"(,{"id":"u"}]})"),
            "No value is associated with the key 'status'.");
  EXPECT_EQ(tests::failureOf<ThreadListResponse>(R"({"data":[{"id":"t"},{}]})"),
            "No value is associated with the key 'id'.");
  EXPECT_EQ(tests::failureOf<LegacyThreadTurnItemsListResponse>(R"({"data":[{"type":"future"}]})"),
            "Unknown item type: future");
  EXPECT_EQ(tests::failureOf<ThreadTurnItemsListResponse>(R"({"data":[{"turnId":"u","item":{"type":"future"}}]})"),
            "Unknown item type: future");
}

TEST(ThreadTurn, NamesThePathToAFailure) {
  try {
    (void)tests::decoded<ThreadReadResponse>(
        R"({"thread":{"id":"t","turns":[{"id":"u","status":"failed"},{"id":"v","status":"failed","error":{}}]}})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Kind::keyNotFound);
    EXPECT_EQ(error.subject(), "message");
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"thread", "turns", "Index 1", "error"}));
  }
}

TEST(ThreadTurn, KeepsItemsOfTypesThatNobodyKnows) {
  const auto decodedTurn =
      tests::decoded<ThreadTurn>(R"({"id":"u","status":"completed","items":[{"type":"future_thing","id":"x","a":1}]})");
  ASSERT_EQ(decodedTurn.items.size(), 1u);
  EXPECT_EQ(encode(decodedTurn.items.front()), JSONValue::decode(R"({"type":"future_thing","id":"x","a":1})"));
}

TEST(EmptyResponses, ReadAnyObjectAndNothingElse) {
  for (const std::string_view text : {"{}", R"({"future":[1,2]})"}) {
    EXPECT_EQ(tests::decoded<EmptyRPCResponse>(text), EmptyRPCResponse());
    EXPECT_EQ(tests::decoded<ConfigWriteAck>(text), ConfigWriteAck());
    EXPECT_EQ(tests::decoded<ThreadSettingsUpdateResponse>(text), ThreadSettingsUpdateResponse());
  }
  EXPECT_EQ(encode(EmptyRPCResponse()), JSONValue::object());
  EXPECT_EQ(tests::failureOf<EmptyRPCResponse>("[]"), "Expected EmptyRPCResponse but found an array.");
  EXPECT_EQ(tests::failureOf<ConfigWriteAck>("3"), "Expected ConfigWriteAck but found a number.");
  EXPECT_EQ(tests::failureOf<ThreadSettingsUpdateResponse>("true"),
            "Expected ThreadSettingsUpdateResponse but found a boolean.");
  EXPECT_THROW(tests::decoded<EmptyRPCResponse>("null"), DecodingError);
}

TEST(ThreadRecords, ReadThousandsOfThreadsOfAPage) {
  constexpr int count = 5000;
  std::string text = R"({"data":[)";
  for (int i = 0; i < count; ++i) text += (i > 0 ? "," : "") + thread();
  const auto read = tests::decoded<ThreadListResponse>(text + "]}");
  ASSERT_EQ(read.data.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(read.data.back(), tests::decoded<OrmelThreadRecord>(thread()));
  EXPECT_EQ(read.nextCursor, std::nullopt);
}

TEST(ThreadRecords, KeepASourceAsDeepAsCanBeRead) {
  constexpr std::size_t depth = JSONValue::maximumDecodingDepth - 1;
  const std::string source = std::string(depth, '[') + std::string(depth, ']');
  const auto record = tests::decoded<OrmelThreadRecord>(R"({"id":"t","source":)" + source + "}");
  EXPECT_EQ(record.source, JSONValue::decode(source));
  EXPECT_EQ(decode<OrmelThreadRecord>(encode(record)), record);
}

TEST(ThreadRecords, StreamInOneReadableLine) {
  std::ostringstream stream;
  stream << OrmelThreadStatus{"idle", {"a"}} << ' ' << ThreadTurnStatus::inProgress << ' ' << ConfigWriteAck();
  EXPECT_EQ(stream.str(),
            R"(OrmelThreadStatus {"type":"idle","activeFlags":["a"]} ThreadTurnStatus "inProgress" ConfigWriteAck {})");
}

}  // namespace
