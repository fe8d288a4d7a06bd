#include "OrmelSDK/Events/GuardianReviewEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReviewStartedEvent> {
  static constexpr Field fields[] = {
      required<&GuardianApprovalReviewStartedEvent::threadID>("thread_id", "threadId"),
      required<&GuardianApprovalReviewStartedEvent::turnID>("turn_id", "turnId"),
      optional<&GuardianApprovalReviewStartedEvent::targetItemID>("target_item_id", "targetItemId"),
      required<&GuardianApprovalReviewStartedEvent::reviewID>("review_id", "reviewId"),
      required<&GuardianApprovalReviewStartedEvent::review>("review"),
      required<&GuardianApprovalReviewStartedEvent::action>("action"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReviewCompletedEvent> {
  static constexpr Field fields[] = {
      required<&GuardianApprovalReviewCompletedEvent::threadID>("thread_id", "threadId"),
      required<&GuardianApprovalReviewCompletedEvent::turnID>("turn_id", "turnId"),
      optional<&GuardianApprovalReviewCompletedEvent::targetItemID>("target_item_id", "targetItemId"),
      required<&GuardianApprovalReviewCompletedEvent::reviewID>("review_id", "reviewId"),
      required<&GuardianApprovalReviewCompletedEvent::decisionSource>("decision_source", "decisionSource"),
      required<&GuardianApprovalReviewCompletedEvent::review>("review"),
      required<&GuardianApprovalReviewCompletedEvent::action>("action"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GuardianWarningEvent> {
  static constexpr Field fields[] = {
      required<&GuardianWarningEvent::threadID>("thread_id", "threadId"),
      required<&GuardianWarningEvent::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::StrictReviewRequiredEvent> {
  static constexpr Field fields[] = {
      required<&StrictReviewRequiredEvent::threadID>("thread_id", "threadId"),
      required<&StrictReviewRequiredEvent::turnID>("turn_id", "turnId"),
      required<&StrictReviewRequiredEvent::startedAtMilliseconds>("startedAtMs"),
  };
};

ORMEL_DEFINE_HOT_RECORD(GuardianApprovalReviewStartedEvent)
ORMEL_DEFINE_HOT_RECORD(GuardianApprovalReviewCompletedEvent)
ORMEL_DEFINE_HOT_RECORD(GuardianWarningEvent)
ORMEL_DEFINE_HOT_RECORD(StrictReviewRequiredEvent)
