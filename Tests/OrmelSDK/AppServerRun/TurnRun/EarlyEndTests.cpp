#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/NotifiedRun.h"

// Operations that are over before the start that is under way for them has its last response.
namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

using Channel = EventChannel<ThreadEvent>;

struct EarlyOperation {
  const char* name;
  std::function<Task<Channel>(SimulatedRun&)> begin;
  const char* lastMethod;
  const char* lastResponse;
  /// The events ahead of the last response.
  std::vector<std::string> begun;
};

const std::vector<EarlyOperation>& earlyOperations() {
  static const std::vector<EarlyOperation> all = {
      {"a turn",
       [](SimulatedRun& engine) { return channelOf(engine.turn()); },
       "turn/start",
       R"({"turn":{"id":"u1"}})",
       {"thread.started t1"}},
      {"a review",
       [](SimulatedRun& engine) { return engine.review(); },
       "review/start",
       R"({"reviewThreadId":"r1","turn":{"id":"u1"}})",
       {"thread.started t1"}},
      {"a compaction",
       [](SimulatedRun& engine) { return engine.compaction(); },
       "thread/compact/start",
       "{}",
       {"thread.started t1"}},
      {"a turn on a fork",
       [](SimulatedRun& engine) { return engine.forkTurn(); },
       "turn/start",
       R"({"turn":{"id":"u1"}})",
       {"thread.started t1", "thread.started f1"}},
  };
  return all;
}

struct Ending {
  const char* name;
  std::function<Task<void>(SimulatedRun&)> end;
  /// The failure of a start that still waits for its response.
  const char* heardByWaiter;
  /// The last event if the response had come.
  const char* heardByConsumer;
};

const std::vector<Ending>& endings() {
  static const std::vector<Ending> all = {
      {"released", [](SimulatedRun& engine) { return engine.run->release(); }, "stream error: Stream finished", "end"},
      {"aborted", [](SimulatedRun& engine) { return engine.run->interruptFromSignal(); }, "aborted", "aborted"},
  };
  return all;
}

template <typename Scenario>
void forEachOperationAndEnding(Scenario scenario) {
  for (const EarlyOperation& operation : earlyOperations()) {
    for (const Ending& ending : endings()) {
      SCOPED_TRACE(std::string(operation.name) + ", " + ending.name);
      inManyOrders([&](SimulatedScheduler& scheduler) {
        SimulatedRun engine(scheduler);
        engine.keep(operation.lastMethod);
        const auto starting = engine.start(operation.begin(engine));
        EXPECT_EQ(engine.kept(), 1U);
        scenario(engine, operation, ending, starting);
      });
    }
  }
}

TEST(AppServerTurnRunEarlyEnd, FailsAStartThatStillWaitsAndDropsItsResponse) {
  forEachOperationAndEnding(
      [](SimulatedRun& engine, const EarlyOperation& operation, const Ending& ending, auto& starting) {
        engine.end(ending.end(engine));
        EXPECT_EQ(failureOf([&] { SimulatedRun::taken(starting); }), ending.heardByWaiter);
        engine.process().answer(engine.takeKept(), JSONValue::decode(operation.lastResponse));
        engine.settle();
        EXPECT_FALSE(engine.run->scope().coordinatorTurnID());
        engine.answer(operation.lastMethod, operation.lastResponse);
        engine.end(operation.begin(engine));
        EXPECT_EQ(engine.server.started(), 2U);
      });
}

/// Ends the operation between the moment in which its response is read and the one in which the start goes on.
void endWithTheNextLine(SimulatedRun& engine, const Ending& ending) {
  engine.run->stdoutChunkProcessingHook = [&engine, &ending](std::string chunk) -> Task<void> {
    // The reader handles the chunk before the strand comes to what is posted here.
    if (chunk.find('\n') != std::string::npos) {
      engine.run->strand().post([&engine, &ending] { ending.end(engine).detach(); });
    }
    co_return;
  };
}

TEST(AppServerTurnRunEarlyEnd, IsNoFailureOfAStartWhoseResponseHasCome) {
  forEachOperationAndEnding(
      [](SimulatedRun& engine, const EarlyOperation& operation, const Ending& ending, auto& starting) {
        endWithTheNextLine(engine, ending);
        engine.answerKept(operation.lastResponse);
        EXPECT_NE(engine.state(), "pending");
        const auto heard = engine.listen(SimulatedRun::taken(starting));
        auto expected = operation.begun;
        expected.emplace_back(ending.heardByConsumer);
        EXPECT_THAT(*heard, ElementsAreArray(expected));
        // It came too late to tell of a turn.
        EXPECT_FALSE(engine.run->scope().coordinatorTurnID());
      });
}

TEST(AppServerTurnRunEarlyEnd, OfACompactionThatIsToldInWholeBeforeItsResponseFailsItsStart) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.reply("thread/compact/start", [](InMemoryProcess& process, const JSONValue& request) {
      process.notify("turn/started", JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u9"}})"));
      process.notify("turn/completed", JSONValue::decode(R"({"threadId":"t1","turn":{"id":"u9"}})"));
      process.answer(request, JSONValue::object({}));
    });
    EXPECT_EQ(failureOf([&] { engine.end(engine.compaction()); }), "stream error: Stream finished");
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_EQ(engine.run->requests().count(), 0U);
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.server.started(), 1U);
  });
}

TEST(AppServerTurnRunEarlyEnd, OfAReviewOrAForkIsHeldBackUntilTheResponseNamesTheTurn) {
  const std::pair<const EarlyOperation*, const char*> cases[] = {{&earlyOperations()[1], "r1"},
                                                                 {&earlyOperations()[3], "f1"}};
  for (const auto& [operation, threadID] : cases) {
    SCOPED_TRACE(operation->name);
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
      SimulatedScheduler scheduler(seed);
      SimulatedRun engine(scheduler);
      engine.keep(operation->lastMethod);
      const auto starting = engine.start(operation->begin(engine));
      const std::string params = R"({"threadId":")" + std::string(threadID) + R"(","turn":{"id":"u1"}})";
      engine.notify("turn/started", params);
      engine.notify("turn/completed", params);
      EXPECT_EQ(engine.state(), "pending");
      engine.answerKept(operation->lastResponse);
      EXPECT_EQ(engine.state(), "finished");
      const auto heard = engine.listen(SimulatedRun::taken(starting));
      auto expected = operation->begun;
      expected.insert(expected.end(), {"turn.started", "turn.completed", "end"});
      EXPECT_THAT(*heard, ElementsAreArray(expected));
      EXPECT_TRUE(engine.run->transport().hasProcess());
    }
  }
}

}  // namespace
