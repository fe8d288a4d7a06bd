#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "ormel-simulator/Machine/Commands/CommandLaunch.h"

namespace ormel::simulator {

inline constexpr std::chrono::milliseconds gitTimeLimit = std::chrono::seconds(60);

/// A call of git that says the same whatever the user and the repository have configured: nothing asks, pages or
/// colours; nothing is fetched; and no program that a repository names is run. The names are settings of the repository
/// that are to count as empty.
CommandLaunch neutralGit(const std::string& folder, std::vector<std::string> arguments,
                         const std::vector<std::string>& emptySettings);

}  // namespace ormel::simulator
