#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace ormel::doctor {

/// The choices of the command line, or the status to exit with at once, after help or what was wrong has been printed.
struct CommandLine {
  std::optional<std::string> server;
  bool json = false;
  std::chrono::milliseconds timeout{10'000};
  std::optional<int> exitStatus;
};

CommandLine readCommandLine(int argumentCount, const char* const* arguments);

}  // namespace ormel::doctor
