#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/SimulatedRun.h"

// Conversations that are played again and again, each time with one fault in the place of one of the server's lines.
namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

using Channel = EventChannel<ThreadEvent>;

constexpr const char* steered = "turn/steer";

/// One line of the server.
struct Step {
  /// The client's last line before this one: a method, or "" for an answer. Null if it does not matter.
  const char* needs = nullptr;
  std::function<void(SimulatedRun&)> say;
  /// The events that follow.
  std::vector<std::string> tells;
  /// The request that times out if what is needed never comes.
  const char* hangs = nullptr;
};

bool isSteer(const Step& step) { return step.needs && step.needs == std::string_view(steered); }

struct Conversation {
  const char* name;
  std::function<Task<Channel>(SimulatedRun&)> begin;
  std::vector<Step> steps;
  /// With so many of them said, the start has returned.
  std::size_t stepsOfStart;
};

Step answers(const char* method, const char* result, std::vector<std::string> tells = {}) {
  return {method, [result](SimulatedRun& engine) { engine.answerKept(result); }, std::move(tells), method};
}

Step notifies(const char* method, const char* params, std::vector<std::string> tells = {}) {
  return {nullptr, [method, params](SimulatedRun& engine) { engine.notify(method, params); }, std::move(tells)};
}

Conversation turn() {
  const auto ask = [](SimulatedRun& engine) {
    const auto params = R"({"threadId":"t1","turnId":"u1","itemId":"c1","command":"make"})";
    engine.process().request(JSONValue("ask"), "item/commandExecution/requestApproval", JSONValue::decode(params));
    engine.settle();
  };
  constexpr const char* item = R"({"item":{"type":"agentMessage","id":"m1","text":"hi"}})";
  return {"a turn",
          [](SimulatedRun& engine) { return channelOf(engine.turn()); },
          {answers("initialize", "{}"), answers("thread/start", R"({"thread":{"id":"t1"}})", {"thread.started t1"}),
           answers("turn/start", R"({"turn":{"id":"u1"}})"),
           notifies("turn/started", R"({"threadId":"t1","turn":{"id":"u1"}})", {"turn.started"}),
           notifies("item/started", item, {"item.started m1"}),
           notifies("item/agentMessage/delta", R"({"itemId":"m1","delta":"!"})", {"item.updated m1"}),
           Step{nullptr, ask, {}},
           // Without its answer the server says nothing more, until it is probed.
           Step{"",
                [](SimulatedRun& engine) { engine.notify("warning", R"({"message":"go"})"); },
                {"warning go"},
                "thread/read"},
           answers(steered, "{}"), notifies("item/completed", item, {"item.completed m1"}),
           notifies("turn/completed", R"({"threadId":"t1","turn":{"id":"u1"}})", {"turn.completed", "end"})},
          3};
}

Conversation review() {
  return {
      "a review",
      [](SimulatedRun& engine) { return engine.review(); },
      {answers("initialize", "{}"), answers("thread/resume", R"({"thread":{"id":"t1"}})", {"thread.started t1"}),
       answers("review/start", R"({"reviewThreadId":"r1","turn":{"id":"u1"}})"),
       notifies("turn/started", R"({"threadId":"r1","turn":{"id":"u1"}})", {"turn.started"}), answers(steered, "{}"),
       notifies("turn/completed", R"({"threadId":"r1","turn":{"id":"u1"}})", {"turn.completed", "end"})},
      3};
}

Conversation compaction() {
  return {
      "a compaction",
      [](SimulatedRun& engine) { return engine.compaction(); },
      {answers("initialize", "{}"), answers("thread/resume", R"({"thread":{"id":"t1"}})", {"thread.started t1"}),
       answers("thread/compact/start", "{}"),
       notifies("turn/started", R"({"threadId":"t1","turn":{"id":"u1"}})", {"turn.started"}), answers(steered, "{}"),
       notifies("turn/completed", R"({"threadId":"t1","turn":{"id":"u1"}})", {"turn.completed", "end"})},
      3};
}

Conversation forkTurn() {
  return {
      "a turn on a fork",
      [](SimulatedRun& engine) { return engine.forkTurn(); },
      {answers("initialize", "{}"), answers("thread/resume", R"({"thread":{"id":"t1"}})", {"thread.started t1"}),
       answers("thread/fork", R"({"thread":{"id":"f1"}})", {"thread.started f1"}),
       answers("turn/start", R"({"turn":{"id":"u1"}})"),
       notifies("turn/started", R"({"threadId":"f1","turn":{"id":"u1"}})", {"turn.started"}), answers(steered, "{}"),
       notifies("turn/completed", R"({"threadId":"f1","turn":{"id":"u1"}})", {"turn.completed", "end"})},
      4};
}

std::vector<Conversation> conversations() { return {turn(), review(), compaction(), forkTurn()}; }

struct LineFault {
  const char* name;
  std::function<void(SimulatedRun&, std::stop_source& caller)> happen;
  /// How the start fails if it is under way, and the turn if it is running. Empty where the conversation goes on.
  std::string heardByStart;
  std::string heardByTurn;
  /// The outcome of a steer that waits for its answer.
  std::string heardBySteer;
  bool losesWrites = false;
};

std::vector<LineFault> lineFaults() {
  const std::string unreadable =
      "stream error: App-server decode error at $: data corrupted: The given data was not valid JSON. "
      "(Unexpected end of text at byte 6)";
  const std::string endOfOutput = "stream error: Ormel app-server terminated unexpectedly";
  const std::string unanswered = "stream error: App-server RPC turn/steer timed out after 30 seconds";
  using Engine = SimulatedRun;
  using Caller = std::stop_source;
  return {
      {"a write fails", [](Engine& engine, Caller&) { engine.process().breakInput(); }, "", "", "no failure", true},
      {"a line is malformed", [](Engine& engine, Caller&) { engine.write("{\"id\":\n"); }, unreadable, unreadable,
       unreadable},
      {"the process is killed", [](Engine& engine, Caller&) { engine.process().endBySignal(9); }, endOfOutput,
       endOfOutput, endOfOutput},
      {"the output ends", [](Engine& engine, Caller&) { engine.process().closeOutput(); }, endOfOutput, endOfOutput,
       endOfOutput},
      // A caller that has got its turn can be cancelled without ending the turn.
      {"the caller is cancelled", [](Engine&, Caller& caller) { caller.request_stop(); }, "cancelled", "", "cancelled"},
      // A steer outlives a normal end.
      {"the owner goes away", [](Engine& engine, Caller&) { engine.release(); }, "stream error: Stream finished", "end",
       unanswered},
  };
}

/// The news that each party of a conversation gets.
struct Heard {
  std::string start = "no failure";
  std::vector<std::string> events;
  std::string steer = "not sent";
};

Heard expectedOf(const Conversation& conversation, const LineFault& fault, std::size_t at) {
  const auto& steps = conversation.steps;
  std::string failure = at < conversation.stepsOfStart ? fault.heardByStart : fault.heardByTurn;
  std::size_t end = failure.empty() ? steps.size() : at;
  if (fault.losesWrites) {
    for (end = at + 1; end < steps.size() && !steps[end].needs;) ++end;
    if (end < steps.size()) {
      failure = "stream error: App-server RPC " + std::string(steps[end].hangs) + " timed out after 30 seconds";
    }
  }
  if (end < conversation.stepsOfStart) return {failure, {}, "not sent"};
  Heard expected;
  for (std::size_t step = 0; step < end; ++step) {
    expected.events.insert(expected.events.end(), steps[step].tells.begin(), steps[step].tells.end());
    if (isSteer(steps[step])) expected.steer = "no failure";
  }
  if (end < steps.size()) {
    expected.events.push_back(failure);
    if (isSteer(steps[end])) expected.steer = failure;
  }
  if (isSteer(steps[at])) expected.steer = fault.heardBySteer;
  return expected;
}

Heard played(SimulatedScheduler& scheduler, const Conversation& conversation, const LineFault& fault, std::size_t at) {
  SimulatedRun::Options options;
  options.thread.commandApprovalHandler = [](CommandApprovalRequest) { return OrmelApprovalDecision::accept; };
  SimulatedRun engine(scheduler, options);
  for (const Step& step : conversation.steps) {
    if (step.needs && *step.needs) engine.keep(step.needs);
  }
  engine.keep("thread/read");
  std::stop_source caller;
  const auto starting = engine.start(conversation.begin(engine), caller.get_token());
  std::shared_ptr<Outcome<void>> steering;
  Heard heard;
  SimulatedRun::Heard events;
  for (std::size_t number = 0; number < conversation.steps.size(); ++number) {
    const Step& step = conversation.steps[number];
    if (number == conversation.stepsOfStart) events = engine.listen(SimulatedRun::taken(starting));
    if (isSteer(step)) {
      steering = engine.start(engine.steer(), number == at ? caller.get_token() : std::stop_token());
    }
    if (number == at) {
      fault.happen(engine, caller);
      engine.settle();
    }
    const bool goesOn = engine.state() == "pending" && engine.process().isRunning();
    if (!goesOn || (step.needs && engine.methods().back() != step.needs)) break;
    step.say(engine);
  }
  // Up to two intervals of the probe, and its time-out.
  engine.pass(271s);
  heard.start = events ? "no failure" : failureOf([&] { SimulatedRun::taken(starting); });
  if (events) heard.events = *events;
  if (steering) heard.steer = failureOf([&] { SimulatedRun::taken(steering); });

  // After any fault, nothing runs, nothing waits, and the next turn succeeds.
  EXPECT_NE(engine.state(), "pending");
  EXPECT_EQ(engine.run->requests().count(), 0U);
  EXPECT_EQ(engine.run->transport().hasProcess(),
            engine.state() == "finished" && !fault.heardByTurn.starts_with("end"));
  engine.answer("initialize", "{}");
  engine.answer("thread/start", R"({"thread":{"id":"t1"}})");
  engine.answer("turn/start", R"({"turn":{"id":"u1"}})");
  if (!fault.losesWrites || !engine.run->transport().hasProcess()) {
    const auto next = engine.startTurn();
    engine.completeTurn();
    EXPECT_THAT(*next, ElementsAre("thread.started t1", "turn.completed", "end"));
  }
  return heard;
}

TEST(AppServerTurnRunFaultyConversations, EndAsTheFaultWantsItAtEachOfTheirSteps) {
  for (const Conversation& conversation : conversations()) {
    for (const LineFault& fault : lineFaults()) {
      for (std::size_t step = 0; step < conversation.steps.size(); ++step) {
        SCOPED_TRACE(std::string(fault.name) + " in the place of line " + std::to_string(step + 1) + " of " +
                     conversation.name);
        const Heard expected = expectedOf(conversation, fault, step);
        inManyOrders([&](SimulatedScheduler& scheduler) {
          const Heard heard = played(scheduler, conversation, fault, step);
          EXPECT_EQ(heard.start, expected.start);
          EXPECT_THAT(heard.events, ElementsAreArray(expected.events));
          EXPECT_EQ(heard.steer, expected.steer);
        });
      }
    }
  }
}

}  // namespace
