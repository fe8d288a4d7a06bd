#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace ormel;
using namespace ormel::detail;

TEST(AgentMessagePhase, IsAbsentForNoWordAndForAnUnknownOne) {
  EXPECT_EQ(agentMessagePhase(std::nullopt), std::nullopt);
  EXPECT_EQ(agentMessagePhase("thinking"), std::nullopt);
  EXPECT_EQ(agentMessagePhase(""), std::nullopt);
  EXPECT_EQ(agentMessagePhase(" COMMENTARY\n"), AgentMessagePhase::commentary);
  EXPECT_EQ(agentMessagePhase("final_answer"), AgentMessagePhase::finalAnswer);
  EXPECT_EQ(agentMessagePhase("finalAnswer"), AgentMessagePhase::finalAnswer);
}

TEST(CommandExecutionStatus, IsFailedForAWordThatNobodyKnows) {
  using enum CommandExecutionStatus;
  EXPECT_EQ(commandExecutionStatus("in-progress"), inProgress);
  EXPECT_EQ(commandExecutionStatus("inProgress"), inProgress);
  EXPECT_EQ(commandExecutionStatus(" Completed "), completed);
  EXPECT_EQ(commandExecutionStatus("DECLINED"), declined);
  EXPECT_EQ(commandExecutionStatus("failed"), failed);
  EXPECT_EQ(commandExecutionStatus("running"), failed);
  EXPECT_EQ(commandExecutionStatus(""), failed);
}

TEST(PatchApplyStatus, SharesTheWordsOfCommands) {
  using enum PatchApplyStatus;
  EXPECT_EQ(commandExecutionStatus<PatchApplyStatus>("In_Progress"), inProgress);
  EXPECT_EQ(commandExecutionStatus<PatchApplyStatus>("completed"), completed);
  EXPECT_EQ(commandExecutionStatus<PatchApplyStatus>("de-clined"), declined);
  EXPECT_EQ(commandExecutionStatus<PatchApplyStatus>("applied"), failed);
}

TEST(ToolCallStatuses, AreFailedForAWordThatNobodyKnows) {
  EXPECT_EQ(mcpToolCallStatus("IN_PROGRESS"), McpToolCallStatus::inProgress);
  EXPECT_EQ(mcpToolCallStatus("completed"), McpToolCallStatus::completed);
  EXPECT_EQ(mcpToolCallStatus("declined"), McpToolCallStatus::failed);
  EXPECT_EQ(mcpToolCallStatus<DynamicToolCallStatus>("in progress"), DynamicToolCallStatus::failed);
  EXPECT_EQ(mcpToolCallStatus<DynamicToolCallStatus>("inProgress"), DynamicToolCallStatus::inProgress);
  EXPECT_EQ(mcpToolCallStatus<DynamicToolCallStatus>("Com_pleted"), DynamicToolCallStatus::completed);
}

TEST(CollabAgentTool, IsUnknownForAWordThatNobodyKnows) {
  using enum CollabAgentTool;
  EXPECT_EQ(collabAgentTool("spawn_agent"), spawnAgent);
  EXPECT_EQ(collabAgentTool("sendInput"), sendInput);
  EXPECT_EQ(collabAgentTool("SEND-MESSAGE"), sendMessage);
  EXPECT_EQ(collabAgentTool("followup_task"), followupTask);
  EXPECT_EQ(collabAgentTool("interruptAgent"), interruptAgent);
  EXPECT_EQ(collabAgentTool("list_agents"), listAgents);
  EXPECT_EQ(collabAgentTool("resume_agent"), resumeAgent);
  EXPECT_EQ(collabAgentTool("wait"), wait);
  EXPECT_EQ(collabAgentTool("wait_agent"), wait);
  EXPECT_EQ(collabAgentTool(" closeAgent"), closeAgent);
  EXPECT_EQ(collabAgentTool("dance"), unknown);
  EXPECT_EQ(collabAgentTool("unknown"), unknown);
  EXPECT_EQ(collabAgentTool(""), unknown);
}

TEST(CollabAgentToolCallStatus, IsUnknownForAWordThatNobodyKnows) {
  using enum CollabAgentToolCallStatus;
  EXPECT_EQ(collabAgentToolCallStatus("in_progress"), inProgress);
  EXPECT_EQ(collabAgentToolCallStatus("Completed"), completed);
  EXPECT_EQ(collabAgentToolCallStatus("failed"), failed);
  EXPECT_EQ(collabAgentToolCallStatus("interrupted"), interrupted);
  EXPECT_EQ(collabAgentToolCallStatus("declined"), unknown);
}

TEST(CollabAgentStatus, KnowsSynonyms) {
  using enum CollabAgentStatus;
  EXPECT_EQ(collabAgentStatus("pending_init"), pendingInit);
  EXPECT_EQ(collabAgentStatus("running"), running);
  EXPECT_EQ(collabAgentStatus("In-Progress"), running);
  EXPECT_EQ(collabAgentStatus("interrupted"), interrupted);
  EXPECT_EQ(collabAgentStatus("completed"), completed);
  EXPECT_EQ(collabAgentStatus("errored"), errored);
  EXPECT_EQ(collabAgentStatus("ERROR"), errored);
  EXPECT_EQ(collabAgentStatus("failed"), errored);
  EXPECT_EQ(collabAgentStatus("shutdown"), shutdown);
  EXPECT_EQ(collabAgentStatus("shut_down"), shutdown);
  EXPECT_EQ(collabAgentStatus("closed"), shutdown);
  EXPECT_EQ(collabAgentStatus("not_found"), notFound);
  EXPECT_EQ(collabAgentStatus("weird"), unknown);
}

TEST(SubAgentActivityKind, IsComparedExactlyAndKeepsItsWord) {
  for (const char* word : {"started", "interacted", "interrupted", "completed"}) {
    EXPECT_FALSE(subAgentActivityKind(word).isUnknown()) << word;
    EXPECT_EQ(subAgentActivityKind(word).rawValue, word);
  }
  for (const char* word : {"Started", " completed", "vanished", ""}) {
    EXPECT_TRUE(subAgentActivityKind(word).isUnknown()) << word;
    EXPECT_EQ(subAgentActivityKind(word).rawValue, word);
  }
  EXPECT_EQ(subAgentActivityKind(std::nullopt).rawValue, "");
}

TEST(ParseOptionalInt, TakesWholeNumbersOnly) {
  EXPECT_EQ(parseOptionalInt(JSONValue(2.0)), 2);
  EXPECT_EQ(parseOptionalInt(JSONValue(-3)), -3);
  EXPECT_EQ(parseOptionalInt(JSONValue(1.5)), std::nullopt);
  EXPECT_EQ(parseOptionalInt(JSONValue("2")), std::nullopt);
  EXPECT_EQ(parseOptionalInt(JSONValue(true)), std::nullopt);
  EXPECT_EQ(parseOptionalInt(JSONValue()), std::nullopt);
}

TEST(ParseOptionalInt, GivesNothingForANumberThatDoesNotFit) {
  EXPECT_EQ(parseOptionalInt(JSONValue(-0x1p63)), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(parseOptionalInt(JSONValue(0x1p63)), std::nullopt);
  EXPECT_EQ(parseOptionalInt(JSONValue(-1e300)), std::nullopt);
  EXPECT_EQ(parseOptionalInt(JSONValue(std::numeric_limits<double>::infinity())), std::nullopt);
}

TEST(IsContextCompaction, AsksForBothWords) {
  for (const char* text :
       {"contextcompaction", "contextcompacted", "compactcontext", "contextwindowcompacted", "contextwindowcompaction",
        "context_compaction", "contextCompaction", "context-window-compacted", "CON_TEXT com_PACT"}) {
    EXPECT_TRUE(isContextCompactionItemType(text)) << text;
  }
  for (const char* text : {"context", "compact", "contextcom pact", "agentMessage", ""}) {
    EXPECT_FALSE(isContextCompactionItemType(text)) << text;
  }
  for (const char* method : {"thread/context_compacted", "thread/contextCompaction", "thread/contextWindowCompacted",
                             "turn/contextCompacted", "turn/context-compaction"}) {
    EXPECT_TRUE(isContextCompactionNotificationMethod(method)) << method;
  }
  EXPECT_FALSE(isContextCompactionNotificationMethod("thread/compact/start"));
}

}  // namespace
