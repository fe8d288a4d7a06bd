#include "OrmelSDK/Events/ModelEvents.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

TEST(ModelEvents, FollowTheirTables) {
  tests::checkRecord<ModelVerificationEvent>(R"({"thread_id":"t","turn_id":"u","verifications":["a","b"]})");
  tests::checkRecord<ModelReroutedEvent>(
      R"({"thread_id":"t","turn_id":"u","fromModel":"a","toModel":"b","reason":"r"})");
  tests::checkRecord<ModelSafetyBufferingUpdatedEvent>(
      R"({"thread_id":"t","turn_id":"u","model":"m","useCases":["a"],"reasons":["r"],"showBufferingUi":true,
          "fasterModel":"f"})");
  tests::checkRecord<TurnModerationMetadataEvent>(R"({"thread_id":"t","turn_id":"u","metadata":{"a":[1]}})");
}

TEST(ModelEvents, WriteEmptyListsButNoAbsentModel) {
  tests::expectWritten(ModelVerificationEvent{"t", "u", {}}, R"({"thread_id":"t","turn_id":"u","verifications":[]})");
  tests::expectWritten(ModelSafetyBufferingUpdatedEvent{"t", "u", "m", {}, {}, false, {}},
                       R"({"thread_id":"t","turn_id":"u","model":"m","useCases":[],"reasons":[],
                           "showBufferingUi":false})");
}

TEST(ModelSafetyBufferingUpdatedEvent, IsWrittenWithTheServersSpellingOfTheUserInterface) {
  const auto written = encode(ModelSafetyBufferingUpdatedEvent{"t", "u", "m", {"a"}, {"r"}, true, "f"});
  EXPECT_EQ(written, JSONValue::decode(R"({"thread_id":"t","turn_id":"u","model":"m","useCases":["a"],"reasons":["r"],
                                           "showBufferingUi":true,"fasterModel":"f"})"));
  EXPECT_EQ(written.find("showBufferingUI"), nullptr);
  EXPECT_EQ(tests::failureOf<ModelSafetyBufferingUpdatedEvent>(
                R"({"thread_id":"t","turn_id":"u","model":"m","showBufferingUI":true})"),
            "No value is associated with the key 'showBufferingUi'.");
}

TEST(TurnModerationMetadataEvent, KeepsItsMetadataWhole) {
  for (const char* metadata : {"null", "3", R"("x")", "[[[]]]", R"({"a":{"b":[1,null,"c"]}})"}) {
    const auto event = decoded<TurnModerationMetadataEvent>(R"({"thread_id":"t","turn_id":"u","metadata":)" +
                                                            std::string(metadata) + "}");
    EXPECT_EQ(event.metadata, JSONValue::decode(metadata));
    EXPECT_EQ(decode<TurnModerationMetadataEvent>(encode(event)), event);
  }
}

}  // namespace
