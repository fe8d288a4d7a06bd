#pragma once

#include <string>

namespace ormel::simulator {

struct CannedResult {
  std::string output;
  int exitCode = 0;
};

/// The output that the command would give if it were run; nothing is run.
CannedResult cannedResult(const std::string& command);

}  // namespace ormel::simulator
