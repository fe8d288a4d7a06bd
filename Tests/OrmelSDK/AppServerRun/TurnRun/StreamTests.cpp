#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Support/SimulatedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AppServerTurnRunStream, ReservesOneOperationAtATime) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto generation = engine.end(engine.run->reserveOperation());
    EXPECT_EQ(generation, 1U);
    EXPECT_EQ(failureOf([&] { engine.end(engine.run->reserveOperation()); }),
              "stream error: An app-server operation is already active");
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "stream error: An app-server operation is already active");
    const auto heard = engine.listen(engine.end(engine.turn(std::nullopt, generation)).events);
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.end(engine.run->reserveOperation()), 2U);
  });
}

TEST(AppServerTurnRunStream, LeavesARunningOperationAloneWhenAnotherIsRefused) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    const std::string refusal = "stream error: An app-server operation is already active";
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn()); }), refusal);
    EXPECT_EQ(failureOf([&] { engine.end(engine.review()); }), refusal);
    EXPECT_EQ(failureOf([&] { engine.end(engine.compaction()); }), refusal);
    EXPECT_EQ(failureOf([&] { engine.end(engine.forkTurn()); }), refusal);
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunStream, RefusesAGenerationThatIsNotCurrentAndLeavesTheRunAlone) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn(std::nullopt, 1)); }), operationNotCurrent);
    EXPECT_EQ(engine.state(), "pending");
    const auto heard = engine.startTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn(std::nullopt, 2)); }), operationNotCurrent);
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn(std::nullopt, 0)); }), operationNotCurrent);
    engine.completeTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn(std::nullopt, 1)); }), operationNotCurrent);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunStream, RefusesAnOperationThatWasAbortedBeforeItsStart) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto generation = engine.end(engine.run->reserveOperation());
    engine.interrupt(generation);
    EXPECT_EQ(engine.state(), "failed");
    EXPECT_EQ(failureOf([&] { engine.end(engine.turn(std::nullopt, generation)); }), operationNotCurrent);
    EXPECT_EQ(engine.server.started(), 0U);
  });
}

TEST(AppServerTurnRunStream, DeliversTheEventsBeforeItsConsumerFirst) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    const auto generation = engine.end(engine.run->reserveOperation());
    engine.notify("warning", R"({"message":"a"})");
    engine.notify("warning", R"({"message":"b"})");
    const auto heard = engine.listen(engine.end(engine.turn(std::nullopt, generation)).events);
    EXPECT_THAT(*heard, ElementsAre("warning a", "warning b", "thread.started t1"));
  });
}

TEST(AppServerTurnRunStream, ForgetsTheEventsOfAnEarlierOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    engine.notify("warning", R"({"message":"between"})");
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1"));
  });
}

struct EndCase {
  const char* turn;
  const char* event;
};

TEST(AppServerTurnRunStream, EndsNormallyWhateverTheServerSaysOfTheTurn) {
  const EndCase cases[] = {
      {R"({"id":"u1","status":"completed"})", "turn.completed"},
      {R"({"id":"u1","status":"interrupted"})", "turn.completed"},
      {R"({"id":"u1","status":"failed","error":{"message":"no tokens"}})", "turn.failed no tokens"},
      {R"({"id":"u1","status":"failed","error":{}})", "turn.failed Turn failed"},
      {R"({"id":"u1","status":"failed"})", "turn.failed Turn failed"},
      {R"({"id":"u1","status":"weird"})", "turn.failed Unknown turn completion status: weird"},
  };
  for (const EndCase& end : cases) {
    SCOPED_TRACE(end.turn);
    inManyOrders([&end](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      const auto heard = engine.startTurn();
      engine.notify("turn/completed", std::string(R"({"threadId":"t1","turn":)") + end.turn + "}");
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", end.event, "end"));
      EXPECT_EQ(engine.state(), "finished");
      EXPECT_TRUE(engine.run->transport().hasProcess());
      EXPECT_EQ(engine.process().terminationSignals(), 0U);
      EXPECT_EQ(engine.run->stream().completedOperationGenerationHighWaterMark(), 1U);
      EXPECT_FALSE(engine.run->stream().currentOperationGeneration());
    });
  }
}

TEST(AppServerTurnRunStream, TellsTheLastUsageAtTheEnd) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  auto events = engine.end(engine.turn()).events;
  const char* usage = R"({"tokenUsage":{"last":{"inputTokens":1,"cachedInputTokens":2,"outputTokens":3}}})";
  engine.notify("thread/tokenUsage/updated", usage);
  engine.completeTurn();
  std::optional<Usage> told;
  for (const ThreadEvent& event : events) {
    if (const auto* completed = std::get_if<TurnCompletedEvent>(&event.value)) told = completed->usage;
  }
  ASSERT_TRUE(told);
  EXPECT_EQ(*told, (Usage{std::nullopt, 1, 2, 3, std::nullopt}));
}

TEST(AppServerTurnRunStream, LetsTheFirstEndWin) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.process().notify("turn/completed", JSONValue::decode(R"({"turn":{"id":"u1","status":"completed"}})"));
    engine.process().notify("turn/completed", JSONValue::decode(R"({"turn":{"id":"u1","status":"failed"}})"));
    engine.write("[]\n");
    engine.interrupt();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunStream, GoesOnWhenItsConsumerStops) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.end(engine.turn());
    engine.notify("warning", R"({"message":"a"})");
    EXPECT_EQ(engine.state(), "pending");
    engine.completeTurn();
    EXPECT_EQ(engine.state(), "finished");
  });
}

TEST(AppServerTurnRunStream, KeepsEventsForAConsumerThatDoesNotRead) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    auto events = engine.end(engine.turn()).events;
    std::vector<std::string> expected = {"thread.started t1"};
    for (int count = 0; count < 100; ++count) {
      engine.process().notify("warning", JSONValue::object({{"message", std::to_string(count)}}));
      expected.push_back("warning " + std::to_string(count));
    }
    engine.completeTurn();
    EXPECT_EQ(engine.state(), "finished");
    expected.insert(expected.end(), {"turn.completed", "end"});
    EXPECT_EQ(*engine.listen(std::move(events)), expected);
  });
}

TEST(AppServerTurnRunStream, StartsWithSuccessThoughTheOperationEndsBeforeItsResponseIsTaken) {
  using EarlyEnding = void (*)(SimulatedRun&);
  const std::pair<EarlyEnding, const char*> endings[] = {
      {[](SimulatedRun& engine) { engine.interrupt(); }, "aborted"},
      {[](SimulatedRun& engine) { engine.write("{}\n"); }, "stream error: Unexpected app-server protocol object"},
      {[](SimulatedRun& engine) { engine.release(); }, "end"},
  };
  for (const auto& entry : endings) {
    const auto ending = entry.first;
    const auto told = entry.second;
    SCOPED_TRACE(told);
    inManyOrders([ending, told](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      auto gate = std::make_shared<OneShot<void>>();
      std::vector<std::string> hooked;
      engine.run->postRequestAwaitHook = [&hooked, gate](const std::string& method, std::uint64_t generation) {
        hooked.push_back(method + " " + std::to_string(generation));
        return heldOpen(gate);
      };
      const auto starting = engine.start(engine.turn());
      EXPECT_THAT(hooked, ElementsAre("turn/start 1"));
      ending(engine);
      gate->resume();
      engine.settle();
      const auto heard = engine.listen(engine.taken(starting).events);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", told));
    });
  }
}

TEST(AppServerTurnRunStream, EndsATurnWhoseCompletionComesWithItsResponse) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    auto gate = std::make_shared<OneShot<void>>();
    engine.run->postRequestAwaitHook = [gate](const std::string&, std::uint64_t) { return heldOpen(gate); };
    const auto starting = engine.start(engine.turn());
    engine.completeTurn();
    gate->resume();
    engine.settle();
    const auto heard = engine.listen(engine.taken(starting).events);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
  });
}

TEST(AppServerTurnRunStream, SteersWithSuccessThoughTheTurnEndsBeforeTheResponseIsTaken) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    auto gate = std::make_shared<OneShot<void>>();
    std::string hooked;
    engine.run->postRequestAwaitHook = [&hooked, gate](const std::string& method, std::uint64_t generation) {
      hooked = method + " " + std::to_string(generation);
      return heldOpen(gate);
    };
    const auto steering = engine.start(engine.steer());
    EXPECT_EQ(hooked, "turn/steer 1");
    engine.completeTurn();
    EXPECT_FALSE(steering->isSet());
    gate->resume();
    engine.settle();
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), "no failure");
  });
}

TEST(AppServerTurnRunStream, EndsNormallyAndThenTheProcessWhenItIsReleased) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.release();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_FALSE(engine.run->transport().hasProcess());
    EXPECT_EQ(engine.server.running(), 0U);
  });
}

TEST(AppServerTurnRunStream, MayBeReleasedBeforeItsFirstOperationAndUsedAfter) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.release();
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_EQ(engine.run->stream().completedOperationGenerationHighWaterMark(), 0U);
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1"));
  });
}

}  // namespace
