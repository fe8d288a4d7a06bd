#pragma once

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace ormel::simulator {

struct AgentSettings {
  /// Between two steps of a turn.
  std::chrono::milliseconds pace{15};
  /// The folder in which threads are kept; empty for the user's own.
  std::filesystem::path stateFolder;
  /// Whether threads are kept in no folder.
  bool forgets = false;
  /// Methods that the agent does as if it did not know.
  std::set<std::string> unknownMethods;
  /// Of the configuration, "KEY=VALUE" each.
  std::vector<std::string> configOverrides;
};

}  // namespace ormel::simulator
