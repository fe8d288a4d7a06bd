#include "OrmelSDK/Events/TurnEvents.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

constexpr std::string_view usage = R"({"total_tokens":6,"input_tokens":3,"cached_input_tokens":1,"output_tokens":2,
  "model_context_window":1000})";

TEST(TurnEvents, FollowTheirTables) {
  tests::checkRecord<TurnStartedEvent>(R"({"model_context_window":1000})");
  tests::checkRecord<Usage>(usage);
  tests::checkRecord<TurnCompletedEvent>(R"({"usage":)" + std::string(usage) + "}");
  tests::checkRecord<ThreadError>(R"({"message":"m"})");
  tests::checkRecord<TurnFailedEvent>(R"({"error":{"message":"m"}})");
  tests::checkRecord<ThreadErrorEvent>(R"({"message":"m"})");
}

TEST(TurnEvents, AreWrittenWithoutWhatIsAbsent) {
  tests::expectWritten(TurnStartedEvent{}, "{}");
  tests::expectWritten(TurnStartedEvent{1000}, R"({"model_context_window":1000})");
  tests::expectWritten(Usage{6, 3, 1, 2, 1000}, usage);
  tests::expectWritten(Usage{{}, 3, 1, 2, {}}, R"({"input_tokens":3,"cached_input_tokens":1,"output_tokens":2})");
  tests::expectWritten(TurnFailedEvent{{"m"}}, R"({"error":{"message":"m"}})");
}

TEST(TurnEvents, ReadOneSpellingOnly) {
  EXPECT_EQ(decoded<TurnStartedEvent>(R"({"modelContextWindow":1000})"), TurnStartedEvent{});
  EXPECT_EQ(tests::failureOf<Usage>(R"({"inputTokens":3,"cached_input_tokens":1,"output_tokens":2})"),
            "No value is associated with the key 'input_tokens'.");
}

TEST(Usage, RefusesCountsThatAreNoIntegers) {
  EXPECT_EQ(tests::failureOf<Usage>(R"({"input_tokens":0.5,"cached_input_tokens":1,"output_tokens":2})"),
            "The number 0.5 does not fit in Int.");
}

}  // namespace
