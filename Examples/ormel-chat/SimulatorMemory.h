#pragma once

#include <string>

namespace ormel::chat {

/// Where the simulator remembers conversations, so that one goes on after its process was ended by an interruption.
/// Removed with all that is in it at the end of the program.
class SimulatorMemory {
 public:
  /// To be made before there is a second thread: it changes the environment.
  SimulatorMemory();
  SimulatorMemory(const SimulatorMemory&) = delete;
  SimulatorMemory& operator=(const SimulatorMemory&) = delete;
  ~SimulatorMemory();

 private:
  std::string folder_;
};

}  // namespace ormel::chat
