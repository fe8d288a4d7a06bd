#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace ormel::coding {

/// The way from the outermost value down to the one being decoded: a chain of links on the stack, which costs
/// nothing until an error needs it.
struct CodingPath {
  static constexpr std::size_t noIndex = std::numeric_limits<std::size_t>::max();

  const CodingPath* parent = nullptr;
  std::string_view key;
  std::size_t index = noIndex;

  CodingPath at(std::string_view child) const noexcept { return {this, child, noIndex}; }
  CodingPath at(std::size_t child) const noexcept { return {this, {}, child}; }

  /// The texts of the links, outermost first; an element of a list reads "Index 2".
  std::vector<std::string> texts() const;
};

}  // namespace ormel::coding
