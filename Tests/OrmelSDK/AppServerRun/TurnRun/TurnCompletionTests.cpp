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

using Events = std::vector<ThreadEvent>;

std::string completed(std::string_view members) {
  return line("turn/completed", R"({"threadId":"t1","turn":{"id":"u1")" + std::string(members) + "}}");
}

std::string plan(std::string_view step) {
  return line("turn/plan/updated", R"({"turnId":"u1","plan":[{"step":")" + std::string(step) + R"("}]})");
}

ThreadEvent ended(ThreadItem item) { return ItemCompletedEvent{std::move(item), {}, {}, {}}; }

TEST(AppServerTurnRunCompletion, TellsTheItemsThatHaveNoNotificationOfTheirOwn) {
  EXPECT_EQ(eventsOf({completed(R"(,"items":[{"type":"agentMessage","id":"m","text":"x"},
                                             {"type":"sleep","id":"s","durationMs":1},7,{"type":"sleep"},
                                             {"type":"contextCompaction","id":"c"},{"type":"todoList","id":"l"},
                                             {"type":"sleep","id":"s","durationMs":2},{"type":"error","id":"e"}])")},
                     "finished"),
            (Events{ended(SleepItem{"s", 2}), ended(ContextCompactionItem{"c"}), TurnCompletedEvent{}}));
}

TEST(AppServerTurnRunCompletion, RepeatsACompactionThatWasTold) {
  const std::string item = R"({"item":{"type":"contextCompaction","id":"c"}})";
  EXPECT_THAT(wordsUpToTheEndOf({line("item/completed", item), line("thread/contextCompacted", R"({"id":"c"})"),
                                 completed(R"(,"items":[{"type":"contextCompaction","id":"c"}])")}),
              ElementsAre("item.completed c", "item.completed c", "turn.completed", "end"));
}

TEST(AppServerTurnRunCompletion, NamesACompactionWithoutAnIDAfterTheTurn) {
  EXPECT_THAT(wordsUpToTheEndOf({completed(R"(,"items":[{"type":"context_compaction"}])")}),
              ElementsAre("item.completed context-compaction-u1", "turn.completed", "end"));
}

TEST(AppServerTurnRunCompletion, EndsThePlanOnce) {
  const ThreadItem old = TodoListItem{"turn-plan:u1", {{"a", false}}};
  const ThreadItem last = TodoListItem{"turn-plan:u1", {{"b", true}}};
  const ThreadEvent begun = ItemStartedEvent{old, {}, {}, {}};
  EXPECT_EQ(eventsOf({plan("a"), completed("")}, "finished"), (Events{begun, ended(old), TurnCompletedEvent{}}));
  EXPECT_EQ(eventsOf({plan("a"), completed(R"(,"plan":[])")}, "finished"),
            (Events{begun, ended(old), TurnCompletedEvent{}}));
  EXPECT_EQ(eventsOf({plan("a"), completed(R"(,"plan":[{"step":"b","status":"completed"}])")}, "finished"),
            (Events{begun, ended(last), TurnCompletedEvent{}}));
  EXPECT_EQ(eventsOf({completed(R"(,"plan":[{"step":"b","completed":true}])")}, "finished"),
            (Events{ended(last), TurnCompletedEvent{}}));
  EXPECT_EQ(eventsOf({completed("")}, "finished"), (Events{TurnCompletedEvent{}}));
}

TEST(AppServerTurnRunCompletion, TellsThePlanAfterTheItemsOfTheTurn) {
  EXPECT_THAT(wordsUpToTheEndOf({completed(R"(,"plan":[{"step":"b"}],"items":[{"type":"sleep","id":"s"}])")}),
              ElementsAre("item.completed s", "item.completed turn-plan:u1", "turn.completed", "end"));
}

TEST(AppServerTurnRunCompletion, EndsThePlanOfATurnThatFails) {
  EXPECT_THAT(
      wordsUpToTheEndOf({plan("a"), completed(R"(,"status":"failed")")}),
      ElementsAre("item.started turn-plan:u1", "item.completed turn-plan:u1", "turn.failed Turn failed", "end"));
}

TEST(AppServerTurnRunCompletion, EndsThePlanOfATurnThatIsNamedBesideIt) {
  EXPECT_THAT(wordsUpToTheEndOf({plan("a"), line("turn/completed", R"({"turn_id":"u1","turn":{"plan":[]}})")}),
              ElementsAre("item.started turn-plan:u1", "item.completed turn-plan:u1", "turn.completed", "end"));
}

TEST(AppServerTurnRunCompletion, ReadsTheStatusExactlyAndTakesNoneForAGoodEnd) {
  EXPECT_THAT(wordsUpToTheEndOf({completed("")}), ElementsAre("turn.completed", "end"));
  EXPECT_THAT(wordsUpToTheEndOf({completed(R"(,"status":7)")}), ElementsAre("turn.completed", "end"));
  for (const std::string status : {"Completed", "in_progress", "", "weird"}) {
    EXPECT_THAT(wordsUpToTheEndOf({completed(R"(,"status":")" + status + "\"")}),
                ElementsAre("turn.failed Unknown turn completion status: " + status, "end"));
  }
}

TEST(AppServerTurnRunCompletion, SaysWhyATurnFailed) {
  for (const char* error : {R"("no tokens")", "null", R"({"message":7})", "{}"}) {
    EXPECT_THAT(wordsUpToTheEndOf({completed(std::string(R"(,"status":"failed","error":)") + error)}),
                ElementsAre("turn.failed Turn failed", "end"));
  }
  EXPECT_THAT(wordsUpToTheEndOf({completed(R"(,"status":"failed","error":{"message":"no tokens"})")}),
              ElementsAre("turn.failed no tokens", "end"));
}

TEST(AppServerTurnRunCompletion, CarriesTheUsageThatWasToldLast) {
  const auto usage = [](std::string_view value) {
    return line("thread/tokenUsage/updated", R"({"tokenUsage":)" + std::string(value) + "}");
  };
  const std::string first = usage(R"({"modelContextWindow":9,"last":{"totalTokens":6,"inputTokens":1,
                                      "cachedInputTokens":2,"outputTokens":3}})");
  const std::string second = usage(R"({"last":{"inputTokens":4,"cachedInputTokens":5,"outputTokens":6}})");
  const std::string interrupted = completed(R"(,"status":"interrupted")");
  EXPECT_EQ(eventsOf({first, completed("")}, "finished"), (Events{TurnCompletedEvent{{6, 1, 2, 3, 9}}}));
  EXPECT_EQ(eventsOf({first, second, interrupted}, "finished"), (Events{TurnCompletedEvent{{{}, 4, 5, 6, {}}}}));
  EXPECT_EQ(eventsOf({first, usage(R"({"last":{"inputTokens":4,"outputTokens":6}})"), completed("")}, "finished"),
            (Events{TurnCompletedEvent{}}));
  EXPECT_EQ(eventsOf({first, usage("null"), second, completed("")}, "finished"),
            (Events{TurnCompletedEvent{{{}, 4, 5, 6, {}}}}));
}

TEST(AppServerTurnRunCompletion, ForgetsUsageAndPlanWithTheOperation) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.startTurn();
  engine.notify("thread/tokenUsage/updated",
                R"({"tokenUsage":{"last":{"inputTokens":1,"cachedInputTokens":2,"outputTokens":3}}})");
  engine.write(plan("a") + "\n");
  engine.completeTurn();
  auto events = engine.end(engine.turn()).events;
  engine.completeTurn();
  Events all;
  for (const ThreadEvent& event : events) all.push_back(event);
  EXPECT_EQ(all, (Events{ThreadStartedEvent{"t1", {}, {}}, TurnCompletedEvent{}}));
}

/// The events of a turn that the application has interrupted.
std::vector<std::string> wordsOfInterrupted(const std::vector<std::string>& lines) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  const auto heard = engine.startTurn();
  engine.write(plan("a") + "\n");
  engine.interrupt();
  for (const std::string& text : lines) engine.write(text + "\n");
  EXPECT_EQ(engine.server.started(), 1U);
  std::vector<std::string> words = *heard;
  words.erase(words.begin(), words.begin() + 2);
  return words;
}

TEST(AppServerTurnRunCompletion, IsAnAbortWhenTheApplicationAskedForTheInterrupt) {
  EXPECT_THAT(wordsOfInterrupted({completed(R"(,"status":"interrupted","items":[{"type":"sleep","id":"s"}])")}),
              ElementsAre("item.completed s", "item.completed turn-plan:u1", "aborted"));
}

TEST(AppServerTurnRunCompletion, IsWhatTheServerSaysWhenTheTurnWasFasterThanTheInterrupt) {
  EXPECT_THAT(wordsOfInterrupted({completed(R"(,"status":"completed")")}),
              ElementsAre("item.completed turn-plan:u1", "turn.completed", "end"));
  EXPECT_THAT(wordsOfInterrupted({completed(R"(,"status":"failed","error":{"message":"x"})")}),
              ElementsAre("item.completed turn-plan:u1", "turn.failed x", "end"));
  EXPECT_THAT(wordsOfInterrupted({completed(R"(,"status":"weird")")}),
              ElementsAre("item.completed turn-plan:u1", "turn.failed Unknown turn completion status: weird", "end"));
}

TEST(AppServerTurnRunCompletion, StartsTheTurnWithItsWindowIfThatIsANumber) {
  EXPECT_EQ(eventsOf({line("turn/started", R"({"turn":{"id":"u1"}})"),
                      line("turn/started", R"({"turn":{"id":"u1","modelContextWindow":"9"}})"),
                      line("turn/started", R"({"turn":{"id":"u1","modelContextWindow":9}})")}),
            (Events{TurnStartedEvent{}, TurnStartedEvent{}, TurnStartedEvent{9}}));
}

}  // namespace
