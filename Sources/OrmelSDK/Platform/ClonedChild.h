#pragma once

#include <optional>

#include "OrmelSDK/Platform/ChildPlan.h"
#include "OrmelSDK/Platform/Spawn.h"

namespace ormel::detail {

/// Starts a child that has a pidfd from its birth on. A pidfd that is opened for a process id afterwards comes too late
/// for a child that has ended by then and was reaped by the application, or by the system because the application
/// ignores SIGCHLD.
///
/// Absent, with nothing done, where the system starts no child in this way. Fails with `ProcessLaunchError`.
std::optional<SpawnedChild> cloneChild(const ChildPlan& plan);

}  // namespace ormel::detail
