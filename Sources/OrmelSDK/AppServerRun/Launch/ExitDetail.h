#pragma once

#include <string>

#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// How a process ended, in the words of `OrmelProcessError::exited`: "exit status 1", "signal 9", or "status 0" when
/// nobody knows.
std::string exitDetail(const Termination& termination);

}  // namespace ormel::detail
