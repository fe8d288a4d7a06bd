#include "OrmelSDK/Items/DynamicToolCallItems.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::checkRecord;
using tests::decoded;
using tests::expectWritten;
using tests::failureOf;

using Part = DynamicToolCallOutputContentItem;

TEST(DynamicToolCallItem, FollowsItsTable) {
  checkRecord<DynamicToolCallItem>(
      R"({"id":"i","namespace":"n","tool":"t","arguments":{"a":1},"status":"completed",
          "content_items":[{"type":"inputText","text":"t"}],"duration_ms":1,"success":false})");
}

TEST(DynamicToolCallItem, IsWrittenInSnakeCaseAndWithoutAType) {
  expectWritten(DynamicToolCallItem{"i", "n", "t", 1, DynamicToolCallStatus::inProgress,
                                    std::vector{Part::inputText("x")}, 2, true},
                R"({"id":"i","namespace":"n","tool":"t","arguments":1,"status":"in_progress",
                    "content_items":[{"type":"inputText","text":"x"}],"duration_ms":2,"success":true})");
  expectWritten(DynamicToolCallItem{"i", {}, "t", {}, DynamicToolCallStatus::failed, {}, {}, {}},
                R"({"id":"i","tool":"t","arguments":null,"status":"failed"})");
}

TEST(DynamicToolCallItem, DoesNotReadCamelCase) {
  const auto item = decoded<DynamicToolCallItem>(
      R"({"id":"i","tool":"t","arguments":1,"status":"failed","contentItems":[],"durationMs":1})");
  EXPECT_EQ(item, (DynamicToolCallItem{"i", {}, "t", 1, DynamicToolCallStatus::failed, {}, {}, {}}));
}

TEST(DynamicToolCallOutputContentItem, IsATextOrAnImage) {
  expectWritten(Part::inputText("t"), R"({"type":"inputText","text":"t"})");
  expectWritten(Part::inputImage("u"), R"({"type":"inputImage","image_url":"u"})");
  EXPECT_EQ(decoded<Part>(R"({"type":"inputText","text":"t"})"), Part::inputText("t"));
  EXPECT_EQ(decoded<Part>(R"({"type":"inputImage","imageUrl":"u"})"), Part::inputImage("u"));
  EXPECT_EQ(decoded<Part>(R"({"type":"inputImage","imageUrl":"camel","image_url":"snake"})"),
            Part::inputImage("snake"));
}

TEST(DynamicToolCallOutputContentItem, NeedsWhatItsTypePromises) {
  EXPECT_EQ(failureOf<Part>(R"({"type":"inputText"})"), "No value is associated with the key 'text'.");
  EXPECT_EQ(failureOf<Part>(R"({"type":"inputImage"})"), "No value is associated with the key 'imageUrl'.");
  EXPECT_EQ(failureOf<Part>("{}"), "No value is associated with the key 'type'.");
}

TEST(DynamicToolCallOutputContentItem, NamesATypeThatItDoesNotKnow) {
  EXPECT_EQ(failureOf<Part>(R"({"type":"input_text","text":"t"})"), "Unknown dynamic tool content type: input_text");
  try {
    (void)decoded<DynamicToolCallItem>(
        R"({"id":"i","tool":"t","arguments":1,"status":"failed","content_items":[{"type":"audio"}]})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Kind::dataCorrupted);
    EXPECT_STREQ(error.what(), "Unknown dynamic tool content type: audio");
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"content_items", "Index 0", "type"}));
  }
}

TEST(DynamicToolCallStatus, ReadsSpellingsOfItsWordsAndTakesTheRestForFailed) {
  using enum DynamicToolCallStatus;
  tests::checkWords<DynamicToolCallStatus>({{inProgress, "in_progress"}, {completed, "completed"}, {failed, "failed"}});
  tests::checkTolerance<DynamicToolCallStatus>(
      {{"IN-PROGRESS", inProgress}, {"Completed", completed}, {"declined", failed}, {"", failed}});
}

}  // namespace
