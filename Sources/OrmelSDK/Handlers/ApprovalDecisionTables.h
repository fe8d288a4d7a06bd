#pragma once

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Handlers/ApprovalDecision.h"

ORMEL_DECLARE_CODEC(OrmelApprovalDecision)
