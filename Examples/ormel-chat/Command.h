#pragma once

#include <string>
#include <string_view>

namespace ormel::chat {

/// What a line of the user asks for.
struct Command {
  enum class Kind { nothing, prompt, review, compact, side, steer, help, quit, unknown };

  Kind kind = Kind::nothing;
  /// What follows the command's name, or the whole line.
  std::string text;
};

Command readCommand(std::string_view line);

/// What /help tells.
std::string_view helpText();

}  // namespace ormel::chat
