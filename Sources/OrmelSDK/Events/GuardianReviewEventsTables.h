#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/GuardianReviewActionTables.h"
#include "OrmelSDK/Events/GuardianReviewEvents.h"
#include "OrmelSDK/Events/GuardianReviewTables.h"

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReviewStartedEvent> {
  static constexpr auto fields =
      std::tuple(required<&GuardianApprovalReviewStartedEvent::threadID>("thread_id", "threadId"),
                 required<&GuardianApprovalReviewStartedEvent::turnID>("turn_id", "turnId"),
                 optional<&GuardianApprovalReviewStartedEvent::targetItemID>("target_item_id", "targetItemId"),
                 required<&GuardianApprovalReviewStartedEvent::reviewID>("review_id", "reviewId"),
                 required<&GuardianApprovalReviewStartedEvent::review>("review"),
                 required<&GuardianApprovalReviewStartedEvent::action>("action"));
};
ORMEL_DECLARE_CODEC(GuardianApprovalReviewStartedEvent)

template <>
struct ormel::coding::RecordTable<ormel::GuardianApprovalReviewCompletedEvent> {
  static constexpr auto fields =
      std::tuple(required<&GuardianApprovalReviewCompletedEvent::threadID>("thread_id", "threadId"),
                 required<&GuardianApprovalReviewCompletedEvent::turnID>("turn_id", "turnId"),
                 optional<&GuardianApprovalReviewCompletedEvent::targetItemID>("target_item_id", "targetItemId"),
                 required<&GuardianApprovalReviewCompletedEvent::reviewID>("review_id", "reviewId"),
                 required<&GuardianApprovalReviewCompletedEvent::decisionSource>("decision_source", "decisionSource"),
                 required<&GuardianApprovalReviewCompletedEvent::review>("review"),
                 required<&GuardianApprovalReviewCompletedEvent::action>("action"));
};
ORMEL_DECLARE_CODEC(GuardianApprovalReviewCompletedEvent)

template <>
struct ormel::coding::RecordTable<ormel::GuardianWarningEvent> {
  static constexpr auto fields = std::tuple(required<&GuardianWarningEvent::threadID>("thread_id", "threadId"),
                                            required<&GuardianWarningEvent::message>("message"));
};
ORMEL_DECLARE_CODEC(GuardianWarningEvent)

template <>
struct ormel::coding::RecordTable<ormel::StrictReviewRequiredEvent> {
  static constexpr auto fields = std::tuple(required<&StrictReviewRequiredEvent::threadID>("thread_id", "threadId"),
                                            required<&StrictReviewRequiredEvent::turnID>("turn_id", "turnId"),
                                            required<&StrictReviewRequiredEvent::startedAtMilliseconds>("startedAtMs"));
};
ORMEL_DECLARE_CODEC(StrictReviewRequiredEvent)
