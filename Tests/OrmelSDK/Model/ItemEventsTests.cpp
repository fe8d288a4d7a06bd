#include "OrmelSDK/ItemEvents.h"

#include <gtest/gtest.h>

#include "OrmelSDK/ItemEventsTables.h"
#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

constexpr std::string_view itemText = R"({"type":"agent_message","id":"a","text":"hello"})";

ThreadItem item() { return decoded<ThreadItem>(itemText); }

std::string eventText(std::string_view before) { return std::string(before) + std::string(itemText) + "}"; }

TEST(ItemEvents, FollowTheirTables) {
  tests::checkRecord<ItemStartedEvent>(eventText(R"({"thread_id":"t","turn_id":"u","started_at_ms":5,"item":)"));
  tests::checkRecord<ItemUpdatedEvent>(eventText(R"({"item":)"));
  tests::checkRecord<ItemCompletedEvent>(eventText(R"({"thread_id":"t","turn_id":"u","completed_at_ms":5,"item":)"));
}

TEST(ItemEvents, AreWrittenWithTheirTimesInCamelCase) {
  tests::expectWritten(ItemStartedEvent{item(), "t", "u", 5},
                       eventText(R"({"thread_id":"t","turn_id":"u","startedAtMs":5,"item":)"));
  tests::expectWritten(ItemCompletedEvent{item(), "t", "u", 5},
                       eventText(R"({"thread_id":"t","turn_id":"u","completedAtMs":5,"item":)"));
  tests::expectWritten(ItemStartedEvent{item(), {}, {}, {}}, eventText(R"({"item":)"));
  tests::expectWritten(ItemUpdatedEvent{item()}, eventText(R"({"item":)"));
  tests::expectWritten(ItemCompletedEvent{item(), {}, {}, {}}, eventText(R"({"item":)"));
}

TEST(ItemEvents, PreferTheSnakeCaseSpelling) {
  EXPECT_EQ(decoded<ItemStartedEvent>(eventText(R"({"threadId":"camel","thread_id":"snake","turnId":"camel",
              "turn_id":"snake","startedAtMs":1,"started_at_ms":2,"item":)")),
            (ItemStartedEvent{item(), "snake", "snake", 2}));
  EXPECT_EQ(decoded<ItemCompletedEvent>(eventText(R"({"completedAtMs":1,"completed_at_ms":2,"item":)")),
            (ItemCompletedEvent{item(), {}, {}, 2}));
}

TEST(ItemEvents, FailAsTheirItemDoes) {
  EXPECT_EQ(failureOf<ItemUpdatedEvent>(R"({"item":{"type":"future_thing"}})"), "Unknown item type: future_thing");
  EXPECT_EQ(failureOf<ItemUpdatedEvent>("{}"), "No value is associated with the key 'item'.");
}

}  // namespace
