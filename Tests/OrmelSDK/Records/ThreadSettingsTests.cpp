#include "OrmelSDK/Records/ThreadSettings.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

constexpr std::string_view wholeText = R"({"cwd":"/w","approvalPolicy":"on-request","approvalsReviewer":"auto_review",
  "sandboxPolicy":{"type":"readOnly","nested":[1,{"a":null}]},"activePermissionProfile":{"id":"p","extends":"base"},
  "model":"m","modelProvider":"mp","serviceTier":"futureTier","effort":"custom-effort","summary":"concise",
  "collaborationMode":"plan","personality":"friendly"})";

ThreadSettings wholeSettings() {
  ThreadSettings settings;
  settings.cwd = "/w";
  settings.approvalPolicy = ApprovalMode::onRequest;
  settings.approvalsReviewer = ApprovalsReviewer::autoReview;
  settings.sandboxPolicy = JSONValue::decode(R"({"type":"readOnly","nested":[1,{"a":null}]})");
  settings.activePermissionProfile = ActivePermissionProfile{"p", "base"};
  settings.model = "m";
  settings.modelProvider = "mp";
  settings.serviceTier = "futureTier";
  settings.effort = "custom-effort";
  settings.summary = ModelReasoningSummary::concise;
  settings.collaborationMode = CollaborationMode::plan;
  settings.personality = Personality::friendly;
  return settings;
}

TEST(ThreadSettings, FollowTheirTables) {
  tests::checkRecord<ActivePermissionProfile>(R"({"id":"p","extends":"base"})");
  tests::checkRecord<ThreadSettings>(wholeText);
}

TEST(ThreadSettings, AreReadAndWrittenWhole) {
  EXPECT_EQ(decoded<ThreadSettings>(wholeText), wholeSettings());
  tests::expectWritten(wholeSettings(), wholeText);
}

TEST(ThreadSettings, WriteNothingForWhatIsAbsent) {
  constexpr std::string_view least = R"({"cwd":"/w","approvalPolicy":"never","approvalsReviewer":"user",
    "sandboxPolicy":null,"model":"m","modelProvider":"mp","collaborationMode":"default"})";
  tests::expectWritten(decoded<ThreadSettings>(least), least);
  tests::expectWritten(ActivePermissionProfile{"p", {}}, R"({"id":"p"})");
}

TEST(ThreadSettings, TakeAPolicyThatIsSwitchedPiecewise) {
  const auto policy = JSONValue::decode(R"({"granular":{"sandbox_approval":true,"rules":false,"skill_approval":false,
                                                        "request_permissions":true,"mcp_elicitations":false}})");
  const auto example = JSONValue::decode(wholeText);
  const auto settings = decode<ThreadSettings>(tests::changed(example, "", "approvalPolicy", &policy));
  EXPECT_EQ(settings.approvalPolicy, ApprovalMode::granular({true, false, false, true, false}));
}

TEST(ThreadSettings, ReadNoOtherSpelling) {
  EXPECT_EQ(failureOf<ThreadSettings>(R"({"cwd":"/w","approval_policy":"never"})"),
            "No value is associated with the key 'approvalPolicy'.");
}

TEST(ThreadSettings, FailOnWordsThatTheyDoNotKnow) {
  const auto example = JSONValue::decode(wholeText);
  const JSONValue word("weird");
  for (const auto& [key, message] : {
           std::pair{"approvalPolicy", "Unsupported approval policy"},
           {"approvalsReviewer", "Cannot initialize ApprovalsReviewer from invalid String value weird"},
           {"summary", "Cannot initialize ModelReasoningSummary from invalid String value weird"},
           {"collaborationMode", "Unknown collaboration mode: weird"},
           {"personality", "Cannot initialize Personality from invalid String value weird"},
       }) {
    EXPECT_EQ(failureOf<ThreadSettings>(tests::changed(example, "", key, &word).encode()), message);
  }
}

}  // namespace
