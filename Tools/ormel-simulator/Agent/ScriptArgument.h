#pragma once

#include <string>

namespace ormel::simulator {

/// The text behind the words that choose a script, read in two ways; if it is quoted, both hold the text inside the
/// quotes.
struct ScriptArgument {
  /// The rest of the line.
  std::string line;
  /// The first word, without punctuation behind it.
  std::string word;
};

}  // namespace ormel::simulator
