#include "OrmelSDK/AppServerRun/Parsing/TurnNotificationParsing.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace ormel;

std::optional<Usage> usage(std::string_view text) {
  const JSONValue params = JSONValue::decode(text);
  return detail::parseUsageFromTokenUsage(*params.objectValue());
}

std::string compactionID(std::string_view text) {
  const JSONValue params = JSONValue::decode(text);
  return detail::contextCompactionItem(*params.objectValue()).id;
}

std::vector<ThreadItem> completedItems(std::string_view text) {
  const JSONValue turn = JSONValue::decode(text);
  return detail::completedTurnItems(*turn.objectValue(), "t", {"h", "t"});
}

using Items = std::vector<ThreadItem>;

TEST(UsageOfATurn, IsReadFromTheLastCounts) {
  EXPECT_EQ(usage(R"({"tokenUsage":{"last":{"totalTokens":1,"inputTokens":2,"cachedInputTokens":3,"outputTokens":4},
      "modelContextWindow":5}})"),
            (Usage{1, 2, 3, 4, 5}));
  EXPECT_EQ(usage(R"({"tokenUsage":{"last":{"inputTokens":2,"cachedInputTokens":3,"outputTokens":4,
      "modelContextWindow":5}}})"),
            (Usage{{}, 2, 3, 4, {}}));
}

TEST(UsageOfATurn, IsAbsentWithoutItsCounts) {
  for (const char* text : {"{}", R"({"tokenUsage":1})", R"({"tokenUsage":{}})", R"({"tokenUsage":{"last":[]}})",
                           R"({"tokenUsage":{"last":{"cachedInputTokens":3,"outputTokens":4}}})",
                           R"({"tokenUsage":{"last":{"inputTokens":2,"outputTokens":4}}})",
                           R"({"tokenUsage":{"last":{"inputTokens":2,"cachedInputTokens":3}}})",
                           R"({"tokenUsage":{"last":{"inputTokens":2.5,"cachedInputTokens":3,"outputTokens":4}}})"}) {
    EXPECT_EQ(usage(text), std::nullopt) << text;
  }
}

TEST(ContextCompactionOfANotification, IsFoundInItsPartsOrItself) {
  EXPECT_EQ(compactionID(R"({"id":"p","item":{"id":"i"},"compaction":{"id":"c"},"context":{"id":"x"}})"), "i");
  EXPECT_EQ(compactionID(R"({"id":"p","item":1,"compaction":{"id":"c"},"context":{"id":"x"}})"), "c");
  EXPECT_EQ(compactionID(R"({"id":"p","context":{"id":"x"}})"), "x");
  EXPECT_EQ(compactionID(R"({"id":"p","context":"x"})"), "p");
}

TEST(ContextCompactionOfANotification, TakesANewIDWhenItHasNone) {
  const std::string prefix = "context-compaction-notification-";
  const std::string one = compactionID(R"({"id":"p","item":{}})");
  EXPECT_EQ(one.substr(0, prefix.size()), prefix);
  EXPECT_EQ(one.size(), prefix.size() + 36);
  EXPECT_NE(one, compactionID(R"({"id":7})"));
}

TEST(CompletedTurnItems, AreCompactionsSleepsAndThePlan) {
  EXPECT_EQ(completedItems(R"({"items":[{"type":"agentMessage","id":"a"},{"type":"sleep","id":"s","durationMs":1},
      {"type":"context_compaction"},{"type":"todoList","id":"l"},{"type":"sleep"},5,{"type":1}],
      "plan":[{"step":"x","status":"completed"}]})"),
            (Items{SleepItem{"s", 1}, ContextCompactionItem{"context-compaction-t"},
                   TodoListItem{"turn-plan:t", {{"x", true}}}}));
}

TEST(CompletedTurnItems, ComeOnceInTheirFirstPlaceWithTheirLastValue) {
  EXPECT_EQ(completedItems(R"({"items":[{"type":"sleep","id":"s","durationMs":1},{"type":"sleep","id":"u"},
      {"type":"sleep","id":"s","durationMs":2},{"type":"contextCompaction","id":"u"}]})"),
            (Items{SleepItem{"s", 2}, ContextCompactionItem{"u"}}));
}

TEST(CompletedTurnItems, HaveNoPlanWithoutEntries) {
  EXPECT_EQ(completedItems(R"({"items":{},"plan":[]})"), Items());
  EXPECT_EQ(completedItems(R"({"plan":"x"})"), Items());
  EXPECT_EQ(completedItems("{}"), Items());
  EXPECT_EQ(completedItems(R"({"plan":[{"step":" "}]})"), (Items{TodoListItem{"turn-plan:t", {}}}));
}

}  // namespace
