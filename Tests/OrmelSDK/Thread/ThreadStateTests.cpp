#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

using ::testing::ElementsAre;

class ThreadState : public ThreadOperationTest {};

TEST_P(ThreadState, RefusesANewThreadForWhatNeedsAConversation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    if (!GetParam().refusal) return;
    EXPECT_EQ(failureOf([&] { server.end(start(server)); }), "stream error: " + std::string(GetParam().refusal));
    EXPECT_EQ(server.server.launchesTried(), 0U);
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.thread->id(), std::nullopt);
  });
}

TEST_P(ThreadState, IsBusyUntilTheConsumerSeesTheEndAndKeepsItsConversation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto heard = server.follow(start(server));
    EXPECT_TRUE(server.isBusy());
    EXPECT_EQ(server.thread->id(), "t1");
    beginTurnOf(server, GetParam());
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":")" + std::string(GetParam().turnThread) +
                                              R"(","turn":{"id":"u1","status":"completed"}})"));
    scheduler.runUntil([&] { return heard->back() == "end"; });
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.thread->id(), "t1");
    EXPECT_EQ(heard->front(), "thread.started t1");
    EXPECT_EQ(heard->at(heard->size() - 2), "turn.completed");
  });
}

TEST_P(ThreadState, RefusesEveryOperationWhileOneIsUnderWay) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto heard = server.follow(start(server));
    for (const ThreadOperation& other : threadOperations()) {
      EXPECT_EQ(failureOf([&] { server.end(other.start(*server.thread, std::nullopt)); }),
                "stream error: An app-server operation is already active");
    }
    EXPECT_EQ(failureOf([&] { server.end(server.thread->run("hello")); }),
              "stream error: An app-server operation is already active");
    EXPECT_TRUE(server.isBusy());
    beginTurnOf(server, GetParam());
    completeTurnOf(server, GetParam());
    EXPECT_EQ(heard->back(), "end");
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.started(), 1U);
  });
}

TEST_P(ThreadState, IsIdleAgainAfterAStartThatFailed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    server.refuse(GetParam().lastRequest, "not today");
    EXPECT_EQ(failureOf([&] { server.end(start(server)); }), "stream error: not today");
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.thread->id(), "t1");
    EXPECT_EQ(server.server.running(), 0U);
    // The next one starts another process.
    server.answer("turn/start", R"({"turn":{"id":"u1"}})");
    const auto heard = server.follow(server.thread->runStreamed("again"));
    server.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(server.server.started(), 2U);
  });
}

TEST_P(ThreadState, GoesOnAfterAnOperationThatFailed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto heard = server.follow(start(server));
    server.process().exit(7);
    server.pass(std::chrono::seconds(1));
    EXPECT_THAT(heard->back(), ::testing::StartsWith("stream error: "));
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.thread->id(), "t1");
    const auto next = server.follow(server.thread->runStreamed("again"));
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
  });
}

INSTANTIATE_TEST_SUITE_P(Operations, ThreadState, ::testing::ValuesIn(threadOperations()),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST(Thread, RefusesADetachedReviewBeforeAnythingElse) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const AbortController controller;
    controller.abort();
    const auto review = [&] {
      server.end(server.thread->startReviewStreamed(ReviewTarget::uncommittedChanges(), ReviewDelivery::detached,
                                                    controller.signal));
    };
    EXPECT_EQ(failureOf(review), "stream error: Detached reviews require a separate thread owner");
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

TEST(Thread, SaysThatItLacksAConversationBeforeItLooksAtTheSignal) {
  for (const ThreadOperation& operation : threadOperations()) {
    if (!operation.refusal) continue;
    SimulatedScheduler scheduler(1);
    SimulatedThread server(scheduler);
    const AbortController controller;
    controller.abort();
    EXPECT_EQ(failureOf([&] { server.end(operation.start(*server.thread, controller.signal)); }),
              "stream error: " + std::string(operation.refusal));
  }
}

TEST(Thread, HasNothingToSteerAnswerOrInterruptWithoutAnOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("more")); }), "stream error: No active turn to steer");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->submitRequestUserInput("i1", {})); }),
              "stream error: No active turn for request_user_input response");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->interrupt()); }), "no failure");
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

// The id is taken over from an event that was forwarded or a call that returned, and neither has happened before.
TEST(Thread, LearnsItsIDWhenItsFirstTurnHasBeenAccepted) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.keep("turn/start");
    EXPECT_EQ(server.thread->id(), std::nullopt);
    const auto starting = server.start(server.thread->runStreamed("hello"));
    EXPECT_EQ(server.methods().back(), "turn/start");
    EXPECT_EQ(server.thread->id(), std::nullopt);
    EXPECT_TRUE(server.isBusy());
    server.process().answer(server.takeKept(), JSONValue::decode(R"({"turn":{"id":"u1"}})"));
    scheduler.runUntil([&] { return starting->isSet(); });
    EXPECT_EQ(server.thread->id(), "t1");
    const auto heard = server.listen(server.taken(starting).events);
    server.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(server.thread->id(), "t1");
  });
}

// The events are forwarded elsewhere then, and may come later.
TEST(Thread, KnowsItsIDWhenACallerOnAStrandGoesOn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const Strand strand(scheduler, "application");
    std::optional<std::string> id;
    std::optional<StreamedTurn> streamed;
    server.thread->runStreamed("hello").onStrand(strand).start([&](TaskResult<StreamedTurn> result) {
      streamed.emplace(result.take());
      id = server.thread->id();
    });
    server.settle();
    EXPECT_EQ(id, "t1");
    server.completeTurn();
    EXPECT_EQ(server.listen(std::move(streamed->events))->size(), 3U);
  });
}

TEST(Thread, HasNoIDAfterAFirstTurnThatWasRefused) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.refuse("turn/start", "too much");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->runStreamed("hello")); }), "stream error: too much");
    EXPECT_EQ(server.thread->id(), std::nullopt);
    server.answer("turn/start", R"({"turn":{"id":"u1"}})");
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.completeTurn();
    EXPECT_EQ(server.thread->id(), "t1");
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized", "thread/start", "turn/start", "initialize",
                                              "initialized", "thread/start", "turn/start"));
  });
}

TEST(Thread, StartsAConversationOnceAndResumesItFromThen) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    for (int turn = 0; turn < 2; ++turn) {
      const auto heard = server.follow(server.thread->runStreamed("hello"));
      server.completeTurn();
      EXPECT_EQ(heard->back(), "end");
    }
    EXPECT_THAT(server.methods(),
                ElementsAre("initialize", "initialized", "thread/start", "turn/start", "thread/resume", "turn/start"));
    EXPECT_EQ(server.lastParam("thread/resume", "threadId"), JSONValue("t1"));
    EXPECT_EQ(server.server.started(), 1U);
  });
}

TEST(Thread, TakesTheIDThatTheServerResumesATurnUnder) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "old");
    server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    EXPECT_EQ(server.thread->id(), "t1");
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
    EXPECT_EQ(server.thread->id(), "t1");
  });
}

TEST(Thread, KeepsItsIDWhateverThreadsAReviewACompactionAndASideConversationRunOn) {
  for (const ThreadOperation& operation : threadOperations()) {
    if (!operation.refusal) continue;
    inManyOrders([&operation](SimulatedScheduler& scheduler) {
      SimulatedThread server(scheduler, "main");
      server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
      const auto heard = server.follow(operation.start(*server.thread, std::nullopt));
      EXPECT_EQ(heard->front(), "thread.started t1");
      EXPECT_EQ(server.thread->id(), "main");
      beginTurnOf(server, operation);
      completeTurnOf(server, operation);
      EXPECT_EQ(heard->back(), "end");
      EXPECT_EQ(server.thread->id(), "main");
    });
  }
}

TEST(Thread, UsesOneProcessForOperationsOfAllKinds) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto run = server.runOfThread();
    for (const ThreadOperation& operation : threadOperations()) {
      const auto heard = server.follow(operation.start(*server.thread, std::nullopt));
      beginTurnOf(server, operation);
      completeTurnOf(server, operation);
      EXPECT_EQ(heard->back(), "end");
      EXPECT_EQ(server.runOfThread(), run);
    }
    EXPECT_EQ(server.server.started(), 1U);
    EXPECT_THAT(server.methods(),
                ElementsAre("initialize", "initialized", "thread/resume", "turn/start", "thread/resume", "review/start",
                            "thread/resume", "thread/compact/start", "thread/resume", "thread/fork", "turn/start"));
  });
}

TEST(Thread, HandsOnWhatItIsAskedFor) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler, "t1");
  TurnOptions options;
  options.model = "big";
  server.follow(server.thread->runStreamed("hello", options));
  server.completeTurn();
  EXPECT_EQ(server.lastParam("turn/start", "model"), JSONValue("big"));
  EXPECT_EQ(server.lastParam("turn/start", "input").encode(), R"([{"type":"text","text":"hello"}])");

  server.follow(server.thread->startReviewStreamed(ReviewTarget::baseBranch("main")));
  EXPECT_EQ(server.lastParam("review/start", "delivery"), JSONValue("inline"));
  EXPECT_THAT(server.lastParam("review/start", "target").encode(), ::testing::HasSubstr("\"main\""));
  completeTurnOf(server, threadOperations()[1]);

  options.model = "small";
  server.follow(server.thread->runSideConversationStreamed("by the way", "be brief", options));
  EXPECT_EQ(server.lastParam("thread/fork", "developerInstructions"), JSONValue("be brief"));
  EXPECT_EQ(server.lastParam("turn/start", "threadId"), JSONValue("f1"));
  EXPECT_EQ(server.lastParam("turn/start", "model"), JSONValue("small"));
  completeTurnOf(server, threadOperations()[3]);
}

}  // namespace
}  // namespace ormel::testing
