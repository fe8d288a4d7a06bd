#pragma once

#include "OrmelSDK/Options/OrmelOptions.h"

namespace ormel::detail {

/// Lets all copies of the options share the callbacks, so that these are destroyed once, where code of the application
/// may run.
void shareCallbacks(OrmelOptions& options);

}  // namespace ormel::detail
