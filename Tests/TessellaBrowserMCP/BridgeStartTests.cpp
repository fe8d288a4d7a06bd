#include <sys/socket.h>

#include <cerrno>
#include <fstream>

#include "BridgeTest.h"

namespace ormel::testing {
namespace {

struct FailedStart {
  std::string output;
  std::string errors;
  std::optional<int> status;
};

FailedStart startAndFail(const ChildOptions& options) {
  ChildProgram bridge(ORMEL_BRIDGE_EXECUTABLE, options);
  FailedStart failed;
  failed.output = bridge.readRestOfOutput();
  failed.errors = bridge.readErrors();
  failed.status = bridge.wait().status;
  return failed;
}

void expectStartFailure(const ChildOptions& options, std::string_view text) {
  const FailedStart failed = startAndFail(options);
  EXPECT_EQ(failed.output, "");
  EXPECT_EQ(failed.errors, failureLine(text));
  EXPECT_EQ(failed.status, 1);
}

std::string connectFailedText(int errorNumber) {
  return "Could not connect to Kestrion's browser socket (errno " + std::to_string(errorNumber) + ").";
}

using BridgeStart = BridgeTest;

TEST_F(BridgeStart, NamesTheSocketVariableWhenAllAreMissing) {
  expectStartFailure(ChildOptions(), "Missing KESTRION_BROWSER_SOCKET.");
}

TEST_F(BridgeStart, NamesTheWorkspaceVariableWhenOnlyTheSocketIsSet) {
  ChildOptions options = this->options();
  options.environment.resize(1);
  expectStartFailure(options, "Missing KESTRION_WORKSPACE_PATH.");
  EXPECT_FALSE(listener_.hasConnectionWaiting());
}

TEST_F(BridgeStart, NamesTheTokenVariableWhenOnlyItIsMissing) {
  ChildOptions options = this->options();
  options.environment.resize(2);
  expectStartFailure(options, "Missing KESTRION_BROWSER_TOKEN.");
  EXPECT_FALSE(listener_.hasConnectionWaiting());
}

TEST_F(BridgeStart, TakesAnEmptyVariableAsMissing) {
  ChildOptions options = this->options();
  options.environment[1] = "KESTRION_WORKSPACE_PATH=";
  expectStartFailure(options, "Missing KESTRION_WORKSPACE_PATH.");
}

TEST_F(BridgeStart, ReportsTheErrnoWhenThereIsNoSocketAtThePath) {
  expectStartFailure(bridgeOptions(directory_.path() / "absent"), connectFailedText(ENOENT));
}

TEST_F(BridgeStart, ReportsTheErrnoWhenThePathIsNoSocket) {
  const std::string path = directory_.path() / "file";
  std::ofstream(path) << "text";
  expectStartFailure(bridgeOptions(path), connectFailedText(ECONNREFUSED));
}

TEST_F(BridgeStart, FailsToConnectBeforeItLooksAtItsInput) {
  ChildProgram bridge(ORMEL_BRIDGE_EXECUTABLE, bridgeOptions(directory_.path() / "absent"));
  bridge.closeInput();
  EXPECT_EQ(bridge.readRestOfOutput(), "");
  EXPECT_EQ(bridge.readErrors(), failureLine(connectFailedText(ENOENT)));
  EXPECT_EQ(bridge.wait().status, 1);
}

std::string pathOfSize(const TemporaryDirectory& directory, std::size_t size) {
  std::string path = directory.path() / "s";
  return path.append(size - path.size(), 's');
}

TEST_F(BridgeStart, ConnectsToAPathOf103Bytes) {
  UnixListener listener(pathOfSize(directory_, 103));
  bridge_.emplace(ORMEL_BRIDGE_EXECUTABLE, bridgeOptions(listener.path()));
  host_ = listener.accept();
  expectServing(1);
  expectCleanEnd();
}

TEST_F(BridgeStart, RefusesAPathOf104BytesWithoutConnecting) {
  UnixListener listener(pathOfSize(directory_, 104));
  expectStartFailure(bridgeOptions(listener.path()), "The Kestrion browser socket path is invalid.");
  EXPECT_FALSE(listener.hasConnectionWaiting());
}

TEST_F(BridgeStart, EndsWellWhenTheInputIsAtItsEndFromTheStart) {
  start();
  expectCleanEnd();
  EXPECT_EQ(readToEnd(host()), "");
}

TEST_F(BridgeStart, EndsWellWithoutAStandardInput) {
  ChildOptions options = this->options();
  options.closedStreams = {0};
  start(options);
  // A bridge that took its socket for the missing input would wait for this line; one that has ended refuses it.
  constexpr std::string_view line = "{\"id\":1}\n";
  (void)::send(host(), line.data(), line.size(), MSG_NOSIGNAL);
  expectCleanEnd();
}

TEST_F(BridgeStart, SendsNothingToTheHostBeforeARequest) {
  start();
  EXPECT_FALSE(isReadable(host()));
  expectServing(1);
}

TEST_F(BridgeStart, ConnectsAStreamThatTheHostSeesAsOne) {
  start();
  int type = 0;
  socklen_t size = sizeof type;
  ASSERT_EQ(getsockopt(host(), SOL_SOCKET, SO_TYPE, &type, &size), 0);
  EXPECT_EQ(type, SOCK_STREAM);
}

}  // namespace
}  // namespace ormel::testing
