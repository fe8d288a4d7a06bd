#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

using ::testing::ElementsAre;

class ThreadAbort : public ThreadOperationTest {};

std::ptrdiff_t interruptsOf(const SimulatedThread& server) {
  const auto methods = server.methods();
  return std::count(methods.begin(), methods.end(), "turn/interrupt");
}

TEST_P(ThreadAbort, BeforeTheCallStartsNothing) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const AbortController controller;
    controller.abort();
    EXPECT_EQ(failureOf([&] { server.end(start(server, controller.signal)); }), "aborted");
    EXPECT_EQ(server.server.launchesTried(), 0U);
    EXPECT_FALSE(server.isBusy());
  });
}

// Among the steps are those between the look at the signal and its connection. A start that finds its operation ended
// when it goes on after a wait says so.
TEST_P(ThreadAbort, IsNotLostAtWhateverStepOfTheStartItComes) {
  std::uint64_t stepsOfStart = 0;
  for (std::uint64_t step = 0; step <= stepsOfStart; ++step) {
    SCOPED_TRACE(step);
    SimulatedScheduler scheduler(1);
    SimulatedThread server(scheduler, "t1");
    const AbortController controller;
    const auto starting = startOn(scheduler, start(server, controller.signal));
    for (std::uint64_t taken = 0; taken < step && !starting->isSet(); ++taken) ASSERT_TRUE(scheduler.step());
    if (!starting->isSet()) stepsOfStart = scheduler.steps() + 1;
    controller.abort();
    server.settle();
    const std::string outcome = failureOf([&] {
      const auto heard = server.listen(server.taken(starting).events);
      server.pass(std::chrono::seconds(3));
      EXPECT_EQ(heard->back(), "aborted");
    });
    EXPECT_THAT(outcome, ::testing::AnyOf("aborted", "no failure",
                                          "stream error: Prepared app-server operation is no longer current"));
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_EQ(server.thread->id(), "t1");
  }
  EXPECT_GT(stepsOfStart, 20U);
}

TEST_P(ThreadAbort, OfARunningTurnGoesByTheServerAndCostsTheProcess) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const AbortController controller;
    const auto heard = server.follow(start(server, controller.signal));
    beginTurnOf(server, GetParam());
    controller.abort();
    controller.abort();
    server.settle();
    EXPECT_EQ(interruptsOf(server), 1);
    EXPECT_EQ(server.lastParam("turn/interrupt", "threadId"), JSONValue(GetParam().turnThread));
    EXPECT_TRUE(server.isBusy());
    server.notify("turn/completed", R"({"turn":{"id":"u1","status":"interrupted"}})");
    EXPECT_EQ(heard->back(), "aborted");
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_EQ(server.thread->id(), "t1");
  });
}

TEST_P(ThreadAbort, ComesToNothingOnceTheOperationHasEnded) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const AbortController controller;
    const auto first = server.follow(start(server, controller.signal));
    beginTurnOf(server, GetParam());
    completeTurnOf(server, GetParam());
    const auto second = server.follow(server.thread->runStreamed("next"));
    controller.abort();
    server.settle();
    EXPECT_EQ(interruptsOf(server), 0);
    EXPECT_EQ(first->back(), "end");
    server.completeTurn();
    EXPECT_EQ(second->back(), "end");
  });
}

TEST_P(ThreadAbort, IsNotListenedToOnceTheOperationHasEnded) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler, "t1");
  const AbortController ofTurn;
  server.follow(start(server, ofTurn.signal));
  beginTurnOf(server, GetParam());
  completeTurnOf(server, GetParam());
  const AbortController ofFailure;
  server.refuse(GetParam().lastRequest, "not today");
  EXPECT_EQ(failureOf([&] { server.end(start(server, ofFailure.signal)); }), "stream error: not today");
  server.settle();
  const auto steps = scheduler.steps();
  ofTurn.abort();
  ofFailure.abort();
  server.settle();
  EXPECT_EQ(scheduler.steps(), steps);
}

TEST_P(ThreadAbort, ComesToNothingAfterAStartThatFailed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const AbortController controller;
    server.refuse("thread/resume", "gone");
    EXPECT_EQ(failureOf([&] { server.end(start(server, controller.signal)); }), "stream error: gone");
    server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
    const auto next = server.follow(server.thread->runStreamed("next"));
    controller.abort();
    server.settle();
    EXPECT_EQ(interruptsOf(server), 0);
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
  });
}

TEST_P(ThreadAbort, EndsAStartWhoseCallerIsCancelled) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    server.keep(GetParam().lastRequest);
    std::stop_source caller;
    const auto starting = server.start(start(server), caller.get_token());
    EXPECT_TRUE(server.isBusy());
    caller.request_stop();
    server.settle();
    EXPECT_EQ(failureOf([&] { server.taken(starting); }), "cancelled");
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

INSTANTIATE_TEST_SUITE_P(Operations, ThreadAbort, ::testing::ValuesIn(threadOperations()),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST(ThreadSignal, EndsAllOperationsThatItWasGivenTo) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    const AbortController controller;
    SimulatedThread one(scheduler, "t1");
    SimulatedThread other(scheduler, "t1");
    const auto first = one.follow(one.thread->runStreamed("hello", optionsWith(controller.signal)));
    const auto second = other.follow(other.thread->compactStreamed(controller.signal));
    controller.abort();
    one.pass(std::chrono::seconds(3));
    EXPECT_EQ(first->back(), "aborted");
    EXPECT_EQ(second->back(), "aborted");
  });
}

TEST(ThreadSignal, DoesNotKeepTheThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    const AbortController controller;
    SimulatedThread server(scheduler, "t1");
    server.follow(server.thread->runStreamed("hello", optionsWith(controller.signal)));
    server.completeTurn();
    server.drop();
    EXPECT_TRUE(server.isGone());
    EXPECT_EQ(server.server.running(), 0U);
    controller.abort();
  });
}

TEST(ThreadInterrupt, EndsTheEventsThreeSecondsAfterTheServerTookNoteAtTheLatest) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler, "t1");
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.end(server.thread->interrupt());
    server.end(server.thread->interrupt());
    EXPECT_EQ(interruptsOf(server), 1);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    server.pass(std::chrono::milliseconds(2999));
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    server.pass(std::chrono::milliseconds(1));
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
    EXPECT_EQ(server.server.running(), 0U);
    // The next operation runs on a process of its own.
    const auto next = server.follow(server.thread->runStreamed("again"));
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
    EXPECT_EQ(server.server.started(), 2U);
  });
}

TEST(ThreadInterrupt, EndsAStartAtOnce) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.keep("turn/start");
    const auto starting = server.start(server.thread->runStreamed("hello"));
    server.end(server.thread->interrupt());
    EXPECT_EQ(interruptsOf(server), 0);
    EXPECT_EQ(failureOf([&] { server.taken(starting); }), "aborted");
    EXPECT_EQ(server.thread->id(), std::nullopt);
    EXPECT_FALSE(server.isBusy());
  });
}

// An abort ends a turn that its consumer does not read.
TEST(ThreadInterrupt, NeedsNoReader) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    {
      const auto unread = server.end(server.thread->runStreamed("hello"));
    }
    server.end(server.thread->interrupt());
    server.pass(std::chrono::seconds(3));
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

}  // namespace
}  // namespace ormel::testing
