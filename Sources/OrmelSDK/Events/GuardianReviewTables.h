#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/GuardianReview.h"

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianApprovalReviewStatus> {
  static constexpr auto words = tolerant(GuardianApprovalReviewStatus::aborted,
                                         std::array{Word{GuardianApprovalReviewStatus::inProgress, "inProgress"},
                                                    Word{GuardianApprovalReviewStatus::approved, "approved"},
                                                    Word{GuardianApprovalReviewStatus::denied, "denied"},
                                                    Word{GuardianApprovalReviewStatus::timedOut, "timedOut"},
                                                    Word{GuardianApprovalReviewStatus::aborted, "aborted"}});
};
ORMEL_DECLARE_ENUMERATION(GuardianApprovalReviewStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianRiskLevel> {
  static constexpr auto words =
      closed(std::array{Word{GuardianRiskLevel::low, "low"}, Word{GuardianRiskLevel::medium, "medium"},
                        Word{GuardianRiskLevel::high, "high"}, Word{GuardianRiskLevel::critical, "critical"}});
};
ORMEL_DECLARE_ENUMERATION(GuardianRiskLevel)

template <>
struct ormel::coding::EnumerationTable<ormel::GuardianUserAuthorization> {
  static constexpr auto words = closed(
      std::array{Word{GuardianUserAuthorization::unknown, "unknown"}, Word{GuardianUserAuthorization::low, "low"},
                 Word{GuardianUserAuthorization::medium, "medium"}, Word{GuardianUserAuthorization::high, "high"}});
};
ORMEL_DECLARE_ENUMERATION(GuardianUserAuthorization)

template <>
struct ormel::coding::EnumerationTable<ormel::AutoReviewDecisionSource> {
  static constexpr auto words = closed(std::array{Word{AutoReviewDecisionSource::agent, "agent"}});
};
ORMEL_DECLARE_ENUMERATION(AutoReviewDecisionSource)

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReview> {
  static constexpr auto fields =
      std::tuple(required<&GuardianApprovalReview::status>("status"),
                 optional<&GuardianApprovalReview::riskScore>("riskScore", "risk_score"),
                 optional<&GuardianApprovalReview::riskLevel>("riskLevel", "risk_level"),
                 optional<&GuardianApprovalReview::userAuthorization>("userAuthorization", "user_authorization"),
                 optional<&GuardianApprovalReview::rationale>("rationale"));
};
ORMEL_DECLARE_CODEC(GuardianApprovalReview)
