#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Support/SimulatedThread.h"

// Operations that begin while another one ends.
namespace ormel::testing {
namespace {

// The end that is being forwarded is that of an operation that is over: it must not clear the next one's.
TEST(Thread, LetsTheNextOperationBeginBeforeTheEndOfTheLastIsForwarded) {
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler);
    const auto first = server.follow(server.thread->runStreamed("one"));
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    const auto run = server.runOfThread();
    scheduler.runUntil([&] { return !run->stream().isPending(); });
    const auto second = server.follow(server.thread->runStreamed("two"));
    EXPECT_EQ(first->back(), "end");
    EXPECT_TRUE(server.isBusy());
    EXPECT_EQ(server.thread->id(), "t1");
    server.completeTurn();
    EXPECT_EQ(second->back(), "end");
    EXPECT_FALSE(server.isBusy());
  }
}

// A reservation can be ended by the end of an idle server before its caller goes on. The caller must not take the place
// of another one, whose operation has begun since.
TEST(Thread, StaysWithTheOperationThatRunsWhenAReservationBeforeItHasEnded) {
  int reservationsEnded = 0;
  for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler, "t1");
    server.follow(server.thread->runStreamed("first"));
    server.completeTurn();
    server.process().closeOutput();
    const auto one = startOn(scheduler, server.thread->runStreamed("one"));
    const auto other = startOn(scheduler, server.thread->runStreamed("other"));
    server.settle();
    std::vector<SimulatedThread::Heard> accepted;
    for (const auto& outcome : {one, other}) {
      const std::string failure = failureOf([&] { accepted.push_back(server.listen(server.taken(outcome).events)); });
      if (failure == "stream error: Prepared app-server operation is no longer current") ++reservationsEnded;
    }
    if (!accepted.empty() && accepted.back()->back() == "thread.started t1") {
      EXPECT_TRUE(server.isBusy());
      EXPECT_EQ(failureOf([&] { server.end(server.thread->steer("faster")); }), "no failure");
      server.completeTurn();
      EXPECT_EQ(accepted.back()->back(), "end");
    }
    EXPECT_FALSE(server.isBusy());
    if (HasFailure()) return;
  }
  EXPECT_GT(reservationsEnded, 0);
}

/// A second turn that its run has begun, while the thread has not heard of it, nor of the end of the first.
class UnnoticedTurn {
 public:
  explicit UnnoticedTurn(SimulatedScheduler& scheduler) : server(scheduler) {
    server.follow(server.thread->runStreamed("one"));
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    const auto run = server.runOfThread();
    scheduler.runUntil([&] { return !run->stream().isPending(); });
    second_ = startOn(scheduler, server.thread->runStreamed("two"));
    scheduler.runUntil([&] { return run->stream().currentOperationGeneration() == 2U; });
    isUnnoticed = server.operation() == 1U;
  }

  /// The second turn goes on to its end.
  void complete() {
    server.settle();
    const auto heard = server.listen(server.taken(second_).events);
    server.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  }

  SimulatedThread server;
  /// Which it is in some orders only.
  bool isUnnoticed = false;

 private:
  std::shared_ptr<Outcome<StreamedTurn>> second_;
};

TEST(Thread, InterruptsNoOperationButTheOneThatItKnows) {
  int unnoticed = 0;
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    UnnoticedTurn turn(scheduler);
    if (turn.isUnnoticed) {
      ++unnoticed;
      turn.server.thread->interrupt().start([](TaskResult<void> result) { result.take(); });
    }
    turn.complete();
  }
  EXPECT_GT(unnoticed, 0);
}

TEST(Thread, AnswersNoOperationButTheOneThatItKnows) {
  int unnoticed = 0;
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    UnnoticedTurn turn(scheduler);
    std::string failure;
    if (turn.isUnnoticed) {
      ++unnoticed;
      turn.server.thread->submitRequestUserInput("q1", {}).start(
          [&failure](TaskResult<void> result) { failure = failureOf([&] { result.take(); }); });
    }
    turn.complete();
    const bool isRefused = failure == "stream error: No active turn for request_user_input response";
    EXPECT_EQ(isRefused, turn.isUnnoticed) << failure;
  }
  EXPECT_GT(unnoticed, 0);
}

// A review belongs to the conversation that was the thread's when it was asked for, though a turn that was ending then
// has led to another one.
TEST(Thread, GoesBackToTheConversationThatAReviewWasAskedForIn) {
  int accepted = 0;
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler, "main");
    server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
    server.keep("turn/start");
    const auto turn = server.start(server.thread->runStreamed("hello"));
    server.process().answer(server.takeKept(), JSONValue::decode(R"({"turn":{"id":"u1"}})"));
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    const auto run = server.runOfThread();
    scheduler.runUntil([&] { return !run->stream().isPending() || turn->isSet(); });
    if (turn->isSet()) continue;
    EXPECT_EQ(server.thread->id(), "main");
    std::optional<StreamedTurn> review;
    server.thread->startReviewStreamed(ReviewTarget::uncommittedChanges()).start([&](TaskResult<StreamedTurn> result) {
      review.emplace(result.take());
    });
    server.settle();
    ASSERT_TRUE(review);
    ++accepted;
    server.notify("turn/completed", R"({"threadId":"r1","turn":{"id":"u1","status":"completed"}})");
    EXPECT_EQ(server.listen(std::move(review->events))->back(), "end");
    EXPECT_EQ(server.thread->id(), "main");
  }
  EXPECT_GT(accepted, 0);
}

// The first turn's news of its thread is forwarded when the second one has its place already.
TEST(Thread, LearnsNoIDFromATurnThatIsOver) {
  int late = 0;
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler, "main");
    server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
    server.keep("turn/start");
    const auto first = server.start(server.thread->runStreamed("one"));
    server.process().answer(server.takeKept(), JSONValue::decode(R"({"turn":{"id":"u1"}})"));
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    const auto run = server.runOfThread();
    scheduler.runUntil([&] { return !run->stream().isPending(); });
    server.keep("thread/resume");
    const auto second = startOn(scheduler, server.thread->runStreamed("two"));
    scheduler.runUntil([&] { return server.operation() == 2U; });
    const auto id = server.thread->id();
    if (id == "main") ++late;
    server.settle();
    EXPECT_EQ(server.thread->id(), id);
    server.end(server.thread->interrupt());
    EXPECT_EQ(failureOf([&] { server.taken(second); }), "aborted");
    EXPECT_EQ(server.thread->id(), id);
  }
  EXPECT_GT(late, 0);
}

// A review that does not come about leaves the conversation as it is by then.
TEST(Thread, KeepsTheConversationThatATurnHasLedToWhenAReviewIsRefused) {
  int refused = 0;
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    SimulatedThread server(scheduler, "main");
    server.answer("thread/resume", R"({"thread":{"id":"t1"}})");
    server.refuse("review/start", "not now");
    server.keep("turn/start");
    const auto turn = server.start(server.thread->runStreamed("hello"));
    server.process().answer(server.takeKept(), JSONValue::decode(R"({"turn":{"id":"u1"}})"));
    server.process().notify("turn/completed",
                            JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})"));
    const auto run = server.runOfThread();
    scheduler.runUntil([&] { return !run->stream().isPending() || turn->isSet(); });
    if (turn->isSet()) continue;
    std::string failure;
    server.thread->startReviewStreamed(ReviewTarget::uncommittedChanges()).start([&](TaskResult<StreamedTurn> result) {
      failure = failureOf([&] { result.take(); });
    });
    server.settle();
    EXPECT_EQ(failure, "stream error: not now");
    if (server.thread->id() == "t1") ++refused;
  }
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace ormel::testing
