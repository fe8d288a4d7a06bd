#include "OrmelSDK/Events/TurnEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/TurnEventsTables.h"

ORMEL_DEFINE_RECORD(TurnStartedEvent)
ORMEL_DEFINE_RECORD(Usage)
ORMEL_DEFINE_RECORD(TurnCompletedEvent)
ORMEL_DEFINE_RECORD(ThreadError)
ORMEL_DEFINE_RECORD(TurnFailedEvent)
ORMEL_DEFINE_RECORD(ThreadErrorEvent)
