#include "OrmelSDK/Items/CollaborationItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/CollaborationItemsTables.h"

ORMEL_DEFINE_ENUMERATION(CollabAgentTool)
ORMEL_DEFINE_ENUMERATION(CollabAgentToolCallStatus)
ORMEL_DEFINE_ENUMERATION(CollabAgentStatus)
ORMEL_DEFINE_RECORD(CollabAgentState)
ORMEL_DEFINE_RECORD(CollabAgentToolCallItem)
ORMEL_DEFINE_PUBLIC_CODING(SubAgentActivityKind)
ORMEL_DEFINE_RECORD(SubAgentActivityItem)
