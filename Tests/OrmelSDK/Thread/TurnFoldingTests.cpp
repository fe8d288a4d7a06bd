#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "Support/SimulatedThread.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* completed = R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})";
constexpr const char* usage = R"({"tokenUsage":{"last":{"inputTokens":1,"cachedInputTokens":2,"outputTokens":3}}})";

std::string message(std::string_view id, std::string_view text) {
  return R"({"turnId":"u1","item":{"type":"agentMessage","id":")" + std::string(id) + R"(","text":")" +
         std::string(text) + R"("}})";
}

/// A turn that is waited for as a whole.
class WaitedTurn {
 public:
  explicit WaitedTurn(SimulatedScheduler& scheduler)
      : server(scheduler), outcome_(server.start(server.thread->run("go"))) {}

  bool isOver() const { return outcome_->isSet(); }
  Turn take() { return server.taken(outcome_); }
  std::string failure() {
    return failureOf([this] { take(); });
  }

  SimulatedThread server;

 private:
  std::shared_ptr<Outcome<Turn>> outcome_;
};

std::vector<std::string> idsOf(const Turn& turn) {
  std::vector<std::string> ids;
  for (const ThreadItem& item : turn.items) ids.emplace_back(item.id());
  return ids;
}

TEST(ThreadRun, GivesItemsFinalResponseAndUsageOfTheTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("item/completed", message("m1", "first"));
    turn.server.notify(
        "item/completed",
        R"({"turnId":"u1","item":{"type":"commandExecution","id":"c1","command":"ls","status":"completed"}})");
    turn.server.notify("item/completed", message("m2", "second"));
    turn.server.notify("item/completed", R"({"turnId":"u1","item":{"type":"reasoning","id":"r1","text":"third"}})");
    turn.server.notify("thread/tokenUsage/updated", usage);
    EXPECT_FALSE(turn.isOver());
    turn.server.notify("turn/completed", completed);
    const Turn whole = turn.take();
    EXPECT_THAT(idsOf(whole), ElementsAre("m1", "c1", "m2", "r1"));
    EXPECT_EQ(whole.finalResponse, "second");
    ASSERT_TRUE(whole.usage);
    EXPECT_EQ(whole.usage->inputTokens, 1);
    EXPECT_EQ(whole.usage->outputTokens, 3);
  });
}

TEST(ThreadRun, GivesNoFinalResponseWithoutAMessageOfTheAgent) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("turn/completed", completed);
    const Turn whole = turn.take();
    EXPECT_THAT(whole.items, IsEmpty());
    EXPECT_EQ(whole.finalResponse, "");
    EXPECT_EQ(whole.usage, Usage{});
  });
}

TEST(ThreadRun, TakesAnEmptyLastMessageForTheFinalResponse) {
  SimulatedScheduler scheduler(1);
  WaitedTurn turn(scheduler);
  turn.server.notify("item/completed", message("m1", "first"));
  turn.server.notify("item/completed", message("m2", ""));
  turn.server.notify("turn/completed", completed);
  EXPECT_EQ(turn.take().finalResponse, "");
}

TEST(ThreadRun, PassesOverAllOtherEvents) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u1"}})");
    turn.server.notify("item/started", message("m1", ""));
    turn.server.notify("item/agentMessage/delta", R"({"itemId":"m1","delta":"half a w"})");
    turn.server.notify("warning", R"({"message":"low on memory"})");
    turn.server.notify("item/completed", message("m2", "done"));
    turn.server.notify("no/such/notification", "{}");
    turn.server.notify("item/completed", message("m1", "word"));
    turn.server.notify("turn/completed", completed);
    const Turn whole = turn.take();
    EXPECT_THAT(idsOf(whole), ElementsAre("m2", "m1"));
    EXPECT_EQ(whole.finalResponse, "word");
  });
}

TEST(ThreadRun, FailsWithTheMessageOfAFailedTurnAndTheProcessServesTheNext) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("item/completed", message("m1", "so far"));
    turn.server.notify("turn/completed",
                       R"({"threadId":"t1","turn":{"id":"u1","status":"failed","error":{"message":"no credit"}}})");
    EXPECT_EQ(turn.failure(), "turn failed: no credit");
    EXPECT_FALSE(turn.server.isBusy());
    EXPECT_EQ(turn.server.thread->id(), "t1");
    const auto next = turn.server.start(turn.server.thread->run("again"));
    turn.server.notify("turn/completed", completed);
    EXPECT_EQ(turn.server.taken(next).finalResponse, "");
    EXPECT_EQ(turn.server.server.started(), 1U);
  });
}

// The application may go on as soon as it sees the failure, which is before the end of the events has been forwarded.
TEST(ThreadRun, IsReadyForTheNextTurnInTheMomentInWhichATurnFails) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    SimulatedScheduler scheduler(seed);
    WaitedTurn turn(scheduler);
    turn.server.process().notify("turn/completed",
                                 JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u1","status":"failed"}})"));
    scheduler.runUntil([&] { return turn.isOver(); });
    EXPECT_EQ(turn.failure(), "turn failed: Turn failed");
    const auto next = turn.server.start(turn.server.thread->run("again"));
    turn.server.notify("turn/completed", completed);
    EXPECT_EQ(failureOf([&] { turn.server.taken(next); }), "no failure");
  }
}

TEST(ThreadRun, StopsReadingAtAnErrorWhileTheTurnGoesOn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("error", R"({"error":{"message":"the model is busy"}})");
    EXPECT_EQ(turn.failure(), "stream error: the model is busy");
    EXPECT_TRUE(turn.server.isBusy());
    EXPECT_EQ(failureOf([&] { turn.server.end(turn.server.thread->run("again")); }),
              "stream error: An app-server operation is already active");
    turn.server.notify("turn/completed", completed);
    EXPECT_FALSE(turn.server.isBusy());
    const auto next = turn.server.start(turn.server.thread->run("again"));
    turn.server.notify("turn/completed", completed);
    EXPECT_EQ(failureOf([&] { turn.server.taken(next); }), "no failure");
    EXPECT_EQ(turn.server.server.started(), 1U);
  });
}

TEST(ThreadRun, FailsAsTheEventsDo) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.process().writeError("out of disk\n");
    turn.server.process().exit(1);
    turn.server.pass(std::chrono::seconds(1));
    EXPECT_EQ(turn.failure(), "stream error: out of disk");
  });
}

TEST(ThreadRun, FailsAsTheStartDoes) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    server.refuse("thread/start", "no room");
    EXPECT_EQ(failureOf([&] { server.end(server.thread->run("go")); }), "stream error: no room");
    EXPECT_EQ(server.thread->id(), std::nullopt);
  });
}

TEST(ThreadRun, FailsAsAbortedWhenItIsInterrupted) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.end(turn.server.thread->interrupt());
    turn.server.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u1","status":"interrupted"}})");
    EXPECT_EQ(turn.failure(), "aborted");
  });
}

TEST(ThreadRun, GivesTheTurnThatTheServerInterruptsByItself) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("item/completed", message("m1", "so far"));
    turn.server.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u1","status":"interrupted"}})");
    EXPECT_EQ(turn.take().finalResponse, "so far");
  });
}

TEST(ThreadRun, GivesWhatItHasWhenTheEventsEndWithoutTheEndOfTheTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    WaitedTurn turn(scheduler);
    turn.server.notify("item/completed", message("m1", "so far"));
    turn.server.end(turn.server.runOfThread()->release());
    const Turn whole = turn.take();
    EXPECT_EQ(whole.finalResponse, "so far");
    EXPECT_EQ(whole.usage, std::nullopt);
  });
}

TEST(ThreadRun, LeavesTheTurnToItselfWhenItsCallerIsCancelled) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedThread server(scheduler);
    std::stop_source caller;
    const auto turn = server.start(server.thread->run("go"), caller.get_token());
    caller.request_stop();
    server.settle();
    EXPECT_EQ(failureOf([&] { server.taken(turn); }), "cancelled");
    EXPECT_TRUE(server.isBusy());
    server.completeTurn();
    EXPECT_FALSE(server.isBusy());
    EXPECT_EQ(server.server.running(), 1U);
  });
}

TEST(Turn, IsWrittenAsJSON) {
  Turn turn;
  AgentMessageItem message;
  message.id = "m";
  message.text = "hello";
  turn.items.emplace_back(message);
  turn.finalResponse = "hello";
  std::ostringstream text;
  text << turn;
  const JSONValue shown = JSONValue::decode(text.str());
  EXPECT_EQ(shown["finalResponse"].textOr(""), "hello");
  EXPECT_EQ(shown["items"][0]["text"].textOr(""), "hello");
  EXPECT_EQ(shown.find("usage"), nullptr);
  turn.usage = Usage();
  std::ostringstream withUsage;
  withUsage << turn;
  EXPECT_FALSE(JSONValue::decode(withUsage.str())["usage"].isNull());
}

}  // namespace
