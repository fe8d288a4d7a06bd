#include "OrmelSDK/Records/EmptyResponses.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Records/EmptyResponsesTables.h"

ORMEL_DEFINE_RECORD(EmptyRPCResponse)
ORMEL_DEFINE_RECORD(ConfigWriteAck)
ORMEL_DEFINE_RECORD(ThreadSettingsUpdateResponse)
