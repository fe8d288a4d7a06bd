#include "OrmelSDK/ThreadGoal.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/ThreadGoalTables.h"

ORMEL_DEFINE_ENUMERATION(ThreadGoalStatus)
ORMEL_DEFINE_RECORD(ThreadGoal)
