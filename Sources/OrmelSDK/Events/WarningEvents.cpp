#include "OrmelSDK/Events/WarningEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/WarningEventsTables.h"

ORMEL_DEFINE_RECORD(ThreadWarningEvent)
ORMEL_DEFINE_RECORD(AuthRecoveryEvent)
ORMEL_DEFINE_RECORD(DeprecationNoticeEvent)
ORMEL_DEFINE_RECORD(TextPosition)
ORMEL_DEFINE_RECORD(TextRange)
ORMEL_DEFINE_RECORD(ConfigWarningEvent)
