#pragma once

#include <bit>
#include <cstddef>

namespace ormel::detail {

/// A thread keeps its reader for texts up to this size. A larger text gets a reader of its own, so that a single huge
/// message does not pin its working memory.
inline constexpr std::size_t keptReaderLimit = std::size_t{2} << 20;

/// How large a kept buffer should be made that is now needed for a text of this size.
constexpr std::size_t bufferCapacity(std::size_t textSize) noexcept {
  // Growing in powers of two keeps a slowly rising line length from reallocating at every line.
  return textSize > keptReaderLimit ? textSize : std::bit_ceil(textSize | 4096);
}

}  // namespace ormel::detail
