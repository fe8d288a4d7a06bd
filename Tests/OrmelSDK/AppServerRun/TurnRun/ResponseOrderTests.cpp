#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/NotifiedRun.h"

// Lines behind a response are handled as if they had come later, however the bytes are cut.
namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;

constexpr std::uint64_t cuts = 50;

using Lines = std::vector<std::string>;

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& each : lines) text += each + "\n";
  return text;
}

std::string answerLine(const JSONValue& request, std::string_view result) {
  return JSONValue::object({{"id", *request.find("id")}, {"result", JSONValue::decode(result)}}).encode() + "\n";
}

/// Has the server write the answer and the lines at once.
void answerWith(SimulatedRun& engine, const std::string& method, std::string_view result, const Lines& lines) {
  engine.reply(
      method, [result = std::string(result), rest = joined(lines)](InMemoryProcess& process, const JSONValue& request) {
        process.write(answerLine(request, result) + rest);
      });
}

std::string warning(std::string_view message) {
  return line("warning", R"({"message":")" + std::string(message) + R"("})");
}

std::string message(std::string_view ids, std::string_view id) {
  return line("item/completed", "{" + std::string(ids) + R"(,"item":{"type":"agentMessage","id":")" + std::string(id) +
                                    R"(","text":"x"}})");
}

std::string turn(std::string_view method, std::string_view threadID, std::string_view turnID) {
  return line("turn/" + std::string(method), R"({"threadId":")" + std::string(threadID) + R"(","turn":{"id":")" +
                                                 std::string(turnID) + R"(","status":"completed"}})");
}

TEST(AppServerTurnRunResponseOrder, KnowsTheThreadForTheLinesBehindItsResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    answerWith(engine, "thread/start", R"({"thread":{"id":"t1"}})",
               {warning("first"), message(R"("threadId":"t2")", "foreign"), message(R"("threadId":"t1")", "ours")});
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1", "warning first", "item.completed ours"));
  });
}

TEST(AppServerTurnRunResponseOrder, KnowsTheTurnForTheLinesBehindItsResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    Lines lines = {warning("first"), turn("started", "t1", "u1")};
    // More than could wait for a turn that is not known.
    for (int number = 0; number < 17; ++number) {
      lines.push_back(turn("started", "t1", "sub" + std::to_string(number)));
      lines.push_back(turn("completed", "t1", "sub" + std::to_string(number)));
    }
    lines.push_back(message(R"("turnId":"sub1")", "foreign"));
    lines.push_back(message(R"("turnId":"u1")", "ours"));
    lines.push_back(turn("completed", "t1", "u1"));
    lines.push_back(warning("late"));
    answerWith(engine, "turn/start", R"({"turn":{"id":"u1"}})", lines);
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1", "warning first", "turn.started",
                                                 "item.completed ours", "turn.completed", "end"));
    EXPECT_EQ(engine.state(), "finished");
  });
}

TEST(AppServerTurnRunResponseOrder, KnowsTheThreadOfAReviewForTheLinesBehindItsResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    answerWith(engine, "review/start", R"({"reviewThreadId":"r1","turn":{"id":"u1"}})",
               {turn("completed", "t1", "u1"), turn("started", "r1", "u1"), message(R"("threadId":"t1")", "foreign"),
                message(R"("threadId":"r1")", "ours"), turn("completed", "r1", "u1")});
    const auto heard = engine.listen(engine.end(engine.review()));
    EXPECT_THAT(*heard,
                ElementsAre("thread.started t1", "turn.started", "item.completed ours", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunResponseOrder, KnowsTheForkForTheLinesBehindItsResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    answerWith(engine, "thread/fork", R"({"thread":{"id":"f1"}})",
               {message(R"("threadId":"t1")", "foreign"), message(R"("threadId":"f1")", "ours")});
    const auto heard = engine.listen(engine.end(engine.forkTurn()));
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "thread.started f1", "item.completed ours"));
  });
}

TEST(AppServerTurnRunResponseOrder, TakesACompactionsCourseBehindItsResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    answerWith(engine, "thread/compact/start", "{}", {turn("started", "t1", "u9"), turn("completed", "t1", "u9")});
    const auto heard = engine.listen(engine.end(engine.compaction()));
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.started", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunResponseOrder, FailsWithARefusalAndReadsNothingBehindIt) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.reply("turn/start", [](InMemoryProcess& process, const JSONValue& request) {
      const JSONValue error = JSONValue::object({{"message", "not now"}});
      const JSONValue refusal = JSONValue::object({{"id", *request.find("id")}, {"error", error}});
      process.write(refusal.encode() + "\n" + warning("behind") + "\n{}\n");
    });
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "stream error: not now");
    // The answers to "initialize", "thread/start" and "turn/start".
    EXPECT_EQ(engine.run->protocolActivityGeneration(), 3U);
  });
}

// This stands alone: the closure of a coroutine would go with the run.
Task<void> releaseOf(SimulatedRun& engine) { co_await engine.run->release(); }

TEST(AppServerTurnRunResponseOrder, ReadsNothingBehindAResponseThatEndsTheRun) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.run->postRequestAwaitHook = [&engine](const std::string&, std::uint64_t) { return releaseOf(engine); };
    answerWith(engine, "turn/start", R"({"turn":{"id":"u1"}})", {warning("behind"), "{}"});
    EXPECT_THAT(*engine.startTurn(), ElementsAre("thread.started t1", "end"));
    EXPECT_EQ(engine.run->protocolActivityGeneration(), 3U);
    EXPECT_EQ(engine.state(), "finished");
  });
}

TEST(AppServerTurnRunResponseOrder, LetsGoOfARunThatIsDroppedBesideAResponse) {
  underSeeds(cuts, [](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.keep("turn/steer");
    const auto heard = engine.startTurn();
    const auto steering = engine.start(engine.steer());
    engine.process().write(answerLine(engine.takeKept(), "{}") + warning("behind") + "\n");
    engine.run.reset();
    engine.settle();
    EXPECT_TRUE(steering->isSet());
    EXPECT_EQ(engine.server.held(), 0U);
  });
}

/// The fewest steps that reading the lines takes.
std::uint64_t stepsFor(const std::string& lines) {
  auto fewest = std::numeric_limits<std::uint64_t>::max();
  underSeeds(cuts, [&](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto turn = engine.end(engine.turn());
    const auto before = scheduler.steps();
    engine.write(lines);
    fewest = std::min(fewest, scheduler.steps() - before);
  });
  return fewest;
}

TEST(AppServerTurnRunResponseOrder, TakesOneStepForALargeChunkOfWhatNobodyWaitsFor) {
  std::string many;
  for (int count = 0; count < 100; ++count) many += warning("w") + "\n{\"id\":99,\"result\":{}}\n";
  EXPECT_EQ(stepsFor(many), stepsFor(warning("w") + "\n"));
}

}  // namespace
