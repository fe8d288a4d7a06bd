#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ormel-chat/ChatProgram.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(ChatConversation, GoesOnFromLineToLine) {
  const ChatEnd end = chat({}, "hello\nwhat did I say?\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.errors, "> hello\n\n> what did I say?\n");
  EXPECT_THAT(end.output, HasSubstr("You asked before: \"hello\"."));
}

TEST(ChatConversation, TakesAnswersFromTheLinesBetween) {
  const ChatEnd end = chat({}, "run ls\ny\nrun pwd\nn\nhello\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.errors, AllOf(HasSubstr(" | ls\n"), HasSubstr("Allow it? y/n/always [n] y\n"),
                                HasSubstr("Allow it? y/n/always [n] n\n")));
  EXPECT_THAT(end.output,
              AllOf(HasSubstr("I ran \"ls\""), HasSubstr("You declined \"pwd\""), HasSubstr("You said: \"hello\"")));
}

TEST(ChatConversation, QuitsWithWhatIsLeftUnread) {
  const ChatEnd end = chat({}, "hello\n/quit\nrun ls\n");
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, ::testing::Not(HasSubstr("$ ls")));
}

TEST(ChatConversation, EndsWithTheStatusOfItsLastTurn) {
  EXPECT_EQ(chat({}, "hello\nfail\n").status, 1);
  EXPECT_EQ(chat({}, "fail\nhello\n").status, 0);
  EXPECT_EQ(chat({}, "").status, 0);
}

TEST(ChatConversation, ReviewsWhatIsNotCommittedOrWhatIsSaid) {
  EXPECT_THAT(chat({}, "hello\n/review\n").output, AllOf(HasSubstr("review of uncommitted changes\n"),
                                                         HasSubstr("review\n  Reviewed the uncommitted changes")));
  EXPECT_THAT(chat({}, "hello\n/review the names only\n").output, HasSubstr("Reviewed the the names only"));
}

TEST(ChatConversation, RefusesAReviewBeforeTheFirstTurn) {
  const ChatEnd end = chat({}, "/review\n");
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.errors, "> /review\nStart the thread before requesting a review\n");
}

TEST(ChatConversation, CompactsItsHistory) {
  EXPECT_THAT(chat({}, "hello\n/compact\n").output, HasSubstr("The history was compacted.\n"));
}

TEST(ChatConversation, AsksBesideTheConversation) {
  const ChatEnd end = chat({}, "hello\n/side what?\nand now?\n");
  EXPECT_THAT(end.output, HasSubstr("You ask: \"what?\""));
  EXPECT_THAT(end.output, HasSubstr("You ask: \"and now?\". Nobody knows for sure, but I would say yes. You asked "
                                    "before: \"hello\"."));
}

TEST(ChatConversation, SteersTheTurnThatRuns) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    client asks turn/steer {"threadId": "t1", "input": [{"type": "text", "text": "the other way"}]}
    server answers {"turnId": "u1"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  ChatProgram program({}, scenario.environment());
  EXPECT_EQ(program.finish("go\n/steer the other way\n").status, 0);
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

TEST(ChatConversation, HasNothingToSteerBetweenTurns) {
  EXPECT_EQ(chat({}, "/steer left\n").errors,
            "> /steer left\nThere is nothing to steer: the agent does nothing now.\n");
}

TEST(ChatConversation, TellsItsCommands) {
  EXPECT_THAT(chat({}, "/help\n").errors, AllOf(HasSubstr("/review"), HasSubstr("/compact"), HasSubstr("/side"),
                                                HasSubstr("/steer"), HasSubstr("/quit"), HasSubstr("Ctrl-C")));
}

TEST(ChatConversation, RefusesCommandsThatItDoesNotKnow) {
  EXPECT_EQ(chat({}, "/bogus now\n").errors,
            "> /bogus now\nThere is no command /bogus; /help tells which there are.\n");
}

TEST(ChatConversation, TakesAPathForAPrompt) {
  EXPECT_THAT(chat({}, "/etc/hosts is what?\n").output, HasSubstr("You ask: \"/etc/hosts is what?\""));
}

TEST(ChatConversation, ResumesAThread) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/resume {"threadId": "old", "model": "large"}
    server answers {"thread": {"id": "old"}}
    client asks turn/start {"threadId": "old"}
    server answers {"turn": {"id": "u1"}}
    server notifies turn/completed {"threadId": "old", "turn": {"id": "u1", "status": "completed"}}
  )");
  ChatProgram program({"--resume", "old", "--model", "large", "go on"}, scenario.environment());
  EXPECT_EQ(program.finish().status, 0);
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

}  // namespace
}  // namespace ormel::chat
