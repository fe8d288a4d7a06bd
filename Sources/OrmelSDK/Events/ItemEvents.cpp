#include "OrmelSDK/Events/ItemEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/ItemEventsTables.h"

ORMEL_DEFINE_RECORD(ItemStartedEvent)
ORMEL_DEFINE_RECORD(ItemUpdatedEvent)
ORMEL_DEFINE_RECORD(ItemCompletedEvent)
