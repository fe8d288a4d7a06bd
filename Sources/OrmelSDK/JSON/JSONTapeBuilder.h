#pragma once

#include <cstddef>
#include <cstdint>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel::detail {

/// simdjson counts a container only once it meets an element inside, and lets an empty one pass at its limit. The
/// strict limit admits no text that is too deep, and refuses some texts of exactly the maximum depth; these are
/// examined and then read with the generous one.
inline constexpr std::size_t strictDepth = JSONValue::maximumDecodingDepth;
inline constexpr std::size_t generousDepth = strictDepth + 1;

/// Number of words of a tape that simdjson has written.
std::size_t tapeWords(const std::uint64_t* tape) noexcept;

/// An upper bound for the size of the containers that a tape describes: no element needs more than 16 bytes a word.
std::size_t tapeNodesBound(const std::uint64_t* tape) noexcept;

/// A value that was built from a tape.
struct JSONTapeValue {
  JSONValue value;
  /// Whether there is an integer zero in it, which may have been minus zero in the text.
  bool hasIntegerZero = false;
};

/// Builds the value of a tape into a block with room for `tapeNodesBound` bytes; the value then owns the block. A value
/// that needs no block leaves it to be freed.
JSONTapeValue buildFromTape(const std::uint64_t* tape, JSONBlockPointer block, const JSONTextPlace& texts);

}  // namespace ormel::detail
