#pragma once

#include <string>
#include <string_view>

#include "ormel-simulator/Scenario/Scenario.h"

namespace ormel::simulator {

/// Reads a scenario. Fails with `ScenarioError` at the first thing that is wrong. `fileName` is for messages.
Scenario parseScenario(const std::string& fileName, std::string_view text);

/// Reads the file and parses it. Fails with `Error` if there is no such file.
Scenario loadScenario(const std::string& path);

}  // namespace ormel::simulator
