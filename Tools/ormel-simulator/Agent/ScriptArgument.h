#pragma once

#include <string>

namespace ormel::simulator {

/// What follows the words that a script is chosen by, read in two ways; if it is quoted, both are what the quotes hold.
struct ScriptArgument {
  /// The rest of the line.
  std::string line;
  /// The first word, without punctuation behind it.
  std::string word;
};

}  // namespace ormel::simulator
