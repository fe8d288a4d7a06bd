#include "OrmelSDK/JSON/JSONTapeRoom.h"

#include <algorithm>
#include <cstring>

namespace ormel::detail {

namespace {

// Behind the positions of the tokens simdjson puts some that tell it where the text ends.
constexpr std::size_t closingPositions = 3;

// How many words of tape are written for the token that begins with this character. A character that cannot start a
// token adds nothing to the tape; the bound for a number holds for it, too.
constexpr std::size_t tapeWordsOf(char token) {
  switch (token) {
    case ',':
    case ':':
      return 0;
    case '{':
    case '}':
    case '[':
    case ']':
    case '"':
    case 't':
    case 'f':
    case 'n':
      return 1;
    default:
      return 2;
  }
}

}  // namespace

JSONTapeRoom JSONTapeRoom::forTokens(std::string_view text, const std::uint32_t* positions, std::size_t tokens) {
  constexpr std::size_t positionsInWord = sizeof(std::uint64_t) / sizeof(std::uint32_t);
  // An empty container is written whole when its beginning is read, and the root has a word at either end.
  constexpr std::size_t margin = 4 * positionsInWord;
  std::size_t written = 0;
  std::size_t lead = 0;
  for (std::size_t token = 0; token < tokens; ++token) {
    written += positionsInWord * tapeWordsOf(text[positions[token]]);
    if (written > token) lead = std::max(lead, written - token);
  }
  JSONTapeRoom room;
  room.positionsAt = lead + margin;
  const std::size_t all = std::max(room.positionsAt + tokens + closingPositions, written + margin);
  room.words = std::make_unique_for_overwrite<std::uint64_t[]>(all / positionsInWord + 1);
  std::memcpy(room.positions(), positions, (tokens + closingPositions) * sizeof *positions);
  return room;
}

}  // namespace ormel::detail
