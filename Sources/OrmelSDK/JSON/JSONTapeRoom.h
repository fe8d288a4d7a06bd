#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace ormel::detail {

/// Room for a tape and, behind its first words, for the positions of the tokens that it is made from. simdjson's second
/// stage reads the positions and writes the tape, both from the front: the tape may overwrite positions that have been
/// read. For a huge message this is far less memory than the two apart.
struct JSONTapeRoom {
  std::unique_ptr<std::uint64_t[]> words;
  /// Where the token positions begin, in units of positions.
  std::size_t positionsAt = 0;

  std::uint32_t* positions() const noexcept { return reinterpret_cast<std::uint32_t*>(words.get()) + positionsAt; }

  /// Makes room for the tape of a text, given where its tokens begin, and copies these positions into it.
  static JSONTapeRoom forTokens(std::string_view text, const std::uint32_t* positions, std::size_t tokens);
};

}  // namespace ormel::detail
