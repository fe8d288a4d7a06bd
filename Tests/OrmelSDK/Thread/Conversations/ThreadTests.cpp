#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <future>
#include <string>
#include <string_view>
#include <thread>

#include "Support/ProcessResources.h"
#include "Support/ThreadHarness.h"
#include "Support/TurnRunHarness.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;

std::string turnThatSays(std::string_view text) {
  return turnIsAccepted +
         (R"(server notifies item/completed {"item": {"type": "agentMessage", "id": "m1", "text": ")" +
          std::string(text) + "\"}}") +
         turnCompletes;
}

bool noChildIsLeft() {
  return eventually([] { return !ProcessResources::now().hasChildren; });
}

TEST(ThreadConversation, BlocksForTurnsThatFollowEachOther) {
  ThreadHarness server(politeServer + turnThatSays("one") + turnThatSays("two") + turnThatSays("three"));
  EXPECT_EQ(server.thread->id(), std::nullopt);
  EXPECT_EQ(server.thread->run("first").get().finalResponse, "one");
  EXPECT_EQ(server.thread->id(), "t1");
  EXPECT_EQ(server.thread->run(Input::from({UserInput::text("second")}), TurnOptions()).get().finalResponse, "two");
  std::string last;
  StreamedTurn streamed = server.thread->runStreamed(std::string("third")).get();
  for (const ThreadEvent& event : streamed.events) last = inWords(event);
  EXPECT_EQ(last, "turn.completed");
  EXPECT_EQ(server.scenario.processesStarted(), 1U);
  EXPECT_THAT(server.scenario.methodsReceived(),
              ElementsAre("initialize", "initialized", "thread/start", "turn/start", "thread/resume", "turn/start",
                          "thread/resume", "turn/start"));
}

Task<std::vector<std::string>> wordsOf(StreamedTurn streamed) {
  std::vector<std::string> words;
  while (const auto event = co_await streamed.events.next()) words.push_back(inWords(*event));
  co_return words;
}

Task<void> awaitEverything(Thread thread) {
  const Turn first = co_await thread.run("hello");
  EXPECT_EQ(first.finalResponse, "one");
  StreamedTurn turn = co_await thread.runStreamed("hello");
  co_await thread.steer("faster");
  auto words = wordsOf(std::move(turn));
  EXPECT_THAT(co_await std::move(words), ElementsAre("thread.started t1", "turn.completed"));
  StreamedTurn review = co_await thread.startReviewStreamed(ReviewTarget::uncommittedChanges());
  words = wordsOf(std::move(review));
  EXPECT_THAT(co_await std::move(words), ElementsAre("thread.started t1", "turn.completed"));
  StreamedTurn compaction = co_await thread.compactStreamed();
  words = wordsOf(std::move(compaction));
  EXPECT_THAT(co_await std::move(words), ElementsAre("thread.started t1", "turn.started", "turn.completed"));
  StreamedTurn aside = co_await thread.runSideConversationStreamed("by the way", "be brief");
  words = wordsOf(std::move(aside));
  EXPECT_THAT(co_await std::move(words), ElementsAre("thread.started t1", "thread.started f1", "turn.completed"));
  co_await thread.interrupt();
}

TEST(ThreadConversation, IsAwaited) {
  ThreadHarness server(politeServer + turnThatSays("one") + turnIsAccepted + R"(
    client asks turn/steer {"threadId": "t1", "expectedTurnId": "u1"}
    server answers {})" +
                       turnCompletes + R"(
    client asks review/start {"threadId": "t1", "delivery": "inline"}
    server answers {"reviewThreadId": "r1", "turn": {"id": "u1"}}
    server notifies turn/completed {"threadId": "r1", "turn": {"id": "u1", "status": "completed"}}
    client asks thread/compact/start {"threadId": "t1"}
    server answers {}
    server notifies turn/started {"threadId": "t1", "turn": {"id": "u1"}})" +
                       turnCompletes + R"(
    client asks thread/fork {"threadId": "t1", "developerInstructions": "be brief", "ephemeral": true}
    server answers {"thread": {"id": "f1"}}
    client asks turn/start {"threadId": "f1"}
    server answers {"turn": {"id": "u1"}}
    server notifies turn/completed {"threadId": "f1", "turn": {"id": "u1", "status": "completed"}})");
  awaitEverything(*server.thread).get();
  EXPECT_EQ(server.thread->id(), "t1");
  EXPECT_EQ(server.scenario.processesStarted(), 1U);
}

TEST(ThreadConversation, CallsBack) {
  ThreadHarness server(politeServer + turnThatSays("one"));
  std::promise<Turn> promise;
  auto turn = promise.get_future();
  server.thread->run("hello").start([&promise](TaskResult<Turn> result) { promise.set_value(result.take()); });
  ASSERT_EQ(turn.wait_for(patience), std::future_status::ready);
  EXPECT_EQ(turn.get().finalResponse, "one");
}

TEST(ThreadConversation, EndsTheServerWhenItIsReleasedWhileIdle) {
  ThreadHarness server(politeServer + turnThatSays("one"));
  server.thread->run("hello").get();
  EXPECT_TRUE(ProcessResources::now().hasChildren);
  server.thread.reset();
  EXPECT_TRUE(noChildIsLeft());
}

TEST(ThreadConversation, EndsAServerThatDoesNotListenWhenItIsReleased) {
  ThreadHarness server("server ignores TERM\n" + politeServer + turnThatSays("one") + "wait until input closes\n");
  server.thread->run("hello").get();
  server.thread.reset();
  EXPECT_TRUE(noChildIsLeft());
}

TEST(ThreadConversation, GoesOnToTheEndOfATurnWithoutAHandle) {
  ThreadHarness server(politeServer + turnIsAccepted + "wait until file \"go\"\n" + turnCompletes);
  StreamedTurn streamed = server.thread->runStreamed("hello").get();
  server.thread.reset();
  EXPECT_TRUE(ProcessResources::now().hasChildren);
  server.scenario.createFile("go");
  EXPECT_THAT(told(streamed.events), ElementsAre("thread.started t1", "turn.completed", "end"));
  EXPECT_TRUE(noChildIsLeft());
}

TEST(ThreadConversation, LeavesTheProcessToTheNextTurnWhenATurnFails) {
  ThreadHarness server(politeServer + turnIsAccepted + R"(
    server notifies turn/completed {"turn": {"id": "u1", "status": "failed", "error": {"message": "no credit"}}})" +
                       turnThatSays("two"));
  EXPECT_EQ(failureOf([&] { server.thread->run("hello").get(); }), "turn failed: no credit");
  EXPECT_EQ(server.thread->run("again").get().finalResponse, "two");
  EXPECT_EQ(server.scenario.processesStarted(), 1U);
}

TEST(ThreadConversation, StartsAnotherServerAfterACrash) {
  ThreadHarness server(politeServer + "in run 1\n" + turnIsAccepted + R"(
      server writes stderr "panicked\n"
      server exits 3
    end
    in run 2
    )" + turnThatSays("two") +
                       "end\n");
  EXPECT_EQ(failureOf([&] { server.thread->run("hello").get(); }), "stream error: panicked");
  EXPECT_EQ(server.thread->id(), "t1");
  EXPECT_EQ(server.thread->run("again").get().finalResponse, "two");
  EXPECT_THAT(server.scenario.methodsReceived(),
              ElementsAre("initialize", "initialized", "thread/start", "turn/start", "initialize", "initialized",
                          "thread/resume", "turn/start"));
}

TEST(ThreadConversation, IsAbortedFromAnyThread) {
  ThreadHarness server(politeServer + "in run 1\n" + turnIsAccepted + R"(
      client asks turn/interrupt {"threadId": "t1", "turnId": "u1"}
      server answers {}
      server notifies turn/completed {"turn": {"id": "u1", "status": "interrupted"}}
    end
    in run 2
    )" + turnThatSays("two") +
                       "end\n");
  const AbortController controller;
  TurnOptions options;
  options.signal = controller.signal;
  StreamedTurn streamed = server.thread->runStreamed("hello", options).get();
  std::thread([&controller] { controller.abort(); }).join();
  EXPECT_THAT(told(streamed.events), ElementsAre("thread.started t1", "aborted"));
  EXPECT_EQ(failureOf([&] { server.thread->run("again", options).get(); }), "aborted");
  EXPECT_EQ(server.scenario.processesStarted(), 1U);
  EXPECT_EQ(server.thread->run("again").get().finalResponse, "two");
}

// The handler runs while the start of the turn waits for it.
TEST(ThreadConversation, SendsNoTurnWhenAHandlerAborts) {
  const AbortController controller;
  ThreadOptions options;
  options.threadStartedHandler = [&controller](const std::string&) { controller.abort(); };
  ThreadHarness server(politeServer, options);
  TurnOptions turnOptions;
  turnOptions.signal = controller.signal;
  const std::string failure = failureOf([&] { server.thread->run("hello", turnOptions).get(); });
  EXPECT_EQ(failure, "stream error: Prepared app-server operation is no longer current");
  EXPECT_THAT(server.scenario.methodsReceived(), ElementsAre("initialize", "initialized", "thread/start"));
  EXPECT_EQ(server.thread->id(), std::nullopt);
}

TEST(ThreadConversation, AnswersAQuestionOfTheServer) {
  ThreadHarness server(politeServer + turnIsAccepted + R"(
    server asks item/tool/requestUserInput {"itemId": "q1", "questions": []} with id "ask" as question
    client answers question exactly {"answers": {"size": {"answers": ["Small"]}}}
    )" + turnCompletes);
  StreamedTurn streamed = server.thread->runStreamed("hello").get();
  EXPECT_EQ(nextTold(streamed.events), "thread.started t1");
  EXPECT_EQ(nextTold(streamed.events), "item.started q1");
  server.thread->submitRequestUserInput("q1", {{"size", {"Small"}}}).get();
  EXPECT_THAT(told(streamed.events), ElementsAre("item.completed q1", "turn.completed", "end"));
}

TEST(ThreadConversation, GivesOneOfTwoTurnsThatAreStartedAtOnceToTheServer) {
  for (int round = 0; round < 20; ++round) {
    ThreadHarness server(politeServer + turnIsAccepted + "wait until file \"go\"\n" + turnCompletes);
    std::atomic<int> ready{0};
    std::atomic<int> refused{0};
    std::array<std::string, 2> outcomes;
    const auto race = [&](std::string& outcome) {
      for (++ready; ready != 2;) std::this_thread::yield();
      outcome = failureOf([&] { server.thread->run("hello").get(); });
      if (outcome != "no failure") ++refused;
    };
    std::thread one([&] { race(outcomes[0]); });
    std::thread other([&] { race(outcomes[1]); });
    EXPECT_TRUE(eventually([&] { return refused > 0; }));
    server.scenario.createFile("go");
    one.join();
    other.join();
    EXPECT_THAT(outcomes, ::testing::UnorderedElementsAre("no failure",
                                                          "stream error: An app-server operation is already active"));
    EXPECT_EQ(server.thread->id(), "t1");
  }
}

TEST(ThreadConversation, RunsBesideOthersEachWithAServerOfItsOwn) {
  ThreadHarness server(politeServer + turnIsAccepted + "wait until file \"go\"\n" + turnCompletes);
  const Thread other = server.ormel().startThread();
  StreamedTurn first = server.thread->runStreamed("hello").get();
  StreamedTurn second = other.runStreamed("hello").get();
  EXPECT_EQ(server.scenario.processesStarted(), 2U);
  server.scenario.createFile("go");
  EXPECT_THAT(told(first.events), ElementsAre("thread.started t1", "turn.completed", "end"));
  EXPECT_THAT(told(second.events), ElementsAre("thread.started t1", "turn.completed", "end"));
}

}  // namespace
