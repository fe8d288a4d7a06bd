#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Support/SimulatedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

std::string readOf(std::string_view turn) { return R"({"thread":{"id":"t1","turns":[)" + std::string(turn) + "]}}"; }

std::ptrdiff_t reads(const SimulatedRun& engine) {
  const auto methods = engine.methods();
  return std::ranges::count(methods, "thread/read");
}

TEST(AppServerTurnRunLiveness, AsksForTheTurnAfterTwoMinutesOfSilence) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    engine.startTurn();
    engine.pass(120s - 1ns);
    EXPECT_EQ(reads(engine), 0);
    engine.pass(1ns);
    EXPECT_EQ(reads(engine), 1);
    EXPECT_EQ(engine.lastParams("thread/read"), JSONValue::decode(R"({"threadId":"t1","includeTurns":true})"));
  });
}

TEST(AppServerTurnRunLiveness, BeginsANewIntervalWhenTheServerHasSpoken) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    engine.startTurn();
    engine.pass(119s);
    engine.notify("news", "{}");
    engine.pass(121s - 1ns);
    EXPECT_EQ(reads(engine), 0);
    engine.pass(1ns);
    EXPECT_EQ(reads(engine), 1);
  });
}

TEST(AppServerTurnRunLiveness, GoesOnProbingWhileTheTurnIsInProgress) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.answer("thread/read", readOf(R"({"id":"u1","status":"inProgress"})"));
    const auto heard = engine.startTurn();
    engine.pass(121s);
    EXPECT_EQ(reads(engine), 1);
    engine.pass(240s);
    EXPECT_EQ(reads(engine), 3);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    engine.completeTurn();
    engine.pass(1000s);
    EXPECT_EQ(reads(engine), 3);
  });
}

struct ReconciledEnd {
  const char* turn;
  const char* event;
};

TEST(AppServerTurnRunLiveness, EndsTheTurnByWhatItReads) {
  const ReconciledEnd cases[] = {
      {R"({"id":"u1","status":"completed"})", "turn.completed"},
      {R"({"id":"u1","status":"interrupted"})", "turn.completed"},
      {R"({"id":"u1","status":"failed","error":{"message":"no tokens"}})", "turn.failed no tokens"},
      {R"({"id":"u1","status":"weird"})", "turn.failed Unknown turn completion status: unknown"},
  };
  for (const ReconciledEnd& end : cases) {
    SCOPED_TRACE(end.turn);
    inManyOrders([&end](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.answer("thread/read", readOf(std::string(R"({"id":"u0","status":"failed"},)") + end.turn));
      const auto heard = engine.startTurn();
      engine.pass(120s);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", end.event, "end"));
      EXPECT_EQ(engine.state(), "finished");
      EXPECT_TRUE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunLiveness, TellsTheItemsThatItReads) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.answer("thread/read",
                  readOf(R"({"id":"u1","status":"completed","items":[{"type":"contextCompaction","id":"c1"}]})"));
    const auto heard = engine.startTurn();
    engine.pass(120s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "item.completed c1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunLiveness, FailsOnAnAnswerThatDoesNotFit) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"thread":{"id":"t2","turns":[]}})", "Coordinator thread mismatch during liveness reconciliation"},
      {R"({"thread":{"id":"t1","turns":[]}})", "Coordinator turn missing during liveness reconciliation"},
      {R"({"thread":{"id":"t1","turns":[{"id":"u2","status":"completed"}]}})",
       "Coordinator turn missing during liveness reconciliation"},
      {R"({"thread":{"id":"t1"}})", "Coordinator turn missing during liveness reconciliation"},
  };
  for (const auto& entry : cases) {
    const auto answer = entry.first;
    const auto message = entry.second;
    SCOPED_TRACE(answer);
    inManyOrders([answer, message](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.answer("thread/read", answer);
      const auto heard = engine.startTurn();
      engine.pass(120s);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", std::string("stream error: ") + message));
      EXPECT_FALSE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunLiveness, FailsOnAnAnswerThatDoesNotDecode) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.answer("thread/read", "{}");
  const auto heard = engine.startTurn();
  engine.pass(120s);
  EXPECT_TRUE(heard->back().starts_with(
      "stream error: Unable to decode coordinator turn reconciliation: App-server decode error at $: missing key"))
      << heard->back();
}

TEST(AppServerTurnRunLiveness, FailsWhenTheServerRefusesToTell) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.refuse("thread/read", "no such thread");
    const auto heard = engine.startTurn();
    engine.pass(120s);
    EXPECT_THAT(*heard,
                ElementsAre("thread.started t1", "stream error: Unable to reconcile coordinator turn: no such thread"));
  });
}

TEST(AppServerTurnRunLiveness, TimesOutLikeAnyRequest) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    const auto heard = engine.startTurn();
    engine.pass(150s - 1ns);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    engine.pass(1ns);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1",
                                    "stream error: App-server RPC thread/read timed out after 30 seconds"));
  });
}

TEST(AppServerTurnRunLiveness, DropsAnAnswerThatComesAfterTheEndOfTheTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    const auto heard = engine.startTurn();
    engine.pass(120s);
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.run->requests().count(), 0U);
    const auto next = engine.startTurn();
    engine.answerKept(readOf(R"({"id":"u1","status":"failed"})"));
    EXPECT_THAT(*next, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunLiveness, DropsAnAnswerThatRacesWithTheEndOfTheTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    const auto heard = engine.startTurn();
    engine.pass(120s);
    engine.process().answer(engine.takeKept(), JSONValue::decode(readOf(R"({"id":"u1","status":"failed"})")));
    engine.completeTurn();
    // Which of the two is first applied is open, but never both.
    EXPECT_EQ(heard->size(), 3U);
    EXPECT_EQ(heard->back(), "end");
  });
}

TEST(AppServerTurnRunLiveness, ProbesACompactionOnceItsTurnIsKnown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    engine.listen(engine.end(engine.compaction()));
    engine.pass(1000s);
    EXPECT_EQ(reads(engine), 0);
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u9"}})");
    engine.pass(120s);
    EXPECT_EQ(reads(engine), 1);
  });
}

TEST(AppServerTurnRunLiveness, AsksForTheThreadOfAReviewOrAFork) {
  using Begin = Task<EventChannel<ThreadEvent>> (*)(SimulatedRun&);
  const std::pair<Begin, const char*> cases[] = {
      {[](SimulatedRun& engine) { return engine.review(); }, "r1"},
      {[](SimulatedRun& engine) { return engine.forkTurn(); }, "f1"},
  };
  for (const auto& entry : cases) {
    const auto begin = entry.first;
    const auto threadID = entry.second;
    SCOPED_TRACE(threadID);
    inManyOrders([begin, threadID](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.answer("thread/read", R"({"thread":{"id":")" + std::string(threadID) +
                                       R"(","turns":[{"id":"u1","status":"completed"}]}})");
      const auto heard = engine.listen(engine.end(begin(engine)));
      engine.pass(120s);
      EXPECT_EQ(reads(engine), 1);
      EXPECT_EQ(engine.lastParams("thread/read"), JSONValue::object({{"threadId", threadID}, {"includeTurns", true}}));
      EXPECT_EQ(heard->back(), "end");
      EXPECT_EQ(engine.state(), "finished");
    });
  }
}

TEST(AppServerTurnRunLiveness, DoesNotProbeAfterTheEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("thread/read");
    engine.startTurn();
    engine.completeTurn();
    engine.pass(1000s);
    EXPECT_EQ(reads(engine), 0);
  });
}

TEST(AppServerTurnRunInterrupt, GoesByWayOfTheServerAndEndsAsAborted) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.interrupt();
    EXPECT_EQ(engine.lastParams("turn/interrupt"), JSONValue::decode(R"({"threadId":"t1","turnId":"u1"})"));
    EXPECT_EQ(engine.state(), "pending");
    engine.completeTurn("interrupted");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
    EXPECT_FALSE(engine.run->transport().hasProcess());
    const auto next = engine.startTurn();
    engine.completeTurn("interrupted");
    EXPECT_THAT(*next, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.server.started(), 2U);
  });
}

TEST(AppServerTurnRunInterrupt, KeepsTheNormalEndOfATurnThatCompletesAllTheSame) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.interrupt();
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    engine.pass(10s);
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunInterrupt, WaitsThreeSecondsAfterTheServersAnswer) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/interrupt");
    const auto heard = engine.startTurn();
    engine.interrupt();
    engine.pass(20s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    engine.answerKept();
    engine.pass(3s - 1ns);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    engine.pass(1ns);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunInterrupt, EndsAtOnceWhenTheServerRefuses) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.refuse("turn/interrupt", "no such turn");
    const auto heard = engine.startTurn();
    engine.interrupt();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
  });
}

TEST(AppServerTurnRunInterrupt, FailsWithTheTimeOutOfAnInterruptThatIsNotAnswered) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/interrupt");
    const auto heard = engine.startTurn();
    engine.interrupt();
    engine.pass(30s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1",
                                    "stream error: App-server RPC turn/interrupt timed out after 30 seconds"));
  });
}

TEST(AppServerTurnRunInterrupt, EndsAtOnceWhileNoTurnIsKnown) {
  for (const char* method : {"initialize", "thread/start", "turn/start"}) {
    SCOPED_TRACE(method);
    inManyOrders([method](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep(method);
      const auto starting = engine.start(engine.turn());
      engine.interrupt();
      EXPECT_EQ(failureOf([&] { engine.taken(starting); }), "aborted");
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_THAT(engine.methods(), Not(Contains("turn/interrupt")));
    });
  }
}

TEST(AppServerTurnRunInterrupt, IsDoneOnce) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/interrupt");
    const auto heard = engine.startTurn();
    startOn(scheduler, engine.run->interruptFromSignal());
    startOn(scheduler, engine.run->interruptFromSignal(1));
    engine.interrupt();
    EXPECT_EQ(engine.kept(), 1U);
    engine.answerKept();
    engine.pass(2s);
    engine.interrupt();
    engine.pass(1s);
    EXPECT_EQ(engine.kept(), 0U);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
  });
}

TEST(AppServerTurnRunInterrupt, IsForTheExpectedOperationOnly) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.interrupt();
    EXPECT_EQ(engine.state(), "pending");
    engine.startTurn();
    engine.completeTurn();
    const auto heard = engine.startTurn();
    engine.interrupt(1);
    EXPECT_THAT(engine.methods(), Not(Contains("turn/interrupt")));
    engine.interrupt(2);
    EXPECT_THAT(engine.methods(), Contains("turn/interrupt"));
  });
}

TEST(AppServerTurnRunInterrupt, DoesNotOutliveItsOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.interrupt();
    engine.completeTurn();
    const auto next = engine.startTurn();
    engine.pass(60s);
    EXPECT_THAT(*next, ElementsAre("thread.started t1"));
    engine.completeTurn("interrupted");
    EXPECT_THAT(*next, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

}  // namespace
