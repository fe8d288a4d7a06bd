#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Input/ReviewTarget.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

namespace {

using namespace ormel;

TEST(ReviewTarget, WritesEachCaseUnderItsType) {
  const std::pair<ReviewTarget, std::string_view> cases[] = {
      {ReviewTarget(), R"({"type":"uncommittedChanges"})"},
      {ReviewTarget::uncommittedChanges(), R"({"type":"uncommittedChanges"})"},
      {ReviewTarget::baseBranch("main"), R"({"type":"baseBranch","branch":"main"})"},
      {ReviewTarget::commit("abc", "Fix"), R"({"type":"commit","sha":"abc","title":"Fix"})"},
      {ReviewTarget::commit("abc", ""), R"({"type":"commit","sha":"abc","title":""})"},
      {ReviewTarget::commit("abc"), R"({"type":"commit","sha":"abc","title":null})"},
      {ReviewTarget::custom("Look."), R"({"type":"custom","instructions":"Look."})"},
  };
  for (const auto& [target, text] : cases) {
    EXPECT_EQ(coding::Codec<ReviewTarget>::encode(target), JSONValue::decode(text));
  }
}

TEST(ReviewTarget, ComparesByCaseAndValue) {
  EXPECT_EQ(ReviewTarget(), ReviewTarget::uncommittedChanges());
  EXPECT_NE(ReviewTarget::baseBranch("a"), ReviewTarget::custom("a"));
  EXPECT_NE(ReviewTarget::commit("a"), ReviewTarget::commit("a", "b"));
}

}  // namespace
