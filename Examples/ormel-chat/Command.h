#pragma once

#include <string>
#include <string_view>

namespace ormel::chat {

/// The command that a line of the user gives.
struct Command {
  enum class Kind {
    nothing,
    prompt,
    review,
    compact,
    side,
    steer,
    threads,
    resume,
    name,
    fork,
    archive,
    help,
    quit,
    unknown
  };

  Kind kind = Kind::nothing;
  /// The rest of the line behind the command's name, or the whole line.
  std::string text;
};

/// Whether it is about conversations that the server keeps, and not a turn.
bool isAboutThreads(Command::Kind kind);

Command readCommand(std::string_view line);

/// The text that /help prints.
std::string_view helpText();

}  // namespace ormel::chat
