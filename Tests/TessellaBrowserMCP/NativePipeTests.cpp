#include <limits>

#include "BridgeTest.h"
#include "TessellaBrowserMCP/BridgeFailure.h"
#include "TessellaBrowserMCP/EnvelopeCounter.h"
#include "TessellaBrowserMCP/NativePipeClient.h"

namespace ormel::testing {
namespace {

/// One request that the host answers with given bytes.
class NativePipe : public BridgeTest {
 protected:
  JSONValue answerToReply(std::string_view body) {
    sendLine(R"({"id":"c"})");
    takeEnvelope();
    sendReply(body);
    return takeAnswer();
  }

  const JSONValue invalid_ = errorAnswer("c", invalidResponseText);
  const JSONValue tooLarge_ = errorAnswer("c", tooLargeText);
};

TEST_F(NativePipe, TakesANullResultAsSuccess) {
  start();
  EXPECT_EQ(answerToReply(R"({"id":1,"result":null})"), JSONValue());
}

TEST_F(NativePipe, ReadsNoOtherKeyOfTheReply) {
  start();
  EXPECT_EQ(answerToReply(R"({"error":{"code":1},"jsonrpc":3,"result":"r","id":1.0,"x":[]})"), JSONValue("r"));
}

TEST_F(NativePipe, RefusesRepliesThatAreNoAnswerToTheRequest) {
  start();
  int id = 0;
  for (const std::string_view body :
       {"[]", "{}", "null", "1", R"("text")", R"([{"id":1,"result":1}])", R"({"result":1})", R"({"id":"#","result":1})",
        R"({"id":null,"result":1})", R"({"id":true,"result":1})", R"({"id":#,"error":{}})", R"({"id":#})",
        R"({"id":#.5,"result":1})", R"({"id":-#,"result":1})", R"({"id":#,"Result":1})", R"({"id":[#],"result":1})"}) {
    std::string reply(body);
    ++id;
    if (const auto at = reply.find('#'); at != std::string::npos) reply.replace(at, 1, std::to_string(id));
    EXPECT_EQ(answerToReply(reply), invalid_) << reply;
  }
  expectServing(id + 1);
  expectCleanEnd();
}

TEST_F(NativePipe, RefusesALateReplyWithAnOlderID) {
  start();
  EXPECT_EQ(answerToReply(R"({"id":0,"result":1})"), invalid_);
  EXPECT_EQ(answerToReply(R"({"id":1,"result":1})"), invalid_);
  EXPECT_EQ(answerToReply(R"({"id":3,"result":"now"})"), JSONValue("now"));
}

TEST_F(NativePipe, TakesARepliesWaitingFromBeforeTheRequest) {
  start();
  sendReply(R"({"id":1,"result":"early"})");
  sendLine(R"({"id":"c"})");
  EXPECT_EQ(takeAnswer(), JSONValue("early"));
}

TEST_F(NativePipe, PassesTheDecodersErrorOnForABodyThatIsNotJSON) {
  start();
  int id = 0;
  for (const std::string_view body :
       {"", " ", "{", "nil", R"({"id":1,"result":})", R"({"id":1,"result":"\ud800"})", R"({"id":1,"result":"\udc00"})",
        "{\"id\":1,\"result\":\"\xFF\"}", "{\"id\":1,\"result\":\"\xC3\"}", R"({"id":1,"result":1e999})",
        "{\"id\":1,\"result\":\"\n\"}", R"({"id":1,"result":1}x)"}) {
    EXPECT_EQ(answerToReply(body), errorAnswer("c", decodingFailure(body))) << body;
    ++id;
  }
  EXPECT_EQ(decodingFailure(R"({"id":1,"result":1e999})"), "Unsupported JSON value");
  expectServing(id + 1);
  expectCleanEnd();
}

TEST_F(NativePipe, SaysThatAnEmptyBodyIsNotJSON) {
  start();
  EXPECT_THAT(answerToReply("").encode(), ::testing::HasSubstr("The given data was not valid JSON."));
}

TEST_F(NativePipe, ReadsAReplyThatComesByteByByte) {
  start();
  sendLine(R"({"id":"c"})");
  takeEnvelope();
  for (const char byte : frame(R"({"id":1,"result":"slowly"})")) sendRaw({&byte, 1});
  EXPECT_EQ(takeAnswer(), JSONValue("slowly"));
}

TEST_F(NativePipe, SendsABodyOfExactlyTheLimitAndNothingOfALargerOne) {
  start();
  const auto line = [](std::size_t padding) { return R"({"id":"c","pad":")" + std::string(padding, 'p') + "\"}"; };
  sendLine(line(0));
  const std::size_t overhead = readFrame(host()).size();
  sendReply(R"({"id":1,"result":1})");
  EXPECT_EQ(takeAnswer(), JSONValue(1));

  sendLine(line(8'388'608 - overhead));
  EXPECT_EQ(readFrame(host()).size(), 8'388'608u);
  sendReply(R"({"id":2,"result":2})");
  EXPECT_EQ(takeAnswer(), JSONValue(2));

  sendLine(line(8'388'608 - overhead + 1));
  EXPECT_EQ(takeAnswer(), tooLarge_);
  EXPECT_FALSE(isReadable(host()));
  expectServing(4);
  expectCleanEnd();
}

TEST_F(NativePipe, ReadsAReplyOfExactlyTheLimit) {
  start();
  sendLine(R"({"id":"c"})");
  takeEnvelope();
  std::string body = R"({"id":1,"result":")";
  body.append(67'108'864 - body.size() - 2, 'r');
  body.append("\"}");
  sendReply(body);
  const std::string line = bridge().readLine();
  EXPECT_TRUE(line == body.substr(17, body.size() - 18) + "\n") << "got " << line.size() << " bytes";
  expectServing(2);
  expectCleanEnd();
}

TEST_F(NativePipe, RefusesALargerReplyWithoutReadingItsBody) {
  start();
  sendLine(R"({"id":"c"})");
  takeEnvelope();
  sendRaw(frameLength(67'108'865));
  EXPECT_EQ(takeAnswer(), tooLarge_);
  // The following bytes are read as the next reply, because no body was skipped.
  expectServing(2);
  expectCleanEnd();
}

TEST_F(NativePipe, RefusesTheLargestLengthThatCanBeDeclared) {
  start();
  sendLine(R"({"id":"c"})");
  takeEnvelope();
  sendRaw(frameLength(0xFFFFFFFF));
  EXPECT_EQ(takeAnswer(), tooLarge_);
}

TEST_F(NativePipe, RepairsCredentialsThatAreNotUTF8) {
  ChildOptions options = this->options();
  options.environment[1] = "KESTRION_WORKSPACE_PATH=/a\xFF\xE2\x82/b";
  options.environment[2] = "KESTRION_BROWSER_TOKEN=\xC3";
  start(options);
  sendLine(R"({"id":1})");
  const JSONValue envelope = takeEnvelope();
  EXPECT_EQ(*envelope.find("params")->find("workspacePath"), JSONValue("/a\uFFFD\uFFFD/b"));
  EXPECT_EQ(*envelope.find("params")->find("token"), JSONValue("\uFFFD"));
}

TEST_F(NativePipe, CountsTheBytesOfASocketPathAfterItsRepair) {
  ChildOptions options = bridgeOptions("/" + std::string(34, '\xFF'));
  ChildProgram tried(ORMEL_BRIDGE_EXECUTABLE, options);
  EXPECT_EQ(tried.readErrors(), failureLine(BridgeFailure::connectFailed(ENOENT).what()));
  options = bridgeOptions("/" + std::string(35, '\xFF'));
  ChildProgram refused(ORMEL_BRIDGE_EXECUTABLE, options);
  EXPECT_EQ(refused.readErrors(), failureLine(BridgeFailure::invalidSocketPath().what()));
}

TEST(NativePipeClient, SpendsAnIDOnAMessageThatCannotBeEncoded) {
  TemporaryDirectory directory;
  UnixListener listener(directory.path() / "socket");
  NativePipeClient client(listener.path());
  const Descriptor host = listener.accept();
  const JSONValue message = JSONValue::object({{"id", std::numeric_limits<double>::infinity()}});
  EXPECT_THROW(client.request("t", "w", message), EncodingError);
  EXPECT_FALSE(isReadable(host.number()));
  const std::string large(NativePipeClient::maximumRequestSize, 'x');
  EXPECT_THROW(client.request("t", "w", JSONValue::array({large, message})), EncodingError);
  EXPECT_FALSE(isReadable(host.number()));
  writeAll(host.number(), frame(R"({"id":3,"result":"third"})"));
  EXPECT_EQ(client.request("t", "w", JSONValue::object()), JSONValue("third"));
}

TEST(NativePipeClient, ClosesTheSocketWhenDestroyed) {
  TemporaryDirectory directory;
  UnixListener listener(directory.path() / "socket");
  std::optional<NativePipeClient> client(std::in_place, listener.path());
  const Descriptor host = listener.accept();
  EXPECT_FALSE(isReadable(host.number()));
  client.reset();
  EXPECT_EQ(readToEnd(host.number()), "");
}

TEST(EnvelopeCounter, CountsFromOne) {
  EnvelopeCounter ids;
  EXPECT_EQ(ids.take(), 1);
  EXPECT_EQ(ids.take(), 2);
}

TEST(EnvelopeCounterDeathTest, EndsTheProcessInsteadOfOverflowing) {
  constexpr auto last = std::numeric_limits<std::int64_t>::max();
  EnvelopeCounter ids(last - 1);
  EXPECT_EQ(ids.take(), last - 1);
  EXPECT_DEATH(ids.take(), "envelope ids are used up");
}

TEST(BridgeFailure, DescribesEachCase) {
  EXPECT_STREQ(BridgeFailure::missingEnvironment("NAME").what(), "Missing NAME.");
  EXPECT_STREQ(BridgeFailure::connectFailed(61).what(), "Could not connect to Kestrion's browser socket (errno 61).");
  EXPECT_STREQ(BridgeFailure::invalidSocketPath().what(), "The Kestrion browser socket path is invalid.");
  EXPECT_STREQ(BridgeFailure::payloadTooLarge().what(), "The browser message exceeded the bridge limit.");
  EXPECT_STREQ(BridgeFailure::disconnected().what(), "Kestrion's browser socket disconnected.");
  EXPECT_STREQ(BridgeFailure::invalidResponse().what(), "Kestrion returned an invalid browser response.");
}

}  // namespace
}  // namespace ormel::testing
