#include "BridgeTest.h"

namespace ormel::testing {
namespace {

using BadInput = BridgeTest;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST_F(BadInput, RefusesARequestOf200MebibytesAndGoesOn) {
  start();
  std::string line = R"({"id":"huge","text":")";
  line.append(200 * mebibyte, 'x').append("\"}");
  sendLine(line);
  EXPECT_EQ(takeAnswer(), errorAnswer("huge", tooLargeText));
  expectServing(2);
  expectCleanEnd();
}

TEST_F(BadInput, DropsALineOf200MebibytesThatIsNotJSON) {
  start();
  bridge().write(std::string(200 * mebibyte, 'x'));
  bridge().write("\n");
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BadInput, SkipsAMillionTinyLines) {
  start();
  std::string lines;
  for (int line = 0; line < 1'000'000; ++line) lines.append(line % 2 == 0 ? "\n" : "{}\n");
  bridge().write(lines);
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BadInput, FindsARequestAmongOthersOfTheSameBlock) {
  start();
  bridge().write("nonsense\n{\"id\":1}\nnonsense\n\n{\"id\":2}\n[]");
  bridge().closeInput();
  takeMessage(1);
  sendReply(R"({"id":1,"result":"one"})");
  EXPECT_EQ(bridge().readLine(), "\"one\"\n");
  EXPECT_EQ(takeMessage(2), JSONValue::object({{"id", 2}}));
  sendReply(R"({"id":2,"result":"two"})");
  EXPECT_EQ(bridge().readLine(), "\"two\"\n");
  expectCleanEnd();
}

TEST_F(BadInput, RepairsALineThatIsNotUTF8) {
  start();
  sendLine("{\"id\":\"a\xFF\",\"text\":\"\xE2\x82|\xF0\x9F\x98\x80|\xC0\xAF|\xED\xA0\x80\"}");
  EXPECT_EQ(takeMessage(1),
            JSONValue::object({{"id", "a\uFFFD"}, {"text", "\uFFFD|\U0001F600|\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD"}}));
  sendReply("{}");
  EXPECT_EQ(takeAnswer(), errorAnswer("a\uFFFD", invalidResponseText));
}

TEST_F(BadInput, DropsALineThatIsNoJSONEvenWhenRepaired) {
  start();
  sendLine("{\"id\":1,\xFF}");
  sendLine("\xFF\xFE{\"id\":1}");
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BadInput, DropsALineWithALoneSurrogate) {
  start();
  sendLine(R"({"id":1,"text":"\ud800"})");
  sendLine(R"({"id":1,"text":"\udc00\ud800"})");
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BadInput, DropsALineOf100000NestedArrays) {
  start();
  sendLine(nestedArrays(100'000));
  sendLine(R"({"id":1,"deep":)" + nestedArrays(100'000) + "}");
  sendLine(std::string(R"({"id":)").append(100'000, '['));
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BadInput, RefusesAReplyOf100000NestedArrays) {
  start();
  sendLine(R"({"id":1})");
  takeEnvelope();
  const std::string body = R"({"id":1,"result":)" + nestedArrays(100'000) + "}";
  sendReply(body);
  EXPECT_EQ(takeAnswer(), errorAnswer(1, decodingFailure(body)));
  expectServing(2);
}

TEST_F(BadInput, PassesTheDeepestNestingThatCanBeReadInBothDirections) {
  start();
  const std::string deep = nestedArrays(JSONValue::maximumDecodingDepth - 1);
  sendLine(R"({"id":1,"deep":)" + deep + "}");
  EXPECT_THAT(readFrame(host()), ::testing::HasSubstr(deep));
  sendReply(R"({"id":1,"result":)" + deep + "}");
  EXPECT_EQ(bridge().readLine(), deep + "\n");
}

TEST_F(BadInput, EchoesADeeplyNestedIDInAnError) {
  start();
  const std::string deep = nestedArrays(JSONValue::maximumDecodingDepth - 1);
  sendLine(R"({"id":)" + deep + "}");
  readFrame(host());
  sendReply("{}");
  EXPECT_THAT(bridge().readLine(), ::testing::HasSubstr(R"("id":)" + deep));
}

TEST_F(BadInput, ReadsIntegersBeyond64BitsAsTheNearestDouble) {
  start();
  sendLine(R"({"id":123456789012345678901234567890})");
  takeEnvelope();
  sendReply(R"({"id":1,"result":123456789012345678901234567890})");
  EXPECT_EQ(takeAnswer(), JSONValue(123456789012345678901234567890.0));
}

}  // namespace
}  // namespace ormel::testing
