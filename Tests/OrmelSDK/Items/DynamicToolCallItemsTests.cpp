#include "OrmelSDK/Items/DynamicToolCallItems.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::expectWritten;

using Part = DynamicToolCallOutputContentItem;

TEST(DynamicToolCallOutputContentItem, IsATextOrAnImage) {
  expectWritten(Part::inputText("t"), R"({"type":"inputText","text":"t"})");
  expectWritten(Part::inputImage("u"), R"({"type":"inputImage","image_url":"u"})");
  EXPECT_EQ(decoded<Part>(R"({"type":"inputText","text":"t"})"), Part::inputText("t"));
  EXPECT_EQ(decoded<Part>(R"({"type":"inputImage","image_url":"u"})"), Part::inputImage("u"));
}

}  // namespace
