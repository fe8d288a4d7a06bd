#include <signal.h>

#include "BridgeTest.h"

namespace ormel::testing {
namespace {

class Disconnection : public BridgeTest {
 protected:
  /// The request in hand is answered, then the failure is told, then the bridge ends.
  void expectDisconnected(const JSONValue& id) {
    EXPECT_EQ(takeAnswer(), errorAnswer(id, disconnectedText));
    expectFailure(disconnectedText);
  }
};

TEST_F(Disconnection, AnswersAndFailsWhenTheHostGoesBeforeItReplies) {
  start();
  sendLine(R"({"id":"c"})");
  takeEnvelope();
  hangUp();
  expectDisconnected("c");
}

TEST_F(Disconnection, AnswersAndFailsWhenTheHostGoesInsideTheLength) {
  start();
  sendLine(R"({"id":null})");
  takeEnvelope();
  sendRaw(frameLength(10).substr(0, 2));
  hangUp();
  expectDisconnected(nullptr);
}

TEST_F(Disconnection, AnswersAndFailsWhenTheHostGoesBehindTheLength) {
  start();
  sendLine(R"({"id":1})");
  takeEnvelope();
  sendRaw(frameLength(10));
  hangUp();
  expectDisconnected(1);
}

TEST_F(Disconnection, AnswersAndFailsWhenTheHostGoesInsideTheBody) {
  start();
  sendLine(R"({"id":1})");
  takeEnvelope();
  const std::string reply = frame(R"({"id":1,"result":1})");
  sendRaw(std::string_view(reply).substr(0, reply.size() - 1));
  hangUp();
  expectDisconnected(1);
}

TEST_F(Disconnection, TakesAResetConnectionAsDisconnected) {
  start();
  sendLine(R"({"id":1})");
  awaitReadable(host());
  hangUp();
  expectDisconnected(1);
}

TEST_F(Disconnection, LeavesFurtherInputUnread) {
  start();
  bridge().write("{\"id\":1}\n{\"id\":2}\n");
  takeEnvelope();
  hangUp();
  expectDisconnected(1);
}

TEST_F(Disconnection, IsNotNoticedWithoutARequest) {
  start();
  hangUp();
  sendLine(R"({"method":"notification"})");
  expectCleanEnd();
}

TEST_F(Disconnection, DiesOfTheBrokenPipeSignalWhenTheHostIsGoneBeforeTheWrite) {
  start();
  hangUp();
  sendLine(R"({"id":1})");
  EXPECT_EQ(bridge().readRestOfOutput(), "");
  EXPECT_EQ(bridge().readErrors(), "");
  EXPECT_EQ(bridge().wait().signal, SIGPIPE);
}

TEST_F(Disconnection, DiesOfTheBrokenPipeSignalInTheMiddleOfAWrite) {
  start();
  sendLine(R"({"id":1,"pad":")" + std::string(std::size_t{8'000'000}, 'p') + "\"}");
  readExactly(host(), 1000);
  hangUp();
  EXPECT_EQ(bridge().readRestOfOutput(), "");
  EXPECT_EQ(bridge().wait().signal, SIGPIPE);
}

TEST_F(Disconnection, AnswersAndFailsWhereItsParentMadeItIgnoreTheSignal) {
  ChildOptions options = this->options();
  options.ignoresBrokenPipe = true;
  start(options);
  hangUp();
  sendLine(R"({"id":1})");
  expectDisconnected(1);
}

TEST_F(Disconnection, DiesOfTheBrokenPipeSignalWhenTheClientIsGone) {
  start();
  bridge().closeOutput();
  sendLine(R"({"id":1})");
  takeEnvelope();
  sendReply(R"({"id":1,"result":1})");
  EXPECT_EQ(bridge().wait().signal, SIGPIPE);
}

TEST_F(Disconnection, FailsWhenStandardOutputCannotBeWritten) {
  ChildOptions options = this->options();
  options.closedStreams = {1};
  start(options);
  sendLine(R"({"id":1})");
  takeEnvelope();
  sendReply(R"({"id":1,"result":1})");
  expectFailure("Could not write to standard output (errno " + std::to_string(EBADF) + ").");
}

}  // namespace
}  // namespace ormel::testing
