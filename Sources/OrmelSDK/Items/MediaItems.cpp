#include "OrmelSDK/Items/MediaItems.h"

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/MediaItemsTables.h"

ORMEL_DEFINE_RECORD(WebSearchItem)
ORMEL_DEFINE_RECORD(ImageViewItem)
ORMEL_DEFINE_RECORD(ImageGenerationItem)
