#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/TurnRunHarness.h"

// What a run does about a server that falls silent, over real pipes and with durations that a test can wait for.
namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

TurnRunHarness::Settings settingsWith(std::chrono::nanoseconds detail::RunDurations::* duration,
                                      std::chrono::nanoseconds value) {
  TurnRunHarness::Settings settings;
  settings.durations.*duration = value;
  return settings;
}

TurnRunHarness::Settings probingSoon() { return settingsWith(&detail::RunDurations::livenessProbeInterval, 20ms); }
TurnRunHarness::Settings impatient() { return settingsWith(&detail::RunDurations::request, 200ms); }

/// What is told of a turn about which the server says nothing until it is probed.
std::vector<std::string> toldOfProbed(const std::string& rest) {
  TurnRunHarness server(politeServer + turnIsAccepted + rest, probingSoon());
  auto turn = server.startTurn();
  return told(turn.events);
}

constexpr const char* probe = "client asks thread/read {\"threadId\": \"t1\", \"includeTurns\": true}\n";

TEST(AppServerTurnRunSilence, EndsATurnAsTheProbedServerSays) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"id": "u1", "status": "completed"})", "turn.completed"},
      {R"({"id": "u1", "status": "interrupted"})", "turn.completed"},
      {R"({"id": "u1", "status": "failed", "error": {"message": "no credit"}})", "turn.failed no credit"},
  };
  for (const auto& [turn, event] : cases) {
    const std::string answer = R"(server answers {"thread": {"id": "t1", "turns": [)" + std::string(turn) + "]}}\n";
    EXPECT_THAT(toldOfProbed(probe + answer), ElementsAre("thread.started t1", event, "end"));
  }
}

TEST(AppServerTurnRunSilence, GoesOnProbingWhileTheTurnIsInProgress) {
  const std::string inProgress =
      probe +
      std::string(R"(server answers {"thread": {"id": "t1", "turns": [{"id": "u1", "status": "inProgress"}]}})");
  EXPECT_THAT(toldOfProbed(inProgress + "\n" + inProgress + R"(
                server notifies turn/completed {"turn": {"id": "u1", "status": "completed"}})"),
              ElementsAre("thread.started t1", "turn.completed", "end"));
}

TEST(AppServerTurnRunSilence, FailsOnAnAnswerToItsProbeThatDoesNotFit) {
  const std::pair<const char*, const char*> cases[] = {
      {R"(server answers with error {"code": 1, "message": "no such thread"})",
       "stream error: Unable to reconcile coordinator turn: no such thread"},
      {R"(server answers {"thread": {"id": "t2", "turns": []}})",
       "stream error: Coordinator thread mismatch during liveness reconciliation"},
      {R"(server answers {"thread": {"id": "t1", "turns": []}})",
       "stream error: Coordinator turn missing during liveness reconciliation"},
  };
  for (const auto& [answer, failure] : cases) {
    EXPECT_THAT(toldOfProbed(probe + std::string(answer)), ElementsAre("thread.started t1", failure));
  }
}

TEST(AppServerTurnRunSilence, ProbesTheThreadOfAReview) {
  TurnRunHarness server(politeServer + R"(
    client asks review/start
    server answers {"reviewThreadId": "r1", "turn": {"id": "u1"}}
    client asks thread/read {"threadId": "r1", "includeTurns": true}
    server answers {"thread": {"id": "r1", "turns": [{"id": "u1", "status": "completed"}]}})",
                        probingSoon());
  auto events = server.startReview();
  EXPECT_THAT(told(events), ElementsAre("thread.started t1", "turn.completed", "end"));
}

TEST(AppServerTurnRunSilence, TimesOutAtEachRequestOfAStart) {
  const std::pair<const char*, const char*> cases[] = {
      {"client asks initialize\nwait until killed\n", "initialize"},
      {"always answer initialize with {}\nalways ignore initialized\nclient asks thread/start\nwait until killed\n",
       "thread/start"},
      {"client asks turn/start\nwait until killed\n", "turn/start"},
  };
  for (const auto& [scenario, method] : cases) {
    const bool isTurn = std::string_view(method) == "turn/start";
    TurnRunHarness server((isTurn ? politeServer : "") + scenario, impatient());
    EXPECT_EQ(failureOf([&] { server.startTurn(); }),
              "stream error: App-server RPC " + std::string(method) + " timed out after 0.2 seconds");
    EXPECT_EQ(server.state(), "failed");
    EXPECT_FALSE(server.hasProcess());
    EXPECT_EQ(server.requestsInFlight(), 0U);
  }
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseSteerTimesOut) {
  TurnRunHarness server(politeServer + turnIsAccepted + "client asks turn/steer\nwait until killed\n", impatient());
  auto turn = server.startTurn();
  const std::string failure = "stream error: App-server RPC turn/steer timed out after 0.2 seconds";
  EXPECT_EQ(failureOf([&] { server.steer(); }), failure);
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", failure));
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseProbeTimesOut) {
  auto settings = impatient();
  settings.durations.livenessProbeInterval = 20ms;
  TurnRunHarness server(politeServer + turnIsAccepted + "client asks thread/read\nwait until killed\n", settings);
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events),
              ElementsAre("thread.started t1", "stream error: App-server RPC thread/read timed out after 0.2 seconds"));
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseInterruptTimesOut) {
  TurnRunHarness server(politeServer + turnIsAccepted + "client asks turn/interrupt\nwait until killed\n", impatient());
  auto turn = server.startTurn();
  server.ended(server.run().interruptFromSignal());
  EXPECT_THAT(
      told(turn.events),
      ElementsAre("thread.started t1", "stream error: App-server RPC turn/interrupt timed out after 0.2 seconds"));
}

TEST(AppServerTurnRunSilence, AbortsATurnThatDoesNotEndAfterItsInterruptWasAcknowledged) {
  TurnRunHarness server(
      politeServer + turnIsAccepted + "client asks turn/interrupt\nserver answers {}\nwait until killed\n",
      settingsWith(&detail::RunDurations::interruptGrace, 20ms));
  auto turn = server.startTurn();
  server.ended(server.run().interruptFromSignal());
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "aborted"));
  EXPECT_FALSE(server.hasProcess());
}

}  // namespace
