#pragma once

#include "OrmelSDK/ApprovalDecision.h"
#include "OrmelSDK/Coding/Codec.h"

ORMEL_DECLARE_CODEC(OrmelApprovalDecision)
