#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Support/TurnRunHarness.h"

// Operations other than plain turns, over real pipes.
namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;

TEST(AppServerTurnRunOperation, ReviewsOnTheReviewsOwnThread) {
  TurnRunHarness server(politeServer + R"(
    client asks review/start {"threadId": "t1", "target": {"type": "uncommittedChanges"}, "delivery": "inline"}
    server answers {"reviewThreadId": "r1", "turn": {"id": "u7"}}
    server notifies turn/started {"threadId": "r1", "turn": {"id": "u7"}}
    server notifies item/completed {"threadId": "t1", "item": {"type": "agentMessage", "id": "foreign", "text": "x"}}
    server notifies item/completed {"threadId": "r1", "item": {"type": "agentMessage", "id": "ours", "text": "x"}}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u7", "status": "failed"}}
    server notifies turn/completed {"threadId": "r1", "turn": {"id": "u7", "status": "completed"}})");
  auto events = server.startReview();
  EXPECT_THAT(told(events),
              ElementsAre("thread.started t1", "turn.started", "item.completed ours", "turn.completed", "end"));
  EXPECT_THAT(server.methodsReceived(), ElementsAre("initialize", "initialized", "thread/resume", "review/start"));
  EXPECT_TRUE(server.hasProcess());
}

TEST(AppServerTurnRunOperation, FailsAReviewThatIsRefused) {
  TurnRunHarness server(politeServer + R"(
    client asks review/start
    server answers with error {"code": -32600, "message": "nothing to review"})");
  EXPECT_EQ(failureOf([&] { server.startReview(); }), "stream error: nothing to review");
  EXPECT_FALSE(server.hasProcess());
}

TEST(AppServerTurnRunOperation, CompactsInTheTurnThatIsStartedForIt) {
  TurnRunHarness server(politeServer + R"(
    client asks thread/compact/start {"threadId": "t1"}
    server answers {}
    server notifies turn/started {"turn": {"id": "u8"}}
    server notifies turn/started {"threadId": "t1", "turn": {"id": "u9"}}
    server notifies item/completed {"turnId": "u9", "item": {"type": "contextCompaction", "id": "c1"}}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u8", "status": "completed"}}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u9", "status": "completed"}})");
  auto events = server.startCompaction();
  EXPECT_THAT(told(events),
              ElementsAre("thread.started t1", "turn.started", "item.completed c1", "turn.completed", "end"));
}

TEST(AppServerTurnRunOperation, FailsACompactionThatIsOverBeforeItIsAnswered) {
  TurnRunHarness server(politeServer + R"(
    client asks thread/compact/start
    in one write
      server notifies turn/started {"threadId": "t1", "turn": {"id": "u9"}}
      server notifies turn/completed {"threadId": "t1", "turn": {"id": "u9", "status": "completed"}}
      server answers {}
    end)" + wholeTurn);
  EXPECT_EQ(failureOf([&] { server.startCompaction(); }), "stream error: Stream finished");
  EXPECT_EQ(server.state(), "finished");
  auto turn = server.startTurn("t1");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
  EXPECT_EQ(server.processesStarted(), 1U);
}

TEST(AppServerTurnRunOperation, TalksAsideOnAForkAndThenOnTheThreadAgain) {
  TurnRunHarness server(politeServer + R"(
    client asks thread/fork {"threadId": "t1", "developerInstructions": "be brief", "ephemeral": true}
    server answers {"thread": {"id": "f1"}}
    client asks turn/start {"threadId": "f1"}
    server answers {"turn": {"id": "u2"}}
    server notifies item/completed {"threadId": "t1", "item": {"type": "agentMessage", "id": "foreign", "text": "x"}}
    server notifies turn/completed {"threadId": "f1", "turn": {"id": "u2", "status": "completed"}}
    client asks turn/start {"threadId": "t1"}
    server answers {"turn": {"id": "u1"}})" +
                        turnCompletes);
  auto events = server.startForkTurn();
  EXPECT_THAT(told(events), ElementsAre("thread.started t1", "thread.started f1", "turn.completed", "end"));
  auto turn = server.startTurn("t1");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.completed", "end"));
  EXPECT_EQ(server.processesStarted(), 1U);
}

TEST(AppServerTurnRunOperation, SteersTheRunningTurn) {
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    client asks turn/steer {"threadId": "t1", "expectedTurnId": "u1", "input": [{"type": "text", "text": "more"}]}
    server answers {}
    client asks turn/steer
    server answers with error {"code": -32600, "message": "too late"})" +
                        turnCompletes);
  auto turn = server.startTurn();
  server.steer();
  EXPECT_EQ(failureOf([&] { server.steer(); }), "stream error: too late");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.completed", "end"));
  EXPECT_EQ(failureOf([&] { server.steer(); }), "stream error: No active turn to steer");
}

TEST(AppServerTurnRunOperation, LetsASteerOutliveItsTurn) {
  TurnRunHarness server(politeServer + turnIsAccepted + "client asks turn/steer\n" + turnCompletes + R"(
    wait until file "go"
    server answers {})");
  auto turn = server.startTurn();
  const auto steering = server.started(server.run().steer("more", TurnOptions()));
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.completed", "end"));
  EXPECT_EQ(server.requestsInFlight(), 1U);
  server.scenario().createFile("go");
  EXPECT_EQ(failureOf([&] { server.taken(steering); }), "no failure");
}

TEST(AppServerTurnRunOperation, KnowsTheTurnForWhatTheServerWritesBehindItsResponse) {
  TurnRunHarness server(politeServer + R"(
    client asks turn/start
    in one write
      server answers {"turn": {"id": "u1"}}
      repeat 20 times as i
        server notifies turn/started {"threadId": "t1", "turn": {"id": "sub${i}"}}
      end
      server notifies item/completed {"turnId": "sub1", "item": {"type": "agentMessage", "id": "foreign", "text": "x"}}
      server notifies item/completed {"turnId": "u1", "item": {"type": "agentMessage", "id": "ours", "text": "x"}}
      server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
    end)");
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "item.completed ours", "turn.completed", "end"));
}

}  // namespace
