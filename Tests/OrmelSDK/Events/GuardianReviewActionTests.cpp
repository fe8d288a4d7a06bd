#include "OrmelSDK/Events/GuardianReviewAction.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

struct ActionExample {
  GuardianApprovalReviewAction action;
  std::string_view text;
};

std::vector<ActionExample> actionExamples() {
  return {
      {GuardianCommandReviewAction{GuardianCommandSource::unifiedExec, "ls", "/"},
       R"({"type":"command","source":"unifiedExec","command":"ls","cwd":"/"})"},
      {GuardianExecveReviewAction{GuardianCommandSource::shell, "/bin/ls", {"ls", "-l"}, "/"},
       R"({"type":"execve","source":"shell","program":"/bin/ls","argv":["ls","-l"],"cwd":"/"})"},
      {GuardianApplyPatchReviewAction{"/", {"a", "b"}}, R"({"type":"applyPatch","cwd":"/","files":["a","b"]})"},
      {GuardianNetworkAccessReviewAction{"t", "h", NetworkApprovalProtocol::socks5Tcp, 443},
       R"({"type":"networkAccess","target":"t","host":"h","protocol":"socks5Tcp","port":443})"},
      {GuardianMcpToolCallReviewAction{"s", "tool", "c", "C", "T"},
       R"({"type":"mcpToolCall","server":"s","toolName":"tool","connectorId":"c","connectorName":"C",
           "toolTitle":"T"})"},
      {GuardianMcpToolCallReviewAction{"s", "tool", {}, {}, {}},
       R"({"type":"mcpToolCall","server":"s","toolName":"tool"})"},
      {GuardianRequestPermissionsReviewAction{"r", {JSONValue(true), JSONValue::decode(R"({"read":["/"]})")}},
       R"({"type":"requestPermissions","reason":"r","permissions":{"network":true,"fileSystem":{"read":["/"]}}})"},
      {GuardianRequestPermissionsReviewAction{}, R"({"type":"requestPermissions","permissions":{}})"},
      {GuardianWriteStdinReviewAction{"a", "p", "y\n", "/"},
       R"({"type":"writeStdin","approvalId":"a","processId":"p","stdin":"y\n","cwd":"/"})"},
      {GuardianUnknownReviewAction{"somethingNew"}, R"({"type":"somethingNew"})"},
  };
}

TEST(GuardianReviewAction, FollowsItsTables) {
  tests::checkRecord<GuardianCommandReviewAction>(R"({"source":"unifiedExec","command":"ls","cwd":"/"})");
  tests::checkRecord<GuardianExecveReviewAction>(R"({"source":"shell","program":"p","argv":["a"],"cwd":"/"})");
  tests::checkRecord<GuardianApplyPatchReviewAction>(R"({"cwd":"/","files":["a"]})");
  tests::checkRecord<GuardianNetworkAccessReviewAction>(R"({"target":"t","host":"h","protocol":"http","port":80})");
  tests::checkRecord<GuardianMcpToolCallReviewAction>(
      R"({"server":"s","toolName":"t","connectorId":"c","connectorName":"C","toolTitle":"T"})");
  tests::checkRecord<GuardianRequestPermissionsReviewAction>(R"({"reason":"r","permissions":{"network":true}})");
  tests::checkRecord<GuardianWriteStdinReviewAction>(R"({"approvalId":"a","processId":"p","stdin":"y","cwd":"/"})");
  tests::checkRecord<GuardianUnknownReviewAction>(R"({"type":"somethingNew"})");
}

TEST(GuardianReviewAction, IsReadAndWrittenUnderItsType) {
  for (const auto& [action, text] : actionExamples()) {
    EXPECT_EQ(decoded<GuardianApprovalReviewAction>(text), action);
    tests::expectWritten(action, text);
  }
}

TEST(GuardianReviewAction, KeepsOnlyTheTypeOfWhatItDoesNotKnow) {
  const auto action = decoded<GuardianApprovalReviewAction>(R"({"type":"somethingNew","cwd":"/","more":[1]})");
  EXPECT_EQ(action, GuardianUnknownReviewAction{"somethingNew"});
  tests::expectWritten(action, R"({"type":"somethingNew"})");
}

TEST(GuardianReviewAction, ComparesTheTypeExactly) {
  for (const char* type : {"Command", "apply_patch", " execve", "network-access", ""}) {
    EXPECT_EQ(decode<GuardianApprovalReviewAction>(JSONValue::object({{"type", type}})),
              GuardianUnknownReviewAction{type});
  }
}

TEST(GuardianReviewAction, FailsWithoutATypeOrWithAMalformedBody) {
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>("{}"), "No value is associated with the key 'type'.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>(R"({"type":3})"), "Expected String but found a number.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>("[]"), "Expected GuardianApprovalReviewAction but found an array.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>(R"({"type":"command","source":"shell","cwd":"/"})"),
            "No value is associated with the key 'command'.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>(R"({"type":"mcpToolCall","server":"s"})"),
            "No value is associated with the key 'tool_name'.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>(
                R"({"type":"networkAccess","target":"t","host":"h","protocol":"http","port":"80"})"),
            "Expected Int but found a string.");
  EXPECT_EQ(failureOf<GuardianApprovalReviewAction>(R"({"type":"execve","source":"shell","program":"p","argv":["a",1],
                                                        "cwd":"/"})"),
            "Expected String but found a number.");
}

TEST(GuardianReviewAction, ReadsTheNetworksProtocolUnderItsKeyInTheServersWords) {
  const auto action = decoded<GuardianApprovalReviewAction>(
      R"({"type":"networkAccess","target":"t","host":"h","protocol":"quic","port":80})");
  EXPECT_EQ(std::get<GuardianNetworkAccessReviewAction>(action.value).protocolType, NetworkApprovalProtocol::socks5Udp);
  tests::expectWritten(action, R"({"type":"networkAccess","target":"t","host":"h","protocol":"socks5Udp","port":80})");
}

TEST(GuardianReviewAction, ReadsTheOldSpellingsOfAToolCall) {
  EXPECT_EQ(decoded<GuardianApprovalReviewAction>(R"({"type":"mcpToolCall","server":"s","tool_name":"t",
              "connector_id":"c","connector_name":"C","tool_title":"T"})"),
            (GuardianMcpToolCallReviewAction{"s", "t", "c", "C", "T"}));
  EXPECT_EQ(decoded<GuardianApprovalReviewAction>(R"({"type":"mcpToolCall","server":"s","tool_name":"snake",
              "toolName":"camel"})"),
            (GuardianMcpToolCallReviewAction{"s", "camel", {}, {}, {}}));
}

TEST(GuardianCommandSource, IsUnifiedExecutionUnlessItIsAShell) {
  tests::checkWords<GuardianCommandSource>(
      {{GuardianCommandSource::shell, "shell"}, {GuardianCommandSource::unifiedExec, "unifiedExec"}});
  tests::checkTolerance<GuardianCommandSource>({{"SHELL", GuardianCommandSource::shell},
                                                {" sh-ell ", GuardianCommandSource::shell},
                                                {"unified_exec", GuardianCommandSource::unifiedExec},
                                                {"weird", GuardianCommandSource::unifiedExec},
                                                {"", GuardianCommandSource::unifiedExec}});
}

TEST(NetworkApprovalProtocol, IsAnUnconnectedSocketUnlessItIsKnown) {
  tests::checkWords<NetworkApprovalProtocol>({{NetworkApprovalProtocol::http, "http"},
                                              {NetworkApprovalProtocol::https, "https"},
                                              {NetworkApprovalProtocol::socks5Tcp, "socks5Tcp"},
                                              {NetworkApprovalProtocol::socks5Udp, "socks5Udp"}});
  tests::checkTolerance<NetworkApprovalProtocol>({{"HTTP", NetworkApprovalProtocol::http},
                                                  {"Https\n", NetworkApprovalProtocol::https},
                                                  {"socks5_tcp", NetworkApprovalProtocol::socks5Tcp},
                                                  {"SOCKS5-UDP", NetworkApprovalProtocol::socks5Udp},
                                                  {"quic", NetworkApprovalProtocol::socks5Udp},
                                                  {"", NetworkApprovalProtocol::socks5Udp}});
}

}  // namespace
