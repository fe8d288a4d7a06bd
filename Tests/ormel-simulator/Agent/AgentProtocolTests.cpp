#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "OrmelSDK/Records/ThreadRecords.h"
#include "OrmelSDK/Records/ThreadTurnRecords.h"
#include "ormel-simulator/Agent/RawAgent.h"
#include "ormel-simulator/Agent/TurnScripts.h"
#include "ormel-simulator/Scenario/Simulation.h"

namespace ormel::simulator {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr int endlessPace = 60'000;

TEST(AgentProtocol, BeginsWithInitialize) {
  RawAgent agent;
  EXPECT_EQ(agent.refusal("thread/start"), "-32600 Not initialized");
  agent.initialize();
  EXPECT_EQ(agent.refusal("initialize"), "-32600 Already initialized");
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentProtocol, RefusesWhatItDoesNotKnow) {
  RawAgent agent;
  agent.initialize();
  EXPECT_EQ(agent.refusal("model/dream"), "-32601 Method not found: model/dream");
  EXPECT_EQ(agent.refusal("thread/read", ofThread("t")),
            "-32600 thread not found: t; the simulator keeps no threads, and remembers 0 threads of this process");
  EXPECT_THAT(agent.refusal("turn/start"), ::testing::StartsWith("-32600 thread not found: ; "));
  agent.send(R"({"method":"skills/extraRoots/set","params":{"extraRoots":["/a"]}})");
  agent.send(R"({"method":"whatever"})");
  agent.send(R"({"id":77,"result":{}})");
  EXPECT_EQ(agent.result("skills/extraRoots/set"), JSONValue::object());
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentProtocol, AnswersALineThatIsNoMessageByAnError) {
  RawAgent agent;
  for (const char* line : {"garbage", "", "{\"id\":", "\xff\xfe"}) {
    agent.send(line);
    const JSONValue answer = agent.receive();
    EXPECT_TRUE(answer.find("id") && anyMember(answer, "id").isNull()) << answer;
    EXPECT_EQ(anyMember(anyMember(answer, "error"), "code"), JSONValue(-32700)) << answer;
  }
  for (const char* line : {"[]", "17", R"({"id":5})", R"({"id":5,"method":7})"}) {
    agent.send(line);
    EXPECT_EQ(anyMember(anyMember(agent.receive(), "error"), "code"), JSONValue(-32600)) << line;
  }
  agent.initialize();
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentProtocol, ShowsAThreadAsTheLibraryReadsIt) {
  RawAgent agent;
  agent.initialize();
  const std::string thread = agent.startThread();
  agent.say(thread, "hello");
  agent.startTurn(thread, "run ls");
  agent.answer(agent.await("item/commandExecution/requestApproval"), JSONValue::object({{"decision", "accept"}}));
  agent.await("turn/completed");
  agent.startTurn(thread, "fail");
  agent.await("turn/completed");
  agent.startTurn(thread, "ask");
  const auto read = decode<ThreadReadResponse>(agent.result("thread/read", ofThread(thread).set("includeTurns", true)));
  EXPECT_EQ(read.thread.id, thread);
  EXPECT_EQ(read.thread.preview, "hello");
  EXPECT_EQ(read.thread.status.type, "active");
  ASSERT_THAT(read.thread.turns, SizeIs(4));
  const std::vector<ThreadTurn>& turns = read.thread.turns;
  EXPECT_EQ(turns[0].status, ThreadTurnStatus::completed);
  EXPECT_TRUE(std::holds_alternative<UserMessageItem>(turns[0].items.at(0).value));
  EXPECT_TRUE(turns[0].items.back().agentMessageText().has_value());
  EXPECT_TRUE(std::holds_alternative<CommandExecutionItem>(turns[1].items.at(1).value));
  EXPECT_EQ(turns[2].status, ThreadTurnStatus::failed);
  EXPECT_EQ(turns[2].error->message, "The turn failed, as you asked");
  EXPECT_EQ(turns[3].status, ThreadTurnStatus::inProgress);
  const auto brief = decode<ThreadReadResponse>(agent.result("thread/read", ofThread(thread)));
  EXPECT_THAT(brief.thread.turns, IsEmpty());
}

TEST(AgentProtocol, ServesSeveralThreadsAtOnce) {
  RawAgent agent;
  agent.initialize();
  const std::string first = agent.startThread();
  const std::string second = agent.startThread();
  agent.startTurn(first, "run ls");
  const JSONValue firstRequest = agent.await("item/commandExecution/requestApproval", first);
  agent.startTurn(second, "edit a.txt");
  const JSONValue secondRequest = agent.await("item/fileChange/requestApproval", second);
  agent.answer(secondRequest, JSONValue::object({{"decision", "accept"}}));
  EXPECT_EQ(agent.lastMessage(second), "I have edited a.txt, or would have.");
  agent.answer(firstRequest, JSONValue::object({{"decision", "decline"}}));
  EXPECT_EQ(agent.lastMessage(first), "You declined \"ls\", so I did not run it.");
}

TEST(AgentProtocol, TakesARefusalForTheMostRestrictiveAnswer) {
  RawAgent agent;
  agent.initialize();
  const std::string thread = agent.startThread();
  agent.startTurn(thread, "run ls");
  const JSONValue request = agent.await("item/commandExecution/requestApproval");
  agent.send(
      JSONValue::object({{"id", anyMember(request, "id")}, {"error", JSONValue::object({{"code", -32601}})}}).encode());
  EXPECT_EQ(agent.lastMessage(thread), "You declined \"ls\", so I did not run it.");
}

TEST(AgentProtocol, RunsOneTurnOfAThreadAtATime) {
  RawAgent agent(endlessPace);
  agent.initialize();
  const std::string thread = agent.startThread();
  const std::string turn = agent.startTurn(thread, "hello");
  EXPECT_EQ(agent.refusal("turn/start", RawAgent::turnParams(thread, "again")), "-32600 a turn is already running");
  EXPECT_EQ(agent.refusal("review/start", ofThread(thread)), "-32600 a turn is already running");
  EXPECT_EQ(agent.refusal("thread/compact/start", ofThread(thread)), "-32600 a turn is already running");
  agent.ask("turn/interrupt", ofThread(thread).set("turnId", turn));
  const JSONValue ended = anyMember(anyMember(agent.await("turn/completed"), "params"), "turn");
  EXPECT_EQ(textMember(ended, "status"), "interrupted");
  agent.startTurn(thread, "again");
}

TEST(AgentProtocol, AnswersAnInterruptBeforeItEndsTheTurn) {
  RawAgent agent(endlessPace);
  agent.initialize();
  const std::string thread = agent.startThread();
  const std::string turn = agent.startTurn(thread, "hello");
  agent.await("item/completed");
  const int request = agent.ask("turn/interrupt", ofThread(thread).set("turnId", turn));
  EXPECT_EQ(agent.receive(), JSONValue::object({{"id", request}, {"result", JSONValue::object()}}));
  agent.await("turn/completed");
}

TEST(AgentProtocol, RefusesToSteerOrInterruptWhatDoesNotRun) {
  RawAgent agent(endlessPace);
  agent.initialize();
  const std::string thread = agent.startThread();
  EXPECT_EQ(agent.refusal("turn/steer", ofThread(thread).set("expectedTurnId", "x")),
            "-32600 no such turn is running: x");
  const std::string turn = agent.startTurn(thread, "hello");
  EXPECT_EQ(agent.refusal("turn/interrupt", ofThread(thread).set("turnId", "y")), "-32600 no such turn is running: y");
  EXPECT_EQ(agent.result("turn/steer", RawAgent::turnParams(thread, "more").set("expectedTurnId", turn)),
            JSONValue::object({{"turnId", turn}}));
}

TEST(AgentProtocol, ForksAThreadUpToATurn) {
  RawAgent agent;
  agent.initialize();
  const std::string thread = agent.startThread();
  const std::string first = agent.startTurn(thread, "one");
  agent.await("turn/completed");
  agent.say(thread, "two");
  const JSONValue response = agent.result("thread/fork", ofThread(thread).set("lastTurnId", first));
  const auto fork = decode<ThreadForkResponse>(response);
  EXPECT_EQ(fork.thread.forkedFromID, thread);
  EXPECT_THAT(fork.thread.turns, SizeIs(1));
  EXPECT_THAT(agent.say(fork.thread.id, "three"), AllOf(HasSubstr("before: \"one\"."), Not(HasSubstr("two"))));
  EXPECT_EQ(agent.refusal("thread/fork", ofThread(thread).set("lastTurnId", "z")), "-32600 turn not found: z");
}

TEST(AgentProtocol, ReviewsInAThreadOfItsOwnWhenDetached) {
  RawAgent agent;
  agent.initialize();
  const std::string thread = agent.startThread();
  const JSONValue target = JSONValue::object({{"type", "uncommittedChanges"}});
  JSONObjectBuilder params = ofThread(thread);
  const auto review = decode<ReviewStartResponse>(
      agent.result("review/start", params.set("target", target).set("delivery", "detached")));
  EXPECT_NE(review.reviewThreadID, thread);
  EXPECT_THAT(agent.lastMessage(review.reviewThreadID), HasSubstr("Reviewed the uncommitted changes"));
}

TEST(AgentProtocol, LeavesOutNotificationsThatTheClientDoesNotWant) {
  RawAgent agent;
  agent.initialize(JSONValue::object(
      {{"optOutNotificationMethods", JSONValue::array({"item/agentMessage/delta", "turn/started"})}}));
  const std::string thread = agent.startThread();
  agent.startTurn(thread, "hello");
  std::vector<std::string> methods;
  do methods.push_back(textMember(agent.receive(), "method").value_or(""));
  while (methods.back() != "turn/completed");
  EXPECT_THAT(methods, AllOf(Contains("item/reasoning/summaryTextDelta"), Not(Contains("item/agentMessage/delta")),
                             Not(Contains("turn/started"))));
}

TEST(AgentProtocol, EndsWithTheInputAlsoDuringATurn) {
  RawAgent agent(endlessPace);
  agent.initialize();
  agent.startTurn(agent.startThread(), "hello");
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentProtocol, EndsWhenNobodyReads) {
  RawAgent agent;
  agent.initialize();
  agent.startTurn(agent.startThread(), "slow");
  agent.child().closeOutput();
  EXPECT_EQ(agent.child().wait().status, 0);
}

TEST(AgentProtocol, EndsAtOnceWhenItIsTerminated) {
  RawAgent agent;
  agent.initialize();
  agent.startTurn(agent.startThread(), "slow");
  agent.await("item/agentMessage/delta");
  ::kill(agent.child().processID(), SIGTERM);
  EXPECT_EQ(agent.end(), -SIGTERM);
}

TEST(AgentProtocol, LeavesTheInterruptOfATerminalToTheClient) {
  RawAgent agent;
  agent.initialize();
  const std::string thread = agent.startThread();
  agent.startTurn(thread, "ask");
  agent.await("item/tool/requestUserInput");
  ::kill(agent.child().processID(), SIGINT);
  agent.result("thread/read", ofThread(thread));
  EXPECT_EQ(agent.finish(), 0);
}

TEST(AgentProtocol, CrashesWithAStatusAndAMessage) {
  RawAgent agent;
  agent.initialize();
  agent.startTurn(agent.startThread(), "crash");
  EXPECT_EQ(agent.child().readErrors(), "ormel-simulator: the agent crashed, as you asked\n");
  EXPECT_EQ(agent.end(), 3);
}

TEST(AgentDocumentation, NamesAllWordsOfTheAgent) {
  std::ostringstream page;
  page << std::ifstream(std::filesystem::path(ORMEL_SOURCE_FOLDER) / "docs/simulator.md").rdbuf();
  for (const TurnScript& script : turnScripts()) {
    const std::string argument = script.argument.empty() ? "" : " " + std::string(script.argument);
    const std::string words = std::string(script.words) + argument;
    EXPECT_NE(page.str().find("| `" + words + "` |"), std::string::npos) << words;
    EXPECT_NE(turnScriptsHelp().find("  " + words + " "), std::string::npos) << words;
  }
}

}  // namespace
}  // namespace ormel::simulator
