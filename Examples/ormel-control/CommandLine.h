#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Server.h"

namespace ormel::control {

/// The choices of the command line.
struct Choice {
  /// One of these three is set: what to ask the server, that its notifications are watched, or a text to print.
  Action action;
  bool watches = false;
  std::optional<std::string> text;

  std::optional<std::string> server;
  bool json = false;
};

/// The choice, or the status to exit with at once, after help or what was wrong has been printed.
struct CommandLine {
  Choice choice;
  std::optional<int> exitStatus;
};

/// `arguments` are those behind the program's name.
CommandLine readCommandLine(const std::vector<std::string>& arguments);

}  // namespace ormel::control
