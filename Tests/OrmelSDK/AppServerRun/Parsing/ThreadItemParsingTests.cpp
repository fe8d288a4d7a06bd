#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "Support/ParsedItems.h"

namespace {

using namespace ormel;
using tests::parsed;
using tests::parsedAs;

const std::vector<std::string> typesWithAnID{"hookPrompt",
                                             "agentMessage",
                                             "plan",
                                             "reasoning",
                                             "commandExecution",
                                             "fileChange",
                                             "mcpToolCall",
                                             "dynamicToolCall",
                                             "collabAgentToolCall",
                                             "webSearch",
                                             "imageView",
                                             "imageGeneration",
                                             "todoList",
                                             "sleep",
                                             "subAgentActivity",
                                             "enteredReviewMode",
                                             "exitedReviewMode"};

TEST(ParseThreadItem, GivesNothingForWhatIsNoObjectWithATextType) {
  for (const char* text : {"null", "1", "\"agentMessage\"", "[]", "{}", R"({"id":"a"})", R"({"type":1,"id":"a"})",
                           R"({"type":null,"id":"a"})"}) {
    EXPECT_EQ(parsed(text), std::nullopt) << text;
  }
}

TEST(ParseThreadItem, GivesNothingForAKnownTypeWithoutATextID) {
  for (const auto& type : typesWithAnID) {
    EXPECT_EQ(parsed(R"({"type":")" + type + R"("})"), std::nullopt) << type;
    EXPECT_EQ(parsed(R"({"type":")" + type + R"(","id":1})"), std::nullopt) << type;
  }
  EXPECT_EQ(parsed(R"({"type":"agentMessage"})"), std::nullopt);
}

TEST(ParseThreadItem, ReadsEveryKnownTypeThatHasAnIDAndNothingElse) {
  for (const auto& type : typesWithAnID) {
    const auto item = parsed(R"({"type":")" + type + R"(","id":"i"})");
    ASSERT_TRUE(item) << type;
    EXPECT_EQ(item->id(), "i") << type;
    EXPECT_FALSE(std::holds_alternative<UnknownThreadItem>(item->value)) << type;
  }
}

TEST(ParseThreadItem, KnowsNoOtherSpellingOfATypeAndNoErrorItem) {
  for (const char* type : {"agent_message", "AgentMessage", " agentMessage", "user_message", "error", "futureThing"}) {
    const std::string text = R"({"type":")" + std::string(type) + R"(","id":"a","message":"m"})";
    EXPECT_EQ(parsedAs<UnknownThreadItem>(text), (UnknownThreadItem{"a", type, JSONValue::decode(text)}));
  }
}

TEST(ParseThreadItem, GivesNothingForAnUnknownTypeWithoutATextID) {
  EXPECT_EQ(parsed(R"({"type":"futureThing"})"), std::nullopt);
  EXPECT_EQ(parsed(R"({"type":"futureThing","id":7})"), std::nullopt);
  EXPECT_EQ(parsed(R"({"type":"error"})"), std::nullopt);
}

TEST(ParseThreadItem, NamesACompactionWithoutAnIDAfterTheTurnThenTheThread) {
  const detail::ActiveScope both{"h1", "t1"};
  const detail::ActiveScope thread{"h1", std::nullopt};
  EXPECT_EQ(parsed(R"({"type":"context_compaction"})", both), ContextCompactionItem{"context-compaction-t1"});
  EXPECT_EQ(parsed(R"({"type":"contextCompaction","id":3})", both), ContextCompactionItem{"context-compaction-t1"});
  EXPECT_EQ(parsed(R"({"type":"context_compaction"})", thread), ContextCompactionItem{"context-compaction-h1"});
  EXPECT_EQ(parsed(R"({"type":"context_compaction","id":"c"})", both), ContextCompactionItem{"c"});
}

TEST(ParseThreadItem, MakesAnIDForACompactionOutsideOfAnyThread) {
  const auto one = parsedAs<ContextCompactionItem>(R"({"type":"contextCompaction"})");
  const auto other = parsedAs<ContextCompactionItem>(R"({"type":"contextCompaction"})");
  const std::string prefix = "context-compaction-";
  EXPECT_EQ(one.id.substr(0, prefix.size()), prefix);
  EXPECT_EQ(one.id.size(), prefix.size() + 36);
  EXPECT_NE(one.id, other.id);
}

TEST(ParseThreadItem, KnowsACompactionByItsWords) {
  for (const char* type : {"contextCompaction", "context_compaction", "context-window-compacted", "compactContext",
                           "CONTEXT_COMPACTED", "contextwindowcompaction", " myCompactedContexts\n"}) {
    const std::string text = JSONValue::object({{"type", type}, {"id", "c"}}).encode();
    EXPECT_EQ(parsedAs<ContextCompactionItem>(text), ContextCompactionItem{"c"});
  }
  for (const char* type : {"context", "compaction", "contextual comp", ""}) {
    const std::string text = JSONValue::object({{"type", type}, {"id", "c"}}).encode();
    EXPECT_EQ(parsedAs<UnknownThreadItem>(text).itemType, type);
  }
}

TEST(ParseThreadItem, ReadsAUserMessageInItsJSONForm) {
  const auto item = parsedAs<UserMessageItem>(R"({"type":"userMessage","id":"u","client_id":"c","content":[
      {"type":"text","text":"a"},{"type":"hologram"},7,{"type":"skill","name":"n","path":"p"}]})");
  EXPECT_EQ(item, (UserMessageItem{"u", "c", {UserInput::text("a"), UserInput::skill("n", "p")}}));
  EXPECT_EQ(parsedAs<UserMessageItem>(R"({"type":"userMessage","id":"u"})"), (UserMessageItem{"u", {}, {}}));
}

TEST(ParseThreadItem, GivesNothingForAUserMessageThatDoesNotDecode) {
  for (const char* text :
       {R"({"type":"userMessage"})", R"({"type":"userMessage","id":1})",
        R"({"type":"userMessage","id":"u","content":"text"})", R"({"type":"userMessage","id":"u","clientId":5})"}) {
    EXPECT_EQ(parsed(text), std::nullopt) << text;
  }
}

TEST(ParseThreadItem, ReadsAWebSearch) {
  EXPECT_EQ(parsedAs<WebSearchItem>(R"({"type":"webSearch","id":"w","query":"q","action":{"a":[1]}})"),
            (WebSearchItem{"w", "q", JSONValue::decode(R"({"a":[1]})")}));
  EXPECT_EQ(parsedAs<WebSearchItem>(R"({"type":"webSearch","id":"w","action":null})"),
            (WebSearchItem{"w", "", JSONValue()}));
  EXPECT_EQ(parsedAs<WebSearchItem>(R"({"type":"webSearch","id":"w","query":5})"), (WebSearchItem{"w", "", {}}));
}

TEST(ParseThreadItem, ReadsImages) {
  EXPECT_EQ(parsedAs<ImageViewItem>(R"({"type":"imageView","id":"i","path":"/p"})"), (ImageViewItem{"i", "/p"}));
  EXPECT_EQ(parsedAs<ImageViewItem>(R"({"type":"imageView","id":"i","path":null})"), (ImageViewItem{"i", ""}));
  EXPECT_EQ(
      parsedAs<ImageGenerationItem>(R"({"type":"imageGeneration","id":"i","status":" Odd_Word","revisedPrompt":"r",
              "revised_prompt":"x","result":"b","savedPath":"s","saved_path":"x"})"),
      (ImageGenerationItem{"i", " Odd_Word", "r", "b", "s"}));
  EXPECT_EQ(parsedAs<ImageGenerationItem>(R"({"type":"imageGeneration","id":"i","revisedPrompt":1,"revised_prompt":"r",
              "saved_path":"s"})"),
            (ImageGenerationItem{"i", "", "r", "", "s"}));
  EXPECT_EQ(parsedAs<ImageGenerationItem>(R"({"type":"imageGeneration","id":"i","status":2,"result":[]})"),
            (ImageGenerationItem{"i", "", {}, "", {}}));
}

TEST(ParseThreadItem, ReadsASleepWhoseDurationIsWhole) {
  EXPECT_EQ(parsedAs<SleepItem>(R"({"type":"sleep","id":"s","durationMs":2.0})"), (SleepItem{"s", 2}));
  EXPECT_EQ(parsedAs<SleepItem>(R"({"type":"sleep","id":"s","durationMs":1.5})"), (SleepItem{"s", {}}));
  EXPECT_EQ(parsedAs<SleepItem>(R"({"type":"sleep","id":"s","durationMs":null,"duration_ms":3})"), (SleepItem{"s", 3}));
  EXPECT_EQ(parsedAs<SleepItem>(R"({"type":"sleep","id":"s","durationMs":4,"duration_ms":3})"), (SleepItem{"s", 4}));
  EXPECT_EQ(parsedAs<SleepItem>(R"({"type":"sleep","id":"s","durationMs":"4"})"), (SleepItem{"s", {}}));
}

TEST(ParseThreadItem, ReadsTheTwoReviewModesApart) {
  const auto entered = parsedAs<EnteredReviewModeItem>(R"({"type":"enteredReviewMode","id":"r","review":"x"})");
  EXPECT_EQ(entered, (EnteredReviewModeItem{{"r", "x"}}));
  const auto exited = parsedAs<ExitedReviewModeItem>(R"({"type":"exitedReviewMode","id":"r","review":7})");
  EXPECT_EQ(exited, (ExitedReviewModeItem{{"r", ""}}));
}

TEST(ParseThreadItem, ReadsItemsOfAnyDepthAndSize) {
  const std::string deep = std::string(500, '[') + std::string(500, ']');
  const auto call = parsedAs<McpToolCallItem>(R"({"type":"mcpToolCall","id":"m","arguments":)" + deep + "}");
  EXPECT_EQ(call.arguments, JSONValue::decode(deep));
  const std::string huge(5'000'000, 'x');
  const auto message = parsedAs<AgentMessageItem>(R"({"type":"agentMessage","id":"m","text":")" + huge + "\"}");
  EXPECT_EQ(message.text, huge);
}

}  // namespace
