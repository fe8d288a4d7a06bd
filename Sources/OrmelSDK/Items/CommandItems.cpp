#include "OrmelSDK/Items/CommandItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/CommandItemsTables.h"

ORMEL_DEFINE_ENUMERATION(CommandExecutionStatus)
ORMEL_DEFINE_RECORD(CommandExecutionItem)
