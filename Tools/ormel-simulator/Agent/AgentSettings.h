#pragma once

#include <chrono>
#include <string>

namespace ormel::simulator {

struct AgentSettings {
  /// Between two steps of a turn.
  std::chrono::milliseconds pace{15};
  /// The folder in which threads are kept; empty for none.
  std::string stateFolder;
};

}  // namespace ormel::simulator
