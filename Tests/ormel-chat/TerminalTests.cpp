#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Support/SimulatorScenario.h"
#include "ormel-chat/ChatTerminal.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(ChatInATerminal, ShowsAnAnswerWhileItStreams) {
  const ChatTerminal terminal;
  terminal.enter("slow");
  // This turn never ends by itself.
  EXPECT_TRUE(terminal.shows("▌ > slow\n\nThis is thought 1. This is thought 2."));
}

TEST(ChatInATerminal, TakesAnApprovalByKeys) {
  const ChatTerminal terminal;
  terminal.enter("run ls");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  terminal.press("y");
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("I ran \"ls\"; its exit code was 0."));
  EXPECT_THAT(terminal.text(), AllOf(HasSubstr("Allow it? y/n/always [n] y\n"), HasSubstr("$ ls\n  README.md\n")));
}

TEST(ChatInATerminal, AsksAgainWhenTheAnswerIsNone) {
  const ChatTerminal terminal;
  terminal.enter("run ls");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  terminal.enter("perhaps");
  ASSERT_TRUE(terminal.shows("[n] perhaps\n\n▌ The agent wants to run:"));
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("You declined \"ls\", so I did not run it."));
}

TEST(ChatInATerminal, InterruptsTheTurnAndLeavesTheSecondTime) {
  const ChatTerminal terminal;
  terminal.enter("slow");
  ASSERT_TRUE(terminal.shows("thought 3"));
  terminal.press("C-c");
  ASSERT_TRUE(terminal.shows("Interrupted.\n\n▌ >"));
  EXPECT_THAT(terminal.text(),
              AllOf(HasSubstr("Interrupting; Ctrl-C again leaves at once.\n"), Not(HasSubstr("ended with"))));
  terminal.press("C-c");
  EXPECT_TRUE(terminal.shows("ended with 130"));
}

TEST(ChatInATerminal, GoesOnAfterAnInterruption) {
  const ChatTerminal terminal;
  terminal.enter("slow");
  ASSERT_TRUE(terminal.shows("thought 3"));
  terminal.press("C-c");
  ASSERT_TRUE(terminal.shows("Interrupted."));
  terminal.enter("hello");
  EXPECT_TRUE(terminal.shows("You said: \"hello\". I have read it with care. You asked before: \"slow\"."))
      << terminal.text();
}

TEST(ChatInATerminal, WithdrawsAQuestionWhenItIsInterrupted) {
  const ChatTerminal terminal;
  terminal.enter("run ls");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  terminal.press("C-c");
  EXPECT_TRUE(terminal.shows("Interrupted.\n\n▌ >"));
}

TEST(ChatInATerminal, WarnsBeforeItLeavesAtThePrompt) {
  const ChatTerminal terminal;
  terminal.press("C-c");
  ASSERT_TRUE(terminal.shows("Ctrl-C again leaves.\n\n▌ >"));
  terminal.press("C-c");
  EXPECT_TRUE(terminal.shows("ended with 130"));
}

TEST(ChatInATerminal, LeavesAtTheEndOfTheInput) {
  const ChatTerminal terminal;
  terminal.press("C-d");
  EXPECT_TRUE(terminal.shows("ended with 0"));
}

TEST(ChatInATerminal, TellsHowToGoOnLater) {
  const ChatTerminal terminal;
  terminal.enter("hello");
  ASSERT_TRUE(terminal.shows("tokens"));
  terminal.enter("/quit");
  EXPECT_TRUE(terminal.shows("To go on with this conversation: ormel-chat --resume "));
  EXPECT_TRUE(terminal.shows("ended with 0"));
}

TEST(ChatInATerminal, SteersTheTurnByALineThatIsTypedMeanwhile) {
  const ChatTerminal terminal;
  terminal.enter("slow");
  ASSERT_TRUE(terminal.shows("thought 3"));
  terminal.enter("faster");
  EXPECT_TRUE(terminal.shows("(You add: \"faster\". I do so.)"));
}

TEST(ChatInATerminal, LosesNothingWhenTheWindowChangesItsSize) {
  const ChatTerminal terminal;
  terminal.enter("slow");
  ASSERT_TRUE(terminal.shows("thought 10."));
  terminal.resize(33, 10);
  ASSERT_TRUE(terminal.shows("thought 20."));
  terminal.resize(120, 40);
  ASSERT_TRUE(terminal.shows("thought 30."));
  std::string thoughts = "This is thought 1.";
  for (int number = 2; number <= 30; ++number) thoughts += " This is thought " + std::to_string(number) + ".";
  EXPECT_THAT(terminal.text(), HasSubstr(thoughts));
}

TEST(ChatInATerminal, HidesASecretWhileItIsTyped) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server asks item/tool/requestUserInput {"threadId": "t1", "turnId": "u1", "itemId": "i1", "questions":
      [{"id": "q1", "question": "The password?", "isSecret": true}, {"id": "q2", "question": "And the name?"}]
    } expecting {"answers": {"q1": {"answers": ["hunter2"]}, "q2": {"answers": ["Ada"]}}}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  const ChatTerminal terminal(chatCommand("", "ORMEL_SIMULATOR_SCENARIO=" + scenario.path().string()));
  terminal.enter("go");
  ASSERT_TRUE(terminal.shows(" | The password?\n▌ Your answer:"));
  terminal.enter("hunter2");
  ASSERT_TRUE(terminal.shows(" | And the name?\n▌ Your answer:"));
  terminal.enter("Ada");
  EXPECT_TRUE(terminal.shows("tokens"));
  EXPECT_THAT(terminal.text(), AllOf(Not(HasSubstr("hunter2")), HasSubstr("Your answer: Ada")));
}

constexpr const char* turnBegins = R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
)";
constexpr const char* turnEnds = R"(
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
)";

bool hasAsked(const testing::SimulatorScenario& scenario, std::string_view method) {
  return testing::eventually([&] {
    for (const JSONValue& sent : scenario.record("sent")) {
      const JSONValue* text = sent.find("text");
      if (text && text->stringValue() && text->stringValue()->find(method) != std::string_view::npos) return true;
    }
    return false;
  });
}

// It is an addition to the turn then, as it was meant.
TEST(ChatInATerminal, TakesNoLineForAnAnswerThatWasTypedBeforeTheQuestionWasToBeSeen) {
  const testing::SimulatorScenario scenario(std::string(turnBegins) + R"(
    server asks item/commandExecution/requestApproval {
      "threadId": "t1", "turnId": "u1", "itemId": "i1", "command": "ls"
    } as question
    client asks turn/steer {"threadId": "t1", "input": [{"type": "text", "text": "yes"}]}
    server answers {"turnId": "u1"}
    client answers question exactly {"decision": "decline"}
  )" + turnEnds);
  // The question is held back until a line comes, which is the one that was not meant for it.
  const ChatTerminal terminal(
      chatCommand("", "ORMEL_CHAT_QUIET_MS=100000 ORMEL_SIMULATOR_SCENARIO=" + scenario.path().string() +
                          " ORMEL_SIMULATOR_RECORD=" + scenario.recordPath().string()));
  terminal.enter("go");
  ASSERT_TRUE(hasAsked(scenario, "requestApproval"));
  terminal.enter("yes");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  terminal.enter("n");
  EXPECT_TRUE(terminal.shows("tokens"));
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

TEST(ChatInATerminal, TakesAQuestionAwayThatTheServerHasSettledItself) {
  const testing::SimulatorScenario scenario(std::string(turnBegins) + R"(
    server asks item/commandExecution/requestApproval {
      "threadId": "t1", "turnId": "u1", "itemId": "i1", "command": "ls"
    } with id "ask"
    wait until file "settled"
    server notifies serverRequest/resolved {"threadId": "t1", "requestId": "ask"}
    client asks turn/steer {"threadId": "t1", "input": [{"type": "text", "text": "y"}]}
    server answers {"turnId": "u1"}
  )" + turnEnds);
  const ChatTerminal terminal(chatCommand("", "ORMEL_SIMULATOR_SCENARIO=" + scenario.path().string() +
                                                  " ORMEL_SIMULATOR_RECORD=" + scenario.recordPath().string()));
  terminal.enter("go");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  scenario.createFile("settled");
  ASSERT_TRUE(terminal.shows("The server needs no answer to this any more.")) << terminal.text();
  terminal.enter("y");
  EXPECT_TRUE(terminal.shows("tokens"));
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

/// The whole screen after a command has run in a terminal of the environment.
std::string colouredScreen(const std::string& environment) {
  const TmuxTerminal terminal(chatCommand("--yes 'run ls'", environment));
  EXPECT_TRUE(terminal.shows("ended with 0"));
  return terminal.colouredText();
}

TEST(ChatInATerminal, UsesColours) {
  EXPECT_THAT(colouredScreen("TERM=screen"), AllOf(HasSubstr("$ ls"), HasSubstr("\x1b[32m")));
}

TEST(ChatInATerminal, UsesNoColoursWhereTheyAreNotWanted) {
  EXPECT_THAT(colouredScreen("TERM=screen NO_COLOR=1"), AllOf(HasSubstr("$ ls"), Not(HasSubstr("\x1b"))));
  EXPECT_THAT(colouredScreen("TERM=dumb"), AllOf(HasSubstr("$ ls"), Not(HasSubstr("\x1b"))));
}

TEST(ChatInATerminal, IgnoresAnEmptyWishForNoColours) {
  EXPECT_THAT(colouredScreen("TERM=screen NO_COLOR="), HasSubstr("\x1b[32m"));
}

}  // namespace
}  // namespace ormel::chat
