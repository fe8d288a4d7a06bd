#include "OrmelSDK/McpToolCallItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/McpToolCallItemsTables.h"

ORMEL_DEFINE_ENUMERATION(McpToolCallStatus)
ORMEL_DEFINE_RECORD(McpToolCallResult)
ORMEL_DEFINE_RECORD(McpToolCallError)
ORMEL_DEFINE_RECORD(McpToolCallAppContext)
ORMEL_DEFINE_RECORD(McpToolCallItem)
