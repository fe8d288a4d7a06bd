#include "OrmelSDK/Coding/Enumeration.h"

#include <cstddef>

#include "OrmelSDK/Text/LowercasedText.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::coding {

namespace {

bool isJoiner(char byte) noexcept { return byte == '_' || byte == '-'; }

char plainLower(char byte) noexcept { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte; }

std::size_t skipJoiners(std::string_view text, std::size_t at) noexcept {
  while (at < text.size() && isJoiner(text[at])) ++at;
  return at;
}

}  // namespace

bool isPlainSpelling(std::string_view text, std::string_view word) noexcept {
  std::size_t at = skipJoiners(text, 0);
  std::size_t wordAt = skipJoiners(word, 0);
  while (at < text.size() && wordAt < word.size()) {
    if (plainLower(text[at]) != plainLower(word[wordAt])) return false;
    at = skipJoiners(text, at + 1);
    wordAt = skipJoiners(word, wordAt + 1);
  }
  return at == text.size() && wordAt == word.size();
}

std::string canonicalWord(std::string_view text) {
  std::string canonical = detail::lowercased(detail::trimmed(text));
  std::erase_if(canonical, isJoiner);
  return canonical;
}

}  // namespace ormel::coding
