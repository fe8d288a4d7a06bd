#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Support/NotifiedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using Events = std::vector<ThreadEvent>;

std::string started(std::string_view item) { return line("item/started", R"({"item":)" + std::string(item) + "}"); }

template <typename Item>
Item lastOf(const std::vector<std::string>& lines) {
  const auto items = itemsOf<Item>(lines);
  if (items.empty()) throw std::runtime_error("no item of the kind was updated");
  return items.back();
}

TEST(AppServerTurnRunItems, ReadTimesOfEitherSpellingThatAreWholeNumbers) {
  const ThreadItem item = SleepItem{"s", {}};
  const std::string sleep = R"("item":{"type":"sleep","id":"s"}})";
  EXPECT_EQ(
      eventsOf({line("item/started", R"({"startedAtMs":5,"started_at_ms":6,)" + sleep),
                line("item/started", R"({"startedAtMs":"5","started_at_ms":6,)" + sleep),
                line("item/started", R"({"startedAtMs":5.5,"completedAtMs":7,)" + sleep),
                line("item/completed", R"({"completed_at_ms":8,)" + sleep),
                line("item/completed", R"({"completedAtMs":9.0,"startedAtMs":1,)" + sleep)}),
      (Events{ItemStartedEvent{item, {}, {}, 5}, ItemStartedEvent{item, {}, {}, 6}, ItemStartedEvent{item, {}, {}, {}},
              ItemCompletedEvent{item, {}, {}, 8}, ItemCompletedEvent{item, {}, {}, 9}}));
}

TEST(AppServerTurnRunItems, ReadIDsOfEitherSpellingThatAreTexts) {
  const ThreadItem item = SleepItem{"s", {}};
  const std::string sleep = R"("item":{"type":"sleep","id":"s"}})";
  EXPECT_EQ(eventsOf({line("item/started", R"({"threadId":"t1","thread_id":"x","turnId":"u1","turn_id":"x",)" + sleep),
                      line("item/started", R"({"threadId":7,"thread_id":"t1","turnId":null,"turn_id":"u1",)" + sleep),
                      line("item/completed", R"({"thread_id":"t1","turn_id":"u1",)" + sleep)}),
            (Events{ItemStartedEvent{item, "t1", "u1", {}}, ItemStartedEvent{item, "t1", "u1", {}},
                    ItemCompletedEvent{item, "t1", "u1", {}}}));
}

TEST(AppServerTurnRunItems, OfKindsThatNobodyKnowsAreToldAsTheyCame) {
  const JSONValue payload = JSONValue::decode(R"({"type":"agent_message","id":"a","text":"x"})");
  const ThreadItem item = UnknownThreadItem{"a", "agent_message", payload};
  const std::string members = R"({"item":)" + payload.encode() + "}";
  EXPECT_EQ(eventsOf({line("item/started", members), line("item/updated", members), line("item/completed", members)}),
            (Events{ItemStartedEvent{item, {}, {}, {}}, ItemUpdatedEvent{item}, ItemCompletedEvent{item, {}, {}, {}}}));
}

TEST(AppServerTurnRunItems, OfACompactionWithoutAnIDTakeThatOfTheTurn) {
  EXPECT_THAT(wordsOf({started(R"({"type":"context_compaction"})")}),
              ElementsAre("item.started context-compaction-u1"));
}

TEST(AppServerTurnRunItems, AreTheBaseOfTheirDeltasInTheirLatestState) {
  const std::string delta = line("item/agentMessage/delta", R"({"itemId":"m","delta":"+"})");
  const auto message = [](const char* method, const char* text) {
    return line(method, std::string(R"({"item":{"type":"agentMessage","id":"m","text":")") + text + "\"}}");
  };
  const auto texts = [](const std::vector<std::string>& lines) {
    std::vector<std::string> all;
    for (const auto& item : itemsOf<AgentMessageItem>(lines)) all.emplace_back(item.text);
    return all;
  };
  EXPECT_THAT(texts({message("item/started", "a"), delta, message("item/updated", "b"), delta,
                     message("item/completed", "c"), delta}),
              ElementsAre("a+", "b", "b+", "c+"));
}

TEST(AppServerTurnRunItems, KeepAllButTheTextOfAMessageThatGrows) {
  const auto message = lastOf<AgentMessageItem>(
      {started(R"({"type":"agentMessage","id":"m","text":"a","phase":"final_answer","delivery":"d",
                   "memoryCitation":{"rolloutIds":["r"]},"questions":[{"title":"q"}]})"),
       line("item/agentMessage/delta", R"({"itemId":"m","delta":"b"})")});
  EXPECT_EQ(message, (AgentMessageItem{"m", "ab", AgentMessagePhase::finalAnswer, MemoryCitation{{}, {"r"}}, "d",
                                       std::vector<AgentMessageQuestion>{{"q", {}}}}));
}

TEST(AppServerTurnRunItems, OfAnotherKindGiveWayToAMessageThatComesInPieces) {
  EXPECT_EQ(lastOf<AgentMessageItem>({started(R"({"type":"plan","id":"m","text":"plan"})"),
                                      line("item/agentMessage/delta", R"({"itemId":"m","delta":"b"})")})
                .text,
            "b");
}

TEST(AppServerTurnRunItems, CollectTheOutputOfACommand) {
  const char* delta = "item/commandExecution/outputDelta";
  const auto command = lastOf<CommandExecutionItem>(
      {started(R"({"type":"commandExecution","id":"c","command":"ls","cwd":"/","processId":"7","commandActions":[1],
                   "aggregatedOutput":"a","status":"inProgress"})"),
       line(delta, R"({"itemId":"c","delta":"b"})"), line(delta, R"({"itemId":"c","delta":7})"),
       line(delta, R"({"itemId":"c","delta":"c\n"})")});
  EXPECT_EQ(command, (CommandExecutionItem{
                         "c", "ls", "/", "7", {JSONValue(1)}, "abc\n", {}, CommandExecutionStatus::inProgress, {}}));
}

TEST(AppServerTurnRunItems, TakeNoOutputAndNoProgressThatBelongToAnotherKind) {
  EXPECT_THAT(wordsOf({started(R"({"type":"sleep","id":"s"})"),
                       line("item/commandExecution/outputDelta", R"({"itemId":"s","delta":"x"})"),
                       line("item/mcpToolCall/progress", R"({"itemId":"s","message":"x"})"),
                       line("item/commandExecution/outputDelta", R"({"itemId":"other","delta":"x"})")}),
              ElementsAre("item.started s"));
}

TEST(AppServerTurnRunItems, HaveTheLatestProgressOfACall) {
  const auto calls = itemsOf<McpToolCallItem>(
      {started(R"({"type":"mcpToolCall","id":"m","server":"s","tool":"t","arguments":{"a":1},"status":"inProgress"})"),
       line("item/mcpToolCall/progress", R"({"itemId":"m","message":"half"})"),
       line("item/mcpToolCall/progress", R"({"itemId":"m","message":"done"})"),
       line("item/mcpToolCall/progress", R"({"itemId":"m"})")});
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_EQ(calls[0].progressMessage, "half");
  EXPECT_EQ(calls[1].progressMessage, "done");
  EXPECT_EQ(calls[2].progressMessage, "");
  EXPECT_EQ(calls[2].arguments, JSONValue::decode(R"({"a":1})"));
  EXPECT_EQ(calls[2].status, McpToolCallStatus::inProgress);
}

TEST(AppServerTurnRunItems, HaveTheLatestChangesOfAPatch) {
  const char* method = "item/fileChange/patchUpdated";
  const auto patches = itemsOf<FileChangeItem>(
      {line(method, R"({"item_id":"f","changes":[{"path":"a","kind":"add"},{"kind":"add"},7,{"path":"b"}]})"),
       line(method, R"({"itemId":"f","item_id":"x","changes":[{"path":"c","kind":{"type":"delete"}}]})"),
       line(method, R"({"itemId":"f","changes":{}})"),
       started(R"({"type":"fileChange","id":"f","changes":[],"status":"declined"})"),
       line(method, R"({"itemId":"f","changes":[{"path":"d"}]})"), started(R"({"type":"sleep","id":"f"})"),
       line(method, R"({"itemId":"f"})")});
  EXPECT_THAT(patches, ElementsAre(FileChangeItem{"f",
                                                  {{"a", PatchChangeKind::add}, {"b", PatchChangeKind::update}},
                                                  PatchApplyStatus::inProgress},
                                   FileChangeItem{"f", {{"c", PatchChangeKind::delete_}}, PatchApplyStatus::inProgress},
                                   FileChangeItem{"f", {}, PatchApplyStatus::inProgress},
                                   FileChangeItem{"f", {{"d", PatchChangeKind::update}}, PatchApplyStatus::declined},
                                   FileChangeItem{"f", {}, PatchApplyStatus::inProgress}));
}

TEST(AppServerTurnRunItems, GrowAPlanFromWhatIsThere) {
  const std::string delta = line("item/plan/delta", R"({"itemId":"p","delta":"+"})");
  EXPECT_EQ(lastOf<PlanItem>({delta, delta}), (PlanItem{"p", "++"}));
  EXPECT_EQ(lastOf<PlanItem>({started(R"({"type":"plan","id":"p","text":"a"})"), delta}), (PlanItem{"p", "a+"}));
  EXPECT_EQ(lastOf<PlanItem>({started(R"({"type":"reasoning","id":"p","summary":["s"],"content":["c"]})"), delta}),
            (PlanItem{"p", "s\nc+"}));
  EXPECT_EQ(lastOf<PlanItem>({started(R"({"type":"sleep","id":"p"})"), delta}), (PlanItem{"p", "+"}));
  EXPECT_EQ(lastOf<PlanItem>({line("item/plan/delta", R"({"itemId":"p"})")}), (PlanItem{"p", ""}));
}

TEST(AppServerTurnRunItems, BeginAReasoningAnewWhereAPlanStood) {
  EXPECT_EQ(lastOf<ReasoningItem>({started(R"({"type":"plan","id":"r","text":"plan"})"),
                                   line("item/reasoning/textDelta", R"({"itemId":"r","delta":"a"})")}),
            (ReasoningItem{"r", {}, {"a"}}));
}

TEST(AppServerTurnRunItems, HaveNoContentInAReasoningWithoutText) {
  for (const char* method : {"item/reasoning/textDelta", "item/reasoning/summaryTextDelta"}) {
    EXPECT_EQ(lastOf<ReasoningItem>({line(method, R"({"itemId":"r"})")}), (ReasoningItem{"r", {}, {}}));
  }
}

TEST(AppServerTurnRunPlan, IsReadFromStepsThatHaveText) {
  const auto events = eventsOf({line("turn/plan/updated", R"({"turnId":"u1","plan":[
      {"step":" a ","text":"x","status":"Completed"},{"text":"b","status":"in_progress"},{"step":7,"text":"c"},
      {"step":"  "},{"step":"","text":"x"},7,"d",{"step":"e","completed":true,"status":"pending"},
      {"step":"f","completed":false,"status":"completed"},{"step":"g","status":" COM_PLETED\n"},
      {"step":"h","completed":"yes","status":"completed"}]})")});
  const ThreadItem list = TodoListItem{
      "turn-plan:u1", {{"a", true}, {"b", false}, {"c", false}, {"e", true}, {"f", false}, {"g", true}, {"h", true}}};
  EXPECT_EQ(events, (Events{ItemStartedEvent{list, {}, {}, {}}}));
}

TEST(AppServerTurnRunPlan, IsEmptyWithoutEntriesAndNeedsTheTurnInCamelCase) {
  const ThreadItem empty = TodoListItem{"turn-plan:u1", {}};
  EXPECT_EQ(eventsOf({line("turn/plan/updated", R"({"turnId":"u1"})"),
                      line("turn/plan/updated", R"({"turnId":"u1","plan":{}})")}),
            (Events{ItemStartedEvent{empty, {}, {}, {}}, ItemUpdatedEvent{empty}}));
  EXPECT_THAT(wordsUpToTheEndOf({line("turn/plan/updated", R"({"turn_id":"u1"})")}),
              ElementsAre("stream error: turn/plan/updated missing turnId"));
}

TEST(AppServerTurnRunCompaction, IsKnownByTheWordsInItsMethod) {
  for (const char* method : {"thread/contextCompacted", "thread/contextCompaction", "thread/context_window_compacted",
                             "turn/contextCompacted", "turn/context-compaction", "threadcontextcompacted",
                             "context/compact", "COMPACT_CONTEXT"}) {
    // A slash is a letter like any other, the words may stand anywhere.
    EXPECT_THAT(wordsOf({line(method, R"({"id":"c"})")}), ElementsAre("item.started c", "item.completed c")) << method;
  }
  for (const char* method : {"thread/compact", "thread/context", "con/text/compact", "thread/contextComp"}) {
    EXPECT_THAT(wordsOf({line(method, R"({"id":"c"})")}), IsEmpty()) << method;
  }
}

TEST(AppServerTurnRunCompaction, TakesItsIDFromWhereItIs) {
  const char* method = "thread/contextCompacted";
  EXPECT_THAT(wordsOf({line(method, R"({"id":"x","item":{"id":"a"},"compaction":{"id":"x"},"context":{"id":"x"}})"),
                       line(method, R"({"id":"x","item":7,"compaction":{"id":"b"},"context":{"id":"x"}})"),
                       line(method, R"({"id":"x","context":{"id":"c"}})"), line(method, R"({"id":"d"})")}),
              ElementsAre("item.started a", "item.completed a", "item.started b", "item.completed b", "item.started c",
                          "item.completed c", "item.started d", "item.completed d"));
}

TEST(AppServerTurnRunCompaction, HasANewIDEachTimeItNamesNone) {
  const auto words = wordsOf(
      {line("thread/contextCompacted", R"({"id":"x","item":{}})"), line("thread/contextCompacted", R"({"id":7})")});
  ASSERT_EQ(words.size(), 4U);
  for (const std::string& word : {words[0], words[2]}) {
    EXPECT_THAT(word, StartsWith("item.started context-compaction-notification-"));
  }
  EXPECT_NE(words[0], words[2]);
}

TEST(AppServerTurnRunCompaction, IsNotToldAgainForAnItemThatIsThere) {
  EXPECT_THAT(wordsOf({started(R"({"type":"contextCompaction","id":"c"})"),
                       line("thread/contextCompacted", R"({"item":{"id":"c"}})")}),
              ElementsAre("item.started c"));
}

}  // namespace
