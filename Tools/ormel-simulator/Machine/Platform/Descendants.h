#pragma once

#include <sys/types.h>

#include <vector>

namespace ormel::simulator {

// Where a system has no such thing these do nothing: what left the process group of its command is then not found.

/// From now on what the children of this process leave behind become its children, instead of those of the first
/// process of the system.
void adoptOrphans() noexcept;

/// Has this process killed when the process `parent` ends, which started it.
void dieWith(pid_t parent) noexcept;

/// The children of this process that the system tells of, also those that have ended.
std::vector<pid_t> childrenOfThisProcess();

}  // namespace ormel::simulator
