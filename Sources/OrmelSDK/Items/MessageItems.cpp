#include "OrmelSDK/Items/MessageItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/MessageItemsTables.h"

ORMEL_DEFINE_RECORD(UserMessageItem)
ORMEL_DEFINE_RECORD(HookPromptFragment)
ORMEL_DEFINE_RECORD(HookPromptItem)
ORMEL_DEFINE_ENUMERATION(AgentMessagePhase)
ORMEL_DEFINE_RECORD(AgentMessageQuestion)
ORMEL_DEFINE_RECORD(MemoryCitationEntry)
ORMEL_DEFINE_RECORD(MemoryCitation)
ORMEL_DEFINE_RECORD(AgentMessageItem)
