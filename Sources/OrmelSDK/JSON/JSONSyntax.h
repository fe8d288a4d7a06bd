#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ormel::detail {

/// The findings of `examineJSON`.
struct JSONExamination {
  struct Failure {
    std::string_view reason;
    std::size_t byteOffset;
  };

  /// The first violation of the grammar, if there is one.
  std::optional<Failure> failure;
  /// End offsets of the integers that 64 bits may not hold: the large ones, and minus zero.
  std::vector<std::size_t> unfitIntegerEnds;
};

/// Slowly and exactly examines a text that the fast reader refused or read inexactly: finds the reason and its offset,
/// or finds that the text is JSON after all and was refused for the size of a number or for its empty containers at the
/// depth limit.
JSONExamination examineJSON(std::string_view text, std::size_t maximumDepth);

/// Whether minus zero may stand in a text as an integer: never false if it does, and seldom true if it stands in a
/// string only. `jsonPadding` readable bytes follow the text.
bool mayHoldMinusZero(std::string_view text) noexcept;

}  // namespace ormel::detail
