#include "OrmelSDK/CommandItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/CommandItemsTables.h"

ORMEL_DEFINE_ENUMERATION(CommandExecutionStatus)
ORMEL_DEFINE_RECORD(CommandExecutionItem)
