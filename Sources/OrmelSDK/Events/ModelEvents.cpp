#include "OrmelSDK/Events/ModelEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/ModelEventsTables.h"

ORMEL_DEFINE_RECORD(ModelVerificationEvent)
ORMEL_DEFINE_RECORD(ModelReroutedEvent)
ORMEL_DEFINE_RECORD(ModelSafetyBufferingUpdatedEvent)
ORMEL_DEFINE_RECORD(TurnModerationMetadataEvent)
