#pragma once

// Enumerations on the wire. A table stands beside the records that use it:
//
//   template <>
//   struct ormel::coding::EnumerationTable<ormel::SandboxMode> {
//     static constexpr auto words = closed(std::array{
//         Word{SandboxMode::readOnly, "read-only"}, Word{SandboxMode::workspaceWrite, "workspace-write"}});
//   };
//   ORMEL_DECLARE_ENUMERATION(SandboxMode)
//
// A closed enumeration reads its words exactly and fails on any other. A tolerant one compares canonical forms and
// reads every other text as its fallback, so it never fails on a text.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Coding/TypeName.h"

namespace ormel::coding {

template <typename Enumeration>
struct EnumerationTable;

template <typename Enumeration>
struct Word {
  Enumeration value;
  std::string_view text;
};
template <typename Enumeration>
Word(Enumeration, const char*) -> Word<Enumeration>;

template <typename Enumeration, std::size_t count>
struct Words {
  std::array<Word<Enumeration>, count> all;
  std::optional<Enumeration> fallback;
};

template <typename Enumeration, std::size_t count>
constexpr Words<Enumeration, count> closed(std::array<Word<Enumeration>, count> words) {
  return {words, std::nullopt};
}

template <typename Enumeration, std::size_t count>
constexpr Words<Enumeration, count> tolerant(Enumeration fallback, std::array<Word<Enumeration>, count> words) {
  return {words, fallback};
}

/// Trimmed of white space and line ends at both ends, without "_" and "-", in lower case; all in Unicode's sense.
std::string canonicalWord(std::string_view text);

/// Whether a text is a word but for the case of plain letters, "_" and "-". Its canonical form is then the word's;
/// there are other texts with the same form, but this tells the usual ones at once.
bool isPlainSpelling(std::string_view text, std::string_view word) noexcept;

/// The case whose word has the same canonical form as a text.
template <typename Enumeration>
std::optional<Enumeration> canonicalCase(std::string_view text) {
  for (const auto& word : EnumerationTable<Enumeration>::words.all) {
    if (isPlainSpelling(text, word.text)) return word.value;
  }
  const std::string canonical = canonicalWord(text);
  for (const auto& word : EnumerationTable<Enumeration>::words.all) {
    if (canonicalWord(word.text) == canonical) return word.value;
  }
  return std::nullopt;
}

/// The case that a text stands for, or nothing if the enumeration is closed and does not have it.
template <typename Enumeration>
std::optional<Enumeration> enumerationCase(std::string_view text) {
  constexpr const auto& words = EnumerationTable<Enumeration>::words;
  for (const auto& word : words.all) {
    if (word.text == text) return word.value;
  }
  if (!words.fallback) return std::nullopt;
  const auto found = canonicalCase<Enumeration>(text);
  return found ? found : words.fallback;
}

template <typename Enumeration>
std::string_view enumerationWord(Enumeration value) {
  for (const auto& word : EnumerationTable<Enumeration>::words.all) {
    if (word.value == value) return word.text;
  }
  return {};
}

template <typename Enumeration>
void decodeEnumeration(Enumeration& into, const JSONValue& value, const CodingPath& path) {
  const std::string_view text = textOf(value, path);
  const auto found = enumerationCase<Enumeration>(text);
  if (!found) {
    failCorrupted(
        "Cannot initialize " + std::string(typeName<Enumeration>()) + " from invalid String value " + std::string(text),
        path);
  }
  into = *found;
}

template <typename Enumeration>
JSONValue encodeEnumeration(Enumeration value) {
  return enumerationWord(value);
}

}  // namespace ormel::coding

/// At global scope.
#define ORMEL_DECLARE_ENUMERATION(Type) \
  ORMEL_DECLARE_CODEC(Type)             \
  template <>                           \
  std::string_view ormel::rawValue<ormel::Type>(ormel::Type value);

#define ORMEL_DEFINE_ENUMERATION(Type) ORMEL_DEFINE_ENUMERATION_BY(Type, decodeEnumeration<ormel::Type>)

/// Defines the codec of an enumeration that is written by its table and read by a function.
#define ORMEL_DEFINE_ENUMERATION_BY(Type, reading)                   \
  template <>                                                        \
  std::string_view ormel::rawValue<ormel::Type>(ormel::Type value) { \
    return coding::enumerationWord(value);                           \
  }                                                                  \
  ORMEL_DEFINE_CODEC_BY(Type, reading, encodeEnumeration)
