#include "OrmelSDK/Events/ItemEvents.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

constexpr std::string_view itemText = R"({"type":"agent_message","id":"a","text":"hello"})";

ThreadItem agentMessage() { return decoded<ThreadItem>(itemText); }

std::string eventOfItem(std::string_view before) { return std::string(before) + std::string(itemText) + "}"; }

TEST(ItemEvents, FollowTheirTables) {
  tests::checkRecord<ItemStartedEvent>(eventOfItem(R"({"thread_id":"t","turn_id":"u","started_at_ms":5,"item":)"));
  tests::checkRecord<ItemUpdatedEvent>(eventOfItem(R"({"item":)"));
  tests::checkRecord<ItemCompletedEvent>(eventOfItem(R"({"thread_id":"t","turn_id":"u","completed_at_ms":5,"item":)"));
}

TEST(ItemEvents, AreWrittenWithTheirTimesInCamelCase) {
  tests::expectWritten(ItemStartedEvent{agentMessage(), "t", "u", 5},
                       eventOfItem(R"({"thread_id":"t","turn_id":"u","startedAtMs":5,"item":)"));
  tests::expectWritten(ItemCompletedEvent{agentMessage(), "t", "u", 5},
                       eventOfItem(R"({"thread_id":"t","turn_id":"u","completedAtMs":5,"item":)"));
  tests::expectWritten(ItemStartedEvent{agentMessage(), {}, {}, {}}, eventOfItem(R"({"item":)"));
  tests::expectWritten(ItemUpdatedEvent{agentMessage()}, eventOfItem(R"({"item":)"));
  tests::expectWritten(ItemCompletedEvent{agentMessage(), {}, {}, {}}, eventOfItem(R"({"item":)"));
}

TEST(ItemEvents, PreferTheSnakeCaseSpelling) {
  EXPECT_EQ(decoded<ItemStartedEvent>(eventOfItem(R"({"threadId":"camel","thread_id":"snake","turnId":"camel",
              "turn_id":"snake","startedAtMs":1,"started_at_ms":2,"item":)")),
            (ItemStartedEvent{agentMessage(), "snake", "snake", 2}));
  EXPECT_EQ(decoded<ItemCompletedEvent>(eventOfItem(R"({"completedAtMs":1,"completed_at_ms":2,"item":)")),
            (ItemCompletedEvent{agentMessage(), {}, {}, 2}));
}

TEST(ItemEvents, FailAsTheirItemDoes) {
  EXPECT_EQ(failureOf<ItemUpdatedEvent>(R"({"item":{"type":"future_thing"}})"), "Unknown item type: future_thing");
  EXPECT_EQ(failureOf<ItemUpdatedEvent>("{}"), "No value is associated with the key 'item'.");
}

}  // namespace
