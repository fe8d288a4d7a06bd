#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ormel::detail {

/// What a slow, exact reading of a text finds; see `examineJSON`.
struct JSONExamination {
  struct Failure {
    std::string_view reason;
    std::size_t byteOffset;
  };

  /// The first offence against the grammar, if there is one.
  std::optional<Failure> failure;
  /// Where the integers end that may not fit into 64 bits.
  std::vector<std::size_t> wideIntegerEnds;
};

/// Examines a text that the fast reader refused: finds the reason and its place, or shows that the text is JSON
/// after all and the refusal was about the size of a number.
JSONExamination examineJSON(std::string_view text, std::size_t maximumDepth);

}  // namespace ormel::detail
