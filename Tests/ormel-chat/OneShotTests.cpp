#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <sstream>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-chat/ChatProgram.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* plainAnswer =
    "You said: \"hello\". I have read it with care. Say \"run ls\", \"edit notes.txt\" or \"ask\" to see more of me.\n";

int countOf(std::string_view part, std::string_view text) {
  int count = 0;
  for (auto place = text.find(part); place != text.npos; place = text.find(part, place + 1)) ++count;
  return count;
}

void waitUntilTalking(ChatProgram& program) {
  while (program.child().readLine().find("thought") == std::string::npos) continue;
}

TEST(ChatOneShot, ShowsTheAnswerAndEndsWell) {
  const ChatEnd end = chat({"hello"});
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.errors, "");
  EXPECT_THAT(end.output, HasSubstr(plainAnswer));
}

TEST(ChatOneShot, ShowsEachStreamedTextOnce) {
  const ChatEnd end = chat({"hello"});
  EXPECT_EQ(countOf("I have read it with care", end.output), 1);
  EXPECT_EQ(countOf("The user wants an answer", end.output), 1);
  EXPECT_THAT(end.output, HasSubstr("thinking\n  The user wants an answer."));
}

TEST(ChatOneShot, ShowsStepsAsTheyAreDone) {
  const ChatEnd end = chat({"hello"});
  EXPECT_THAT(end.output, StartsWith("to do\n  [ ] Read the message\n  [ ] Think of an answer\n  [ ] Say it\n"));
  EXPECT_THAT(end.output, HasSubstr("to do\n  [x] Say it\n"));
}

TEST(ChatOneShot, UsesNoColourOutsideOfATerminal) { EXPECT_THAT(chat({"hello"}).output, Not(HasSubstr("\x1b"))); }

TEST(ChatOneShot, TellsTheTokens) { EXPECT_THAT(chat({"hello"}).output, EndsWith(" out\n")); }

TEST(ChatOneShot, FailsWhenTheTurnFails) {
  const ChatEnd end = chat({"fail"});
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.output, "The turn failed: The turn failed, as you asked\n");
}

TEST(ChatOneShot, FailsWhenTheServerDies) {
  const ChatEnd end = chat({"crash"});
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.errors, HasSubstr("the agent crashed, as you asked"));
}

TEST(ChatOneShot, GoesOnAfterAnErrorThatTheServerOvercomes) {
  const ChatEnd end = chat({"error"});
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, AllOf(StartsWith("error: The model could not be reached\n"), HasSubstr("I tried again")));
}

TEST(ChatOneShot, ShowsWarnings) {
  EXPECT_THAT(chat({"warn"}).output, StartsWith("warning: This is only a simulation\n"));
}

TEST(ChatOneShot, FailsForAServerThatIsNone) {
  testing::ChildOptions options;
  options.arguments = {"--server", "/nowhere/ormel", "hello"};
  testing::ChildProgram child(ORMEL_CHAT_EXECUTABLE, options);
  EXPECT_THAT(child.readErrors(), AllOf(StartsWith("ormel-chat: /nowhere/ormel is no executable file\n"),
                                        HasSubstr("\nFound: no such file")));
  EXPECT_EQ(child.wait().status, 1);
}

TEST(ChatOneShot, FailsForOptionsThatItDoesNotKnow) {
  const ChatEnd end = chat({"--nonsense"});
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.errors, HasSubstr("--nonsense"));
}

TEST(ChatOneShot, ExplainsItself) {
  const ChatEnd end = chat({"--help"});
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, AllOf(HasSubstr("--server"), HasSubstr("--resume"), HasSubstr("--list"), HasSubstr("--cd"),
                                HasSubstr("--model"), HasSubstr("--json"), HasSubstr("--yes")));
}

TEST(ChatOneShot, SaysWhenTheSimulatorStandsIn) {
  const testing::TemporaryDirectory state;
  testing::ChildOptions options;
  options.arguments = {"hello"};
  options.environment = {"ORMEL_SIMULATOR_PACE_MS=1", "ORMEL_SIMULATOR_STATE=" + state.path().string(), "PATH=/nowhere",
                         "HOME=/nowhere"};
  testing::ChildProgram child(ORMEL_CHAT_EXECUTABLE, options);
  child.closeInput();
  EXPECT_THAT(child.readRestOfOutput(), HasSubstr(plainAnswer));
  EXPECT_EQ(child.readErrors(), "No ormel server was found: this is ormel-simulator, which only plays an agent.\n");
  EXPECT_EQ(child.wait().status, 0);
}

TEST(ChatOneShot, WorksInTheDirectoryThatIsNamed) {
  EXPECT_THAT(chat({"--cd", "/usr", "run pwd"}, "n\n").errors, HasSubstr(" | pwd\n▌       in | /usr\n"));
}

TEST(ChatOneShot, PrintsEachEventAsALineOfJSON) {
  const ChatEnd end = chat({"--json", "hello"});
  EXPECT_EQ(end.status, 0);
  std::istringstream lines(end.output);
  std::vector<std::string> types;
  for (std::string line; std::getline(lines, line);) {
    const JSONValue event = JSONValue::decode(line);
    types.emplace_back(event.find("type")->stringValue().value());
  }
  ASSERT_FALSE(types.empty());
  EXPECT_EQ(types.front(), "thread.started");
  EXPECT_THAT(types, AllOf(Contains("turn.started"), Contains("item.updated"), Contains("item.completed")));
  EXPECT_EQ(types.back(), "turn.completed");
}

TEST(ChatOneShot, KeepsQuestionsOutOfTheJSON) {
  const ChatEnd end = chat({"--json", "run ls"}, "y\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.errors, HasSubstr("Allow it?"));
  EXPECT_THAT(end.output, AllOf(Not(HasSubstr("Allow it?")), HasSubstr("I ran \\\"ls\\\"")));
}

TEST(ChatOneShot, EndsWith130WhenInterrupted) {
  ChatProgram program({"--json", "slow"});
  waitUntilTalking(program);
  ::kill(program.child().processID(), SIGINT);
  const ChatEnd end = program.end();
  EXPECT_EQ(end.status, 130);
  EXPECT_THAT(end.errors, EndsWith("Interrupting; Ctrl-C again leaves at once.\nInterrupted.\n"));
}

TEST(ChatOneShot, EndsAtATerminationSignal) {
  ChatProgram program({"--json", "slow"});
  waitUntilTalking(program);
  ::kill(program.child().processID(), SIGTERM);
  EXPECT_EQ(program.end().status, 128 + SIGTERM);
}

}  // namespace
}  // namespace ormel::chat
