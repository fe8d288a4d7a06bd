#include "OrmelSDK/Coding/KeptValue.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Handlers/ApprovalDecision.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

namespace {

const detail::JSONBlock* memoryOf(const JSONValue& value) { return detail::JSONAccess::owner(value); }

/// A message with `value` under "part" and as many bytes of other text as wanted.
JSONValue message(const std::string& value, std::size_t otherSize) {
  return JSONValue::decode(R"({"part":)" + value + R"(,"other":")" + std::string(otherSize, 'o') + R"("})");
}

void expectCopiedOut(const JSONValue& from, const JSONValue& part) {
  const JSONValue result = kept(part);
  EXPECT_EQ(result, part);
  EXPECT_NE(memoryOf(result), memoryOf(from));
}

void expectShared(const JSONValue& from, const JSONValue& part) {
  const JSONValue result = kept(part);
  EXPECT_EQ(result, part);
  EXPECT_EQ(memoryOf(result), memoryOf(from));
}

constexpr std::size_t large = 100'000;
const std::string smallValues[] = {R"("text")", R"([1,"two",null])", R"({"key":["value",{"deep":true}]})", "[]", "{}"};

}  // namespace

TEST(KeptValue, CopiesASmallPartOutOfALargeMessage) {
  for (const auto& text : smallValues) {
    const JSONValue from = message(text, large);
    expectCopiedOut(from, *from.find("part"));
  }
}

TEST(KeptValue, CopiesASmallPartOutOfAMessageWhoseTextsWereTakenOver) {
  for (const std::size_t size : {std::size_t{300'000}, std::size_t{3'000'000}}) {
    const JSONValue from = message(R"({"key":"value"})", size);
    expectCopiedOut(from, *from.find("part"));
  }
}

TEST(KeptValue, SharesASmallMessage) {
  for (const auto& text : smallValues) {
    const JSONValue from = message(text, 1000);
    expectShared(from, *from.find("part"));
  }
}

TEST(KeptValue, SharesAMessageOfWhichItIsALargePart) {
  for (const std::string& part :
       {'"' + std::string(large / 4, 'p') + '"', "[1,\"" + std::string(large / 4, 'p') + "\"]",
        "{\"" + std::string(large / 4, 'p') + "\":1}"}) {
    const JSONValue from = message(part, large);
    expectShared(from, *from.find("part"));
    expectShared(from, from);
  }
}

TEST(KeptValue, SharesManySmallElementsTogetherAsOneLargePart) {
  std::string elements = "[0";
  while (elements.size() < large / 2) elements += ",[]";
  const JSONValue from = message(elements + ']', large);
  expectShared(from, *from.find("part"));
}

TEST(KeptValue, LeavesValuesBuiltInCodeAndPlainValuesAlone) {
  const JSONValue built = JSONValue::array({JSONValue(std::string(large, 'o')), JSONValue("part")});
  expectShared((*built.arrayValue())[1], (*built.arrayValue())[1]);
  for (const JSONValue& plain : {JSONValue(), JSONValue(true), JSONValue(1.5)}) EXPECT_EQ(kept(plain), plain);
  const JSONValue from = message("17", large);
  EXPECT_EQ(kept(*from.find("part")), JSONValue(17));
}

TEST(KeptValue, IsWhatRecordsHold) {
  const std::string output = std::string(large, 'o');
  const JSONValue from = JSONValue::decode(
      R"({"type":"mcpToolCall","id":"m","server":"s","tool":"t","status":"completed","arguments":{"a":1},)"
      R"("result":{"content":[{"type":"text"},"two"],"structuredContent":{"b":2},"_meta":")" +
      output + R"("}})");
  for (const ThreadItem& item : {decode<ThreadItem>(from), *detail::parseThreadItem(from, {})}) {
    const auto& call = std::get<McpToolCallItem>(item.value);
    EXPECT_EQ(call.arguments, *from.find("arguments"));
    EXPECT_NE(memoryOf(call.arguments), memoryOf(from));
    EXPECT_NE(memoryOf(*call.result->structuredContent), memoryOf(from));
    EXPECT_EQ(memoryOf(*call.result->meta), memoryOf(from));
    ASSERT_EQ(call.result->content.size(), 2u);
    EXPECT_NE(memoryOf(call.result->content[0]), memoryOf(from));
    EXPECT_EQ(call.result->content[1], JSONValue("two"));
  }
}

TEST(KeptValue, KeepsTheElementsOfAListTogether) {
  const JSONValue from =
      JSONValue::decode(R"({"content":[{"type":"text"},"two"],"_meta":")" + std::string(large, 'o') + R"("})");
  const auto content = decode<McpToolCallResult>(from).content;
  ASSERT_EQ(content.size(), 2u);
  EXPECT_NE(memoryOf(content[0]), memoryOf(from));
  EXPECT_EQ(memoryOf(content[0]), memoryOf(content[1]));
}

TEST(KeptValue, IsWhatDecisionsAndUnknownItemsHold) {
  const JSONValue from = message(R"({"type":"future_thing","id":"x","a":[1]})", large);
  const JSONValue& part = *from.find("part");
  const auto item = decode<ThreadItem>(part);
  const auto& unknown = std::get<UnknownThreadItem>(item.value);
  EXPECT_EQ(unknown.payload, part);
  EXPECT_NE(memoryOf(unknown.payload), memoryOf(from));
  const auto decision = decode<OrmelApprovalDecision>(part);
  EXPECT_EQ(decision.jsonValue, part);
  EXPECT_NE(memoryOf(decision.jsonValue), memoryOf(from));
}

}  // namespace ormel::coding
