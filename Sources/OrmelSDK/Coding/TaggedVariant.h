#pragma once

// Variants that the wire tells apart by a `type` word in the same object as the record's own keys. A variant is a
// class with a `std::variant` member `value`; its table names its cases in the order in which words are compared:
//
//   template <>
//   struct ormel::coding::VariantTable<ormel::UserInput> : CasesOf<UserInput> {
//     static constexpr Case cases[] = {
//         variantCase<UserInputImage>("image"),
//         variantCase<UserInputLocalImage>("localImage", "local_image"),
//     };
//     static UserInput decodeUnknown(std::string_view type, const JSONValue& value, const CodingPath& path);
//   };
//   ORMEL_DEFINE_VARIANT(UserInput)
//
// The first word is written, unless the record's table says the type itself. Two more members are optional:
//   static JSONValue encodeUnknown(const UserInput& input);
//     writes the alternatives without a case; needed if there are any
//   static UserInput decodeUntyped(const JSONValue& value, const CodingPath& path);
//     reads an object whose `type` is absent or no text, which else is a failure

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Coding/RecordCodec.h"

namespace ormel::coding {

template <typename Variant>
struct VariantTable;

/// How a case's record is read and written by default: by its own codec. `Record` may be a base of the case.
template <typename Record>
struct RecordCoder {
  static void decodeInto(Record& into, const JSONValue& value, const CodingPath& path) {
    Codec<Record>::decodeInto(into, value, path);
  }
  static void encodeMembers(const Record& record, std::vector<JSONMemberInit>& members) {
    coding::encodeMembers(descriptionOf(Coded<Record>()), &record, members);
  }
};

/// One case of a variant, as the variant's table tells it.
struct VariantCase {
  static constexpr std::size_t mostWords = 2;

  std::array<std::string_view, mostWords> words;
  std::uint8_t wordCount;
  bool writesType;
  /// Which alternative of the `std::variant` it is.
  std::size_t alternative;
  void (*decodeInto)(void* variant, const JSONValue& value, const CodingPath& path);
  void (*encodeMembers)(const void* variant, std::vector<JSONMemberInit>& members);

  /// The record is written by itself, with no `type` to read it back by.
  consteval VariantCase withoutType() const {
    VariantCase changed = *this;
    changed.writesType = false;
    return changed;
  }
};

template <typename Record, typename... Alternatives>
consteval std::size_t alternativeIndex(const std::variant<Alternatives...>*) {
  static_assert((std::same_as<Record, Alternatives> || ...), "a case is an alternative of the variant");
  std::size_t index = 0;
  (void)((std::same_as<Record, Alternatives> || (++index, false)) || ...);
  return index;
}

/// The base of the table of a variant.
template <typename Variant>
struct CasesOf {
  using Case = VariantCase;
  using Value = decltype(Variant::value);

  /// A case whose record is read and written by its own codec, or by `Coder`.
  template <typename Record, typename Coder = RecordCoder<Record>, std::same_as<const char*>... Words>
  static consteval Case variantCase(Words... words) {
    static_assert(sizeof...(words) > 0 && sizeof...(words) <= Case::mostWords, "a case has one word or two");
    return {{std::string_view(words)...},
            sizeof...(words),
            true,
            alternativeIndex<Record>(static_cast<const Value*>(nullptr)),
            &decodeCase<Record, Coder>,
            &encodeCase<Record, Coder>};
  }

 private:
  template <typename Record, typename Coder>
  static void decodeCase(void* variant, const JSONValue& value, const CodingPath& path) {
    Coder::decodeInto(static_cast<Variant*>(variant)->value.template emplace<Record>(), value, path);
  }

  template <typename Record, typename Coder>
  static void encodeCase(const void* variant, std::vector<JSONMemberInit>& members) {
    Coder::encodeMembers(*std::get_if<Record>(&static_cast<const Variant*>(variant)->value), members);
  }
};

/// A variant's table in a form that does not depend on its type, so that one function reads all variants.
struct VariantDescription {
  std::string_view name;
  std::span<const VariantCase> cases;
  const WordIndex* words = nullptr;
  /// The position of each word's case. If two cases list a word, the first wins.
  const std::uint8_t* casesOfWords = nullptr;
  void (*decodeUnknown)(void* variant, std::string_view type, const JSONValue& value, const CodingPath& path) = nullptr;
  void (*decodeUntyped)(void* variant, const JSONValue& value, const CodingPath& path) = nullptr;
};

/// The required string under `type`.
const JSONValue& typeOf(const JSONValue& value, std::string_view variantName, const CodingPath& path);

/// Its text.
std::string_view decodeType(const JSONValue& value, std::string_view variantName, const CodingPath& path);

void decodeVariant(const VariantDescription& description, void* variant, const JSONValue& value,
                   const CodingPath& path);

/// Writes the case that the variant has, by its alternative. Returns false if the alternative has no case.
bool encodeVariant(const VariantDescription& description, std::size_t alternative, const void* variant,
                   JSONValue& encoded);

template <typename Variant>
struct VariantWords {
  using Table = VariantTable<Variant>;
  static constexpr std::size_t caseCount = std::size(Table::cases);
  static constexpr std::size_t mostWords = caseCount * VariantCase::mostWords;

  struct Collected {
    WordList<mostWords> words;
    std::array<std::uint8_t, mostWords> cases{};
  };

  static consteval Collected collect() {
    Collected found;
    for (std::size_t at = 0; at < caseCount; ++at) {
      for (std::size_t word = 0; word < Table::cases[at].wordCount; ++word) {
        const std::size_t before = found.words.count;
        const std::size_t position = found.words.add(Table::cases[at].words[word]);
        if (position == before) found.cases[position] = static_cast<std::uint8_t>(at);
      }
    }
    return found;
  }

  static constexpr Collected collected = collect();
  static constexpr auto words = WordTable<collected.words.count>(collected.words);
  static constexpr WordIndex index = words.index();

  static consteval bool hasCaseForEachAlternative() {
    for (std::size_t alternative = 0; alternative < std::variant_size_v<decltype(Variant::value)>; ++alternative) {
      bool isFound = false;
      for (const VariantCase& one : Table::cases) isFound = isFound || one.alternative == alternative;
      if (!isFound) return false;
    }
    return true;
  }
};

template <typename Variant>
consteval VariantDescription describeVariant() {
  using Table = VariantTable<Variant>;
  VariantDescription description;
  description.name = typeName<Variant>();
  description.cases = Table::cases;
  description.words = &VariantWords<Variant>::index;
  description.casesOfWords = VariantWords<Variant>::collected.cases.data();
  if constexpr (requires { &Table::decodeUnknown; }) {
    description.decodeUnknown = [](void* variant, std::string_view type, const JSONValue& value,
                                   const CodingPath& path) {
      *static_cast<Variant*>(variant) = Table::decodeUnknown(type, value, path);
    };
  }
  if constexpr (requires { &Table::decodeUntyped; }) {
    description.decodeUntyped = [](void* variant, const JSONValue& value, const CodingPath& path) {
      *static_cast<Variant*>(variant) = Table::decodeUntyped(value, path);
    };
  }
  return description;
}

template <typename Variant>
inline constexpr VariantDescription variantDescription = describeVariant<Variant>();

template <typename Variant>
void decodeVariant(Variant& into, const JSONValue& value, const CodingPath& path) {
  static_assert(requires { &VariantTable<Variant>::decodeUnknown; }, "a variant that is read says what else may come");
  decodeVariant(variantDescription<Variant>, &into, value, path);
}

template <typename Variant>
JSONValue encodeVariant(const Variant& variant) {
  constexpr bool writesUnknown = requires { &VariantTable<Variant>::encodeUnknown; };
  static_assert(writesUnknown || VariantWords<Variant>::hasCaseForEachAlternative(),
                "an alternative of the variant has no case and there is no encodeUnknown");
  JSONValue encoded;
  const bool isKnown = encodeVariant(variantDescription<Variant>, variant.value.index(), &variant, encoded);
  if constexpr (writesUnknown) {
    if (!isKnown) return VariantTable<Variant>::encodeUnknown(variant);
  }
  return encoded;
}

}  // namespace ormel::coding

/// Defines the codec of a variant from its table, and its comparison. At global scope.
#define ORMEL_DEFINE_VARIANT(Type) \
  ORMEL_DEFINE_EQUALITY(Type)      \
  ORMEL_DEFINE_CODEC_BY(Type, decodeVariant, encodeVariant)
