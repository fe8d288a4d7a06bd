#include "OrmelSDK/Events/ThreadStateEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/ThreadStateEventsTables.h"

ORMEL_DEFINE_RECORD(ThreadStartedEvent)
ORMEL_DEFINE_RECORD(ThreadGoalUpdatedEvent)
ORMEL_DEFINE_RECORD(ThreadGoalClearedEvent)
ORMEL_DEFINE_RECORD(ThreadSettingsUpdatedEvent)
