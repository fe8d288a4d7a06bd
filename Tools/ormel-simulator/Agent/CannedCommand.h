#pragma once

#include <string>

namespace ormel::simulator {

struct CannedResult {
  std::string output;
  int exitCode = 0;
};

/// What the command would give if it were run; nothing is.
CannedResult cannedResult(const std::string& command);

}  // namespace ormel::simulator
