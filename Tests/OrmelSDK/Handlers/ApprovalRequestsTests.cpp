#include "OrmelSDK/Handlers/ApprovalRequests.h"

#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Handlers/DynamicTool.h"
#include "OrmelSDK/Input/TurnEnvironment.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using tests::printed;

TEST(CommandApprovalKind, TellsTheWordsThatItDoesNotKnow) {
  EXPECT_FALSE(CommandApprovalKind::command.isUnknown());
  EXPECT_FALSE(CommandApprovalKind::writeStdin.isUnknown());
  for (const char* word : {"Command", "write_stdin", "future", ""}) {
    EXPECT_TRUE(CommandApprovalKind(word).isUnknown()) << word;
  }
}

TEST(ApprovalRequests, BeginWithNothingGranted) {
  const CommandApprovalRequest request;
  EXPECT_EQ(request.kind, CommandApprovalKind::command);
  EXPECT_EQ(request.additionalPermissions, RequestPermissionProfile());
  EXPECT_TRUE(request.availableDecisions.empty());
  EXPECT_EQ(PermissionsApprovalResponse().scope, PermissionGrantScope::turn);
  EXPECT_EQ(PermissionsApprovalResponse().permissions, GrantedPermissionProfile());
}

TEST(ApprovalRequests, CompareByValue) {
  CommandApprovalRequest command;
  command.availableDecisions = {OrmelApprovalDecision(JSONValue::decode(R"({"acceptWithAmendment":{"x":1}})"))};
  CommandApprovalRequest otherCommand = command;
  EXPECT_EQ(command, otherCommand);
  otherCommand.kind = "future";
  EXPECT_NE(command, otherCommand);

  FileChangeApprovalRequest change;
  change.changes.emplace_back().path = "/a";
  FileChangeApprovalRequest otherChange = change;
  EXPECT_EQ(change, otherChange);
  otherChange.changes.front().path = "/b";
  EXPECT_NE(change, otherChange);

  PermissionsApprovalRequest permissions;
  permissions.permissions.network = JSONValue(true);
  EXPECT_NE(permissions, PermissionsApprovalRequest());
}

TEST(ApprovalRequests, PrintOnOneLine) {
  CommandApprovalRequest command;
  command.threadID = "t";
  command.command = "ls\n";
  command.commandActions = {JSONValue(1)};
  command.additionalPermissions.network = JSONValue(true);
  command.availableDecisions = {OrmelApprovalDecision::accept, OrmelApprovalDecision::cancel};
  EXPECT_EQ(
      printed(command),
      R"(CommandApprovalRequest {"kind":"command","threadID":"t","turnID":"","itemID":"","command":"ls\n",)"
      R"("commandActions":[1],"additionalPermissions":{"network":true},"availableDecisions":["accept","cancel"]})");

  FileChangeApprovalRequest change;
  change.reason = "r";
  EXPECT_EQ(
      printed(change),
      R"(FileChangeApprovalRequest {"threadID":"","turnID":"","itemID":"","reason":"r","changes":[],"availableDecisions":[]})");
  EXPECT_EQ(printed(PermissionsApprovalRequest()),
            R"(PermissionsApprovalRequest {"threadID":"","turnID":"","itemID":"","permissions":{}})");
  EXPECT_EQ(printed(PermissionsApprovalResponse()), R"(PermissionsApprovalResponse {"permissions":{},"scope":"turn"})");
}

TEST(DynamicTool, ComparesAndPrintsWhatIsPlain) {
  DynamicToolSpec spec{"files", "read", "Reads a file", JSONValue::object(), true};
  EXPECT_EQ(
      printed(spec),
      R"(DynamicToolSpec {"namespace":"files","name":"read","description":"Reads a file","inputSchema":{},"deferLoading":true})");
  EXPECT_NE(spec, DynamicToolSpec());
  EXPECT_EQ(printed(DynamicToolCallContext{"t", "u", "c", std::nullopt, "read", JSONValue(1)}),
            R"(DynamicToolCallContext {"threadID":"t","turnID":"u","callID":"c","tool":"read","arguments":1})");
  EXPECT_EQ(printed(DynamicToolResult()), R"(DynamicToolResult {"contentItems":[],"success":false})");
  EXPECT_NE(DynamicToolCallContext(), (DynamicToolCallContext{"t", "", "", {}, "", {}}));
  EXPECT_EQ(DynamicToolResult(), DynamicToolResult());
}

TEST(DynamicTool, CarriesACallOut) {
  const DynamicTool tool{{std::nullopt, "echo", "", {}, false}, [](const DynamicToolCallContext& context) {
                           DynamicToolResult result;
                           result.success = context.tool == "echo";
                           return result;
                         }};
  DynamicToolCallContext context;
  context.tool = "echo";
  EXPECT_TRUE(tool.execute(context).get().success);
}

TEST(TurnEnvironment, ComparesAndPrints) {
  EXPECT_EQ(printed(TurnEnvironment{"e", "/w"}), R"(TurnEnvironment {"environmentID":"e","workingDirectory":"/w"})");
  EXPECT_NE((TurnEnvironment{"e", "/w"}), TurnEnvironment());
}

}  // namespace
