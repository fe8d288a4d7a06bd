#include "OrmelSDK/Events/ThreadStateEvents.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

constexpr std::string_view settingsText = R"({"cwd":"/w","approvalPolicy":"never","approvalsReviewer":"user",
  "sandboxPolicy":{},"model":"m","modelProvider":"mp","collaborationMode":"default"})";
constexpr std::string_view goalText = R"({"thread_id":"t","objective":"o","status":"active","tokensUsed":1,
  "timeUsedSeconds":2,"createdAt":3,"updatedAt":4})";

std::string with(std::string_view before, std::string_view value) {
  return std::string(before) + std::string(value) + "}";
}

TEST(ThreadStateEvents, FollowTheirTables) {
  tests::checkRecord<ThreadStartedEvent>(R"({"thread_id":"t","forked_from_id":"f","instructionSources":["a","b"]})");
  tests::checkRecord<ThreadGoalUpdatedEvent>(with(R"({"thread_id":"t","turn_id":"u","goal":)", goalText));
  tests::checkRecord<ThreadGoalClearedEvent>(R"({"thread_id":"t"})");
  tests::checkRecord<ThreadSettingsUpdatedEvent>(with(R"({"thread_id":"t","threadSettings":)", settingsText));
}

TEST(ThreadStateEvents, AreWrittenUnderTheirOwnKeys) {
  tests::expectWritten(ThreadStartedEvent{"t", "f", {"a"}},
                       R"({"thread_id":"t","forked_from_id":"f","instructionSources":["a"]})");
  tests::expectWritten(ThreadStartedEvent{"t", {}, {}}, R"({"thread_id":"t"})");
  const std::string updated = with(R"({"thread_id":"t","turn_id":"u","goal":)", goalText);
  tests::expectWritten(decoded<ThreadGoalUpdatedEvent>(updated), updated);
  const std::string changed = with(R"({"thread_id":"t","threadSettings":)", settingsText);
  tests::expectWritten(decoded<ThreadSettingsUpdatedEvent>(changed), changed);
}

TEST(ThreadStateEvents, PreferTheSpellingThatIsTriedFirst) {
  EXPECT_EQ(decoded<ThreadStartedEvent>(R"({"thread_id":"snake","threadId":"camel","forkedFromId":"camel",
              "forked_from_id":"snake","instruction_sources":["snake"],"instructionSources":["camel"]})"),
            (ThreadStartedEvent{"snake", "snake", {"camel"}}));
}

TEST(ThreadStateEvents, PassOverASpellingThatIsNull) {
  EXPECT_EQ(decoded<ThreadStartedEvent>(R"({"thread_id":null,"threadId":"camel","forkedFromId":"camel",
              "forked_from_id":null,"instruction_sources":["snake"],"instructionSources":null})"),
            (ThreadStartedEvent{"camel", "camel", {"snake"}}));
}

TEST(ThreadStateEvents, TakeAnEmptyListUnderTheFirstSpellingForAnAnswer) {
  EXPECT_EQ(decoded<ThreadStartedEvent>(R"({"thread_id":"t","instruction_sources":["snake"],"instructionSources":[]})"),
            (ThreadStartedEvent{"t", {}, {}}));
}

TEST(ThreadSettingsUpdatedEvent, ReadsTheSettingsUnderOneSpellingOnly) {
  EXPECT_EQ(tests::failureOf<ThreadSettingsUpdatedEvent>(with(R"({"thread_id":"t","thread_settings":)", settingsText)),
            "No value is associated with the key 'threadSettings'.");
}

}  // namespace
