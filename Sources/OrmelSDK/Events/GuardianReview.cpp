#include "OrmelSDK/Events/GuardianReview.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/GuardianReviewTables.h"

ORMEL_DEFINE_ENUMERATION(GuardianApprovalReviewStatus)
ORMEL_DEFINE_ENUMERATION(GuardianRiskLevel)
ORMEL_DEFINE_ENUMERATION(GuardianUserAuthorization)
ORMEL_DEFINE_ENUMERATION(AutoReviewDecisionSource)
ORMEL_DEFINE_RECORD(GuardianApprovalReview)
