#include "OrmelSDK/Input/AdditionalContext.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Input/AdditionalContextTables.h"

ORMEL_DEFINE_ENUMERATION(AdditionalContextKind)
ORMEL_DEFINE_RECORD(AdditionalContextEntry)
