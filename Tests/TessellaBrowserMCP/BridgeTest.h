#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/ChildProgram.h"
#include "Support/Frames.h"
#include "Support/TemporaryDirectory.h"
#include "Support/UnixListener.h"

namespace ormel::testing {

inline constexpr std::string_view errorPrefix = "Tessella browser MCP bridge: ";

inline constexpr std::string_view disconnectedText = "Kestrion's browser socket disconnected.";
inline constexpr std::string_view tooLargeText = "The browser message exceeded the bridge limit.";
inline constexpr std::string_view invalidResponseText = "Kestrion returned an invalid browser response.";

inline ChildOptions bridgeOptions(const std::string& socketPath) {
  ChildOptions options;
  options.environment = {"KESTRION_BROWSER_SOCKET=" + socketPath, "KESTRION_WORKSPACE_PATH=/work space/é",
                         "KESTRION_BROWSER_TOKEN=secret"};
  return options;
}

/// The one line that the bridge writes to standard error before it fails.
inline std::string failureLine(std::string_view text) { return std::string(errorPrefix).append(text).append("\n"); }

inline JSONValue errorAnswer(JSONValue id, std::string_view message) {
  return JSONValue::object({{"jsonrpc", "2.0"},
                            {"id", std::move(id)},
                            {"error", JSONValue::object({{"code", -32603}, {"message", message}})}});
}

/// The decoder's error text for a text that it refuses.
inline std::string decodingFailure(std::string_view text) {
  try {
    JSONValue::decode(text);
  } catch (const Error& error) {
    return error.what();
  }
  return "was decoded";
}

inline std::string nestedArrays(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

/// A real bridge process on a real socket whose other end, the host application, is the test's to play.
class BridgeTest : public ::testing::Test {
 protected:
  std::string socketPath() const { return directory_.path() / "socket"; }
  ChildOptions options() const { return bridgeOptions(socketPath()); }

  void start() { start(options()); }
  void start(const ChildOptions& options) {
    bridge_.emplace(ORMEL_BRIDGE_EXECUTABLE, options);
    host_ = listener_.accept();
  }

  ChildProgram& bridge() { return *bridge_; }
  int host() const { return host_.number(); }

  void sendLine(std::string_view line) { bridge().write(std::string(line).append("\n")); }

  /// The next envelope that the host gets.
  JSONValue takeEnvelope() { return JSONValue::decode(readFrame(host())); }

  /// The message in the next envelope, whose id must be `id`.
  JSONValue takeMessage(double id) {
    const JSONValue envelope = takeEnvelope();
    EXPECT_EQ(*envelope.find("id"), JSONValue(id));
    return *envelope.find("params")->find("message");
  }

  void sendReply(std::string_view body) { sendRaw(frame(body)); }
  void sendRaw(std::string_view bytes) { writeAll(host(), bytes); }
  void hangUp() { host_.reset(); }

  JSONValue takeAnswer() {
    const std::string line = bridge().readLine();
    EXPECT_TRUE(line.ends_with('\n')) << "not a whole line: " << line;
    return JSONValue::decode(line);
  }

  /// Makes one whole exchange: the bridge must be at its envelope `id`, with nothing unread in either direction.
  void expectServing(int id) {
    const std::string text = std::to_string(id);
    sendLine(R"({"id":"probe","n":)" + text + "}");
    EXPECT_EQ(takeMessage(id), JSONValue::object({{"id", "probe"}, {"n", id}}));
    sendReply(R"({"id":)" + text + R"(,"result":"probed )" + text + "\"}");
    EXPECT_EQ(takeAnswer(), JSONValue("probed " + text));
  }

  /// Ends the input; the bridge must end well and have nothing more to say.
  void expectCleanEnd() {
    bridge().closeInput();
    EXPECT_EQ(bridge().readRestOfOutput(), "");
    EXPECT_EQ(bridge().readErrors(), "");
    EXPECT_EQ(bridge().wait().status, 0);
  }

  /// The bridge must fail, its remaining output being `errorLine`.
  void expectFailure(std::string_view text) {
    EXPECT_EQ(bridge().readRestOfOutput(), "");
    EXPECT_EQ(bridge().readErrors(), failureLine(text));
    EXPECT_EQ(bridge().wait().status, 1);
  }

  TemporaryDirectory directory_;
  UnixListener listener_{socketPath()};
  std::optional<ChildProgram> bridge_;
  Descriptor host_;
};

}  // namespace ormel::testing
