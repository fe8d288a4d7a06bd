#include "OrmelSDK/Events/GuardianReviewEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/GuardianReviewEventsTables.h"

ORMEL_DEFINE_RECORD(GuardianApprovalReviewStartedEvent)
ORMEL_DEFINE_RECORD(GuardianApprovalReviewCompletedEvent)
ORMEL_DEFINE_RECORD(GuardianWarningEvent)
ORMEL_DEFINE_RECORD(StrictReviewRequiredEvent)
