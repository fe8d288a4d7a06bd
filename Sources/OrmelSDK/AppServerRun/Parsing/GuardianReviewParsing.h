#pragma once

#include "OrmelSDK/Events/GuardianReviewEvents.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Reviews by the guardian are read strictly, unlike other notifications: the application must be able to rely on what
// was reviewed. A part that is missing fails with `ThreadRunError::streamError`; a word that is merely new does not.
namespace ormel::detail {

/// The event of a review that has begun or, with `isCompleted`, ended.
ThreadEvent parseGuardianApprovalReviewNotification(const JSONObject& params, bool isCompleted);

GuardianApprovalReview parseGuardianApprovalReview(const JSONValue& from);

GuardianApprovalReviewAction parseGuardianApprovalReviewAction(const JSONValue& from);

}  // namespace ormel::detail
