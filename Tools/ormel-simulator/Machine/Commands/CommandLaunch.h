#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ormel::simulator {

struct TerminalSize {
  unsigned short rows = 24;
  unsigned short columns = 80;
};

/// A program to run.
struct CommandLaunch {
  /// The program, looked up in `PATH` if there is no slash in it, and its arguments. Not empty.
  std::vector<std::string> arguments;
  /// The folder that it runs in; empty for that of the simulator.
  std::string folder;
  /// All of it, as "NAME=value".
  std::vector<std::string> environment;
  /// Whether there is something to read for it; if not, its input is at its end.
  bool takesInput = false;
  /// Where it is given, all three streams are a terminal of that size.
  std::optional<TerminalSize> terminal;
};

}  // namespace ormel::simulator
