#include "BridgeTest.h"

namespace ormel::testing {
namespace {

using BridgeLoop = BridgeTest;

TEST_F(BridgeLoop, WrapsTheMessageWithItsCredentials) {
  start();
  sendLine(
      R"({"jsonrpc":"2.0","id":7,"method":"tools/call","params":{"name":"open","arguments":[1.50,"\u00e9",null]}})");
  const std::string body = readFrame(host());
  EXPECT_THAT(body, ::testing::Not(::testing::HasSubstr("\n")));
  EXPECT_EQ(JSONValue::decode(body), JSONValue::decode(R"({
    "jsonrpc": "2.0", "id": 1, "method": "tessellaMCP",
    "params": {
      "token": "secret", "workspacePath": "/work space/é",
      "message": {"jsonrpc": "2.0", "id": 7, "method": "tools/call",
                  "params": {"name": "open", "arguments": [1.5, "é", null]}}}})"));
}

TEST_F(BridgeLoop, WritesTheResultAsOneLineWhateverItsCase) {
  start();
  int id = 0;
  for (const std::string_view result :
       {R"("text")", "1.5", "1", "true", "null", "[1,[2]]", R"({"a":"line\nfeed"})", "{}", "[]"}) {
    sendLine(R"({"id":1})");
    takeMessage(++id);
    sendReply(R"({"id":)" + std::to_string(id) + R"(,"result": )" + std::string(result) + "}");
    EXPECT_EQ(bridge().readLine(), std::string(result) + "\n");
  }
  expectCleanEnd();
}

TEST_F(BridgeLoop, DoesNotPutTheClientsIDIntoTheResult) {
  start();
  sendLine(R"({"id":"mine"})");
  takeMessage(1);
  sendReply(R"({"id":1,"result":{"id":"other"}})");
  EXPECT_EQ(takeAnswer(), JSONValue::object({{"id", "other"}}));
}

TEST_F(BridgeLoop, WritesAWholeNumberWithoutFraction) {
  start();
  sendLine(R"({"id":1})");
  takeMessage(1);
  sendReply(R"({"id":1.0,"result":[1.0,9007199254740993,1e3]})");
  EXPECT_EQ(bridge().readLine(), "[1,9007199254740992,1000]\n");
}

TEST_F(BridgeLoop, ForwardsAMessageWhoseIDIsNull) {
  start();
  sendLine(R"({"id":null,"method":"x"})");
  EXPECT_EQ(takeMessage(1), JSONValue::object({{"id", nullptr}, {"method", "x"}}));
  sendReply("{}");
  EXPECT_EQ(takeAnswer(), errorAnswer(nullptr, invalidResponseText));
}

TEST_F(BridgeLoop, EchoesTheClientsIDInAnErrorAsItCame) {
  start();
  for (const std::string_view id : {R"("abc")", "1.5", "-3", "null", "true", R"({"a":[1]})", "[]", R"("")"}) {
    sendLine(R"({"id":)" + std::string(id) + "}");
    takeEnvelope();
    sendReply("{}");
    EXPECT_EQ(takeAnswer(), errorAnswer(JSONValue::decode(id), invalidResponseText));
  }
}

TEST_F(BridgeLoop, EchoesAWholeIDWithoutFraction) {
  start();
  sendLine(R"({"id":1.0})");
  takeEnvelope();
  sendReply("{}");
  EXPECT_THAT(bridge().readLine(), ::testing::ContainsRegex(R"("id":1[,}])"));
}

TEST_F(BridgeLoop, DropsWhatIsNoRequestWithoutTrafficOrOutput) {
  start();
  for (const std::string_view line : {R"({"jsonrpc":"2.0","method":"notifications/initialized"})",
                                      R"([{"id":1}])",
                                      "3",
                                      R"("")",
                                      R"("id")",
                                      "null",
                                      "true",
                                      "{}",
                                      "[]",
                                      "",
                                      " ",
                                      "\t",
                                      "\r",
                                      "\r\r",
                                      "{",
                                      R"({"id":1)",
                                      R"({"id":1}})",
                                      R"({"id":1} {"id":2})",
                                      R"({"ID":1})",
                                      R"({'id':1})",
                                      R"({"id":NaN})",
                                      R"({"id":1e999})",
                                      "\xEF\xBB\xBF",
                                      R"({"params":{"id":1}})"}) {
    sendLine(line);
  }
  bridge().write(std::string("\0\n", 2));
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BridgeLoop, AcceptsACarriageReturnBeforeTheLineFeed) {
  start();
  bridge().write("{\"id\":1}\r\n\r\n{\"id\":2}\r\n");
  takeMessage(1);
  sendReply(R"({"id":1,"result":"first"})");
  EXPECT_EQ(bridge().readLine(), "\"first\"\n");
  EXPECT_EQ(takeMessage(2), JSONValue::object({{"id", 2}}));
}

TEST_F(BridgeLoop, ServesALastLineWithoutLineEnd) {
  start();
  bridge().write(R"({"id":1})");
  bridge().closeInput();
  EXPECT_EQ(takeMessage(1), JSONValue::object({{"id", 1}}));
  sendReply(R"({"id":1,"result":"last"})");
  EXPECT_EQ(bridge().readLine(), "\"last\"\n");
  expectCleanEnd();
}

TEST_F(BridgeLoop, DropsALastLineThatWasCutOff) {
  start();
  bridge().write(R"({"id":1,)");
  expectCleanEnd();
  EXPECT_EQ(readToEnd(host()), "");
}

TEST_F(BridgeLoop, ReadsALineInPieces) {
  start();
  const std::string line = "{\"id\":1,\"text\":\"é\"}\r\n";
  for (const char byte : line) bridge().write({&byte, 1});
  EXPECT_EQ(takeMessage(1), JSONValue::object({{"id", 1}, {"text", "é"}}));
}

TEST_F(BridgeLoop, AnswersEachRequestBeforeItForwardsTheNext) {
  start();
  bridge().write("{\"id\":\"a\"}\n{\"id\":\"b\"}\n{\"id\":\"c\"}\n");
  bridge().closeInput();
  int id = 0;
  for (const std::string_view client : {"a", "b", "c"}) {
    EXPECT_EQ(takeMessage(++id), JSONValue::object({{"id", client}}));
    EXPECT_FALSE(isReadable(host()));
    EXPECT_FALSE(isReadable(bridge().outputDescriptor()));
    sendReply(R"({"id":)" + std::to_string(id) + R"(,"result":)" + std::to_string(id) + "}");
    EXPECT_EQ(bridge().readLine(), std::to_string(id) + "\n");
  }
  expectCleanEnd();
}

TEST_F(BridgeLoop, NumbersItsEnvelopesWhateverTheClientSends) {
  start();
  int id = 0;
  for (const std::string_view client : {"9", "9", "\"x\"", "null", "0", "-1"}) {
    sendLine(R"({"id":)" + std::string(client) + "}");
    takeMessage(++id);
    sendReply(R"({"id":)" + std::to_string(id) + R"(,"result":0})");
    EXPECT_EQ(bridge().readLine(), "0\n");
  }
}

TEST_F(BridgeLoop, TakesTheLastOfTwoEqualIDKeys) {
  start();
  sendLine(R"({"id":1,"id":2})");
  EXPECT_EQ(takeMessage(1), JSONValue::object({{"id", 2}}));
}

TEST_F(BridgeLoop, WorksOnNonBlockingStreams) {
  ChildOptions options = this->options();
  options.nonBlockingStreams = true;
  start(options);
  const std::string text(std::size_t{3} << 20, 'x');
  sendLine(R"({"id":1,"text":")" + text + "\"}");
  const JSONValue message = takeMessage(1);
  EXPECT_EQ(*message.find("text"), JSONValue(text));
  sendReply(R"({"id":1,"result":")" + text + "\"}");
  EXPECT_EQ(bridge().readLine(), "\"" + text + "\"\n");
  expectServing(2);
  expectCleanEnd();
}

}  // namespace
}  // namespace ormel::testing
