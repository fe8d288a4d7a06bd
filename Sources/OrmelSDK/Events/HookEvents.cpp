#include "OrmelSDK/Events/HookEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/HookEventsTables.h"

ORMEL_DEFINE_PUBLIC_CODING(HookEventName)
ORMEL_DEFINE_PUBLIC_CODING(HookHandlerType)
ORMEL_DEFINE_ENUMERATION(HookExecutionMode)
ORMEL_DEFINE_ENUMERATION(HookScope)
ORMEL_DEFINE_ENUMERATION(HookRunStatus)
ORMEL_DEFINE_ENUMERATION(HookOutputEntryKind)
ORMEL_DEFINE_ENUMERATION(HookTrustStatus)
ORMEL_DEFINE_ENUMERATION(HookSource)
ORMEL_DEFINE_RECORD(HookOutputEntry)
ORMEL_DEFINE_RECORD(HookRunSummary)
ORMEL_DEFINE_RECORD(HookStartedEvent)
ORMEL_DEFINE_RECORD(HookCompletedEvent)
