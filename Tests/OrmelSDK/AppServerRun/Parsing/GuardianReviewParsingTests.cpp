#include "OrmelSDK/AppServerRun/Parsing/GuardianReviewParsing.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "OrmelSDK/Base/ThreadRunError.h"

namespace {

using namespace ormel;

/// The message of the failed stream, or "read" if there was none.
std::string failureOf(const std::function<void()>& reading) {
  try {
    reading();
  } catch (const ThreadRunError& error) {
    EXPECT_EQ(error.kind(), ThreadRunError::Kind::streamError);
    return error.what();
  }
  return "read";
}

GuardianApprovalReview review(std::string_view text) {
  return detail::parseGuardianApprovalReview(JSONValue::decode(text));
}

GuardianApprovalReviewAction action(std::string_view text) {
  return detail::parseGuardianApprovalReviewAction(JSONValue::decode(text));
}

ThreadEvent notification(std::string_view text, bool isCompleted) {
  const JSONValue params = JSONValue::decode(text);
  return detail::parseGuardianApprovalReviewNotification(*params.objectValue(), isCompleted);
}

std::string notificationFailure(std::string_view text) {
  const std::string started = failureOf([text] { (void)notification(text, false); });
  EXPECT_EQ(started, failureOf([text] { (void)notification(text, true); }));
  return started;
}

std::string reviewFailure(std::string_view text) {
  return failureOf([text] { (void)review(text); });
}

std::string actionFailure(std::string_view text) {
  return failureOf([text] { (void)action(text); });
}

TEST(GuardianReviewNotification, ReadsTheStartOfAReview) {
  EXPECT_EQ(notification(R"({"threadId":"t","thread_id":"x","turnId":"u","turn_id":"x","targetItemId":"i",
      "target_item_id":"x","reviewId":"r","review_id":"x","review":{"status":"inProgress"},
      "action":{"type":"applyPatch","cwd":"/"}})",
                         false),
            (GuardianApprovalReviewStartedEvent{"t",
                                                "u",
                                                "i",
                                                "r",
                                                {GuardianApprovalReviewStatus::inProgress, {}, {}, {}, {}},
                                                GuardianApplyPatchReviewAction{"/", {}}}));
}

TEST(GuardianReviewNotification, ReadsTheEndOfAReviewInTheOtherSpelling) {
  EXPECT_EQ(notification(R"({"threadId":1,"thread_id":"t","turn_id":"u","review_id":"r","decision_source":" agent ",
      "review":{"status":"approved"},"action":{"type":"applyPatch","cwd":"/"}})",
                         true),
            (GuardianApprovalReviewCompletedEvent{"t",
                                                  "u",
                                                  {},
                                                  "r",
                                                  AutoReviewDecisionSource::agent,
                                                  {GuardianApprovalReviewStatus::approved, {}, {}, {}, {}},
                                                  GuardianApplyPatchReviewAction{"/", {}}}));
}

TEST(GuardianReviewNotification, ReadsTheOtherSpellingOfTheTarget) {
  const auto event = notification(R"({"threadId":"t","turnId":"u","targetItemId":null,"target_item_id":"i",
      "reviewId":"r","review":{"status":"denied"},"action":{"type":"x"}})",
                                  false);
  EXPECT_EQ(std::get<GuardianApprovalReviewStartedEvent>(event.value).targetItemID, "i");
}

TEST(GuardianReviewNotification, KnowsTheAgentAsTheOnlySourceOfADecision) {
  for (const char* source :
       {"", R"("decisionSource":"user",)", R"("decisionSource":5,)", R"("decisionSource":"agent",)"}) {
    const auto event = notification(std::string("{") + source + R"("threadId":"t","turnId":"u","reviewId":"r",
        "review":{"status":"denied"},"action":{"type":"x"}})",
                                    true);
    EXPECT_EQ(std::get<GuardianApprovalReviewCompletedEvent>(event.value).decisionSource,
              AutoReviewDecisionSource::agent);
  }
}

TEST(GuardianReviewNotification, FailsWithoutAnyOfItsParts) {
  EXPECT_EQ(notificationFailure("{}"), "guardian approval review payload missing threadId");
  EXPECT_EQ(notificationFailure(R"({"threadId":1,"thread_id":null})"),
            "guardian approval review payload missing threadId");
  EXPECT_EQ(notificationFailure(R"({"threadId":"t"})"), "guardian approval review payload missing turnId");
  EXPECT_EQ(notificationFailure(R"({"threadId":"t","turnId":"u","review":{},"action":{}})"),
            "guardian approval review payload missing reviewId");
  EXPECT_EQ(notificationFailure(R"({"threadId":"t","turnId":"u","reviewId":"r"})"),
            "guardian approval review payload missing review");
  EXPECT_EQ(notificationFailure(R"({"threadId":"t","turnId":"u","reviewId":"r","review":{"status":"denied"}})"),
            "guardian approval review payload missing action");
}

TEST(GuardianReviewNotification, FailsWithAMalformedReviewOrAction) {
  EXPECT_EQ(notificationFailure(R"({"threadId":"t","turnId":"u","reviewId":"r","review":null})"),
            "guardian approval review missing status");
  EXPECT_EQ(notificationFailure(R"({"threadId":"t","turnId":"u","reviewId":"r","review":{"status":"denied"},
      "action":null})"),
            "guardian approval review action missing type");
}

TEST(GuardianReviewNotification, LetsAnActionOfAnUnknownTypePass) {
  const auto event = notification(R"({"threadId":"t","turnId":"u","reviewId":"r","review":{"status":"denied"},
      "action":{"type":"teleport","to":"moon"}})",
                                  false);
  EXPECT_EQ(std::get<GuardianApprovalReviewStartedEvent>(event.value).action, GuardianUnknownReviewAction{"teleport"});
}

TEST(GuardianReview, ReadsEveryField) {
  EXPECT_EQ(review(R"({"status":"timed_out","riskScore":3,"risk_score":9,"riskLevel":"high","risk_level":"low",
      "userAuthorization":"unknown","user_authorization":"low","rationale":"r"})"),
            (GuardianApprovalReview{GuardianApprovalReviewStatus::timedOut, 3, GuardianRiskLevel::high,
                                    GuardianUserAuthorization::unknown, "r"}));
  EXPECT_EQ(review(R"({"status":"APPROVED","riskScore":1.5,"risk_score":2,"risk_level":"critical",
      "user_authorization":"medium"})"),
            (GuardianApprovalReview{GuardianApprovalReviewStatus::approved,
                                    2,
                                    GuardianRiskLevel::critical,
                                    GuardianUserAuthorization::medium,
                                    {}}));
}

TEST(GuardianReview, DropsRisksAndAuthorizationsThatItDoesNotKnow) {
  const GuardianApprovalReview denied{GuardianApprovalReviewStatus::denied, {}, {}, {}, {}};
  EXPECT_EQ(review(R"({"status":"denied","risk_level":"extreme"})"), denied);
  EXPECT_EQ(review(R"({"status":"denied","riskLevel":"HIGH","risk_level":"low"})"), denied);
  EXPECT_EQ(review(R"({"status":"denied","userAuthorization":"critical","riskScore":"3","rationale":1})"), denied);
}

TEST(GuardianReview, IsAbortedWithAStatusThatNobodyKnows) {
  EXPECT_EQ(review(R"({"status":"approved!"})").status, GuardianApprovalReviewStatus::aborted);
}

TEST(GuardianReview, FailsWithoutAStatus) {
  for (const char* text : {"{}", R"({"status":1})", R"({"status":null})", "null", "[]", "\"denied\""}) {
    EXPECT_EQ(reviewFailure(text), "guardian approval review missing status") << text;
  }
}

TEST(GuardianReviewActions, FailWithoutAType) {
  for (const char* text : {"{}", R"({"type":1})", "null", "[]", "\"command\""}) {
    EXPECT_EQ(actionFailure(text), "guardian approval review action missing type") << text;
  }
}

TEST(GuardianReviewActions, CompareTheirTypeExactly) {
  for (const char* type : {"Command", "apply_patch", "", "teleport"}) {
    EXPECT_EQ(action(JSONValue::object({{"type", type}}).encode()), GuardianUnknownReviewAction{type});
  }
}

TEST(GuardianCommandAction, HasAShellAsItsSourceUnlessItSaysOtherwise) {
  using enum GuardianCommandSource;
  EXPECT_EQ(action(R"({"type":"command","command":"ls","cwd":"/"})"), (GuardianCommandReviewAction{shell, "ls", "/"}));
  EXPECT_EQ(action(R"({"type":"command","source":5,"command":"ls","cwd":"/"})"),
            (GuardianCommandReviewAction{shell, "ls", "/"}));
  EXPECT_EQ(action(R"({"type":"command","source":"unified_exec","command":"ls","cwd":"/"})"),
            (GuardianCommandReviewAction{unifiedExec, "ls", "/"}));
}

TEST(GuardianCommandAction, FailsWithoutItsFields) {
  for (const char* text : {R"({"type":"command","command":"ls"})", R"({"type":"command","cwd":"/"})",
                           R"({"type":"command","command":1,"cwd":"/"})"}) {
    EXPECT_EQ(actionFailure(text), "guardian command review action missing fields") << text;
  }
}

TEST(GuardianExecveAction, KeepsTheTextsOfItsArguments) {
  EXPECT_EQ(action(R"({"type":"execve","source":"SHELL","program":"p","argv":["a",1,"b"],"cwd":"/"})"),
            (GuardianExecveReviewAction{GuardianCommandSource::shell, "p", {"a", "b"}, "/"}));
  EXPECT_EQ(action(R"({"type":"execve","source":"odd","program":"p","argv":[],"cwd":"/"})"),
            (GuardianExecveReviewAction{GuardianCommandSource::unifiedExec, "p", {}, "/"}));
}

TEST(GuardianExecveAction, FailsWithoutItsFields) {
  for (const char* text :
       {R"({"type":"execve","argv":[],"cwd":"/"})", R"({"type":"execve","program":"p","cwd":"/"})",
        R"({"type":"execve","program":"p","argv":"a","cwd":"/"})", R"({"type":"execve","program":"p","argv":[]})"}) {
    EXPECT_EQ(actionFailure(text), "guardian execve review action missing fields") << text;
  }
}

TEST(GuardianApplyPatchAction, NeedsADirectoryOnly) {
  EXPECT_EQ(action(R"({"type":"applyPatch","cwd":"/","files":["a",{},"b"]})"),
            (GuardianApplyPatchReviewAction{"/", {"a", "b"}}));
  EXPECT_EQ(action(R"({"type":"applyPatch","cwd":"/","files":7})"), (GuardianApplyPatchReviewAction{"/", {}}));
  EXPECT_EQ(actionFailure(R"({"type":"applyPatch","files":[]})"), "guardian applyPatch review action missing cwd");
}

TEST(GuardianNetworkAction, ReadsAnyProtocol) {
  EXPECT_EQ(action(R"({"type":"networkAccess","target":"t","host":"h","protocol":"SOCKS5_TCP","port":80})"),
            (GuardianNetworkAccessReviewAction{"t", "h", NetworkApprovalProtocol::socks5Tcp, 80}));
  EXPECT_EQ(action(R"({"type":"networkAccess","target":"t","host":"h","protocol":"quic","port":80.0})"),
            (GuardianNetworkAccessReviewAction{"t", "h", NetworkApprovalProtocol::socks5Udp, 80}));
}

TEST(GuardianNetworkAction, FailsWithoutItsFields) {
  for (const char* text : {R"({"type":"networkAccess","host":"h","protocol":"http","port":80})",
                           R"({"type":"networkAccess","target":"t","protocol":"http","port":80})",
                           R"({"type":"networkAccess","target":"t","host":"h","port":80})",
                           R"({"type":"networkAccess","target":"t","host":"h","protocol":"http"})",
                           R"({"type":"networkAccess","target":"t","host":"h","protocol":"http","port":"80"})",
                           R"({"type":"networkAccess","target":"t","host":"h","protocol":"http","port":80.5})"}) {
    EXPECT_EQ(actionFailure(text), "guardian networkAccess review action missing fields") << text;
  }
}

TEST(GuardianMcpToolCallAction, ReadsBothSpellings) {
  EXPECT_EQ(action(R"({"type":"mcpToolCall","server":"s","toolName":"t","tool_name":"x","connectorId":"c",
      "connector_id":"x","connectorName":"n","connector_name":"x","toolTitle":"T","tool_title":"x"})"),
            (GuardianMcpToolCallReviewAction{"s", "t", "c", "n", "T"}));
  EXPECT_EQ(action(R"({"type":"mcpToolCall","server":"s","toolName":1,"tool_name":"t","connectorId":2,
      "connector_id":"c","connector_name":"n","tool_title":"T"})"),
            (GuardianMcpToolCallReviewAction{"s", "t", "c", "n", "T"}));
  EXPECT_EQ(action(R"({"type":"mcpToolCall","server":"","tool_name":"t"})"),
            (GuardianMcpToolCallReviewAction{"", "t", {}, {}, {}}));
}

TEST(GuardianMcpToolCallAction, FailsWithoutAServerOrAToolName) {
  EXPECT_EQ(actionFailure(R"({"type":"mcpToolCall"})"), "guardian mcpToolCall review action missing server");
  for (const char* text :
       {R"({"type":"mcpToolCall","server":"s"})", R"({"type":"mcpToolCall","server":"s","toolName":""})",
        R"({"type":"mcpToolCall","server":"s","toolName":"","tool_name":"t"})"}) {
    EXPECT_EQ(actionFailure(text), "guardian mcpToolCall review action missing toolName") << text;
  }
}

TEST(GuardianRequestPermissionsAction, KeepsThePermissionsWhole) {
  EXPECT_EQ(action(R"({"type":"requestPermissions","reason":"r","permissions":{"network":null,"file_system":[1]}})"),
            (GuardianRequestPermissionsReviewAction{"r", {JSONValue(), JSONValue::decode("[1]")}}));
  EXPECT_EQ(action(R"({"type":"requestPermissions","reason":7,"permissions":{}})"),
            (GuardianRequestPermissionsReviewAction{{}, {}}));
}

TEST(GuardianRequestPermissionsAction, FailsWithoutPermissions) {
  for (const char* text : {R"({"type":"requestPermissions"})", R"({"type":"requestPermissions","permissions":null})",
                           R"({"type":"requestPermissions","permissions":"all"})"}) {
    EXPECT_EQ(actionFailure(text), "guardian requestPermissions review action missing permissions") << text;
  }
}

TEST(GuardianWriteStdinAction, NeedsAllItsFields) {
  EXPECT_EQ(action(R"({"type":"writeStdin","approvalId":"a","processId":"p","stdin":"s","cwd":"/"})"),
            (GuardianWriteStdinReviewAction{"a", "p", "s", "/"}));
  for (const char* text : {R"({"type":"writeStdin","processId":"p","stdin":"s","cwd":"/"})",
                           R"({"type":"writeStdin","approvalId":"a","stdin":"s","cwd":"/"})",
                           R"({"type":"writeStdin","approvalId":"a","processId":"p","cwd":"/"})",
                           R"({"type":"writeStdin","approvalId":"a","processId":"p","stdin":"s"})",
                           R"({"type":"writeStdin","approvalId":"a","processId":1,"stdin":"s","cwd":"/"})"}) {
    EXPECT_EQ(actionFailure(text), "guardian writeStdin review action missing fields") << text;
  }
}

}  // namespace
