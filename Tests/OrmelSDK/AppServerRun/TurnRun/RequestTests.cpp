#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stop_token>
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

TEST(AppServerTurnRunRequests, NumberTheirIDsFromOneAndWriteOneObjectALine) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    std::vector<std::string> heads;
    for (const JSONValue& message : engine.process().messagesRead()) {
      const JSONValue* id = message.find("id");
      heads.push_back((id ? id->encode() : "-") + " " + std::string(message.find("method")->stringValue().value()));
    }
    EXPECT_THAT(heads, ElementsAre("1 initialize", "- initialized", "2 thread/start", "3 turn/start"));
    EXPECT_EQ(engine.process().linesWritten()[1], R"({"method":"initialized"})");
  });
}

TEST(AppServerTurnRunRequests, PassARefusalOfTheServerOn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.refuse("thread/start", "no such model");
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "stream error: no such model");
    EXPECT_EQ(engine.state(), "failed");
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunRequests, HaveAMessageForARefusalThatGivesNone) {
  for (const char* error : {"{}", R"({"message":7,"code":1})"}) {
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    engine.reply("turn/start", [error](InMemoryProcess& process, const JSONValue& request) {
      process.send(JSONValue::object({{"id", *request.find("id")}, {"error", JSONValue::decode(error)}}));
    });
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "stream error: Unknown app-server error");
  }
}

TEST(AppServerTurnRunRequests, TimeOutAfterHalfAMinuteAndTakeTheOperationWithThem) {
  for (const std::string method : {"initialize", "thread/start", "turn/start"}) {
    SCOPED_TRACE(method);
    inManyOrders([&method](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep(method);
      const auto starting = engine.start(engine.turn());
      engine.pass(30s - 1ns);
      EXPECT_FALSE(starting->isSet());
      EXPECT_EQ(engine.state(), "pending");
      engine.pass(1ns);
      EXPECT_EQ(failureOf([&] { engine.taken(starting); }),
                "stream error: App-server RPC " + method + " timed out after 30 seconds");
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunRequests, TellThatTheHandshakeWasTheOneThatTimedOut) {
  for (const std::string method : {"initialize", "thread/start"}) {
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    engine.keep(method);
    const auto starting = engine.start(engine.turn());
    engine.pass(30s);
    try {
      engine.taken(starting);
      ADD_FAILURE() << "it went well";
    } catch (const ThreadRunError& error) {
      EXPECT_EQ(error.cause() != nullptr, method == "initialize");
      if (!error.cause()) continue;
      EXPECT_EQ(error.cause()->kind, FailureCause::Kind::handshakeTimedOut);
      EXPECT_THAT(error.advice(), ::testing::HasSubstr("did not answer for 30 seconds"));
    }
  }
}

TEST(AppServerTurnRunRequests, FailTheRunningTurnWhenItsSteerTimesOut) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    const auto heard = engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.pass(30s);
    const std::string failure = "stream error: App-server RPC turn/steer timed out after 30 seconds";
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), failure);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", failure));
  });
}

TEST(AppServerTurnRunRequests, FailAloneWhenTheirOperationIsOver) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.completeTurn();
    const auto next = engine.startTurn();
    engine.pass(30s);
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }),
              "stream error: App-server RPC turn/steer timed out after 30 seconds");
    engine.completeTurn();
    EXPECT_THAT(*next, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.server.started(), 1U);
  });
}

TEST(AppServerTurnRunRequests, FailAloneWhenNoOperationHasFollowedTheirs) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.completeTurn();
    engine.pass(30s);
    EXPECT_TRUE(steering->isSet());
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunRequests, AreEndedOnceByAnAnswerThatComesWithTheTimer) {
  std::vector<bool> successes;
  underSeeds(200, [&successes](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    // Everything on the way takes no time, so that answer and timer fall due together.
    engine.reply("turn/start", [](InMemoryProcess& process, const JSONValue& request) {
      auto answer = [&process, request] { process.answer(request, JSONValue::decode(R"({"turn":{"id":"u1"}})")); };
      process.after(30s, answer);
    });
    const auto starting = engine.start(engine.turn());
    engine.pass(30s);
    const std::string failure = failureOf([&] { engine.taken(starting); });
    successes.push_back(failure == "no failure");
    if (failure == "no failure") {
      EXPECT_EQ(engine.state(), "pending");
    } else {
      EXPECT_EQ(failure, "stream error: App-server RPC turn/start timed out after 30 seconds");
      EXPECT_EQ(engine.state(), "failed");
    }
    EXPECT_EQ(engine.run->requests().count(), 0U);
  });
  EXPECT_THAT(successes, ::testing::Contains(true));
  EXPECT_THAT(successes, ::testing::Contains(false));
}

TEST(AppServerTurnRunRequests, WriteNothingForACallerThatIsAlreadyCancelled) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    std::stop_source caller;
    caller.request_stop();
    const auto starting = engine.start(engine.turn(), caller.get_token());
    EXPECT_EQ(failureOf([&] { engine.taken(starting); }), "cancelled");
    EXPECT_THAT(engine.process().linesWritten(), IsEmpty());
    EXPECT_EQ(engine.state(), "failed");
  });
}

TEST(AppServerTurnRunRequests, EndAnOperationAsAbortedWhoseStartIsCancelled) {
  for (const char* method : {"initialize", "thread/start", "turn/start"}) {
    SCOPED_TRACE(method);
    inManyOrders([method](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep(method);
      std::stop_source caller;
      const auto starting = engine.start(engine.turn(), caller.get_token());
      EXPECT_FALSE(starting->isSet());
      caller.request_stop();
      engine.settle();
      EXPECT_EQ(failureOf([&] { engine.taken(starting); }), "cancelled");
      EXPECT_EQ(engine.run->requests().count(), 0U);
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunRequests, DropTheAnswerToARequestThatWasCancelled) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    const auto heard = engine.startTurn();
    std::stop_source caller;
    const auto steering = engine.start(engine.steer(), caller.get_token());
    caller.request_stop();
    engine.settle();
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), "cancelled");
    EXPECT_EQ(engine.run->requests().count(), 0U);
    const auto before = engine.run->protocolActivityGeneration();
    engine.answerKept();
    EXPECT_EQ(engine.run->protocolActivityGeneration(), before + 1);
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunRequests, FailWhenTheyCannotBeWrittenAndAreForgotten) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    TurnOptions options;
    options.outputSchema.emplace();
    options.outputSchema->emplace("maximum", JSONValue(std::numeric_limits<double>::quiet_NaN()));
    const auto starting =
        engine.start(engine.run->start(detail::OperationRequest::turn(std::nullopt, "hello", options)));
    EXPECT_EQ(failureOf([&] { engine.taken(starting); }),
              "other error: A number that is not finite cannot be written as JSON");
    EXPECT_EQ(engine.run->requests().count(), 0U);
    EXPECT_EQ(engine.state(), "failed");
    EXPECT_THAT(engine.methods(), ElementsAre("initialize", "initialized", "thread/start"));
  });
}

TEST(AppServerTurnRunRequests, LetASteerOutliveTheTurnThatItSteers) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.completeTurn();
    EXPECT_FALSE(steering->isSet());
    EXPECT_EQ(engine.run->requests().count(), 1U);
    engine.startTurn();
    EXPECT_FALSE(steering->isSet());
    engine.answerKept();
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), "no failure");
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunRequests, EndASteerWithTheFailureOfItsTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.write("{}\n");
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), "stream error: Unexpected app-server protocol object");
  });
}

TEST(AppServerTurnRunRequests, EndASteerWithTheAbortOfItsTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.interrupt();
    engine.pass(3s);
    EXPECT_EQ(failureOf([&] { engine.taken(steering); }), "aborted");
  });
}

TEST(AppServerTurnRunRequests, EndASteerThatOutlivedItsTurnWithTheFailureOfALaterOperation) {
  using End = void (*)(SimulatedRun&);
  const std::pair<End, const char*> ends[] = {
      {[](SimulatedRun& engine) { engine.write("{}\n"); }, "stream error: Unexpected app-server protocol object"},
      {[](SimulatedRun& engine) {
         engine.interrupt();
         engine.pass(3s);
       },
       "aborted"},
  };
  for (const auto& entry : ends) {
    const auto end = entry.first;
    const auto failure = entry.second;
    inManyOrders([end, failure](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/steer");
      engine.startTurn();
      const auto steering = engine.start(engine.steer());
      engine.completeTurn();
      const auto next = engine.startTurn();
      EXPECT_FALSE(steering->isSet());
      end(engine);
      EXPECT_EQ(failureOf([&] { engine.taken(steering); }), failure);
      EXPECT_THAT(*next, ElementsAre("thread.started t1", failure));
      EXPECT_EQ(engine.run->requests().count(), 0U);
    });
  }
}

TEST(AppServerTurnRunRequests, AreReleasedByANormalEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/start");
    const auto starting = engine.start(engine.turn());
    engine.release();
    EXPECT_EQ(failureOf([&] { engine.taken(starting); }), "stream error: Stream finished");
    EXPECT_EQ(engine.state(), "finished");
  });
}

TEST(AppServerTurnRunRequests, LeaveTheTurnAloneWhenASteerIsRefused) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.refuse("turn/steer", "too late");
    const auto heard = engine.startTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.steer()); }), "stream error: too late");
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

}  // namespace
