#include "OrmelSDK/Records/ThreadGoal.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Records/ThreadGoalTables.h"

ORMEL_DEFINE_ENUMERATION(ThreadGoalStatus)
ORMEL_DEFINE_RECORD(ThreadGoal)
