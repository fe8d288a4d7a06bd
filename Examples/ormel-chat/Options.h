#pragma once

#include <optional>
#include <string>

namespace ormel::chat {

/// How an item that grows is printed as JSON: what is new of it, or all of it each time.
enum class JSONUpdates { deltas, full };

/// The choices of the command line.
struct Options {
  /// With a prompt, the program answers it and ends; without one it is a conversation.
  std::optional<std::string> prompt;
  std::optional<std::string> server;
  std::optional<std::string> resumedThread;
  std::optional<std::string> directory;
  std::optional<std::string> model;
  bool json = false;
  JSONUpdates jsonUpdates = JSONUpdates::deltas;
  /// Prints the conversations that the server keeps, and ends.
  bool listsThreads = false;
  bool approvesEverything = false;
};

/// The options, or the status to exit with at once, after help or what was wrong has been printed.
struct CommandLine {
  Options options;
  std::optional<int> exitStatus;
};

CommandLine readCommandLine(int argumentCount, char** arguments);

}  // namespace ormel::chat
