#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "examples/ExampleOutput.h"

namespace ormel {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using testing::outputOf;

TEST(NumberedExamples, TakeAFirstTurnAndRememberIt) {
  EXPECT_THAT(outputOf("01-first-turn"),
              MatchesRegex("You said: \"Hello, agent\".*You asked before: \"Hello, agent\".*\n\\([0-9]+ tokens\\)\n"));
}

TEST(NumberedExamples, StreamAnAnswerWithEachPieceOnce) {
  EXPECT_THAT(outputOf("02-streaming"), MatchesRegex("You said: \"Tell me something\"[^\n]*\n"));
}

TEST(NumberedExamples, ApproveAHarmlessCommandOnly) {
  const std::string output = outputOf("03-approvals");
  EXPECT_THAT(output, HasSubstr("asked for: ls\nI ran \"ls\"; its exit code was 0."));
  EXPECT_THAT(output, HasSubstr("You declined \"rm -rf everything\", so I did not run it.\n"));
  EXPECT_THAT(output, EndsWith("would change: notes.txt\nYou declined, so I have not edited notes.txt.\n"));
}

TEST(NumberedExamples, LendATool) {
  EXPECT_THAT(outputOf("04-dynamic-tools"), MatchesRegex("The tool add says: The sum is [0-9.]+\n"));
}

TEST(NumberedExamples, AbortATurn) { EXPECT_EQ(outputOf("05-abort"), "Operation aborted\n"); }

TEST(NumberedExamples, ReadStructuredOutput) {
  EXPECT_THAT(outputOf("06-structured-output"), MatchesRegex("city: [^\n]+\ninhabitants: [0-9]+\n"));
}

TEST(NumberedExamples, ReviewChanges) {
  EXPECT_THAT(outputOf("07-review"), EndsWith("\nReviewed the uncommitted changes: one remark. The names could be "
                                              "shorter.\n"));
}

TEST(NumberedExamples, AnswerQuestions) {
  EXPECT_EQ(outputOf("08-user-input"),
            "Which language shall it be?\nHow large shall it be?\nYou chose: language C++, size Small.\n");
}

TEST(NumberedExamples, LimitATurnAndTryAgain) {
  EXPECT_THAT(outputOf("09-timeout-and-retry"),
              MatchesRegex("attempt 1: Timed out after 0[.]5 seconds\nattempt 2: Timed out after 0[.]5 seconds\n"
                           "No answer\nYou said: \"Hello, agent\".*\n"));
}

TEST(NumberedExamples, HoldManyConversationsAtOnce) {
  EXPECT_THAT(outputOf("10-many-conversations"),
              MatchesRegex(".*the wren[^\n]*\n.*the owl[^\n]*\n.*the heron[^\n]*\n.*the swift[^\n]*\n"));
}

}  // namespace
}  // namespace ormel
