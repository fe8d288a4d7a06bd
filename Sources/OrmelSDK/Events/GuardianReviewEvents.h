#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Events/GuardianReview.h"
#include "OrmelSDK/Events/GuardianReviewAction.h"

namespace ormel {

/// The guardian has begun to review an action.
struct GuardianApprovalReviewStartedEvent {
  std::string threadID;
  std::string turnID;
  /// The item whose action is reviewed.
  std::optional<std::string> targetItemID;
  std::string reviewID;
  GuardianApprovalReview review;
  GuardianApprovalReviewAction action;
  friend bool operator==(const GuardianApprovalReviewStartedEvent&, const GuardianApprovalReviewStartedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianApprovalReviewStartedEvent& value);
};

/// The guardian has decided about an action.
struct GuardianApprovalReviewCompletedEvent {
  std::string threadID;
  std::string turnID;
  /// The item whose action was reviewed.
  std::optional<std::string> targetItemID;
  std::string reviewID;
  AutoReviewDecisionSource decisionSource = AutoReviewDecisionSource::agent;
  GuardianApprovalReview review;
  GuardianApprovalReviewAction action;
  friend bool operator==(const GuardianApprovalReviewCompletedEvent&, const GuardianApprovalReviewCompletedEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianApprovalReviewCompletedEvent& value);
};

/// The guardian warns the user.
struct GuardianWarningEvent {
  std::string threadID;
  std::string message;
  friend bool operator==(const GuardianWarningEvent&, const GuardianWarningEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const GuardianWarningEvent& value);
};

/// From here on each action of the turn is reviewed strictly.
struct StrictReviewRequiredEvent {
  std::string threadID;
  std::string turnID;
  /// Milliseconds since the Unix epoch.
  std::int64_t startedAtMilliseconds = 0;
  friend bool operator==(const StrictReviewRequiredEvent&, const StrictReviewRequiredEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const StrictReviewRequiredEvent& value);
};

}  // namespace ormel
