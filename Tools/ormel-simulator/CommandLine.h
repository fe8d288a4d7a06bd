#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Agent/AgentSettings.h"

namespace ormel::simulator {

/// Exit statuses that no scenario is likely to choose.
inline constexpr int failedExpectationStatus = 97;
inline constexpr int badScenarioStatus = 98;
inline constexpr int cannotStartStatus = 99;

/// The choices of the command line and the environment.
struct CommandLine {
  /// Set when there is nothing more to do, as after "--help".
  std::optional<int> exitStatus;
  std::string scenarioPath;
  std::string recordPath;
  std::string pathToCheck;
  /// For the built-in agent, which serves where there is no scenario.
  AgentSettings agent;
  /// "app-server" and what follows it; empty if it was not given.
  std::vector<std::string> serverArguments;
};

/// Reads the arguments, prints help or complaints.
CommandLine readCommandLine(const std::vector<std::string>& arguments);

}  // namespace ormel::simulator
