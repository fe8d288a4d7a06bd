#include "OrmelSDK/Items/CollaborationItems.h"

#include <gtest/gtest.h>

#include <string_view>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::checkRecord;
using tests::decoded;
using tests::expectWritten;
using tests::failureOf;

TEST(CollaborationItems, FollowTheirTables) {
  checkRecord<CollabAgentState>(R"({"status":"running","message":"m"})");
  checkRecord<CollabAgentToolCallItem>(
      R"({"id":"i","tool":"wait","status":"completed","senderThreadId":"s","receiverThreadIds":["r"],"prompt":"p",
          "model":"m","reasoningEffort":"high","agentsStates":{"r":{"status":"shutdown"}}})");
  checkRecord<SubAgentActivityItem>(R"({"id":"i","kind":"started","agentThreadId":"t","agentPath":"p"})");
}

TEST(CollabAgentToolCallItem, IsWrittenInCamelCaseAndWithoutAType) {
  expectWritten(CollabAgentToolCallItem{"i",
                                        CollabAgentTool::closeAgent,
                                        CollabAgentToolCallStatus::inProgress,
                                        "s",
                                        {},
                                        {},
                                        {},
                                        {},
                                        {{"r", {CollabAgentStatus::notFound, "m"}}}},
                R"({"id":"i","tool":"closeAgent","status":"inProgress","senderThreadId":"s","receiverThreadIds":[],
          "agentsStates":{"r":{"status":"notFound","message":"m"}}})");
}

TEST(CollabAgentToolCallItem, KeepsAnEffortThatNobodyKnows) {
  const auto item = decoded<CollabAgentToolCallItem>(
      R"({"id":"i","tool":"wait","status":"completed","senderThreadId":"s","receiverThreadIds":[],
          "reasoningEffort":"colossal","agentsStates":{}})");
  EXPECT_EQ(item.reasoningEffort, ModelReasoningEffort("colossal"));
}

TEST(CollabAgentTool, HasExactWords) {
  using enum CollabAgentTool;
  tests::checkWords<CollabAgentTool>({{spawnAgent, "spawnAgent"},
                                      {sendInput, "sendInput"},
                                      {sendMessage, "sendMessage"},
                                      {followupTask, "followupTask"},
                                      {interruptAgent, "interruptAgent"},
                                      {listAgents, "listAgents"},
                                      {resumeAgent, "resumeAgent"},
                                      {wait, "wait"},
                                      {closeAgent, "closeAgent"},
                                      {unknown, "unknown"}});
  tests::checkStrictness<CollabAgentTool>("CollabAgentTool", {"spawn_agent", "waitAgent", "Wait", ""});
}

TEST(CollabAgentToolCallStatus, HasExactWords) {
  using enum CollabAgentToolCallStatus;
  tests::checkWords<CollabAgentToolCallStatus>({{inProgress, "inProgress"},
                                                {completed, "completed"},
                                                {failed, "failed"},
                                                {interrupted, "interrupted"},
                                                {unknown, "unknown"}});
  tests::checkStrictness<CollabAgentToolCallStatus>("CollabAgentToolCallStatus", {"in_progress", "Failed", "weird"});
}

TEST(CollabAgentStatus, HasExactWords) {
  using enum CollabAgentStatus;
  tests::checkWords<CollabAgentStatus>({{pendingInit, "pendingInit"},
                                        {running, "running"},
                                        {interrupted, "interrupted"},
                                        {completed, "completed"},
                                        {errored, "errored"},
                                        {shutdown, "shutdown"},
                                        {notFound, "notFound"},
                                        {unknown, "unknown"}});
  tests::checkStrictness<CollabAgentStatus>("CollabAgentStatus", {"pending_init", "error", "closed"});
}

TEST(SubAgentActivityKind, CarriesWordsThatItDoesNotKnow) {
  tests::checkVocabulary<SubAgentActivityKind>({{SubAgentActivityKind::started, "started"},
                                                {SubAgentActivityKind::interacted, "interacted"},
                                                {SubAgentActivityKind::interrupted, "interrupted"},
                                                {SubAgentActivityKind::completed, "completed"}});
  EXPECT_FALSE(SubAgentActivityKind::completed.isUnknown());
  EXPECT_TRUE(SubAgentActivityKind("Started").isUnknown());
  EXPECT_TRUE(SubAgentActivityKind("").isUnknown());
}

TEST(SubAgentActivityItem, SaysItsTypeAndIsWrittenInCamelCase) {
  const auto item =
      decoded<SubAgentActivityItem>(R"({"id":"i","kind":"teleported","agent_thread_id":"t","agent_path":"p"})");
  expectWritten(item, R"({"type":"subAgentActivity","id":"i","kind":"teleported","agentThreadId":"t",
                          "agentPath":"p"})");
  expectWritten(SubAgentActivityItem{"i", SubAgentActivityKind::started, {}, {}},
                R"({"type":"subAgentActivity","id":"i","kind":"started"})");
}

}  // namespace
