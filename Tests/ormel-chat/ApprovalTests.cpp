#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ormel-chat/ChatProgram.h"

namespace ormel::chat {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* ran = "I ran \"ls\"; its exit code was 0.";
constexpr const char* declined = "You declined \"ls\", so I did not run it.\n";

TEST(ChatApproval, ShowsWhatIsAskedFor) {
  EXPECT_THAT(chat({"--cd", "/usr", "run ls -l"}, "n\n").errors, HasSubstr("▌ The agent wants to run:\n"
                                                                           "▌          | ls -l\n"
                                                                           "▌       in | /usr\n"
                                                                           "▌   reason | You asked me to run it\n"
                                                                           "▌ Allow it? y/n/always [n] n\n"));
}

TEST(ChatApproval, RunsTheCommandThatIsAllowed) {
  for (const char* yes : {"y\n", "yes\n", " Y \n", "YES\n"}) {
    const ChatEnd end = chat({"run ls"}, yes);
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.output, HasSubstr(ran)) << yes;
    EXPECT_THAT(end.output, HasSubstr("$ ls\n  README.md\n"));
  }
}

TEST(ChatApproval, DeclinesUnlessItIsSaidPlainly) {
  for (const char* no : {"n\n", "no\n", "\n", "yep\n", "please\n", ""}) {
    const ChatEnd end = chat({"run ls"}, no);
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.output, HasSubstr(declined)) << no;
    EXPECT_THAT(end.output, HasSubstr("  declined\n"));
  }
}

TEST(ChatApproval, DoesNotTakeWhatComesAfterAnUnfinishedYes) {
  EXPECT_THAT(chat({"run ls"}, "y").output, HasSubstr(ran));
  EXPECT_THAT(chat({"run ls"}, "ye").output, HasSubstr(declined));
}

TEST(ChatApproval, TellsTheServerThatItIsForAlways) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server asks item/commandExecution/requestApproval {
      "threadId": "t1", "turnId": "u1", "itemId": "i1", "command": "ls"
    } expecting {"decision": "acceptForSession"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  for (const char* always : {"always\n", "a\n"}) {
    ChatProgram program({"anything"}, scenario.environment());
    EXPECT_EQ(program.finish(always).status, 0);
  }
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

TEST(ChatApproval, TakesAlwaysAsYesWhereTheServerKnowsNoAlways) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server asks item/commandExecution/requestApproval {"threadId": "t1", "turnId": "u1", "itemId": "i1", "command": "ls",
      "availableDecisions": ["accept", "decline"]} expecting {"decision": "accept"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  ChatProgram program({"anything"}, scenario.environment());
  const ChatEnd end = program.finish("always\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.errors, HasSubstr("Allow it? y/n [n] "));
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

TEST(ChatApproval, ApprovesEverythingForAScriptThatSaysSo) {
  const ChatEnd end = chat({"--yes", "run ls"});
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, HasSubstr(ran));
  EXPECT_THAT(end.errors, HasSubstr("Approved: The agent wants to run: ls\n"));
}

TEST(ChatApproval, AsksBeforeFilesChange) {
  const ChatEnd yes = chat({"edit a.txt"}, "y\n");
  EXPECT_THAT(yes.errors, HasSubstr("▌ The agent wants to change a file:\n▌   update | a.txt\n"));
  EXPECT_THAT(yes.output, HasSubstr("files\n  ~ a.txt\n"));
  EXPECT_THAT(yes.output, HasSubstr("I have edited a.txt"));
  EXPECT_THAT(chat({"edit a.txt"}).output, HasSubstr("files\n  ~ a.txt\n  declined\n"));
}

TEST(ChatApproval, SaysWhenTheServerDoesNotTellWhatItAsksFor) {
  const std::pair<const char*, const char*> cases[] = {
      {"item/commandExecution/requestApproval", "▌ The agent wants to run something; the server does not say what.\n"},
      {"item/fileChange/requestApproval", "▌ The agent wants to change files; the server does not say which.\n"},
      {"item/permissions/requestApproval", "▌ The agent asks for permissions; the server does not say which.\n"},
  };
  for (const auto& [method, question] : cases) {
    const testing::SimulatorScenario scenario(R"(
      always answer initialize with {}
      always ignore initialized
      client asks thread/start
      server answers {"thread": {"id": "t1"}}
      client asks turn/start
      server answers {"turn": {"id": "u1"}}
      server asks )" + std::string(method) + R"( {"threadId": "t1", "turnId": "u1", "itemId": "i1"} as question
      client answers question {}
      server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
    )");
    ChatProgram program({"anything"}, scenario.environment());
    EXPECT_THAT(program.finish("n\n").errors, HasSubstr(question));
    EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
  }
}

TEST(ChatApproval, GrantsPermissionsForTheTurnOrForAlways) {
  EXPECT_THAT(chat({"permissions"}, "y\n").output, HasSubstr("You granted: network and fileSystem, for the turn."));
  EXPECT_THAT(chat({"permissions"}, "always\n").output,
              HasSubstr("You granted: network and fileSystem, for the session."));
  EXPECT_THAT(chat({"permissions"}, "n\n").output, HasSubstr("You granted nothing."));
}

TEST(ChatQuestions, AnswersByNumberByLabelOrInOwnWords) {
  EXPECT_THAT(chat({"ask"}, "2\nSmall\n").output, HasSubstr("You chose: language Python, size Small."));
  EXPECT_THAT(chat({"ask"}, "Rust\n1\n").output, HasSubstr("You chose: language Rust, size Small."));
  EXPECT_THAT(chat({"ask"}, "3\nAda\n2\n").output, HasSubstr("You chose: language Ada, size Large."));
}

TEST(ChatQuestions, LeavesOutWhatIsNotAnswered) {
  EXPECT_THAT(chat({"ask"}, "\n1\n").output, HasSubstr("You chose: language nothing, size Small."));
  EXPECT_THAT(chat({"ask"}).output, HasSubstr("You chose: language nothing, size nothing."));
}

TEST(ChatQuestions, ShowsTheChoices) {
  EXPECT_THAT(chat({"ask"}, "1\n1\n").errors, HasSubstr("▌ The agent asks:\n"
                                                        "▌          | Which language shall it be?\n"
                                                        "▌       1. | C++ - Fast\n"
                                                        "▌       2. | Python - Short\n"
                                                        "▌       3. | Other\n"
                                                        "▌ Your choice: 1\n"));
}

TEST(ChatQuestions, FillsInAFormOfAnMCPServer) {
  EXPECT_THAT(chat({"mcp"}, "Paris\n3\n").output, HasSubstr("{\"city\":\"Paris\",\"days\":3}"));
}

TEST(ChatQuestions, LeavesOutAnAnswerOfTheWrongType) {
  const std::string output = chat({"mcp"}, "Paris\n3.5\n").output;
  EXPECT_THAT(output, HasSubstr("{\"city\":\"Paris\"}"));
  EXPECT_THAT(output, Not(HasSubstr("days")));
}

TEST(ChatQuestions, DeclinesAFormThatLacksWhatIsRequired) {
  EXPECT_THAT(chat({"mcp"}, "\n3\n").output, HasSubstr("You did not fill in the form: decline."));
}

TEST(ChatQuestions, CancelsAFormAtTheEndOfTheInput) {
  EXPECT_THAT(chat({"mcp"}, "Paris\n").output, HasSubstr("You did not fill in the form: cancel."));
}

}  // namespace
}  // namespace ormel::chat
