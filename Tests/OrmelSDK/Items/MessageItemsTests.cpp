#include "OrmelSDK/Items/MessageItems.h"

#include <gtest/gtest.h>

#include <vector>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::checkRecord;
using tests::decoded;
using tests::expectWritten;
using tests::failureOf;

TEST(MessageItems, FollowTheirTables) {
  checkRecord<UserMessageItem>(R"({"id":"i","clientId":"c","content":[{"type":"text","text":"t"}]})");
  checkRecord<HookPromptFragment>(R"({"text":"t","hookRunId":"h"})");
  checkRecord<HookPromptItem>(R"({"id":"i","fragments":[{"text":"t","hookRunId":"h"}]})");
  checkRecord<AgentMessageQuestion>(R"({"title":"t","options":["a","b"]})");
  checkRecord<MemoryCitationEntry>(R"({"path":"p","lineStart":1,"lineEnd":2,"note":"n"})");
  checkRecord<MemoryCitation>(R"({"entries":[{"path":"p","lineStart":1,"lineEnd":2,"note":"n"}],"rolloutIds":["r"]})");
  checkRecord<AgentMessageItem>(
      R"({"id":"i","text":"t","phase":"commentary","memoryCitation":{"entries":[],"rolloutIds":["r"]},"delivery":"d",
          "questions":[{"title":"q"}]})");
}

TEST(MessageItems, SayTheirTypesInMixedSpellings) {
  expectWritten(UserMessageItem{"i", std::nullopt, {}}, R"({"type":"userMessage","id":"i","content":[]})");
  expectWritten(UserMessageItem{"i", "c", {UserInput::text("t")}},
                R"({"type":"userMessage","id":"i","clientId":"c","content":[{"type":"text","text":"t"}]})");
  expectWritten(HookPromptItem{"i", {{"t", "h"}}},
                R"({"type":"hook_prompt","id":"i","fragments":[{"text":"t","hookRunId":"h"}]})");
  expectWritten(AgentMessageItem{"i", "t", std::nullopt, std::nullopt, std::nullopt, std::nullopt},
                R"({"type":"agent_message","id":"i","text":"t"})");
  expectWritten(
      AgentMessageItem{"i", "", AgentMessagePhase::finalAnswer, MemoryCitation{{{"p", 1, 2, "n"}}, {"r"}}, "d",
                       std::vector<AgentMessageQuestion>{{"q", {}}, {"r", std::vector<std::string>{"o"}}}},
      R"({"type":"agent_message","id":"i","text":"","phase":"final_answer",
                    "memoryCitation":{"entries":[{"path":"p","lineStart":1,"lineEnd":2,"note":"n"}],
                    "rolloutIds":["r"]},"delivery":"d","questions":[{"title":"q"},{"title":"r","options":["o"]}]})");
}

TEST(MessageItems, AreReadWithoutRegardToAType) {
  EXPECT_EQ(decoded<AgentMessageItem>(R"({"type":"error","id":"i","text":"t"})"),
            (AgentMessageItem{"i", "t", {}, {}, {}, {}}));
}

TEST(UserMessageItem, KeepsThePartsThatItCanRead) {
  const auto item = decoded<UserMessageItem>(
      R"({"id":"i","content":[{"type":"text","text":"a"},{"type":"audio"},3,null,{"type":"text","text":"b"}]})");
  EXPECT_EQ(item.content, (std::vector{UserInput::text("a"), UserInput::text("b")}));
}

TEST(UserMessageItem, RefusesContentThatIsNoList) {
  EXPECT_EQ(failureOf<UserMessageItem>(R"({"id":"i","content":"text"})"), "Expected Array but found a string.");
}

TEST(HookPromptItem, FailsForOneFragmentThatItCannotRead) {
  EXPECT_EQ(failureOf<HookPromptItem>(R"({"id":"i","fragments":[{"text":"t"}]})"),
            "No value is associated with the key 'hook_run_id'.");
}

TEST(AgentMessageItem, HasAnEmptyTextWhenNoneIsGiven) {
  EXPECT_EQ(decoded<AgentMessageItem>(R"({"id":"a"})").text, "");
  EXPECT_EQ(decoded<AgentMessageItem>(R"({"id":"a","text":null})").text, "");
}

TEST(AgentMessageItem, TellsAnEmptyListOfQuestionsFromNone) {
  EXPECT_EQ(decoded<AgentMessageItem>(R"({"id":"a","questions":[]})").questions, std::vector<AgentMessageQuestion>{});
  EXPECT_EQ(decoded<AgentMessageItem>(R"({"id":"a","questions":null})").questions, std::nullopt);
  EXPECT_EQ(encode(decoded<AgentMessageItem>(R"({"id":"a","questions":[]})")),
            JSONValue::decode(R"({"type":"agent_message","id":"a","text":"","questions":[]})"));
}

TEST(AgentMessageItem, PrefersTheCamelCaseCitation) {
  const auto item = decoded<AgentMessageItem>(
      R"({"id":"a","memoryCitation":{"entries":[],"rolloutIds":["camel"]},
          "memory_citation":{"entries":[],"rolloutIds":["snake"]}})");
  EXPECT_EQ(item.memoryCitation, (MemoryCitation{{}, {"camel"}}));
}

TEST(AgentMessagePhase, HasExactWords) {
  tests::checkWords<AgentMessagePhase>(
      {{AgentMessagePhase::commentary, "commentary"}, {AgentMessagePhase::finalAnswer, "final_answer"}});
  tests::checkStrictness<AgentMessagePhase>("AgentMessagePhase", {"finalAnswer", "Commentary", "", "later"});
}

TEST(MemoryCitationEntry, CountsLinesInWholeNumbers) {
  EXPECT_EQ(failureOf<MemoryCitationEntry>(R"({"path":"p","lineStart":1.5,"lineEnd":2,"note":"n"})"),
            "The number 1.5 does not fit in Int.");
}

}  // namespace
