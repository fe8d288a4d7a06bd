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
  /// The folder for the files that clients read and write; empty for one in the folder of the threads.
  std::filesystem::path filesFolder;
  /// Whether threads are kept in no folder.
  bool forgets = false;
  /// Methods that the agent does as if it did not know.
  std::set<std::string> unknownMethods;
  /// Overrides of the configuration, "KEY=VALUE" each.
  std::vector<std::string> configOverrides;
};

}  // namespace ormel::simulator
