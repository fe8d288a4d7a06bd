#include "OrmelSDK/Events/GuardianReview.h"

#include <gtest/gtest.h>

#include "OrmelSDK/Events/GuardianReviewEvents.h"
#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

GuardianApprovalReviewStatus statusReadFrom(std::string_view word) {
  return decode<GuardianApprovalReviewStatus>(JSONValue(word));
}

TEST(GuardianReview, FollowsItsTables) {
  tests::checkRecord<GuardianApprovalReview>(
      R"({"status":"approved","riskScore":3,"riskLevel":"low","userAuthorization":"high","rationale":"r"})");
  tests::checkRecord<GuardianApprovalReviewStartedEvent>(
      R"({"thread_id":"t","turn_id":"u","target_item_id":"i","review_id":"r","review":{"status":"inProgress"},
          "action":{"type":"command","source":"shell","command":"ls","cwd":"/"}})");
  tests::checkRecord<GuardianApprovalReviewCompletedEvent>(
      R"({"thread_id":"t","turn_id":"u","target_item_id":"i","review_id":"r","decision_source":"agent",
          "review":{"status":"approved"},"action":{"type":"command","source":"shell","command":"ls","cwd":"/"}})");
  tests::checkRecord<GuardianWarningEvent>(R"({"thread_id":"t","message":"m"})");
  tests::checkRecord<StrictReviewRequiredEvent>(R"({"thread_id":"t","turn_id":"u","startedAtMs":5})");
}

TEST(GuardianApprovalReview, IsWrittenInCamelCaseWithoutWhatIsAbsent) {
  const GuardianApprovalReview review{GuardianApprovalReviewStatus::timedOut, 3, GuardianRiskLevel::critical,
                                      GuardianUserAuthorization::unknown, "r"};
  tests::expectWritten(review, R"({"status":"timedOut","riskScore":3,"riskLevel":"critical",
                                   "userAuthorization":"unknown","rationale":"r"})");
  tests::expectWritten(GuardianApprovalReview{}, R"({"status":"aborted"})");
}

TEST(GuardianApprovalReview, PrefersCamelCase) {
  const auto review = decoded<GuardianApprovalReview>(R"({"status":"denied","risk_score":1,"riskScore":2,
    "risk_level":"low","riskLevel":"high","user_authorization":"low","userAuthorization":"medium"})");
  EXPECT_EQ(review, (GuardianApprovalReview{GuardianApprovalReviewStatus::denied, 2, GuardianRiskLevel::high,
                                            GuardianUserAuthorization::medium, std::nullopt}));
}

TEST(GuardianApprovalReview, FailsOnARiskOrAnAuthorizationThatItDoesNotKnow) {
  EXPECT_EQ(failureOf<GuardianApprovalReview>(R"({"status":"denied","risk_level":"extreme"})"),
            "Cannot initialize GuardianRiskLevel from invalid String value extreme");
  EXPECT_EQ(failureOf<GuardianApprovalReview>(R"({"status":"denied","userAuthorization":"critical"})"),
            "Cannot initialize GuardianUserAuthorization from invalid String value critical");
}

TEST(GuardianApprovalReviewStatus, HasAWordForEachCase) {
  tests::checkWords<GuardianApprovalReviewStatus>({{GuardianApprovalReviewStatus::inProgress, "inProgress"},
                                                   {GuardianApprovalReviewStatus::approved, "approved"},
                                                   {GuardianApprovalReviewStatus::denied, "denied"},
                                                   {GuardianApprovalReviewStatus::timedOut, "timedOut"},
                                                   {GuardianApprovalReviewStatus::aborted, "aborted"}});
}

TEST(GuardianApprovalReviewStatus, IsReadInAnySpellingAndIsAbortedWhenNobodyKnowsIt) {
  tests::checkTolerance<GuardianApprovalReviewStatus>({{"timed_out", GuardianApprovalReviewStatus::timedOut},
                                                       {"IN-PROGRESS", GuardianApprovalReviewStatus::inProgress},
                                                       {" Denied\n", GuardianApprovalReviewStatus::denied},
                                                       {"APPROVED", GuardianApprovalReviewStatus::approved},
                                                       {"weird", GuardianApprovalReviewStatus::aborted},
                                                       {"approved!", GuardianApprovalReviewStatus::aborted},
                                                       {"", GuardianApprovalReviewStatus::aborted}});
  EXPECT_EQ(encode(statusReadFrom("weird")), JSONValue("aborted"));
}

TEST(GuardianEnumerations, HaveAWordForEachCase) {
  tests::checkWords<GuardianRiskLevel>({{GuardianRiskLevel::low, "low"},
                                        {GuardianRiskLevel::medium, "medium"},
                                        {GuardianRiskLevel::high, "high"},
                                        {GuardianRiskLevel::critical, "critical"}});
  tests::checkWords<GuardianUserAuthorization>({{GuardianUserAuthorization::unknown, "unknown"},
                                                {GuardianUserAuthorization::low, "low"},
                                                {GuardianUserAuthorization::medium, "medium"},
                                                {GuardianUserAuthorization::high, "high"}});
  tests::checkWords<AutoReviewDecisionSource>({{AutoReviewDecisionSource::agent, "agent"}});
}

TEST(GuardianEnumerations, ThatAreClosedReadNoOtherWord) {
  tests::checkStrictness<GuardianRiskLevel>("GuardianRiskLevel", {"Low", "extreme", "unknown", ""});
  tests::checkStrictness<GuardianUserAuthorization>("GuardianUserAuthorization", {"HIGH", "critical"});
  tests::checkStrictness<AutoReviewDecisionSource>("AutoReviewDecisionSource", {"Agent", "user"});
}

TEST(GuardianReviewEvents, AreWrittenUnderTheFirstSpelling) {
  const GuardianApprovalReview review{GuardianApprovalReviewStatus::approved, {}, {}, {}, {}};
  const GuardianApprovalReviewAction action = GuardianApplyPatchReviewAction{"/", {"a"}};
  tests::expectWritten(GuardianApprovalReviewStartedEvent{"t", "u", {}, "r", review, action},
                       R"({"thread_id":"t","turn_id":"u","review_id":"r","review":{"status":"approved"},
                           "action":{"type":"applyPatch","cwd":"/","files":["a"]}})");
  tests::expectWritten(
      GuardianApprovalReviewCompletedEvent{"t", "u", "i", "r", AutoReviewDecisionSource::agent, review, action},
      R"({"thread_id":"t","turn_id":"u","target_item_id":"i","review_id":"r","decision_source":"agent",
          "review":{"status":"approved"},"action":{"type":"applyPatch","cwd":"/","files":["a"]}})");
  tests::expectWritten(StrictReviewRequiredEvent{"t", "u", 5}, R"({"thread_id":"t","turn_id":"u","startedAtMs":5})");
}

TEST(GuardianReviewEvents, AreReadInEitherSpelling) {
  const auto event = decoded<GuardianApprovalReviewCompletedEvent>(
      R"({"threadId":"t","turnId":"u","targetItemId":"i","reviewId":"r","decisionSource":"agent",
          "review":{"status":"approved"},"action":{"type":"somethingNew"}})");
  EXPECT_EQ(event.threadID + event.turnID + *event.targetItemID + event.reviewID, "tuir");
}

TEST(StrictReviewRequiredEvent, ReadsItsTimeUnderOneSpellingOnly) {
  EXPECT_EQ(failureOf<StrictReviewRequiredEvent>(R"({"thread_id":"t","turn_id":"u","started_at_ms":5})"),
            "No value is associated with the key 'startedAtMs'.");
}

}  // namespace
