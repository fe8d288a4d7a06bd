#include "OrmelSDK/AppServerRun/Parsing/ThreadItemDeltas.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace ormel;
using namespace ormel::detail;

class DeltaOfAGrowingText : public testing::Test {
 protected:
  SharedTextSnapshots snapshots;
};
class MergeAgentMessageDelta : public DeltaOfAGrowingText {};
class MergeCommandOutputDelta : public DeltaOfAGrowingText {};

TEST_F(MergeAgentMessageDelta, BeginsAMessageThatWasNotThere) {
  AgentMessageItem expected;
  expected.id = "a";
  expected.text = "x";
  ThreadItem nothing;
  mergeAgentMessageDelta(nothing, "a", "x", snapshots);
  EXPECT_EQ(nothing, expected);
  ThreadItem plan = PlanItem{"a", "other"};
  mergeAgentMessageDelta(plan, "a", "x", snapshots);
  EXPECT_EQ(plan, expected);
}

TEST_F(MergeAgentMessageDelta, KeepsAllButTheText) {
  AgentMessageItem message;
  message.id = "a";
  message.text = "x";
  message.phase = AgentMessagePhase::commentary;
  message.memoryCitation = MemoryCitation{{}, {"r"}};
  message.delivery = "d";
  message.questions.emplace();
  const ThreadItem before = message;
  ThreadItem merged = before;
  mergeAgentMessageDelta(merged, "a", "y", snapshots);
  EXPECT_EQ(before, message);
  message.text = "xy";
  EXPECT_EQ(merged, message);
}

TEST_F(MergeAgentMessageDelta, ExtendsTheTextInPlace) {
  ThreadItem latest;
  mergeAgentMessageDelta(latest, "a", std::string(1000, 'x'), snapshots);
  const ThreadItem first = latest;
  for (int i = 0; i < 10; ++i) mergeAgentMessageDelta(latest, "a", "", snapshots);
  EXPECT_EQ(first.agentMessageText()->view().data(), latest.agentMessageText()->view().data());
}

TEST_F(MergeCommandOutputDelta, ExtendsTheOutputOfACommand) {
  const CommandExecutionItem command{"c", "ls", "/", "p", {JSONValue(1)}, "o", 3, CommandExecutionStatus::inProgress,
                                     4};
  ThreadItem merged = command;
  CommandExecutionItem expected = command;
  expected.aggregatedOutput = "op";
  EXPECT_TRUE(mergeCommandOutputDelta(merged, "p", snapshots));
  EXPECT_EQ(merged, expected);
}

TEST_F(MergeCommandOutputDelta, DropsTheOutputOfNoCommand) {
  const ThreadItem plan = PlanItem{"c", ""};
  ThreadItem merged = plan;
  EXPECT_FALSE(mergeCommandOutputDelta(merged, "p", snapshots));
  EXPECT_EQ(merged, plan);
}

TEST(MergeMcpToolCallProgress, ReplacesTheMessageOfACall) {
  McpToolCallItem call;
  call.id = "m";
  call.server = "s";
  call.progressMessage = "old";
  ThreadItem merged = call;
  call.progressMessage = "new";
  EXPECT_TRUE(mergeMcpToolCallProgress(merged, "new"));
  EXPECT_EQ(merged, call);
}

TEST(MergeMcpToolCallProgress, DropsTheProgressOfNoCall) {
  const ThreadItem plan = PlanItem{"m", ""};
  ThreadItem merged = plan;
  EXPECT_FALSE(mergeMcpToolCallProgress(merged, "p"));
  EXPECT_EQ(merged, plan);
}

TEST(MergeFileChangePatch, ReplacesTheChangesAndKeepsTheStatus) {
  const JSONValue changes = JSONValue::decode(R"([{"path":"b","kind":"add"},{"kind":"add"}])");
  const ThreadItem stored = FileChangeItem{"f", {{"a", PatchChangeKind::update}}, PatchApplyStatus::declined};
  EXPECT_EQ(mergeFileChangePatch(&stored, "f", changes.arrayValue()),
            (FileChangeItem{"f", {{"b", PatchChangeKind::add}}, PatchApplyStatus::declined}));
  EXPECT_EQ(mergeFileChangePatch(nullptr, "f", changes.arrayValue()),
            (FileChangeItem{"f", {{"b", PatchChangeKind::add}}, PatchApplyStatus::inProgress}));
  EXPECT_EQ(mergeFileChangePatch(&stored, "f", nullptr), (FileChangeItem{"f", {}, PatchApplyStatus::declined}));
}

TEST(MergeReasoningLikeDelta, GathersTextInOneContent) {
  const ThreadItem one = mergeReasoningLikeDelta(nullptr, "r", "a", false);
  const ThreadItem two = mergeReasoningLikeDelta(&one, "r", "b", false);
  EXPECT_EQ(two, (ReasoningItem{"r", {}, {"ab"}}));
  EXPECT_EQ(mergeReasoningLikeDelta(nullptr, "r", "", false), (ReasoningItem{"r", {}, {}}));
}

TEST(MergeReasoningLikeDelta, JoinsTheSummaryAndTheContentOfAReasoning) {
  const ThreadItem stored = ReasoningItem{"r", {"s"}, {"c"}};
  EXPECT_EQ(mergeReasoningLikeDelta(&stored, "r", "d", false), (ReasoningItem{"r", {}, {"s\ncd"}}));
  EXPECT_EQ(stored, (ReasoningItem{"r", {"s"}, {"c"}}));
}

TEST(MergeReasoningLikeDelta, ContinuesAPlanOnlyInAPlan) {
  const ThreadItem plan = PlanItem{"p", "a"};
  EXPECT_EQ(mergeReasoningLikeDelta(&plan, "p", "b", true), (PlanItem{"p", "ab"}));
  EXPECT_EQ(mergeReasoningLikeDelta(&plan, "p", "b", false), (ReasoningItem{"p", {}, {"b"}}));
  const ThreadItem reasoning = ReasoningItem{"p", {"s"}, {}};
  EXPECT_EQ(mergeReasoningLikeDelta(&reasoning, "p", "b", true), (PlanItem{"p", "sb"}));
  EXPECT_EQ(mergeReasoningLikeDelta(nullptr, "p", "", true), (PlanItem{"p", ""}));
}

}  // namespace
