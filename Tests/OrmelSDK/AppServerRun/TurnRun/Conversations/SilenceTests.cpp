#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/HeldTimers.h"
#include "Support/TurnRunHarness.h"

// The run's treatment of a server that falls silent, over real pipes: with durations that a test can wait for, and with
// time-outs of requests that wait for the test.
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

TurnRunHarness::Settings probingSoon() {
  return settingsWith(&detail::RunDurations::livenessProbeIntervalNanoseconds, 20ms);
}

/// A run whose requests time out when the test says so.
class RequestsThatTimeOut {
 public:
  explicit RequestsThatTimeOut(const std::string& scenario, TurnRunHarness::Settings settings = {})
      : timeouts_(HeldTimers::neverDestroyed("request time-out")),
        server(scenario, on(timeouts_, std::move(settings))) {}

  /// Lets the one request that waits for its answer time out, once the server has it.
  void timeOut(std::string_view method) {
    ASSERT_TRUE(server.waitForMethod(method));
    EXPECT_EQ(timeouts_.letFallDue(), 1U);
  }

  static std::string failure(std::string_view method) {
    return "stream error: App-server RPC " + std::string(method) + " timed out after 30 seconds";
  }

 private:
  static TurnRunHarness::Settings on(HeldTimers& timeouts, TurnRunHarness::Settings settings) {
    settings.scheduler = &timeouts;
    return settings;
  }

  HeldTimers& timeouts_;

 public:
  TurnRunHarness server;
};

/// The events of a turn about which the server says nothing until it is probed.
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
    RequestsThatTimeOut requests((isTurn ? politeServer : "") + scenario);
    auto& server = requests.server;
    const auto turn = server.beginTurn();
    requests.timeOut(method);
    EXPECT_EQ(failureOf([&] { TurnRunHarness::taken(turn); }), RequestsThatTimeOut::failure(method));
    EXPECT_EQ(server.state(), "failed");
    EXPECT_FALSE(server.hasProcess());
    EXPECT_EQ(server.requestsInFlight(), 0U);
  }
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseSteerTimesOut) {
  RequestsThatTimeOut requests(politeServer + turnIsAccepted + "client asks turn/steer\nwait until killed\n");
  auto& server = requests.server;
  auto turn = server.startTurn();
  const auto steering = TurnRunHarness::started(server.run().steer("more", TurnOptions()));
  requests.timeOut("turn/steer");
  const std::string failure = RequestsThatTimeOut::failure("turn/steer");
  EXPECT_EQ(failureOf([&] { TurnRunHarness::taken(steering); }), failure);
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", failure));
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseProbeTimesOut) {
  RequestsThatTimeOut requests(politeServer + turnIsAccepted + "client asks thread/read\nwait until killed\n",
                               probingSoon());
  auto turn = requests.server.startTurn();
  requests.timeOut("thread/read");
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", RequestsThatTimeOut::failure("thread/read")));
}

TEST(AppServerTurnRunSilence, FailsATurnWhoseInterruptTimesOut) {
  RequestsThatTimeOut requests(politeServer + turnIsAccepted + "client asks turn/interrupt\nwait until killed\n");
  auto turn = requests.server.startTurn();
  const auto interrupt = TurnRunHarness::started(requests.server.run().interruptFromSignal());
  requests.timeOut("turn/interrupt");
  TurnRunHarness::taken(interrupt);
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", RequestsThatTimeOut::failure("turn/interrupt")));
}

TEST(AppServerTurnRunSilence, AbortsATurnThatDoesNotEndAfterItsInterruptWasAcknowledged) {
  TurnRunHarness server(
      politeServer + turnIsAccepted + "client asks turn/interrupt\nserver answers {}\nwait until killed\n",
      settingsWith(&detail::RunDurations::interruptCompletionGraceNanoseconds, 20ms));
  auto turn = server.startTurn();
  server.ended(server.run().interruptFromSignal());
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "aborted"));
  EXPECT_FALSE(server.hasProcess());
}

}  // namespace
