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

std::optional<int> canonicalCase(const EnumerationWords& enumeration, std::string_view text) {
  for (const auto& word : enumeration.words) {
    if (isPlainSpelling(text, word.text)) return word.value;
  }
  const std::string canonical = canonicalWord(text);
  for (const auto& word : enumeration.words) {
    if (canonicalWord(word.text) == canonical) return word.value;
  }
  return std::nullopt;
}

std::optional<int> enumerationCase(const EnumerationWords& enumeration, std::string_view text) {
  for (const auto& word : enumeration.words) {
    if (word.text == text) return word.value;
  }
  if (enumeration.rule == WordRule::closed) return std::nullopt;
  if (enumeration.rule == WordRule::exact) return enumeration.fallback;
  return canonicalCase(enumeration, text).value_or(enumeration.fallback);
}

std::string_view enumerationWord(const EnumerationWords& enumeration, int value) noexcept {
  for (const auto& word : enumeration.words) {
    if (word.value == value) return word.text;
  }
  return {};
}

int decodeEnumeration(const EnumerationWords& enumeration, const JSONValue& value, const CodingPath& path) {
  const std::string_view text = textOf(value, path);
  const auto found = enumerationCase(enumeration, text);
  if (!found) {
    failCorrupted(
        "Cannot initialize " + std::string(enumeration.name) + " from invalid String value " + std::string(text), path);
  }
  return *found;
}

}  // namespace ormel::coding
