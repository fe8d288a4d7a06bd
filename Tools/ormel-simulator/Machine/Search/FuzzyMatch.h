#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ormel::simulator {

/// How a text matches.
struct FuzzyMatch {
  /// The greater the better.
  int score = 0;
  /// The positions of the matching characters, counted in code points, ascending.
  std::vector<std::size_t> indices;
};

/// Matches if the text has the characters of the query in their order, with any others between; letters of ASCII match
/// in either case. The best way to match counts: characters that follow each other, and those at the start of a word or
/// of a file's name, are worth more. Takes time in proportion to the product of both lengths.
std::optional<FuzzyMatch> matchFuzzily(std::string_view query, std::string_view path);

}  // namespace ormel::simulator
