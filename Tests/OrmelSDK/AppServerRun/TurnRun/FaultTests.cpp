#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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

constexpr const char* malformed =
    "stream error: App-server decode error at $: data corrupted: The given data was not valid JSON. "
    "(Unexpected end of text at byte 6)";
constexpr const char* gone = "stream error: Ormel app-server terminated unexpectedly";
constexpr const char* killed = "stream error: Ormel process exited with signal 9";
constexpr const char* argh = "stream error: argh";
constexpr const char* noRead = "stream error: App-server RPC thread/read timed out after 30 seconds";
constexpr const char* noSteer = "stream error: App-server RPC turn/steer timed out after 30 seconds";
constexpr const char* noInterrupt = "stream error: App-server RPC turn/interrupt timed out after 30 seconds";

/// A fault at a step of a conversation, and how the application hears of it.
struct Fault {
  const char* name;
  std::function<void(SimulatedRun&, std::stop_source& caller)> happen;
  /// The failure of a start operation. Null: the request of the step timed out.
  const char* heardFromStart;
  /// The failure in the events of a running turn.
  const char* heardFromTurn;
  /// The failures of a steer that waits for its answer, and in the events of its turn.
  const char* heardFromSteer;
  const char* heardFromSteeredTurn;
  /// The failure in the events of a turn whose interrupt waits for its answer.
  const char* heardFromInterruptedTurn;
};

const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"the line is malformed", [](SimulatedRun& engine, std::stop_source&) { engine.process().write("{\"id\":\n"); },
       malformed, malformed, malformed, malformed, malformed},
      {"the process exits", [](SimulatedRun& engine, std::stop_source&) { engine.process().exit(9); }, gone, gone, gone,
       gone, "aborted"},
      {"the process is killed with a word on its lips",
       [](SimulatedRun& engine, std::stop_source&) {
         engine.process().writeError("argh");
         engine.process().endBySignal(9);
       },
       argh, argh, argh, argh, "aborted"},
      {"the process ends and its pipes stay open",
       [](SimulatedRun& engine, std::stop_source&) {
         engine.process().end({detail::TerminationReason::uncaughtSignal, 9}, true);
       },
       killed, killed, killed, killed, "aborted"},
      {"the output ends and the process lives on",
       [](SimulatedRun& engine, std::stop_source&) { engine.process().closeOutput(); }, gone, gone, gone, gone,
       "aborted"},
      {"the server falls silent", [](SimulatedRun&, std::stop_source&) {}, nullptr, noRead, noSteer, noSteer,
       noInterrupt},
      {"no write reaches the server", [](SimulatedRun& engine, std::stop_source&) { engine.process().breakInput(); },
       nullptr, noRead, noSteer, noSteer, noInterrupt},
      {"the application interrupts",
       [](SimulatedRun& engine, std::stop_source&) { startOn(engine.scheduler, engine.run->interruptFromSignal()); },
       "aborted", "aborted", "aborted", "aborted", noInterrupt},
      {"the caller is cancelled", [](SimulatedRun&, std::stop_source& caller) { caller.request_stop(); }, "cancelled",
       // It has got what it called for, and does not own it.
       noRead, "cancelled", noRead, "aborted"},
      {"the owner goes away",
       [](SimulatedRun& engine, std::stop_source&) { startOn(engine.scheduler, engine.run->release()); },
       "stream error: Stream finished", "end",
       // It outlives the normal end.
       noSteer, "end", "end"},
  };
  return all;
}

/// After any fault, nothing runs, nothing waits, and the next turn succeeds.
void expectSoundRun(SimulatedRun& engine) {
  EXPECT_NE(engine.state(), "pending");
  EXPECT_EQ(engine.run->requests().count(), 0U);
  EXPECT_FALSE(engine.run->transport().hasProcess());
  engine.settle();
  EXPECT_EQ(engine.server.held(), 0U);
  const auto heard = engine.startTurn();
  engine.completeTurn();
  EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
}

using BeginOperation = std::function<Task<void>(SimulatedRun&)>;

Task<void> withoutChannel(Task<EventChannel<ThreadEvent>> starting) { co_await std::move(starting); }
Task<void> withoutTurn(Task<detail::StartedOperation> starting) { co_await std::move(starting); }

struct SteppedOperation {
  const char* name;
  BeginOperation begin;
  std::vector<std::string> steps;
};

const std::vector<SteppedOperation>& steppedOperations() {
  static const std::vector<SteppedOperation> all = {
      {"a turn",
       [](SimulatedRun& engine) { return withoutTurn(engine.turn()); },
       {"initialize", "thread/start", "turn/start"}},
      {"a review",
       [](SimulatedRun& engine) { return withoutChannel(engine.review()); },
       {"initialize", "thread/resume", "review/start"}},
      {"a compaction",
       [](SimulatedRun& engine) { return withoutChannel(engine.compaction()); },
       {"initialize", "thread/resume", "thread/compact/start"}},
      {"a turn on a fork",
       [](SimulatedRun& engine) { return withoutChannel(engine.forkTurn()); },
       {"initialize", "thread/resume", "thread/fork", "turn/start"}},
  };
  return all;
}

TEST(AppServerTurnRunFaults, AtEachStepOfEachStartEndItAndLeaveTheRunSound) {
  for (const SteppedOperation& operation : steppedOperations()) {
    for (const std::string& step : operation.steps) {
      for (const Fault& fault : faults()) {
        SCOPED_TRACE(std::string(fault.name) + " at " + step + " of " + operation.name);
        inManyOrders([&](SimulatedScheduler& scheduler) {
          SimulatedRun engine(scheduler);
          std::stop_source caller;
          bool isDone = false;
          engine.reply(step, [&](InMemoryProcess& process, const JSONValue& request) {
            if (!std::exchange(isDone, true)) {
              fault.happen(engine, caller);
            } else {
              process.answer(request, JSONValue::decode(R"({"thread":{"id":"t1"},"turn":{"id":"u1"}})"));
            }
          });
          const auto starting = engine.start(operation.begin(engine), caller.get_token());
          engine.pass(31s);
          const std::string heard = failureOf([&] { SimulatedRun::taken(starting); });
          const std::string timedOut = "stream error: App-server RPC " + step + " timed out after 30 seconds";
          EXPECT_EQ(heard, fault.heardFromStart ? fault.heardFromStart : timedOut);
          expectSoundRun(engine);
        });
      }
    }
  }
}

TEST(AppServerTurnRunFaults, InARunningTurnEndItAndLeaveTheRunSound) {
  for (const Fault& fault : faults()) {
    SCOPED_TRACE(fault.name);
    inManyOrders([&](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("thread/read");
      std::stop_source caller;
      const auto starting = engine.start(engine.turn(), caller.get_token());
      const auto heard = engine.listen(SimulatedRun::taken(starting).events);
      fault.happen(engine, caller);
      engine.pass(151s);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", fault.heardFromTurn));
      expectSoundRun(engine);
    });
  }
}

TEST(AppServerTurnRunFaults, WhileASteerWaitsEndItWithItsTurn) {
  for (const Fault& fault : faults()) {
    SCOPED_TRACE(fault.name);
    inManyOrders([&](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/steer");
      engine.keep("thread/read");
      std::stop_source caller;
      const auto heard = engine.startTurn();
      const auto steering = engine.start(engine.steer(), caller.get_token());
      fault.happen(engine, caller);
      engine.pass(151s);
      EXPECT_EQ(failureOf([&] { SimulatedRun::taken(steering); }), fault.heardFromSteer);
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", fault.heardFromSteeredTurn));
      expectSoundRun(engine);
    });
  }
}

TEST(AppServerTurnRunFaults, WhileAnInterruptWaitsEndTheTurn) {
  for (const Fault& fault : faults()) {
    SCOPED_TRACE(fault.name);
    inManyOrders([&](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.keep("turn/interrupt");
      std::stop_source caller;
      const auto heard = engine.startTurn();
      const auto interrupting = engine.start(engine.run->interruptFromSignal(), caller.get_token());
      fault.happen(engine, caller);
      engine.pass(31s);
      EXPECT_EQ(failureOf([&] { SimulatedRun::taken(interrupting); }), "no failure");
      EXPECT_THAT(*heard, ElementsAre("thread.started t1", fault.heardFromInterruptedTurn));
      expectSoundRun(engine);
    });
  }
}

TEST(AppServerTurnRunFaults, OfTheOwnerWhoDropsTheRunEndTheProcess) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    engine.startTurn();
    engine.completeTurn();
    engine.run.reset();
    engine.settle();
    EXPECT_EQ(engine.server.running(), 0U);
    EXPECT_EQ(engine.server.held(), 0U);
  });
}

}  // namespace
