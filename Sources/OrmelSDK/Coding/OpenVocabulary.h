#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <utility>

namespace ormel {

/// The base of words from a list that the server may extend: any text passes through unchanged, and the words known
/// today are constants of the derived type.
struct OpenVocabulary {
  OpenVocabulary() = default;
  OpenVocabulary(std::string_view word) : rawValue(word) {}
  OpenVocabulary(const char* word) : rawValue(word) {}
  OpenVocabulary(std::string word) : rawValue(std::move(word)) {}

  std::string rawValue;

  friend bool operator==(const OpenVocabulary&, const OpenVocabulary&) = default;
  friend auto operator<=>(const OpenVocabulary&, const OpenVocabulary&) = default;
};

}  // namespace ormel
