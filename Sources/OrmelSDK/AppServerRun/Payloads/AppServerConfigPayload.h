#pragma once

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::detail {

/// The `config` of a thread: the library's overrides, ahead of them the thread's, ahead of those the options that have
/// a field of their own, and the features that the library cannot work without. Overrides that hold a number which is
/// not finite are left out.
JSONValue buildConfigObject(const ThreadOptions& threadOptions, const OrmelOptions& ormelOptions);

}  // namespace ormel::detail
