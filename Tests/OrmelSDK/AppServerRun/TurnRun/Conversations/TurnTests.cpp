#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Support/ForeignReaping.h"
#include "Support/ProcessResources.h"
#include "Support/Sanitizers.h"
#include "Support/TurnRunHarness.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AppServerTurnRun, StreamsATurnOnANewThreadToItsEnd) {
  TurnRunHarness server(politeServer + wholeTurn);
  auto turn = server.startTurn();
  EXPECT_EQ(turn.threadID, "t1");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
  EXPECT_THAT(server.methodsReceived(), ElementsAre("initialize", "initialized", "thread/start", "turn/start"));
  EXPECT_EQ(server.state(), "finished");
  EXPECT_TRUE(server.hasProcess());
}

TEST(AppServerTurnRun, TakesATurnThatIsToldInOneWriteBeforeItsResponse) {
  TurnRunHarness server(politeServer + R"(
    client asks turn/start
    in one write
      server notifies turn/started {"threadId": "t1", "turn": {"id": "u1"}}
      server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
      server answers {"turn": {"id": "u1"}}
    end)");
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
}

TEST(AppServerTurnRun, TakesALineThatComesInManyPieces) {
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    server writes raw '{"method":"warning","par' then 'ams":{"message":"\xc3' then '\xa9"}}\r' then "\n"
    server notifies turn/completed {"turn": {"id": "u1", "status": "completed"}})");
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "warning é", "turn.completed", "end"));
}

// One process for two turns, an abort that costs it, and another one for the third turn.
TEST(AppServerTurnRun, LivesThroughTurnsAnAbortAndANewProcess) {
  {
    TurnRunHarness server(politeServer + "in run 1\n" + wholeTurn + turnIsAccepted + R"(
        client asks turn/interrupt {"threadId": "t1", "turnId": "u1"}
        server answers {}
        server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "interrupted"}}
      end
      in run 2
    )" + wholeTurn + "end\n");
    auto first = server.startTurn();
    EXPECT_THAT(told(first.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
    auto second = server.startTurn("t1");
    server.ended(server.run().interruptFromSignal());
    EXPECT_THAT(told(second.events), ElementsAre("thread.started t1", "aborted"));
    EXPECT_FALSE(server.hasProcess());
    auto third = server.startTurn("t1");
    EXPECT_THAT(told(third.events), ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
    EXPECT_EQ(server.processesStarted(), 2U);
    EXPECT_THAT(server.methodsReceived(),
                ElementsAre("initialize", "initialized", "thread/start", "turn/start", "thread/resume", "turn/start",
                            "turn/interrupt", "initialize", "initialized", "thread/resume", "turn/start"));
  }
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
}

TEST(AppServerTurnRun, TellsTheLastWordsOfAServerThatFails) {
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    server notifies warning {"message": "low on memory"}
    server writes stderr "panicked\n"
    server exits 3)");
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "warning low on memory", "stream error: panicked"));
  EXPECT_FALSE(server.hasProcess());
}

TEST(AppServerTurnRun, TellsThatAServerWasKilled) {
  TurnRunHarness server(politeServer + turnIsAccepted + "server exits with signal 9\n");
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events),
              ElementsAre("thread.started t1", "stream error: Ormel app-server terminated unexpectedly"));
}

TEST(AppServerTurnRun, TellsHowAServerEndedWhosePipesAnotherProcessHolds) {
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    server forks
      wait until input closes
    end
    server exits 7)");
  auto turn = server.startTurn();
  const auto expected = OrmelProcessError::exited("exit status 7", "");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", std::string("stream error: ") + expected.what()));
}

TEST(AppServerTurnRun, TellsHowAServerEndedInAnApplicationThatIgnoresItsChildren) {
  const IgnoredChildren ignored;
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    server forks
      wait until input closes
    end
    server exits 7)");
  auto turn = server.startTurn();
  const auto told7 = OrmelProcessError::exited("exit status 7", "");
  const auto taken = OrmelProcessError::exited("status 0 (unknown: reaped by another part of this process)", "");
  const auto& expected = endsAreTold() ? told7 : taken;
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", std::string("stream error: ") + expected.what()));
}

TEST(AppServerTurnRun, HandlesWhatADeadServerLeftInThePipe) {
  TurnRunHarness server(politeServer + turnIsAccepted + R"(
    in one write
      repeat 1000 times as i
        server notifies item/agentMessage/delta {"itemId": "m1", "delta": "word "}
      end
      server notifies turn/completed {"turn": {"id": "u1", "status": "completed"}}
    end
    server exits 0)");
  auto turn = server.startTurn();
  const auto words = told(turn.events);
  ASSERT_EQ(words.size(), 1003U);
  EXPECT_EQ(words[1001], "turn.completed");
  EXPECT_EQ(words[1002], "end");
  EXPECT_EQ(server.state(), "finished");
}

TEST(AppServerTurnRun, FailsOnALineThatIsNotJSON) {
  TurnRunHarness server(politeServer + turnIsAccepted + "server writes raw \"{oops\\n\"\n");
  auto turn = server.startTurn();
  const auto words = told(turn.events);
  ASSERT_EQ(words.size(), 2U);
  EXPECT_TRUE(words[1].starts_with("stream error: App-server decode error at $: ")) << words[1];
}

TEST(AppServerTurnRun, TellsWhyThereIsNoServer) {
  TurnRunHarness::Settings settings;
  settings.executable = "/no/such/server";
  TurnRunHarness server("", settings);
  // The starter is there, and says what it lacks.
  const std::string failure = failureOf([&] { server.startTurn(); });
  EXPECT_TRUE(failure.starts_with("stream error: ")) << failure;
  EXPECT_THAT(failure, ::testing::HasSubstr("/no/such/server"));
}

TEST(AppServerTurnRun, StopsAServerThatDoesNotRead) {
  TurnRunHarness server(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server stops reading
    server answers {"thread": {"id": "t1"}}
    wait until killed)");
  const std::string longText(1U << 20U, 'x');
  const auto starting =
      server.started(server.run().start(detail::OperationRequest::turn(std::nullopt, Input(longText), TurnOptions())));
  EXPECT_TRUE(eventually([&] { return server.requestsInFlight() == 1 && server.activity() == 2; }));
  server.ended(server.run().release());
  EXPECT_EQ(failureOf([&] { server.taken(starting); }), "stream error: Stream finished");
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
}

TEST(AppServerTurnRun, AbortsWhileTheServerIsSilent) {
  TurnRunHarness server(
      "always answer initialize with {}\nalways ignore initialized\nclient asks thread/start\n"
      "wait until killed\n");
  const auto starting = server.beginTurn();
  EXPECT_TRUE(server.waitForMethod("thread/start"));
  server.ended(server.run().interruptFromSignal());
  EXPECT_EQ(failureOf([&] { server.taken(starting); }), "aborted");
  EXPECT_FALSE(server.hasProcess());
}

TEST(AppServerTurnRun, IsCancelledWithItsCaller) {
  TurnRunHarness server(
      "always answer initialize with {}\nalways ignore initialized\nclient asks thread/start\n"
      "wait until killed\n");
  std::stop_source caller;
  const auto starting = server.beginTurn(caller.get_token());
  EXPECT_TRUE(server.waitForMethod("thread/start"));
  caller.request_stop();
  EXPECT_EQ(failureOf([&] { server.taken(starting); }), "cancelled");
  EXPECT_EQ(server.state(), "failed");
}

TEST(AppServerTurnRun, LeavesNothingBehindHoweverOftenItIsStartedAndStopped) {
  const auto round = [](bool isReleased) {
    TurnRunHarness server(politeServer + turnIsAccepted + "wait until input closes\n");
    auto turn = server.startTurn();
    EXPECT_EQ(nextTold(turn.events), "thread.started t1");
    if (!isReleased) server.dropRun();
  };
  round(true);
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  const auto before = ProcessResources::now();
  for (int count = 0; count < (ormel::testing::isSanitized ? 250 : 1000); ++count) round(count % 2 == 0);
  EXPECT_TRUE(eventually([&before] { return ProcessResources::now().isNoMoreThan(before); }));
}

}  // namespace
