#include "OrmelSDK/Handlers/Elicitation.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Handlers/ElicitationTables.h"

ORMEL_DEFINE_ENUMERATION(McpServerElicitationAction)
ORMEL_DEFINE_PRINTED_BY(McpServerElicitationMode, encodeVariant)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationRequest)
ORMEL_DEFINE_PRINTED_RECORD(McpServerElicitationResponse)
