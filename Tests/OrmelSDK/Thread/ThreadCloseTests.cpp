#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

using std::chrono::seconds;

constexpr const char* closedText = "stream error: The thread has been closed";

TEST(ThreadIdle, EndsWithTheOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.end(server.thread->idle());
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    const auto first = server.start(server.thread->idle());
    const auto second = server.start(server.thread->idle());
    server.end(server.thread->interrupt());
    EXPECT_FALSE(first->isSet());
    server.completeTurn("interrupted");
    EXPECT_TRUE(first->isSet() && second->isSet());
    EXPECT_EQ(heard->back(), "aborted");
    const auto next = server.follow(server.thread->runStreamed("again"));
    server.completeTurn();
    EXPECT_EQ(next->back(), "end");
  });
}

TEST(ThreadIdle, LetsTheNextOperationBeginAtOnce) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.follow(server.thread->runStreamed("hello"));
    auto askAgain = [](Thread thread) -> Task<StreamedTurn> {
      co_await thread.idle();
      auto next = thread.runStreamed("again");
      co_return co_await std::move(next);
    };
    const auto next = server.start(askAgain(*server.thread));
    server.completeTurn();
    const auto heard = server.listen(server.taken(next).events);
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

TEST(ThreadIdle, EndsAfterAStartThatFails) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler);
  server.keep("turn/start");
  const auto starting = server.start(server.thread->runStreamed("hello"));
  const auto idle = server.start(server.thread->idle());
  EXPECT_FALSE(idle->isSet());
  server.process().exit(1);
  server.pass(seconds(1));
  EXPECT_TRUE(idle->isSet());
  EXPECT_NE(failureOf([&] { server.taken(starting); }), "no failure");
}

TEST(ThreadIdle, CanBeGivenUp) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler);
  server.follow(server.thread->runStreamed("hello"));
  std::stop_source stop;
  const auto idle = server.start(server.thread->idle(), stop.get_token());
  stop.request_stop();
  server.settle();
  EXPECT_EQ(failureOf([&] { server.taken(idle); }), "cancelled");
  EXPECT_TRUE(server.isBusy());
  server.completeTurn();
}

TEST(ThreadClose, CompletesWhenTheProcessIsGone) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.follow(server.thread->runStreamed("hello"));
    server.completeTurn();
    EXPECT_EQ(server.server.running(), 1U);
    const auto first = startOn(scheduler, server.thread->close());
    const auto second = startOn(scheduler, server.thread->close());
    scheduler.runUntil([&] { return first->isSet(); });
    EXPECT_EQ(server.server.running(), 0U);
    server.settle();
    EXPECT_TRUE(second->isSet());
    server.end(server.thread->close());
    EXPECT_EQ(server.thread->id(), "t1");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->runStreamed("more")); }), closedText);
    EXPECT_EQ(server.server.started(), 1U);
    EXPECT_FALSE(server.isBusy());
  });
}

TEST(ThreadClose, AbortsWhatRuns) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    server.end(server.thread->close());
    EXPECT_EQ(heard->back(), "aborted");
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 0U);
    server.end(server.thread->idle());
  });
}

TEST(ThreadClose, AbortsAStartAtWhateverStepItComes) {
  std::uint64_t stepsOfStart = 0;
  for (std::uint64_t step = 0; step <= stepsOfStart; ++step) {
    SCOPED_TRACE(step);
    SimulatedScheduler scheduler(1);
    SimulatedThread server(scheduler);
    const auto starting = startOn(scheduler, server.thread->runStreamed("hello"));
    for (std::uint64_t taken = 0; taken < step && !starting->isSet(); ++taken) ASSERT_TRUE(scheduler.step());
    if (!starting->isSet()) stepsOfStart = scheduler.steps() + 1;
    const auto closing = server.start(server.thread->close());
    EXPECT_TRUE(closing->isSet());
    EXPECT_EQ(server.server.running(), 0U);
    const std::string outcome =
        failureOf([&] { EXPECT_EQ(server.listen(server.taken(starting).events)->back(), "aborted"); });
    EXPECT_THAT(outcome, ::testing::AnyOf("no failure", "aborted", closedText, operationNotCurrent));
    EXPECT_EQ(failureOf([&] { server.end(server.thread->run("more")); }), closedText);
  }
  EXPECT_GT(stepsOfStart, 20U);
}

TEST(ThreadClose, KillsAProcessThatDoesNotEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    InMemoryServerScript stubborn;
    stubborn.onMessage = [](InMemoryProcess& process, const JSONValue& message) {
      const bool isTurn = message["method"].textOr("") == "turn/start";
      const JSONValue id = JSONValue::object({{"id", isTurn ? "u1" : "t1"}});
      if (message.find("id")) process.answer(message, JSONValue::object({{isTurn ? "turn" : "thread", id}}));
    };
    stubborn.onTerminate = [](InMemoryProcess&) {};
    stubborn.onInputEnd = [](InMemoryProcess&) {};
    server.server.setScript(std::move(stubborn));
    const auto heard = server.follow(server.thread->runStreamed("hello"));
    const auto closing = server.start(server.thread->close());
    server.pass(seconds(2));
    EXPECT_FALSE(closing->isSet());
    EXPECT_EQ(heard->back(), "aborted");
    server.pass(seconds(1));
    EXPECT_TRUE(closing->isSet());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(ThreadClose, GoesOnWhenItsCallerIsCancelled) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler);
  server.follow(server.thread->runStreamed("hello"));
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(failureOf([&] { server.taken(server.start(server.thread->close(), stop.get_token())); }), "cancelled");
  server.settle();
  EXPECT_EQ(server.server.running(), 0U);
  EXPECT_EQ(failureOf([&] { server.end(server.thread->runStreamed("more")); }), closedText);
}

TEST(ThreadClose, OfAnUnusedThreadStartsNothing) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler, "t1");
  server.end(server.thread->close());
  EXPECT_EQ(failureOf([&] { server.end(server.thread->runStreamed("more")); }), closedText);
  EXPECT_EQ(server.server.launchesTried(), 0U);
}

TEST(ThreadWithoutConversation, FailsClearlyAtEachCall) {
  constexpr const char* text =
      "other error: This Thread is the handle of no conversation: ask Ormel::startThread for one";
  const std::pair<const char*, std::function<void(const Thread&)>> calls[] = {
      {"id", [](const Thread& thread) { static_cast<void>(thread.id()); }},
      {"run", [](const Thread& thread) { thread.run("x").get(); }},
      {"runStreamed", [](const Thread& thread) { thread.runStreamed("x").get(); }},
      {"review", [](const Thread& thread) { thread.startReviewStreamed(ReviewTarget::uncommittedChanges()).get(); }},
      {"compact", [](const Thread& thread) { thread.compactStreamed().get(); }},
      {"side", [](const Thread& thread) { thread.runSideConversationStreamed("x", "y").get(); }},
      {"steer", [](const Thread& thread) { thread.steer("x").get(); }},
      {"submit", [](const Thread& thread) { thread.submitRequestUserInput("x", {}).get(); }},
      {"interrupt", [](const Thread& thread) { thread.interrupt().get(); }},
      {"idle", [](const Thread& thread) { thread.idle().get(); }},
      {"close", [](const Thread& thread) { thread.close().get(); }},
  };
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler);
  Thread moved = *server.thread;
  const Thread taker = std::move(moved);
  for (const auto& [name, call] : calls) {
    SCOPED_TRACE(name);
    EXPECT_EQ(failureOf([&] { call(Thread()); }), text);
    EXPECT_EQ(failureOf([&] { call(moved); }), text);  // NOLINT(bugprone-use-after-move)
  }
  EXPECT_EQ(taker.id(), std::nullopt);
}

}  // namespace
}  // namespace ormel::testing
