#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "Support/SimulatedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AppServerTurnRunTransport, StartsTheServerThroughTheSystemsStarter) {
  SimulatedScheduler scheduler(1);
  SimulatedRun::Options options;
  options.ormel.env = std::map<std::string, std::string>{{"HOME", "/home/me"}};
  options.ormel.apiKey = "key";
  SimulatedRun engine(scheduler, options);
  engine.startTurn();
  const auto& settings = engine.process().settings();
  EXPECT_EQ(settings.executable, "/usr/bin/env");
  EXPECT_THAT(settings.arguments,
              ElementsAre("/opt/ormel", "app-server", "--listen", "stdio://", "--config", "features.goals=true"));
  EXPECT_THAT(*settings.environment, ElementsAre(std::pair("HOME", "/home/me"), std::pair("ORMEL_API_KEY", "key"),
                                                 std::pair("ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", "ormel_sdk_ts")));
}

TEST(AppServerTurnRunTransport, ReusesALiveProcessWithoutASecondHandshake) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    const auto heard = engine.startTurn();
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.server.started(), 1U);
    EXPECT_THAT(engine.methods(),
                ElementsAre("initialize", "initialized", "thread/start", "turn/start", "thread/start", "turn/start"));
  });
}

TEST(AppServerTurnRunTransport, StartsANewProcessAfterAFailureAndGoesOnCountingIDs) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    const auto generation = engine.run->transport().generation();
    engine.write("{}\n");
    EXPECT_FALSE(engine.run->transport().hasProcess());
    EXPECT_EQ(engine.run->transport().generation(), generation + 1);
    const auto heard = engine.startTurn();
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.server.started(), 2U);
    const JSONValue message = engine.lastMessage("initialize");
    EXPECT_EQ(*message.find("id"), JSONValue(4));
  });
}

TEST(AppServerTurnRunTransport, TellsAnUntrustedExecutableBeforeThereIsAChild) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    std::string asked;
    options.ormel.executableTrustAssessment = [&asked](const std::string& path) {
      asked = path;
      return OrmelExecutableTrustAssessment::rejected("not ours");
    };
    SimulatedRun engine(scheduler, options);
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }),
              inWords(std::make_exception_ptr(OrmelProcessError::untrustedExecutable("/opt/ormel", "not ours"))));
    EXPECT_EQ(asked, "/opt/ormel");
    EXPECT_EQ(engine.server.launchesTried(), 0U);
    EXPECT_EQ(engine.run->transport().generation(), 0U);
    EXPECT_EQ(engine.state(), "failed");
  });
}

TEST(AppServerTurnRunTransport, VetsWithTheCommandRunnerUnlessTheExecutableWasChosen) {
  for (const bool isChosen : {false, true}) {
    SimulatedScheduler scheduler(1);
    SimulatedRun::Options options;
    options.ormel.selectedOrmelPathOverride = isChosen;
    options.ormel.trustCommandRunner = [](const std::string&,
                                          const std::vector<std::string>&) -> OrmelExecutableTrustCommandResult {
      throw std::runtime_error("no such command");
    };
    SimulatedRun engine(scheduler, options);
    const std::string failure = failureOf([&] { engine.startTurn(); });
    EXPECT_EQ(failure == "no failure", isChosen) << failure;
  }
}

TEST(AppServerTurnRunTransport, StartsNothingForAnOperationThatIsAbortedWhileTheExecutableIsVetted) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    SimulatedRun* running = nullptr;
    options.ormel.executableTrustAssessment = [&running](const std::string&) {
      startOn(running->scheduler, running->run->interruptFromSignal());
      return OrmelExecutableTrustAssessment::trusted();
    };
    SimulatedRun engine(scheduler, options);
    running = &engine;
    const std::string failure = failureOf([&] { engine.startTurn(); });
    EXPECT_THAT(failure,
                ::testing::AnyOf("stream error: Prepared app-server operation is no longer current", "aborted"));
    EXPECT_FALSE(engine.run->transport().hasProcess());
    EXPECT_EQ(engine.state(), "failed");
  });
}

TEST(AppServerTurnRunTransport, TellsWhyTheServerCannotBeStarted) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.server.failLaunches(1);
    const std::string failure = failureOf([&] { engine.startTurn(); });
    EXPECT_TRUE(failure.starts_with("process error: ")) << failure;
    EXPECT_EQ(engine.state(), "failed");
    EXPECT_FALSE(engine.run->transport().hasProcess());
    EXPECT_EQ(engine.run->transport().generation(), 2U);
    engine.startTurn();
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunTransport, HearsNothingOfAProcessThatItCouldNotRead) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.server.failReads(1);
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "other error: std::bad_alloc");
    EXPECT_EQ(engine.state(), "failed");
    EXPECT_FALSE(engine.run->transport().hasProcess());
    EXPECT_EQ(engine.run->transport().generation(), 2U);
    scheduler.run();
    EXPECT_EQ(engine.server.running(), 0U);
    const auto heard = engine.startTurn();
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.server.started(), 2U);
  });
}

TEST(AppServerTurnRunTransport, FailsWithAConfigOverrideThatHasNoForm) {
  SimulatedScheduler scheduler(1);
  SimulatedRun::Options options;
  options.ormel.config.emplace();
  options.ormel.config->emplace("", OrmelConfigValue("x"));
  SimulatedRun engine(scheduler, options);
  EXPECT_EQ(failureOf([&] { engine.startTurn(); }),
            "process error: Ormel config override keys must be non-empty strings");
  EXPECT_EQ(engine.run->transport().generation(), 1U);
  EXPECT_EQ(engine.server.launchesTried(), 0U);
}

struct BadLine {
  const char* line;
  const char* failure;
};

constexpr BadLine badLines[] = {
    {"[1]", "Unexpected non-object JSON from app-server"},
    {"null", "Unexpected non-object JSON from app-server"},
    {"\"text\"", "Unexpected non-object JSON from app-server"},
    {"{}", "Unexpected app-server protocol object"},
    {R"({"type":"greeting"})", "Unexpected app-server protocol object"},
    {R"({"id":true,"result":{}})", "Unexpected app-server protocol object"},
    {R"({"result":{}})", "Unexpected app-server protocol object"},
    {R"({"method":""})", "Invalid app-server JSON-RPC method"},
    {R"({"method":"","id":1})", "Invalid app-server JSON-RPC method"},
    {R"({"method":7})", "Invalid app-server JSON-RPC method"},
    {R"({"method":null,"id":1,"result":{}})", "Invalid app-server JSON-RPC method"},
    {R"({"method":"a","id":null})", "Invalid app-server JSON-RPC request id"},
    {R"({"method":"a","id":[1]})", "Invalid app-server JSON-RPC request id"},
    {R"({"id":99,"result":1,"error":{}})", "Invalid app-server JSON-RPC response"},
    {R"({"id":99})", "Invalid app-server JSON-RPC response"},
    {R"({"id":99,"error":"text"})", "Invalid app-server JSON-RPC response"},
    {R"({"type":"error","error":{"message":"a"},"message":"b"})", "a"},
    {R"({"type":"error","error":"c","message":"b"})", "c"},
    {R"({"type":"error","error":{},"message":"b"})", "b"},
    {R"({"type":"error","id":1,"result":{}})", "Unknown app-server error"},
    {R"({"method":"turn/started","params":{}})", "turn/started missing turn identity"},
};

TEST(AppServerTurnRunTransport, FailsTheOperationAndEndsTheProcessOnABadLine) {
  for (const BadLine& bad : badLines) {
    SCOPED_TRACE(bad.line);
    inManyOrders([&bad](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      const auto heard = engine.startTurn();
      engine.write(std::string(bad.line) + "\n");
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", std::string("stream error: ") + bad.failure));
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
      EXPECT_EQ(engine.process().terminationSignals(), 1U);
    });
  }
}

TEST(AppServerTurnRunTransport, TellsWhatIsWrongWithALineThatIsNotJSON) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  const auto heard = engine.startTurn();
  engine.write("{\"id\":\n");
  ASSERT_EQ(heard->size(), 2U);
  EXPECT_TRUE(heard->back().starts_with("stream error: App-server decode error at $: data corrupted: "))
      << heard->back();
}

TEST(AppServerTurnRunTransport, IgnoresABadLineBetweenTwoOperations) {
  for (const BadLine& bad : badLines) {
    SCOPED_TRACE(bad.line);
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    engine.write(std::string(bad.line) + "\n{not json\n");
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_TRUE(engine.run->transport().hasProcess());
    engine.startTurn();
    EXPECT_EQ(engine.server.started(), 1U);
  }
}

TEST(AppServerTurnRunTransport, FailsOnAResponseThatIsBothGoodAndBadThoughItsRequestIsKnown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.reply("thread/start", [](InMemoryProcess& process, const JSONValue& request) {
      const JSONValue both = JSONValue::object({{"id", *request.find("id")},
                                                {"result", JSONValue::object({})},
                                                {"error", JSONValue::object({{"message", "no"}})}});
      process.send(both);
    });
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "stream error: Invalid app-server JSON-RPC response");
    EXPECT_EQ(engine.run->requests().count(), 0U);
  });
}

TEST(AppServerTurnRunTransport, TakesAnErrorWithAMethodForANotification) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.write("{\"type\":\"error\",\"method\":\"news\",\"message\":\"x\"}\n");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunTransport, CountsAnAnswerThatNobodyWaitsForAndNothingElseChanges) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    const auto before = engine.run->protocolActivityGeneration();
    engine.write("{\"id\":99,\"result\":{}}\n{\"id\":\"x\",\"error\":{}}\n");
    EXPECT_EQ(engine.run->protocolActivityGeneration(), before + 2);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunTransport, CountsNotificationsAndRequestsOfTheServerButNoBareError) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.startTurn();
  const auto before = engine.run->protocolActivityGeneration();
  engine.write("{\"method\":\"news\"}\n{\"method\":\"no/such\",\"id\":5}\n");
  EXPECT_EQ(engine.run->protocolActivityGeneration(), before + 2);
  engine.write("{\"type\":\"error\"}\n");
  EXPECT_EQ(engine.run->protocolActivityGeneration(), before + 2);
}

TEST(AppServerTurnRunTransport, HandlesALastLineWithoutALineFeedBeforeTheEndOfFile) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.process().write(R"({"method":"turn/completed","params":{"turn":{"id":"u1","status":"completed"}}})");
    engine.process().closeOutput();
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunTransport, HandlesWhatADeadProcessLeftInThePipeAndReportsOneEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    for (int count = 0; count < 5; ++count) {
      engine.process().notify("warning", JSONValue::object({{"message", std::to_string(count)}}));
    }
    engine.process().notify("turn/completed", JSONValue::decode(R"({"turn":{"id":"u1","status":"completed"}})"));
    engine.process().exit(3);
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "warning 0", "warning 1", "warning 2", "warning 3",
                                    "warning 4", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunTransport, TellsTheStandardErrorOfAServerThatEndsItsOutput) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.process().writeError("\n panicked \n\n");
    engine.process().exit(3);
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "stream error: panicked"));
  });
}

TEST(AppServerTurnRunTransport, TellsThatAServerEndsItsOutputWithoutAWord) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.process().closeOutput();
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "stream error: Ormel app-server terminated unexpectedly"));
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunTransport, TellsTheStandardErrorOfEarlierOperationsToo) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.process().writeError("old trouble\n");
    engine.completeTurn();
    const auto heard = engine.startTurn();
    engine.process().writeError("new trouble\n");
    engine.process().exit(1);
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "stream error: old trouble\nnew trouble"));
  });
}

struct ExitCase {
  detail::Termination termination;
  const char* detail;
};

TEST(AppServerTurnRunTransport, TellsHowAProcessEndedWhosePipesStayOpen) {
  using enum detail::TerminationReason;
  const ExitCase cases[] = {{{exit, 3}, "exit status 3"},
                            {{uncaughtSignal, 9}, "signal 9"},
                            {{unknown, 0}, "status 0 (unknown: reaped by another part of this process)"}};
  for (const ExitCase& ended : cases) {
    SCOPED_TRACE(ended.detail);
    inManyOrders([&ended](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      const auto heard = engine.startTurn();
      engine.process().writeError(" oh no \n");
      engine.process().end(ended.termination, true);
      engine.pass(99ms);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
      engine.pass(1ms);
      const auto expected = OrmelProcessError::exited(ended.detail, "oh no");
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", std::string("stream error: ") + expected.what()));
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunTransport, ShutsAProcessDownThatGoesAwayBetweenOperations) {
  for (const bool pipesStayOpen : {false, true}) {
    inManyOrders([pipesStayOpen](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.startTurn();
      engine.completeTurn();
      engine.process().end({detail::TerminationReason::exit, 1}, pipesStayOpen);
      engine.pass(1s);
      EXPECT_EQ(engine.state(), "finished");
      EXPECT_FALSE(engine.run->transport().hasProcess());
      engine.startTurn();
      EXPECT_EQ(engine.server.started(), 2U);
    });
  }
}

TEST(AppServerTurnRunTransport, TellsAnAbortWhateverEndsTheProcessFirst) {
  for (const bool pipesStayOpen : {false, true}) {
    inManyOrders([pipesStayOpen](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/interrupt");
      const auto heard = engine.startTurn();
      engine.interrupt();
      engine.process().end({detail::TerminationReason::exit, 1}, pipesStayOpen);
      engine.pass(1s);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", "aborted"));
    });
  }
}

TEST(AppServerTurnRunTransport, DoesNotReportTheEndOfAProcessThatItHasShutDown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto first = engine.startTurn();
    engine.process().notify("turn/started", JSONValue::decode("{}"));
    engine.process().exit(1);
    engine.settle();
    const auto second = engine.startTurn();
    engine.pass(1s);
    EXPECT_EQ(first->size(), 2U);
    EXPECT_THAT(*second, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.state(), "pending");
    EXPECT_EQ(engine.server.started(), 2U);
  });
}

TEST(AppServerTurnRunTransport, DoesNotReportTheEndOfAnOlderProcessWhoseGraceIsRunning) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.process().end({detail::TerminationReason::exit, 1}, true);
    engine.pass(50ms);
    engine.release();
    const auto heard = engine.startTurn();
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    EXPECT_EQ(engine.server.started(), 2U);
    engine.completeTurn();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunTransport, WaitsALittleForTheStandardErrorOfAServerThatEndsItsOutput) {
  const std::pair<std::chrono::nanoseconds, const char*> cases[] = {
      {99ms, "stream error: x"}, {101ms, "stream error: Ormel app-server terminated unexpectedly"}};
  for (const auto& entry : cases) {
    const auto delay = entry.first;
    const auto told = entry.second;
    SCOPED_TRACE(told);
    inManyOrders([delay, told](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      const auto heard = engine.startTurn();
      engine.process().slowErrorOutput(delay);
      engine.process().writeError("x");
      engine.process().closeOutput();
      engine.pass(98ms);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
      engine.pass(2ms);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", told));
    });
  }
}

TEST(AppServerTurnRunTransport, DoesNotWaitForAStandardErrorThatNobodyIsToBeTold) {
  for (const bool isAborted : {false, true}) {
    inManyOrders([isAborted](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/interrupt");
      const auto heard = engine.startTurn();
      if (isAborted) {
        engine.interrupt();
      } else {
        engine.completeTurn();
      }
      engine.process().slowErrorOutput(50ms);
      engine.process().writeError("why");
      engine.process().closeOutput();
      engine.settle();
      EXPECT_FALSE(engine.run->transport().hasProcess());
      EXPECT_EQ(heard->back(), isAborted ? "aborted" : "end");
    });
  }
}

// Stands alone: the closure of a coroutine would go with the run.
Task<void> atOnce() { co_return; }

TEST(AppServerTurnRunTransport, DropsAChunkThatIsInHandWhenTheProcessIsShutDown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    auto gate = std::make_shared<OneShot<void>>();
    bool isHeld = false;
    engine.run->stdoutChunkProcessingHook = [&isHeld, gate](const std::string&) {
      return isHeld ? heldOpen(gate) : atOnce();
    };
    const auto heard = engine.startTurn();
    const auto before = engine.run->protocolActivityGeneration();
    isHeld = true;
    engine.notify("warning", R"({"message":"late"})");
    engine.release();
    gate->resume();
    engine.settle();
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "end"));
    EXPECT_EQ(engine.run->protocolActivityGeneration(), before);
  });
}

TEST(AppServerTurnRunTransport, ReportsAnExitOnlyWhenTheChunkInHandHasBeenProcessed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    auto gate = std::make_shared<OneShot<void>>();
    bool isHeld = false;
    engine.run->stdoutChunkProcessingHook = [&isHeld, gate](const std::string&) {
      return std::exchange(isHeld, false) ? heldOpen(gate) : atOnce();
    };
    const auto heard = engine.startTurn();
    isHeld = true;
    engine.process().notify("turn/completed", JSONValue::decode(R"({"turn":{"id":"u1","status":"completed"}})"));
    engine.process().end({detail::TerminationReason::exit, 1}, true);
    engine.pass(10s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
    gate->resume();
    engine.pass(1s);
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
    EXPECT_FALSE(engine.run->transport().hasProcess());
  });
}

TEST(AppServerTurnRunTransport, EndsItsProcessWhenTheRunIsDropped) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.startTurn();
    engine.run.reset();
    engine.settle();
    EXPECT_EQ(engine.process().terminationSignals(), 1U);
    EXPECT_EQ(engine.server.held(), 0U);
    EXPECT_EQ(heard->size(), 2U);
  });
}

TEST(AppServerTurnRunTransport, SaysNothingToAProcessThatItHasShutDown) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.interrupt();
    engine.pass(3s);
    EXPECT_THAT(engine.methods(),
                ElementsAre("initialize", "initialized", "thread/start", "turn/start", "turn/interrupt"));
    EXPECT_EQ(engine.server.running(), 0U);
  });
}

}  // namespace
