#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::Contains;
using ::testing::Not;

constexpr const char* timedOut = "other error: Timed out after 5 seconds";

TurnOptions fiveSeconds() {
  TurnOptions options;
  options.timeout = seconds(5);
  return options;
}

TEST(ThreadTimeout, InterruptsATurnWhoseTimeIsUp) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello", fiveSeconds()));
    server.pass(seconds(5) - milliseconds(1));
    EXPECT_THAT(server.methods(), Not(Contains("turn/interrupt")));
    server.pass(milliseconds(1));
    EXPECT_THAT(server.methods(), Contains("turn/interrupt"));
    server.completeTurn("interrupted");
    EXPECT_EQ(heard->back(), timedOut);
    EXPECT_FALSE(server.isBusy());

    const auto next = server.follow(server.thread->runStreamed("again", fiveSeconds()));
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
    EXPECT_EQ(server.server.started(), 2U);
    server.pass(seconds(60));
  });
}

TEST(ThreadTimeout, EndsATurnWhoseServerIsSilent) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello", fiveSeconds()));
    server.pass(seconds(8));
    EXPECT_EQ(heard->back(), timedOut);

    server.keep("turn/interrupt");
    const auto mute = server.follow(server.thread->runStreamed("hello", fiveSeconds()));
    server.pass(seconds(36));
    EXPECT_EQ(mute->back(), timedOut);
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(ThreadTimeout, EndsAStartThatTakesTooLong) {
  for (const char* method : {"initialize", "thread/start", "turn/start"}) {
    SCOPED_TRACE(method);
    inManyOrders([&](SimulatedScheduler& scheduler) {
      SimulatedThread server(scheduler);
      server.keep(method);
      const auto starting = server.start(server.thread->run("hello", fiveSeconds()));
      server.pass(seconds(10));
      EXPECT_EQ(failureOf([&] { server.taken(starting); }), timedOut);
      EXPECT_FALSE(server.isBusy());
      EXPECT_EQ(server.server.running(), 0U);
    });
  }
}

TEST(ThreadTimeout, LeavesATurnAloneThatEndsInTime) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto turn = server.start(server.thread->run("hello", fiveSeconds()));
    server.pass(seconds(4));
    server.completeTurn();
    server.taken(turn);
    const auto next = server.follow(server.thread->runStreamed("without a limit"));
    server.pass(seconds(60));
    EXPECT_THAT(server.methods(), Not(Contains("turn/interrupt")));
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
  });
}

TEST(ThreadTimeout, LetsATurnSucceedThatTheServerStillCompletes) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello", fiveSeconds()));
    server.pass(seconds(6));
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

TEST(ThreadTimeout, LeavesOtherFailuresAsTheyAre) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto lost = server.follow(server.thread->runStreamed("hello", fiveSeconds()));
    server.process().exit(1);
    server.pass(seconds(1));
    EXPECT_THAT(lost->back(), ::testing::StartsWith("stream error: "));
    const AbortController controller;
    TurnOptions options = fiveSeconds();
    options.signal = controller;
    const auto aborted = server.follow(server.thread->runStreamed("hello", options));
    controller.abort();
    server.pass(seconds(4));
    EXPECT_EQ(aborted->back(), "aborted");
    const auto second = server.follow(server.thread->runStreamed("busy"));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->runStreamed("no", fiveSeconds())); }),
              "stream error: An app-server operation is already active");
    server.pass(seconds(60));
    server.completeTurn();
    EXPECT_EQ(second->back(), "end");
  });
}

TEST(ThreadTimeout, EndsASideConversation) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler, "t1");
  const auto heard = server.follow(server.thread->runSideConversationStreamed("x", "be brief", fiveSeconds()));
  server.pass(seconds(8));
  EXPECT_EQ(heard->back(), timedOut);
  EXPECT_EQ(server.thread->id(), "t1");
}

}  // namespace
}  // namespace ormel::testing
