#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

constexpr const char* ourTurn = R"({"threadId":"t1","turn":{"id":"u1"}})";

std::string turnOf(int number) { return R"({"turn":{"id":"other)" + std::to_string(number) + R"("}})"; }

TEST(AppServerTurnRunScope, HoldsBackATurnThatIsToldBeforeItsResponse) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/start");
    const auto starting = engine.start(engine.turn());
    engine.notify("turn/started", ourTurn);
    engine.notify("turn/completed",
                  R"({"turn":{"id":"u1","status":"completed","items":[{"type":"sleep","id":"s1","durationMs":5}]}})");
    EXPECT_EQ(engine.state(), "pending");
    engine.answerKept(R"({"turn":{"id":"u1"}})");
    const auto heard = engine.listen(engine.taken(starting).events);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.started", "item.completed s1", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunScope, DiscardsWhatWasHeldBackForAnotherTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/start");
    const auto starting = engine.start(engine.turn());
    engine.notify("turn/started", turnOf(1));
    engine.notify("turn/started", R"({"threadId":"t2","turn":{"id":"u1"}})");
    engine.notify("turn/completed", R"({"turn":{"id":"other1","status":"completed"}})");
    engine.notify("turn/completed", R"({"threadId":"t2","turn":{"id":"u1","status":"completed"}})");
    engine.answerKept(R"({"turn":{"id":"u1"}})");
    const auto heard = engine.listen(engine.taken(starting).events);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunScope, HoldsBackNoMoreThanSixteenOfAKind) {
  for (const std::string method : {"turn/started", "turn/completed"}) {
    SCOPED_TRACE(method);
    inManyOrders([&method](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/start");
      const auto starting = engine.start(engine.turn());
      for (int number = 0; number < 16; ++number) engine.notify(method, turnOf(number));
      EXPECT_EQ(engine.state(), "pending");
      engine.notify(method, turnOf(16));
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_EQ(failureOf([&] { engine.taken(starting); }),
                "stream error: Too many " + method + " notifications before coordinator identity");
    });
  }
}

TEST(AppServerTurnRunScope, FailsOnATurnWithoutIdentity) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"method":"turn/started"})", "turn/started missing turn identity"},
      {R"({"method":"turn/started","params":{"turnId":"u1"}})", "turn/started missing turn identity"},
      {R"({"method":"turn/started","params":{"turn":{"id":""}}})", "turn/started missing turn identity"},
      {R"({"method":"turn/completed"})", "turn/completed missing turn payload"},
      {R"({"method":"turn/completed","params":{"turn":"u1"}})", "turn/completed missing turn payload"},
      {R"({"method":"turn/completed","params":{"turn":{}}})", "turn/completed missing coordinator turn identity"},
      {R"({"method":"turn/completed","params":{"turn":{"id":""},"turnId":"u1"}})",
       "turn/completed missing coordinator turn identity"},
  };
  for (const auto& [line, message] : cases) {
    SCOPED_TRACE(line);
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.write(std::string(line) + "\n");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", std::string("stream error: ") + message));
  }
}

TEST(AppServerTurnRunScope, TakesTheIDOfACompletionFromItsParamsWhereTheTurnHasNone) {
  for (const char* key : {"turnId", "turn_id"}) {
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.notify("turn/completed", std::string(R"({"turn":{"status":"completed"},")") + key + R"(":"u1"})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  }
}

TEST(AppServerTurnRunScope, DropsWhatIsAboutOtherThreadsAndTurns) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    for (const char* ids : {R"("threadId":"t2")", R"("turnId":"u2")", R"("threadId":"t2","turnId":"u1")",
                            R"("thread_id":"t2")", R"("turn_id":"u2")", R"("threadId":"t2","thread_id":"t1")"}) {
      const std::string named = std::string("{") + ids;
      engine.notify("item/agentMessage/delta", named + R"(,"itemId":"m1","delta":"a"})");
      engine.notify("turn/started", named + R"(,"turn":{"id":"u2"}})");
    }
    engine.notify("turn/completed", R"({"threadId":"t2","turn":{"id":"u2","status":"completed"}})");
    engine.notify("turn/completed", R"({"threadId":"t2","turn":{"id":"u1","status":"completed"}})");
    engine.notify("turn/completed", R"({"turn":{"id":"u2","status":"completed"}})");
    engine.notify("thread/started", R"({"thread":{"id":"t2"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunScope, PassesWhatNamesTheCoordinatorOrNobody) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    for (const char* ids : {"", R"("threadId":"t1",)", R"("turn_id":"u1",)", R"("threadId":7,"thread_id":"t1",)"}) {
      engine.notify("item/agentMessage/delta", std::string("{") + ids + R"("itemId":"m1","delta":"a"})");
    }
    engine.notify("thread/started", R"({"thread":{"id":"t1"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "item.updated m1", "item.updated m1", "item.updated m1",
                                    "item.updated m1", "thread.started t1"));
  });
}

TEST(AppServerTurnRunScope, LetsOnlyATurnOfItsThreadNameACompaction) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.compaction()));
    engine.notify("turn/started", R"({"turn":{"id":"u7"}})");
    engine.notify("turn/started", R"({"threadId":"t2","turn":{"id":"u8"}})");
    EXPECT_FALSE(engine.run->scope().coordinatorTurnID());
    EXPECT_TRUE(engine.run->scope().acceptsCoordinatorTurnIdentityFromNotification());
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u9"}})");
    EXPECT_EQ(engine.run->scope().coordinatorTurnID(), "u9");
    EXPECT_FALSE(engine.run->scope().acceptsCoordinatorTurnIdentityFromNotification());
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u10"}})");
    engine.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u9","status":"completed"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunScope, DropsAStartThatNamesNoThreadDuringACompactionInsteadOfHoldingItBack) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.compaction()));
    // More than can be held back.
    for (int number = 0; number < 20; ++number) engine.notify("turn/started", R"({"turn":{"id":"u9"}})");
    EXPECT_FALSE(engine.run->scope().coordinatorTurnID());
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u9"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.started"));
  });
}

TEST(AppServerTurnRunScope, EndsACompactionWhoseEndIsToldBeforeItsBeginning) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.compaction()));
    engine.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u9","status":"completed"}})");
    EXPECT_EQ(engine.state(), "pending");
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u9"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1"));
  });
}

TEST(AppServerTurnRunScope, FollowsAReviewToItsOwnThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.review()));
    EXPECT_EQ(engine.run->scope().coordinatorThreadID(), "r1");
    EXPECT_EQ(engine.run->scope().active().activeThreadID, "r1");
    engine.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u1","status":"completed"}})");
    EXPECT_EQ(engine.state(), "pending");
    engine.notify("turn/completed", R"({"threadId":"r1","turn":{"id":"u1","status":"completed"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunScope, ForgetsBetweenOperationsAllButTheThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    EXPECT_EQ(engine.run->scope().active().activeThreadID, "t1");
    EXPECT_FALSE(engine.run->scope().active().activeTurnID);
    engine.end(engine.run->reserveOperation());
    EXPECT_EQ(engine.run->scope().active().activeThreadID, "t1");
    EXPECT_FALSE(engine.run->scope().coordinatorThreadID());
    EXPECT_FALSE(engine.run->scope().coordinatorTurnID());
    engine.interrupt();
    EXPECT_FALSE(engine.run->scope().active().activeThreadID);
  });
}

}  // namespace
