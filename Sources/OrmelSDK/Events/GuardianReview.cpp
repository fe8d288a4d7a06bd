#include "OrmelSDK/Events/GuardianReview.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianApprovalReviewStatus> {
  static constexpr auto rule = tolerant(GuardianApprovalReviewStatus::aborted);
  static constexpr Word<GuardianApprovalReviewStatus> words[] = {
      {GuardianApprovalReviewStatus::inProgress, "inProgress"}, {GuardianApprovalReviewStatus::approved, "approved"},
      {GuardianApprovalReviewStatus::denied, "denied"},         {GuardianApprovalReviewStatus::timedOut, "timedOut"},
      {GuardianApprovalReviewStatus::aborted, "aborted"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianRiskLevel> {
  static constexpr auto rule = closed;
  static constexpr Word<GuardianRiskLevel> words[] = {
      {GuardianRiskLevel::low, "low"},
      {GuardianRiskLevel::medium, "medium"},
      {GuardianRiskLevel::high, "high"},
      {GuardianRiskLevel::critical, "critical"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianUserAuthorization> {
  static constexpr auto rule = closed;
  static constexpr Word<GuardianUserAuthorization> words[] = {
      {GuardianUserAuthorization::unknown, "unknown"},
      {GuardianUserAuthorization::low, "low"},
      {GuardianUserAuthorization::medium, "medium"},
      {GuardianUserAuthorization::high, "high"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::AutoReviewDecisionSource> {
  static constexpr auto rule = closed;
  static constexpr Word<AutoReviewDecisionSource> words[] = {
      {AutoReviewDecisionSource::agent, "agent"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReview> {
  static constexpr Field fields[] = {
      required<&GuardianApprovalReview::status>("status"),
      optional<&GuardianApprovalReview::riskScore>("riskScore", "risk_score"),
      optional<&GuardianApprovalReview::riskLevel>("riskLevel", "risk_level"),
      optional<&GuardianApprovalReview::userAuthorization>("userAuthorization", "user_authorization"),
      optional<&GuardianApprovalReview::rationale>("rationale"),
  };
};

ORMEL_DEFINE_ENUMERATION(GuardianApprovalReviewStatus)
ORMEL_DEFINE_ENUMERATION(GuardianRiskLevel)
ORMEL_DEFINE_ENUMERATION(GuardianUserAuthorization)
ORMEL_DEFINE_ENUMERATION(AutoReviewDecisionSource)
ORMEL_DEFINE_HOT_RECORD(GuardianApprovalReview)
