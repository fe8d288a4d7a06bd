#pragma once

#include <string>

#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// How a process ended, in the words of `OrmelProcessError::exited`: "exit status 1" or "signal 9". If another part of
/// this process has reaped it and the system tells its status to nobody else, it is "status 0", and the words say that
/// this is not known.
std::string exitDetail(const Termination& termination);

}  // namespace ormel::detail
