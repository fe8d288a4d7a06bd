#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Support/NotifiedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AppServerTurnRunNotifications, ThatLackWhatTheyAreAboutFailTheOperation) {
  const std::pair<std::string, const char*> cases[] = {
      {line("serverRequest/resolved", "{}"), "serverRequest/resolved missing requestId"},
      {line("serverRequest/resolved", R"({"requestId":true})"), "serverRequest/resolved missing requestId"},
      {line("thread/started", R"({"thread":{}})"), "Invalid thread object from app-server"},
      {line("thread/goal/updated", "{}"), "thread/goal/updated missing threadId"},
      {line("thread/goal/updated", R"({"thread_id":"t1"})"), "thread/goal/updated missing goal"},
      {line("thread/goal/cleared", "{}"), "thread/goal/cleared missing threadId"},
      {line("thread/settings/updated", "{}"), "thread/settings/updated missing threadId"},
      {line("thread/settings/updated", R"({"threadId":"t1"})"), "thread/settings/updated missing threadSettings"},
      {line("hook/started", "{}"), "hook/started missing run payload"},
      {line("hook/completed", "{}"), "hook/completed missing run payload"},
      {line("item/agentMessage/delta", "{}"), "agentMessage delta missing itemId"},
      {line("item/agentMessage/delta", R"({"item_id":"m1"})"), "agentMessage delta missing itemId"},
      {line("item/commandExecution/outputDelta", "{}"), "commandExecution delta missing itemId"},
      {line("item/mcpToolCall/progress", "{}"), "mcpToolCall progress missing itemId"},
      {line("item/fileChange/patchUpdated", "{}"), "fileChange patch update missing itemId"},
      {line("item/reasoning/summaryTextDelta", "{}"), "reasoning delta missing itemId"},
      {line("item/reasoning/textDelta", "{}"), "reasoning delta missing itemId"},
      {line("item/plan/delta", "{}"), "reasoning delta missing itemId"},
      {line("turn/plan/updated", "{}"), "turn/plan/updated missing turnId"},
      {line("turn/moderationMetadata", "{}"), "turn/moderationMetadata missing metadata"},
  };
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text);
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.write(text + "\n");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", std::string("stream error: ") + message));
  }
}

TEST(AppServerTurnRunNotifications, WhoseRecordDoesNotDecodeFailTheOperationOrAreDropped) {
  for (const char* text :
       {R"({"method":"thread/goal/updated","params":{"threadId":"t1","goal":{}}})",
        R"({"method":"thread/settings/updated","params":{"threadId":"t1","threadSettings":{}}})",
        R"({"method":"hook/started","params":{"run":{}}})", R"({"method":"hook/completed","params":{"run":null}})"}) {
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.write(std::string(text) + "\n");
    ASSERT_EQ(heard->size(), 2U) << text;
    EXPECT_TRUE(heard->back().starts_with("stream error: App-server decode error at ")) << heard->back();
  }
  EXPECT_THAT(
      wordsOf({line("modelProvider/authRecoveryStarted", "{}"), line("modelProvider/authRecoveryCompleted", "{}"),
               line("autoApprovalReview/strictReviewRequired", "{}"), line("deprecationNotice", "{}"),
               line("configWarning", "{}")}),
      IsEmpty());
}

TEST(AppServerTurnRunNotifications, OfUnknownMethodsAndUnusableItemsAreIgnored) {
  EXPECT_THAT(wordsOf({line("somethingElse/new", "{}"), R"({"method":"thread/started"})",
                       line("thread/started", R"({"thread":"t1"})"), line("item/started", "{}"),
                       line("item/updated", R"({"item":{}})"), line("item/completed", R"({"item":7})"),
                       line("item/commandExecution/outputDelta", R"({"itemId":"c1","delta":"x"})"),
                       line("item/mcpToolCall/progress", R"({"itemId":"c1","message":"x"})")}),
              IsEmpty());
}

TEST(AppServerTurnRunNotifications, BecomeTheirEvents) {
  EXPECT_THAT(
      wordsOf({line("error", R"({"error":{"message":"a"},"message":"b"})"), line("error", R"({"message":"b"})"),
               line("error", "{}"), line("warning", "{}"), line("warning", R"({"message":"w"})")}),
      ElementsAre("error a", "error b", "error Unknown app-server error", "warning Ormel warning", "warning w"));
  EXPECT_EQ(eventsOf({line("thread/goal/cleared", R"({"thread_id":"x"})")}),
            (std::vector<ThreadEvent>{ThreadGoalClearedEvent{"x"}}));
  EXPECT_EQ(eventsOf({line("guardianWarning", "{}"), line("guardianWarning", R"({"threadId":"x","message":"m"})")}),
            (std::vector<ThreadEvent>{GuardianWarningEvent{"t1", "Guardian warning"}, GuardianWarningEvent{"x", "m"}}));
  EXPECT_EQ(eventsOf({line("model/rerouted", R"({"fromModel":"a","toModel":"b"})")}),
            (std::vector<ThreadEvent>{ModelReroutedEvent{"t1", "u1", "a", "b", ""}}));
  EXPECT_EQ(eventsOf({line("model/verification", R"({"turn_id":"x","verifications":["v",7]})")}),
            (std::vector<ThreadEvent>{ModelVerificationEvent{"t1", "x", {"v"}}}));
  EXPECT_EQ(eventsOf({line("turn/moderationMetadata", R"({"metadata":null})")}),
            (std::vector<ThreadEvent>{TurnModerationMetadataEvent{"t1", "u1", JSONValue()}}));
  EXPECT_EQ(eventsOf({line("turn/started", R"({"turn":{"id":"u1","modelContextWindow":9}})")}),
            (std::vector<ThreadEvent>{TurnStartedEvent{9}}));
}

TEST(AppServerTurnRunNotifications, OfItemsCarryTheirIDsAndTimes) {
  const auto events = eventsOf(
      {line("item/started", R"({"threadId":"t1","turn_id":"u1","started_at_ms":5,"item":{"type":"sleep","id":"s"}})"),
       line("item/updated", R"({"item":{"type":"sleep","id":"s"}})"),
       line("item/completed", R"({"completedAtMs":6,"completed_at_ms":7,"item":{"type":"sleep","id":"s"}})")});
  const ThreadItem item = SleepItem{"s", {}};
  EXPECT_EQ(events, (std::vector<ThreadEvent>{ItemStartedEvent{item, "t1", "u1", 5}, ItemUpdatedEvent{item},
                                              ItemCompletedEvent{item, std::nullopt, std::nullopt, 6}}));
}

TEST(AppServerTurnRunNotifications, OfPiecesOfAMessageAddUp) {
  const auto messages = itemsOf<AgentMessageItem>({line("item/agentMessage/delta", R"({"itemId":"m","delta":"a"})"),
                                                   line("item/agentMessage/delta", R"({"itemId":"m","delta":"b"})"),
                                                   line("item/agentMessage/delta", R"({"itemId":"m"})")});
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(messages[0].text, "a");
  EXPECT_EQ(messages[1].text, "ab");
  EXPECT_EQ(messages[2].text, "ab");
}

TEST(AppServerTurnRunNotifications, OfPiecesOfReasoningCollapseIntoOneContent) {
  const auto pieces = itemsOf<ReasoningItem>(
      {line("item/reasoning/textDelta", R"({"itemId":"r","delta":"a"})"),
       line("item/reasoning/summaryTextDelta", R"({"itemId":"r","delta":"b"})"),
       line("item/started", R"({"item":{"type":"reasoning","id":"q","summary":["s"],"content":["c"]}})"),
       line("item/reasoning/textDelta", R"({"itemId":"q","delta":"d"})")});
  ASSERT_EQ(pieces.size(), 3U);
  EXPECT_THAT(pieces[1].content, ElementsAre("ab"));
  EXPECT_THAT(pieces[2].content, ElementsAre("s\ncd"));
  EXPECT_THAT(pieces[2].summary, IsEmpty());
}

TEST(AppServerTurnRunNotifications, OfACompactionTellEachOnce) {
  const std::string compacted = line("thread/context_compacted", R"({"id":"c1"})");
  EXPECT_THAT(wordsOf({compacted, compacted}), ElementsAre("item.started c1", "item.completed c1"));
}

TEST(AppServerTurnRunNotifications, OfThePlanStartAListThatEndsWithItsTurn) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  const auto heard = engine.startTurn();
  engine.notify("turn/plan/updated", R"({"turnId":"u1","plan":[{"step":"a"}]})");
  engine.notify("turn/plan/updated", R"({"turnId":"u1","plan":[{"step":"a","status":"completed"}]})");
  engine.completeTurn();
  EXPECT_THAT(*heard, ElementsAre("thread.started t1", "item.started turn-plan:u1", "item.updated turn-plan:u1",
                                  "item.completed turn-plan:u1", "turn.completed", "end"));
}

TEST(AppServerTurnRunNotifications, OfUsageTellNothingAndABadOneTakesTheLastAway) {
  const char* usage = R"({"tokenUsage":{"last":{"inputTokens":1,"cachedInputTokens":2,"outputTokens":3}}})";
  EXPECT_THAT(wordsOf({line("thread/tokenUsage/updated", usage)}), IsEmpty());
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  auto events = engine.end(engine.turn()).events;
  engine.notify("thread/tokenUsage/updated", usage);
  engine.notify("thread/tokenUsage/updated", "{}");
  engine.completeTurn();
  std::optional<Usage> told;
  for (const ThreadEvent& event : events) {
    if (const auto* completed = std::get_if<TurnCompletedEvent>(&event.value)) told = completed->usage;
  }
  EXPECT_EQ(told, Usage{});
}

}  // namespace
