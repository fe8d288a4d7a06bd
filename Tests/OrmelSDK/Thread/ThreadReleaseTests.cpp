#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

using ::testing::ElementsAre;

class ThreadRelease : public ThreadOperationTest {};

TEST_P(ThreadRelease, WaitsForTheOperationUnderWay) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto heard = server.follow(start(server));
    server.drop();
    EXPECT_FALSE(server.isGone());
    EXPECT_EQ(server.server.running(), 1U);
    beginTurnOf(server, GetParam());
    completeTurnOf(server, GetParam());
    EXPECT_EQ(heard->back(), "end");
    EXPECT_EQ(heard->at(heard->size() - 2), "turn.completed");
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST_P(ThreadRelease, DuringAStartLetsItEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    server.keep("thread/resume");
    const auto starting = server.start(start(server));
    server.drop();
    server.answerKept(R"({"thread":{"id":"t1"}})");
    const auto heard = server.listen(server.taken(starting).events);
    beginTurnOf(server, GetParam());
    completeTurnOf(server, GetParam());
    EXPECT_EQ(heard->back(), "end");
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST_P(ThreadRelease, NeedsNoReader) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    {
      const auto unread = server.end(start(server));
    }
    server.drop();
    EXPECT_FALSE(server.isGone());
    beginTurnOf(server, GetParam());
    completeTurnOf(server, GetParam());
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

INSTANTIATE_TEST_SUITE_P(Operations, ThreadRelease, ::testing::ValuesIn(threadOperations()),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST(Thread, EndsTheProcessWhenItIsReleasedWhileIdle) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.follow(server.thread->runStreamed("hello"));
    server.completeTurn();
    EXPECT_EQ(server.server.running(), 1U);
    server.thread.reset();
    // Nobody waits for the end.
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 1U);
    server.settle();
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_EQ(server.server.held(), 0U);
  });
}

TEST(Thread, StartsNothingWhenItIsReleasedUnused) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    server.drop();
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

TEST(Thread, LivesAsLongAsOneOfItsCopies) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    std::optional<Thread> copy = server.thread;
    server.follow(server.thread->runStreamed("hello"));
    server.completeTurn();
    EXPECT_EQ(copy->id(), "t1");
    server.drop();
    EXPECT_EQ(server.server.running(), 1U);
    const auto heard = server.follow(copy->runStreamed("again"));
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
    EXPECT_EQ(server.server.started(), 1U);
    copy.reset();
    server.settle();
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(Thread, IsReleasedAfterAnOperationThatFailed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.process().exit(1);
    server.pass(std::chrono::seconds(1));
    EXPECT_THAT(heard->back(), ::testing::StartsWith("stream error: "));
    server.drop();
    EXPECT_TRUE(server.isGone());
  });
}

TEST(Thread, GivesAllEventsToAConsumerThatOutlivesIt) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    auto streamed = server.end(server.thread->runStreamed("hello"));
    server.completeTurn();
    server.drop();
    EXPECT_TRUE(server.isGone());
    EXPECT_THAT(*server.listen(std::move(streamed.events)), ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

TEST(Thread, RunsNothingForACallThatIsNotAwaited) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    {
      const auto unused = server.thread->run("hello");
      server.drop();
      EXPECT_FALSE(server.isGone());
    }
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

}  // namespace
}  // namespace ormel::testing
