#include "OrmelSDK/Records/ThreadSettings.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Records/ThreadSettingsTables.h"

ORMEL_DEFINE_RECORD(ActivePermissionProfile)
ORMEL_DEFINE_RECORD(ThreadSettings)
