#include "OrmelSDK/Items/FileChangeItems.h"

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

std::vector<std::string> pathOfFailure(std::string_view text) {
  try {
    (void)decoded<FileChangeItem>(text);
  } catch (const DecodingError& error) {
    return error.context().codingPath;
  }
  return {"decoded"};
}

TEST(FileChangeItems, FollowTheirTables) {
  checkRecord<FileUpdateChange>(R"({"path":"p","kind":"add"})");
  checkRecord<FileChangeItem>(R"({"id":"i","changes":[{"path":"p","kind":"delete"}],"status":"completed"})");
}

TEST(FileChangeItem, IsWrittenWithoutAType) {
  expectWritten(FileChangeItem{"i", {{"p", PatchChangeKind::delete_}}, PatchApplyStatus::inProgress},
                R"({"id":"i","changes":[{"path":"p","kind":"delete"}],"status":"in_progress"})");
}

TEST(PatchChangeKind, IsReadFromAStringOrAnObjectAndWrittenAsAString) {
  const std::pair<PatchChangeKind, std::string_view> kinds[] = {
      {PatchChangeKind::add, "add"}, {PatchChangeKind::delete_, "delete"}, {PatchChangeKind::update, "update"}};
  for (const auto& [kind, word] : kinds) {
    EXPECT_EQ(decode<PatchChangeKind>(JSONValue(word)), kind);
    EXPECT_EQ(decode<PatchChangeKind>(JSONValue::object({{"type", word}, {"movePath", nullptr}})), kind);
    EXPECT_EQ(encode(kind), JSONValue(word));
    EXPECT_EQ(rawValue(kind), word);
  }
}

TEST(PatchChangeKind, NamesAWordThatItDoesNotKnow) {
  EXPECT_EQ(failureOf<PatchChangeKind>(R"("rename")"), "Unknown patch change kind: rename");
  EXPECT_EQ(failureOf<PatchChangeKind>(R"({"type":"rename"})"), "Unknown patch change kind: rename");
  EXPECT_EQ(failureOf<PatchChangeKind>(R"("Add")"), "Unknown patch change kind: Add");
  EXPECT_EQ(failureOf<PatchChangeKind>(R"("")"), "Unknown patch change kind: ");
  tests::expectFailure<PatchChangeKind>(JSONValue("rename"), DecodingError::Kind::dataCorrupted, "", "unknown word");
}

TEST(PatchChangeKind, RefusesWhatHoldsNoWord) {
  EXPECT_EQ(failureOf<PatchChangeKind>("1"), "Expected PatchChangeKind but found a number.");
  EXPECT_EQ(failureOf<PatchChangeKind>("null"), "Expected PatchChangeKind but found null.");
  EXPECT_EQ(failureOf<PatchChangeKind>("{}"), "No value is associated with the key 'type'.");
  EXPECT_EQ(failureOf<PatchChangeKind>(R"({"type":null})"), "Expected String but found null.");
}

TEST(PatchChangeKind, TellsWhereTheUnknownWordStands) {
  EXPECT_EQ(pathOfFailure(R"({"id":"i","status":"failed","changes":[{"path":"p","kind":"rename"}]})"),
            (std::vector<std::string>{"changes", "Index 0", "kind"}));
  EXPECT_EQ(pathOfFailure(R"({"id":"i","status":"failed","changes":[{"path":"p","kind":{"type":"rename"}}]})"),
            (std::vector<std::string>{"changes", "Index 0", "kind", "type"}));
}

TEST(PatchApplyStatus, ReadsSpellingsOfItsWordsAndTakesTheRestForFailed) {
  using enum PatchApplyStatus;
  tests::checkWords<PatchApplyStatus>(
      {{inProgress, "in_progress"}, {completed, "completed"}, {failed, "failed"}, {declined, "declined"}});
  tests::checkTolerance<PatchApplyStatus>(
      {{"inProgress", inProgress}, {"-Completed-", completed}, {"DECLINED", declined}, {"weird", failed}});
}

}  // namespace
