#include <gtest/gtest.h>

#include "ormel-chat/Command.h"
#include "ormel-chat/ShownTexts.h"
#include "ormel-chat/Texts.h"

namespace ormel::chat {
namespace {

TEST(ChatShownTexts, GiveEachPieceOnce) {
  ShownTexts shown;
  SharedText text("one");
  EXPECT_EQ(shown.gained("a", text), "one");
  EXPECT_EQ(shown.gained("a", text), "");
  text.append(" two");
  EXPECT_EQ(shown.gained("a", text), " two");
  EXPECT_EQ(shown.gained("b", text), "one two");
  EXPECT_EQ(shown.completed("a", SharedText("one two three")), " three");
}

TEST(ChatShownTexts, GiveAFinalTextWholeThatSaysSomethingElse) {
  ShownTexts shown;
  shown.gained("a", SharedText("one"));
  const SharedText end("uno");
  EXPECT_EQ(shown.completed("a", end), "uno");
  const SharedText unseen("never streamed");
  EXPECT_EQ(shown.completed("b", unseen), "never streamed");
}

TEST(ChatTexts, AreShortenedBetweenCharacters) {
  EXPECT_EQ(shortened("short"), "short");
  const std::string umlauts = [] {
    std::string text = "x";
    for (int count = 0; count < 100; ++count) text += "\xc3\xa4";
    return text;
  }();
  const std::string cut = shortened(umlauts);
  EXPECT_EQ(cut, umlauts.substr(0, 159) + "...");
}

TEST(ChatTexts, TellDurations) {
  EXPECT_EQ(durationText(12), "12 ms");
  EXPECT_EQ(durationText(1000), "1.0 s");
  EXPECT_EQ(durationText(61'990), "61.9 s");
}

TEST(ChatTexts, AreOneWordForTheShell) {
  EXPECT_EQ(shellWord("0a-b.c"), "0a-b.c");
  EXPECT_EQ(shellWord("x; rm -rf 'a'"), R"('x; rm -rf '\''a'\''')");
  EXPECT_EQ(shellWord("--yes"), "'--yes'");
  EXPECT_EQ(shellWord(""), "''");
}

TEST(ChatCommand, IsReadWithItsText) {
  EXPECT_EQ(readCommand("  ").kind, Command::Kind::nothing);
  EXPECT_EQ(readCommand(" hello ").kind, Command::Kind::prompt);
  EXPECT_EQ(readCommand(" hello ").text, "hello");
  EXPECT_EQ(readCommand("/side  a b ").kind, Command::Kind::side);
  EXPECT_EQ(readCommand("/side  a b ").text, "a b");
  EXPECT_EQ(readCommand("/sideways").kind, Command::Kind::unknown);
  EXPECT_EQ(readCommand("/usr/bin").kind, Command::Kind::prompt);
}

}  // namespace
}  // namespace ormel::chat
