#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Concurrency/Sleep.h"
#include "Support/SimulatedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;

constexpr std::size_t deltas = 3000;

/// Says a piece of a message each millisecond, asks for an approval every hundred pieces, and ends the turn then.
class FastServer {
 public:
  FastServer(InMemoryProcess& process, SimulatedScheduler& scheduler) : process_(process), scheduler_(scheduler) {}

  void say(std::size_t place) {
    if (place == deltas) {
      process_.notify("turn/completed", JSONValue::decode(R"({"turn":{"id":"u1","status":"completed"}})"));
      endedAt = scheduler_.now();
      return;
    }
    process_.notify("item/agentMessage/delta", JSONValue::object({{"itemId", "m"}, {"delta", "x"}}));
    if (place % 100 == 0) {
      process_.request(static_cast<std::int64_t>(place), "item/commandExecution/requestApproval",
                       JSONValue::object({}));
      ++asked;
    }
    process_.after(1ms, [this, place] { say(place + 1); });
  }

  std::size_t asked = 0;
  std::uint64_t endedAt = 0;

 private:
  InMemoryProcess& process_;
  SimulatedScheduler& scheduler_;
};

struct Read {
  std::size_t deltas = 0;
  bool isInOrder = true;
  bool hasEnded = false;
};

/// Takes an event, and thinks for a second.
Task<void> readSlowly(EventChannel<ThreadEvent> events, SimulatedScheduler& scheduler, std::shared_ptr<Read> read) {
  while (const auto event = co_await events.next()) {
    if (const auto* updated = std::get_if<ItemUpdatedEvent>(&event->value)) {
      const auto& message = std::get<AgentMessageItem>(updated->item.value);
      read->isInOrder = read->isInOrder && message.text.size() == ++read->deltas;
    }
    co_await sleepFor(scheduler, 1s);
  }
  read->hasEnded = true;
}

TEST(AppServerTurnRunSlowConsumer, GetsEverythingAndHoldsNobodyUp) {
  underSeeds(3, [](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    options.thread.commandApprovalHandler = [](const CommandApprovalRequest&) { return OrmelApprovalDecision::accept; };
    SimulatedRun engine(scheduler, options);
    auto events = engine.end(engine.turn()).events;
    const auto read = std::make_shared<Read>();
    engine.start(readSlowly(std::move(events), scheduler, read));
    FastServer server(engine.process(), scheduler);
    server.say(0);
    engine.pass(deltas * 1ms);
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_EQ(server.endedAt, static_cast<std::uint64_t>(std::chrono::nanoseconds(deltas * 1ms).count()));
    const auto methods = engine.methods();
    EXPECT_EQ(static_cast<std::size_t>(std::count(methods.begin(), methods.end(), "")), server.asked);
    EXPECT_LT(read->deltas, 5U);
    engine.pass((deltas + 5) * 1s);
    EXPECT_EQ(read->deltas, deltas);
    EXPECT_TRUE(read->isInOrder);
    EXPECT_TRUE(read->hasEnded);
  });
}

TEST(AppServerTurnRunSlowConsumer, MayStopAltogetherAndLetGoOfTheEventsLater) {
  underSeeds(3, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    auto events = engine.end(engine.turn()).events;
    FastServer server(engine.process(), scheduler);
    server.say(0);
    engine.pass(deltas * 500us);
    {
      const auto dropped = std::move(events);
    }
    engine.pass(deltas * 500us);
    EXPECT_EQ(engine.state(), "finished");
    const auto heard = engine.startTurn();
    engine.completeTurn();
    EXPECT_EQ(heard->back(), "end");
  });
}

}  // namespace
