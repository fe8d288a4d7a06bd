#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Support/SimulatedThread.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;

constexpr const char* question = R"({"itemId":"q1","questions":[{"id":"size","question":"How big?"}]})";

TEST(ThreadSteer, AddsInputToTheTurnThatRuns) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.end(server.thread->steer("faster"));
    EXPECT_EQ(server.lastParam("turn/steer", "expectedTurnId"), JSONValue("u1"));
    EXPECT_EQ(server.lastParam("turn/steer", "threadId"), JSONValue("t1"));
    TurnOptions options;
    options.clientUserMessageID = "mine";
    server.end(server.thread->steer(Input::from({UserInput::text("and better")}), options));
    EXPECT_THAT(server.lastParams("turn/steer").encode(), ::testing::HasSubstr("and better"));
    EXPECT_EQ(server.lastParam("turn/steer", "clientUserMessageId"), JSONValue("mine"));
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

TEST(ThreadSteer, IsRefusedUntilTheTurnIsKnown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.keep("turn/start");
    const auto starting = server.start(server.thread->runStreamed("hello"));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "stream error: No active turn to steer");
    server.answerKept(R"({"turn":{"id":"u1"}})");
    const auto heard = server.listen(server.taken(starting).events);
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "no failure");
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

TEST(ThreadSteer, ThatTheServerRefusesLeavesTheTurnAlone) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.refuse("turn/steer", "not now");
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "stream error: not now");
    EXPECT_TRUE(server.isBusy());
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

// The run and the thread give the same refusal, whichever notices first.
TEST(ThreadSteer, IsRefusedFromTheMomentInWhichTheTurnEnds) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    const auto run = server.runOfThread();
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    scheduler.runUntil([&] { return !run->stream().isPending(); });
    EXPECT_TRUE(server.isBusy());
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "stream error: No active turn to steer");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "stream error: No active turn to steer");
    EXPECT_EQ(heard->back(), "end");
  }
}

TEST(ThreadAnswers, GoToTheQuestionOfTheItem) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.process().request(JSONValue("ask"), "item/tool/requestUserInput", JSONValue::decode(question));
    server.settle();
    EXPECT_EQ(failureOf([&] { server.end(server.thread->submitRequestUserInput("q2", {})); }),
              "stream error: No pending request_user_input call for item: q2");
    server.end(server.thread->submitRequestUserInput("q1", {{"size", {"Small", "blue"}}}));
    EXPECT_EQ(server.process().messagesRead().back(),
              JSONValue::decode(R"({"id":"ask","result":{"answers":{"size":{"answers":["Small","blue"]}}}})"));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->submitRequestUserInput("q1", {})); }),
              "stream error: No pending request_user_input call for item: q1");
    server.completeTurn();
    EXPECT_THAT(*heard,
                ElementsAre("thread.started t1", "item.started q1", "item.completed q1", "turn.completed", "end"));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->submitRequestUserInput("q1", {})); }),
              "stream error: No active turn for request_user_input response");
  });
}

TEST(ThreadAnswers, AreRefusedFromTheMomentInWhichTheTurnEnds) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler);
    server.follow(server.thread->runStreamed("hello"));
    const auto run = server.runOfThread();
    server.process().request(JSONValue(1), "item/tool/requestUserInput", JSONValue::decode(question));
    server.settle();
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    scheduler.runUntil([&] { return !run->stream().isPending(); });
    EXPECT_EQ(failureOf([&] { server.end(server.thread->submitRequestUserInput("q1", {})); }),
              "stream error: No active turn for request_user_input response");
  }
}

}  // namespace
