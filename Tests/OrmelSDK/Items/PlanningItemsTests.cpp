#include "OrmelSDK/Items/PlanningItems.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

using Texts = std::vector<SharedText>;

TEST(ReasoningItem, TakesATextForItsContentWhenThereAreNoLists) {
  EXPECT_EQ(decoded<ReasoningItem>(R"({"id":"r","text":"t"})"), (ReasoningItem{"r", {}, {"t"}}));
  EXPECT_EQ(decoded<ReasoningItem>(R"({"id":"r","text":"t","summary":null,"content":null})"),
            (ReasoningItem{"r", {}, {"t"}}));
}

TEST(ReasoningItem, IsEmptyWithoutListsAndText) {
  for (const char* text : {R"({"id":"r"})", R"({"id":"r","text":""})", R"({"id":"r","text":null})"}) {
    EXPECT_EQ(decoded<ReasoningItem>(text), (ReasoningItem{"r", {}, {}})) << text;
  }
}

TEST(ReasoningItem, DoesNotLookAtTheTextBesideAList) {
  EXPECT_EQ(decoded<ReasoningItem>(R"({"id":"r","text":"t","summary":["s"]})"), (ReasoningItem{"r", {"s"}, {}}));
  EXPECT_EQ(decoded<ReasoningItem>(R"({"id":"r","text":"t","content":[]})"), (ReasoningItem{"r", {}, {}}));
  EXPECT_EQ(decoded<ReasoningItem>(R"({"id":"r","text":7,"content":["c"]})"), (ReasoningItem{"r", {}, {"c"}}));
}

TEST(ReasoningItem, RefusesATextThatIsNone) {
  try {
    (void)decoded<ReasoningItem>(R"({"id":"r","text":7})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Kind::typeMismatch);
    EXPECT_EQ(error.context().codingPath, std::vector<std::string>{"text"});
  }
}

TEST(ReasoningItem, JoinsSummaryAndContentLineByLine) {
  EXPECT_EQ((ReasoningItem{"r", {}, {}}.text()), "");
  EXPECT_EQ((ReasoningItem{"r", {"a", "b"}, {"c"}}.text()), "a\nb\nc");
  EXPECT_EQ((ReasoningItem{"r", {""}, {"c"}}.text()), "\nc");
}

TEST(ReasoningItem, SharesASingleText) {
  const ReasoningItem item{"r", {}, {"long"}};
  EXPECT_EQ(item.text().view().data(), item.content.front().view().data());
}

TEST(ReasoningItem, DoesNotChangeWhenItsTextIsExtended) {
  const ReasoningItem item{"r", {"a"}, {"b"}};
  SharedText text = item.text();
  text.append("c");
  EXPECT_EQ(item, (ReasoningItem{"r", {"a"}, {"b"}}));
}

}  // namespace
