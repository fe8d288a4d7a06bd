#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// A user's input as one text: its texts, and for its other parts a few words.
std::string inputText(const JSONValue& input);

/// The text without white space at its ends.
std::string trimmed(std::string_view text);

/// The text cut in front of its words, so that the pieces joined are the text.
std::vector<std::string> wordPieces(std::string_view text);

}  // namespace ormel::simulator
