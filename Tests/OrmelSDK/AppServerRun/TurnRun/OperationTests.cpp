#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
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

const std::vector<std::string> handshake = {"initialize", "initialized"};

std::vector<std::string> after(std::vector<std::string> first, const std::vector<std::string>& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

SimulatedRun::Options withRoots(std::vector<std::string> roots) {
  SimulatedRun::Options options;
  options.thread.skillExtraRoots = std::move(roots);
  return options;
}

TEST(AppServerTurnRunOperations, ShakeHandsFirst) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.startTurn();
  EXPECT_EQ(engine.lastParams("initialize"),
            JSONValue::decode(R"({"clientInfo":{"name":"kestrion","title":"Kestrion","version":"0.1.0"},
                                  "capabilities":{"experimentalApi":true,"requestAttestation":false}})"));
}

TEST(AppServerTurnRunOperations, StartATurnOnANewThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto turn = engine.end(engine.turn());
    EXPECT_EQ(turn.threadID, "t1");
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/start", "turn/start"}));
    EXPECT_EQ(engine.lastParams("thread/start"), JSONValue::decode(R"({"config":{"features":{"goals":true}}})"));
    EXPECT_EQ(engine.lastParams("turn/start"),
              JSONValue::decode(R"({"threadId":"t1","input":[{"type":"text","text":"hello"}]})"));
  });
}

TEST(AppServerTurnRunOperations, StartATurnOnAnExistingThreadAndTrustTheServersIDForIt) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.answer("thread/resume", R"({"thread":{"id":"t9"}})");
    auto turn = engine.end(engine.turn("t5"));
    EXPECT_EQ(turn.threadID, "t9");
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/resume", "turn/start"}));
    const JSONValue resumed = engine.lastParams("thread/resume");
    EXPECT_EQ(*resumed.find("threadId"), JSONValue("t5"));
    const JSONValue started = engine.lastParams("turn/start");
    EXPECT_EQ(*started.find("threadId"), JSONValue("t9"));
    EXPECT_THAT(*engine.listen(std::move(turn.events)), ElementsAre("thread.started t9"));
  });
}

TEST(AppServerTurnRunOperations, StartAReview) {
  const std::pair<ReviewDelivery, const char*> deliveries[] = {{ReviewDelivery::inline_, "inline"},
                                                               {ReviewDelivery::detached, "detached"}};
  for (const auto& [delivery, word] : deliveries) {
    SimulatedScheduler scheduler(1);
    SimulatedRun engine(scheduler);
    engine.listen(engine.end(channelOf(
        engine.run->start(detail::OperationRequest::review("t1", ReviewTarget::baseBranch("main"), delivery)))));
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/resume", "review/start"}));
    const JSONValue target = JSONValue::object({{"type", "baseBranch"}, {"branch", "main"}});
    EXPECT_EQ(engine.lastParams("review/start"),
              JSONValue::object({{"threadId", "t1"}, {"target", target}, {"delivery", word}}));
  }
}

TEST(AppServerTurnRunOperations, StartACompaction) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.compaction()));
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/resume", "thread/compact/start"}));
    EXPECT_EQ(engine.lastParams("thread/compact/start"), JSONValue::decode(R"({"threadId":"t1"})"));
    EXPECT_THAT(*heard, ElementsAre("thread.started t1"));
  });
}

TEST(AppServerTurnRunOperations, StartATurnOnAForkAndTellBothThreads) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    const auto heard = engine.listen(engine.end(engine.forkTurn()));
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/resume", "thread/fork", "turn/start"}));
    EXPECT_EQ(engine.lastParams("thread/fork"),
              JSONValue::decode(R"({"threadId":"t1","developerInstructions":"be brief","ephemeral":true})"));
    const JSONValue started = engine.lastParams("turn/start");
    EXPECT_EQ(*started.find("threadId"), JSONValue("f1"));
    engine.notify("turn/completed", R"({"threadId":"f1","turn":{"id":"u1","status":"completed"}})");
    EXPECT_THAT(*heard, ElementsAre("thread.started t1", "thread.started f1", "turn.completed", "end"));
  });
}

TEST(AppServerTurnRunOperations, RunAllOnOneProcessAfterOneHandshake) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.completeTurn();
    engine.end(engine.review());
    engine.notify("turn/completed", R"({"threadId":"r1","turn":{"id":"u1","status":"completed"}})");
    engine.end(engine.compaction());
    engine.notify("turn/started", R"({"threadId":"t1","turn":{"id":"u9"}})");
    engine.notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u9","status":"completed"}})");
    engine.end(engine.forkTurn());
    EXPECT_EQ(engine.server.started(), 1U);
    EXPECT_EQ(engine.methods(),
              after(handshake, {"thread/start", "turn/start", "thread/resume", "review/start", "thread/resume",
                                "thread/compact/start", "thread/resume", "thread/fork", "turn/start"}));
  });
}

TEST(AppServerTurnRunOperations, TellTheSkillRootsOnEveryOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler, withRoots({" /a\n", "  ", "/b"}));
    engine.startTurn();
    engine.completeTurn();
    engine.startTurn();
    EXPECT_EQ(engine.methods(), after(handshake, {"skills/extraRoots/set", "thread/start", "turn/start",
                                                  "skills/extraRoots/set", "thread/start", "turn/start"}));
    EXPECT_EQ(engine.lastMessage("skills/extraRoots/set"),
              JSONValue::decode(R"({"method":"skills/extraRoots/set","params":{"extraRoots":["/a","/b"]}})"));
  });
}

TEST(AppServerTurnRunOperations, TellNoSkillRootsThatAreBlank) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler, withRoots({"", " \n"}));
  engine.startTurn();
  EXPECT_EQ(engine.methods(), after(handshake, {"thread/start", "turn/start"}));
}

TEST(AppServerTurnRunOperations, WaitForTheHandlerOfANewThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    OneShot<void> gate;
    std::string told;
    options.thread.threadStartedHandler = [&gate, &told](std::string threadID) -> Task<void> {
      told = std::move(threadID);
      co_await gate.wait();
    };
    SimulatedRun engine(scheduler, options);
    const auto starting = engine.start(engine.turn());
    EXPECT_EQ(told, "t1");
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/start"}));
    gate.resume();
    engine.settle();
    EXPECT_EQ(engine.taken(starting).threadID, "t1");
  });
}

TEST(AppServerTurnRunOperations, CallTheHandlerOfANewThreadForTurnsOnly) {
  SimulatedScheduler scheduler(1);
  SimulatedRun::Options options;
  int calls = 0;
  options.thread.threadStartedHandler = [&calls](const std::string&) { ++calls; };
  SimulatedRun engine(scheduler, options);
  engine.end(engine.review());
  engine.release();
  engine.end(engine.compaction());
  engine.release();
  engine.end(engine.forkTurn());
  engine.release();
  EXPECT_EQ(calls, 0);
  engine.startTurn();
  EXPECT_EQ(calls, 1);
}

TEST(AppServerTurnRunOperations, SendNoTurnWhenTheyAreAbortedInTheHandlerOfTheThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    OneShot<void> gate;
    options.thread.threadStartedHandler = [&gate](const std::string&) -> Task<void> { co_await gate.wait(); };
    SimulatedRun engine(scheduler, options);
    const auto starting = engine.start(engine.turn());
    engine.interrupt();
    EXPECT_EQ(engine.state(), "failed");
    gate.resume();
    engine.settle();
    EXPECT_EQ(failureOf([&] { engine.taken(starting); }), operationNotCurrent);
    EXPECT_EQ(engine.methods(), after(handshake, {"thread/start"}));
  });
}

TEST(AppServerTurnRunOperations, FailWithTheHandlerOfTheThread) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun::Options options;
    options.thread.threadStartedHandler = [](const std::string&) { throw std::runtime_error("no window"); };
    SimulatedRun engine(scheduler, options);
    EXPECT_EQ(failureOf([&] { engine.startTurn(); }), "other error: no window");
    EXPECT_EQ(engine.state(), "failed");
  });
}

struct BadResponse {
  const char* method;
  const char* response;
  const char* message;
};

TEST(AppServerTurnRunOperations, FailOnAResponseThatLacksWhatItIsFor) {
  constexpr const char* noThread = "Invalid thread response from app-server";
  constexpr const char* noTurn = "Invalid turn/start response from app-server";
  constexpr const char* noReview = "Invalid review/start response from app-server";
  const BadResponse cases[] = {
      {"thread/resume", "{}", noThread},
      {"thread/resume", R"({"thread":{}})", "Invalid thread object from app-server"},
      {"review/start", "null", noReview},
      {"review/start", R"({"turn":{"id":"u1"}})", noReview},
      {"review/start", R"({"reviewThreadId":7,"turn":{"id":"u1"}})", noReview},
      {"review/start", R"({"reviewThreadId":"r1"})", noTurn},
      {"thread/fork", "{}", noThread},
      {"turn/start", "{}", noTurn},
      {"turn/start", "[]", noTurn},
      {"turn/start", R"({"turn":{"id":7}})", noTurn},
  };
  for (const BadResponse& bad : cases) {
    SCOPED_TRACE(std::string(bad.method) + " " + bad.response);
    inManyOrders([&bad](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.answer(bad.method, bad.response);
      const bool ofReview = std::string_view(bad.method) == "review/start";
      EXPECT_EQ(failureOf([&] { engine.end(ofReview ? engine.review() : engine.forkTurn()); }),
                std::string("stream error: ") + bad.message);
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
    });
  }
}

TEST(AppServerTurnRunOperations, AcceptATurnWithAnEmptyID) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.answer("turn/start", R"({"turn":{"id":""}})");
  engine.startTurn();
  EXPECT_EQ(engine.run->scope().coordinatorTurnID(), "");
}

TEST(AppServerTurnRunOperations, DoNotLookAtTheResponsesOfHandshakeAndCompaction) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.answer("initialize", "null");
  engine.answer("thread/compact/start", "7");
  engine.end(engine.compaction());
  EXPECT_EQ(engine.state(), "pending");
}

TEST(AppServerTurnRunOperations, PassEachRefusalOn) {
  using Begin = Task<EventChannel<ThreadEvent>> (*)(SimulatedRun&);
  const std::pair<const char*, Begin> cases[] = {
      {"initialize", [](SimulatedRun& engine) { return engine.review(); }},
      {"thread/resume", [](SimulatedRun& engine) { return engine.review(); }},
      {"review/start", [](SimulatedRun& engine) { return engine.review(); }},
      {"thread/compact/start", [](SimulatedRun& engine) { return engine.compaction(); }},
      {"thread/fork", [](SimulatedRun& engine) { return engine.forkTurn(); }},
      {"turn/start", [](SimulatedRun& engine) { return engine.forkTurn(); }},
  };
  for (const auto& entry : cases) {
    const auto method = entry.first;
    const auto begin = entry.second;
    SCOPED_TRACE(method);
    inManyOrders([method, begin](SimulatedScheduler& scheduler) {
      SimulatedRun engine(scheduler);
      engine.refuse(method, "not now");
      EXPECT_EQ(failureOf([&] { engine.end(begin(engine)); }), "stream error: not now");
      EXPECT_EQ(engine.state(), "failed");
      EXPECT_FALSE(engine.run->transport().hasProcess());
      engine.answer(method, R"({"thread":{"id":"t1"},"turn":{"id":"u1"},"reviewThreadId":"r1"})");
      engine.end(begin(engine));
      EXPECT_EQ(engine.server.started(), 2U);
    });
  }
}

TEST(AppServerTurnRunSteer, SendsTheInputToTheRunningTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    engine.end(engine.steer());
    engine.end(engine.steer(1));
    EXPECT_EQ(engine.lastParams("turn/steer"),
              JSONValue::decode(R"({"threadId":"t1","expectedTurnId":"u1","input":[{"type":"text","text":"more"}]})"));
    EXPECT_EQ(engine.state(), "pending");
  });
}

TEST(AppServerTurnRunSteer, NeedsARunningTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    const std::string refusal = "stream error: No active turn to steer";
    SimulatedRun engine(scheduler);
    EXPECT_EQ(failureOf([&] { engine.end(engine.steer()); }), refusal);
    engine.keep("turn/start");
    const auto starting = engine.start(engine.turn());
    EXPECT_EQ(failureOf([&] { engine.end(engine.steer()); }), refusal);
    engine.answerKept(R"({"turn":{"id":"u1"}})");
    EXPECT_EQ(failureOf([&] { engine.end(engine.steer(2)); }), refusal);
    EXPECT_EQ(engine.state(), "pending");
    engine.completeTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.steer()); }), refusal);
    EXPECT_EQ(engine.state(), "finished");
    EXPECT_THAT(engine.methods(), Not(Contains("turn/steer")));
  });
}

TEST(AppServerTurnRunUserInput, NeedsARunningOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    const std::string refusal = "stream error: No active turn for request_user_input response";
    SimulatedRun engine(scheduler);
    EXPECT_EQ(failureOf([&] { engine.end(engine.run->submitUserInput("i1", {})); }), refusal);
    engine.startTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.run->submitUserInput("i1", {}, 2)); }), refusal);
    EXPECT_EQ(engine.state(), "pending");
    engine.completeTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.run->submitUserInput("i1", {}, 1)); }), refusal);
  });
}

TEST(AppServerTurnRunUserInput, NeedsAQuestionOfTheItem) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SimulatedRun engine(scheduler);
    engine.startTurn();
    EXPECT_EQ(failureOf([&] { engine.end(engine.run->submitUserInput("i1", {}, 1)); }),
              "stream error: No pending request_user_input call for item: i1");
    EXPECT_EQ(engine.state(), "pending");
  });
}

}  // namespace
