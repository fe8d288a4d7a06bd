#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Support/RunTranscript.h"
#include "ormel-simulator/Agent/AgentConversation.h"

namespace ormel::simulator {
namespace {

using testing::failureOf;
using ::testing::HasSubstr;
using ::testing::Not;

std::ptrdiff_t processesOf(const AgentConversation& agent) {
  const auto methods = agent.receivedMethods();
  return std::count(methods.begin(), methods.end(), "initialize");
}

/// Reads up to the first event of the kind.
template <typename Event>
Event awaitEvent(StreamedTurn& streamed) {
  for (const ThreadEvent& event : streamed.events) {
    if (const auto* found = std::get_if<Event>(&event.value)) return *found;
  }
  throw std::runtime_error("no such event came");
}

TEST(AgentThreads, StayWithTheirConversationThroughOperationsOfAllKinds) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  thread.run("the first thing").get();
  const auto id = thread.id();
  ASSERT_TRUE(id);

  StreamedTurn review = thread.startReviewStreamed(ReviewTarget::uncommittedChanges()).get();
  EXPECT_EQ(thread.id(), id);
  EXPECT_EQ(eventsOf<TurnCompletedEvent>(drain(review)).size(), 1U);
  EXPECT_EQ(thread.id(), id);

  StreamedTurn aside = thread.runSideConversationStreamed("by the way", "Be brief").get();
  const auto threads = eventsOf<ThreadStartedEvent>(drain(aside));
  ASSERT_EQ(threads.size(), 2U);
  EXPECT_EQ(threads[0].threadID, id);
  EXPECT_NE(threads[1].threadID, id);
  EXPECT_EQ(thread.id(), id);

  EXPECT_THAT(thread.run("the second thing").get().finalResponse, HasSubstr("You asked before: \"the first thing\""));

  StreamedTurn compaction = thread.compactStreamed().get();
  EXPECT_EQ(eventsOf<TurnCompletedEvent>(drain(compaction)).size(), 1U);
  EXPECT_EQ(thread.id(), id);
  EXPECT_THAT(thread.run("the third thing").get().finalResponse, Not(HasSubstr("the first thing")));
  EXPECT_EQ(thread.id(), id);
  EXPECT_EQ(processesOf(agent), 1);
}

TEST(AgentThreads, RefuseWhatNeedsAConversationUntilTheyHaveOne) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  EXPECT_EQ(failureOf([&] { thread.startReviewStreamed(ReviewTarget::uncommittedChanges()).get(); }),
            "stream error: Start the thread before requesting a review");
  EXPECT_EQ(failureOf([&] { thread.compactStreamed().get(); }),
            "stream error: Start the thread before requesting compaction");
  EXPECT_EQ(failureOf([&] { thread.runSideConversationStreamed("by the way", "Be brief").get(); }),
            "stream error: Start the main thread before opening a side conversation");
  EXPECT_EQ(failureOf([&] { thread.steer("faster").get(); }), "stream error: No active turn to steer");
  EXPECT_EQ(failureOf([&] { thread.submitRequestUserInput("i1", {}).get(); }),
            "stream error: No active turn for request_user_input response");
  EXPECT_EQ(failureOf([&] { thread.interrupt().get(); }), "no failure");
  EXPECT_EQ(processesOf(agent), 0);
}

TEST(AgentThreads, DoOneThingAtATime) {
  const AgentConversation agent(AgentConversation::State::kept);
  const Thread thread = agent.startThread();
  StreamedTurn slow = thread.runStreamed("slow").get();
  EXPECT_EQ(failureOf([&] { thread.run("quick").get(); }), "stream error: An app-server operation is already active");
  EXPECT_EQ(failureOf([&] { thread.compactStreamed().get(); }),
            "stream error: An app-server operation is already active");
  thread.interrupt().get();
  EXPECT_EQ(failureOf([&] { drain(slow); }), "aborted");
  EXPECT_THAT(thread.run("quick").get().finalResponse, HasSubstr("quick"));
  EXPECT_EQ(processesOf(agent), 2);
}

TEST(AgentThreads, KeepTheirIDWhenASideConversationIsAborted) {
  const AgentConversation agent(AgentConversation::State::kept);
  const Thread thread = agent.startThread();
  thread.run("the main thing").get();
  const auto id = thread.id();
  const AbortController controller;
  TurnOptions options;
  options.signal = controller.signal;
  StreamedTurn aside = thread.runSideConversationStreamed("slow", "Be brief", options).get();
  awaitEvent<ItemUpdatedEvent>(aside);
  controller.abort();
  EXPECT_EQ(failureOf([&] { drain(aside); }), "aborted");
  EXPECT_EQ(thread.id(), id);
  EXPECT_THAT(thread.run("back again").get().finalResponse, HasSubstr("You asked before: \"the main thing\"."));
}

TEST(AgentThreads, TakeAnAnswerOnlyWhileAQuestionIsPending) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  StreamedTurn streamed = thread.runStreamed("ask me").get();
  std::string question;
  while (question.empty()) {
    const auto started = awaitEvent<ItemStartedEvent>(streamed);
    if (std::holds_alternative<McpToolCallItem>(started.item.value)) question = started.item.id();
  }
  EXPECT_EQ(failureOf([&] { thread.submitRequestUserInput("another", {}).get(); }),
            "stream error: No pending request_user_input call for item: another");
  thread.submitRequestUserInput(question, {{"language", {"C++"}}}).get();
  EXPECT_THAT(finalText(drain(streamed)), HasSubstr("language C++"));
  EXPECT_EQ(failureOf([&] { thread.submitRequestUserInput(question, {}).get(); }),
            "stream error: No active turn for request_user_input response");
}

TEST(AgentThreads, FailATurnAndGoOnWithTheSameProcess) {
  const AgentConversation agent;
  const Thread thread = agent.startThread();
  EXPECT_THAT(failureOf([&] { thread.run("fail").get(); }), ::testing::StartsWith("turn failed: "));
  EXPECT_THAT(thread.run("go on").get().finalResponse, HasSubstr("go on"));
  EXPECT_EQ(processesOf(agent), 1);
}

}  // namespace
}  // namespace ormel::simulator
