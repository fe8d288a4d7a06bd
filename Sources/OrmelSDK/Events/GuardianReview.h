#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// The status of a review. Read without regard to case, "_" and "-". Any other word is `aborted`: a status that nobody
/// knows must not pass for an approval.
enum class GuardianApprovalReviewStatus { inProgress, approved, denied, timedOut, aborted };
std::ostream& operator<<(std::ostream& stream, const GuardianApprovalReviewStatus& value);

enum class GuardianRiskLevel { low, medium, high, critical };
std::ostream& operator<<(std::ostream& stream, const GuardianRiskLevel& value);

/// How clearly the user has authorised an action.
enum class GuardianUserAuthorization { unknown, low, medium, high };
std::ostream& operator<<(std::ostream& stream, const GuardianUserAuthorization& value);

/// The source of a decision.
enum class AutoReviewDecisionSource { agent };
std::ostream& operator<<(std::ostream& stream, const AutoReviewDecisionSource& value);

/// The guardian's judgement of an action.
struct GuardianApprovalReview {
  GuardianApprovalReviewStatus status = GuardianApprovalReviewStatus::aborted;
  std::optional<std::int64_t> riskScore;
  std::optional<GuardianRiskLevel> riskLevel;
  std::optional<GuardianUserAuthorization> userAuthorization;
  std::optional<std::string> rationale;
  friend bool operator==(const GuardianApprovalReview&, const GuardianApprovalReview&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianApprovalReview& value);
};

}  // namespace ormel
