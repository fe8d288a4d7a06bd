#pragma once

// Enumerations on the wire. A table stands in the `.cpp` of the enumeration's family:
//
//   template <>
//   struct ormel::coding::EnumerationTable<ormel::SandboxMode> {
//     static constexpr auto rule = closed;
//     static constexpr Word<SandboxMode> words[] = {
//         {SandboxMode::readOnly, "read-only"},
//         {SandboxMode::workspaceWrite, "workspace-write"},
//     };
//   };
//   ORMEL_DEFINE_ENUMERATION(SandboxMode)
//
// The rule says what a text is that is none of the words:
//   closed                         a failure
//   exactOr(PlanType::unknown)     the fallback
//   tolerant(HookSource::unknown)  the case whose word has the same canonical form, or else the fallback
//
// A case may have several words, of which the first is written.

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

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

enum class WordRule { closed, exact, tolerant };

struct Closed {};
inline constexpr Closed closed;

template <typename Enumeration>
struct Fallback {
  WordRule rule;
  Enumeration value;
};

template <typename Enumeration>
consteval Fallback<Enumeration> exactOr(Enumeration fallback) {
  return {WordRule::exact, fallback};
}

template <typename Enumeration>
consteval Fallback<Enumeration> tolerant(Enumeration fallback) {
  return {WordRule::tolerant, fallback};
}

/// An enumeration's table in a form that does not depend on its type, so that one function reads all enumerations.
struct EnumerationWords {
  std::string_view name;
  std::span<const Word<int>> words;
  WordRule rule = WordRule::closed;
  int fallback = 0;
};

/// Trimmed of white space and line ends at both ends, without "_" and "-", in lower case; all in Unicode's sense.
std::string canonicalWord(std::string_view text);

/// Whether a text is a word but for the case of plain letters, "_" and "-". Its canonical form is then the word's;
/// there are other texts with the same form, but this tells the usual ones at once.
bool isPlainSpelling(std::string_view text, std::string_view word) noexcept;

/// The case whose word has the same canonical form as a text.
std::optional<int> canonicalCase(const EnumerationWords& enumeration, std::string_view text);

/// The case that a text stands for, or nothing if the enumeration is closed and does not have it.
std::optional<int> enumerationCase(const EnumerationWords& enumeration, std::string_view text);

/// The word that is written for a case.
std::string_view enumerationWord(const EnumerationWords& enumeration, int value) noexcept;

int decodeEnumeration(const EnumerationWords& enumeration, const JSONValue& value, const CodingPath& path);

template <typename Enumeration>
  requires std::is_enum_v<Enumeration>
std::optional<Enumeration> canonicalCase(std::string_view text) {
  const auto found = canonicalCase(wordsOf(Coded<Enumeration>()), text);
  return found ? std::optional(static_cast<Enumeration>(*found)) : std::nullopt;
}

template <typename Enumeration>
  requires std::is_enum_v<Enumeration>
std::optional<Enumeration> enumerationCase(std::string_view text) {
  const auto found = enumerationCase(wordsOf(Coded<Enumeration>()), text);
  return found ? std::optional(static_cast<Enumeration>(*found)) : std::nullopt;
}

template <typename Enumeration>
  requires std::is_enum_v<Enumeration>
std::string_view enumerationWord(Enumeration value) noexcept {
  return enumerationWord(wordsOf(Coded<Enumeration>()), static_cast<int>(value));
}

template <typename Enumeration>
  requires std::is_enum_v<Enumeration>
void decodeEnumeration(Enumeration& into, const JSONValue& value, const CodingPath& path) {
  into = static_cast<Enumeration>(decodeEnumeration(wordsOf(Coded<Enumeration>()), value, path));
}

/// The words of a table, by their cases' numbers.
template <typename Enumeration>
inline constexpr auto numberedWords = [] {
  constexpr const auto& words = EnumerationTable<Enumeration>::words;
  std::array<Word<int>, std::size(words)> numbered{};
  for (std::size_t at = 0; at < numbered.size(); ++at)
    numbered[at] = {static_cast<int>(words[at].value), words[at].text};
  return numbered;
}();

template <typename Enumeration>
consteval EnumerationWords describeWords() {
  EnumerationWords described;
  described.name = typeName<Enumeration>();
  described.words = numberedWords<Enumeration>;
  constexpr auto rule = EnumerationTable<Enumeration>::rule;
  if constexpr (!std::is_same_v<decltype(rule), const Closed>) {
    described.rule = rule.rule;
    described.fallback = static_cast<int>(Enumeration{rule.value});
  }
  return described;
}

template <typename Enumeration>
inline constexpr EnumerationWords enumerationWords = describeWords<Enumeration>();

}  // namespace ormel::coding

namespace ormel {

template <typename Enumeration>
std::string_view rawValue(Enumeration value) {
  return coding::enumerationWord(value);
}

}  // namespace ormel

// Each of these stands at global scope, in a file that includes RecordCodec.h.

/// Defines the words alone, of an enumeration that is no value on the wire by itself.
#define ORMEL_DEFINE_WORDS(Type)                                                  \
  namespace ormel::coding {                                                       \
  const EnumerationWords& wordsOf(Coded<Type>) { return enumerationWords<Type>; } \
  }

#define ORMEL_DEFINE_ENUMERATION(Type) ORMEL_DEFINE_ENUMERATION_BY(Type, decodeEnumeration)

/// Defines the codec of an enumeration that is written by its table and read by a function.
#define ORMEL_DEFINE_ENUMERATION_BY(Type, reading)                     \
  ORMEL_DEFINE_WORDS(Type)                                             \
  template std::string_view ormel::rawValue<ormel::Type>(ormel::Type); \
  ORMEL_DEFINE_CODEC_BY(Type, reading, enumerationWord)
