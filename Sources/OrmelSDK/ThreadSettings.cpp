#include "OrmelSDK/ThreadSettings.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/ThreadSettingsTables.h"

ORMEL_DEFINE_RECORD(ActivePermissionProfile)
ORMEL_DEFINE_RECORD(ThreadSettings)
