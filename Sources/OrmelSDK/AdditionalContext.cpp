#include "OrmelSDK/AdditionalContext.h"

#include "OrmelSDK/AdditionalContextTables.h"
#include "OrmelSDK/Coding/RecordCodec.h"

ORMEL_DEFINE_ENUMERATION(AdditionalContextKind)
ORMEL_DEFINE_RECORD(AdditionalContextEntry)
