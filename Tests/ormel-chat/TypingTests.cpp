#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-chat/ChatProgram.h"
#include "ormel-chat/ChatTerminal.h"
#include "ormel-chat/Command.h"
#include "ormel-chat/KeyReader.h"
#include "ormel-chat/TypedLine.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Kind = Key::Kind;

/// The keys, with texts that follow each other joined.
std::vector<Key> joined(const std::vector<Key>& keys) {
  std::vector<Key> result;
  for (const Key& key : keys) {
    if (key.kind == Kind::text && !result.empty() && result.back().kind == Kind::text) {
      result.back().text += key.text;
    } else {
      result.push_back(key);
    }
  }
  return result;
}

const struct {
  const char* what;
  std::string bytes;
  std::vector<Key> keys;
} keyRows[] = {
    {"text", "ab c\t", {{Kind::text, "ab c\t"}}},
    {"characters of several bytes",
     "\xc3\xa9\xe6\xbc\xa2\xf0\x9f\x98\x80",
     {{Kind::text, "\xc3\xa9\xe6\xbc\xa2\xf0\x9f\x98\x80"}}},
    {"a line", "a\rb\n", {{Kind::text, "a"}, {Kind::enter}, {Kind::text, "b"}, {Kind::enter}}},
    {"corrections",
     "ab\x7f\b\x17\x15",
     {{Kind::text, "ab"}, {Kind::erase}, {Kind::erase}, {Kind::eraseWord}, {Kind::eraseLine}}},
    {"the end", "\x04", {{Kind::endOfInput}}},
    {"arrows and function keys", "a\x1b[A\x1bOP\x1b[15~\x1b[1;5Cb", {{Kind::text, "ab"}}},
    {"the escape key",
     "a\x1b"
     "b",
     {{Kind::text, "ab"}}},
    {"control characters without a meaning",
     "a\x01\x02"
     "b",
     {{Kind::text, "ab"}}},
    {"a paste",
     "a\x1b[200~one\rtwo\r\nthree\n\x1b[201~b",
     {{Kind::text, "a"}, {Kind::paste, "one\ntwo\nthree\n"}, {Kind::text, "b"}}},
    {"an empty paste", "\x1b[200~\x1b[201~", {{Kind::paste, ""}}},
    {"keys within a paste",
     "\x1b[200~a\x04\x7f\x1b[A\x1b[200~\x1b[201\x1b[201~",
     {{Kind::paste, "a\x04\x7f\x1b[A\x1b[200~\x1b[201"}}},
    {"two pastes", "\x1b[200~a\x1b[201~\x1b[200~b\x1b[201~\r", {{Kind::paste, "a"}, {Kind::paste, "b"}, {Kind::enter}}},
};

TEST(ChatKeyReader, MakesKeysOfBytesHoweverTheyAreCut) {
  for (const auto& row : keyRows) {
    SCOPED_TRACE(row.what);
    for (std::size_t first = 0; first <= row.bytes.size(); ++first) {
      for (std::size_t second = first; second <= row.bytes.size(); ++second) {
        KeyReader reader;
        std::vector<Key> keys;
        const std::string_view bytes = row.bytes;
        for (const auto part : {bytes.substr(0, first), bytes.substr(first, second - first), bytes.substr(second)}) {
          for (Key& key : reader.read(part)) keys.push_back(std::move(key));
        }
        ASSERT_EQ(joined(keys), joined(row.keys)) << first << " " << second;
        ASSERT_FALSE(reader.isInPaste());
      }
    }
  }
}

TEST(ChatKeyReader, GivesNoPartOfACharacter) {
  KeyReader reader;
  EXPECT_THAT(reader.read("\xe6\xbc"), IsEmpty());
  EXPECT_THAT(reader.read("\xa2"), ElementsAre(Key{Kind::text, "\xe6\xbc\xa2"}));
}

TEST(ChatKeyReader, TellsThatAPasteIsNotComplete) {
  KeyReader reader;
  EXPECT_THAT(reader.read("\x1b[200~half"), IsEmpty());
  EXPECT_TRUE(reader.isInPaste());
}

TEST(ChatTypedLine, IsCorrected) {
  TypedLine line;
  line.apply({Kind::text, "one two \xe6\xbc\xa2"});
  line.apply({Kind::text, "e\xcc\x81"});
  EXPECT_EQ(line.shown(),
            "one two \xe6\xbc\xa2"
            "e\xcc\x81");
  line.apply({Kind::erase});
  EXPECT_EQ(line.text(), "one two \xe6\xbc\xa2");
  EXPECT_EQ(columnsOfShown(line.shown()), 10);
  line.apply({Kind::eraseWord});
  EXPECT_EQ(line.text(), "one two ");
  line.apply({Kind::eraseWord});
  EXPECT_EQ(line.text(), "one ");
  line.apply({Kind::eraseLine});
  EXPECT_TRUE(line.isEmpty());
  line.apply({Kind::erase});
  line.apply({Kind::eraseWord});
  EXPECT_TRUE(line.isEmpty());
}

TEST(ChatTypedLine, HoldsWhatWasPastedAsOnePiece) {
  TypedLine line;
  line.apply({Kind::text, "see: "});
  line.apply({Kind::paste, "one\ntwo\n"});
  EXPECT_EQ(line.text(), "see: one\ntwo\n");
  EXPECT_EQ(line.shown(), "see: [pasted: 8 bytes, 2 lines]");
  line.apply({Kind::erase});
  EXPECT_EQ(line.text(), "see: ");
  line.apply({Kind::paste, "short"});
  EXPECT_EQ(line.shown(), "see: short");
  line.putInFront("before");
  EXPECT_EQ(line.text(), "before see: short");
}

TEST(ChatTypedLine, ShowsNothingThatTheTerminalWouldObey) {
  TypedLine line;
  line.apply({Kind::paste, "a\x1b[2J\tb"});
  EXPECT_EQ(line.shown(), "a<U+001B>[2J<U+0009>b");
  EXPECT_EQ(line.text(), "a\x1b[2J\tb");
}

TEST(ChatCommand, MayHaveSeveralLines) {
  EXPECT_EQ(readCommand("/review\nall of it").kind, Command::Kind::review);
  EXPECT_EQ(readCommand("/review\nall of it").text, "all of it");
  EXPECT_EQ(readCommand("one\ntwo").text, "one\ntwo");
}

constexpr const char* handshake = R"(
    always answer initialize with {}
    always ignore initialized
    client asks thread/start
    server answers {"thread": {"id": "t1"}}
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
)";

/// The texts of the client's requests of that method.
std::vector<std::string> textsSent(const testing::SimulatorScenario& scenario, std::string_view method) {
  std::vector<std::string> texts;
  for (const std::string& line : scenario.receivedLines()) {
    const JSONValue request = JSONValue::decode(line);
    const JSONValue* name = request.find("method");
    if (!name || *name != JSONValue(method)) continue;
    const JSONValue& input = *request.find("params")->find("input");
    texts.emplace_back(input.arrayValue()->begin()->find("text")->stringValue().value());
  }
  return texts;
}

TEST(ChatTyping, MakesOneMessageOfAMegabyteThatIsPasted) {
  const testing::SimulatorScenario scenario(std::string(handshake) + R"(
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  std::string text;
  for (int number = 0; text.size() < 1'048'500; ++number) {
    text += "line " + std::to_string(number) + ": caf\xc3\xa9 \xe6\xbc\xa2 ' \"\n";
  }
  text += "the end";
  const ChatTerminal terminal(chatCommand("", "TERM=screen-256color " + following(scenario)));
  terminal.paste(text);
  ASSERT_TRUE(terminal.shows("> [pasted: " + std::to_string(text.size()) + " bytes, ")) << terminal.text();
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("tokens"));
  const auto sent = textsSent(scenario, "turn/start");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_TRUE(sent[0] == text) << sent[0].size();
}

TEST(ChatTyping, TakesALineOfAnyLength) {
  const testing::SimulatorScenario scenario(std::string(handshake) + R"(
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  const ChatTerminal terminal(chatCommand("", "TERM=screen-256color " + following(scenario)));
  const std::string text = std::string(9'000, 'x') + "y";
  terminal.type(text);
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("tokens"));
  EXPECT_THAT(textsSent(scenario, "turn/start"), ElementsAre(text));
}

TEST(ChatTyping, AddsToTheTurnWhatIsPastedWhileItRuns) {
  const testing::SimulatorScenario scenario(std::string(handshake) + R"(
    server notifies item/started {"threadId": "t1", "turnId": "u1",
      "item": {"type": "agentMessage", "id": "m1", "text": "At work."}}
    client asks turn/steer
    server answers {"turnId": "u1"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  const ChatTerminal terminal(chatCommand("", "TERM=screen-256color " + following(scenario)));
  terminal.type("go");
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("At work."));
  terminal.paste("one\ntwo\n\nthree");
  ASSERT_TRUE(terminal.shows("[pasted: 14 bytes, 4 lines]"));
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("tokens"));
  EXPECT_THAT(textsSent(scenario, "turn/steer"), ElementsAre("one\ntwo\n\nthree"));
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

TEST(ChatTyping, GivesBackWhatDidNotReachTheTurn) {
  const testing::SimulatorScenario scenario(std::string(handshake) + R"(
    server notifies item/started {"threadId": "t1", "turnId": "u1",
      "item": {"type": "agentMessage", "id": "m1", "text": "At work."}}
    client asks turn/steer
    server answers with error {"code": -32600, "message": "too late"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
    client asks thread/resume
    server answers {"thread": {"id": "t1"}}
    client asks turn/start {"input": [{"type": "text", "text": "faster, please"}]}
    server answers {"turn": {"id": "u2"}}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u2", "status": "completed"}}
  )");
  const ChatTerminal terminal(chatCommand("", "TERM=screen-256color " + following(scenario)));
  terminal.type("go");
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("At work."));
  terminal.type("faster, please");
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("Enter makes it the next prompt.\n\n\xe2\x96\x8c > faster, please")) << terminal.text();
  terminal.press("Enter");
  EXPECT_TRUE(testing::eventually([&] { return textsSent(scenario, "turn/start").size() == 2; })) << terminal.text();
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

TEST(ChatTyping, IsKeptOverAQuestionThatNobodyCouldSeeMeanwhile) {
  const testing::SimulatorScenario scenario(std::string(handshake) + R"(
    server notifies item/started {"threadId": "t1", "turnId": "u1",
      "item": {"type": "agentMessage", "id": "m1", "text": "At work."}}
    wait until file "typed"
    server asks item/commandExecution/requestApproval {
      "threadId": "t1", "turnId": "u1", "itemId": "i1", "command": "ls"
    } as question
    client answers question exactly {"decision": "decline"}
    client asks turn/steer {"threadId": "t1", "input": [{"type": "text", "text": "y"}]}
    server answers {"turnId": "u1"}
    server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
  )");
  const ChatTerminal terminal(chatCommand("", "TERM=screen-256color " + following(scenario)));
  terminal.type("go");
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("At work."));
  terminal.type("y");
  ASSERT_TRUE(terminal.shows("> y"));
  scenario.createFile("typed");
  ASSERT_TRUE(terminal.shows("Allow it? y/n/always [n]"));
  terminal.press("Enter");
  ASSERT_TRUE(testing::eventually([&] { return scenario.methodsReceived().back() == "reply"; }));
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("tokens")) << terminal.text();
  EXPECT_THAT(scenario.failures(), IsEmpty());
}

TEST(ChatTyping, IsNotTornByOutput) {
  const ChatTerminal terminal;
  terminal.type("slow");
  terminal.press("Enter");
  ASSERT_TRUE(terminal.shows("thought 3"));
  terminal.type("please go ");
  ASSERT_TRUE(terminal.shows("> please go"));
  terminal.type("on");
  ASSERT_TRUE(terminal.shows("> please go on"));
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("(You add: \"please go on\". I do so.)")) << terminal.text();
}

TEST(ChatTyping, IsCorrectedOnTheScreen) {
  const ChatTerminal terminal;
  terminal.type("hallo");
  for (int count = 0; count < 4; ++count) terminal.press("BSpace");
  terminal.type("ello");
  ASSERT_TRUE(terminal.shows("> hello"));
  terminal.press("C-u");
  terminal.type("who?");
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("You ask: \"who?\"")) << terminal.text();
  EXPECT_THAT(terminal.text(), AllOf(HasSubstr("> who?"), Not(HasSubstr("hello"))));
}

TEST(ChatTyping, IsClearedByCtrlC) {
  const ChatTerminal terminal;
  terminal.type("never mind");
  ASSERT_TRUE(terminal.shows("> never mind"));
  terminal.press("C-c");
  ASSERT_TRUE(terminal.shows("> never mind^C\n\n\xe2\x96\x8c >"));
  terminal.type("hello");
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("You said: \"hello\""));
  EXPECT_THAT(terminal.text(), Not(HasSubstr("Ctrl-C again leaves.")));
}

TEST(ChatTyping, LeavesTheTerminalAsItWas) {
  const TmuxTerminal terminal("before=$(stty -g); " + chatCommand("hello") +
                              "; [ \"$before\" = \"$(stty -g)\" ] && echo same settings");
  EXPECT_TRUE(terminal.shows("same settings")) << terminal.text();
}

TEST(ChatTyping, WorksByLinesOnATerminalThatKnowsNoKeys) {
  const ChatTerminal terminal(chatCommand("", "TERM=dumb"));
  terminal.type("hello");
  terminal.press("Enter");
  EXPECT_TRUE(terminal.shows("You said: \"hello\"")) << terminal.text();
}

}  // namespace
}  // namespace ormel::chat
