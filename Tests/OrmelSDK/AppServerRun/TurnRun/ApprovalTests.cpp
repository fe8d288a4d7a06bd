#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/AskedRun.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::json;

constexpr const char* commandApproval = "item/commandExecution/requestApproval";
constexpr const char* fileChange = "item/fileChange/requestApproval";
constexpr const char* permissions = "item/permissions/requestApproval";

std::string offering(std::string_view decisions) { return R"({"availableDecisions":)" + std::string(decisions) + "}"; }

/// Handlers that decide so.
ThreadOptions deciding(const JSONValue& decision) {
  ThreadOptions options;
  options.commandApprovalHandler = [decision](const CommandApprovalRequest&) {
    return OrmelApprovalDecision(decision);
  };
  options.fileChangeApprovalHandler = [decision](FileChangeApprovalRequest) -> Task<OrmelApprovalDecision> {
    co_return OrmelApprovalDecision(decision);
  };
  return options;
}

TEST(AppServerTurnRunApprovals, AreClosedByTheMostRestrictiveDecisionThatIsOffered) {
  const std::pair<const char*, const char*> cases[] = {
      {"[]", "decline"},
      {"null", "decline"},
      {R"(["accept"])", "decline"},
      {R"(["accept","cancel"])", "cancel"},
      {R"(["accept","cancel","decline"])", "decline"},
      {R"(["Cancel"])", "decline"},
      {R"([{"cancel":{}}])", "decline"},
      {R"([null,7,"cancel"])", "cancel"},
  };
  for (const auto& [offered, decision] : cases) {
    for (const char* method : {commandApproval, fileChange}) {
      EXPECT_EQ(resultOf(method, offering(offered)), JSONValue::object({{"decision", decision}})) << offered;
    }
  }
}

TEST(AppServerTurnRunApprovals, ReadWhatIsOfferedInEitherSpelling) {
  EXPECT_EQ(resultOf(commandApproval, R"({"availableDecisions":["cancel"],"available_decisions":["decline"]})"),
            json(R"({"decision":"cancel"})"));
  EXPECT_EQ(resultOf(commandApproval, R"({"availableDecisions":"decline","available_decisions":["cancel"]})"),
            json(R"({"decision":"cancel"})"));
}

TEST(AppServerTurnRunApprovals, PassADecisionOnThatIsOffered) {
  const std::string special = R"({"acceptWithRule":{"rule":["git",1,null]}})";
  const std::pair<std::string, std::string> cases[] = {
      {"[]", R"("accept")"},
      {"[]", special},
      {R"(["accept","decline"])", R"("accept")"},
      {R"(["decline",)" + special + "]", special},
      {R"(["accept","cancel"])", R"("cancel")"},
      {"[]", R"("acceptForSession")"},
  };
  for (const auto& [offered, decision] : cases) {
    for (const char* method : {commandApproval, fileChange}) {
      EXPECT_EQ(resultOf(method, offering(offered), deciding(json(decision))),
                JSONValue::object({{"decision", json(decision)}}))
          << decision;
    }
  }
}

TEST(AppServerTurnRunApprovals, CloseADecisionThatIsNotOffered) {
  const std::pair<const char*, const char*> cases[] = {
      {R"(["decline"])", "decline"},     {R"(["cancel"])", "cancel"},   {R"(["acceptForSession"])", "decline"},
      {R"([{"accept":{}}])", "decline"}, {R"(["accept "])", "decline"},
  };
  for (const auto& [offered, decision] : cases) {
    for (const char* method : {commandApproval, fileChange}) {
      EXPECT_EQ(resultOf(method, offering(offered), deciding("accept")), JSONValue::object({{"decision", decision}}))
          << offered;
    }
  }
}

TEST(AppServerTurnRunApprovals, GoOnAfterAHandlerThatFailed) {
  SimulatedScheduler scheduler(1);
  ThreadOptions options;
  int calls = 0;
  options.fileChangeApprovalHandler = [&calls](const FileChangeApprovalRequest&) -> OrmelApprovalDecision {
    if (++calls == 1) throw std::runtime_error("no");
    return OrmelApprovalDecision::accept;
  };
  AskedRun asked(scheduler, options);
  asked.ask(fileChange, "{}", 1);
  asked.ask(fileChange, "{}", 2);
  EXPECT_EQ(asked.answers(),
            jsonList({R"({"id":1,"result":{"decision":"decline"}})", R"({"id":2,"result":{"decision":"accept"}})"}));
  asked.engine.completeTurn();
  EXPECT_THAT(asked.words(), ElementsAre("turn.completed", "end"));
}

CommandApprovalRequest commandRequestOf(std::string_view params) {
  CommandApprovalRequest seen;
  ThreadOptions options;
  options.commandApprovalHandler = [&seen](const CommandApprovalRequest& request) {
    seen = request;
    return OrmelApprovalDecision::accept;
  };
  (void)answerTo(commandApproval, params, options);
  return seen;
}

/// The request of which nothing is said.
CommandApprovalRequest bareCommandRequest() {
  CommandApprovalRequest request;
  request.threadID = "t1";
  request.turnID = "u1";
  return request;
}

CommandApprovalRequest fullCommandRequest() {
  CommandApprovalRequest request;
  request.kind = CommandApprovalKind::writeStdin;
  request.approvalID = "a";
  request.environmentID = "e";
  request.threadID = "t";
  request.turnID = "u";
  request.itemID = "i";
  request.command = "make all";
  request.workingDirectory = "/w";
  request.reason = "r";
  request.commandActions = {JSONValue(1), json(R"({"type":"read"})")};
  request.additionalPermissions = {json(R"({"enabled":true})"), json("null")};
  request.availableDecisions = {json(R"("accept")"), json(R"({"x":1})"), json("null")};
  return request;
}

TEST(AppServerTurnRunCommandApproval, ReadsTheFirstSpelling) {
  EXPECT_EQ(commandRequestOf(R"({"kind":"writeStdin","approvalId":"a","approval_id":"x","environmentId":"e",
      "environment_id":"x","threadId":"t","thread_id":"x","turnId":"u","turn_id":"x","itemId":"i","item_id":"x",
      "command":"make all","cwd":"/w","workingDirectory":"x","working_directory":"x","reason":"r",
      "commandActions":[1,{"type":"read"}],"command_actions":[],
      "additionalPermissions":{"network":{"enabled":true},"fileSystem":null},"additional_permissions":{},
      "availableDecisions":["accept",{"x":1},null],"available_decisions":[]})"),
            fullCommandRequest());
}

TEST(AppServerTurnRunCommandApproval, ReadsALaterSpellingWhereTheFirstIsNoText) {
  EXPECT_EQ(commandRequestOf(R"({"kind":"writeStdin","approvalId":1,"approval_id":"a","environmentId":null,
      "environment_id":"e","threadId":[],"thread_id":"t","turnId":{},"turn_id":"u","itemId":true,"item_id":"i",
      "command":["make","all"],"cwd":7,"workingDirectory":8,"working_directory":"/w","reason":"r",
      "commandActions":{},"command_actions":[1,{"type":"read"}],
      "additionalPermissions":7,"additional_permissions":{"network":{"enabled":true},"file_system":null},
      "availableDecisions":"accept","available_decisions":["accept",{"x":1},null]})"),
            fullCommandRequest());
}

TEST(AppServerTurnRunCommandApproval, FillsInWhatIsNotSaid) {
  EXPECT_EQ(commandRequestOf("{}"), bareCommandRequest());
  EXPECT_EQ(commandRequestOf(R"({"kind":7,"approvalId":1,"environmentId":1,"threadId":1,"turnId":1,"itemId":1,
      "command":1,"cwd":1,"reason":1,"commandActions":1,"additionalPermissions":1,"availableDecisions":1})"),
            bareCommandRequest());
}

TEST(AppServerTurnRunCommandApproval, KeepsAKindThatNobodyKnows) {
  EXPECT_EQ(commandRequestOf(R"({"kind":"command"})").kind, CommandApprovalKind::command);
  const auto kind = commandRequestOf(R"({"kind":"write_stdin"})").kind;
  EXPECT_TRUE(kind.isUnknown());
  EXPECT_EQ(kind.rawValue, "write_stdin");
}

TEST(AppServerTurnRunCommandApproval, ShowsACommandAsOneLine) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {R"("ls -l")", "ls -l"},
      {R"(["ls","-l","a b"])", "ls -l a b"},
      {R"(["ls"])", "ls"},
      {R"(["","x"])", " x"},
      {"[]", ""},
      {R"(["ls",7])", std::nullopt},
      {"null", std::nullopt},
      {"{}", std::nullopt},
  };
  for (const auto& [text, shown] : cases) {
    EXPECT_EQ(commandRequestOf(std::string(R"({"command":)") + text + "}").command, shown) << text;
  }
  EXPECT_EQ(commandRequestOf(R"({"cwd":null,"workingDirectory":"/w"})").workingDirectory, "/w");
}

FileChangeApprovalRequest fileChangeRequestOf(const std::vector<std::string>& notifications, std::string_view params) {
  FileChangeApprovalRequest seen;
  ThreadOptions options;
  options.fileChangeApprovalHandler = [&seen](const FileChangeApprovalRequest& request) {
    seen = request;
    return OrmelApprovalDecision::accept;
  };
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler, options);
  for (const std::string& text : notifications) asked.engine.write(json(text).encode() + "\n");
  asked.ask(fileChange, params);
  EXPECT_EQ(asked.answers().size(), 1U);
  return seen;
}

TEST(AppServerTurnRunFileChangeApproval, ReadsEitherSpelling) {
  const FileChangeApprovalRequest full{"t", "u", "i", "r", "/g", {}, {json(R"("accept")"), json("[]")}};
  EXPECT_EQ(fileChangeRequestOf({}, R"({"threadId":"t","thread_id":"x","turnId":"u","turn_id":"x","itemId":"i",
      "item_id":"x","reason":"r","grantRoot":"/g","grant_root":"x","availableDecisions":["accept",[]]})"),
            full);
  EXPECT_EQ(fileChangeRequestOf({}, R"({"threadId":1,"thread_id":"t","turn_id":"u","item_id":"i","reason":"r",
      "grantRoot":1,"grant_root":"/g","available_decisions":["accept",[]]})"),
            full);
  EXPECT_EQ(fileChangeRequestOf({}, "{}"), (FileChangeApprovalRequest{"t1", "u1", "", {}, {}, {}, {}}));
}

TEST(AppServerTurnRunFileChangeApproval, ShowsTheChangesAsTheyAreKnown) {
  const std::string item =
      R"({"method":"item/started","params":{"item":{"type":"fileChange","id":"f","changes":[{"path":"a","kind":"add"}]}}})";
  const std::string patch =
      R"({"method":"item/fileChange/patchUpdated","params":{"itemId":"f","changes":[{"path":"b","kind":"delete"}]}})";
  const std::string other = R"({"method":"item/started","params":{"item":{"type":"sleep","id":"f"}}})";
  using Changes = std::vector<FileUpdateChange>;
  EXPECT_EQ(fileChangeRequestOf({item}, R"({"itemId":"f"})").changes, (Changes{{"a", PatchChangeKind::add}}));
  EXPECT_EQ(fileChangeRequestOf({item, patch}, R"({"item_id":"f"})").changes,
            (Changes{{"b", PatchChangeKind::delete_}}));
  EXPECT_THAT(fileChangeRequestOf({item, other}, R"({"itemId":"f"})").changes, IsEmpty());
  EXPECT_THAT(fileChangeRequestOf({item}, R"({"itemId":"g"})").changes, IsEmpty());
  EXPECT_THAT(fileChangeRequestOf({item}, "{}").changes, IsEmpty());
}

PermissionsApprovalRequest permissionsRequestOf(std::string_view params) {
  PermissionsApprovalRequest seen;
  ThreadOptions options;
  options.permissionsApprovalHandler = [&seen](const PermissionsApprovalRequest& request) {
    seen = request;
    return PermissionsApprovalResponse();
  };
  EXPECT_EQ(resultOf(permissions, params, options), json(R"({"permissions":{},"scope":"turn"})"));
  return seen;
}

TEST(AppServerTurnRunPermissionsApproval, ReadsCamelCaseOnly) {
  EXPECT_EQ(permissionsRequestOf(R"({"threadId":"t","turnId":"u","itemId":"i","reason":"r",
      "permissions":{"network":1,"fileSystem":{"write":["/"]}}})"),
            (PermissionsApprovalRequest{"t", "u", "i", "r", {JSONValue(1), json(R"({"write":["/"]})")}}));
  const PermissionsApprovalRequest bare{"t1", "u1", "", {}, {}};
  EXPECT_EQ(permissionsRequestOf("{}"), bare);
  EXPECT_EQ(permissionsRequestOf(R"({"thread_id":"t","turn_id":"u","item_id":"i","reason":7,"permissions":"all"})"),
            bare);
}

TEST(AppServerTurnRunPermissionsApproval, GrantsWhatTheHandlerGrants) {
  const std::pair<PermissionsApprovalResponse, const char*> cases[] = {
      {{{json(R"({"enabled":true})"), json(R"({"write":["/"]})")}, PermissionGrantScope::session},
       R"({"permissions":{"network":{"enabled":true},"fileSystem":{"write":["/"]}},"scope":"session"})"},
      {{{{}, JSONValue()}, PermissionGrantScope::turn}, R"({"permissions":{"fileSystem":null},"scope":"turn"})"},
      {{}, R"({"permissions":{},"scope":"turn"})"},
  };
  for (const auto& [response, result] : cases) {
    ThreadOptions options;
    options.permissionsApprovalHandler = [given = response](const PermissionsApprovalRequest&) { return given; };
    EXPECT_EQ(resultOf(permissions, R"({"permissions":{"network":{}}})", options), json(result));
  }
}

}  // namespace
