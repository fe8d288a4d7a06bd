#include "OrmelSDK/Items/McpToolCallItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/McpToolCallItemsTables.h"

ORMEL_DEFINE_ENUMERATION(McpToolCallStatus)
ORMEL_DEFINE_RECORD(McpToolCallResult)
ORMEL_DEFINE_RECORD(McpToolCallError)
ORMEL_DEFINE_RECORD(McpToolCallAppContext)
ORMEL_DEFINE_RECORD(McpToolCallItem)
