#include "OrmelSDK/Coding/Enumeration.h"

#include <gtest/gtest.h>

namespace {

using ormel::coding::canonicalWord;
using ormel::coding::isPlainSpelling;

TEST(CanonicalWord, IsTrimmedWithoutJoinersAndInLowerCase) {
  EXPECT_EQ(canonicalWord(" \t\r\nUsage_Limited-\n"), "usagelimited");
  EXPECT_EQ(canonicalWord("in-PROGRESS"), "inprogress");
  EXPECT_EQ(canonicalWord("_-_"), "");
  EXPECT_EQ(canonicalWord(" \n "), "");
  EXPECT_EQ(canonicalWord(""), "");
}

TEST(CanonicalWord, TrimsAtTheEndsOnlyAndBeforeItTakesJoinersAway) {
  EXPECT_EQ(canonicalWord("timed out"), "timed out");
  EXPECT_EQ(canonicalWord("- done"), " done");
}

TEST(CanonicalWord, KnowsWhiteSpaceAndLettersBeyondASCII) {
  EXPECT_EQ(canonicalWord("\u00A0\u2003Bloc\u212Aed\u3000\u2028"), "blocked");
  EXPECT_EQ(canonicalWord("\u00C9TAT"), "\u00E9tat");
}

TEST(PlainSpelling, IsAWordButForCaseAndJoiners) {
  for (const char* text : {"inProgress", "in_progress", "IN-PROGRESS", "_inprogress-"}) {
    EXPECT_TRUE(isPlainSpelling(text, "in_progress")) << text;
    EXPECT_TRUE(isPlainSpelling(text, "inProgress")) << text;
    EXPECT_EQ(canonicalWord(text), canonicalWord("in_progress"));
  }
  for (const char* text : {"", "_", "inprogres", "inprogresss", "in progress", " inprogress", "inpr\u00F6gress"}) {
    EXPECT_FALSE(isPlainSpelling(text, "in_progress")) << text;
  }
}

}  // namespace
